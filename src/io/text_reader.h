#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

#include "io/nearest_rounding.h"
#include "io/number_text.h"

namespace kvx::zelvo {

/// Reads an open file in blocks, in the manner of scanf but whatever the locale says, and rounds to
/// nearest while it lives. Lines and numbers may have any length, bytes any value, and the file may
/// be a pipe; the memory is one block, or twice the longest number or line() where that is longer.
/// Members throw std::bad_alloc.
///
/// What does not match stays unread from its first differing character on.
class text_reader {
public:
    explicit text_reader(std::FILE* file);

    /// Number of bytes read so far.
    std::uint64_t position() const noexcept { return before_ + at_; }

    /// Skips white space; whether anything follows.
    bool skip_blanks();
    /// Skips what is left of the line and its '\n'; false when there is nothing left.
    bool skip_line();
    /// Reads a line without its '\n', which the last one need not have. The text stays valid until
    /// the next read; false, and no text, when there is nothing left.
    bool line(std::string_view& text);
    /// The end of what may be read behind that line.
    const char* readable_end() const noexcept { return buffer_.data() + end_; }
    /// Skips everything that is left.
    void skip_rest();

    /// Reads the pattern. A blank in it stands for any run of white space, none included; every
    /// other character for itself.
    bool literal(std::string_view pattern);
    /// Reads white space and a number, see leading_real.
    bool number(double& x);
    /// Reads n bytes, which stay valid until the next read; nullptr, with nothing read, when fewer
    /// are left.
    const char* bytes(std::size_t n);

private:
    /// Makes at least n unread bytes available; false when fewer are left.
    bool available(std::size_t n) { return n <= end_ - at_ || refill(n); }
    bool refill(std::size_t n);
    /// The i-th unread character; 0 behind the end of the file.
    char peek(std::size_t i) { return available(i + 1) ? buffer_[at_ + i] : '\0'; }
    std::size_t number_length();

    nearest_rounding rounding_;
    std::FILE* file_;
    std::vector<char> buffer_;
    std::size_t at_ = 0;       ///< place of the next unread byte in the buffer
    std::size_t end_ = 0;      ///< end of the unread bytes
    std::uint64_t before_ = 0; ///< bytes of the file before the buffer
};

} // namespace kvx::zelvo
