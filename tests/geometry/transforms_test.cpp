#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

#include "meshes.h"

namespace kvx::zelvo::tests {

using vec2 = vector_fixed<double, 2>;
using vec3 = vector_fixed<double, 3>;
using mesh = dense2D<double>;

// Which checks come before the padding, and what is counted, differs from family to family.
TEST(transforms, check_pad_and_count_as_their_family_does) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const vec2 o2(0.0), T2(1.0), part(nan, 1.0);
    const vec3 o3(0.0), T3(1.0);
    const auto no_list = vec({}), twice = vec({1, 3, none, 1});
    const auto conn = columns({{0, 2, none}, {2, 0, 1}});
    const struct {
        std::function<int(mesh&)> call;
        int result;
        unsigned int rows;
    } cases[] = {
        {[&](mesh& p) { return translate(p, vec2(nan)); }, 0, 1},
        {[&](mesh& p) { return translate(p, part); }, 3, 2},
        {[&](mesh& p) { return zoom(p, o2, nan); }, 0, 1},
        {[&](mesh& p) { return rotate(p, o2, nan, no_list); }, 0, 1},
        {[&](mesh& p) { return translate(p, T2, no_list); }, 0, 1},
        {[&](mesh& p) { return zoom(p, o2, 2.0, no_list); }, 0, 1},
        {[&](mesh& p) { return rotate(p, o2, 1.0, no_list); }, 0, 2},
        {[&](mesh& p) { return zoom(p, o2, 2.0, twice); }, 0, 2},
        {[&](mesh& p) { return rotate(p, o3, T3, twice); }, 2, 3},
        {[&](mesh& p) { return zoom(p, o3, 2.0, conn); }, 0, 3},
        {[&](mesh& p) { return rotate(p, o2, 1.0, conn); }, 3, 2},
    };
    for (const auto& c : cases) {
        mesh one_row = strided(points({{1.0}, {2.0}, {3.0}}), 0.5);
        EXPECT_EQ(c.call(one_row), c.result) << &c - cases;
        EXPECT_EQ(one_row.rows(), c.rows) << &c - cases;
    }
}

TEST(transforms, move_the_given_nodes_in_the_rows_of_their_dimension) {
    mesh pos = strided(points({{1, 2, 9}, {3, 4, 9}, {5, 6, 9}}), 0.5);
    translate(pos, {10.0, 20.0}, vec({2, 0, 2}));
    EXPECT_EQ(list(pos), list(points({{11, 22, 9}, {3, 4, 9}, {25, 46, 9}})));
    zoom(pos, vec3(1.0), 3.0, columns({{1, none}, {0, 1}}));
    EXPECT_EQ(list(pos), list(points({{31, 64, 25}, {7, 10, 25}, {25, 46, 9}})));

    pos = points({{0.1, 0.0}});
    zoom(pos, {0.3, 0.0}, 3.0);
    EXPECT_EQ(pos(0, 0), -0.29999999999999993); // C + f (x - C) would give -0.3

    pos = points({{1.0, 0.0}});
    EXPECT_EQ(rotate(pos, vec2(0.0), std::numbers::pi / 2), 1);
    EXPECT_EQ(list(pos), list(points({{6.123233995736766e-17, 1.0}})));
    rotate(pos, {pos(0, 0), 1.0, 0.0}, {1e200, 0.0, 0.0});
    EXPECT_EQ(pos(1, 0), 1.0); // an infinite matrix makes no NaN of a zero
}

// v cos + (k x v) sin + k (k . v) (1 - cos) for a unit axis k, on both sides of the series' limit.
TEST(rotate, follows_the_axis_and_angle_formula) {
    const double k[3] = {2.0 / 7, -3.0 / 7, 6.0 / 7}, v[3] = {1.0, 2.0, -0.5};
    const double dot = k[0] * v[0] + k[1] * v[1] + k[2] * v[2];
    const vec3 centre(3.0, -1.0, 2.0);
    for (const double angle : {1e-9, 1e-4, 9.99e-4, 1.001e-3, 0.5, -2.0, 3.0, 7.0}) {
        mesh pos = points({{4.0, 1.0, 1.5}});
        rotate(pos, centre, {k[0] * angle, k[1] * angle, k[2] * angle});
        const double one_minus_cos = 2 * std::pow(std::sin(angle / 2), 2);
        for (unsigned i = 0; i < 3; ++i) {
            const unsigned j = (i + 1) % 3, l = (i + 2) % 3;
            const double cross = k[j] * v[l] - k[l] * v[j];
            const double turned =
                v[i] * std::cos(angle) + cross * std::sin(angle) + k[i] * dot * one_minus_cos;
            EXPECT_NEAR(pos(i, 0) - centre[i], turned, 2e-15) << angle;
        }
    }
}

} // namespace kvx::zelvo::tests
