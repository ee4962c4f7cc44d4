#include <cmath>
#include <sstream>

#include "metrics/shape_blocks.h"
#include "random_meshes.h"
#include "reference_shapes.h"

namespace kvx::zelvo::tests {

namespace {

using corner_list = std::vector<std::vector<double>>;

// Each rates 1.
const double h = std::sqrt(3) / 2;
const std::map<element_type, corner_list> ideals = {
    {ET_TRIA3, {{0, 0, 0}, {1, 0, 0}, {0.5, h, 0}}},
    {ET_QUAD4, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}},
    {ET_TETRA4, {{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}}},
    {ET_PYRAMID5, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, std::sqrt(0.5)}}},
    {ET_PENTA6, {{0, 0, 0}, {1, 0, 0}, {0.5, h, 0}, {0, 0, 1}, {1, 0, 1}, {0.5, h, 1}}},
    {ET_HEXA8,
     {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}}}};

double rate(element_type kind, const corner_list& corners) {
    dense1D<double> Q;
    EXPECT_EQ(shape_qualities(points(corners), columns({identity(corners.size())}), kind, Q), 0);
    return Q.size() == 1 ? Q[0] : nan;
}

/// The element of the corners, by the formulas, in more digits and a larger range than the library
/// has.
using real = long double;
struct point3 {
    real x, y, z;
    point3 operator-(const point3& o) const { return {x - o.x, y - o.y, z - o.z}; }
    point3 operator+(const point3& o) const { return {x + o.x, y + o.y, z + o.z}; }
    real operator*(const point3& o) const { return x * o.x + y * o.y + z * o.z; }
    point3 operator%(const point3& o) const {
        return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
    }
};
unsigned digit(char c) {
    return unsigned(c - '0');
}
real norm(const point3& v) {
    return std::sqrt(v * v);
}
real quotient(real a, real b) {
    return b > 0 ? a / b : 0;
}
real finish(real q) {
    return std::abs(q) >= 1e-12 ? std::clamp(q, -1.0L, 1.0L) : 0;
}
real worst(const std::vector<real>& terms) {
    const auto [m, M] = std::minmax_element(terms.begin(), terms.end());
    return *m > 0 ? *m : *M < 0 ? *M : std::max(*m, -*M);
}

real plain_quadrangle(const std::vector<point3>& P, bool in_plane, real perimeter, real L) {
    const point3 d0 = P[2] - P[0], d1 = P[3] - P[1], n = in_plane ? point3{0, 0, 1} : d0 % d1;
    real least = HUGE_VALL, largest = norm(n);
    for (unsigned i = 0; i < 4; ++i) {
        const point3 N = (P[i] - P[(i + 3) % 4]) % (P[(i + 1) % 4] - P[i]);
        least = std::min(least, N * n);
        if (!in_plane) largest = std::max(largest, norm(N) / 4);
    }
    const auto [dmin, dmax] = std::minmax({norm(d0), norm(d1)});
    L = std::max(L, dmax);
    return quotient(4 * std::sqrt(2.0L * quotient(dmin, dmax)) * quotient(least, largest),
                    L * perimeter);
}

real plain_solid(element_type shape, const std::vector<point3>& P, real L) {
    const std::map<element_type, std::string> neighbours = {
        {ET_PYRAMID5, "134 204 314 024"},
        {ET_PENTA6, "123 204 015 540 351 432"},
        {ET_HEXA8, "134 205 316 027 750 461 572 643"}};
    std::vector<real> terms, S;
    point3 C = {0, 0, 0};
    for (const point3& p : P)
        C = C + p;
    const real n = real(P.size());
    std::istringstream corners(neighbours.at(shape)), sides(sides_of.at(shape));
    for (std::string at; corners >> at;) {
        const point3 p = P[S.size()], e1 = P[digit(at[0])] - p, e2 = P[digit(at[1])] - p,
                     e3 = P[digit(at[2])] - p, n1 = e2 % e3, n2 = e3 % e1, n3 = e1 % e2;
        S.push_back(shape == ET_PYRAMID5 ? norm(n1) + norm(n2) + norm(n1 + n3) + norm(n2 + n3)
                    : shape == ET_PENTA6 ? norm(n1) + norm(n2) + norm(n3) + norm(n1 + n2)
                                         : 2 * (norm(n1) + norm(n2) + norm(n3)));
        terms.push_back(quotient(e1 * n1, S.back()));
    }
    for (std::string at; shape != ET_PYRAMID5 && sides >> at;) {
        std::vector<point3> F;
        point3 sum = {0, 0, 0};
        real of_corners = 0;
        for (const char c : at) {
            F.push_back(P[digit(c)]);
            sum = sum + F.back();
            of_corners += S[digit(c)];
        }
        const real k = real(F.size());
        const point3 to_centre = {C.x / n - sum.x / k, C.y / n - sum.y / k, C.z / n - sum.z / k};
        const point3 normal =
            k == 3 ? (F[1] - F[0]) % (F[2] - F[0]) : (F[2] - F[0]) % (F[3] - F[1]);
        const real weight = k == 3 ? 2 : shape == ET_PENTA6 ? 1.5L : 1;
        terms.push_back(quotient(weight * (normal * to_centre), of_corners / k));
    }
    const real scale = shape == ET_PYRAMID5 ? std::sqrt(24.0L)
                       : shape == ET_PENTA6 ? 1 + 2 * std::sqrt(3.0L)
                                            : 6;
    return finish(scale * quotient(worst(terms), L));
}

