#pragma once

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Groups the elements of a connectivity by their number of nodes, in place, in ascending order;
/// within a group they keep their order. The number of nodes is that of the entries before the
/// first no_node; elements without nodes are dropped.
///
/// conn         in and out: nodes x elements, any mixture; other views of it see the columns move
/// elem_refs    in and out: one column per element of conn, moved along with it, or empty and left
///              alone. Its entries name elements (neighbours, say) and are renumbered through
///              new_IDs; no_node and entries that are no element of conn stay. Must not share
///              elements with conn
/// group_nodes  replaced: number of nodes of the elements of each group; no_node when no element
///              remains
/// group_ends   replaced: for each group the column behind its last one; 0 when no element remains
/// new_IDs      replaced: new column of each old element, no_node for a dropped one. This and the
///              two above may be views of conn or elem_refs
///
/// Returns 0, or with nothing changed: -1 when a non-empty elem_refs has another number of columns
/// than conn, -199 when memory runs out or conn has more than 4294967294 columns. Linear; needs a
/// copy of the larger matrix unless the elements stand in order.
KVX_ZELVO_API int sort_elfes(dense2D<unsigned int>& conn, dense2D<unsigned int>& elem_refs,
                             dense1D<unsigned int>& group_nodes, dense1D<unsigned int>& group_ends,
                             dense1D<unsigned int>& new_IDs) noexcept;
/// Without references to elements.
KVX_ZELVO_API int sort_elfes(dense2D<unsigned int>& conn, dense1D<unsigned int>& group_nodes,
                             dense1D<unsigned int>& group_ends,
                             dense1D<unsigned int>& new_IDs) noexcept;

} // namespace kvx::zelvo
