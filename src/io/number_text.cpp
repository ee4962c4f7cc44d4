#include "io/number_text.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cmath>

#include "io/exact_decimals.h"

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

/// The powers of ten that doubles hold.
constexpr auto exact_powers = [] {
    std::array<double, 23> powers{};
    double power = 1.0;
    for (double& p : powers) {
        p = power;
        power *= 10.0;
    }
    return powers;
}();

/// Longest decimals that are rounded in exact integers.
constexpr int most_exact_digits = 17;

char* write_any(char* first, double x, std::chars_format format, int digits) noexcept {
    assert(digits >= 0 && digits <= most_digits);
    const std::size_t room = format == std::chars_format::scientific
                                 ? static_cast<std::size_t>(digits) + 8
                                 : longest_number;
    const auto end = std::to_chars(first, first + room, x, format, digits);
    assert(end.ec == std::errc());
    return end.ptr;
}

char* write_sign(char* first, double x) noexcept {
    *first = '-';
    return first + std::signbit(x);
}

/// Writes the last `count` digits of n, which has no more, with a point behind the first `before`.
char* write_pointed(char* first, std::uint64_t n, int count, int before) noexcept {
    char* const end = write_digits(first + 1, n, count);
    std::copy(first + 1, first + 1 + before, first);
    first[before] = '.';
    return end;
}

char* write_rounded(char* first, const rounded_decimal& rounded, int digits,
                    char exponent_letter) noexcept {
    char* at = digits > 0 ? write_pointed(first, rounded.digits, digits + 1, 1)
                          : write_digits(first, rounded.digits, 1);
    *at++ = exponent_letter;
    *at++ = rounded.exponent < 0 ? '-' : '+';
    return write_digits(at, static_cast<std::uint64_t>(std::abs(rounded.exponent)), 2);
}

} // namespace

const char* quick_real(const char* first, const char* last, double& x) noexcept {
    constexpr auto most_power = static_cast<std::ptrdiff_t>(exact_powers.size()) - 1;
    constexpr std::uint64_t most_mantissa = std::uint64_t{1} << 53;
    const char* at = first;
    const bool negative = at != last && *at == '-';
    at += negative;
    std::uint64_t mantissa = 0;
    std::ptrdiff_t count = take_digits(at, last, mantissa);
    std::ptrdiff_t power = 0;
    if (at != last && *at == '.') {
        ++at;
        power = -take_digits(at, last, mantissa);
        count -= power;
    }
    if (count == 0 || count > most_whole_digits) return nullptr;
    if (at != last && (*at | 0x20) == 'e') {
        ++at;
        const bool down = at != last && *at == '-';
        if (at != last && (*at == '-' || *at == '+')) ++at;
        std::uint64_t exponent = 0;
        const std::ptrdiff_t length = take_digits(at, last, exponent);
        if (length == 0 || length > 3) return nullptr;
        power +=
            down ? -static_cast<std::ptrdiff_t>(exponent) : static_cast<std::ptrdiff_t>(exponent);
    }
    if (mantissa > most_mantissa || power < -most_power || power > most_power) return nullptr;
    const auto n = static_cast<double>(static_cast<std::int64_t>(mantissa));
    const double size = power < 0 ? n / exact_powers[static_cast<std::size_t>(-power)]
                                  : n * exact_powers[static_cast<std::size_t>(power)];
    x = negative ? -size : size;
    return at;
}

std::size_t leading_real(std::string_view text, double& x) noexcept {
    if (const char* const end = quick_real(text.data(), text.data() + text.size(), x))
        return static_cast<std::size_t>(end - text.data());
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
    constexpr std::size_t few_digits = 18; // which 64 bits hold
    const bool negative = text.starts_with('-');
    const char* at = text.data() + negative;
    const char* const end = at + std::min(few_digits, text.size() - negative);
    for (; at != end && is_digit(*at); ++at)
        n = 10 * n + digit(*at);
    if (at != end || text.size() - negative < few_digits) return negative ? -n : n;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), n);
    if (read.ec != std::errc::result_out_of_range) return n;
    using limits = std::numeric_limits<std::int64_t>;
    return text.front() == '-' ? limits::min() : limits::max();
}

char* write_scientific(char* first, double x, int digits, char exponent_letter) noexcept {
    rounded_decimal rounded;
    if (digits <= most_exact_digits && round_to_significant(x, digits + 1, rounded))
        return write_rounded(write_sign(first, x), rounded, digits, exponent_letter);
    char* const end = write_any(first, x, std::chars_format::scientific, digits);
    if (exponent_letter == 'E') {
        for (char* c = first; c != end; ++c) {
            if (*c >= 'a') *c = static_cast<char>(*c - 'a' + 'A');
        }
    }
    return end;
}

char* write_fixed(char* first, double x, int digits) noexcept {
    std::uint64_t rounded = 0;
    if (digits == 0 || digits > most_exact_digits || !round_to_places(x, digits, rounded))
        return write_any(first, x, std::chars_format::fixed, digits);
    const std::uint64_t power = powers_of_10[static_cast<unsigned>(digits)];
    char* const at = write_integer(write_sign(first, x), rounded / power);
    *at = '.';
    return write_digits(at + 1, rounded % power, digits);
}

char* write_general_pointed(char* first, double x) noexcept {
    constexpr int count = 6;
    constexpr int least_exponent = -4;
    rounded_decimal rounded;
    // What cannot be rounded is so large or small that it is no case for the fixed form.
    if (!round_to_significant(x, count, rounded) || rounded.exponent < least_exponent ||
        rounded.exponent >= count)
        return write_scientific(first, x, count - 1);
    char* at = write_sign(first, x);
    if (rounded.exponent >= 0)
        return write_pointed(at, rounded.digits, count, rounded.exponent + 1);
    at = std::copy_n("0.000", 1 - rounded.exponent, at);
    return write_digits(at, rounded.digits, count);
}

} // namespace kvx::zelvo
