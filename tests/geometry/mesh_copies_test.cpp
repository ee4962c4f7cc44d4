#include <limits>
#include <numbers>

#include "meshes.h"

namespace kvx::zelvo::tests {

using vec2 = vector_fixed<double, 2>;
using vec3 = vector_fixed<double, 3>;

TEST(copy_mesh, appends_the_nodes_in_order_of_first_appearance) {
    auto pos = strided(points({{0, 5}, {1, 6}, {2, 7}, {3, 8}}), 0.5);
    auto conn = strided(columns({{3, 1, none}, {1, 3, 0}}), 2u);
    const auto elements = list(conn);
    auto copied = columns({{9, 9}, {9, 9}, {9, 9}});
    EXPECT_EQ(copy_mesh(pos, copied, conn), 0);
    EXPECT_EQ(list(copied), list(columns({{4, 5, none}, {5, 4, 6}})));
    EXPECT_EQ(list(pos), list(points({{0, 5}, {1, 6}, {2, 7}, {3, 8}, {3, 8}, {1, 6}, {0, 5}})));
    EXPECT_EQ(list(conn), elements);
    EXPECT_EQ(copy_mesh(pos, conn, conn), 0);
    EXPECT_EQ(list(conn), list(columns({{7, 8, none}, {8, 7, 9}})));
}

// Copy i is turned i steps, then shifted i steps; in 3-D the same as in 2-D for the axis z.
TEST(copy_mesh, repeats_turned_and_shifted_copies) {
    const double right = std::numbers::pi / 2;
    const auto conn = columns({{1, none}});
    auto plane = strided(points({{7, 7}, {2, 1}}), 0.5);
    auto space = points({{7}, {2}});
    auto in_plane = columns({{0, 1, 0}}), in_space = conn; // appended to
    EXPECT_EQ(copy_mesh(plane, in_plane, {10.0, 0.0}, {1.0, 1.0}, right, 3, conn), 0);
    EXPECT_EQ(copy_mesh(space, in_space, {10.0, 0.0, 5.0}, {1.0, 0.0, 0.0}, {0.0, 0.0, right}, 3,
                        in_space),
              0);
    EXPECT_EQ(list(in_plane),
              list(columns({{0, 1, 0}, {2, none, none}, {3, none, none}, {4, none, none}})));
    EXPECT_EQ(list(in_space), list(columns({{1, none}, {2, none}, {3, none}, {4, none}})));
    const double expected[][3] = {{11, 2, 5}, {20, 1, 10}, {31, 0, 15}};
    ASSERT_EQ(plane.cols(), 5u);
    ASSERT_EQ(space.cols(), 5u);
    ASSERT_EQ(space.rows(), 3u);
    for (unsigned i = 0; i < 3; ++i) {
        for (unsigned k = 0; k < 3; ++k) {
            EXPECT_NEAR(space(k, i + 2), expected[i][k] - (k == 1), 1e-14);
            EXPECT_NEAR(k < 2 ? plane(k, i + 2) : expected[i][k], expected[i][k], 1e-14);
        }
    }
}

TEST(copy_mesh, copies_of_nothing_end_at_once) {
    auto pos = points({{1}});
    dense2D<unsigned int> copied;
    EXPECT_EQ(copy_mesh(pos, copied, vec2(1.0), vec2(0.0), 1.0, none,
                        dense2D<unsigned int>(0, 1ull << 60)),
              0);
    EXPECT_EQ(list(pos), list(points({{1, 0}}))) << "turned, so with its rows";
    EXPECT_TRUE(copied.empty());
}

TEST(copy_sym_mesh, mirrors_about_a_line_or_a_plane) {
    auto pos = points({{5, 3}, {2, 4}});
    auto copied = columns({{9}});
    EXPECT_EQ(copy_sym_mesh(pos, copied, {0.0, 1.0}, {0.0, 2.0}, columns({{0, none}})), 0);
    EXPECT_EQ(list(pos), list(points({{5, 3}, {2, 4}, {5, -1}})));
    EXPECT_EQ(list(copied), list(columns({{2, none}})));
    EXPECT_EQ(copy_sym_mesh(pos, copied, {0.0, 0.0, 1.0}, {2.0, 0.0, 2.0}, columns({{1}})), 0);
    EXPECT_EQ(list(pos.col(3)), (std::vector<double>{1, 4, -1}));
}

TEST(mesh_copies, reject_in_order_and_change_nothing) {
    auto pos = points({{1, 1}, {2, 2}});
    dense2D<double> no_nodes(2, 0);
    const auto bad = columns({{0, 2}});
    auto copied = columns({{9}});
    const vec2 zero(0.0), nan(std::numeric_limits<double>::quiet_NaN()), up(0.0, 1.0);
    EXPECT_EQ(copy_mesh(no_nodes, copied, bad), -2);
    EXPECT_EQ(copy_mesh(no_nodes, copied, up, up, 1.0, 2, bad), 0);
    EXPECT_EQ(copy_mesh(pos, copied, up, up, 1.0, 0, bad), 0);
    EXPECT_EQ(copy_mesh(pos, copied, up, up, 1.0, 2, bad), -2);
    EXPECT_EQ(copy_sym_mesh(no_nodes, copied, up, zero, bad), 0);
    EXPECT_EQ(copy_sym_mesh(pos, copied, up, zero, bad), -4);
    EXPECT_EQ(copy_sym_mesh(pos, copied, up, nan, bad), -4);
    EXPECT_EQ(copy_sym_mesh(pos, copied, up, up, bad), -2);
    EXPECT_EQ(list(pos), list(points({{1, 1}, {2, 2}})));
    EXPECT_EQ(list(copied), list(columns({{9}})));
}

} // namespace kvx::zelvo::tests
