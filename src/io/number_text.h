#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
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

/// Most digits of which 64 bits hold any number.
constexpr std::ptrdiff_t most_whole_digits = 19;

/// Moves `at` behind the digits that stand there and appends them to n, which may overflow if they
/// are more than most_whole_digits; their count. Eight at a time as long as `last` is that far: so
/// `last` had better be the end of the memory that may be read than that of the line.
std::ptrdiff_t take_digits(const char*& at, const char* last, std::uint64_t& n) noexcept;

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

inline std::ptrdiff_t take_digits(const char*& at, const char* last, std::uint64_t& n) noexcept {
    constexpr std::uint64_t every_byte = 0x0101010101010101;
    static constexpr std::array<std::uint64_t, 9> powers = {
        1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
    const char* const begin = at;
    std::uint64_t word = 0;
    constexpr auto width = static_cast<std::ptrdiff_t>(sizeof word);
    while (std::endian::native == std::endian::little && last - at >= width) {
        std::memcpy(&word, at, sizeof word);
        word ^= '0' * every_byte; // a digit becomes its value, anything else more than 9
        // right up to the first byte that is no digit
        const std::uint64_t others = (word | (word + (0x7F - 9) * every_byte)) & 0x80 * every_byte;
        const int bits = std::countr_zero(others) / 8 * 8;
        if (bits == 0) return at - begin;
        word <<= 64 - bits; // zeros before the digits
        // pairs of digits, fours, all eight
        word = word * (10 * 0x100 + 1) >> 8 & 0x00FF00FF00FF00FF;
        word = word * (100 * 0x10000 + 1) >> 16 & 0x0000FFFF0000FFFF;
        word = word * (10000 * 0x100000000 + 1) >> 32;
        n = n * powers[static_cast<unsigned>(bits) / 8] + word;
        at += bits / 8;
        if (bits < 64) return at - begin;
    }
    for (; at != last && is_digit(*at); ++at)
        n = 10 * n + digit(*at);
    return at - begin;
}

} // namespace kvx::zelvo
