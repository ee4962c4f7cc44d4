#include <kvx/zelvo/shape_qualities.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

mesh quadrangles(std::uint64_t n) {
    return cut(hexahedral_grid(n), ET_QUAD4, {{0, 1, 2, 3}});
}

mesh pyramids(std::uint64_t n) {
    return cut(hexahedral_grid(n), ET_PYRAMID5, {{0, 1, 2, 3, 6}});
}

mesh wedges(std::uint64_t n) {
    return cut(hexahedral_grid(n / 2), ET_PENTA6, {{0, 1, 2, 4, 5, 6}, {0, 2, 3, 4, 6, 7}});
}

/// Elements whose nodes lie at one place, where every formula divides by nothing.
template <mesh (*make)(std::uint64_t)>
mesh collapsed(std::uint64_t n) {
    mesh m = make(n);
    m.pos = 0.5;
    return m;
}

void one_by_one(measurement& measured, const mesh& m) {
    dense1D<double> Q;
    measured.reads(m.pos, m.conn).makes(Q).run([&] {
        return shape_qualities(m.pos, m.conn, m.kind, Q);
    });
}

void histogram_of(measurement& measured, const mesh& m) {
    misc::histogram statistics(-1, 1, 20);
    measured.reads(m.pos, m.conn).run([&] {
        return shape_qualities(m.pos, m.conn, m.kind, statistics);
    });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>({{"triangles", bumpy_sphere},
                      {"triangles_clustered", clustered<bumpy_sphere>},
                      {"triangles_shuffled", shuffled<bumpy_sphere>},
                      {"triangles_collapsed", collapsed<bumpy_sphere>},
                      {"quadrangles", quadrangles},
                      {"tetrahedra", tetrahedral_grid},
                      {"tetrahedra_shuffled", shuffled<tetrahedral_grid>},
                      {"pyramids", pyramids},
                      {"wedges", wedges},
                      {"hexahedra", hexahedral_grid},
                      {"hexahedra_shuffled", shuffled<hexahedral_grid>},
                      {"hexahedra_collapsed", collapsed<hexahedral_grid>},
                      {"solids", mixed_solids}},
                     {{"shape_qualities", one_by_one}});
    over_sizes<mesh>({{"triangles", bumpy_sphere}}, {{"histogram", histogram_of}});
    return run_benchmarks(argc, argv);
}
