#pragma once

#include <filesystem>
#include <string>

#include <unistd.h>

namespace kvx::zelvo::bench {

/// A file name of this process alone; the file goes with the object.
class temporary_file {
public:
    explicit temporary_file(const char* extension)
        : path_(std::filesystem::temp_directory_path() /
                (std::string("kvx_zelvo_bench_") + std::to_string(getpid()) + extension)) {}
    temporary_file(const temporary_file&) = delete;
    temporary_file& operator=(const temporary_file&) = delete;
    ~temporary_file() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    const char* name() const { return path_.c_str(); }

private:
    std::filesystem::path path_;
};

} // namespace kvx::zelvo::bench
