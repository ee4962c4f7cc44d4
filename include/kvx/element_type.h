#pragma once

#include <array>

namespace kvx {

/// The index that names no node: pads mixed connectivities, marks "no neighbour", "not found" and
/// unset entries of index maps.
inline constexpr unsigned int no_node = 0xFFFFFFFFu;

/// Kinds of elements. The values are part of the interface.
///
/// The two mixed kinds hold elements of several shapes in one matrix, unused rows padded with
/// no_node:
/// - ET_FACE_MIX, 3 or 4 rows: a column with no_node in row 3 is a triangle, any other a
///   quadrangle; with 3 rows all are triangles.
/// - ET_SOLID_MIX, 4, 5, 6 or 8 rows: the first no_node in row 4, 5 or 6 ends a tetrahedron,
///   pyramid or wedge; a column without is a hexahedron.
/// The quadratic pyramid and wedge carry a node at the centre of each quadrangular face.
enum element_type : int {
    ET_NODE_MIX = 0,
    ET_NODE1 = 1,
    ET_EDGE_MIX = 2,
    ET_BAR2 = 3,
    ET_BAR3 = 4,
    ET_FACE_MIX = 5,
    ET_TRIA3 = 6,
    ET_QUAD4 = 7,
    ET_TRIA6 = 8,
    ET_QUAD8 = 9,
    ET_QUAD9 = 10,
    ET_SOLID_MIX = 11,
    ET_TETRA4 = 12,
    ET_TETRA10 = 13,
    ET_PYRAMID5 = 14,
    ET_PYRAMID14 = 15,
    ET_PENTA6 = 16,
    ET_PENTA18 = 17,
    ET_HEXA8 = 18,
    ET_HEXA20 = 19,
    ET_HEXA27 = 20
};

/// Number of nodes of an element of each kind, by the value of the kind; 0 for the mixed kinds.
inline constexpr std::array<unsigned int, 21> element_node_counts = {
    0, 1, 0, 2, 3, 0, 3, 4, 6, 8, 9, 0, 4, 10, 5, 14, 6, 18, 8, 20, 27};

/// Whether the value is one of the 21 kinds.
constexpr bool is_element_type(int value) noexcept {
    return value >= 0 && value <= 20;
}

/// Number of nodes of an element; 0 for the mixed kinds and for values that are no kind.
constexpr unsigned int node_count(element_type kind) noexcept {
    return is_element_type(kind) ? element_node_counts[static_cast<unsigned>(kind)] : 0;
}

static_assert(element_node_counts.size() == ET_HEXA27 + 1);

} // namespace kvx
