#include <kvx/zelvo/node_merging.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

template <mesh (*make)(std::uint64_t)>
mesh soup_of(std::uint64_t facets) {
    return separate_facets(make(facets));
}

/// Welds the corners of a facet soup.
void merge_soup(measurement& measured, const mesh& soup) {
    dense2D<unsigned int> conn;
    dense1D<unsigned int> new_IDs;
    measured.reads(soup.pos, soup.conn)
        .makes(new_IDs)
        .before([&] { return conn.copy(soup.conn); })
        .run([&] { return merge(soup.pos, conn, new_IDs, 1e-9, 0); });
}

/// Points and the distance within which they are merged: five of six on a surface, few or none at
/// random, all but one where they are equal; on the lattice every edge is a pair at the tolerance.
struct merged_points {
    dense2D<double> pos;
    double tolerance = 0;
};

template <cloud kind>
merged_points merged_in(std::uint64_t n) {
    const double spacing = 1 / std::cbrt(double(n));
    const bool lattice = kind == in_order || kind == on_lattice;
    return {points(kind, n), lattice ? spacing : 1e-3 * spacing};
}

void merge_points(measurement& measured, const merged_points& m) {
    dense1D<unsigned int> nodes(m.pos.cols());
    std::iota(nodes.begin(), nodes.end(), 0u);
    dense1D<unsigned int> new_IDs;
    measured.reads(m.pos, nodes).makes(new_IDs).run([&] {
        return merge(m.pos, nodes, new_IDs, m.tolerance);
    });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>({{"facets", soup_of<bumpy_sphere>},
                      {"facets_clustered", soup_of<clustered<bumpy_sphere>>},
                      {"facets_shuffled", soup_of<shuffled<bumpy_sphere>>},
                      {"facets_around_a_node", soup_of<fan>},
                      {"one_facet", soup_of<one_triangle>}},
                     {{"merge_soup", merge_soup}});
    over_sizes<merged_points>({{"surface", merged_in<on_surface>},
                               {"random", merged_in<at_random>},
                               {"clusters", merged_in<in_clusters>},
                               {"lattice", merged_in<in_order>},
                               {"lattice_shuffled", merged_in<on_lattice>},
                               {"equal", merged_in<all_equal>}},
                              {{"merge_points", merge_points}});
    return run_benchmarks(argc, argv);
}
