#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/export.h>

/// How fast sizes may change from node to node. The shock of an edge is the factor by which sizes
/// grow along it per unit of metric length (edge_qualities says what that is), minus 1; for sizes
/// ha, hb at the ends of an edge of length L it is exp(|hb - ha| / L) - 1. docs/metrics.md derives
/// this and the bounds below.
namespace kvx::zelvo {

/// Finds, for every node, the largest shock of the edges that touch it.
///
/// pos        2 or 3 rows, one column per node
/// connectM   2 rows, one column per edge
/// sizes      one per node
/// shocks     replaced: one per node, 0 where no edge touches it. 1.7976931348623157e308 where an
///            edge has no shock: its length is 0, or a size is not > 0, infinite or missing. Larger
///            shocks are cut off there. A vector whose size fits is written in place; it may share
///            storage with the other arguments
///
/// Returns 0, at once and with shocks untouched for a connectM without entries; or, with shocks
/// untouched and in the order checked, -1 pos has other than 2 or 3 rows, -2 connectM does not fit
/// ET_BAR2 or names a node that pos does not have, -199 out of memory. Linear.
KVX_ZELVO_API int H_shock(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                          const dense1D<double>& sizes, dense1D<double>& shocks) noexcept;

/// The same for metrics: one packed symmetric matrix M per node, in columns of 3 entries where pos
/// has 2 rows and of 6 where it has 3 (else all are missing). An edge e has no shock where e^T M e
/// is not > 0 at an end.
KVX_ZELVO_API int H_shock(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                          const dense2D<double>& metrics, dense1D<double>& shocks) noexcept;

/// Lowers sizes so that they nowhere grow faster than a gradation allows: gives the largest sizes
/// that are nowhere above the given ones and have h(b) <= h(a) + L ln(1 + gradation) for all nodes
/// a, b, at distance L, of an element. So the shocks of its edges are at most the gradation.
///
/// pos         2 or 3 rows, one column per node
/// connectM    node indices, one column per element
/// kind        kind of the elements
/// nodes       nodes whose sizes stay as they are, though they bound their neighbours' (so two of
///             them may still differ too much); entries no_node are skipped
/// gradation   the largest growth factor per unit of metric length, minus 1; > 0
/// sizes       changed in place: one per node. Sizes that are not > 0, NaN or missing neither
///             change nor bound; an infinite one bounds none. May share storage with pos
///
/// Returns 0, for a connectM without entries too; or, with sizes untouched and in the order
/// checked:
///   -1    pos has other than 2 or 3 rows
///   -2    connectM does not fit the kind or names a node that pos does not have
///   -3    nodes names a node that pos does not have
///   -5    gradation is not > 0 or is 1.7976931348623157e308
///   -6    there are no more sizes than pos has rows
///   -199  out of memory
///
/// One best-first sweep from the smallest size up (E. W. Dijkstra, Numerische Mathematik 1, 1959):
/// n log n in the pairs of nodes that share an element.
KVX_ZELVO_API int bound_metric_gradation(const dense2D<double>& pos,
                                         const dense2D<unsigned int>& connectM, element_type kind,
                                         const dense1D<unsigned int>& nodes, double gradation,
                                         dense1D<double>& sizes) noexcept;

/// The same for metrics, one packed column of 3 entries per node where pos has 2 rows, of 6 where
/// it has 3. With e the edge from a to b and l = sqrt(e^T Ma e) its length in Ma, the metric Mb
/// becomes its intersection with Ma / (1 + l ln(1 + gradation))^2 unless that asks for no smaller
/// size in any direction (by more than 1e-12 in the squares). This goes on until nothing changes,
/// in sweeps over the nodes in ascending order that look again at neighbours of changed nodes only;
/// few sweeps are usual. Metrics with entries that are not finite, or that are not positive
/// definite to working precision, neither change nor bound.
///
/// Returns as above, with -6 also when metrics has other than 3 rows (6 in space) or no more
/// entries than pos has rows; and
///   -7    still changing after 1000 sweeps, as where a bound has to travel against the numbering
///         through as many elements; metrics holds what was reached, with no size larger than
///         before, and another call goes on from there
/// Linear in the pairs of nodes that share an element, for every sweep. Source: F. Alauzet, Size
/// gradation control of anisotropic meshes, Finite Elements in Analysis and Design 46, 2010.
KVX_ZELVO_API int bound_metric_gradation(const dense2D<double>& pos,
                                         const dense2D<unsigned int>& connectM, element_type kind,
                                         const dense1D<unsigned int>& nodes, double gradation,
                                         dense2D<double>& metrics) noexcept;

} // namespace kvx::zelvo
