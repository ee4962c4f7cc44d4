#include <kvx/zelvo/neighbors.h>

#include "mesh_shapes.h"

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
    over_sizes<mesh>(meshes_with_sides(), {{"get_neighbors", neighbors_of}});
    return run_benchmarks(argc, argv);
}
