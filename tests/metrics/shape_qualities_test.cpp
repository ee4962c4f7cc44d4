#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include "meshes.h"

namespace kvx::zelvo::tests {

namespace {

using corner_list = std::vector<std::vector<double>>;
using ratings = std::vector<double>;

const double h = std::sqrt(3) / 2;
const double long_sides = 0.028262276925921925; // of a quadrangle whose diagonals are shorter
const double inf = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

// Each rates 1.
const corner_list triangle = {{0, 0}, {1, 0}, {0.5, h}};
const corner_list square = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
const corner_list triangle_3d = {{0, 0, 0}, {1, 0, 0}, {0.5, h, 0}};
const corner_list square_3d = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
const corner_list tetrahedron = {{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}};
const corner_list pyramid = {
    {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, 0.7071067811865476}};
const corner_list wedge = {{0, 0, 0}, {1, 0, 0}, {0.5, h, 0}, {0, 0, 1}, {1, 0, 1}, {0.5, h, 1}};
const corner_list cube = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                          {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
const corner_list usual_tetrahedron = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

const std::pair<element_type, corner_list> ideals[] = {
    {ET_TRIA3, triangle},  {ET_QUAD4, square},       {ET_TRIA3, triangle_3d},
    {ET_QUAD4, square_3d}, {ET_TETRA4, tetrahedron}, {ET_PYRAMID5, pyramid},
    {ET_PENTA6, wedge},    {ET_HEXA8, cube}};

corner_list with(corner_list corners, std::size_t i, std::vector<double> moved) {
    corners[i] = std::move(moved);
    return corners;
}
corner_list scaled(corner_list corners, std::vector<double> factors) {
    for (auto& p : corners) {
        for (std::size_t axis = 0; axis < p.size(); ++axis)
            p[axis] *= factors[axis];
    }
    return corners;
}
corner_list mirrored(const corner_list& corners) {
    return scaled(corners, {-1, 1, 1});
}
/// x += part * (coordinate `axis`)
corner_list sheared(corner_list corners, std::size_t axis, double part) {
    for (auto& p : corners)
        p[0] += part * p[axis];
    return corners;
}

double rate(element_type kind, const corner_list& corners) {
    dense2D<unsigned int> conn(corners.size(), 1);
    std::iota(conn.data(), conn.data() + conn.rows(), 0u);
    dense1D<double> Q;
    EXPECT_EQ(shape_qualities(points(corners), conn, kind, Q), 0);
    return Q.size() == 1 ? Q[0] : nan;
}

corner_list shaken(corner_list corners, double reach, std::mt19937& draw) {
    std::uniform_real_distribution<double> shift(-reach, reach);
    for (auto& p : corners) {
        for (double& x : p)
            x += shift(draw);
    }
    return corners;
}

} // namespace

TEST(shape_qualities, reference_values) {
    const struct {
        element_type kind;
        corner_list corners;
        double value;
    } cases[] = {
        {ET_BAR2, {{0, 0}, {0, 0}}, 1},
        {ET_TRIA3, mirrored(triangle), -1},
        {ET_TRIA3, mirrored(triangle_3d), 1},
        {ET_TRIA3, with(triangle, 2, {0, 1}), 0.7174389352143009},
        {ET_TRIA3, with(triangle, 2, {3, 0}), 0},
        {ET_TRIA3, {{2, 5, 1}, {2, 5, 1}, {2, 5, 1}}, 0},
        {ET_TRIA3, {{0}, {1}, {3}}, 0}, // one dimension
        {ET_TRIA3, with(triangle, 2, {nan, 1}), 0},
        {ET_TRIA3, with(triangle_3d, 1, {inf, 0, 0}), 0},

        {ET_QUAD4, scaled(square, {2, 1}), 0.8432740427115678},
        {ET_QUAD4, with(square, 2, {0.25, 0.25}), -0.2792407799438736},
        {ET_QUAD4, {{0, 0}, {10, 0}, {9, 0.125}, {1, 0.125}}, long_sides},
        {ET_QUAD4, corner_list(4, {0, 0, 1, 1}), 0}, // four dimensions
        {ET_QUAD4, {{0, 0, 0}, {10, 0, 0}, {9, 0.125, 0}, {1, 0.125, 0}}, long_sides},
        {ET_QUAD4, {{0, 0, 0}, {2, 2, 1}, {0, 3, 3}, {-2, 1, 2}}, 1},
        {ET_QUAD4, {{0, 0, 0}, {2, 2, 1}, {1, 4, 3}, {-1, 2, 2}}, 0.5869760893038727},
        {ET_QUAD4, scaled(square_3d, {2, 1, 1}), 0.8432740427115678},
        {ET_QUAD4, sheared(square_3d, 1, 0.5), 0.583347110386223},
        {ET_QUAD4, with(square_3d, 2, {1, 1, 0.5}), 0.8149977645492442},
        {ET_QUAD4, with(square_3d, 2, {0.25, 0.25, 0}), -0.2792407799438736},
        {ET_QUAD4, with(square_3d, 1, {0, 0, 0}), 0},
        {ET_QUAD4, with(square_3d, 2, {0, 0, 0}), 0},

        {ET_TETRA4, usual_tetrahedron, -0.732050807568877},
        {ET_TETRA4, mirrored(tetrahedron), -1},
        {ET_TETRA4, with(usual_tetrahedron, 3, {1, 1, 0}), 0},
        // The face 0 1 2 is so flat that its Gram determinant cancels out: area by cross product.
        {ET_TETRA4, with(usual_tetrahedron, 2, {2, 1e-9, 0}), -5.477225573682355e-10},

        {ET_PYRAMID5, scaled(pyramid, {2, 1, 1}), 0.585786437626905},
        {ET_PYRAMID5, scaled(pyramid, {1, 1, 0.5}), 0.7071067811865476},
        {ET_PYRAMID5, with(pyramid, 4, {0.5, 0.5, 1}), 0.8944271909999159},
        {ET_PYRAMID5, with(pyramid, 4, {0, 0, 1}), 0.585786437626905},
        {ET_PYRAMID5, with(pyramid, 2, {0.75, 0.75, 0}), 0.7071067811865475},
        {ET_PYRAMID5, with(pyramid, 2, {0.25, 0.25, 0}), -0.7071067811865475},
        {ET_PYRAMID5, with(pyramid, 1, {0, 0, 0}), 0},
        {ET_PYRAMID5, with(pyramid, 4, {0.5, 0.5, -1}), -0.8944271909999159},

        {ET_PENTA6, scaled(wedge, {2, 1, 1}), 0.6061689171085145},
        {ET_PENTA6, scaled(wedge, {1, 1, 2}), 0.5630659918114416},
        {ET_PENTA6, scaled(wedge, {1, 1, 0.5}), 0.8169872981077807},
        {ET_PENTA6, sheared(wedge, 2, 0.5), 0.8547521239436781},
        {ET_PENTA6, with(with(wedge, 2, {0, 1, 0}), 5, {0, 1, 1}), 0.7150982795387746},
        {ET_PENTA6, with(wedge, 5, {0.5, h, 0.5}), 0.6915756484482462},
        {ET_PENTA6, with(wedge, 5, {0.5, h, -0.5}), -0.4531830145739057},
        {ET_PENTA6, with(wedge, 3, {0, 0, 0}), 0},
        {ET_PENTA6, mirrored(sheared(wedge, 2, 0.5)), -0.8547521239436781},

        {ET_HEXA8, scaled(cube, {2, 1, 1}), 0.6},
        {ET_HEXA8, scaled(cube, {1, 1, 0.5}), 0.75},
        {ET_HEXA8, sheared(cube, 2, 0.5), 0.8605684167270892},
        {ET_HEXA8, with(with(with(cube, 5, {0.5, 0, 1}), 6, {0.5, 0.5, 1}), 7, {0, 0.5, 1}),
         0.4476295477536918},
        {ET_HEXA8,
         {cube[0], cube[1], cube[2], cube[3], cube[5], cube[6], cube[7], cube[4]},
         0.3106601717798213},
        {ET_HEXA8, with(cube, 6, {0.75, 0.75, 0.75}), 0.408248290463863},
        {ET_HEXA8, with(cube, 6, {0.5, 0.5, 0.5}), -0.7071067811865475},
        {ET_HEXA8, with(cube, 6, {-0.25, -0.25, -0.25}), -0.5601120336112039},
        {ET_HEXA8, with(cube, 1, {0, 0, 0}), 0},
        {ET_HEXA8, mirrored(sheared(cube, 2, 0.5)), -0.8605684167270892},
    };
    for (const auto& [kind, corners, value] : cases)
        EXPECT_NEAR(rate(kind, corners), value, std::abs(value) * 1e-14) << "kind " << kind;
    for (const auto& [kind, ideal] : ideals)
        EXPECT_NEAR(rate(kind, ideal), 1, 1e-15) << kind;
    // Crossed, and the lobes cancel but for a hair: no direction to measure against.
    EXPECT_NEAR(rate(ET_QUAD4, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1 + 1e-9, 1, 0}}), 0, 1e-7);
    // A pyramid at the edge of what counts as flat has the rating of its worst corner.
    const corner_list bent = with(pyramid, 2, {0.5 + 4e-13, 0.5 + 4e-13, 0});
    EXPECT_EQ(rate(ET_PYRAMID5, bent), rate(ET_TETRA4, {bent[1], bent[3], bent[2], bent[4]}));
}

