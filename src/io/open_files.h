#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

namespace kvx::zelvo {

/// fopen that takes a null name for a file that does not open. Files are always opened as binary
/// ones, so that they have the same bytes on every system.
inline std::FILE* open_file(const char* name, const char* mode) noexcept {
    return name ? std::fopen(name, mode) : nullptr;
}

struct file_closer {
    /// A writer that reports what could not be written closes its file itself.
    void operator()(std::FILE* file) const noexcept { (void)std::fclose(file); }
};
/// A file that is closed on every path.
using closing_file = std::unique_ptr<std::FILE, file_closer>;

/// Opens a file to read it as a whole. Null for devices too: /dev/zero has no end, nor has a line
/// of it.
inline closing_file open_to_read(const char* name) {
    std::error_code error;
    if (!name || std::filesystem::is_character_file(name, error)) return nullptr;
    return closing_file(open_file(name, "rb"));
}

/// Where a writer opens its file before it checks its arguments, a rejected call leaves the file
/// created, empty and open. That is part of the contract of these writers, since callers rely on
/// the handle and the truncated file staying as they are; it takes a descriptor each time. Returns
/// the code of the rejection.
inline int leave_open([[maybe_unused]] std::FILE* file, int code) noexcept {
    return code;
}

} // namespace kvx::zelvo
