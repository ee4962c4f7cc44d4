#include <cmath>
#include <limits>
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
corner_list with_top(const corner_list& top) {
    corner_list corners(cube.begin(), cube.begin() + 4);
    corners.insert(corners.end(), top.begin(), top.end());
    return corners;
}

/// Among the ideal elements: their last corner is out of the plane of the first.
bool is_solid(const corner_list& ideal) {
    return ideal.back().size() == 3 && ideal.back()[2] != 0;
}

/// Nodes 0, 1, 2, ... in columns of `rows`.
dense2D<unsigned int> numbered(std::uint64_t rows, std::uint64_t cols) {
    dense2D<unsigned int> conn(rows, cols);
    for (std::uint64_t i = 0; i < rows * cols; ++i)
        conn(i % rows, i / rows) = unsigned(i);
    return conn;
}

double rate(element_type kind, const corner_list& corners) {
    dense1D<double> Q;
    EXPECT_EQ(shape_qualities(points(corners), numbered(corners.size(), 1), kind, Q), 0);
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
        {ET_HEXA8, with_top({{0, 0, 1}, {0.5, 0, 1}, {0.5, 0.5, 1}, {0, 0.5, 1}}),
         0.4476295477536918},
        {ET_HEXA8, with_top({{1, 0, 1}, {1, 1, 1}, {0, 1, 1}, {0, 0, 1}}), 0.3106601717798213},
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
// image of a sound solid or plane element is as bad as it was good.
TEST(shape_qualities, invariance) {
    std::mt19937 draw(7);
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
            // Plane quadrangles tell the most inverted corner, surfaces in space have no sign.
            const bool sign = is_solid(ideal) || ideal[0].size() == 2;
            if (kind == ET_QUAD4 && sign)
                EXPECT_LT(rate(kind, mirrored(element)), 0);
            else
                EXPECT_NEAR(rate(kind, mirrored(element)), sign ? -q : q, 1e-14) << kind;
        }
    }
}

// Solids pressed flat onto a tilted plane: what rounding leaves of their volume has no sign.
TEST(shape_qualities, flat_solids_do_not_read_as_inverted) {
    std::mt19937 draw(5);
    int flat_tetrahedra = 0;
    for (int k = 0; k < 300; ++k) {
        for (const auto& [kind, ideal] : ideals) {
            if (!is_solid(ideal)) continue;
            corner_list element = shaken(ideal, 0.3, draw);
            for (auto& p : element)
                p[2] = 0.3 * p[0] - 0.7 * p[1];
            const double q = rate(kind, element);
            if (kind == ET_TETRA4) {
                EXPECT_LT(std::abs(q), 1e-15);
                flat_tetrahedra += q == 0;
            } else {
                EXPECT_EQ(q, 0) << kind;
            }
        }
    }
    // The four views of a tetrahedron's volume seldom agree on the sign of nothing.
    EXPECT_GT(flat_tetrahedra, 210);
}

TEST(shape_qualities, hostile_coordinates) {
    const ratings sources[] = {{0, 1},
                               {0, 1, 2, 0.5, -1},
                               {0, 1e-9, 1, 1 + 1e-9},
                               {0, 1e150, -1e150, 1},
                               {0, 1e-150, -1e-150, 2e-160},
                               {0, 5e-324, 1e308, -1e308},
                               {0, 1, 1, 1, 1, 1, 1, 1, 2, nan},
                               {0, 1, 1, 1, 1, 1, 1, 1, 2, inf, -inf}};
    std::mt19937 draw(1);
    for (const ratings& source : sources) {
        std::uniform_int_distribution<std::size_t> any(0, source.size() - 1);
        for (const auto& [kind, ideal] : ideals) {
            constexpr std::uint64_t n = 400;
            dense2D<double> pos(ideal[0].size(), n * ideal.size());
            for (double& x : pos.as_vector())
                x = source[any(draw)];
            dense1D<double> Q;
            ASSERT_EQ(shape_qualities(pos, numbered(ideal.size(), n), kind, Q), 0);
            for (std::uint64_t j = 0; j < n; ++j) {
                double nothing = 0; // or NaN for coordinates that are not finite
                for (const double x :
                     pos.sub_matrix(0, j * ideal.size(), 3, ideal.size()).as_vector())
                    nothing += 0 * x;
                EXPECT_TRUE(std::abs(Q[j]) <= (nothing == 0)) << Q[j] << " kind " << kind;
            }
        }
    }
}

TEST(shape_qualities, mixed_kinds_rate_each_column_by_its_shape) {
    corner_list nodes = cube;
    nodes.push_back({0.5, 0.5, 0.7});
    const dense2D<double> pos = strided(points(nodes), nan);
    const auto surfaces = columns({{0, 1, 2, none}, {0, 1, 6, 3}, {4, 1, 2, none}});
    const auto solids = columns({{2, 1, 0, 8, none, none, none, none},
                                 {0, 1, 2, 3, 8, none, none, none},
                                 {0, 1, 3, 4, 5, 7, none, none},
                                 {0, 1, 8, 3, 4, 5, 6, 7}});
    const struct {
        element_type mixed;
        const dense2D<unsigned int>& conn;
        std::vector<element_type> kinds;
    } cases[] = {{ET_FACE_MIX, surfaces, {ET_TRIA3, ET_QUAD4, ET_TRIA3}},
                 {ET_SOLID_MIX, solids, {ET_TETRA4, ET_PYRAMID5, ET_PENTA6, ET_HEXA8}}};
    for (const auto& c : cases) {
        dense1D<double> Q;
        ASSERT_EQ(shape_qualities(pos, strided(c.conn, 77u), c.mixed, Q), 0);
        for (std::uint64_t j = 0; j < c.conn.cols(); ++j) {
            const auto alone = c.conn.sub_matrix(0, j, node_count(c.kinds[j]), 1);
            dense1D<double> q;
            ASSERT_EQ(shape_qualities(pos, alone, c.kinds[j], q), 0);
            EXPECT_EQ(Q[j], q[0]) << j;
            EXPECT_NE(q[0], 0);
            // A mixed matrix without padding.
            ASSERT_EQ(shape_qualities(pos, alone, c.mixed, q), 0);
            EXPECT_EQ(Q[j], q[0]) << j;
        }
    }
    // Solids have no shape in the plane, and nothing has one without rows.
    dense1D<double> Q;
    EXPECT_EQ(shape_qualities(dense2D<double>(2, 9), solids, ET_SOLID_MIX, Q), 0);
    EXPECT_EQ(list(Q), ratings(4, 0.0));
    EXPECT_EQ(shape_qualities(pos, dense2D<unsigned int>(0, 2), ET_BAR2, Q), 0);
    EXPECT_EQ(list(Q), ratings(2, 0.0));
}

