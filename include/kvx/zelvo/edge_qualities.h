#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/misc/histogram.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Measures every distinct corner edge of a mesh in a field of sizes, given at the nodes: its
/// length divided by the logarithmic mean of the sizes at its ends, which is the number of elements
/// that sizes varying linearly along it ask for. 1 is ideal, less a short and more a long edge;
/// 1.7976931348623157e308 stands for an edge that cannot be measured. The edges are those of
/// copy_edges, in the same order; ET_HEXA20 has none.
///
/// pos         2 or 3 rows, one column per node
/// connectM    node indices, one column per element
/// kind        kind of the elements
/// sizes       one per node
/// statistics  takes the value of every edge whose sizes are not <= 0 (NaN is not); neither cleared
///             before nor finished after. Untouched when the result is -1, -2 or -199
///
/// Returns 0, at once for a connectM without entries; or, in the order checked:
///   -1    pos has other than 2 or 3 rows
///   -2    connectM does not fit the kind or names a node that pos does not have
///   -199  out of memory
///   -4    an edge was left out, or there is not exactly one size per node; a missing size is
///         invalid. All other edges were measured.
///
/// Linear; n log n in the edges whose smaller node they share.
KVX_ZELVO_API int edge_qualities(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                                 element_type kind, const dense1D<double>& sizes,
                                 kvx::misc::histogram& statistics) noexcept;

/// The same in a field of metrics: one packed symmetric matrix M per node, in columns of 3 entries
/// where pos has 2 rows and of 6 where it has 3. Along an edge e, M asks for the size
/// 1 / sqrt(e^T M e) in units of e. Only edges are measured whose ends have a metric with a
/// smallest eigenvalue that is not <= 0; columns of another length are all invalid.
///
/// Returns as above, but in space, where pos has 3 rows, 0 instead of -4: kept on purpose.
KVX_ZELVO_API int edge_qualities(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                                 element_type kind, const dense2D<double>& metrics,
                                 kvx::misc::histogram& statistics) noexcept;

/// The same for all matrices of a half-open range together, matrix k of kind types[k]; an edge that
/// several share is measured once.
///
/// Returns 0, at once for an empty range; or, in the order checked, -1 as above; -4 last comes
/// before first or the number of matrices is not the size of types; -2, for any of the matrices,
/// and -199 as above; -5, in the plane and in space, for what the forms above call -4.
KVX_ZELVO_API int edge_qualities(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                                 const dense2D<unsigned int>* last, const dense1D<int>& types,
                                 const dense1D<double>& sizes,
                                 kvx::misc::histogram& statistics) noexcept;
KVX_ZELVO_API int edge_qualities(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                                 const dense2D<unsigned int>* last, const dense1D<int>& types,
                                 const dense2D<double>& metrics,
                                 kvx::misc::histogram& statistics) noexcept;

} // namespace kvx::zelvo
