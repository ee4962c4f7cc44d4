#include "io/text_writer.h"

#include <cassert>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "io/number_text.h"

namespace kvx::zelvo {

namespace {

constexpr int most_digits = 32;
/// Room for any number: sign, the digits before the point of the largest double, point, digits.
constexpr std::size_t longest_number =
    1 + (std::numeric_limits<double>::max_exponent10 + 1) + 1 + most_digits;

char* put(char* first, double x, std::chars_format format, int digits) noexcept {
    assert(digits >= 0 && digits <= most_digits);
    const auto end = std::to_chars(first, first + longest_number, x, format, digits);
    assert(end.ec == std::errc());
    return end.ptr;
}

} // namespace

void text_writer::text(std::string_view bytes) noexcept {
    if (bytes.size() > buffer_.size() - size_) flush();
    if (bytes.size() > buffer_.size()) {
        failed_ |= std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size();
        return;
    }
    std::memcpy(buffer_.data() + size_, bytes.data(), bytes.size());
    size_ += bytes.size();
}

char* text_writer::room() noexcept {
    if (buffer_.size() - size_ < longest_number) flush();
    return buffer_.data() + size_;
}

void text_writer::end_number(const char* end, int width) noexcept {
    assert(width >= -most_digits && width <= most_digits);
    char* const first = buffer_.data() + size_;
    const auto length = static_cast<std::size_t>(end - first);
    const auto wanted = static_cast<std::size_t>(width < 0 ? -width : width);
    const std::size_t blanks = wanted > length ? wanted - length : 0;
    if (blanks > 0 && width > 0) std::memmove(first + blanks, first, length);
    std::memset(width > 0 ? first : first + length, ' ', blanks);
    size_ += length + blanks;
}

void text_writer::number(std::uint64_t n, int width) noexcept {
    char* const first = room();
    end_number(std::to_chars(first, first + longest_number, n).ptr, width);
}

void text_writer::fixed(double x, int digits) noexcept {
    end_number(put(room(), x, std::chars_format::fixed, digits), 0);
}

void text_writer::scientific(double x, int digits, int width) noexcept {
    end_number(put(room(), x, std::chars_format::scientific, digits), width);
}

void text_writer::scientific_upper(double x) noexcept {
    char* const first = room();
    char* const end = put(first, x, std::chars_format::scientific, 6);
    for (char* c = first; c != end; ++c) {
        if (*c >= 'a') *c = static_cast<char>(*c - 'a' + 'A');
    }
    end_number(end, 0);
}

void text_writer::general_pointed(double x, int width) noexcept {
    constexpr int significant_digits = 6;
    char* const first = room();
    // The exponent after rounding decides the form.
    char* end = put(first, x, std::chars_format::scientific, significant_digits - 1);
    if (std::isfinite(x)) {
        const std::string_view text(first, static_cast<std::size_t>(end - first));
        const auto exponent = static_cast<int>(leading_integer(text.substr(text.find('e') + 1)));
        if (exponent >= -4 && exponent < significant_digits) {
            end = put(first, x, std::chars_format::fixed, significant_digits - 1 - exponent);
            if (exponent == significant_digits - 1) *end++ = '.';
        }
    }
    end_number(end, width);
}

void text_writer::shortest(double x) noexcept {
    char* const first = room();
    end_number(std::to_chars(first, first + longest_number, x).ptr, 0);
}

bool text_writer::flush() noexcept {
    if (size_ > 0) failed_ |= std::fwrite(buffer_.data(), 1, size_, file_) != size_;
    size_ = 0;
    return !failed_;
}

} // namespace kvx::zelvo
