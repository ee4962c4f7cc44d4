#include "fuzzing.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kvx;
    using namespace kvx::zelvo;
    using namespace kvx::zelvo::fuzzing;
    const auto read = [](auto&&... arguments) { return NASTRAN_input(arguments...); };
    grouped_mesh mesh, again;
    const int code = read_groups(data, size, read, mesh, mesh.pos);
    demand(code != -199 || (mesh.pos.empty() && mesh.connectM.empty()), "-199 leaves nothing");
    // Decks with few of many numbers would become huge: every grid point is written.
    if (code != 0 || mesh.pos.cols() > size) return 0;
    demand(NASTRAN_output(output_file.path(), mesh.pos, mesh.connectM, mesh.offsets, mesh.FEs,
                          mesh.props) == 0,
           "what was read is written");
    read(output_file.path(), again.pos, again.connectM, again.offsets, again.FEs, again.props);
    demand(mesh.pos.cols() == again.pos.cols(), "grid points come back");
    demand(mesh.has(ET_TETRA4) || mesh.has(ET_PYRAMID5) || mesh.same_elements(again),
           "elements other than tetrahedra and pyramids come back as they were");
    return 0;
}
