#include <array>
#include <limits>

#include "random_metrics.h"

namespace kvx::zelvo::tests {

template <unsigned N>
long double norm(const metric<N>& M) {
    long double largest = 0;
    for (const double entry : list(M))
        largest = std::max(largest, std::abs(static_cast<long double>(entry)));
    return largest;
}

/// Largest entry of B v - value A v.
template <unsigned N>
long double residual(const metric<N>& A, const metric<N>& B, double value, const double* v) {
    long double largest = 0;
    for (unsigned i = 0; i < N; ++i) {
        std::array<double, N> axis{};
        axis[i] = 1.0;
        largest = std::max(largest, std::abs(form(B, axis, v) - value * form(A, axis, v)));
    }
    return largest;
}

template <unsigned N>
void expect_pairs(const metric<N>& A, const metric<N>& B) {
    metric<N> identity;
    for (unsigned i = 0; i < N; ++i)
        identity(i, i) = 1.0;
    vector_fixed<double, N> values;
    matrix_fixed<double, N, N> V;
    ASSERT_TRUE(eigen_pairs(A, values, V));
    for (unsigned k = 0; k < N; ++k) {
        EXPECT_LE(residual(identity, A, values[k], &V(0, k)), 3e-12L * norm(A));
        EXPECT_TRUE(k == 0 || values[k - 1] <= values[k]);
        for (unsigned j = 0; j < N; ++j)
            EXPECT_NEAR(double(form(identity, &V(0, j), &V(0, k))), j == k, 1e-14);
    }
    ASSERT_TRUE(eigen_pairs(A, B, values, V));
    for (unsigned k = 0; k < N; ++k) {
        EXPECT_LE(residual(A, B, values[k], &V(0, k)),
                  1e-14L * (norm(B) + std::abs(values[N - 1]) * norm(A)));
        EXPECT_NEAR(double(form(identity, &V(0, k), &V(0, k))), 1.0, 1e-14);
    }
}

template <unsigned N>
void expect_combinations(std::mt19937& random, const metric<N>& A, const metric<N>& B) {
    metric<N> low = A, high = B;
    minimum_metric(low, B, low);
    maximum_metric(A, high, high);
    const long double larger = std::max(norm(A), norm(B)), smaller = std::min(norm(A), norm(B));
    const auto expect = [&](const auto& u, bool conjugate) {
        const long double a = form(A, u, u), b = form(B, u, u);
        const long double below = form(low, u, u) - std::max(a, b);
        const long double above = std::min(a, b) - form(high, u, u);
        EXPECT_GE(below, -1e-9L * larger);
        EXPECT_GE(above, -1e-9L * smaller);
        if (!conjugate) return;
        EXPECT_LE(below, 1e-7L * larger);
        EXPECT_LE(above, 1e-7L * smaller);
    };
    vector_fixed<double, N> values;
    matrix_fixed<double, N, N> V;
    eigen_pairs(A, B, values, V);
    for (unsigned k = 0; k < 4 * N; ++k) {
        std::array<double, N> u;
        for (unsigned i = 0; i < N; ++i)
            u[i] = k < N ? V(i, k) : std::uniform_real_distribution<double>(-1.0, 1.0)(random);
        expect(u, k < N);
    }
}

template <unsigned N>
void expect_all() {
    std::mt19937 random(1);
    for (const double scale : {1e-290, 1e-150, 1.0, 1e150, 1e290}) {
        for (const double decades : {0.0, 3.0, 12.0}) {
            for (const double ratio : {1e-3, 1.0, 3.0}) {
                for (int trial = 0; trial < 10; ++trial) {
                    const auto A = random_metric<N>(random, decades, scale);
                    const auto B = random_metric<N>(random, trial, scale * ratio);
                    expect_pairs(A, B);
                    expect_combinations(random, A, B);
                }
            }
        }
    }
}

TEST(metric_combination, has_its_defining_properties_for_all_sizes_and_shapes) {
    expect_all<2>();
    expect_all<3>();
}

// The order and the signs of vectors, digits that a difference would lose, and what has no pairs.
TEST(metric_combination, follows_its_closed_form_and_fails_where_stated) {
    constexpr double inf = std::numeric_limits<double>::infinity(), r = 0.7071067811865475;
    const struct {
        metric<2> M;
        std::vector<double> values, vectors;
    } plane[] = {{{1, 2, 1}, {-1, 3}, {r, -r, r, r}},
                 {{100, 0, 0.01}, {0.01, 100}, {0, -1, 1, 0}},
                 {{2, 1e-13, 2}, {2, 2}, {1, 0, 0, 1}},
                 {{1e8, 1, 2e-8}, {1e-8, 1e8}, {1e-8, -1, 1, 1e-8}},
                 {{-1, 1e-7, -2e-14}, {-1, -1e-14}, {-1, 1e-7, -1e-7, -1}}};
    for (const auto& c : plane) {
        vector_fixed<double, 2> values;
        matrix_fixed<double, 2, 2> V;
        EXPECT_TRUE(eigen_pairs(c.M, values, V));
        for (unsigned i = 0; i < 4; ++i) {
            EXPECT_NEAR(values[i / 2], c.values[i / 2], 2e-13 * std::abs(c.values[i / 2]));
            EXPECT_NEAR(V.data()[i], c.vectors[i], 1e-14) << &c - plane;
        }
    }
    const metric<2> zero2, one2(1, 0, 1);
    const metric<3> zero3, one3(1, 0, 1, 0, 0, 1), flat(1, 0, 1, 1, 0, 1), bent(1, 2, 1, 0, 0, 1);
    metric<2> M;
    metric<3> N;
    vector_fixed<double, 3> values;
    matrix_fixed<double, 3, 3> V;
    EXPECT_FALSE(eigen_pairs(metric<3>(1, 0, 1, 0, inf, 1), values, V));
    minimum_metric({1, 0, 4}, {4, 0, 1}, M);
    EXPECT_EQ(list(M), list(metric<2>(4, 0, 4)));
    maximum_metric({1, 0, 4}, {4, 0, 1}, M);
    EXPECT_EQ(list(M), list(one2));
    for (const auto& bad : {zero2, metric<2>(1, 1, 1), metric<2>(inf, 0, 1)}) {
        minimum_metric(bad, one2, M = 5.0);
        EXPECT_EQ(list(M), list(zero2));
    }
    for (const auto& [A, B] : {std::pair{zero3, one3}, {flat, one3}, {one3, bent}}) {
        minimum_metric(A, B, N = 5.0);
        EXPECT_EQ(list(N), list(zero3));
    }
    minimum_metric(one2, {1, 2, 1}, M); // any symmetric matrix may come second in 2-D
    EXPECT_NEAR(M(0, 1), 1.0, 1e-15);
    minimum_metric(one3, zero3, N);
    EXPECT_EQ(list(N), list(one3));
    EXPECT_TRUE(eigen_pairs(one3, flat, values, V)); // a last pivot of 0
    EXPECT_NEAR(values[2], 2.0, 1e-15);
}

} // namespace kvx::zelvo::tests