real plain_rating(element_type shape, const corner_list& corners) {
    const bool in_plane = corners[0].size() == 2;
    std::vector<point3> P; // seen from the first corner
    for (const auto& p : corners)
        P.push_back({real(p[0]) - corners[0][0], real(p[1]) - corners[0][1],
                     in_plane ? 0 : real(p[2]) - corners[0][2]});
    real L = 0, perimeter = 0;
    std::istringstream edges(edges_of(shape));
    for (std::string at; edges >> at;) {
        const real length = norm(P[digit(at[1])] - P[digit(at[0])]);
        L = std::max(L, length);
        perimeter += length;
    }
    if (shape == ET_TRIA3) {
        const point3 D = (P[1] - P[0]) % (P[2] - P[0]);
        return 2 * std::sqrt(3.0L) * quotient(in_plane ? D.z : norm(D), perimeter * L);
    }
    if (shape == ET_QUAD4) return plain_quadrangle(P, in_plane, perimeter, L);
    if (in_plane) return 0;
    if (shape != ET_TETRA4) return plain_solid(shape, P, L);
    real surface = 0;
    for (unsigned i = 0; i < 4; ++i)
        surface += norm((P[(i + 1) % 4] - P[i]) % (P[(i + 2) % 4] - P[i])) / 2;
    const real volume = (P[0] - P[3]) * ((P[1] - P[3]) % (P[2] - P[3]));
    return std::sqrt(6.0L) * quotient(volume, L * surface);
}

/// Shapes of one kind: ideal, shaken, on a lattice where corners coincide, flat, or hostile.
struct random_shapes {
    element_type kind;
    unsigned dim, form;
    std::vector<element_type> shapes;
    column_list elements;
    corner_list nodes;
    std::vector<corner_list> corners;

    explicit random_shapes(engine& random)
        : kind(one_of(random, {ET_TRIA3, ET_QUAD4, ET_FACE_MIX, ET_TETRA4, ET_PYRAMID5, ET_PENTA6,
                               ET_HEXA8, ET_SOLID_MIX}))
        , dim(below(random, 3) == 0 ? 2 : 3)
        , form(below(random, 6))
        , elements(random_columns(random, kind, shapes)) {
        const double size = one_of(random, {1.0, 1.0, 1e150, 1e-150, 3e-310});
        const double reach = form == 0 ? 0 : form == 1 ? 0.15 : 0.8;
        for (std::size_t j = 0; j < elements.size(); ++j) {
            corners.push_back(ideals.at(shapes[j]));
            unsigned row = 0;
            for (auto& p : corners[j]) {
                for (double& x : p)
                    x = form == 3   ? below(random, 3)
                        : form == 5 ? one_of(random, {0.0, 1e-9, 1.0, 1 + 1e-9, 1e150, -1e150,
                                                      5e-324, 1e308, -1e308, nan, inf})
                                    : x + std::uniform_real_distribution(-reach, reach)(random);
                if (form == 4) p[2] = 0.3 * p[0] - 0.7 * p[1];
                for (double& x : p)
                    x = size * (size == 1 ? x + 5 : x);
                p.resize(dim);
                elements[j][row++] = unsigned(nodes.size());
                nodes.push_back(p);
            }
        }
    }
};

} // namespace

// Sizes are beyond the range of squares too. What rounding leaves of flat solids has no sign.
TEST(shape_qualities, agree_with_plain_formulas) {
    int flat_tetrahedra = 0, exactly = 0;
    often(6000, [&](engine& random) {
        const random_shapes mesh(random);
        const auto pos = points(mesh.nodes), view = strided(pos, nan);
        dense1D<double> Q;
        ASSERT_EQ(shape_qualities(below(random, 2) ? pos : view,
                                  strided(columns(mesh.elements), 7u), mesh.kind, Q),
                  0);
        for (std::size_t j = 0; j < mesh.elements.size(); ++j) {
            ASSERT_LE(std::abs(Q[j]), 1); // false for NaN
            if (mesh.form == 5) continue;
            const bool tetrahedron = mesh.shapes[j] == ET_TETRA4;
            const bool flat = mesh.form == 4 && mesh.dim == 3 && mesh.shapes[j] >= ET_TETRA4;
            const real q = plain_rating(mesh.shapes[j], mesh.corners[j]);
            ASSERT_NEAR(Q[j], double(std::clamp(q, -1.0L, 1.0L)),
                        !flat         ? 2e-13
                        : tetrahedron ? 1e-15
                                      : 0)
                << testing::PrintToString(mesh.corners[j]);
            flat_tetrahedra += flat && tetrahedron;
            exactly += flat && tetrahedron && Q[j] == 0;
        }
    });
    // The four views of a tetrahedron's volume seldom agree on the sign of nothing.
    EXPECT_GT(exactly, flat_tetrahedra / 3);
}

