#include "written_text.h"

namespace kvx::zelvo::fuzzing {

void examine_call(const std::string& function, const arguments& before, arguments&,
                  std::int64_t result) {
    if (function != "FEMAP_output" || result != 0) return;
    std::vector<element> written = elements_of(before);
    const bool nothing = before.takes("connectM2") ? before.conn.empty() && before.conn2.empty()
                                                   : before.conn.empty();
    if (nothing) return demand(output_file.size() == 0, "nothing is written without elements");
    std::erase_if(written, [&](const element& e) {
        const bool known = std::all_of(e.nodes.begin(), e.nodes.end(),
                                       [&](unsigned int node) { return node < before.pos.cols(); });
        return !known || e.nodes.empty() || e.kind == ET_BAR3 || e.kind == ET_QUAD9 ||
               e.kind == ET_PYRAMID14 || e.kind == ET_PENTA18 || e.kind == ET_HEXA27;
    });
    grouped_mesh mesh;
    const int code = FEMAP_input(output_file.path(), mesh.pos, mesh.connectM, mesh.offsets,
                                 mesh.FEs, mesh.props);
    demand(code == (written.empty() || before.pos.cols() == 0 ? -1 : 0), "what is written is read");
    demand(elements_of(mesh) == written, "elements come back as they were");
    demand(mesh.pos.cols() == before.pos.cols(), "nodes come back");
    for (std::uint64_t j = 0; j < mesh.pos.cols(); ++j)
        for (std::uint64_t i = 0; i < 3; ++i) {
            const double x = i < before.pos.rows() ? before.pos(i, j) : 0.0;
            demand(!std::isfinite(x) || mesh.pos(i, j) == x, "coordinates come back");
        }
}

} // namespace kvx::zelvo::fuzzing
