#pragma once

#include <kvx/fixed_size.h>
#include <kvx/zelvo/export.h>

/// Eigenvalues of metrics, and the metric made of two.
///
/// 2-D goes by closed forms, 3-D through kvx::lapack::dspev. Matrices whose entries lie so far from
/// 1 that their squares would overflow or vanish are scaled by a power of two on the way, which
/// changes nothing else.
namespace kvx::zelvo {

/// Eigenvalues in ascending order and orthonormal eigenvectors, column k for value k.
///
/// In 2-D, for M = (a, c; c, b): low = (a + b - s) / 2 and high = low + s, where
/// s = sqrt((a - b)^2 + 4 c^2). A value of less than half the magnitude of the other comes out of a
/// difference that cancels, and is recomputed as (a b - c^2) / other. The first vector is the
/// longer of (low - b, c) and (c, low - a), the second is the first turned by +90 degrees; a
/// multiple of the identity, to working precision, has the axes.
///
/// False when an eigenvalue is not finite (2-D), or when an entry is not or the iteration failed
/// (3-D); values and vectors are then partly written.
KVX_ZELVO_API bool eigen_pairs(const symmetric_fixed<double, 2>& M, vector_fixed<double, 2>& values,
                               matrix_fixed<double, 2, 2>& vectors) noexcept;
KVX_ZELVO_API bool eigen_pairs(const symmetric_fixed<double, 3>& M, vector_fixed<double, 3>& values,
                               matrix_fixed<double, 3, 3>& vectors) noexcept;

/// Generalised pairs M2 v = value M1 v: values in ascending order, and unit vectors that are
/// conjugate in M1 and M2 (v_i^T M1 v_j = 0) but not orthogonal. With M1 = L L^T they are the pairs
/// of K = L^-1 M2 L^-T, the vectors turned back by L^-T. value k is the square of the ratio of the
/// sizes that M1 and M2 ask for along vector k. Their errors are relative to the largest one.
///
/// False, with everything zeroed, when a pivot of M1 is not positive (M1 is no metric), an entry is
/// not finite, an eigenvalue is not finite, or in 3-D M2 is neither zero nor positive semidefinite
/// with a singular last pivot at most; in 2-D M2 may be any symmetric matrix.
KVX_ZELVO_API bool eigen_pairs(const symmetric_fixed<double, 2>& M1,
                               const symmetric_fixed<double, 2>& M2,
                               vector_fixed<double, 2>& values,
                               matrix_fixed<double, 2, 2>& vectors) noexcept;
KVX_ZELVO_API bool eigen_pairs(const symmetric_fixed<double, 3>& M1,
                               const symmetric_fixed<double, 3>& M2,
                               vector_fixed<double, 3>& values,
                               matrix_fixed<double, 3, 3>& vectors) noexcept;

/// Intersection of two metrics: the metric whose size in every direction is at most that of M1 and
/// of M2, and which along each of their common conjugate directions (the vectors of the generalised
/// eigen_pairs) is the smaller of both. Its ellipse of unit vectors lies in both ellipses.
///
/// M may be M1 or M2. Where eigen_pairs of (M1, M2) fails it becomes the zero matrix, which no test
/// takes for a metric; neither the arguments nor the result are checked otherwise.
KVX_ZELVO_API void minimum_metric(const symmetric_fixed<double, 2>& M1,
                                  const symmetric_fixed<double, 2>& M2,
                                  symmetric_fixed<double, 2>& M) noexcept;
KVX_ZELVO_API void minimum_metric(const symmetric_fixed<double, 3>& M1,
                                  const symmetric_fixed<double, 3>& M2,
                                  symmetric_fixed<double, 3>& M) noexcept;

/// Union of two metrics, likewise: the size in every direction is at least that of M1 and of M2,
/// along the common conjugate directions exactly the larger of both.
KVX_ZELVO_API void maximum_metric(const symmetric_fixed<double, 2>& M1,
                                  const symmetric_fixed<double, 2>& M2,
                                  symmetric_fixed<double, 2>& M) noexcept;
KVX_ZELVO_API void maximum_metric(const symmetric_fixed<double, 3>& M1,
                                  const symmetric_fixed<double, 3>& M2,
                                  symmetric_fixed<double, 3>& M) noexcept;

} // namespace kvx::zelvo