// Size, place and direction do not matter, sizes beyond the range of squares included; a mirror
// image of a sound solid or plane element is as bad as it was good. What rounding leaves of solids
// pressed flat onto a tilted plane has no sign.
TEST(shape_qualities, invariance_and_flatness) {
    std::mt19937 draw(7);
    int flat_tetrahedra = 0;
    for (int k = 0; k < 200; ++k) {
        for (const auto& [kind, ideal] : ideals) {
            const corner_list element = shaken(ideal, 0.15, draw);
            const double q = rate(kind, element);
            ASSERT_GT(q, 0.1);
            corner_list turned = element;
            for (auto& p : turned) {
                // a turn by 4-3-5 in the plane of the first two axes, then the axes in a cycle
                p[1] = 0.6 * std::exchange(p[0], 0.8 * p[0] - 0.6 * p[1]) + 0.8 * p[1];
                if (p.size() == 3) p = {p[1] + 5, p[2] - 3, p[0] + 1};
            }
            EXPECT_NEAR(rate(kind, turned), q, 1e-13) << kind;
            for (const double size : {1e150, 1e-150, 3e-310})
                EXPECT_NEAR(rate(kind, scaled(element, {size, size, size})), q, 1e-12) << kind;
            // Their last corner is out of the plane of the first; surfaces in space have no sign.
            const bool is_solid = ideal.back().size() == 3 && ideal.back()[2] != 0;
            const double reflected = rate(kind, mirrored(element));
            if (ideal[0].size() == 2 && kind == ET_QUAD4)
                EXPECT_LT(reflected, 0); // tells the most inverted corner
            else
                EXPECT_NEAR(reflected, is_solid || ideal[0].size() == 2 ? -q : q, 1e-14) << kind;
            if (!is_solid) continue;
            corner_list pressed = shaken(ideal, 0.3, draw);
            for (auto& p : pressed)
                p[2] = 0.3 * p[0] - 0.7 * p[1];
            const double flat = rate(kind, pressed);
            EXPECT_LE(std::abs(flat), kind == ET_TETRA4 ? 1e-15 : 0) << kind;
            flat_tetrahedra += kind == ET_TETRA4 && flat == 0;
        }
    }
    // The four views of a tetrahedron's volume seldom agree on the sign of nothing.
    EXPECT_GT(flat_tetrahedra, 140);
}

