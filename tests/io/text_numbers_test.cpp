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

/// Doubles of all sizes, by their bits, and some of everyday size.
std::vector<double> all_sorts_of_numbers() {
    std::vector<double> numbers = {0.0,  -0.0, 1e308, -1e308,   5e-324,   2.5,
                                   1e22, NAN,  -NAN,  INFINITY, -INFINITY};
    std::mt19937_64 bits;
    for (int i = 0; i < 100000; ++i) {
        numbers.push_back(std::bit_cast<double>(bits()));
        numbers.push_back((static_cast<double>(bits() % 4000001) - 2e6) / 64);
    }
    return numbers;
}

std::string printed(const char* format, double x) {
    char text[400];
    std::snprintf(text, sizeof text, format, x);
    return text;
}

TEST(TextNumbers, AreThoseOfPrintfAndStrtodUnderAnyLocale) {
    const std::string zeros(300000, '0'); // longer than the buffers
    std::string text = "18446744073709551615 +1.5 .5 5. -.25E+2 1e400 -1e400 1e-400 -1e-400 4e-324 "
                       "2e-324 INF 1e99999999999999999999 -1e-99999999999999999999 -infinity "
                       "NaN 0e99999999999999999999 0." +
                       zeros + "1e300001 0." + zeros + "1 1" + zeros + "e-300000 1" + zeros + '\n';
    const std::string special = text.substr(20);
    const std::vector<double> numbers = all_sorts_of_numbers();
    for (const double x : numbers)
        text += printed("%f", x) + printed(" %e", x) + printed(" %.17e\n", x);
    std::vector<double> expected;
    for (const char* at = text.c_str(); *at != '\n' || at[1] != '\0';) {
        char* end = nullptr;
        expected.push_back(std::strtod(at, &end));
        at = end;
    }

    const comma_locale commas;
    const scratch_file out;
    {
        const closing_file file = out.open("wb");
        text_writer writer(file.get());
        writer.number(18446744073709551615u);
        writer.text(special);
        for (const double x : numbers) {
            writer.fixed(x);
            writer.text(" ");
            writer.scientific(x);
            writer.text(" ");
            writer.scientific(x, 17);
            writer.text("\n");
        }
        EXPECT_TRUE(writer.flush());
    }
    EXPECT_TRUE(out.content() == text);
    const closing_file file = out.open("rb");
    text_reader reader(file.get());
    for (const double number : expected) {
        double x = 0.5;
        ASSERT_TRUE(reader.number(x)) << reader.position();
        ASSERT_TRUE(std::isnan(x) ? std::isnan(number) : std::memcmp(&x, &number, sizeof x) == 0)
            << reader.position();
    }
    EXPECT_FALSE(reader.skip_blanks());
    EXPECT_EQ(reader.position(), text.size());
}

TEST(TextReader, TakesTheLongestNumberAndLeavesTheRest) {
    const auto expect = [](const char* text, double value, std::uint64_t position) {
        const closing_file file = scratch_file(text).open("rb");
        text_reader reader(file.get());
        double x = 9;
        EXPECT_EQ(reader.number(x), value != 9) << text;
        EXPECT_EQ(x, value) << text;
        EXPECT_EQ(reader.position(), position) << text;
    };
    expect("1-2", 1, 1);
    expect("1e+x", 1, 1);
    expect("1.2.3", 1.2, 3);
    expect("infinitely", INFINITY, 3);
    expect("\r\n\t 7,5", 7, 5);
    for (const char* no_number : {"+-1", "--1", "e5", ".", "-", ""})
        expect(no_number, 9, 0);
}

} // namespace
} // namespace kvx::zelvo::tests
