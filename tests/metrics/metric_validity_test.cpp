#include <cfloat>
#include <limits>

#include "random_metrics.h"

namespace kvx::zelvo::tests {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

dense1D<double> sizes_of(const std::vector<double>& entries) {
    dense1D<double> sizes(entries.size());
    std::copy(entries.begin(), entries.end(), sizes.begin());
    return sizes;
}

auto near(const std::vector<double>& entries) {
    return testing::Pointwise(testing::NanSensitiveDoubleEq(), entries);
}

TEST(metric_validity, asks_for_positive_sizes_and_eigenvalues) {
    for (const double h : {1e-300, 0.0, -1.0, inf, nan}) {
        EXPECT_EQ(are_valid_metrics(sizes_of({1, h})), h == 1e-300);
        EXPECT_EQ(are_valid_metrics(vec({1}), sizes_of({1, h})), h == 1e-300);
        EXPECT_TRUE(are_valid_metrics(vec({0, 0}), sizes_of({1, h})));
    }
    EXPECT_TRUE(are_valid_metrics(sizes_of({})) && are_valid_metrics(vec({}), sizes_of({})));
    EXPECT_FALSE(are_valid_metrics(vec({0, none}), sizes_of({1})));

    EXPECT_FALSE(is_valid_metric({1, 2, 1}) || is_valid_metric({1e-170, 2e-170, 1e-170}));
    EXPECT_TRUE(is_valid_metric({nan, 0, 1}) && is_valid_metric({-1, 0, -1, 0, inf, -1}));
    for (const unsigned int rows : {0, 3, 4, 6}) {
        const bool known = rows == 3 || rows == 6;
        const dense2D<double> without(rows, 0), zero(rows, 2);
        EXPECT_EQ(are_valid_metrics(without), known);
        EXPECT_EQ(are_valid_metrics(vec({}), without), true);
        EXPECT_EQ(are_valid_metrics(vec({}), zero), known || rows == 0);
        EXPECT_FALSE(are_valid_metrics(vec({0}), without) || are_valid_metrics(zero));
    }
    const auto plane = strided(points({{1, 0, 1}, {1, 2, 1}}), -1.0);
    const auto space = strided(points({{1, 0, 1, 0, 0, 1}, {1, 0, 1, 0, 2, 1}}), -1.0);
    for (const auto& metrics : {plane, space}) {
        EXPECT_TRUE(are_valid_metrics(metrics.sub_matrix(0, 0, 6, 1)));
        EXPECT_FALSE(are_valid_metrics(metrics) || are_valid_metrics(vec({0, 2}), metrics));
        EXPECT_TRUE(are_valid_metrics(vec({0}), metrics));
        EXPECT_FALSE(are_valid_metrics(vec({0, 1}), metrics));
    }
}

// Nothing but time may tell that LAPACK is not asked for every matrix.
TEST(metric_validity, agrees_with_lapack_on_nearly_singular_matrices_and_bounds) {
    std::mt19937 random(2);
    for (int trial = 0; trial < 20000; ++trial) {
        const double scale = trial % 5 ? 1.0 : std::pow(10.0, trial % 617 - 316);
        auto M = random_metric<3>(random, trial % 19, scale);
        const double shift = trial % 3 ? 0 : std::pow(10.0, -(trial % 17)) * scale;
        for (unsigned i = 0; i < 3; ++i)
            M(i, i) -= shift;
        double copy[6], w[3], Z[9], work[9];
        int info;
        std::copy_n(M.data(), 6, copy);
        lapack::dspev('N', 'U', 3, copy, w, nullptr, 3, work, info);
        ASSERT_EQ(is_valid_metric(M), !(w[0] <= 0)) << trial;

        const double factor = 1 + std::pow(10.0, -(trial % 16)) * (trial % 4 - 1.5);
        const double hmax = 1 / std::sqrt(w[trial % 2] * factor),
                     hmin = 1 / std::sqrt(w[2] * factor);
        std::copy_n(M.data(), 6, copy);
        lapack::dspev('V', 'U', 3, copy, w, Z, 3, work, info);
        const double low = hmax > 0 && hmax < std::sqrt(DBL_MAX) ? 1 / (hmax * hmax) : 0;
        const double high = hmin > 0 ? 1 / (hmin * hmin) : DBL_MAX;
        auto expected = M;
        bool inside = true;
        for (double& value : w) {
            const double bounded = std::max(low, std::min(high, value));
            inside = inside && bounded == value;
            value = bounded;
        }
        if (!inside) expected = 0.0;
        for (unsigned k = 0; !inside && k < 27; ++k) {
            const unsigned i = k / 3 % 3, j = k / 9;
            if (i <= j) expected(i, j) += w[k % 3] * Z[i + k % 3 * 3] * Z[j + k % 3 * 3];
        }
        bound_metric(M, hmin, hmax);
        ASSERT_EQ(list(M), list(expected)) << trial;
    }
}

TEST(bound_metrics, lets_hmax_win) {
    const struct {
        double hmin, hmax;
        std::vector<double> sizes;
        metric<2> M;
    } cases[] = {{0.5, 2, {0.5, 1.5, 2, 2}, {0.25, 0, 4}},
                 {3, 2, {2, 2, 2, 2}, {0.25, 0, 0.25}},
                 {0, 0.05, {0.05, 0.05, 0.05, 0.05}, {400, 0, 400}},
                 {-1, 1e200, {0.1, 1.5, 3, 1e200}, {0.01, 0, 100}},
                 {1, -1, {-1, -1, -1, -1}, {0.01, 0, 1}},
                 {0, 1e-200, {1e-200, 1e-200, 1e-200, 1e-200}, {inf, 0, inf}},
                 {nan, nan, {nan, nan, nan, nan}, {0.01, 0, 100}}};
    for (const auto& c : cases) {
        auto sizes = sizes_of({0.1, 1.5, 3, nan});
        EXPECT_EQ(bound_metrics(sizes, c.hmin, c.hmax), 0);
        EXPECT_THAT(list(sizes), near(c.sizes));
        const metric<2>& M = c.M;
        auto plane = strided(points({{0.01, 0, 100}, {100, 0, 0.01}}), 7.0);
        auto space = strided(points({{100, 0, 0.01, 0, 0, 0.01}}), 7.0);
        EXPECT_EQ(bound_metrics(plane, c.hmin, c.hmax) + bound_metrics(space, c.hmin, c.hmax), 0);
        const double a = M(0, 0), b = M(1, 1);
        EXPECT_THAT(list(plane)[0], near({a, 0, b}));
        EXPECT_THAT(list(plane)[1], near({b, 0, a}));
        EXPECT_THAT(list(space)[0], near({b, 0, a, 0, 0, a}));
    }
    dense2D<double> none_at_all, four(4, 1);
    EXPECT_EQ(bound_metrics(none_at_all, 1, 2), 0);
    EXPECT_EQ(bound_metrics(four, -1, nan), 0);
    EXPECT_EQ(bound_metrics(four, 0, -1), -1);
    for (const double hmax : {2.0, 0.0}) { // no eigenvalues: hmax, or nothing, in all directions
        metric<2> M(inf, nan, 1);
        metric<3> N(1, 0, 1, 0, nan, 1);
        const double v = hmax > 0 ? 0.25 : 0;
        bound_metric(M, 1, hmax);
        bound_metric(N, 1, hmax);
        EXPECT_EQ(list(M), list(metric<2>(v, 0, v)));
        EXPECT_EQ(list(N), list(metric<3>(v, 0, v, 0, 0, v)));
    }
}

TEST(overwrite_invalid_metrics, takes_what_is_better) {
    auto sizes = sizes_of({0, -1, 2, nan, 0});
    EXPECT_EQ(overwrite_invalid_metrics(sizes, sizes_of({3, 0, 5, 1})), 0);
    EXPECT_THAT(list(sizes), near({3, -1, 2, nan, 0}));
    auto shifted = sizes_of({0, 0, 4}), ahead = shifted.sub_vector(1, 2);
    EXPECT_EQ(overwrite_invalid_metrics(shifted, ahead), 0);
    EXPECT_EQ(list(shifted), (std::vector<double>{0, 4, 4}));
    EXPECT_EQ(overwrite_invalid_metrics(ahead = shifted.sub_vector(1, 2), shifted), 0);

    dense2D<double> none_at_all, four(4, 1), six(6, 1);
    auto plane = strided(points({{1, 2, 1}, {1, 2, 1}, {1, 0, 1}, {0, 0, 0}}), 7.0);
    EXPECT_EQ(overwrite_invalid_metrics(none_at_all, four), 0);
    EXPECT_EQ(overwrite_invalid_metrics(four, plane), -1);
    EXPECT_EQ(overwrite_invalid_metrics(four, sizes), -1);
    EXPECT_EQ(overwrite_invalid_metrics(plane, four), -2);
    EXPECT_EQ(overwrite_invalid_metrics(plane, six), -2);
    EXPECT_EQ(overwrite_invalid_metrics(plane, sizes_of({0.5, 0, 0.5})), 0);
    EXPECT_EQ(list(plane), list(points({{4, 0, 4}, {1, 2, 1}, {1, 0, 1}, {0, 0, 0}})));
    // The columns behind it stand in for each as they were: the last one finds none.
    EXPECT_EQ(overwrite_invalid_metrics(plane, plane.sub_matrix(0, 1, 3, 3)), 0);
    EXPECT_EQ(list(plane), list(points({{4, 0, 4}, {1, 0, 1}, {1, 0, 1}, {0, 0, 0}})));
    dense2D<double> behind = plane.sub_matrix(0, 2, 3, 2);
    EXPECT_EQ(overwrite_invalid_metrics(behind, plane), 0);
    EXPECT_EQ(list(behind), list(points({{1, 0, 1}, {1, 0, 1}})));
    EXPECT_EQ(overwrite_invalid_metrics(six, points({{1, 0, 1, 0, 0, 1}})), 0);
    EXPECT_EQ(six(5, 0), 1.0);
}

} // namespace kvx::zelvo::tests
