#pragma once

#include <cstdint>
#include <limits>
#include <string_view>

/// Numbers at the beginning of a text, in the manner of strtod and atoi, and as text, in the manner
/// of printf, but whatever the locale says.
namespace kvx::zelvo {

/// White space of the C locale.
constexpr bool is_blank(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool is_digit(char c) noexcept {
    return c >= '0' && c <= '9';
}
constexpr unsigned int digit(char c) noexcept {
    return static_cast<unsigned int>(c - '0');
}

/// Reads the longest decimal number that the text begins with, with its sign, "inf" and "nan"
/// included; beyond the range of double it is +-infinity or +-0. Returns the number of characters
/// that make it up; 0, with x as it was, when there is no number. White space before it is none.
std::size_t leading_real(std::string_view text, double& x) noexcept;

/// leading_real for a number of few digits and of everyday size, which two exact doubles make
/// with one rounding, to nearest if that is the mode; the end of the number, or nullptr with x as
/// it was for any other text.
const char* quick_real(const char* first, const char* last, double& x) noexcept;

/// The whole number that the text begins with, after white space; 0 when there is none, the nearest
/// one that fits when it is too long.
std::int64_t leading_integer(std::string_view text) noexcept;

constexpr int most_digits = 32;
/// Room for any number: sign, the digits before the point of the largest double, point, digits.
constexpr std::size_t longest_number =
    1 + (std::numeric_limits<double>::max_exponent10 + 1) + 1 + most_digits;

/// Writes printf's "%.<digits>e", with another letter for the exponent if wanted, and returns its
/// end. At most 32 digits, and 8 characters more.
char* write_scientific(char* first, double x, int digits = 6, char exponent_letter = 'e') noexcept;
/// Writes printf's "%.<digits>f", with at most 32 digits, and returns its end.
char* write_fixed(char* first, double x, int digits = 6) noexcept;
/// Writes printf's "%#g", and returns its end.
char* write_general_pointed(char* first, double x) noexcept;

} // namespace kvx::zelvo
