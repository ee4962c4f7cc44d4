#include <kvx/zelvo/subdomains.h>

#include <kvx/zelvo/neighbors.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

void by_shared_nodes(benchmark::State& state) {
    const mesh m = bumpy_sphere(static_cast<std::uint64_t>(state.range(0)));
    dense1D<unsigned int> elements;
    dense1D<unsigned int> offsets;
    for (auto _ : state) {
        if (failed(state, get_subdomains(m.conn, elements, offsets))) return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK(by_shared_nodes)->Apply(doubling_sizes);

void by_neighbors(benchmark::State& state) {
    const mesh m = bumpy_sphere(static_cast<std::uint64_t>(state.range(0)));
    dense2D<unsigned int> neighbors;
    if (failed(state, get_neighbors(m.conn, m.kind, true, neighbors))) return;
    dense1D<unsigned int> offsets;
    dense2D<unsigned int> conn;
    conn.copy(m.conn); // in one part, so the reordering leaves it as it is
    for (auto _ : state) {
        if (failed(state, get_subdomains(conn, neighbors, offsets))) return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK(by_neighbors)->Apply(doubling_sizes);

} // namespace

BENCHMARK_MAIN();
