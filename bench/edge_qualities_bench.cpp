#include <kvx/zelvo/edge_qualities.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

template <class Field>
void rate(measurement& measured, const mesh& m, const Field& field) {
    measured.reads(m.pos, m.conn, field).run([&] {
        misc::histogram statistics(0, 4, 40);
        return edge_qualities(m.pos, m.conn, m.kind, field, statistics);
    });
}

void in_sizes(measurement& measured, const mesh& m) {
    rate(measured, m, dense1D<double>(m.pos.cols(), 1.0));
}

void in_metrics(measurement& measured, const mesh& m) {
    dense2D<double> units(6, m.pos.cols());
    for (std::uint64_t j = 0; j < units.cols(); ++j)
        units(0, j) = units(2, j) = units(5, j) = 1;
    rate(measured, m, units);
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>({{"triangles", bumpy_sphere},
                      {"triangles_around_a_node", fan},
                      {"tetrahedra", tetrahedral_grid},
                      {"tetrahedra_clustered", clustered<tetrahedral_grid>},
                      {"tetrahedra_shuffled", shuffled<tetrahedral_grid>}},
                     {{"in_sizes", in_sizes}, {"in_metrics", in_metrics}});
    return run_benchmarks(argc, argv);
}
