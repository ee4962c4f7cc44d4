#include <kvx/zelvo/edges.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

void edges_of(benchmark::State& state, mesh (*make)(std::uint64_t)) {
    const mesh m = make(static_cast<std::uint64_t>(state.range(0)));
    for (auto _ : state) {
        dense2D<unsigned int> edges;
        if (failed(state, copy_edges(m.conn, m.kind, edges))) return;
        benchmark::DoNotOptimize(edges.data());
    }
    per_item(state, m.conn.cols());
}
BENCHMARK_CAPTURE(edges_of, triangles, bumpy_sphere)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(edges_of, triangles_shuffled, shuffled<bumpy_sphere>)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(edges_of, triangles_around_a_node, fan)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(edges_of, tetrahedra, tetrahedral_grid)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(edges_of, tetrahedra_shuffled, shuffled<tetrahedral_grid>)->Apply(doubling_sizes);

} // namespace

BENCHMARK_MAIN();
