#include <cmath>
#include <limits>

#include "meshes.h"

namespace kvx::zelvo::tests {

using vec2 = vector_fixed<double, 2>;
using vec3 = vector_fixed<double, 3>;

TEST(inc_bounding_box, grows_by_used_by_listed_and_by_all_nodes) {
    const auto pos = strided(points({{0, 5, -1}, {2, 7, 0}, {-9, 9, 9}, {1, 6, 3}}), 50.0);
    vec3 lo(0.5, 8.0, 2.0), hi(lo);
    const auto box = [&] { return std::vector{lo[0], lo[1], lo[2], hi[0], hi[1], hi[2]}; };
    EXPECT_EQ(inc_bounding_box(pos, strided(columns({{1, 3, none}, {3, 1, 1}}), 2u), lo, hi), 0);
    EXPECT_THAT(box(), testing::ElementsAre(0.5, 6, 0, 2, 8, 3));
    EXPECT_EQ(inc_bounding_box(pos, vec({3, none, 0, 3}), lo, hi), 0);
    EXPECT_THAT(box(), testing::ElementsAre(0, 5, -1, 2, 8, 3));
    EXPECT_EQ(inc_bounding_box(pos, lo, hi), 0);
    EXPECT_THAT(box(), testing::ElementsAre(-9, 5, -1, 2, 9, 9));
}

TEST(inc_bounding_box, does_not_touch_the_box_when_it_refuses) {
    vec2 lo(4.0), hi(-4.0);
    EXPECT_EQ(inc_bounding_box(points({{1, 1}}), vec({0, 1}), lo, hi), -2);
    EXPECT_TRUE(lo[0] == 4.0 && lo[1] == 4.0 && hi[0] == -4.0 && hi[1] == -4.0);
}

// A NaN takes over the lower corner, and whatever comes next replaces it there.
TEST(inc_bounding_box, lets_a_nan_reset_the_lower_corner_only) {
    const auto pos = points({{1, 1}, {std::numeric_limits<double>::quiet_NaN(), 2}, {7, 3}});
    vec2 lo(0.0), hi(0.0);
    inc_bounding_box(pos, vec({0, 1}), lo, hi);
    EXPECT_TRUE(std::isnan(lo[0]) && hi[0] == 1.0);
    inc_bounding_box(pos, vec({2}), lo, hi);
    EXPECT_EQ(lo[0], 7.0);
}

} // namespace kvx::zelvo::tests