TEST(shape_qualities, rejected_calls) {
    const dense2D<double> pos = points(square);
    const auto good = columns({{0, 1, 2}});
    const auto beyond = columns({{0, 1, 4}});
    const dense2D<unsigned int> nothing(10, 0);
    const std::uint64_t unchecked = std::uint64_t{1} << 32; // nodes, none of which has a coordinate
    const struct {
        dense2D<double> pos;
        dense2D<unsigned int> conn;
        int kind;
        int code;
    } cases[] = {{pos, good, ET_TETRA10, -3},
                 {pos, nothing, ET_TETRA10, -3},
                 {pos, good, ET_TRIA6, -3},
                 {pos, good, ET_NODE1, -3},
                 {pos, good, ET_EDGE_MIX, -3},
                 {pos, good, 21, -3},
                 {pos, good, ET_QUAD4, -2},
                 {pos, beyond, ET_TRIA3, -2},
                 {pos, beyond, ET_FACE_MIX, -2},
                 {pos, good, ET_SOLID_MIX, -2},
                 {pos, columns({{0, none}}), ET_BAR2, -2},
                 {dense2D<double>(0, unchecked), good, ET_HEXA8, -2}};
    for (const auto& c : cases) {
        dense1D<double> Q(5, 7);
        misc::histogram statistics(0, 1, 1);
        const auto kind = static_cast<element_type>(c.kind);
        EXPECT_EQ(shape_qualities(c.pos, c.conn, kind, Q), c.code) << c.kind;
        EXPECT_TRUE(Q.empty());
        // In a run a matrix without entries has no kind to be wrong.
        const int code = c.conn.empty() ? 0 : c.code;
        EXPECT_EQ(shape_qualities(c.pos, c.conn, kind, statistics), code) << c.kind;
        EXPECT_EQ(statistics.count(), 0u);
    }
    dense1D<double> Q(5, 7);
    const dense2D<unsigned int> run[] = {good, beyond};
    EXPECT_EQ(shape_qualities(pos, run + 2, run, dense1D<int>(), Q), -3);
    EXPECT_EQ(shape_qualities(pos, run, run + 2, dense1D<int>(1, ET_TRIA3), Q), -4);
    EXPECT_EQ(list(Q), ratings(5, 7.0));
    EXPECT_EQ(shape_qualities(pos, run, run + 2, dense1D<int>(2, ET_TRIA3), Q), -2);
    EXPECT_TRUE(Q.empty());
}

TEST(shape_qualities, run_form) {
    const dense2D<double> pos = strided(points(square_3d), nan);
    const dense2D<unsigned int> run[] = {columns({{0, 1, 2}, {0, 0, 1}}),
                                         dense2D<unsigned int>(0, 9), columns({{0, 1, 2, 3}}),
                                         columns({{0, 3}})};
    dense1D<int> types(4, ET_TRIA3);
    types[1] = ET_HEXA27;
    types[2] = ET_QUAD4;
    types[3] = ET_BAR2;
    // Written in place: a view of fitting size stays one.
    dense1D<double> longer(8, 7);
    dense1D<double> Q = longer.sub_vector(2, 4);
    ASSERT_EQ(shape_qualities(pos, run, run + 4, types, Q), 0);
    const double right_angled = rate(ET_TRIA3, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    EXPECT_EQ(list(longer), (ratings{7, 7, right_angled, 0, 1, 1, 7, 7}));

    misc::histogram statistics(-1, 1, 4);
    ASSERT_EQ(shape_qualities(pos, run, run + 4, types, statistics), 0);
    EXPECT_EQ(statistics.count(), 4u);
    EXPECT_EQ(statistics.count_in(3), 3u);
    EXPECT_EQ(shape_qualities(pos, run, run, dense1D<int>(), Q), 0);
    EXPECT_TRUE(Q.empty());
}

// Ratings written over the coordinates they come from are those of separate arrays.
TEST(shape_qualities, output_over_coordinates) {
    dense2D<double> pos = points({{0, 0}, {1, 0}, {1, 1}, {0, 1}, {3, 1}});
    const auto conn = columns({{0, 1, 2, 3}, {1, 4, 2, 3}, {0, 1, 2, 3}});
    dense1D<double> apart;
    ASSERT_EQ(shape_qualities(pos, conn, ET_QUAD4, apart), 0);
    dense1D<double> Q = pos.as_vector().sub_vector(0, 3);
    ASSERT_EQ(shape_qualities(pos, conn, ET_QUAD4, Q), 0);
    EXPECT_EQ(list(Q), list(apart));
}

} // namespace kvx::zelvo::tests
