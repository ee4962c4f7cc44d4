#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

/// Doubles of everyday size as decimal digits, rounded in exact integers: half to even, as printf
/// does.
namespace kvx::zelvo {

template <std::size_t Count>
consteval std::array<std::uint64_t, Count> powers_of(std::uint64_t base) {
    std::array<std::uint64_t, Count> powers{};
    std::uint64_t power = 1;
    for (std::uint64_t& p : powers) {
        p = power;
        power *= base; // of the last one unused
    }
    return powers;
}
// as many as 64 bits hold
inline constexpr auto powers_of_5 = powers_of<28>(5);
inline constexpr auto powers_of_10 = powers_of<20>(10);

/// A finite number: its size is mantissa x 2^(power - 52), the mantissa below 2^53 and, unless the
/// number is 0 or subnormal, no less than 2^52.
struct binary_size {
    static constexpr int mantissa_bits = 52;
    std::uint64_t mantissa;
    int power;

    explicit binary_size(double x) noexcept {
        constexpr int bias = 1023;
        constexpr std::uint64_t hidden_bit = std::uint64_t{1} << mantissa_bits;
        const auto bits = std::bit_cast<std::uint64_t>(x);
        const auto biased = static_cast<int>(bits >> mantissa_bits & 0x7FF);
        mantissa = (bits & (hidden_bit - 1)) | (biased > 0 ? hidden_bit : 0);
        power = std::max(biased, 1) - bias;
    }
};

/// mantissa x 5^k / 2^shift, which is below 2^64, cut to a whole number.
struct cut_product {
    std::uint64_t whole;
    bool above_half; ///< whether what was cut off is more than 1/2
    bool exactly_half;
    bool anything; ///< whether anything was cut off

    cut_product(std::uint64_t mantissa, int k, int shift) noexcept {
        const auto bits = static_cast<unsigned>(shift);
        const unsigned __int128 product =
            static_cast<unsigned __int128>(mantissa) * powers_of_5[static_cast<unsigned>(k)];
        const unsigned __int128 half = static_cast<unsigned __int128>(1) << (bits - 1);
        const unsigned __int128 rest = product & (2 * half - 1);
        whole = static_cast<std::uint64_t>(product >> bits);
        above_half = rest > half;
        exactly_half = rest == half;
        anything = rest != 0;
    }
};

/// A finite number as `digits` x 10^(exponent + 1 - their count).
struct rounded_decimal {
    std::uint64_t digits;
    int exponent;
};

/// Rounds the size of x to 1 to 18 significant digits; false, and nothing done, where 64-bit powers
/// of ten do not reach.
inline bool round_to_significant(double x, int count, rounded_decimal& out) noexcept {
    if (x == 0.0) {
        out = {0, 0};
        return true;
    }
    const binary_size size(x);
    // 2^power has this exponent of ten, x the same or the next
    constexpr int log10_of_2 = 78913; // x 2^18
    int exponent = (size.power * log10_of_2) >> 18;
    const int k = count - 1 - exponent;
    const int shift = binary_size::mantissa_bits - size.power - k;
    if (k < 0 || k >= static_cast<int>(powers_of_5.size()) || shift <= 0) return false;
    const cut_product cut(size.mantissa, k, shift);
    const std::uint64_t too_large = powers_of_10[static_cast<unsigned>(count)];
    std::uint64_t digits = cut.whole;
    if (digits < too_large) {
        digits += cut.above_half || (cut.exactly_half && (digits & 1) != 0);
    } else { // one digit more than wanted
        const std::uint64_t last = digits % 10;
        digits /= 10;
        digits += last > 5 || (last == 5 && (cut.anything || (digits & 1) != 0));
        ++exponent;
    }
    if (digits == too_large) {
        digits /= 10;
        ++exponent;
    }
    out = {digits, exponent};
    return true;
}

/// Rounds the size of x times 10^count, for 0 to 18 places; false, and nothing done, where it may
/// not fit.
inline bool round_to_places(double x, int count, std::uint64_t& out) noexcept {
    constexpr int widest_shift = 127; // of what is far too small
    const binary_size size(x);
    const int bits_of_power = count * 10 / 3 + 1; // log2(10) < 10 / 3
    const int shift = std::min(binary_size::mantissa_bits - size.power - count, widest_shift);
    if (size.power + bits_of_power >= 63 || shift <= 0) return false;
    const cut_product cut(size.mantissa, count, shift);
    out = cut.whole + (cut.above_half || (cut.exactly_half && (cut.whole & 1) != 0));
    return true;
}

/// Writes the last `count` digits of n, which has no more of them; the end of the text.
inline char* write_digits(char* first, std::uint64_t n, int count) noexcept {
    static constexpr auto pairs = [] {
        std::array<char, 200> text{};
        for (unsigned i = 0; i < 100; ++i) {
            text[2 * i] = static_cast<char>('0' + i / 10);
            text[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
        return text;
    }();
    char* const end = first + count;
    char* at = end;
    for (; at - first >= 2; n /= 100) {
        const char* const pair = &pairs[2 * (n % 100)];
        *--at = pair[1];
        *--at = pair[0];
    }
    if (at != first) *first = static_cast<char>('0' + n % 10);
    return end;
}

/// Writes n; the end of the text.
inline char* write_integer(char* first, std::uint64_t n) noexcept {
    constexpr int log10_of_2 = 1233; // x 2^12
    const int least = (static_cast<int>(std::bit_width(n | 1)) * log10_of_2) >> 12;
    const bool more = (n | 1) >= powers_of_10[static_cast<unsigned>(least)];
    return write_digits(first, n, least + more);
}

} // namespace kvx::zelvo
