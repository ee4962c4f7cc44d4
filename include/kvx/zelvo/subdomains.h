#pragma once

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Splits a mesh into its connected parts. Elements are connected when they share a node, also
/// through others; an element without nodes is a part of its own. Parts come in the order of their
/// lowest elements, elements ascending within each.
///
/// connectM   node indices, one column per element, of any kind; no_node is skipped, any other
///            index is taken
/// elements   replaced: the elements, part by part; empty for a connectM without entries
/// offsets    replaced: parts + 1 entries; the elements of part p are elements[offsets[p]] up to,
///            not including, elements[offsets[p + 1]]; [0] for a connectM without entries
///
/// Returns 0; -199, with both outputs empty, when memory runs out or connectM has more than
/// 4294967295 columns. Almost linear, n log n at worst (union by lowest element with paths halved;
/// R. E. Tarjan, J. van Leeuwen, Journal of the ACM 31, 1984).
KVX_ZELVO_API int get_subdomains(const dense2D<unsigned int>& connectM,
                                 dense1D<unsigned int>& elements,
                                 dense1D<unsigned int>& offsets) noexcept;

/// Splits a mesh into the parts that hang together through sides, and puts the elements of each
/// part side by side. Only what neighbors records connects: two elements that share a node but are
/// not neighbours are apart here, while the form above joins them. Which of two elements names the
/// other does not matter.
///
/// connectM    in and out: nodes x elements; the columns are reordered in place, part by part, in
///             the order described above
/// neighbors   in and out: sides x elements as get_neighbors gives them; reordered likewise, its
///             entries renumbered to the new places
/// offsets     replaced: the columns of part p are offsets[p] up to, not including, offsets[p + 1];
///             [0] for a connectM without entries
///
/// Returns 0; or, with nothing changed and in this order, -1 the matrices differ in their number of
/// columns, -199 more than 4294967295 columns, -2 an entry of neighbors is neither an element nor
/// no_node, -199 memory exhausted. Almost linear, n log n at worst.
KVX_ZELVO_API int get_subdomains(dense2D<unsigned int>& connectM, dense2D<unsigned int>& neighbors,
                                 dense1D<unsigned int>& offsets) noexcept;

} // namespace kvx::zelvo
