#include <kvx/zelvo/node_graph.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

using list_maker = int (*)(const dense2D<unsigned int>&, dense1D<unsigned int>&,
                           dense1D<unsigned int>&) noexcept;

template <list_maker make_lists>
void lists(measurement& measured, const mesh& m) {
    dense1D<unsigned int> offsets, entries;
    measured.reads(m.conn).makes(offsets, entries).run([&] {
        return make_lists(m.conn, offsets, entries);
    });
}

void ancestors(measurement& measured, const mesh& m) {
    dense1D<unsigned int> elements;
    measured.reads(m.conn).makes(elements).run([&] { return get_ancestors(m.conn, elements); });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>({{"triangles", bumpy_sphere},
                      {"triangles_clustered", clustered<bumpy_sphere>},
                      {"triangles_shuffled", shuffled<bumpy_sphere>},
                      {"triangles_around_a_node", fan},
                      {"one_triangle", one_triangle},
                      {"tetrahedra", tetrahedral_grid},
                      {"tetrahedra_shuffled", shuffled<tetrahedral_grid>}},
                     {{"connected_elements", lists<get_connected_elements>},
                      {"node_graph", lists<get_node_graph>},
                      {"ancestors", ancestors}});
    return run_benchmarks(argc, argv);
}
