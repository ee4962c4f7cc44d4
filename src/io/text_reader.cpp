#include "io/text_reader.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace kvx::zelvo {

namespace {

constexpr std::size_t block_size = 65536;

constexpr bool is_digit(char c) noexcept {
    return c >= '0' && c <= '9';
}
constexpr bool is_letter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Whether an unsigned decimal number that no double holds is too large rather than too small. Its
/// size is that far from 1 that the place of its first non-zero digit decides.
bool is_large(std::string_view number) {
    const std::size_t e = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, e);
    const std::size_t point = std::min(mantissa.find('.'), e);
    const std::size_t first_digit = mantissa.find_first_of("123456789");
    std::int64_t exponent = 0;
    if (e < number.size()) {
        std::string_view digits = number.substr(e + 1);
        if (digits.starts_with('+')) digits.remove_prefix(1);
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
        if (read.ec == std::errc::result_out_of_range) return !digits.starts_with('-');
    }
    return exponent > static_cast<std::int64_t>(first_digit) - static_cast<std::int64_t>(point);
}

} // namespace

text_reader::text_reader(std::FILE* file)
    : file_(file)
    , buffer_(block_size) {}

bool text_reader::refill(std::size_t n) {
    if (at_ > 0) std::memmove(buffer_.data(), buffer_.data() + at_, end_ - at_);
    before_ += at_;
    end_ -= at_;
    at_ = 0;
    if (n > buffer_.size()) buffer_.resize(std::max(n, 2 * buffer_.size()));
    end_ += std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, file_);
    return n <= end_;
}

bool text_reader::skip_blanks() {
    while (available(1)) {
        while (at_ < end_ && is_blank(buffer_[at_]))
            ++at_;
        if (at_ < end_) return true;
    }
    return false;
}

bool text_reader::skip_line() {
    if (!available(1)) return false;
    while (available(1)) {
        const char* const first = buffer_.data() + at_;
        const void* const line_end = std::memchr(first, '\n', end_ - at_);
        if (line_end) {
            at_ += static_cast<std::size_t>(static_cast<const char*>(line_end) - first) + 1;
            return true;
        }
        at_ = end_;
    }
    return true;
}

void text_reader::skip_rest() {
    while (available(1))
        at_ = end_;
}

bool text_reader::literal(std::string_view pattern) {
    for (const char c : pattern) {
        if (c == ' ') {
            skip_blanks();
        } else if (available(1) && buffer_[at_] == c) {
            ++at_;
        } else {
            return false;
        }
    }
    return true;
}

/// Length of the longest run of unread characters that may be a number without '+' before it.
std::size_t text_reader::number_length() {
    constexpr std::size_t longest_word = 9; // "-infinity"
    std::size_t n = peek(0) == '-' ? 1 : 0;
    if (is_letter(peek(n))) {
        while (n < longest_word && is_letter(peek(n)))
            ++n;
        return n;
    }
    while (is_digit(peek(n)))
        ++n;
    if (peek(n) == '.') ++n;
    while (is_digit(peek(n)))
        ++n;
    if (peek(n) == 'e' || peek(n) == 'E') {
        ++n;
        if (peek(n) == '+' || peek(n) == '-') ++n;
        while (is_digit(peek(n)))
            ++n;
    }
    return n;
}

bool text_reader::number(double& x) {
    skip_blanks();
    if (peek(0) == '+' && peek(1) != '-') ++at_;
    const std::size_t n = number_length();
    const char* const first = buffer_.data() + at_;
    const auto read = std::from_chars(first, first + n, x);
    if (read.ec == std::errc::invalid_argument) return false;
    const auto length = static_cast<std::size_t>(read.ptr - first);
    if (read.ec == std::errc::result_out_of_range) {
        const bool negative = *first == '-';
        const std::string_view digits(first + negative, length - negative);
        const double size = is_large(digits) ? std::numeric_limits<double>::infinity() : 0.0;
        x = negative ? -size : size;
    }
    at_ += length;
    return true;
}

const char* text_reader::bytes(std::size_t n) {
    if (!available(n)) return nullptr;
    at_ += n;
    return buffer_.data() + at_ - n;
}

} // namespace kvx::zelvo
