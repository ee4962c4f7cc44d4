#include "conversion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "measures.h"
#include "mesh_writing.h"

using namespace kvx;

namespace {

/// What becomes of the elements of a kind.
enum fate {
    whole,
    out,     // left out
    corners, // becomes the element of its corners
    split,   // becomes two triangles
    brick,   // written as a hexahedron
    twice,   // written twice
    poly,    // written as two cells
    no_4th,  // written without its fourth node
    joined   // written as a face that few programs read
};

/// What is said of the elements, behind their name; nothing of those that stay whole.
constexpr std::array<const char*, 9> remarks = {
    nullptr,
    "that the format cannot hold, left out",
    "written with their corners only",
    "split into two triangles along the shorter diagonal",
    "written as hexahedra with repeated nodes",
    "written twice, in two orders of their nodes",
    "written as two cells, corners and a poly-vertex",
    "whose card holds 0 for the fourth node",
    "written run together (1//2//3//), which is not read back",
};

/// What becomes of a kind, by format.
struct kind_fates {
    element_type kind;
    std::array<fate, 8> in;
};

/// The kinds that readers give. Those whose NASTRAN card would have no name are left out: such a
/// line is read as the continuation of the card before it.
constexpr std::array<kind_fates, 12> fates = {{
    // STL ASCII, STL binary, VTK, MEDIT, NASTRAN, OBJ, EnSight, FEMAP
    {ET_NODE1, {out, out, out, out, out, out, out, whole}},
    {ET_BAR2, {out, out, whole, whole, whole, out, whole, whole}},
    {ET_TRIA3, {whole, whole, whole, whole, whole, joined, whole, whole}},
    {ET_QUAD4, {split, split, whole, whole, whole, joined, whole, whole}},
    {ET_TRIA6, {corners, corners, poly, corners, whole, corners, twice, whole}},
    {ET_QUAD8, {corners, corners, poly, corners, whole, corners, whole, whole}},
    {ET_TETRA4, {out, out, whole, whole, no_4th, out, whole, whole}},
    {ET_TETRA10, {out, out, poly, corners, corners, out, whole, whole}},
    {ET_PYRAMID5, {out, out, whole, brick, out, out, out, whole}},
    {ET_PENTA6, {out, out, whole, brick, out, out, whole, whole}},
    {ET_HEXA8, {out, out, whole, whole, whole, out, whole, whole}},
    {ET_HEXA20, {out, out, poly, corners, corners, out, whole, whole}},
}};

fate fate_of(element_type kind, format form) {
    const auto* const found = std::find_if(fates.begin(), fates.end(),
                                           [=](const kind_fates& row) { return row.kind == kind; });
    return found == fates.end() ? out : found->in[static_cast<unsigned>(form)];
}

/// Two triangles for every quadrangle, with the turn that it has.
element_group split_quadrangles(const element_group& group, const dense2D<double>& pos) {
    element_group result{ET_TRIA3, dense2D<unsigned int>(3, 2 * group.connectM.cols()), {}};
    if (!group.properties.empty()) need(result.properties.resize(2 * group.properties.size()));
    for (std::uint64_t j = 0; j < group.connectM.cols(); ++j) {
        const unsigned int* const q = &group.connectM(0, j);
        // Not "longer": where nothing compares, the diagonal is that of the first node.
        const bool turned =
            distance(&pos(0, q[1]), &pos(0, q[3])) < distance(&pos(0, q[0]), &pos(0, q[2]));
        const std::array<unsigned int, 6> nodes =
            turned ? std::array{q[0], q[1], q[3], q[1], q[2], q[3]}
                   : std::array{q[0], q[1], q[2], q[0], q[2], q[3]};
        std::copy(nodes.begin(), nodes.end(), &result.connectM(0, 2 * j));
        for (std::uint64_t k = 2 * j; k < result.properties.size() && k < 2 * j + 2; ++k)
            result.properties[k] = group.properties[j];
    }
    return result;
}

/// Turns the elements into what the format can hold, and counts them by what becomes of them.
class fitting {
public:
    fitting(mesh& m, format form)
        : mesh_(m)
        , form_(form) {
        std::vector<element_group> fitted;
        for (element_group& group : mesh_.groups)
            fit(group, fitted);
        mesh_.groups.swap(fitted);
    }

