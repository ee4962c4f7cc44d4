#pragma once

#include <kvx/dense_array.h>
#include <kvx/fixed_size.h>
#include <kvx/zelvo/export.h>

/// Metrics tell, node by node, which element size is wanted. They come in two forms:
///
/// sizes    isotropic: one edge length h per node, valid when h > 0 and finite
/// metrics  anisotropic: one symmetric matrix M per node, valid when positive definite. A vector e
///          has the wanted length when e^T M e = 1, so the size h in all directions is M = I / h^2,
///          and an eigenvalue v is the size 1 / sqrt(v) along its eigenvector. One column per node
///          holds the upper triangle column by column: M00, M01, M11 in 2-D, M00, M01, M11, M02,
///          M12, M22 in 3-D. The row count, 3 or 6, tells the dimension
///
/// Arrays may be views; what a function changes it changes in place.
namespace kvx::zelvo {

/// Whether the smallest eigenvalue of M is not <= 0. An eigenvalue that is NaN passes, as it does
/// in 2-D for every matrix with a NaN entry and in 3-D for every one with an entry that is not
/// finite: finiteness is not asked for here.
KVX_ZELVO_API bool is_valid_metric(const symmetric_fixed<double, 2>& M) noexcept;
KVX_ZELVO_API bool is_valid_metric(const symmetric_fixed<double, 3>& M) noexcept;

/// Whether every size is positive and finite; true for none. Stops at the first that is not.
/// Linear.
KVX_ZELVO_API bool are_valid_metrics(const dense1D<double>& sizes) noexcept;
/// The same for the sizes of the listed nodes; a node without a size makes it false.
KVX_ZELVO_API bool are_valid_metrics(const dense1D<unsigned int>& nodes,
                                     const dense1D<double>& sizes) noexcept;
/// Whether every column passes is_valid_metric; false for another row count than 3 or 6, also
/// without columns. Stops at the first that does not. Linear.
KVX_ZELVO_API bool are_valid_metrics(const dense2D<double>& metrics) noexcept;
/// The same for the columns of the listed nodes; a node without a column makes it false. No nodes
/// and no entries are valid together, whatever the row count.
KVX_ZELVO_API bool are_valid_metrics(const dense1D<unsigned int>& nodes,
                                     const dense2D<double>& metrics) noexcept;

/// Keeps the sizes that a metric asks for between hmin and hmax, by keeping its eigenvalues between
/// 1 / hmax^2 and 1 / hmin^2. A bound that is not positive is none, nor is an hmax of 1.34e154 or
/// more, whose square no double holds. The bound of hmin goes first, so hmax wins where
/// hmin > hmax.
///
/// M stays as it is, bit for bit, when no eigenvalue changes. Where M has no eigenvalues (entries
/// that are not finite) it becomes I / hmax^2, the zero matrix without hmax.
KVX_ZELVO_API void bound_metric(symmetric_fixed<double, 2>& M, double hmin, double hmax) noexcept;
KVX_ZELVO_API void bound_metric(symmetric_fixed<double, 3>& M, double hmin, double hmax) noexcept;

/// Raises every size to hmin, then lowers it to hmax: hmax wins, and NaN sizes become hmax. The
/// bounds are taken as they are: unlike for metrics, a negative or NaN hmax is no missing bound but
/// replaces every size. Returns 0. Linear.
KVX_ZELVO_API int bound_metrics(dense1D<double>& sizes, double hmin, double hmax) noexcept;
/// bound_metric for every column. An array without entries, and bounds of which neither is >= 0,
/// change nothing and give 0, whatever the shape. Returns 0, or -1 for another row count than 3 or
/// 6. Linear.
KVX_ZELVO_API int bound_metrics(dense2D<double>& metrics, double hmin, double hmax) noexcept;

/// Replaces the sizes that are <= 0 by those of `fallback` that are > 0, as far as both arrays
/// reach; NaN stays. The arrays may overlap in memory. Returns 0, or -199 when they do and there is
/// no memory for a copy, with nothing changed. Linear.
KVX_ZELVO_API int overwrite_invalid_metrics(dense1D<double>& sizes,
                                            const dense1D<double>& fallback) noexcept;

/// Replaces the columns that fail is_valid_metric, as far as both arrays reach, by I / h^2 where
/// the fallback size h is > 0. The arrays may overlap in memory.
///
/// Returns 0, also for metrics without entries, or, in the order checked and with nothing changed:
///   -1    metrics has another row count than 3 or 6
///   -199  the arrays overlap and there is no memory for a copy
/// Linear.
KVX_ZELVO_API int overwrite_invalid_metrics(dense2D<double>& metrics,
                                            const dense1D<double>& fallback_sizes) noexcept;

/// The same with the columns of `fallback` that pass is_valid_metric. Returns as above, and after
/// -1:
///   -2    fallback has another row count than metrics
KVX_ZELVO_API int overwrite_invalid_metrics(dense2D<double>& metrics,
                                            const dense2D<double>& fallback) noexcept;

} // namespace kvx::zelvo
