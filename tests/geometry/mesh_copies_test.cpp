#include <cmath>
#include <numbers>

#include "meshes.h"

namespace kvx::zelvo::tests {

TEST(copy_mesh, appends_the_nodes_in_order_of_first_appearance) {
    auto pos = strided(points({{0, 5}, {1, 6}, {2, 7}, {3, 8}}), 0.5);
    auto conn = strided(columns({{3, 1, none}, {1, 3, 0}}), 2u);
    auto copied = columns({{9, 9}, {9, 9}, {9, 9}});
    EXPECT_EQ(copy_mesh(pos, copied, conn), 0);
    EXPECT_EQ(list(copied), list(columns({{4, 5, none}, {5, 4, 6}})));
    EXPECT_EQ(list(pos), list(points({{0, 5}, {1, 6}, {2, 7}, {3, 8}, {3, 8}, {1, 6}, {0, 5}})));
    EXPECT_EQ(copy_mesh(pos, conn, conn), 0);
    EXPECT_EQ(list(conn), list(columns({{7, 8, none}, {8, 7, 9}})));
}

// Copy i is turned i steps, then shifted i steps; copies come behind the elements that are there.
TEST(copy_mesh, repeats_turned_and_shifted_copies) {
    const double right = std::numbers::pi / 2;
    auto plane = points({{7, 7}, {2, 1}}), space = points({{7}, {2}});
    auto in_plane = columns({{0, 1, 0}}), in_space = columns({{1, none}});
    copy_mesh(plane, in_plane, {10.0, 0.0}, {1.0, 1.0}, right, 3, in_space);
    copy_mesh(space, in_space, {9.0, 0.0, 5.0}, {1.0, 0.0, 0.0}, {0.0, 0.0, right}, 3, in_space);
    EXPECT_EQ(list(in_plane.col(3)), list(vec({4, none, none})));
    EXPECT_EQ(list(in_space), list(columns({{1, none}, {2, none}, {3, none}, {4, none}})));
    const double flat[] = {7, 7, 2, 1, 11, 2, 20, 1, 31, 0};
    const double high[] = {7, 0, 0, 2, 0, 0, 10, 1, 5, 18, 0, 10, 28, -1, 15};
    EXPECT_THAT(list(plane.as_vector()), testing::Pointwise(testing::DoubleNear(1e-14), flat));
    EXPECT_THAT(list(space.as_vector()), testing::Pointwise(testing::DoubleNear(1e-14), high));
}

TEST(copy_sym_mesh, mirrors_about_a_line_or_a_plane) {
    auto pos = points({{5, 3}, {2, 4}});
    auto copied = columns({{9}});
    EXPECT_EQ(copy_sym_mesh(pos, copied, {0.0, 1.0}, {0.0, 2.0}, columns({{0, none}})), 0);
    EXPECT_EQ(list(copied), list(columns({{2, none}})));
    EXPECT_EQ(copy_sym_mesh(pos, copied, {0.0, 0.0, 1.0}, {2.0, 0.0, 2.0}, columns({{1}})), 0);
    EXPECT_EQ(list(pos), list(points({{5, 3, 0}, {2, 4, 0}, {5, -1, 0}, {1, 4, -1}})));
}

TEST(mesh_copies, change_nothing_when_they_refuse_and_end_with_nothing_to_copy) {
    const vector_fixed<double, 2> up(0.0, 1.0), nan(0.0, std::nan(""));
    const auto bad = columns({{0, 2}}), of_no_row = dense2D<unsigned int>(0, 1ull << 60);
    dense2D<double> pos = points({{1}, {2}});
    auto out = columns({{9}});
    EXPECT_EQ(copy_mesh(pos, out, up, up, 1.0, 2, bad), -2);
    EXPECT_EQ(copy_sym_mesh(pos, out, up, nan, bad), -4);
    EXPECT_EQ(list(pos), list(points({{1}, {2}})));
    EXPECT_EQ(copy_mesh(pos, out, up, up, 1.0, none, of_no_row), 0) << "and ends at once";
    EXPECT_EQ(list(pos), list(points({{1, 0}, {2, 0}}))) << "turned, so with its rows";
    EXPECT_EQ(copy_mesh(pos, out, up, up, 1.0, 2, dense2D<unsigned int>(2, 0)), 0);
    EXPECT_EQ(list(out), list(columns({{9, none}})));
}

} // namespace kvx::zelvo::tests
