#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Appends the distinct corner edges of a mesh to a list of edges, in order of first occurrence and
/// each with its nodes as first met ((a, b) and (b, a) are one edge). Edges that the list already
/// holds do not count; an edge of a degenerate element with one node at both ends is an edge, one
/// with no_node is left out.
///
/// Local edges: bar (0,1); triangle (0,1) (1,2) (2,0); quadrangle (0,1) (1,2) (2,3) (3,0);
/// tetrahedron (0,1) (1,2) (2,0) (0,3) (1,3) (2,3); pyramid (0,1) (1,2) (2,3) (3,0) (0,4) (1,4)
/// (2,4) (3,4); wedge (0,1) (1,2) (2,0) (3,4) (4,5) (5,3) (0,3) (1,4) (2,5); hexahedron (0,1) (1,2)
/// (2,3) (3,0) (4,5) (5,6) (6,7) (7,4) (0,4) (1,5) (2,6) (3,7). Quadratic elements have the edges
/// of their corners. ET_HEXA20, kinds 0 to 2 and values that are no kind have none.
///
/// connectM   node indices, one column per element; any index is taken. Rows beyond the corners are
///            not read
/// FE_type    kind of the elements
/// edges      appended to: 2 x edges; may be the same object as connectM
///
/// Returns 0, at once for a connectM without entries; or, with edges untouched and in this order,
/// -1 connectM is no valid mixed connectivity or has too few rows for its corners, -3 edges holds
/// entries and has other than 2 rows, -199 memory exhausted or more than 4294967295 edges met.
///
/// Linear; n log n in the edges whose smaller node they share.
KVX_ZELVO_API int copy_edges(const dense2D<unsigned int>& connectM, element_type FE_type,
                             dense2D<unsigned int>& edges) noexcept;

/// The distinct edges of all matrices of a range together; edges may be one of the matrices.
///
/// first, last   half-open range of connectivities
/// FE_types      one element_type per matrix
///
/// Returns 0, at once for an empty range; or, with edges untouched and in this order, -4 last comes
/// before first, -5 the size of FE_types is not the number of matrices, -1 and -3 and -199 as
/// above, -1 if any matrix fails.
KVX_ZELVO_API int copy_edges(const dense2D<unsigned int>* first, const dense2D<unsigned int>* last,
                             const dense1D<int>& FE_types, dense2D<unsigned int>& edges) noexcept;

} // namespace kvx::zelvo
