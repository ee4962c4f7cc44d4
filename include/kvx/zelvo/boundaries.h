#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Lists every side of every element, element by element and in side order (sides, kinds and their
/// rows as get_neighbors has them), each with its nodes in the side's own order: the edges of a
/// counter-clockwise face run counter-clockwise.
///
/// connectM     node indices, one column per element; any index is taken
/// FE_type      kind of the elements
/// boundaries   replaced: nodes of a side x sides. 1 row for bars, 2 for triangles, quadrangles and
///              ET_FACE_MIX, 3 for tetrahedra, 4 for the other solids, with no_node in row 3 of a
///              triangular face, so that the result is an ET_FACE_MIX mesh. Sides that an element
///              of a mixed kind does not have are left out. May be the same object as connectM
///
/// Returns 0, at once for a connectM without entries; or, with boundaries empty and in this order,
/// -1 connectM is no valid mixed connectivity, -2 a kind without listed sides, -1 wrong rows of
/// connectM, -199 memory exhausted. Linear.
KVX_ZELVO_API int get_element_boundaries(const dense2D<unsigned int>& connectM,
                                         element_type FE_type,
                                         dense2D<unsigned int>& boundaries) noexcept;

/// Lists the sides that have no neighbour. Sides that get_neighbors left unpaired because three or
/// more elements share them count as boundary too.
///
/// neighbors    sides x elements, what get_neighbors gives for connectM and FE_type; only compared
///              with no_node
/// boundaries   may be the same object as connectM or neighbors
///
/// Returns as get_element_boundaries does, with -2 for neighbors of another shape after the rows of
/// connectM are checked. Linear.
KVX_ZELVO_API int get_mesh_boundaries(const dense2D<unsigned int>& connectM,
                                      const dense2D<unsigned int>& neighbors, element_type FE_type,
                                      dense2D<unsigned int>& boundaries) noexcept;

} // namespace kvx::zelvo
