#include <kvx/zelvo/edge_qualities.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

dense1D<double> unit_sizes(std::uint64_t n) {
    return dense1D<double>(n, 1.0);
}

dense2D<double> unit_metrics(std::uint64_t n) {
    dense2D<double> metrics(6, n);
    for (const unsigned diagonal : {0u, 2u, 5u}) {
        for (std::uint64_t j = 0; j < n; ++j)
            metrics(diagonal, j) = 1;
    }
    return metrics;
}

template <class Field>
void qualities_of(benchmark::State& state, Field (*make)(std::uint64_t)) {
    const mesh m = tetrahedral_grid(static_cast<std::uint64_t>(state.range(0)));
    const Field field = make(m.pos.cols());
    for (auto _ : state) {
        misc::histogram statistics(0, 4, 40);
        if (failed(state, edge_qualities(m.pos, m.conn, m.kind, field, statistics))) return;
        benchmark::DoNotOptimize(statistics.mean());
    }
    per_item(state, m.conn.cols());
}
BENCHMARK_CAPTURE(qualities_of, sizes, unit_sizes)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(qualities_of, metrics, unit_metrics)->Apply(doubling_sizes);

} // namespace

BENCHMARK_MAIN();
