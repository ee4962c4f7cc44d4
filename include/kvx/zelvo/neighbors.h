#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Finds, for every side of every element, the element on its other side. Sides are the end nodes
/// of bars, the edges of triangles and quadrangles and the faces of solids; two sides match when
/// they have the same nodes in any order, so sides with different numbers of nodes never do.
///
/// Sides are numbered so (local nodes):
/// - bar: side k is the node opposite node k;
/// - triangle: side k is the edge opposite node k: (1,2) (2,0) (0,1);
/// - quadrangle: side k is the edge that starts at node k: (0,1) (1,2) (2,3) (3,0);
/// - tetrahedron: side k is the face opposite node k: (1,2,3) (2,0,3) (1,3,0) (2,1,0);
/// - pyramid: (0,4,1) (1,4,2) (2,4,3) (3,4,0) (0,1,2,3);
/// - wedge: (0,1,2) (3,5,4) (2,1,4,5) (5,3,0,2) (0,3,4,1);
/// - hexahedron: (0,3,7,4) (1,5,6,2) (0,4,5,1) (3,2,6,7) (0,1,2,3) (4,7,6,5).
///
/// connectM    node indices, one column per element; any index is taken. no_node in a kind that is
///             not mixed counts as a node like any other
/// FE_type     ET_BAR2 (2 rows), ET_TRIA3 (3), ET_QUAD4 (4), ET_FACE_MIX (4; 3 rows are taken as
///             ET_TRIA3), ET_TETRA4 (4), ET_PYRAMID5 (5), ET_PENTA6 (6), ET_HEXA8 (8) or
///             ET_SOLID_MIX (8)
/// flag        sides shared by three or more: true pairs the first two in element, then side order,
///             false pairs none. Sides beyond a pair have no neighbour
/// neighbors   replaced: sides of the kind x elements, no_node where there is no neighbour and in
///             rows that an element of a mixed kind does not have. An element of which two sides
///             have the same nodes may be its own neighbour. May be the same object as connectM
///
/// Returns 0, at once for a connectM without entries; or, with neighbors empty and in this order,
/// -1 connectM is no valid mixed connectivity, -2 a kind not listed, -1 connectM has other rows
/// than listed, -199 memory exhausted or more than 4294967295 sides.
///
/// Linear; n log n in the sides whose smallest node they share.
KVX_ZELVO_API int get_neighbors(const dense2D<unsigned int>& connectM, element_type FE_type,
                                bool flag, dense2D<unsigned int>& neighbors) noexcept;

} // namespace kvx::zelvo
