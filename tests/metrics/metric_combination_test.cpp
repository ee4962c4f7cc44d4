#include "random_metrics.h"

namespace kvx::zelvo::tests {

/// Pairs and combinations of two metrics of all sizes and shapes, at odd trials of one alone.
template <unsigned N>
void expect_properties(std::mt19937& random, int trial) {
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
    const long double larger = std::max(norm(A), norm(B)), smaller = std::min(norm(A), norm(B));
    for (unsigned k = 0; k < 4 * N; ++k) {
        const auto other = random_direction<N>(random);
        auto u = other;
        if (k < N) std::copy_n(&V(0, k), N, u.data());
        const long double below = form(low, u, u) - std::max(form(A, u, u), form(B, u, u));
        const long double above = std::min(form(A, u, u), form(B, u, u)) - form(high, u, u);
        ASSERT_TRUE(below >= -1e-8L * larger && above >= -1e-8L * smaller) << trial;
        if (k >= N) continue;
        ASSERT_TRUE(below <= 1e-6L * larger && above <= 1e-6L * smaller) << trial;
        ASSERT_LE(std::abs(form(B, other, u) - values[k] * form(A, other, u)),
                  1e-11L * (norm(B) + values[N - 1] * norm(A)));
        ASSERT_NEAR(std::hypot(u[0], u[1], N > 2 ? u[N - 1] : 0.0), 1.0, 1e-14);
    }
}

TEST(metric_combination, has_its_defining_properties_and_fails_where_stated) {
    std::mt19937 random(1);
    for (int trial = 0; trial < 1000; ++trial) {
        expect_properties<2>(random, trial);
        expect_properties<3>(random, trial);
    }
    direction<2> values;
    matrix_fixed<double, 2, 2> V;
    eigen_pairs(metric<2>(1e8, 1, 2e-8), values, V);
    EXPECT_DOUBLE_EQ(values[0], 1e-8); // where the difference gives 1.5e-8
    EXPECT_TRUE(V(1, 0) < -0.9 && V(0, 1) > 0.9);
    eigen_pairs(metric<2>(1, 2, 1), values, V);
    EXPECT_TRUE(values[0] == -1 && values[1] == 3 && V(0, 0) > 0.7 && V(1, 0) < -0.7);
    const auto of = [](const auto& A, const auto& B) {
        auto M = A;
        minimum_metric(A, B, M);
        return list(M);
    };
    const metric<2> one2(1, 0, 1), zero2;
    EXPECT_EQ(of(metric<2>(1, 0, 4), metric<2>(4, 0, 1)), list(metric<2>(4, 0, 4)));
    EXPECT_EQ(of(one2, metric<2>(0, 0, -1)), list(one2)); // in 2-D alone
    EXPECT_EQ(of(metric<2>(1, 1, 1), one2), list(zero2));
    EXPECT_EQ(of(metric<2>(HUGE_VAL, 0, 1), one2), list(zero2));
    const metric<3> one3(1, 0, 1, 0, 0, 1), zero3, flat(1, 0, 1, 1, 0, 1);
    EXPECT_EQ(of(one3, zero3), list(one3));
    EXPECT_EQ(of(flat, one3), list(zero3)); // a last pivot of 0 serves the second alone
    EXPECT_NE(of(one3, flat), list(zero3));
    EXPECT_EQ(of(one3, metric<3>(0, 0, 1, 0, 0, 1)), list(zero3));
}

} // namespace kvx::zelvo::tests
