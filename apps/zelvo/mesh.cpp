#include "mesh.h"

#include <algorithm>
#include <array>

#include <kvx/zelvo/edges.h>

using namespace kvx;

namespace {

constexpr std::array<kind_facts, 21> kinds = {{
    {"node-mix", "", ET_NODE_MIX},
    {"point", "points", ET_NODE1},
    {"edge-mix", "", ET_EDGE_MIX},
    {"bar2", "bars", ET_BAR2},
    {"bar3", "bars of 3 nodes", ET_BAR2},
    {"face-mix", "", ET_FACE_MIX},
    {"triangle3", "triangles", ET_TRIA3},
    {"quadrangle4", "quadrangles", ET_QUAD4},
    {"triangle6", "triangles of 6 nodes", ET_TRIA3},
    {"quadrangle8", "quadrangles of 8 nodes", ET_QUAD4},
    {"quadrangle9", "quadrangles of 9 nodes", ET_QUAD4},
    {"solid-mix", "", ET_SOLID_MIX},
    {"tetrahedron4", "tetrahedra", ET_TETRA4},
    {"tetrahedron10", "tetrahedra of 10 nodes", ET_TETRA4},
    {"pyramid5", "pyramids", ET_PYRAMID5},
    {"pyramid14", "pyramids of 14 nodes", ET_PYRAMID5},
    {"wedge6", "wedges", ET_PENTA6},
    {"wedge18", "wedges of 18 nodes", ET_PENTA6},
    {"hexahedron8", "hexahedra", ET_HEXA8},
    {"hexahedron20", "hexahedra of 20 nodes", ET_HEXA8},
    {"hexahedron27", "hexahedra of 27 nodes", ET_HEXA8},
}};

std::uint64_t remove_strays(element_group& group, std::uint64_t nodes) {
    dense2D<unsigned int>& connectM = group.connectM;
    std::uint64_t kept = 0;
    for (std::uint64_t j = 0; j < connectM.cols(); ++j) {
        const unsigned int* const element = &connectM(0, j);
        const unsigned int* const end = element + connectM.rows();
        if (std::any_of(element, end, [&](unsigned int node) { return node >= nodes; })) continue;
        std::copy(element, end, &connectM(0, kept));
        if (!group.properties.empty()) group.properties[kept] = group.properties[j];
        ++kept;
    }
    const std::uint64_t removed = connectM.cols() - kept;
    need(connectM.resize(connectM.rows(), kept));
    if (!group.properties.empty()) need(group.properties.resize(kept));
    return removed;
}

} // namespace

const kind_facts& facts(element_type kind) {
    return kinds[static_cast<unsigned>(kind)];
}

std::uint64_t element_count(const mesh& m) {
    std::uint64_t count = 0;
    for (const element_group& group : m.groups)
        count += group.connectM.cols();
    return count;
}

element_group corners_of(const element_group& group) {
    const element_type kind = facts(group.kind).corners;
    return {kind, group.connectM.sub_matrix(0, 0, node_count(kind), group.connectM.cols()),
            group.properties};
}

std::uint64_t remove_strays(mesh& m) {
    std::uint64_t removed = 0;
    for (element_group& group : m.groups)
        removed += remove_strays(group, m.pos.cols());
    std::erase_if(m.groups, [](const element_group& group) { return group.connectM.empty(); });
    return removed;
}

std::vector<bool> used_nodes(const mesh& m) {
    std::vector<bool> used(m.pos.cols());
    for (const element_group& group : m.groups) {
        for (std::uint64_t j = 0; j < group.connectM.cols(); ++j) {
            for (std::uint64_t i = 0; i < group.connectM.rows(); ++i)
                used[group.connectM(i, j)] = true;
        }
    }
    return used;
}

void keep_nodes(mesh& m, const std::vector<bool>& kept) {
    std::vector<unsigned int> new_IDs(m.pos.cols(), no_node);
    std::uint64_t count = 0;
    for (std::uint64_t j = 0; j < m.pos.cols(); ++j) {
        if (!kept[j]) continue;
        std::copy_n(&m.pos(0, j), 3, &m.pos(0, count));
        new_IDs[j] = static_cast<unsigned int>(count++);
    }
    need(m.pos.resize(3, count));
    for (element_group& group : m.groups) {
        for (std::uint64_t j = 0; j < group.connectM.cols(); ++j) {
            for (std::uint64_t i = 0; i < group.connectM.rows(); ++i)
                group.connectM(i, j) = new_IDs[group.connectM(i, j)];
        }
    }
}

dense2D<unsigned int> all_of(const mesh& m, element_type kind) {
    std::uint64_t count = 0;
    for (const element_group& group : m.groups)
        if (group.kind == kind) count += group.connectM.cols();
    dense2D<unsigned int> all(node_count(kind), count);
    std::uint64_t next = 0;
    for (const element_group& group : m.groups) {
        if (group.kind != kind) continue;
        for (std::uint64_t j = 0; j < group.connectM.cols(); ++j)
            std::copy_n(&group.connectM(0, j), all.rows(), &all(0, next++));
    }
    return all;
}

dense2D<unsigned int> edges_of(const mesh& m) {
    std::vector<dense2D<unsigned int>> matrices;
    dense1D<int> FEs;
    for (const element_group& group : m.groups) {
        const element_group corners = corners_of(group);
        matrices.push_back(corners.connectM);
        need(FEs.resize(matrices.size(), corners.kind));
    }
    dense2D<unsigned int> edges;
    need(zelvo::copy_edges(matrices.data(), matrices.data() + matrices.size(), FEs, edges));
    return edges;
}
