#pragma once

#include <sstream>

#include "exported_target.h"

/// What the targets of writers share: the text that a call wrote, and the elements it was given.
namespace kvx::zelvo::fuzzing {

/// The text of the last call, line by line.
class written_text {
public:
    std::string line() {
        std::string text;
        demand(static_cast<bool>(std::getline(in_, text)), "the text has another line");
        return text;
    }
    void expect(const std::string& text) { demand(line() == text, "the line says what it should"); }
    std::vector<std::string> words() {
        std::istringstream in(line());
        return {std::istream_iterator<std::string>(in), {}};
    }
    /// A line of a word and numbers.
    std::uint64_t count(const std::string& word) {
        const auto found = words();
        demand(found.size() >= 2 && found[0] == word, "a section begins");
        return std::stoull(found[1]);
    }
    /// Lines with so many words each.
    void lines(std::uint64_t count, std::size_t word_count) {
        for (; count > 0; --count)
            demand(words().size() == word_count, "a line has its numbers");
    }
    void end() { demand(in_.peek() == std::char_traits<char>::eof(), "the text ends"); }

private:
    std::istringstream in_{output_file.text()};
};

struct element {
    element_type kind;
    unsigned int property;
    std::vector<unsigned int> nodes;

    bool operator==(const element&) const = default;
};

/// The kind of a column of a matrix of mixed elements.
inline element_type kind_of(element_type kind, const dense1D<unsigned int>& column) {
    const auto nodes = static_cast<unsigned int>(
        std::find(column.begin() + std::min<std::uint64_t>(column.size(), 3), column.end(),
                  no_node) -
        column.begin());
    if (kind == ET_FACE_MIX) return nodes == 3 ? ET_TRIA3 : ET_QUAD4;
    if (kind != ET_SOLID_MIX) return kind;
    return nodes == 4 ? ET_TETRA4 : nodes == 5 ? ET_PYRAMID5 : nodes == 6 ? ET_PENTA6 : ET_HEXA8;
}

inline void append(const dense2D<unsigned int>& m, std::uint64_t j, int kind, unsigned int property,
                   std::vector<element>& all) {
    const element_type one = kind_of(static_cast<element_type>(kind), m.col(j));
    const unsigned int* const nodes = &m(0, j);
    all.push_back({one, property, {nodes, nodes + node_count(one)}});
}

/// The elements of a call that succeeded with groups, one or two connectivities.
inline std::vector<element> elements_of(const arguments& a) {
    std::vector<element> all;
    if (a.takes("props")) {
        for (std::uint64_t g = 0; g < a.FEs.size() && !a.conn.empty(); ++g)
            for (std::uint64_t j = a.offsets[g]; j < a.offsets[g + 1]; ++j)
                append(a.conn, j, a.FEs[g], a.props[j], all);
        return all;
    }
    for (std::uint64_t j = 0; j < a.conn.cols() && !a.conn.empty(); ++j)
        append(a.conn, j, a.kind, 1, all);
    for (std::uint64_t j = 0; a.takes("connectM2") && j < a.conn2.cols() && !a.conn2.empty(); ++j)
        append(a.conn2, j, a.FE2, 2, all);
    return all;
}
inline std::vector<element> elements_of(const grouped_mesh& mesh) {
    std::vector<element> all;
    for (std::uint64_t g = 0; g < mesh.FEs.size(); ++g)
        for (std::uint64_t j = mesh.offsets[g]; j < mesh.offsets[g + 1]; ++j)
            append(mesh.connectM, j, mesh.FEs[g], mesh.props[j], all);
    return all;
}

/// Connectivities of a call that is not of groups, with their kinds.
inline std::vector<std::pair<dense2D<unsigned int>, element_type>> matrices_of(const arguments& a) {
    std::vector<std::pair<dense2D<unsigned int>, element_type>> all;
    const bool range = a.takes("connect_begin");
    const std::uint64_t count = range ? a.FEs.size() : a.takes("connectM2") ? 2 : 1;
    for (std::uint64_t k = 0; k < count; ++k)
        all.emplace_back(range ? a.first[k] : a.range[k], range
                                                              ? static_cast<element_type>(a.FEs[k])
                                                          : k == 0 ? a.kind
                                                                   : a.FE2);
    return all;
}

} // namespace kvx::zelvo::fuzzing
