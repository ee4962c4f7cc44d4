#include "fuzzing.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::fuzzing;

struct surface {
    dense2D<double> pos, normals, texcoords;
    dense2D<unsigned int> triangles, quads;

    int read(const char* path) {
        return WavefrontOBJ_input(path, pos, normals, texcoords, triangles, quads);
    }
};

template <class T>
bool has_rows(const dense2D<T>& m, std::uint64_t rows) {
    return m.empty() || m.rows() == rows;
}

/// Attributes as the writer takes them: one for each node, or none.
dense2D<double> of_nodes(const dense2D<double>& attributes, std::uint64_t nodes) {
    return attributes.cols() == nodes ? attributes : dense2D<double>();
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* const path = input_file.fill(data, size);
    surface mesh, again;
    demand(read_within_limit(size, [&] { return mesh.read(path); }) == 0, "every text is read");
    demand(mesh.pos.rows() == 3, "nodes have three coordinates");
    demand(has_rows(mesh.normals, 3) && has_rows(mesh.texcoords, 2) &&
               has_rows(mesh.triangles, 3) && has_rows(mesh.quads, 4),
           "rows are as documented");
    examine(mesh.pos, mesh.triangles, ET_TRIA3);
    examine(mesh.pos, mesh.quads, ET_QUAD4);

    const dense2D<double> normals = of_nodes(mesh.normals, mesh.pos.cols());
    const dense2D<double> texcoords = of_nodes(mesh.texcoords, mesh.pos.cols());
    demand(WavefrontOBJ_output(output_file.path(), mesh.pos, normals, texcoords, mesh.triangles,
                               mesh.quads) == 0,
           "what was read is written");
    demand(again.read(output_file.path()) == 0, "what was written is read");
    demand(again.pos.cols() == mesh.pos.cols() && again.normals.cols() == normals.cols() &&
               again.texcoords.cols() == texcoords.cols(),
           "nodes and their attributes come back");
    return 0;
}
