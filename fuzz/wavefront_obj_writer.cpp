#include "written_text.h"

namespace kvx::zelvo::fuzzing {

namespace {

std::uint64_t columns(const dense2D<unsigned int>& m) {
    return m.empty() ? 0 : m.cols();
}

} // namespace

void examine_call(const std::string& function, const arguments& before, arguments&,
                  std::int64_t result) {
    if (function != "WavefrontOBJ_output" || result != 0) return;
    std::map<std::string, std::uint64_t> lines;
    std::istringstream text(output_file.text());
    for (std::string line; std::getline(text, line);)
        ++lines[line.substr(1, line.find(' ', 1) - 1)];
    const bool attributes = before.pos.cols() > 0;
    demand(lines["v"] == before.pos.cols(), "all nodes are written");
    demand(lines["vn"] == (before.normals.empty() || !attributes ? 0 : before.pos.cols()),
           "all normals are written");
    demand(lines["vt"] == (before.texcoords.empty() || !attributes ? 0 : before.pos.cols()),
           "all texture coordinates are written");
    demand(lines["f"] == columns(before.triangles) + columns(before.quads),
           "all faces are written");

    dense2D<double> pos, normals, texcoords;
    dense2D<unsigned int> triangles, quads;
    demand(WavefrontOBJ_input(output_file.path(), pos, normals, texcoords, triangles, quads) == 0,
           "what is written is read");
    std::uint64_t finite = 0;
    for (std::uint64_t j = 0; j < before.pos.cols(); ++j) {
        const dense1D<double> x = before.pos.col(j);
        if (!std::all_of(x.begin(), x.end(), [](double c) { return std::isfinite(c); })) continue;
        for (std::uint64_t i = 0; i < x.size() && finite < pos.cols(); ++i)
            demand(std::abs(pos(i, finite) - x[i]) <= 1e-8 * std::abs(x[i]),
                   "coordinates come back");
        ++finite;
    }
    demand(pos.cols() == finite, "finite nodes come back");
}

} // namespace kvx::zelvo::fuzzing
