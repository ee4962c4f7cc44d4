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
    const auto unused = columns({{none, none}}), conn = columns({{0, 2, none}, {2, 0, 1}});
    const struct {
        const char* what;
        std::function<int(mesh&)> call;
        int result;
        unsigned int rows;
    } cases[] = {
        {"no step", [&](mesh& p) { return translate(p, o3); }, 0, 1},
        {"NaN step", [&](mesh& p) { return translate(p, vec2(nan)); }, 0, 1},
        {"step, part NaN", [&](mesh& p) { return translate(p, part); }, 3, 2},
        {"no scaling", [&](mesh& p) { return zoom(p, o2, 1.0); }, 0, 1},
        {"NaN scaling", [&](mesh& p) { return zoom(p, o2, nan); }, 0, 1},
        {"scaling", [&](mesh& p) { return zoom(p, o3, 2.0); }, 3, 3},
        {"NaN angle", [&](mesh& p) { return rotate(p, o2, nan, no_list); }, 0, 1},
        {"no rotation vector", [&](mesh& p) { return rotate(p, o3, o3, no_list); }, 0, 1},
        {"step, no list", [&](mesh& p) { return translate(p, T2, no_list); }, 0, 1},
        {"scaling, no list", [&](mesh& p) { return zoom(p, o2, 2.0, no_list); }, 0, 1},
        {"angle, no list", [&](mesh& p) { return rotate(p, o2, 1.0, no_list); }, 0, 2},
        {"rotation, unused", [&](mesh& p) { return rotate(p, o3, T3, unused); }, 0, 3},
        {"step, twice", [&](mesh& p) { return translate(p, T3, twice); }, 2, 3},
        {"scaling, twice", [&](mesh& p) { return zoom(p, o2, 2.0, twice); }, 0, 2},
        {"rotation, twice", [&](mesh& p) { return rotate(p, o3, T3, twice); }, 2, 3},
        {"step, mesh", [&](mesh& p) { return translate(p, T2, conn); }, 3, 2},
        {"scaling, mesh", [&](mesh& p) { return zoom(p, o3, 2.0, conn); }, 0, 3},
        {"angle, mesh", [&](mesh& p) { return rotate(p, o2, 1.0, conn); }, 3, 2},
    };
    for (const auto& c : cases) {
        mesh one_row = strided(points({{1.0}, {2.0}, {3.0}}), 0.5);
        EXPECT_EQ(c.call(one_row), c.result) << c.what;
        EXPECT_EQ(one_row.rows(), c.rows) << c.what;
        mesh no_rows(0, 3);
        EXPECT_EQ(c.call(no_rows), 0) << c.what;
        EXPECT_EQ(no_rows.rows(), 0) << c.what;
    }
}

TEST(transforms, move_the_given_nodes_in_the_rows_of_their_dimension) {
    mesh one_row = points({{1.0}, {5.0}});
    translate(one_row, {1.0, 2.0});
    EXPECT_EQ(list(one_row), list(points({{2.0, 2.0}, {6.0, 2.0}})));

    mesh pos = strided(points({{1, 2, 9}, {3, 4, 9}, {5, 6, 9}}), 0.5);
    translate(pos, {10.0, 20.0}, vec({2, 0, 2}));
    EXPECT_EQ(list(pos), list(points({{11, 22, 9}, {3, 4, 9}, {25, 46, 9}})));
    zoom(pos, vec3(1.0), 3.0, columns({{1, none}, {0, 1}}));
    EXPECT_EQ(list(pos), list(points({{31, 64, 25}, {7, 10, 25}, {25, 46, 9}})));

    mesh rounding = points({{0.1, 0.0}}); // C + f (x - C) would give -0.3
    zoom(rounding, {0.3, 0.0}, 3.0);
    EXPECT_EQ(rounding(0, 0), -0.29999999999999993);
}

TEST(rotate, turns_exactly_where_an_axis_is_not_involved) {
    mesh pos = points({{1.0, 0.0}});
    EXPECT_EQ(rotate(pos, vec2(0.0), std::numbers::pi / 2), 1);
    EXPECT_EQ(list(pos), list(points({{6.123233995736766e-17, 1.0}})));

    mesh infinite_matrix = points({{2.0, 3.0, 5.0}}); // the term of a zero is left out, not NaN
    rotate(infinite_matrix, {2.0, 3.0, 5.0}, {1e200, 0.0, 0.0});
    EXPECT_EQ(list(infinite_matrix), list(points({{2.0, 3.0, 5.0}})));
}

// v cos + (k x v) sin + k (k . v) (1 - cos) for unit axes k, on both sides of the series' limit.
TEST(rotate, follows_the_axis_and_angle_formula) {
    const double k[3] = {2.0 / 7, -3.0 / 7, 6.0 / 7}, v[3] = {1.0, 2.0, -0.5};
    const double dot = k[0] * v[0] + k[1] * v[1] + k[2] * v[2];
    for (const double angle : {1e-9, 1e-4, 9.99e-4, 1.001e-3, 0.5, -2.0, 3.0, 7.0}) {
        mesh pos = points({{1.0 + 3.0, 2.0 - 1.0, -0.5 + 2.0}});
        rotate(pos, {3.0, -1.0, 2.0}, {k[0] * angle, k[1] * angle, k[2] * angle});
        const vec3 centre(3.0, -1.0, 2.0);
        for (unsigned i = 0; i < 3; ++i) {
            const unsigned j = (i + 1) % 3, l = (i + 2) % 3;
            const double sine_of_half = std::sin(angle / 2);
            EXPECT_NEAR(pos(i, 0) - centre[i],
                        v[i] * std::cos(angle) + (k[j] * v[l] - k[l] * v[j]) * std::sin(angle) +
                            k[i] * dot * 2 * sine_of_half * sine_of_half,
                        2e-15)
                << angle;
        }
    }
}

} // namespace kvx::zelvo::tests
