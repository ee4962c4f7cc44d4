#include <kvx/zelvo/boundaries.h>

#include <kvx/zelvo/neighbors.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

void element_boundaries(measurement& measured, const mesh& m) {
    dense2D<unsigned int> boundaries;
    measured.reads(m.conn).makes(boundaries).run([&] {
        return get_element_boundaries(m.conn, m.kind, boundaries);
    });
}

void mesh_boundaries(measurement& measured, const mesh& m) {
    dense2D<unsigned int> neighbors, boundaries;
    get_neighbors(m.conn, m.kind, true, neighbors);
    measured.reads(m.conn, neighbors).makes(boundaries).run([&] {
        return get_mesh_boundaries(m.conn, neighbors, m.kind, boundaries);
    });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>(
        {{"triangles", bumpy_sphere},
         {"triangles_around_a_node", fan},
         {"one_triangle", one_triangle},
         {"tetrahedra", tetrahedral_grid},
         {"tetrahedra_clustered", clustered<tetrahedral_grid>},
         {"tetrahedra_shuffled", shuffled<tetrahedral_grid>},
         {"hexahedra", hexahedral_grid},
         {"solids", mixed_solids}},
        {{"element_boundaries", element_boundaries}, {"mesh_boundaries", mesh_boundaries}});
    return run_benchmarks(argc, argv);
}
