#include <kvx/zelvo/size_gradation.h>

#include <kvx/zelvo/edges.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

/// The edges of a cell are about 1 long.
constexpr double gradation = 0.2;

/// Tetrahedra with about the number of nodes asked for.
mesh mesh_with_nodes(benchmark::State& state) {
    constexpr std::uint64_t elements_a_node = 6;
    return tetrahedral_grid(elements_a_node * static_cast<std::uint64_t>(state.range(0)));
}

/// One random size a node, from a hundredth of an edge to a hundred edges: most nodes are lowered.
dense1D<double> random_sizes(std::uint64_t n) {
    dense1D<double> sizes(n);
    std::mt19937_64 draw(seed);
    for (double& h : sizes)
        h = std::pow(10.0, 4 * double(draw() >> 11) / double(1ull << 53) - 2);
    return sizes;
}

/// One small size, at the last node: the bound travels through the whole mesh, against the
/// numbering.
dense1D<double> one_small_size(std::uint64_t n) {
    dense1D<double> sizes(n, 1e9);
    sizes[n - 1] = 0.01;
    return sizes;
}

/// Diagonal metrics, one random size an axis.
dense2D<double> random_metrics(std::uint64_t n) {
    dense2D<double> metrics(6, n);
    const dense1D<double> sizes = random_sizes(3 * n);
    constexpr unsigned diagonal[] = {0, 2, 5};
    for (std::uint64_t j = 0; j < n; ++j) {
        for (unsigned axis = 0; axis < 3; ++axis)
            metrics(diagonal[axis], j) = 1 / (sizes[3 * j + axis] * sizes[3 * j + axis]);
    }
    return metrics;
}

template <class Field>
void gradation_of(benchmark::State& state, Field (*make)(std::uint64_t), int rounds_before) {
    const mesh m = mesh_with_nodes(state);
    const dense1D<unsigned int> none_listed;
    Field given = make(m.pos.cols());
    for (int round = 0; round < rounds_before; ++round)
        bound_metric_gradation(m.pos, m.conn, m.kind, none_listed, gradation, given);
    Field bounded;
    for (auto _ : state) {
        state.PauseTiming();
        if (!bounded.copy(given)) return state.SkipWithError("out of memory");
        state.ResumeTiming();
        if (failed(state,
                   bound_metric_gradation(m.pos, m.conn, m.kind, none_listed, gradation, bounded)))
            return;
    }
    per_item(state, m.pos.cols());
}
BENCHMARK_CAPTURE(gradation_of, sizes, random_sizes, 0)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(gradation_of, sizes_bounded_before, random_sizes, 1)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(gradation_of, one_small_size, one_small_size, 0)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(gradation_of, metrics, random_metrics, 0)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(gradation_of, metrics_bounded_before, random_metrics, 1)->Apply(doubling_sizes);

template <class Field>
void shocks_of(benchmark::State& state, Field (*make)(std::uint64_t)) {
    const mesh m = mesh_with_nodes(state);
    const Field field = make(m.pos.cols());
    dense2D<unsigned int> edges;
    copy_edges(m.conn, m.kind, edges);
    dense1D<double> shocks;
    for (auto _ : state) {
        if (failed(state, H_shock(m.pos, edges, field, shocks))) return;
    }
    per_item(state, edges.cols());
}
BENCHMARK_CAPTURE(shocks_of, sizes, random_sizes)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(shocks_of, metrics, random_metrics)->Apply(doubling_sizes);

} // namespace

BENCHMARK_MAIN();
