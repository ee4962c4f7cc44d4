#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "io/files.h"
#include "io/text_reader.h"
#include "io/text_writer.h"

namespace kvx::zelvo::tests {
namespace {

TEST(TextNumbers, AreThoseOfPrintfAndStrtodUnderAnyLocale) {
    const std::string zeros(300000, '0'); // longer than the buffers
    const std::string special =
        " +1.5 .5 5. -.25E+2 0.01e+400 -1e400 1e-400 -1e-400 4e-324 2e-324 "
        "INF 1e99999999999999999999 "
        "9007199254740992e22 -9007199254740993e-22 9007199254740995 1e23 7e-23 "
        "9999999999999999999 36893488147419103233 .3e-05 "
        "-1e-99999999999999999999 -infinity NaN 0e99999999999999999999 0." +
        zeros + "1e300001 0." + zeros + "1 1" + zeros + "e-300000 1" + zeros;
    // Of everyday size, with all digits, and now and then of any size, which makes long text.
    std::vector<double> numbers = {-0.0, 1e308, 5e-324, 2.5, NAN, -NAN, INFINITY, -INFINITY};
    std::mt19937_64 bits;
    for (int i = 0; i < 40000; ++i) {
        const double any = std::bit_cast<double>(bits());
        int exponent = 0;
        numbers.push_back(i % 16 == 0 ? any : std::ldexp(std::frexp(any, &exponent), i % 99 - 49));
        numbers.push_back((static_cast<double>(bits() % 4000001) - 2e6) / 64);
    }
    // Ties, what rounding carries to one digit more, and the limits of what is rounded in integers.
    for (int power = -40; power <= 40; ++power) {
        for (const double digits : {1.0, 1.25, 9.5, 9.9999995, 123456.5, 1234567.5}) {
            const double x = digits * std::pow(10.0, power);
            if (std::abs(x - 1e6) < 1.0) continue; // for which some printf write "1.e+06" as %#g
            numbers.insert(numbers.end(), {std::nextafter(x, 0.0), x, std::nextafter(x, 1e300)});
            numbers.push_back(std::ldexp(digits, power));
        }
    }
    std::string text = "18446744073709551615" + special;
    for (const double x : numbers) {
        char printed[500];
        const int length = std::snprintf(printed, sizeof printed, "\n%f %.17e %14.5e %E %-16.5e%#g",
                                         x, x, x, x, x, x);
        text.append(printed, static_cast<std::size_t>(length));
    }
    std::vector<double> expected;
    for (char* at = text.data(); *at != '\0';)
        expected.push_back(std::strtod(at, &at));

    const scratch_file scratch;
    const closing_file file = scratch.open("w+b");
    text_writer writer(file.get());
    writer.number(18446744073709551615u);
    writer.text(special);
    for (const double x : numbers) {
        writer.text("\n");
        writer.fixed(x);
        writer.text(" ");
        writer.scientific(x, 17);
        writer.text(" ");
        writer.scientific(x, 5, 14);
        writer.text(" ");
        writer.scientific_upper(x);
        writer.text(" ");
        writer.scientific(x, 5, -16);
        writer.general_pointed(x);
    }
    EXPECT_TRUE(writer.flush());
    std::rewind(file.get());
    EXPECT_TRUE(scratch.content() == text);
    text_reader reader(file.get());
    for (const double number : expected) {
        double x = 0.5;
        ASSERT_TRUE(reader.number(x)) << reader.position();
        ASSERT_TRUE(std::isnan(x) ? std::isnan(number) : std::memcmp(&x, &number, sizeof x) == 0)
            << reader.position();
    }
    EXPECT_EQ(reader.position(), text.size());
}

TEST(TextNumbers, AreThoseOfAtoiSaturatedAndTheShortestThatReadBack) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(leading_integer(" \t-17x") + leading_integer("+-1") + leading_integer(""), -17);
    EXPECT_EQ(leading_integer("-99999999999999999999"), -most - 1);
    EXPECT_EQ(leading_integer("999999999999999999,"), leading_integer("1000000000000000000") - 1);
    const scratch_file scratch;
    const closing_file file = scratch.open("w+b");
    text_writer writer(file.get());
    writer.shortest(-5e-324);
    writer.general_pointed(-0.0, 9);
    EXPECT_TRUE(writer.flush());
    std::rewind(file.get());
    EXPECT_EQ(scratch.content(), "-5e-324 -0.00000");
}

TEST(TextReader, TakesTheLongestNumberAndLeavesTheRest) {
    for (const char* text : {"1e+x", "infinitely", "\r\n\t 7,5", "+-1", "--1", "e5", ".", "",
                             "123:4567890", "1234567/ 890", "12\x80.5 6789"}) {
        char* end = nullptr;
        const double expected = std::strtod(text, &end);
        const closing_file file = scratch_file(text).open("rb");
        text_reader reader(file.get());
        double x = 0;
        EXPECT_EQ(reader.number(x), end != text) << text;
        EXPECT_EQ(x, expected) << text;
        EXPECT_EQ(reader.position(), end - text) << text;
    }
}

} // namespace
} // namespace kvx::zelvo::tests
