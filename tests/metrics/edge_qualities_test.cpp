#include "metrics/metric_length.h"
#include "metrics/random_metrics.h"

namespace kvx::zelvo::tests {

TEST(EdgeQualities, EffectiveSizes) {
    EXPECT_NEAR(effective_size(1, 1e-20), 0.02171472409516259, 1e-16);
    EXPECT_NEAR(effective_size(1.0005, 1), 1.0002499791718733, 1e-15); // by the series
}

constexpr long double most = std::numeric_limits<double>::max();

/// Sizes or metrics for a few nodes more or less than there are, of other rows now and then.
template <unsigned Dim>
void compare_edges(engine& random) {
    constexpr unsigned n = 10, rows = metric<Dim>::packed_size;
    const bool iso = below(random, 2) == 0, fits = iso || below(random, 9) > 0;
    const unsigned given = n - 2 + below(random, 5);
    const double odd[] = {0, -1, nan};
    const auto pos = random_matrix(random, Dim, n, [&] { return below(random, 9) / 4.0; });
    dense1D<double> sizes(given), shocks;
    dense2D<double> metrics(fits ? rows : 9 - rows, given);
    std::vector<metric<Dim>> M(given);
    for (unsigned k = 0; k < given; ++k) {
        sizes[k] = below(random, 9) ? std::exp(std::sin(random())) : odd[below(random, 3)];
        M[k] = random_metric<Dim>(random, below(random, 4), 1 / sizes[k] / std::abs(sizes[k]));
        std::copy_n(M[k].data(), std::min(rows, unsigned(metrics.rows())), &metrics(0, k));
    }
    metrics = strided(metrics, nan);
    const auto with_field = [&](auto&& call) { return iso ? call(sizes) : call(metrics); };
    const auto is_valid = [&](unsigned k) {
        return k < given && fits && (iso ? !(sizes[k] <= 0) : is_valid_metric(M[k]));
    };
    const auto quality_and_shock = [&](unsigned a, unsigned b) {
        direction<Dim> e;
        for (unsigned i = 0; i < Dim; ++i)
            e[i] = pos(i, b) - pos(i, a);
        const auto size = [&](unsigned k) -> long double {
            return k >= given || !fits ? nan : iso ? sizes[k] : 1 / std::sqrt(form(M[k], e, e));
        };
        const long double L = iso ? std::hypot(e[0], e[1], Dim > 2 ? e[Dim - 1] : 0.0) : 1;
        const long double ha = size(a), change = size(b) - ha;
        if (!(ha > 0 && ha + change > 0 && ha + change < inf)) return std::pair(most, most);
        const long double mean = change == 0 ? ha : change / std::log1p(change / ha);
        return std::pair(L / mean, L > 0 ? std::min(std::expm1(std::abs(change) / L), most) : most);
    };

    dense2D<unsigned> range[2], edges;
    dense1D<int> kinds(2);
    for (unsigned k = 0; k < 2; ++k) {
        do
            kinds[k] = 3 + int(below(random, 18));
        while (node_count(element_type(kinds[k])) == 0);
        range[k] = random_matrix(random, node_count(element_type(kinds[k])), below(random, 4),
                                 [&] { return below(random, n); });
    }
    const bool single = below(random, 2) == 0;
    copy_edges(range, range + (single ? 1 : 2), single ? kinds.sub_vector(0, 1) : kinds, edges);
    std::vector<long double> expected(n);
    unsigned valid = 0;
    for (const auto& edge : list(edges)) {
        const auto [quality, shock] = quality_and_shock(edge[0], edge[1]);
        for (const unsigned k : edge)
            expected[k] = std::max(expected[k], shock);
        if (!is_valid(edge[0]) || !is_valid(edge[1])) continue;
        ++valid;
        misc::histogram one(0, 1, 1);
        with_field([&](auto& f) { return edge_qualities(pos, columns({edge}), ET_BAR2, f, one); });
        ASSERT_NEAR(one.minimum(), double(quality), 1e-10 * double(quality));
    }
    const bool complete = given == n && valid == edges.cols();
    misc::histogram all(0, 1, 1);
    const int code = with_field([&](auto& f) {
        return single ? edge_qualities(pos, range[0], element_type(kinds[0]), f, all)
                      : edge_qualities(pos, range, range + 2, kinds, f, all);
    });
    ASSERT_EQ(code, complete || (single && range[0].empty()) ? 0
                    : !single                                ? -5
                    : iso || Dim == 2                        ? -4
                                                             : 0);
    ASSERT_EQ(all.count(), valid);
    ASSERT_EQ(with_field([&](auto& f) { return H_shock(pos, edges, f, shocks); }), 0);
    for (unsigned k = 0; k < shocks.size(); ++k)
        ASSERT_NEAR(shocks[k], double(expected[k]), 1e-9 * double(expected[k]));
    ASSERT_EQ(shocks.size(), edges.empty() ? 0u : n);
}

TEST(EdgeQualities, AndShocksFollowTheirFormulas) {
    engine random(4);
    for (int trial = 0; trial < 3000 && !testing::Test::HasFailure(); ++trial) {
        compare_edges<2>(random);
        compare_edges<3>(random);
    }
}

} // namespace kvx::zelvo::tests
