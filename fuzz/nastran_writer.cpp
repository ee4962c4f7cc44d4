#include "written_text.h"

namespace kvx::zelvo::fuzzing {

namespace {

/// Elements of kinds that are read as they are written.
std::vector<element> returning(std::vector<element> all) {
    std::erase_if(all, [](const element& e) {
        return e.kind != ET_BAR2 && e.kind != ET_TRIA3 && e.kind != ET_TRIA6 &&
               e.kind != ET_QUAD4 && e.kind != ET_QUAD8 && e.kind != ET_HEXA8;
    });
    return all;
}

} // namespace

void examine_call(const std::string& function, const arguments& before, arguments&,
                  std::int64_t result) {
    if (function != "NASTRAN_output" || result != 0) return;
    std::vector<element> written = elements_of(before);
    // One property a matrix is taken for one an element: two in the first matrix get one each.
    for (std::size_t j = 0; j < written.size() && !before.takes("props"); ++j)
        written[j].property = static_cast<unsigned int>(j + 1);
    if (output_file.size() == 0) return demand(written.empty(), "elements are written");
    grouped_mesh mesh;
    NASTRAN_input(output_file.path(), mesh.pos, mesh.connectM, mesh.offsets, mesh.FEs, mesh.props);
    demand(mesh.pos.cols() == before.pos.cols(), "nodes come back");
    demand(returning(elements_of(mesh)) == returning(written), "elements come back as they were");
    for (std::uint64_t j = 0; j < mesh.pos.cols(); ++j) {
        const dense1D<double> x = before.pos.col(j);
        // What is no number has no point, so that those behind it move up.
        if (!std::all_of(x.begin(), x.end(), [](double c) { return std::isfinite(c); })) continue;
        for (std::uint64_t i = 0; i < 3; ++i)
            demand(std::abs(mesh.pos(i, j) - x[i]) <= 1e-5 * std::abs(x[i]),
                   "coordinates come back to six digits");
    }
}

} // namespace kvx::zelvo::fuzzing
