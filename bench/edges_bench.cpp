#include <kvx/zelvo/edges.h>

#include "mesh_shapes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

void distinct_edges(measurement& measured, const mesh& m) {
    dense2D<unsigned int> edges;
    measured.reads(m.conn).makes(edges).run([&] {
        edges.clear(); // edges are appended
        return copy_edges(m.conn, m.kind, edges);
    });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>(meshes_with_sides(), {{"copy_edges", distinct_edges}});
    return run_benchmarks(argc, argv);
}
