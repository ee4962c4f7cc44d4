#pragma once

#include <kvx/dense_array.h>
#include <kvx/fixed_size.h>
#include <kvx/zelvo/export.h>

/// From sizes to matrices, and from space to the tangent plane of a surface. The forms of metrics
/// are those of metric_validity.h. Outputs may overlap inputs in memory.
///
/// basis   two vectors t1, t2 that span the tangent plane: the columns of a 3 x 2 matrix B
/// bases   6 rows: t1 and t2 of every node, one behind the other
///
/// The basis is taken as it is: a metric in it measures a t1 + b t2 by (a, b), so vectors that are
/// not of unit length scale the result.
namespace kvx::zelvo {

/// M = I / h^2; the zero matrix, which is no metric, unless h > 0.
KVX_ZELVO_API void metric_iso_to_aniso(double h, symmetric_fixed<double, 2>& M) noexcept;
KVX_ZELVO_API void metric_iso_to_aniso(double h, symmetric_fixed<double, 3>& M) noexcept;

/// The same for every size.
///
/// sizes    one per node
/// metrics  replaced: 3 (in 3-D 6) rows, one column per size; 0 x 0 when memory runs out
///
/// Linear.
KVX_ZELVO_API void metrics_iso_to_aniso2d(const dense1D<double>& sizes,
                                          dense2D<double>& metrics) noexcept;
KVX_ZELVO_API void metrics_iso_to_aniso3d(const dense1D<double>& sizes,
                                          dense2D<double>& metrics) noexcept;

/// M = B^T B / h^2, the size h in the tangent plane; the zero matrix unless h > 0 and 1 / h^2 is
/// not 0.
KVX_ZELVO_API void metric_iso_to_aniso2d(double h, const matrix_fixed<double, 3, 2>& basis,
                                         symmetric_fixed<double, 2>& M) noexcept;

/// The same for every size.
///
/// sizes    one per node
/// bases    6 rows, one column per size
/// metrics  resized to 3 rows, one column per size, and overwritten
///
/// Returns 0, or, in the order checked and with metrics unchanged:
///   -2    bases has another shape
///   -199  out of memory
/// Linear.
KVX_ZELVO_API int metrics_iso_to_aniso2d(const dense1D<double>& sizes, const dense2D<double>& bases,
                                         dense2D<double>& metrics) noexcept;

/// M2 = B^T M3 B: the metric that M3 is for vectors of the tangent plane.
KVX_ZELVO_API void metric_aniso3d_to_aniso2d(const symmetric_fixed<double, 3>& M3,
                                             const matrix_fixed<double, 3, 2>& basis,
                                             symmetric_fixed<double, 2>& M2) noexcept;

/// The same for every node.
///
/// metrics3d  6 rows, one column per node
/// bases      6 rows, one column per node
/// metrics2d  resized to 3 rows, one column per node, and overwritten
///
/// Returns 0, or, in the order checked and with metrics2d unchanged:
///   -1    metrics3d has another row count
///   -2    bases has another shape
///   -199  out of memory
/// Linear.
KVX_ZELVO_API int metrics_aniso3d_to_aniso2d(const dense2D<double>& metrics3d,
                                             const dense2D<double>& bases,
                                             dense2D<double>& metrics2d) noexcept;

} // namespace kvx::zelvo
