#pragma once

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Removes the elements that name one node twice. The others keep their order.
///
/// conn     in and out: nodes x elements. The kept columns move to the front and the matrix shrinks
///          in its storage, so other views of it see them moved
/// new_IDs  replaced: new column of each old element, no_node for a removed one; empty for an empty
///          conn. May be a view of conn
/// strict   whether no_node counts as a node, so that two unused rows make an element degenerate.
///          A padded triangle has one and stays; a tetrahedron in 8 rows has four and goes.
///
/// Returns the number of elements removed (at most 2147483647), or -199 when memory runs out or conn
/// has more than 4294967295 columns, with conn unchanged. Linear in the number of entries for up to
/// 8 rows; n rows above that are sorted, n log n an element.
KVX_ZELVO_API int remove_degenerated(dense2D<unsigned int>& conn, dense1D<unsigned int>& new_IDs,
                                     bool strict) noexcept;

} // namespace kvx::zelvo
