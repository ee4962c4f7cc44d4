#include "written_text.h"

namespace kvx::zelvo::fuzzing {

namespace {

std::uint64_t elements_written(const arguments& before) {
    std::uint64_t count = 0;
    for (const auto& [matrix, kind] : matrices_of(before))
        count += matrix.empty() || kind == ET_NODE1 ? 0 : matrix.cols();
    if (before.takes("refs") && count > 0)
        count -=
            static_cast<std::uint64_t>(std::count(before.refs.begin(), before.refs.end(), no_node));
    return count;
}

void examine_mesh(const arguments& before) {
    const std::map<std::string, std::size_t> sections = {
        {"Edges", 2}, {"Triangles", 3}, {"Quadrilaterals", 4}, {"Tetrahedra", 4}, {"Hexahedra", 8}};
    written_text text;
    text.expect("MeshVersionFormatted 1");
    demand(text.count("Dimension") == before.pos.rows(), "the dimension is that of the nodes");
    text.line();
    text.expect("");
    text.expect("Vertices");
    demand(text.line() == std::to_string(before.pos.cols()), "all nodes are written");
    text.lines(before.pos.cols(), before.pos.rows() + 1);
    text.expect("");
    std::uint64_t elements = 0;
    for (std::string word; (word = text.line()) != "End"; text.expect("")) {
        demand(sections.contains(word), "a section begins");
        const std::uint64_t count = std::stoull(text.line());
        for (std::uint64_t k = 0; k < count; ++k) {
            const auto numbers = text.words();
            demand(numbers.size() == sections.at(word) + 1, "an element has nodes and reference");
            for (std::size_t i = 0; i + 1 < numbers.size(); ++i)
                demand(std::stoull(numbers[i]) - 1 < before.pos.cols(), "nodes exist");
        }
        elements += count;
    }
    demand(elements == elements_written(before), "all elements are written");
    text.end();
}

void examine_field(std::uint64_t dimension, std::uint64_t rows, std::uint64_t cols,
                   std::uint64_t lines, std::uint64_t per_line) {
    written_text text;
    const std::vector<std::string> header = {std::to_string(dimension), std::to_string(rows),
                                             std::to_string(cols), "2"};
    demand(text.words() == header, "the header counts");
    text.lines(lines, per_line);
    if (rows == 1 && per_line == 8) text.lines(1, cols % 8);
    text.end();
}

} // namespace

void examine_call(const std::string& function, const arguments& before, arguments& after,
                  std::int64_t result) {
    if (result != 0) return;
    const dense1D<double>& values = static_cast<const dense1D<double>&>(before.values);
    const dense2D<double>& M = static_cast<const dense2D<double>&>(before.M);
    if (function == "medit_output" && !(before.takes("refs") && before.conn.empty()))
        examine_mesh(before);
    if (function == "medit_scalar")
        examine_field(after.dim, 1, values.size(), values.size() / 8, 8);
    if (function == "medit_vector")
        examine_field(after.dim, before.V.rows(), before.V.cols(), before.V.cols(),
                      before.V.rows());
    if (function == "medit_tensor")
        examine_field(M.rows() / 3 + 1, M.rows(), M.cols(), M.cols(), M.rows());
}

} // namespace kvx::zelvo::fuzzing
