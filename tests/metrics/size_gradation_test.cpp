#include <set>

#include "metrics/random_metrics.h"

namespace kvx::zelvo::tests {

const double most = std::numeric_limits<double>::max();

// Quadrangles or tetrahedra over random points; their edges as tetrahedra are all pairs of nodes of
// an element. Nodes 3, 50, 198 are listed, 0 and 1 invalid, node 199 has neither size nor metric.
template <unsigned Dim>
void bound_random_fields(double gradation, double decades) {
    constexpr unsigned n = 200, rows = metric<Dim>::packed_size;
    engine random(unsigned(1000 * gradation));
    const double odd[] = {0, nan, INFINITY};
    const std::set<unsigned> kept = {0, 1, 3, 50, 198, 199};
    dense2D<double> pos(Dim, n), metrics(rows, n), old_metrics;
    dense1D<double> sizes(n), shocks;
    dense2D<unsigned int> conn(4, 3 * n), edges;
    for (unsigned k = 0; k < n; ++k) {
        std::generate_n(&pos(0, k), Dim, [&] { return 0.1 * k + std::sin(double(random())); });
        sizes[k] = k < 3 ? odd[k] : std::exp(8 * std::sin(double(random())) - 1);
        const auto M = random_metric<Dim>(random, decades, std::pow(std::min(sizes[k], 1e9), -2));
        std::copy_n(M.data(), rows, &metrics(0, k));
        for (unsigned i = 0; i < 12; ++i)
            conn(i % 4, 3 * k + i / 4) = k * (n - 7) / n + i % 4 * 2 + unsigned(random() % 2);
    }
    old_metrics.copy(metrics);
    metrics = strided(metrics, nan);
    dense1D<double> given_sizes = sizes.sub_vector(0, n - 1);
    dense2D<double> given_metrics = metrics.sub_matrix(0, 0, rows, n - 1);
    const auto bound = [&](auto& field) {
        return bound_metric_gradation(strided(pos, nan), conn, Dim == 2 ? ET_QUAD4 : ET_TETRA4,
                                      vec({198, none, 50, 3, 50}), gradation, field);
    };
    ASSERT_EQ(bound(given_sizes) + bound(given_metrics), 0);

    std::vector<std::vector<unsigned int>> free_edges;
    copy_edges(conn, ET_TETRA4, edges);
    for (const auto& edge : list(edges))
        if (!kept.count(edge[0]) && !kept.count(edge[1])) free_edges.push_back(edge);
    H_shock(pos, edges, given_sizes, shocks);
    EXPECT_EQ(shocks[n - 1], most);
    ASSERT_EQ(H_shock(pos, columns(free_edges), sizes, shocks), 0);
    EXPECT_NEAR(*std::max_element(shocks.begin(), shocks.end()), gradation, 1e-9 * gradation);
    ASSERT_EQ(H_shock(pos, columns(free_edges), metrics, shocks), 0);
    EXPECT_LE(*std::max_element(shocks.begin(), shocks.end()), gradation * (1 + 1e-9));
    for (unsigned k = 0; k < n; ++k) {
        const double *now = &metrics(0, k), *before = &old_metrics(0, k);
        EXPECT_TRUE(kept.count(k) ? std::equal(now, now + rows, before) || k < 2
                                  : now[0] > before[0] * (1 - 1e-9));
        EXPECT_NEAR(decades > 0 || k < 2 ? 1 : now[0] * sizes[k] * sizes[k], 1, 1e-9) << k;
    }
}

// Round metrics are bounded in another way than sizes, but have to come to the same.
TEST(SizeGradation, LargestFieldThatObeysTheGradation) {
    bound_random_fields<2>(0.02, 0);
    bound_random_fields<3>(1, 0);
    bound_random_fields<2>(1, 4);
    bound_random_fields<3>(0.2, 4);
}

TEST(SizeGradation, AnyGradationAboveZeroButTheLargestNumber) {
    const auto pos = points({{0, 0}, {0, 0}, {1, 0}});
    const double unbounded = std::numeric_limits<double>::infinity();
    for (const auto& [gradation, code] : {std::pair(nan, -5), {most, -5}, {unbounded, 0}}) {
        auto sizes = points({{1, 5, 9}}).col(0);
        EXPECT_EQ(
            bound_metric_gradation(pos, columns({{0, 1, 2}}), ET_TRIA3, vec({}), gradation, sizes),
            code);
        EXPECT_EQ(list(sizes), (std::vector<double>{1, code < 0 ? 5.0 : 1.0, 9}));
    }
}

} // namespace kvx::zelvo::tests
