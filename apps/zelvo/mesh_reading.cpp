#include "mesh_reading.h"

#include <algorithm>
#include <array>
#include <fstream>

#include <kvx/zelvo/femap.h>
#include <kvx/zelvo/nastran.h>
#include <kvx/zelvo/wavefront_obj.h>

#include "measures.h"
#include "nastran_check.h"

using namespace kvx;

namespace {

void need_file(int result) {
    if (result == -1) throw unreadable_file("holds no mesh that can be read");
    need(result);
}

void read_stl_mesh(mesh_file& file, bool ascii) {
    const stl_surface surface = read_stl(file.name, ascii, 0.0);
    warn(surface, file.notes);
    file.notes.add("facets with two equal corners, left out", surface.account.removed_elements);
    file.content.pos = surface.pos;
    file.content.groups.push_back({ET_TRIA3, surface.triangles, {}});
}

/// Number of lines that begin with this word.
std::uint64_t lines_beginning_with(const std::string& word, const std::string& file) {
    std::ifstream stream(file);
    std::uint64_t count = 0;
    for (std::string line; std::getline(stream, line);) {
        const std::size_t first = std::min(line.find_first_not_of(" \t"), line.size());
        const std::size_t last = std::min(line.find_first_of(" \t\r", first), line.size());
        if (line.compare(first, last - first, word) == 0) ++count;
    }
    return count;
}

void read_obj(mesh_file& file) {
    dense2D<double> normals, texcoords;
    dense2D<unsigned int> triangles, quads;
    need_file(zelvo::WavefrontOBJ_input(file.name.c_str(), file.content.pos, normals, texcoords,
                                        triangles, quads));
    const std::uint64_t faces = lines_beginning_with("f", file.name);
    file.notes.add("faces of other than 3 or 4 corners, or not understood, left out",
                   faces - std::min(faces, triangles.cols() + quads.cols()));
    file.omitted.add("normals, left out", normals.cols());
    file.omitted.add("texture coordinates, left out", texcoords.cols());
    file.content.groups = {{ET_TRIA3, triangles, {}}, {ET_QUAD4, quads, {}}};
}

/// The groups of the data model that NASTRAN and FEMAP share.
using deck_reader = int(const char*, dense2D<double>&, dense2D<unsigned int>&,
                        dense1D<unsigned int>&, dense1D<int>&, dense1D<unsigned int>&) noexcept;
void read_deck(mesh_file& file, deck_reader& read) {
    dense2D<unsigned int> connectM;
    dense1D<unsigned int> offsets, props;
    dense1D<int> FEs;
    need_file(read(file.name.c_str(), file.content.pos, connectM, offsets, FEs, props));
    for (std::uint64_t g = 0; g < FEs.size(); ++g) {
        const auto kind = static_cast<element_type>(FEs[g]);
        const std::uint64_t first = offsets[g], count = offsets[g + 1] - first;
        file.content.groups.push_back({kind, connectM.sub_matrix(0, first, node_count(kind), count),
                                       props.sub_vector(first, count)});
    }
}

void read_nastran(mesh_file& file) {
    constexpr std::uint64_t largest_number = 99999999; // of the format
    read_deck(file, zelvo::NASTRAN_input);
    if (file.content.pos.cols() > largest_number + 1)
        throw unreadable_file("a grid point has the number " +
                              std::to_string(file.content.pos.cols() - 1) + ", NASTRAN has " +
                              std::to_string(largest_number) + " at most");
    check_deck(file.name, file.content, file.notes);
    std::uint64_t wedges = 0;
    for (const element_group& group : file.content.groups)
        if (group.kind == ET_PYRAMID5) wedges += group.connectM.cols();
    std::erase_if(file.content.groups,
                  [](const element_group& group) { return group.kind == ET_PYRAMID5; });
    file.notes.add("wedges (CPENTA), whose nodes are not read, left out", wedges);
}

/// Readers by format; none where the format is only written.
using reader = void (*)(mesh_file&);
constexpr std::array<reader, 8> readers = {
    [](mesh_file& file) { read_stl_mesh(file, true); },
    [](mesh_file& file) { read_stl_mesh(file, false); },
    nullptr,
    nullptr,
    read_nastran,
    read_obj,
    nullptr,
    [](mesh_file& file) { read_deck(file, zelvo::FEMAP_input); },
};

bool is_origin(const dense2D<double>& pos, std::uint64_t node) {
    return pos(0, node) == 0 && pos(1, node) == 0 && pos(2, node) == 0;
}

/// Removes the nodes that the choice does not keep. The numbers that no grid point has are zeros.
void choose_nodes(mesh_file& file, node_choice choice) {
    const bool gaps = choice == node_choice::numbered && file.form == format::nastran;
    if (choice != node_choice::used && !gaps) return;
    mesh& m = file.content;
    std::vector<bool> kept = used_nodes(m);
    for (std::uint64_t j = 0; gaps && j < m.pos.cols(); ++j)
        if (!is_origin(m.pos, j)) kept[j] = true;
    keep_nodes(m, kept);
}

} // namespace

stl_surface read_stl(const std::string& name, bool ascii, double tolerance) {
    stl_surface surface;
    const int result = zelvo::STL_input(name.c_str(), surface.pos, surface.triangles, ascii,
                                        tolerance, surface.account);
    if (result == -1) throw unreadable_file("cannot be read");
    need(result);
    if (surface.account.facets == 0) throw unreadable_file("no facet could be read");
    return surface;
}

void warn(const stl_surface& surface, warnings& notes) {
    const zelvo::STL_report& account = surface.account;
    if (account.announced_facets > account.facets)
        notes.add("facets announced: " + std::to_string(account.announced_facets) +
                  ", found: " + std::to_string(account.facets));
    notes.add("bytes behind the last facet that were not understood", account.unread_bytes);
}

void warn_of_nodes(const dense2D<double>& pos, warnings& notes) {
    notes.add("nodes with coordinates that are no finite numbers", non_finite_nodes(pos));
}

mesh_file read_mesh(const std::string& name, std::optional<format> form, node_choice nodes) {
    mesh_file file;
    file.name = name;
    need_readable(name);
    file.form = form ? *form : detect_format(name);
    readers[static_cast<unsigned>(file.form)](file);
    file.notes.add("elements that name a node which the file does not have, left out",
                   remove_strays(file.content));
    if (file.content.groups.empty())
        throw unreadable_file("no element could be read" + file.notes.in_brackets());
    choose_nodes(file, nodes);
    warn_of_nodes(file.content.pos, file.notes);
    return file;
}
