#include "io/number_text.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace kvx::zelvo {

namespace {

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

/// Number of characters of a '+', which std::from_chars does not take; "+-1" is no number.
std::size_t plus_length(std::string_view text) noexcept {
    return text.starts_with('+') && !text.starts_with("+-") ? 1 : 0;
}

} // namespace

std::size_t leading_real(std::string_view text, double& x) noexcept {
    const char* const first = text.data() + plus_length(text);
    const auto read = std::from_chars(first, text.data() + text.size(), x);
    if (read.ec == std::errc::invalid_argument) return 0;
    if (read.ec == std::errc::result_out_of_range) {
        const bool negative = *first == '-';
        const std::string_view digits(first + negative,
                                      static_cast<std::size_t>(read.ptr - first) - negative);
        const double size = is_large(digits) ? std::numeric_limits<double>::infinity() : 0.0;
        x = negative ? -size : size;
    }
    return static_cast<std::size_t>(read.ptr - text.data());
}

std::int64_t leading_integer(std::string_view text) noexcept {
    while (!text.empty() && is_blank(text.front()))
        text.remove_prefix(1);
    text.remove_prefix(plus_length(text));
    std::int64_t n = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), n);
    if (read.ec != std::errc::result_out_of_range) return n;
    using limits = std::numeric_limits<std::int64_t>;
    return text.front() == '-' ? limits::min() : limits::max();
}

} // namespace kvx::zelvo