// Hostile elements, some flat but for a hair, some out of range, the others in general position.
TEST(shape_qualities, in_blocks_are_those_of_elements_alone) {
    using enum shape;
    engine random(5);
    const auto nodes = identity(8 * 3333);
    std::vector<double> pos(3 * nodes.size()), ratings(3333), in_a_run(3333);
    for (unsigned i = 0; i < pos.size(); ++i)
        pos[i] = below(random, 99) == 0    ? one_of(random, {1e-90, -1e99, 5e-324, inf, nan})
                 : i % 3 == 2 && i < 30000 ? 1e-7 * below(random, 5)
                 : i < 60000               ? below(random, 1000)
                                           : below(random, 1000) * (i < 70000 ? 1e62 : 1e-81);
    const auto expect = [&]<std::size_t Dim, shape S>(shape_block<Dim, S> block) {
        for (unsigned j = 0; j < ratings.size(); ++j)
            block.add(pos.data(), 3, &nodes[8 * j], ratings[j]);
        block.finish();
        block.rate_run(pos.data(), 3, nodes.data(), 8, in_a_run.size(), in_a_run.data());
        for (unsigned j = 0; j < ratings.size(); ++j) {
            shape_formulas::corners<Dim, topology_of(S).corner_count> p;
            for (unsigned i = 0; i < Dim * p[0].size(); ++i)
                p[i % Dim][i / Dim] = pos[24 * j + i / Dim * 3 + i % Dim];
            ASSERT_EQ(ratings[j], shape_formulas::rating<S>(p));
            ASSERT_EQ(in_a_run[j], ratings[j]);
        }
    };
    for (const bool wide : {false, has_avx2()}) {
        expect(shape_block<2, triangle>(wide)), expect(shape_block<2, quadrangle>(wide));
        expect(shape_block<3, triangle>(wide)), expect(shape_block<3, quadrangle>(wide));
        expect(shape_block<3, tetrahedron>(wide)), expect(shape_block<3, pyramid>(wide));
        expect(shape_block<3, wedge>(wide)), expect(shape_block<3, hexahedron>(wide));
    }
}

TEST(shape_qualities, of_odd_elements) {
    EXPECT_EQ(rate(ET_BAR2, {{0, 0}, {0, 0}}), 1);
    EXPECT_EQ(rate(ET_TRIA3, {{0}, {1}, {3}}) + rate(ET_QUAD4, corner_list(4, {0, 0, 1, 1})), 0);
    // The face 0 1 2 is so flat that its Gram determinant cancels out: area by cross product.
    EXPECT_NEAR(rate(ET_TETRA4, {{0, 0, 0}, {1, 0, 0}, {2, 1e-9, 0}, {0, 0, 1}}),
                -5.477225573682355e-10, 1e-23);
    // Crossed, and the lobes cancel but for a hair: no direction to measure against.
    EXPECT_NEAR(rate(ET_QUAD4, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1 + 1e-9, 1, 0}}), 0, 1e-7);
    // A pyramid at the edge of what counts as flat has the rating of its worst corner.
    corner_list bent = ideals.at(ET_PYRAMID5);
    bent[2] = {0.5 + 4e-13, 0.5 + 4e-13, 0};
    EXPECT_EQ(rate(ET_PYRAMID5, bent), rate(ET_TETRA4, {bent[1], bent[3], bent[2], bent[4]}));
    dense1D<double> Q; // and of a matrix without rows
    EXPECT_EQ(shape_qualities(points(bent), dense2D<unsigned int>(0, 2), ET_BAR2, Q), 0);
    EXPECT_EQ(list(Q), std::vector<double>(2, 0.0));
}

// A view of fitting size is written in place, over the coordinates too.
TEST(shape_qualities, follow_one_another) {
    std::vector<double> memory = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    const auto pos = dense2D<double>::wrap(memory.data(), 3, 4);
    const dense2D<unsigned int> run[] = {columns({{0, 0, 1}}), dense2D<unsigned int>(0, 9),
                                         columns({{0, 1, 2, 3}}), columns({{0, 3}})};
    const auto types = matrix<int>({{ET_TRIA3, ET_HEXA27, ET_QUAD4, ET_BAR2}}).col(0);
    misc::histogram statistics(-1, 1, 4);
    ASSERT_EQ(shape_qualities(pos, run, run + 4, types, statistics), 0);
    EXPECT_EQ(statistics.count() + statistics.count_in(3), 5u);
    auto Q = dense1D<double>::wrap(memory.data() + 3, 3);
    ASSERT_EQ(shape_qualities(pos, run, run + 4, types, Q), 0);
    EXPECT_EQ(memory, (std::vector<double>{0, 0, 0, 0, 1, 1, 1, 1, 0, 0, 1, 0}));
}

} // namespace kvx::zelvo::tests
