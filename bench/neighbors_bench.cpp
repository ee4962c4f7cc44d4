#include <kvx/zelvo/neighbors.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

void neighbors_of(benchmark::State& state, mesh (*make)(std::uint64_t)) {
    const mesh m = make(static_cast<std::uint64_t>(state.range(0)));
    dense2D<unsigned int> neighbors;
    for (auto _ : state) {
        if (failed(state, get_neighbors(m.conn, m.kind, true, neighbors))) return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK_CAPTURE(neighbors_of, triangles, bumpy_sphere)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(neighbors_of, triangles_shuffled, shuffled<bumpy_sphere>)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(neighbors_of, triangles_around_a_node, fan)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(neighbors_of, tetrahedra, tetrahedral_grid)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(neighbors_of, tetrahedra_shuffled, shuffled<tetrahedral_grid>)
    ->Apply(doubling_sizes);
BENCHMARK_CAPTURE(neighbors_of, hexahedra, hexahedral_grid)->Apply(doubling_sizes);

} // namespace

BENCHMARK_MAIN();
