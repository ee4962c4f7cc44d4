#include <kvx/zelvo/metric_combination.h>
#include <kvx/zelvo/metric_validity.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

/// Metrics in general position, stretched up to a thousandfold: sums of squares of random vectors.
template <unsigned Dim>
dense2D<double> random_metrics(std::uint64_t n) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    dense2D<double> metrics(Dim * (Dim + 1) / 2, n);
    for (std::uint64_t k = 0; k < n; ++k) {
        for (unsigned square = 0; square < Dim; ++square) {
            double v[Dim];
            for (double& x : v)
                x = normal(random) * (square == 0 ? 1.0 : 0.03);
            for (unsigned j = 0, entry = 0; j < Dim; ++j) {
                for (unsigned i = 0; i <= j; ++i)
                    metrics(entry++, k) += v[i] * v[j];
            }
        }
    }
    return metrics;
}

template <unsigned Dim>
void validity(benchmark::State& state) {
    const auto metrics = random_metrics<Dim>(static_cast<std::uint64_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(are_valid_metrics(metrics));
    per_item(state, metrics.cols());
}
BENCHMARK_TEMPLATE(validity, 2)->Apply(doubling_sizes);
BENCHMARK_TEMPLATE(validity, 3)->Apply(doubling_sizes);

/// Bounds that change no metric, or most of them; with the copy that each round starts from.
template <unsigned Dim>
void bounding(benchmark::State& state, double hmin, double hmax) {
    const auto metrics = random_metrics<Dim>(static_cast<std::uint64_t>(state.range(0)));
    dense2D<double> bounded;
    for (auto _ : state) {
        if (!bounded.copy(metrics) || failed(state, bound_metrics(bounded, hmin, hmax))) return;
    }
    per_item(state, metrics.cols());
}
template <unsigned Dim>
void bounding_none(benchmark::State& state) {
    bounding<Dim>(state, 1e-3, 1e9);
}
template <unsigned Dim>
void bounding_most(benchmark::State& state) {
    bounding<Dim>(state, 1.0, 10.0);
}
BENCHMARK_TEMPLATE(bounding_none, 2)->Apply(doubling_sizes);
BENCHMARK_TEMPLATE(bounding_none, 3)->Apply(doubling_sizes);
BENCHMARK_TEMPLATE(bounding_most, 2)->Apply(doubling_sizes);
BENCHMARK_TEMPLATE(bounding_most, 3)->Apply(doubling_sizes);

/// Each metric with the next one.
template <unsigned Dim>
void intersection(benchmark::State& state) {
    const auto metrics = random_metrics<Dim>(static_cast<std::uint64_t>(state.range(0)));
    symmetric_fixed<double, Dim> M[2], result;
    for (auto _ : state) {
        for (std::uint64_t k = 0; k < metrics.cols(); ++k) {
            std::copy_n(&metrics(0, k), M[0].packed_size, M[k % 2].data());
            minimum_metric(M[0], M[1], result);
            benchmark::DoNotOptimize(result);
        }
    }
    per_item(state, metrics.cols());
}
BENCHMARK_TEMPLATE(intersection, 2)->Apply(doubling_sizes);
BENCHMARK_TEMPLATE(intersection, 3)->Apply(doubling_sizes);

} // namespace

BENCHMARK_MAIN();
