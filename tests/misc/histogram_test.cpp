#include <cmath>
#include <random>
#include <stdexcept>

#include "meshes.h"

namespace kvx::zelvo::tests {

using misc::histogram;

const double inf = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

static dense1D<double> numbers(const std::vector<double>& entries) {
    return points({entries}).as_vector();
}

// Uniform bins are computed and general ones searched: both must agree with the limits, on the
// limits themselves, next to them, and where differences overflow or limits are neighbours.
TEST(histogram, every_value_lies_between_the_limits_of_its_bin) {
    const histogram cases[] = {histogram(0.1, 0.7, 1000), histogram(-1.7e308, 1.7e308, 7),
                               histogram(0, 5e-323, 10),
                               histogram(numbers({-inf, 0, 1e-9, 5, inf}))};
    for (const histogram& empty : cases)
        for (std::uint64_t i = 0; i <= empty.bins(); ++i)
            for (const double side : {-inf, empty.limit(i), inf}) {
                const double v = std::nextafter(empty.limit(i), side);
                histogram h = empty;
                h.process(v);
                std::uint64_t expected = 0;
                while (expected + 1 < h.bins() && h.limit(expected + 1) <= v)
                    ++expected;
                const bool inside = v >= h.limit(0) && v <= h.limit(h.bins());
                EXPECT_EQ(h.count_in(expected), inside) << v << " at limit " << i;
                EXPECT_EQ(h.below() + h.above(), !inside);
            }
}

TEST(histogram, statistics_lose_nothing_to_large_values) {
    histogram h(0, 1, 1);
    for (int i = 0; i < 1000; ++i)
        h.process(numbers({1e9 + 4, 1e9 + 7, 1e9 + 13, 1e9 + 16}));
    EXPECT_NEAR(h.mean(), 1e9 + 10, 1e-5);
    EXPECT_NEAR(h.standard_deviation(), std::sqrt(22.5), 1e-8);

    histogram huge(0, 1, 1);
    huge.process(numbers({1.5e308, -1.5e308, 1.5e308, -1.5e308}));
    EXPECT_NEAR(huge.mean() / 1.5e308, 0, 1e-15);
    EXPECT_EQ(huge.standard_deviation(), inf);
}

TEST(histogram, merging_equals_taking_all_values) {
    std::mt19937 draw(3);
    const histogram empty(-3, 3, 8);
    histogram merged = empty, parts[] = {empty, empty}, whole = empty;
    for (int i = 0; i < 3000; ++i) {
        const double v = i % 500 == 0 ? nan : std::normal_distribution<double>(1, 2)(draw);
        parts[i % 7 == 0].process(i == 77 ? inf : v);
        whole.process(i == 77 ? inf : v);
    }
    // into an empty one, from a full one, from an empty one
    EXPECT_TRUE(merged.merge(parts[0]) && merged.merge(parts[1]) && merged.merge(empty));
    EXPECT_EQ(merged.text(), whole.text());
    EXPECT_TRUE(whole.merge(whole));
    EXPECT_EQ(whole.count(), 2 * merged.count());
    EXPECT_FALSE(whole.merge(histogram(-3, 3, 4)));
}

TEST(histogram, bad_limits_are_refused) {
    for (const auto& limits :
         {numbers({}), numbers({1}), numbers({0, 1, 1}), numbers({1, 0}), numbers({0, nan})})
        EXPECT_THROW(histogram{limits}, std::invalid_argument);
    const std::tuple<double, double, std::uint64_t> uniform[] = {
        {0, 1, 0}, {1, 1, 2}, {nan, 1, 2}, {0, inf, 2}, {1, std::nextafter(1, 2), 2}};
    for (const auto& [lowest, highest, bins] : uniform)
        EXPECT_THROW(histogram(lowest, highest, bins), std::invalid_argument);
    EXPECT_THROW(histogram(0, 1, ~std::uint64_t{0}), std::bad_alloc);
}

TEST(histogram, text_and_what_it_tells) {
    histogram h(-1, 1, 4);
    h.process(numbers({-2, -1, 0.1, 0.2, 0.3, 0.7, 0.8, 0.9, 1, 1, 1, 1, 1, inf, nan}));
    EXPECT_EQ(h.text(40), "       below  1   6.7% ##\n"
                          "  -1 .. -0.5  1   6.7% ##\n"
                          "-0.5 ..    0  0   0.0%\n"
                          "   0 ..  0.5  3  20.0% ######\n"
                          " 0.5 ..    1  8  53.3% #################\n"
                          "       above  1   6.7% ##\n"
                          "not a number  1   6.7% ##\n"
                          "values              14\n"
                          "infinite            1\n"
                          "minimum             -2\n"
                          "mean                0.384615\n"
                          "maximum             inf\n"
                          "standard deviation  0.883913\n");
    // No room: bars of 10. All the room there is: 1000 columns. A lone value keeps its mark.
    EXPECT_NE(h.text(0).find("53.3% ##########\n"), std::string::npos);
    EXPECT_NE(h.text(~0u).find(std::string(977, '#') + '\n'), std::string::npos);
    h.process(dense1D<double>(100000, 0.75));
    EXPECT_NE(h.text(40).find("0.0% #\n"), std::string::npos);
    EXPECT_THAT(histogram(0, 1, 1).text(), ::testing::StartsWith("0 .. 1  0   0.0%\nvalues "));
}

} // namespace kvx::zelvo::tests
