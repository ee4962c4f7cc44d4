#include <kvx/zelvo/node_merging.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

/// Welds the corners of a facet soup.
void merge_soup(benchmark::State& state) {
    const mesh soup = facet_soup(bumpy_sphere(static_cast<std::uint64_t>(state.range(0))));
    dense2D<unsigned int> conn;
    dense1D<unsigned int> new_IDs;
    for (auto _ : state) {
        state.PauseTiming();
        conn.copy(soup.conn);
        state.ResumeTiming();
        if (failed(state, merge(soup.pos, conn, new_IDs, 1e-9, 0))) return;
    }
    per_item(state, soup.conn.cols());
}
BENCHMARK(merge_soup)->Apply(doubling_sizes);

/// Merges a list of nodes: five of six on the surface, none at random, all but one where they are
/// equal; on the lattice every edge is a pair at the tolerance.
void merge_points(benchmark::State& state) {
    const auto n = static_cast<std::uint64_t>(state.range(0));
    const auto kind = static_cast<cloud>(state.range(1));
    const dense2D<double> pos = points(kind, n);
    const double spacing = 1 / std::cbrt(double(n));
    const double tol = kind == on_lattice ? spacing : 1e-3 * spacing;
    dense1D<unsigned int> nodes(n);
    for (std::uint64_t i = 0; i < n; ++i)
        nodes[i] = index(i);
    dense1D<unsigned int> new_IDs;
    for (auto _ : state) {
        if (failed(state, merge(pos, nodes, new_IDs, tol))) return;
    }
    state.SetLabel(cloud_names[kind]);
    per_item(state, n);
}
BENCHMARK(merge_points)->Apply(doubling_clouds);

} // namespace

BENCHMARK_MAIN();
