#include <kvx/zelvo/boundaries.h>

#include <kvx/zelvo/neighbors.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

void element_boundaries(benchmark::State& state) {
    const mesh m = tetrahedral_grid(static_cast<std::uint64_t>(state.range(0)));
    dense2D<unsigned int> boundaries;
    for (auto _ : state) {
        if (failed(state, get_element_boundaries(m.conn, m.kind, boundaries))) return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK(element_boundaries)->Apply(doubling_sizes);

void mesh_boundaries(benchmark::State& state) {
    const mesh m = tetrahedral_grid(static_cast<std::uint64_t>(state.range(0)));
    dense2D<unsigned int> neighbors;
    if (failed(state, get_neighbors(m.conn, m.kind, true, neighbors))) return;
    dense2D<unsigned int> boundaries;
    for (auto _ : state) {
        if (failed(state, get_mesh_boundaries(m.conn, neighbors, m.kind, boundaries))) return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK(mesh_boundaries)->Apply(doubling_sizes);

} // namespace

BENCHMARK_MAIN();
