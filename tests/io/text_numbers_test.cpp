#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <sstream>
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
    for (int i = 0; i < 300000; ++i) {
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

TEST(TextWriter, WritesWhatPrintfWritesUnderAnyLocale) {
    const std::vector<double> numbers = all_sorts_of_numbers();
    const std::string longer(200000, 'x'); // than the writer's buffer
    std::string expected = "18446744073709551615" + longer;
    for (const double x : numbers)
        expected += printed("%f", x) + printed(" %e", x) + printed(" %.8e\n", x);
    const comma_locale commas;
    const scratch_file out;
    {
        const closing_file file = out.open("wb");
        text_writer writer(file.get());
        writer.number(18446744073709551615u);
        writer.text(longer);
        for (const double x : numbers) {
            writer.fixed(x);
            writer.text(" ");
            writer.scientific(x);
            writer.text(" ");
            writer.scientific(x, 8);
            writer.text("\n");
        }
        EXPECT_TRUE(writer.flush());
    }
    EXPECT_TRUE(out.content() == expected);
}

TEST(TextReader, ReadsWhatStrtodReadsUnderAnyLocale) {
    const std::string zeros(300000, '0'); // longer than the reader's block
    std::istringstream special("+1.5 .5 5. -.25E+2 1e400 -1e400 1e-400 -1e-400 4e-324 2e-324 INF "
                               "1e99999999999999999999 -1e-99999999999999999999 -infinity NaN "
                               "0e99999999999999999999 0." +
                               zeros + "1e300001 0." + zeros + "1 1" + zeros + "e-300000 1" +
                               zeros);
    std::vector<std::string> numbers{std::istream_iterator<std::string>(special), {}};
    for (const double x : all_sorts_of_numbers())
        numbers.push_back(printed("%.17g", x));
    std::string text;
    std::vector<double> expected;
    for (const std::string& number : numbers) {
        text += number + ' ';
        expected.push_back(std::strtod(number.c_str(), nullptr));
    }
    const comma_locale commas;
    const closing_file file = scratch_file(text).open("rb");
    text_reader reader(file.get());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        double x = 0.5;
        ASSERT_TRUE(reader.number(x)) << numbers[i];
        ASSERT_TRUE(std::isnan(expected[i]) ? std::isnan(x)
                                            : std::memcmp(&x, &expected[i], sizeof x) == 0)
            << numbers[i];
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
