#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "io/exact_decimals.h"
#include "io/nearest_rounding.h"
#include "io/number_text.h"
#include "io/open_files.h"

namespace kvx::zelvo {

/// Writes text through a buffer of its own to an open file, in the forms of printf but whatever the
/// locale says, and rounds to nearest while it lives. Throws nothing and allocates nothing. The file
/// is neither flushed nor closed.
class text_writer {
public:
    explicit text_writer(std::FILE* file) noexcept
        : file_(file) {}
    text_writer(const text_writer&) = delete;
    text_writer& operator=(const text_writer&) = delete;
    ~text_writer() { flush(); }

    /// The bytes as they are.
    void text(std::string_view bytes) noexcept {
        if (bytes.size() > buffer_.size() - size_) return long_text(bytes);
        std::memcpy(buffer_.data() + size_, bytes.data(), bytes.size());
        size_ += bytes.size();
    }
    /// printf's "%*u": at least |width| characters, filled up with blanks before the number, or
    /// behind it when the width is negative. So in all forms with a width of at most 32.
    void number(std::uint64_t n, int width = 0) noexcept {
        end_number(write_integer(room(), n), width);
    }
    /// printf's "%.<digits>f"; at most 32 digits, as for scientific().
    void fixed(double x, int digits = 6) noexcept { end_number(write_fixed(room(), x, digits)); }
    /// printf's "%*.<digits>e".
    void scientific(double x, int digits = 6, int width = 0) noexcept {
        end_number(write_scientific(room(), x, digits), width);
    }
    /// printf's "%E".
    void scientific_upper(double x) noexcept { end_number(write_scientific(room(), x, 6, 'E')); }
    /// printf's "%#*g": six significant digits, always with a point.
    void general_pointed(double x, int width = 0) noexcept {
        end_number(write_general_pointed(room(), x), width);
    }
    /// The shortest text that reads back as the same number.
    void shortest(double x) noexcept;

    /// The end of the text, with room for what is no longer than any number; end() makes what was
    /// written there up to `end` part of the text.
    char* room() noexcept {
        if (buffer_.size() - size_ < longest_number) flush();
        return buffer_.data() + size_;
    }
    void end(const char* end) noexcept { size_ = static_cast<std::size_t>(end - buffer_.data()); }

    /// Hands what was written to the file; whether it took everything since the beginning.
    bool flush() noexcept;
    /// Whether the file refused something.
    bool failed() const noexcept { return failed_; }

private:
    static constexpr int widest = 32;

    void long_text(std::string_view bytes) noexcept;
    /// Ends the number that was written from room() on.
    void end_number(const char* last, int width = 0) noexcept {
        if (width != 0) return end_padded(last, width);
        end(last);
    }
    void end_padded(const char* end, int width) noexcept;

    nearest_rounding rounding_;
    std::FILE* file_;
    std::size_t size_ = 0;
    bool failed_ = false;
    std::array<char, 65536> buffer_;
};

/// Ends the text and closes its file; 0, or -1 when the file did not take everything.
inline int end_writing(text_writer& out, closing_file file) noexcept {
    const bool written = out.flush();
    const bool closed = std::fclose(file.release()) == 0;
    return written && closed ? 0 : -1;
}

} // namespace kvx::zelvo
