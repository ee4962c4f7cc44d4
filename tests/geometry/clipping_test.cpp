#include <limits>

#include "meshes.h"

namespace kvx::zelvo::tests {

using vec3 = vector_fixed<double, 3>;

// Nodes 0 to 4 at the heights 0, 1, 2, 0.5 and -1 above a slanted plane.
TEST(clip, appends_the_elements_wholly_above_the_plane) {
    const vec3 P(1.0, 2.0, 3.0), N(0.0, 3.0, 4.0);
    const auto pos = strided(
        points({{9, 2, 3, 7}, {1, 5, 2, 7}, {0, 2, 5, 7}, {1, 2, 4, 7}, {1, 1, 3, 7}}), 9.0);
    const auto conn = strided(columns({{1, 2, 3, none},
                                       {1, 2, 0, none},
                                       {4, 1, 2, 3},
                                       {3, 2, 1, 3},
                                       {none, 4, 4, 4},
                                       {1, 2, 3, 4}}),
                              4u);
    auto kept = strided(columns({{9, 9, 9, 9}}), 7u);
    const std::vector<std::vector<unsigned int>> inside = {
        {9, 9, 9, 9}, {1, 2, 3, none}, {3, 2, 1, 3}, {none, 4, 4, 4}};
    EXPECT_EQ(clip(pos, conn, P, N, kept), 0);
    EXPECT_EQ(list(kept), inside);
    auto both = conn; // clipped into itself
    EXPECT_EQ(clip(pos, both, P, N, both), 0);
    EXPECT_EQ(both.cols(), 9u);
    EXPECT_EQ(list(both.sub_matrix(0, 6, 4, 3)), list(kept.sub_matrix(0, 1, 4, 3)));
    EXPECT_EQ(list(conn.col(0)), inside[1]);
}

TEST(clip, is_a_line_in_2d_whatever_the_third_component_is) {
    const auto pos = points({{1, 5}, {2, -5}, {3, 0}});
    for (const double z : {5.0, std::numeric_limits<double>::infinity()}) {
        dense2D<unsigned int> kept;
        EXPECT_EQ(clip(pos, columns({{0, 2}, {2, 1}}), {1.0, 0.0, 9.0}, {1.0, 0.0, z}, kept), 0);
        EXPECT_EQ(list(kept), list(columns({{2, 1}})));
    }
}

TEST(clip, rejects_in_order_and_changes_nothing) {
    const auto pos = points({{1, 1, 1}, {2, 2, 2}});
    const auto good = columns({{0, 1, none, 0}}), bad = columns({{0, 1, 2, none}});
    const vec3 up(0.0, 0.0, 1.0), tiny(0.0, 0.0, 1e-13),
        nan(std::numeric_limits<double>::quiet_NaN());
    auto kept = columns({{7, 7, 7}});
    EXPECT_EQ(clip(pos, dense2D<unsigned int>(4, 0), up, tiny, kept), 0);
    EXPECT_EQ(clip(pos, bad, up, tiny, kept), -2);
    EXPECT_EQ(clip(pos, good, up, tiny, kept), -4);
    EXPECT_EQ(clip(pos, good, up, nan, kept), -4);
    EXPECT_EQ(clip(pos, good, up, up, kept), -5);
    EXPECT_EQ(list(kept), list(columns({{7, 7, 7}})));
}

} // namespace kvx::zelvo::tests
