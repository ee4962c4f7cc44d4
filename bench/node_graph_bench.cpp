#include <kvx/zelvo/node_graph.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

using list_maker = int (*)(const dense2D<unsigned int>&, dense1D<unsigned int>&,
                           dense1D<unsigned int>&) noexcept;

void lists_of_triangles(benchmark::State& state, list_maker make_lists,
                        mesh (*make)(std::uint64_t)) {
    const mesh m = make(static_cast<std::uint64_t>(state.range(0)));
    dense1D<unsigned int> offsets;
    dense1D<unsigned int> entries;
    for (auto _ : state) {
        if (failed(state, make_lists(m.conn, offsets, entries))) return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK_CAPTURE(lists_of_triangles, connected_elements, get_connected_elements, bumpy_sphere)
    ->Apply(doubling_sizes);
BENCHMARK_CAPTURE(lists_of_triangles, connected_elements_shuffled, get_connected_elements,
                  shuffled<bumpy_sphere>)
    ->Apply(doubling_sizes);
BENCHMARK_CAPTURE(lists_of_triangles, connected_elements_around_a_node, get_connected_elements, fan)
    ->Apply(doubling_sizes);
BENCHMARK_CAPTURE(lists_of_triangles, node_graph, get_node_graph, bumpy_sphere)
    ->Apply(doubling_sizes);
BENCHMARK_CAPTURE(lists_of_triangles, node_graph_shuffled, get_node_graph, shuffled<bumpy_sphere>)
    ->Apply(doubling_sizes);
BENCHMARK_CAPTURE(lists_of_triangles, node_graph_around_a_node, get_node_graph, fan)
    ->Apply(doubling_sizes);

void ancestors(benchmark::State& state) {
    const mesh m = bumpy_sphere(static_cast<std::uint64_t>(state.range(0)));
    for (auto _ : state) {
        dense1D<unsigned int> elements;
        if (failed(state, get_ancestors(m.conn, elements))) return;
        benchmark::DoNotOptimize(elements.data());
    }
    per_item(state, m.conn.cols());
}
BENCHMARK(ancestors)->Apply(doubling_sizes);

} // namespace

BENCHMARK_MAIN();
