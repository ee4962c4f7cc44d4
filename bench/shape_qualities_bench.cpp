#include <kvx/zelvo/shape_qualities.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

mesh mesh_of(element_type kind, std::uint64_t elements) {
    switch (kind) {
    case ET_TRIA3:
        return bumpy_sphere(elements);
    case ET_QUAD4:
        return cut(hexahedral_grid(elements), kind, {{0, 1, 2, 3}});
    case ET_TETRA4:
        return tetrahedral_grid(elements);
    case ET_PYRAMID5:
        return cut(hexahedral_grid(elements), kind, {{0, 1, 2, 3, 6}});
    case ET_PENTA6:
        return cut(hexahedral_grid(elements / 2), kind, {{0, 1, 2, 4, 5, 6}, {0, 2, 3, 4, 6, 7}});
    default:
        return hexahedral_grid(elements);
    }
}

void shape_qualities_of(benchmark::State& state, element_type kind) {
    const mesh m = mesh_of(kind, static_cast<std::uint64_t>(state.range(0)));
    dense1D<double> Q;
    for (auto _ : state) {
        if (failed(state, shape_qualities(m.pos, m.conn, kind, Q))) return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK_CAPTURE(shape_qualities_of, triangles, ET_TRIA3)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(shape_qualities_of, quadrangles, ET_QUAD4)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(shape_qualities_of, tetrahedra, ET_TETRA4)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(shape_qualities_of, pyramids, ET_PYRAMID5)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(shape_qualities_of, wedges, ET_PENTA6)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(shape_qualities_of, hexahedra, ET_HEXA8)->Apply(doubling_sizes);

/// What the histogram adds to the rating.
void histogram_of_qualities(benchmark::State& state) {
    const mesh m = bumpy_sphere(static_cast<std::uint64_t>(state.range(0)));
    misc::histogram statistics(-1, 1, 20);
    for (auto _ : state) {
        if (failed(state, shape_qualities(m.pos, m.conn, m.kind, statistics))) return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK(histogram_of_qualities)->Apply(doubling_sizes);

} // namespace

BENCHMARK_MAIN();
