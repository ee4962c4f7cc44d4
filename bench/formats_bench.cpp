// Text formats: writing and reading a mesh of tetrahedra, or of triangles where a format holds
// surfaces.
#include <kvx/zelvo/ensight.h>
#include <kvx/zelvo/femap.h>
#include <kvx/zelvo/medit.h>
#include <kvx/zelvo/nastran.h>
#include <kvx/zelvo/vtk.h>
#include <kvx/zelvo/wavefront_obj.h>

#include <cstdio>

#include "generated_meshes.h"
#include "growth.h"
#include "temporary_file.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

using writer = int (*)(const char* name, const mesh& m);

int vtk(const char* name, const mesh& m) {
    return vtk_output(name, m.pos, m.conn, m.kind);
}

int medit(const char* name, const mesh& m) {
    return medit_output(name, m.pos, m.conn, m.kind);
}

int ensight(const char* name, const mesh& m) {
    return ensight_output(name, m.pos, m.conn, m.kind);
}

/// The elements as one group.
struct groups {
    explicit groups(const mesh& m)
        : offsets(2, index(m.conn.cols()))
        , FEs(1, m.kind)
        , props(m.conn.cols(), 1) {
        offsets[0] = 0;
    }
    dense1D<unsigned int> offsets;
    dense1D<int> FEs;
    dense1D<unsigned int> props;
};

int nastran(const char* name, const mesh& m) {
    const groups g(m);
    return NASTRAN_output(name, m.pos, m.conn, g.offsets, g.FEs, g.props);
}

int femap(const char* name, const mesh& m) {
    return FEMAP_output(name, m.pos, m.conn, m.kind);
}

int obj(const char* name, const mesh& m) {
    const dense2D<double> none;
    return WavefrontOBJ_output(name, m.pos, none, none, m.conn, dense2D<unsigned int>());
}

/// The faces as other programs write them, with blanks between the corners.
int plain_obj(const char* name, const mesh& m) {
    std::FILE* const file = std::fopen(name, "w");
    if (!file) return -1;
    for (std::uint64_t j = 0; j < m.pos.cols(); ++j)
        std::fprintf(file, "v %.9g %.9g %.9g\n", m.pos(0, j), m.pos(1, j), m.pos(2, j));
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j)
        std::fprintf(file, "f %u %u %u\n", m.conn(0, j) + 1, m.conn(1, j) + 1, m.conn(2, j) + 1);
    return std::fclose(file);
}

template <writer write>
void written(measurement& measured, const mesh& m) {
    const temporary_file file(".mesh");
    measured.reads(m.pos, m.conn).run([&] { return write(file.name(), m); });
}

void written_nastran(measurement& measured, const mesh& m) {
    const temporary_file file(".bdf");
    const groups g(m);
    measured.reads(m.pos, m.conn, g.props).run([&] {
        return NASTRAN_output(file.name(), m.pos, m.conn, g.offsets, g.FEs, g.props);
    });
}

using reader = int (*)(const char* name, mesh& m);

int from_nastran(const char* name, mesh& m) {
    groups g(m);
    return NASTRAN_input(name, m.pos, m.conn, g.offsets, g.FEs, g.props);
}

int from_femap(const char* name, mesh& m) {
    return FEMAP_input(name, m.pos, m.conn, m.kind);
}

int from_obj(const char* name, mesh& m) {
    dense2D<double> normals, texcoords;
    dense2D<unsigned int> quads;
    return WavefrontOBJ_input(name, m.pos, normals, texcoords, m.conn, quads);
}

template <writer write, reader read>
void read_back(measurement& measured, const mesh& m) {
    const temporary_file file(".mesh");
    const int code = write(file.name(), m);
    mesh other;
    measured.reads_file(file.name()).makes(other.pos, other.conn).run([&] {
        return code < 0 ? code : read(file.name(), other);
    });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>({{"tetrahedra", tetrahedral_grid},
                      {"tetrahedra_shuffled", shuffled<tetrahedral_grid>},
                      {"solids", mixed_solids}},
                     {{"write_vtk", written<vtk>},
                      {"write_medit", written<medit>},
                      {"write_ensight", written<ensight>},
                      {"write_nastran", written_nastran},
                      {"write_femap", written<femap>},
                      {"read_nastran", read_back<nastran, from_nastran>},
                      {"read_femap", read_back<femap, from_femap>}});
    over_sizes<mesh>({{"triangles", bumpy_sphere}, {"triangles_shuffled", shuffled<bumpy_sphere>}},
                     {{"write_obj", written<obj>},
                      {"read_obj", read_back<obj, from_obj>},
                      {"read_plain_obj", read_back<plain_obj, from_obj>}});
    return run_benchmarks(argc, argv);
}
