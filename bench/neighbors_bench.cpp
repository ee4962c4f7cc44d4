#include <kvx/zelvo/neighbors.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

void neighbors_of(measurement& measured, const mesh& m) {
    dense2D<unsigned int> neighbors;
    measured.reads(m.conn).makes(neighbors).run(
        [&] { return get_neighbors(m.conn, m.kind, true, neighbors); });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>({{"triangles", bumpy_sphere},
                      {"triangles_clustered", clustered<bumpy_sphere>},
                      {"triangles_shuffled", shuffled<bumpy_sphere>},
                      {"triangles_sparse", sparse<bumpy_sphere>},
                      {"triangles_around_a_node", fan},
                      {"one_triangle", one_triangle},
                      {"tetrahedra", tetrahedral_grid},
                      {"tetrahedra_clustered", clustered<tetrahedral_grid>},
                      {"tetrahedra_shuffled", shuffled<tetrahedral_grid>},
                      {"tetrahedra_sparse", sparse<shuffled<tetrahedral_grid>>},
                      {"hexahedra", hexahedral_grid},
                      {"solids", mixed_solids}},
                     {{"get_neighbors", neighbors_of}});
    return run_benchmarks(argc, argv);
}
