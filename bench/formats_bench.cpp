// Text formats: writing and reading a mesh of tetrahedra, or of triangles where a format holds
// surfaces.
#include <kvx/zelvo/ensight.h>
#include <kvx/zelvo/femap.h>
#include <kvx/zelvo/medit.h>
#include <kvx/zelvo/nastran.h>
#include <kvx/zelvo/vtk.h>
#include <kvx/zelvo/wavefront_obj.h>

#include <cstdio>
#include <string>

#include "benchmark_sizes.h"
#include "generated_meshes.h"
#include "temporary_file.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

/// A mesh as one group, with a property number for each element.
struct grouped_mesh : mesh {
    explicit grouped_mesh(const mesh& m)
        : mesh(m)
        , offsets(2, 0)
        , FEs(1, m.kind)
        , props(m.conn.cols(), 1) {
        offsets[1] = index(m.conn.cols());
    }
    dense1D<unsigned int> offsets;
    dense1D<int> FEs;
    dense1D<unsigned int> props;
};

mesh tetrahedra(benchmark::State& state) {
    return tetrahedral_grid(static_cast<std::uint64_t>(state.range(0)));
}

mesh triangles(benchmark::State& state) {
    return bumpy_sphere(static_cast<std::uint64_t>(state.range(0)));
}

template <class Write>
void write(benchmark::State& state, const mesh& m, Write&& write_to) {
    const temporary_file file(".mesh");
    for (auto _ : state) {
        if (failed(state, write_to(file.name()))) return;
    }
    per_item(state, m.conn.cols());
}

void write_vtk(benchmark::State& state) {
    const mesh m = tetrahedra(state);
    write(state, m, [&](const char* name) { return vtk_output(name, m.pos, m.conn, m.kind); });
}
BENCHMARK(write_vtk)->Apply(doubling_sizes);

void write_medit(benchmark::State& state) {
    const mesh m = tetrahedra(state);
    write(state, m, [&](const char* name) { return medit_output(name, m.pos, m.conn, m.kind); });
}
BENCHMARK(write_medit)->Apply(doubling_sizes);

void write_ensight(benchmark::State& state) {
    const mesh m = tetrahedra(state);
    write(state, m, [&](const char* name) { return ensight_output(name, m.pos, m.conn, m.kind); });
}
BENCHMARK(write_ensight)->Apply(doubling_sizes);

int write_nastran_deck(const char* name, const grouped_mesh& m) {
    return NASTRAN_output(name, m.pos, m.conn, m.offsets, m.FEs, m.props);
}

void write_nastran(benchmark::State& state) {
    const grouped_mesh m(tetrahedra(state));
    write(state, m, [&](const char* name) { return write_nastran_deck(name, m); });
}
BENCHMARK(write_nastran)->Apply(doubling_sizes);

void write_femap(benchmark::State& state) {
    const mesh m = tetrahedra(state);
    write(state, m, [&](const char* name) { return FEMAP_output(name, m.pos, m.conn, m.kind); });
}
BENCHMARK(write_femap)->Apply(doubling_sizes);

void write_obj(benchmark::State& state) {
    const mesh m = triangles(state);
    const dense2D<double> none;
    write(state, m, [&](const char* name) {
        return WavefrontOBJ_output(name, m.pos, none, none, m.conn, dense2D<unsigned int>());
    });
}
BENCHMARK(write_obj)->Apply(doubling_sizes);

void read_nastran(benchmark::State& state) {
    grouped_mesh m(tetrahedra(state));
    const temporary_file file(".bdf");
    if (failed(state, write_nastran_deck(file.name(), m))) return;
    for (auto _ : state) {
        if (failed(state, NASTRAN_input(file.name(), m.pos, m.conn, m.offsets, m.FEs, m.props)))
            return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK(read_nastran)->Apply(doubling_sizes);

void read_femap(benchmark::State& state) {
    mesh m = tetrahedra(state);
    const temporary_file file(".neu");
    if (failed(state, FEMAP_output(file.name(), m.pos, m.conn, m.kind))) return;
    for (auto _ : state) {
        if (failed(state, FEMAP_input(file.name(), m.pos, m.conn, m.kind))) return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK(read_femap)->Apply(doubling_sizes);

/// The faces as other programs write them, with blanks between the corners.
bool write_plain_obj(const char* name, const mesh& m) {
    std::FILE* const file = std::fopen(name, "w");
    if (!file) return false;
    for (std::uint64_t j = 0; j < m.pos.cols(); ++j)
        std::fprintf(file, "v %.9g %.9g %.9g\n", m.pos(0, j), m.pos(1, j), m.pos(2, j));
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j)
        std::fprintf(file, "f %u %u %u\n", m.conn(0, j) + 1, m.conn(1, j) + 1, m.conn(2, j) + 1);
    return std::fclose(file) == 0;
}

void read_obj(benchmark::State& state) {
    mesh m = triangles(state);
    const temporary_file file(".obj");
    if (failed(state, write_plain_obj(file.name(), m) ? 0 : -1)) return;
    dense2D<double> normals, texcoords;
    dense2D<unsigned int> quads;
    for (auto _ : state) {
        if (failed(state,
                   WavefrontOBJ_input(file.name(), m.pos, normals, texcoords, m.conn, quads)))
            return;
    }
    per_item(state, m.conn.cols());
}
BENCHMARK(read_obj)->Apply(doubling_sizes);

} // namespace

BENCHMARK_MAIN();
