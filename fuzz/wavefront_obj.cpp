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

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* const path = input_file.fill(data, size);
    surface mesh, again;
    demand(read_within_limit(size, [&] { return mesh.read(path); }) == 0, "every text is read");
    demand(mesh.pos.rows() == 3, "nodes have three coordinates");
    examine(mesh.pos, mesh.triangles, ET_TRIA3);
    examine(mesh.pos, mesh.quads, ET_QUAD4);

    // The writer takes attributes for each node or none.
    const bool each = mesh.normals.cols() == mesh.pos.cols();
    const dense2D<double> normals = each ? mesh.normals : dense2D<double>();
    demand(WavefrontOBJ_output(output_file.path(), mesh.pos, normals, {}, mesh.triangles,
                               mesh.quads) == 0,
           "what was read is written");
    demand(again.read(output_file.path()) == 0, "what was written is read");
    demand(again.pos.cols() == mesh.pos.cols() && again.normals.cols() == normals.cols(),
           "nodes and their normals come back");
    return 0;
}
