#include <bit>
#include <cmath>
#include <cstdlib>
#include <random>

#include <gmock/gmock.h>

#include "io/files.h"
#include "io/text_reader.h"
#include "io/text_writer.h"

namespace kvx::zelvo::tests {
namespace {

using testing::ElementsAre;

/// Doubles of all sizes, by their bits, and some of everyday size.
std::vector<double> all_sorts_of_numbers() {
    std::vector<double> numbers = {0.0, -0.0, 1e308, -1e308, 5e-324,   0.5,
                                   2.5, 1e22, NAN,   -NAN,   INFINITY, -INFINITY};
    std::mt19937_64 bits;
    for (int i = 0; i < 300000; ++i) {
        numbers.push_back(std::bit_cast<double>(bits()));
        numbers.push_back(static_cast<double>(static_cast<int>(bits() % 4000001) - 2000000) / 64);
    }
    return numbers;
}

std::string printed(const char* format, double x) {
    char text[400];
    std::snprintf(text, sizeof text, format, x);
    return text;
}

struct temporary_file {
    std::FILE* file = std::tmpfile();
    explicit temporary_file(const std::string& content = {}) {
        std::fwrite(content.data(), 1, content.size(), file);
        std::rewind(file);
    }
    ~temporary_file() { std::fclose(file); }
};

TEST(TextWriter, WritesWhatPrintfWritesUnderAnyLocale) {
    const std::vector<double> numbers = all_sorts_of_numbers();
    std::string expected;
    for (const double x : numbers)
        expected += printed("%f ", x) + printed("%e ", x) + printed("%.8e\n", x);
    const comma_locale commas;
    const temporary_file out;
    {
        text_writer writer(out.file);
        for (const double x : numbers) {
            writer.fixed(x);
            writer.text(" ");
            writer.scientific(x);
            writer.text(" ");
            writer.scientific(x, 8);
            writer.text("\n");
        }
    }
    EXPECT_TRUE(content_of(out.file) == expected);
}

TEST(TextWriter, TakesLongTextAndRemembersARefusal) {
    const temporary_file out;
    const std::string longer(200000, 'x');
    text_writer writer(out.file);
    writer.number(18446744073709551615u);
    writer.text(longer);
    writer.text("end");
    EXPECT_TRUE(writer.flush());
    EXPECT_TRUE(content_of(out.file) == "18446744073709551615" + longer + "end");

    std::FILE* const full = std::fopen("/dev/full", "wb");
    std::setbuf(full, nullptr);
    text_writer refused(full);
    refused.text("lost");
    EXPECT_FALSE(refused.flush());
    EXPECT_FALSE(refused.flush());
    std::fclose(full);
}

TEST(TextReader, ReadsWhatStrtodReadsUnderAnyLocale) {
    std::vector<double> expected;
    std::string text;
    const auto add = [&](const std::string& number) {
        expected.push_back(std::strtod(number.c_str(), nullptr));
        text += number + ' ';
    };
    for (const double x : all_sorts_of_numbers())
        add(printed("%.17g", x));
    for (const char* number :
         {"+1.5", ".5", "5.", "-.25E+2", "1e400", "-1e400", "1e-400", "-1e-400", "4e-324", "2e-324",
          "1e99999999999999999999", "-1e-99999999999999999999", "0e99999999999999999999",
          "0.0e-9999", "INF", "-infinity", "NaN", "-nan"})
        add(number);
    const std::string zeros(300000, '0'); // longer than the reader's block
    add("0." + zeros + "1e300001");
    add("0." + zeros + "1");
    add("1" + zeros + "e-300000");
    add("1" + zeros);

    const comma_locale commas;
    const temporary_file in(text);
    text_reader reader(in.file);
    std::size_t different = 0;
    for (const double x : expected) {
        double y = 0.0;
        ASSERT_TRUE(reader.number(y));
        different += std::isnan(x)
                         ? !std::isnan(y)
                         : std::bit_cast<std::uint64_t>(x) != std::bit_cast<std::uint64_t>(y);
    }
    EXPECT_EQ(different, 0u);
    EXPECT_FALSE(reader.skip_blanks());
    EXPECT_EQ(reader.position(), text.size());
}

TEST(TextReader, TakesTheLongestNumberAndLeavesTheRest) {
    const struct {
        const char* text;
        bool number;
        double value;
        std::uint64_t position;
    } cases[] = {{"1-2", true, 1, 1},     {"1e+x", true, 1, 1},
                 {"1.2.3", true, 1.2, 3}, {"infinitely", true, INFINITY, 3},
                 {"0x10", true, 0, 1},    {"\r\n\t 7,5", true, 7, 5},
                 {"+-1", false, 0, 0},    {"--1", false, 0, 0},
                 {"e5", false, 0, 0},     {".", false, 0, 0},
                 {"", false, 0, 0},       {"-", false, 0, 0}};
    for (const auto& c : cases) {
        const temporary_file in(c.text);
        text_reader reader(in.file);
        double x = 0.0;
        EXPECT_EQ(reader.number(x), c.number) << c.text;
        EXPECT_EQ(x, c.value) << c.text;
        EXPECT_EQ(reader.position(), c.position) << c.text;
    }
}

TEST(TextReader, MatchesPatternsAndSkipsLinesAcrossBlocks) {
    const std::string line(100000, 'x');
    const std::string nul(1, '\0');
    const std::string text =
        line + nul + line + "\r\n" + std::string(70000, ' ') + "key\n\nword=1\n" + line;
    const temporary_file in(text);
    text_reader reader(in.file);
    EXPECT_TRUE(reader.skip_line());
    EXPECT_EQ(reader.position(), 2 * line.size() + 3);
    EXPECT_FALSE(reader.literal(" key words"));
    EXPECT_TRUE(reader.literal("= 1 "));
    const char* const tail = reader.bytes(line.size());
    ASSERT_NE(tail, nullptr);
    EXPECT_EQ(std::string(tail, line.size()), line);
    EXPECT_EQ(reader.bytes(1), nullptr);
    EXPECT_FALSE(reader.skip_line());
    EXPECT_EQ(reader.position(), text.size());
}

} // namespace
} // namespace kvx::zelvo::tests