TEST(shape_qualities, hostile_coordinates) {
    const ratings sources[] = {
        {0, 1, 2, 0.5, -1},         {0, 1e-9, 1, 1 + 1e-9},
        {0, 1e150, -1e150, 1},      {0, 1e-150, -1e-150, 2e-160},
        {0, 5e-324, 1e308, -1e308}, {0, 1, 1, 1, 1, 1, 1, 1, 2, nan, inf, -inf}};
    std::mt19937 draw(1);
    for (const ratings& source : sources) {
        for (const auto& [kind, ideal] : ideals) {
            corner_list corners = ideal;
            for (int k = 0; k < 400; ++k) {
                for (double& x : corners[draw() % corners.size()])
                    x = source[draw() % source.size()];
                EXPECT_LE(std::abs(rate(kind, corners)), 1) << kind; // false for NaN
            }
        }
    }
}

TEST(shape_qualities, mixed_kinds_rate_each_column_by_its_shape) {
    corner_list nodes = cube;
    nodes.push_back({0.5, 0.5, 0.7});
    const dense2D<double> pos = strided(points(nodes), nan);
    const auto faces = columns({{0, 1, 2, none}, {0, 1, 6, 3}, {4, 1, 2, none}});
    const auto solids = columns({{2, 1, 0, 8, none, none, none, none},
                                 {0, 1, 2, 3, 8, none, none, none},
                                 {0, 1, 3, 4, 5, 7, none, none},
                                 {0, 1, 8, 3, 4, 5, 6, 7}});
    const std::tuple<element_type, dense2D<unsigned int>, std::vector<element_type>> cases[] = {
        {ET_FACE_MIX, faces, {ET_TRIA3, ET_QUAD4, ET_TRIA3}},
        {ET_SOLID_MIX, solids, {ET_TETRA4, ET_PYRAMID5, ET_PENTA6, ET_HEXA8}}};
    dense1D<double> Q, alone;
    for (const auto& [mixed, conn, kinds] : cases) {
        ASSERT_EQ(shape_qualities(pos, strided(conn, 77u), mixed, Q), 0);
        for (std::uint64_t j = 0; j < conn.cols(); ++j) {
            const auto column = conn.sub_matrix(0, j, node_count(kinds[j]), 1);
            for (const element_type kind : {kinds[j], mixed}) { // which without padding is the same
                ASSERT_EQ(shape_qualities(pos, column, kind, alone), 0);
                EXPECT_EQ(list(alone), ratings(1, Q[j]));
            }
            EXPECT_NE(Q[j], 0);
        }
    }
    // Solids have no shape in the plane, and nothing has one without rows.
    EXPECT_EQ(shape_qualities(dense2D<double>(2, 9), solids, ET_SOLID_MIX, Q), 0);
    EXPECT_EQ(list(Q), ratings(4, 0.0));
    EXPECT_EQ(shape_qualities(pos, dense2D<unsigned int>(0, 2), ET_BAR2, Q), 0);
    EXPECT_EQ(list(Q), ratings(2, 0.0));
}

