#include "io/text_reader.h"

#include <algorithm>
#include <cstring>

namespace kvx::zelvo {

namespace {

constexpr std::size_t block_size = 65536;

constexpr bool is_letter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
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
        const char* const last = buffer_.data() + end_;
        const char* at = buffer_.data() + at_;
        while (at != last && is_blank(*at))
            ++at;
        at_ = static_cast<std::size_t>(at - buffer_.data());
        if (at != last) return true;
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
    while (!pattern.empty()) {
        const std::size_t length = pattern.find(' ');
        if (length == 0) {
            skip_blanks();
            pattern.remove_prefix(1);
            continue;
        }
        const std::string_view word = pattern.substr(0, length);
        available(word.size());
        const char* const first = buffer_.data() + at_;
        const std::size_t most = std::min(word.size(), end_ - at_);
        const auto equal = std::mismatch(first, first + most, word.begin()).first - first;
        at_ += static_cast<std::size_t>(equal);
        if (static_cast<std::size_t>(equal) != word.size()) return false;
        pattern.remove_prefix(word.size());
    }
    return true;
}

/// Length of the longest run of unread characters that may be a number.
std::size_t text_reader::number_length() {
    constexpr std::size_t longest_word = 9; // "-infinity"
    std::size_t n = peek(0) == '-' || peek(0) == '+' ? 1 : 0;
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
    const char* const first = buffer_.data() + at_;
    const char* const last = buffer_.data() + end_;
    const char* const end = quick_real(first, last, x);
    if (end && end != last) { // it goes on in no other block
        at_ = static_cast<std::size_t>(end - buffer_.data());
        return true;
    }
    const std::size_t longest = number_length();
    const std::size_t length = leading_real({buffer_.data() + at_, longest}, x);
    at_ += length;
    return length > 0;
}

bool text_reader::line(std::string_view& text) {
    std::size_t length = 0;
    bool ended = false;
    while (!ended && available(length + 1)) {
        const char* const searched = buffer_.data() + at_ + length;
        const std::size_t unread = end_ - at_ - length;
        const void* const line_end = std::memchr(searched, '\n', unread);
        ended = line_end != nullptr;
        length += ended ? static_cast<std::size_t>(static_cast<const char*>(line_end) - searched)
                        : unread;
    }
    text = {buffer_.data() + at_, length};
    at_ += length + ended;
    return ended || length > 0;
}

const char* text_reader::bytes(std::size_t n) {
    if (!available(n)) return nullptr;
    at_ += n;
    return buffer_.data() + at_ - n;
}

} // namespace kvx::zelvo
