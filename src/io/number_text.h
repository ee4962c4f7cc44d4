#pragma once

#include <cstdint>
#include <string_view>

/// Numbers at the beginning of a text, in the manner of strtod and atoi but whatever the locale
/// says.
namespace kvx::zelvo {

/// White space of the C locale.
constexpr bool is_blank(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Reads the longest decimal number that the text begins with, with its sign, "inf" and "nan"
/// included; beyond the range of double it is +-infinity or +-0. Returns the number of characters
/// that make it up; 0, with x as it was, when there is no number. White space before it is none.
std::size_t leading_real(std::string_view text, double& x) noexcept;

/// The whole number that the text begins with, after white space; 0 when there is none, the nearest
/// one that fits when it is too long.
std::int64_t leading_integer(std::string_view text) noexcept;

} // namespace kvx::zelvo