TEST(shape_qualities, rejected_calls_leave_no_ratings) {
    const dense2D<double> pos = points(square);
    const std::uint64_t unchecked = std::uint64_t{1} << 32; // nodes, none of which has a coordinate
    const auto good = columns({{0, 1, 2}});
    dense1D<double> Q(5, 7);
    EXPECT_EQ(shape_qualities(dense2D<double>(0, unchecked), good, ET_HEXA8, Q), -2);
    EXPECT_TRUE(Q.empty());
    Q = dense1D<double>(5, 7);
    EXPECT_EQ(shape_qualities(pos, &good, &good + 1, dense1D<int>(), Q), -4);
    EXPECT_EQ(list(Q), ratings(5, 7.0));
    EXPECT_EQ(shape_qualities(pos, &good, &good + 1, dense1D<int>(1, ET_QUAD4), Q), -2);
    EXPECT_TRUE(Q.empty());
}

// A view of fitting size is written in place, over the coordinates too.
TEST(shape_qualities, run_form) {
    std::vector<double> memory = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    const auto pos = dense2D<double>::wrap(memory.data(), 3, 4);
    const dense2D<unsigned int> run[] = {columns({{0, 1, 2}, {0, 0, 1}}),
                                         dense2D<unsigned int>(0, 9), columns({{0, 1, 2, 3}}),
                                         columns({{0, 3}})};
    dense1D<int> types(4, ET_TRIA3);
    types[1] = ET_HEXA27;
    types[2] = ET_QUAD4;
    types[3] = ET_BAR2;
    misc::histogram statistics(-1, 1, 4);
    ASSERT_EQ(shape_qualities(pos, run, run + 4, types, statistics), 0);
    EXPECT_EQ(statistics.count(), 4u);
    EXPECT_EQ(statistics.count_in(3), 3u);
    auto Q = dense1D<double>::wrap(memory.data() + 3, 4);
    ASSERT_EQ(shape_qualities(pos, run, run + 4, types, Q), 0);
    const double right_angled = rate(ET_TRIA3, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    EXPECT_EQ(memory, (ratings{0, 0, 0, right_angled, 0, 1, 1, 1, 0, 0, 1, 0}));
    EXPECT_EQ(shape_qualities(pos, run, run, dense1D<int>(), Q), 0);
    EXPECT_TRUE(Q.empty());
}

} // namespace kvx::zelvo::tests
