#pragma once

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Finds, for every node, the shortest, mean and longest length of the edges that touch it. Edges
/// are taken as listed: a repeated one counts again, and one with the same node at both ends counts
/// twice there, with length 0.
///
/// pos        any number of rows, over all of which a length is taken; one column per node
/// connectM   2 rows, one column per edge
/// lengths    replaced: 3 x nodes, (shortest, mean, longest); (1.7976931348623157e308, 0, 0) for a
///            node that no edge touches; left empty for a connectM without columns. May be the same
///            object as pos
///
/// Returns 0, or, with lengths emptied and in this order, -2 connectM does not fit ET_BAR2 or names
/// a node that pos does not have, -199 out of memory. Linear.
KVX_ZELVO_API int edge_lengths(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                               dense2D<double>& lengths) noexcept;

} // namespace kvx::zelvo
