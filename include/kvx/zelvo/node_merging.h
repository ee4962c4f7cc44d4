#pragma once

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Finds nodes that lie within a distance of each other and redirects each to a surviving node.
/// Coordinates are neither deleted nor compacted: a merged node is merely no longer referred to.
///
/// Of all pairs (survivor from nodes2, absorbed node from nodes1) at a Euclidean distance of at
/// most tol, whose coordinates also differ by at most tol along every axis, the nearest is joined
/// first; at equal distances the pair whose survivor comes first in nodes2. A node that has been
/// absorbed neither absorbs nor is absorbed again, while a survivor absorbs any number of nodes. A
/// survivor that is absorbed later takes the nodes it absorbed along, so nodes may end up further
/// than tol from their survivor. Nodes with a NaN coordinate never merge. Where the caller's rounding
/// mode is up or down, so that a - b and b - a may differ, either may count.
///
/// pos       2 or 3 rows, one column per node
/// nodes1    nodes that may be absorbed; no_node and repeated entries are skipped
/// nodes2    nodes that may survive, the earlier in the list the rather
/// new_IDs   emptied first; then one entry per column of pos: the node that takes its place, itself
///           for a node that stays. Left empty when either list is empty
/// tol       distance in the units of pos; 0 joins nodes at equal coordinates only
///
/// Returns the number of nodes absorbed (at most 2147483647), or, in the order checked: 0 when pos
/// has no columns; -1 pos has neither 2 nor 3 rows; -2 nodes1, -3 nodes2 name a node beyond pos; -4
/// tol is negative or NaN; -199 memory runs out or pos has more than 4294967295 columns. On an
/// error only new_IDs is touched.
///
/// Expected O(n log n) for n listed nodes. However many pairs lie within tol, only about seven a
/// node are held at a time.
KVX_ZELVO_API int merge(const dense2D<double>& pos, const dense1D<unsigned int>& nodes1,
                        const dense1D<unsigned int>& nodes2, dense1D<unsigned int>& new_IDs,
                        double tol) noexcept;
/// One list for both roles: of two close nodes the one listed first survives.
KVX_ZELVO_API int merge(const dense2D<double>& pos, const dense1D<unsigned int>& nodes,
                        dense1D<unsigned int>& new_IDs, double tol) noexcept;

/// Merges the nodes that elements use and renumbers the elements.
///
/// first, last  half-open range of connectivities, all numbering the nodes of pos; renumbered in
///              place, so that views of the same elements see it
/// new_IDs      as above; left empty when the elements use no node
/// flags        0: any two nodes of the elements may be joined, the node met first in the elements
///              (matrix by matrix, column by column, row by row) surviving; 1: only nodes of one
///              element, which collapses short edges, the pairs of one distance in the order of
///              elements and rows of their survivors; 2: as 1, repeated until nothing merges, on
///              chains of elements made for it as often as there are nodes
///
/// Returns the number of nodes absorbed, or, in the order checked: 0 when pos has no columns or the
/// range is empty; -1 pos has neither 2 nor 3 rows; -3 last comes before first; -5 tol is negative
/// or NaN; -6 flags above 2; 0 when the elements use no node; -2 an element names a node beyond
/// pos; -199 memory runs out. (There is no -4.) On an error only new_IDs is touched.
KVX_ZELVO_API int merge(const dense2D<double>& pos, dense2D<unsigned int>* first,
                        dense2D<unsigned int>* last, dense1D<unsigned int>& new_IDs, double tol,
                        unsigned int flags) noexcept;
/// One connectivity.
KVX_ZELVO_API int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM,
                        dense1D<unsigned int>& new_IDs, double tol, unsigned int flags) noexcept;
/// Two connectivities together.
KVX_ZELVO_API int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM1,
                        dense2D<unsigned int>& connectM2, dense1D<unsigned int>& new_IDs,
                        double tol, unsigned int flags) noexcept;
/// The same three without the map.
KVX_ZELVO_API int merge(const dense2D<double>& pos, dense2D<unsigned int>* first,
                        dense2D<unsigned int>* last, double tol, unsigned int flags) noexcept;
KVX_ZELVO_API int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM, double tol,
                        unsigned int flags) noexcept;
KVX_ZELVO_API int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM1,
                        dense2D<unsigned int>& connectM2, double tol, unsigned int flags) noexcept;
/// With tolerance 1e-6 and flags 0.
KVX_ZELVO_API int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM) noexcept;
KVX_ZELVO_API int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM1,
                        dense2D<unsigned int>& connectM2) noexcept;

/// Merges all nodes of pos in place: every absorbed node takes the coordinates of its survivor; of
/// two close nodes the one with the lower index survives. pos becomes a matrix of its own: other
/// views of it keep the old coordinates.
///
/// Returns the number of nodes absorbed, or, in the order checked: 0 when pos has no columns; -1
/// pos has neither 2 nor 3 rows; -3 tol is negative or NaN; -199 memory runs out.
KVX_ZELVO_API int merge(dense2D<double>& pos, dense1D<unsigned int>& new_IDs, double tol) noexcept;
/// Without the map.
KVX_ZELVO_API int merge(dense2D<double>& pos, double tol) noexcept;

} // namespace kvx::zelvo
