#include "random_metrics.h"

namespace kvx::zelvo::tests {

/// Pairs and combinations of two metrics of all sizes and shapes, at odd trials of one alone.
template <unsigned N>
void expect_properties(engine& random, int trial) {
    const double scale = std::pow(10.0, (trial % 5 - 2) * 152);
    const auto B = random_metric<N>(random, trial % 13, scale);
    auto A = random_metric<N>(random, trial % 11, scale * (1 + trial % 7));
    if (trial % 2) metric_iso_to_aniso(1.0, A);
    direction<N> values;
    matrix_fixed<double, N, N> V;
    ASSERT_TRUE(trial % 2 ? eigen_pairs(B, values, V) : eigen_pairs(A, B, values, V));
    metric<N> low = A, high = B;
    minimum_metric(low, B, low);
    maximum_metric(A, high, high);
    const long double a = 0.0L + A(0, 0) + A(1, 1) + A(N - 1, N - 1); // about the norm
    const long double b = 0.0L + B(0, 0) + B(1, 1) + B(N - 1, N - 1);
    for (unsigned k = 0; k < 4 * N; ++k) {
        const auto other = random_direction<N>(random);
        auto u = other;
        if (k < N) std::copy_n(&V(0, k), N, u.data());
        const long double below = form(low, u, u) - std::max(form(A, u, u), form(B, u, u));
        const long double above = std::min(form(A, u, u), form(B, u, u)) - form(high, u, u);
        ASSERT_TRUE(below >= -1e-8L * std::max(a, b) && above >= -1e-8L * std::min(a, b)) << trial;
        if (k >= N) continue;
        ASSERT_TRUE(below <= 1e-6L * std::max(a, b) && above <= 1e-6L * std::min(a, b)) << trial;
        ASSERT_LE(std::abs(form(B, other, u) - values[k] * form(A, other, u)),
                  1e-11L * (b + values[N - 1] * a));
        ASSERT_NEAR(std::hypot(u[0], u[1], N > 2 ? u[N - 1] : 0.0), 1.0, 1e-14);
    }
}

TEST(metric_combination, has_its_defining_properties_and_fails_where_stated) {
    engine random(1);
    for (int trial = 0; trial < 1000; ++trial) {
        expect_properties<2>(random, trial);
        expect_properties<3>(random, trial);
    }
    direction<2> values;
    matrix_fixed<double, 2, 2> V;
    eigen_pairs(metric<2>(1e8, 1, 2e-8), values, V);
    EXPECT_DOUBLE_EQ(values[0], 1e-8); // where the difference gives 1.5e-8
    EXPECT_TRUE(V(1, 0) < -0.9 && V(0, 1) > 0.9);
    eigen_pairs(metric<2>(1, 0x1p-30, 1), values, V);
    EXPECT_TRUE(values[0] == 1 - 0x1p-30 && values[1] == 1 + 0x1p-30 && V(0, 0) > 0.7 &&
                V(1, 0) < -0.7);
    metric<2> M(5.0);
    minimum_metric({1, 0, 4}, {4, 0, 1}, M);
    EXPECT_FALSE(eigen_pairs({2, 2, 2}, M, values, V)); // a pivot of exactly 0
    minimum_metric(M, {0, 0, -1}, M);                   // in 2-D any matrix may come second
    EXPECT_EQ(list(M), list(metric<2>(4, 0, 4)));
    const metric<3> zero, one(1, 0, 1, 0, 0, 1), flat(1, 0, 1, 1, 0, 1), bent(1, 2, 1, 0, 0, 1);
    const metric<3> tiny(1e-300, 0, 1e-300, 0, 0, 1e-300), huge(1e300, 0, 1e300, 0, 0, 1e300);
    direction<3> values3;
    matrix_fixed<double, 3, 3> V3;
    EXPECT_FALSE(eigen_pairs(tiny, huge, values3, V3)); // which are beyond all numbers
    for (const auto& [A, B] : {std::pair{zero, one}, {flat, one}, {one, bent}, {one, zero}}) {
        metric<3> N(HUGE_VAL);
        minimum_metric(N, one, N);
        EXPECT_EQ(list(N), list(zero));
        minimum_metric(A, B, N);
        EXPECT_EQ(list(N), list(B(0, 0) > 0 ? zero : one));
        minimum_metric(one, flat, N); // a last pivot of 0 serves the second alone
        EXPECT_NE(list(N), list(zero));
    }
}

} // namespace kvx::zelvo::tests
