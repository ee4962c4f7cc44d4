#include <kvx/zelvo/subdomains.h>

#include <kvx/zelvo/neighbors.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

mesh separate_triangles(std::uint64_t elements) {
    return separate_facets(bumpy_sphere(elements));
}

void by_shared_nodes(measurement& measured, const mesh& m) {
    dense1D<unsigned int> elements, offsets;
    measured.reads(m.conn).makes(elements, offsets).run([&] {
        return get_subdomains(m.conn, elements, offsets);
    });
}

void by_neighbors(measurement& measured, const mesh& m) {
    dense2D<unsigned int> given, conn, neighbors;
    get_neighbors(m.conn, m.kind, true, given);
    dense1D<unsigned int> offsets;
    measured.reads(m.conn, given)
        .makes(offsets)
        .before([&] { return conn.copy(m.conn) && neighbors.copy(given); })
        .run([&] { return get_subdomains(conn, neighbors, offsets); });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>({{"triangles", bumpy_sphere},
                      {"triangles_clustered", clustered<bumpy_sphere>},
                      {"triangles_shuffled", shuffled<bumpy_sphere>},
                      {"triangles_around_a_node", fan},
                      {"separate_triangles", separate_triangles},
                      {"tetrahedra_shuffled", shuffled<tetrahedral_grid>}},
                     {{"by_shared_nodes", by_shared_nodes}, {"by_neighbors", by_neighbors}});
    return run_benchmarks(argc, argv);
}
