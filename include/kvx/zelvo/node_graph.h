#pragma once

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

/// What lies around the nodes of a mesh. These functions take no element kind and look at the
/// numbers only; no_node entries are skipped. Indices are not checked: the outputs are as long as
/// the largest index M asks for, so check_IDs comes first where a connectivity may hold stray ones.
///
/// Lists per node come compressed: offsets has M + 2 entries, and the items of node n are
/// list[offsets[n]] up to, not including, list[offsets[n + 1]].
namespace kvx::zelvo {

/// Finds an element of every node: the last one that holds it.
///
/// connectM    node indices, one column per element
/// ancestors   when empty, sized to M + 1 entries of no_node; else used as it stands: nodes beyond
///             its size are ignored. Entries of nodes that no element holds stay. May be a view of
///             the elements of connectM
///
/// Returns 0, at once for a connectM without entries; -199, with ancestors untouched, when memory
/// runs out or connectM has more than 4294967295 columns. Linear.
KVX_ZELVO_API int get_ancestors(const dense2D<unsigned int>& connectM,
                                dense1D<unsigned int>& ancestors) noexcept;

/// Lists the elements of every node, ascending; an element that holds a node twice is listed twice.
///
/// offsets    replaced: M + 2 entries (2 when all entries are no_node), [0] for a connectM without
///            entries
/// elements   replaced: the element lists. Both outputs may be views of connectM's elements
///
/// Returns 0; -199, with both outputs empty, when memory runs out or the lists would be longer than
/// 4294967295. Linear.
KVX_ZELVO_API int get_connected_elements(const dense2D<unsigned int>& connectM,
                                         dense1D<unsigned int>& offsets,
                                         dense1D<unsigned int>& elements) noexcept;

/// Lists the nodes that share an element with every node (so the other end of a quadrangle's
/// diagonal too, and mid-side nodes), each once and without the node itself, as they are first met
/// in its elements in ascending order, row by row.
///
/// offsets    replaced: as for get_connected_elements
/// nodes      replaced: the node lists
///
/// Returns as get_connected_elements does. Linear in the sizes of the elements of every node.
KVX_ZELVO_API int get_node_graph(const dense2D<unsigned int>& connectM,
                                 dense1D<unsigned int>& offsets,
                                 dense1D<unsigned int>& nodes) noexcept;

} // namespace kvx::zelvo
