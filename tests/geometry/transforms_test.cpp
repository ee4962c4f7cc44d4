#include <cmath>
#include <numbers>

#include "random_meshes.h"

namespace kvx::zelvo::tests {

using vec2 = vector_fixed<double, 2>;
using vec3 = vector_fixed<double, 3>;

static vec2 turned(const vec2& v, double angle) {
    return {v[0] * std::cos(angle) - v[1] * std::sin(angle),
            v[0] * std::sin(angle) + v[1] * std::cos(angle)};
}
/// v cos + (k x v) sin + k (k . v) (1 - cos) for the unit axis k of a rotation vector.
static vec3 turned(const vec3& v, const vec3& R) {
    const double angle = std::hypot(R[0], R[1], R[2]), cos = std::cos(angle), sin = std::sin(angle);
    const vec3 k(R[0] / angle, R[1] / angle, R[2] / angle);
    const double along =
        (k[0] * v[0] + k[1] * v[1] + k[2] * v[2]) * 2 * std::pow(std::sin(angle / 2), 2);
    return {v[0] * cos + (k[1] * v[2] - k[2] * v[1]) * sin + k[0] * along,
            v[1] * cos + (k[2] * v[0] - k[0] * v[2]) * sin + k[1] * along,
            v[2] * cos + (k[0] * v[1] - k[1] * v[0]) * sin + k[2] * along};
}

// Which checks come before the padding, and what is counted, differs from family to family.
template <unsigned Dim, class Angle>
void compare_with_formulas(engine& random) {
    const unsigned n = below(random, 8), family = below(random, 3), form = below(random, 3);
    auto pos = random_lattice(random, below(random, 5), n);
    const auto listed = random_nodes(random, below(random, 7), n, 9);
    const auto conn = random_elements(random, n, 30);
    const auto nodes = form == 0 ? identity(n) : form == 1 ? list(listed) : used_nodes(list(conn));
    const vector_fixed<double, Dim> C(0.3);
    vector_fixed<double, Dim> T;
    T[Dim - 1] = one_of(random, {0.0, nan, 1.25}), T[0] = one_of(random, {0.0, nan, -0.5});
    const double f = one_of(random, {1.0, nan, 0.0, -0.5, 3.0});
    // on both sides of where a series ends
    const double size = one_of(random, {0.0, nan, 1e-9, 1e-4, 9.99e-4, 1.001e-3, 0.5, -2.0, 7.0});
    Angle angle(size);
    if constexpr (Dim == 3) angle = {size * 2 / 7, -size * 3 / 7, size * 6 / 7};

    const bool idle = family == 1   ? !(f < 1) && !(f > 1)
                      : family == 2 ? !(size < 0) && !(size > 0)
                                    : std::none_of(T.data(), T.data() + Dim,
                                                   [](double t) { return t < 0 || t > 0; });
    const bool nothing = pos.empty() || idle || (nodes.empty() && family < 2);
    dense2D<double> expected;
    expected.copy(pos);
    if (!nothing && pos.rows() < Dim) expected.resize(Dim, n, 0.0);
    int moved = 0;
    for (const unsigned node : nodes) {
        if (nothing || node >= n) continue;
        vector_fixed<double, Dim> v;
        for (unsigned i = 0; i < Dim; ++i)
            v[i] = expected(i, node) - C[i];
        const auto w = turned(v, angle);
        for (unsigned i = 0; i < Dim; ++i)
            expected(i, node) = family == 2
                                    ? C[i] + w[i]
                                    : expected(i, node) + (family == 0 ? T[i] : v[i] * (f - 1));
        ++moved;
    }
    const auto call = [&](const auto&... part) {
        return family == 0   ? translate(pos, T, part...)
               : family == 1 ? zoom(pos, C, f, part...)
                             : rotate(pos, C, angle, part...);
    };
    const int result = form == 0 ? call() : form == 1 ? call(listed) : call(conn);
    ASSERT_EQ(result, family == 1 && form > 0 ? 0 : moved) << family << form;
    ASSERT_TRUE(alike(pos, expected, family == 2 ? 1e-14 : 0)) << family << form;
}

TEST(transforms, move_nodes_by_their_formulas) {
    often(10000, compare_with_formulas<2, double>);
    often(10000, compare_with_formulas<3, vec3>);
}

TEST(transforms, keep_what_is_exact) {
    auto pos = points({{1.0, 0.0}});
    EXPECT_EQ(rotate(pos, vec2(0.0), std::numbers::pi / 2), 1);
    EXPECT_EQ(list(pos), list(points({{6.123233995736766e-17, 1.0}})));
    rotate(pos, {pos(0, 0), 1.0, 0.0}, {1e200, 0.0, 0.0});
    EXPECT_EQ(pos(1, 0), 1.0); // an infinite matrix makes no NaN of a zero
}

} // namespace kvx::zelvo::tests
