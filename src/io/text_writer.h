#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace kvx::zelvo {

/// Writes text through a buffer of its own to an open file, in the forms of printf but whatever the
/// locale says. Throws nothing and allocates nothing. The file is neither flushed nor closed.
class text_writer {
public:
    explicit text_writer(std::FILE* file) noexcept
        : file_(file) {}
    text_writer(const text_writer&) = delete;
    text_writer& operator=(const text_writer&) = delete;
    ~text_writer() { flush(); }

    /// The bytes as they are.
    void text(std::string_view bytes) noexcept;
    void number(std::uint64_t n) noexcept;
    /// printf's "%.<digits>f"; at most 32 digits, as for scientific().
    void fixed(double x, int digits = 6) noexcept {
        formatted(x, std::chars_format::fixed, digits);
    }
    /// printf's "%.<digits>e".
    void scientific(double x, int digits = 6) noexcept {
        formatted(x, std::chars_format::scientific, digits);
    }

    /// Hands what was written to the file; whether it took everything since the beginning.
    bool flush() noexcept;
    /// Whether the file refused something.
    bool failed() const noexcept { return failed_; }

private:
    void formatted(double x, std::chars_format format, int digits) noexcept;

    std::FILE* file_;
    std::size_t size_ = 0;
    bool failed_ = false;
    std::array<char, 65536> buffer_;
};

} // namespace kvx::zelvo