    void note(warnings& notes) const {
        for (unsigned f = 1; f < remarks.size(); ++f) {
            for (unsigned kind = 0; kind < counts_[f].size(); ++kind)
                notes.add(facts(static_cast<element_type>(kind)).plural +
                              (' ' + std::string(remarks[f])),
                          counts_[f][kind]);
        }
    }

private:
    void fit(element_group group, std::vector<element_group>& fitted) {
        const fate what = fate_of(group.kind, form_);
        counts_[what][static_cast<unsigned>(group.kind)] += group.connectM.cols();
        if (what == corners) return fit(corners_of(group), fitted);
        if (what == split) return fit(split_quadrangles(group, mesh_.pos), fitted);
        if (what != out) fitted.push_back(std::move(group));
    }

    mesh& mesh_;
    format form_;
    std::array<std::array<std::uint64_t, 21>, remarks.size()> counts_ = {};
};

/// How a format writes a coordinate, as a form of printf; nullptr where nothing is rounded.
const char* number_form(format form) {
    constexpr std::array<const char*, 8> forms = {"%.6e",  nullptr, "%.6f", "%.6E",
                                                  "%#.6g", "%.8e",  "%.5e", nullptr};
    // cppcheck-suppress CastIntegerToAddressAtReturn ; these are pointers
    return forms[static_cast<unsigned>(form)];
}

double as_written(double x, format form) {
    if (form == format::stl_binary) return static_cast<float>(x);
    const char* const number = number_form(form);
    if (!number || !std::isfinite(x)) return x;
    std::array<char, 400> text; // "%f" writes up to 309 digits before the point
    std::snprintf(text.data(), text.size(), number, x);
    return std::strtod(text.data(), nullptr);
}

void note_rounding(const dense2D<double>& pos, format form, warnings& notes) {
    if (form == format::femap) return;
    std::uint64_t nodes = 0;
    double largest = 0.0;
    for (std::uint64_t j = 0; j < pos.cols(); ++j) {
        double change = 0.0;
        for (unsigned i = 0; i < 3; ++i)
            if (!std::isnan(pos(i, j)))
                change = std::max(change, std::abs(as_written(pos(i, j), form) - pos(i, j)));
        if (change > 0.0) ++nodes;
        largest = std::max(largest, change);
    }
    std::array<char, 64> by;
    std::snprintf(by.data(), by.size(), " (by up to %.2g)", largest);
    notes.add("nodes whose coordinates the format rounds" + std::string(by.data()), nodes);
}

/// Elements whose property number says something: writers give 1 to those that have none.
std::uint64_t elements_with_property(const mesh& m) {
    std::uint64_t count = 0;
    for (const element_group& group : m.groups)
        count += static_cast<std::uint64_t>(
            std::count_if(group.properties.begin(), group.properties.end(),
                          [](unsigned int property) { return property != 1; }));
    return count;
}

bool holds_properties(const mesh& m, format form) {
    return form == format::nastran || form == format::femap ||
           (form == format::medit && medit_holds_properties(m));
}

/// STL has corners of triangles, not nodes.
void leave_out_unused_nodes(mesh& m, warnings& notes) {
    const std::vector<bool> used = used_nodes(m);
    notes.add("nodes that no triangle uses, left out",
              static_cast<std::uint64_t>(std::count(used.begin(), used.end(), false)));
    keep_nodes(m, used);
}

} // namespace

void fit_to_format(mesh& m, format form, warnings& notes) {
    const std::uint64_t with_property = elements_with_property(m);
    fitting(m, form).note(notes);
    if (form == format::stl_ascii || form == format::stl_binary) leave_out_unused_nodes(m, notes);
    if (form == format::nastran)
        notes.add("grid points without a coordinate system, for which other programs take x",
                  m.pos.cols());
    if (!holds_properties(m, form))
        notes.add("elements whose property number is not written", with_property);
    note_rounding(m.pos, form, notes);
}
