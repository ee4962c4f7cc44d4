#include "fuzzing.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kvx::zelvo;
    using namespace kvx::zelvo::fuzzing;
    const auto read = [](auto&&... arguments) { return FEMAP_input(arguments...); };
    grouped_mesh mesh, again;
    const int code = read_groups(data, size, read, mesh);
    demand(code != -199, "no memory is lacking");
    demand(check_IDs(mesh.connectM, bound(mesh.pos.cols())), "elements name nodes of the file");
    if (code != 0) return 0;
    demand(FEMAP_output(output_file.path(), mesh.pos, mesh.connectM, mesh.offsets, mesh.FEs,
                        mesh.props) == 0,
           "what was read is written");
    demand(read(output_file.path(), again.pos, again.connectM, again.offsets, again.FEs,
                again.props) == 0,
           "what was written is read");
    demand(equal(mesh.pos, again.pos) && mesh.same_elements(again), "a mesh comes back as it was");
    return 0;
}
