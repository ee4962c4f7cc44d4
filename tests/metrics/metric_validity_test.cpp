#include <cfloat>

#include "random_metrics.h"

namespace kvx::zelvo::tests {

TEST(metric_validity, asks_for_positive_sizes_and_eigenvalues) {
    for (const double h : {1e-300, 0.0, -1.0, inf, nan}) {
        const auto sizes = points({{1, h}}).col(0);
        EXPECT_EQ(are_valid_metrics(sizes), h == 1e-300);
        EXPECT_EQ(are_valid_metrics(vec({1}), sizes), h == 1e-300);
    }
    EXPECT_FALSE(are_valid_metrics(vec({0, none}), dense1D<double>(1, 1.0)));
    EXPECT_FALSE(is_valid_metric({1, 2, 1}) || is_valid_metric({1e-170, 2e-170, 1e-170}));
    EXPECT_TRUE(is_valid_metric({nan, 0, 1}) && is_valid_metric({-1, 0, -1, 0, inf, -1}));
    const dense2D<double> none_at_all, rows4(4, 2), zero(6, 2), no_columns(3, 0), rows4_only(4, 0);
    EXPECT_FALSE(are_valid_metrics(none_at_all) || are_valid_metrics(vec({}), rows4));
    EXPECT_TRUE(are_valid_metrics(no_columns) && are_valid_metrics(vec({}), none_at_all));
    EXPECT_TRUE(are_valid_metrics(vec({}), zero) && are_valid_metrics(vec({}), rows4_only));
    EXPECT_FALSE(are_valid_metrics(zero) || are_valid_metrics(vec({0}), no_columns));
    const auto view = strided(points({{1, 0, 1}, {1, 2, 1}}), -1.0);
    EXPECT_TRUE(are_valid_metrics(vec({0, 0}), view) && !are_valid_metrics(vec({0, 1}), view));
    EXPECT_FALSE(are_valid_metrics(view) || are_valid_metrics(vec({0, 2}), view));
}

// Nothing but time may tell that LAPACK is not asked for every matrix.
TEST(metric_validity, agrees_with_lapack_on_nearly_singular_matrices_and_bounds) {
    engine random(2);
    for (int trial = 0; trial < 20000; ++trial) {
        auto M = random_metric<3>(random, trial % 19, std::pow(10.0, trial % 617 - 316));
        if (trial % 3 == 0) M(0, 0) *= 1 - std::pow(10.0, -(trial % 17));
        double w[3], Z[9], work[9];
        int info;
        lapack::dspev('N', 'U', 3, list(M).data(), w, nullptr, 3, work, info);
        ASSERT_EQ(is_valid_metric(M), !(w[0] <= 0)) << trial;
        lapack::dspev('V', 'U', 3, list(M).data(), w, Z, 3, work, info);
        const double factor = 1 + std::pow(10.0, -(trial % 16)) * (trial % 4 - 1.5);
        const double hmin = 1 / std::sqrt(w[1 + trial % 2] * factor), hmax = trial % 5 - 1;
        const double low = hmax > 0 ? 1 / (hmax * hmax) : 0;
        const double high = hmin > 0 ? 1 / (hmin * hmin) : DBL_MAX;
        const bool inside = w[0] >= low && w[2] <= high;
        auto expected = inside ? M : metric<3>();
        for (unsigned k = 0; k < 27 && !inside; ++k) {
            const unsigned i = k % 3, j = k / 3 % 3, c = k / 9;
            const double value = std::max(low, std::min(high, w[c]));
            if (i <= j) expected(i, j) += value * Z[3 * c + i] * Z[3 * c + j];
        }
        bound_metric(M, hmin, hmax);
        ASSERT_EQ(list(M), list(expected)) << trial;
    }
}

TEST(bound_metrics, lets_hmax_win) {
    // hmin, hmax; what is made of the sizes 0.1, 1.5 and NaN, and of the eigenvalues 0.01 and 100
    for (const auto& c : {std::array{0.5, 2.0, 0.5, 1.5, 2.0, 0.25, 4.0},
                          {3.0, 2.0, 2.0, 2.0, 2.0, 0.25, 0.25},
                          {1.0, -1.0, -1.0, -1.0, -1.0, 0.01, 1.0},
                          {-1.0, 1e-200, 1e-200, 1e-200, 1e-200, inf, inf}}) {
        auto sizes = points({{0.1, 1.5, nan}}).col(0);
        auto plane = strided(points({{0.01, 0, 100}, {100, 0, 0.01}}), 7.0);
        EXPECT_EQ(bound_metrics(sizes, c[0], c[1]) + bound_metrics(plane, c[0], c[1]), 0);
        EXPECT_EQ(list(sizes), (std::vector{c[2], c[3], c[4]}));
        EXPECT_EQ(list(plane), list(points({{c[5], 0, c[6]}, {c[6], 0, c[5]}})));
    }
    dense2D<double> four(4, 1), space = points({{1, nan, 1, 0, 0, 1}});
    EXPECT_EQ(bound_metrics(four, 0, -1) + bound_metrics(four, -1, nan), -1);
    bound_metrics(space, 1, 2); // no eigenvalues: hmax in all directions
    EXPECT_EQ(list(space), list(points({{0.25, 0, 0.25, 0, 0, 0.25}})));
}

// What overwrites may overlap what it overwrites, and is taken as it was.
TEST(overwrite_invalid_metrics, takes_what_is_better) {
    often(6000, [](engine& random) {
        const unsigned rows = one_of(random, {3u, 6u}), form = below(random, 3);
        const auto frame = random_matrix(random, rows, 9, [&] {
            return one_of(random, {0.0, 1.0, 2.0, -1.0, nan});
        });
        auto metrics = frame.sub_matrix(0, below(random, 4), rows, 1 + below(random, 5));
        const auto fallback = frame.sub_matrix(0, below(random, 4), rows, 1 + below(random, 5));
        auto sizes = metrics.as_vector();
        const auto h = fallback.as_vector();
        auto expected = list(metrics), others = list(fallback);
        auto expected_sizes = list(sizes);
        const auto valid = [](const auto& column) { return are_valid_metrics(points({column})); };
        for (unsigned k = 0; k < (form == 0 ? sizes.size() : expected.size()); ++k) {
            if (form == 0 && k < h.size() && sizes[k] <= 0 && h[k] > 0) expected_sizes[k] = h[k];
            if (form == 0 || valid(expected[k])) continue;
            const double v = k < h.size() ? 1 / (h[k] * h[k]) : 0;
            if (form == 1 && k < h.size() && h[k] > 0)
                expected[k] = rows == 3 ? std::vector{v, 0., v} : std::vector{v, 0., v, 0., 0., v};
            if (form == 2 && k < others.size() && valid(others[k])) expected[k] = others[k];
        }
        const int code = form == 0   ? overwrite_invalid_metrics(sizes, h)
                         : form == 1 ? overwrite_invalid_metrics(metrics, h)
                                     : overwrite_invalid_metrics(metrics, fallback);
        ASSERT_EQ(code, 0);
        ASSERT_TRUE(form == 0 ? alike(points({list(sizes)}), points({expected_sizes}))
                              : alike(metrics, points(expected)));
    });
}

} // namespace kvx::zelvo::tests
