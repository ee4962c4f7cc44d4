#pragma once

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Removes the nodes that no element uses and renumbers the elements. The remaining nodes keep
/// their order.
///
/// pos          in and out: dimension x nodes; the kept columns move to the front and the matrix
///              shrinks in its storage, so other views of it see them moved
/// first, last  in and out: half-open range of connectivities, any kinds. Views of one matrix may
///              occur more than once: every entry is renumbered once
/// new_IDs      emptied first, whatever is returned; when nodes were looked at, the new column of
///              each old node, no_node for a removed one. May be a view of a connectivity
/// n_kept       nodes 0 .. n_kept - 1 stay in place even if unused
///
/// Returns the number of nodes removed (at most 2147483647), or, in the order checked and with
/// nothing changed but new_IDs empty: 0 for an empty range; -3 when last comes before first; -2 for
/// an entry that is neither no_node nor a column of pos; 0 for an empty pos; 0 when n_kept is not
/// below the number of nodes; -199 when memory runs out or pos has more than 4294967295 columns.
/// Linear.
KVX_ZELVO_API int simplify(dense2D<double>& pos, dense2D<unsigned int>* first,
                           dense2D<unsigned int>* last, dense1D<unsigned int>& new_IDs,
                           unsigned int n_kept) noexcept;
/// The range holding conn alone.
KVX_ZELVO_API int simplify(dense2D<double>& pos, dense2D<unsigned int>& conn,
                           dense1D<unsigned int>& new_IDs, unsigned int n_kept) noexcept;
/// The range holding conn alone, without the map.
KVX_ZELVO_API int simplify(dense2D<double>& pos, dense2D<unsigned int>& conn,
                           unsigned int n_kept) noexcept;
/// The range of two connectivities that need not be neighbours in memory, without the map.
KVX_ZELVO_API int simplify(dense2D<double>& pos, dense2D<unsigned int>& conn1,
                           dense2D<unsigned int>& conn2, unsigned int n_kept) noexcept;

} // namespace kvx::zelvo
