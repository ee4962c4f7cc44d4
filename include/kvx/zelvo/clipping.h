#pragma once

#include <kvx/dense_array.h>
#include <kvx/fixed_size.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Appends the elements that lie wholly on the positive side of a plane to kept_conn. Nothing is
/// cut: an element stays whole or is left out, and one node on the plane leaves it out.
///
/// pos         rows x nodes; rows beyond the third play no part, missing ones count as lying in the
///             plane, so that in 2-D the plane is the line through (P[0], P[1]) whatever N[2] is
/// conn        node indices, one column per element; no_node ends an element
/// P, N        a point of the plane and its normal, which points to the side that is kept
/// kept_conn   appended to, elements in their order; gets as many rows as conn where it has fewer.
///             May share storage with conn
///
/// Returns 0 (an empty conn changes nothing), or, in the order checked and with kept_conn
/// unchanged: -2 an entry that is neither a column of pos nor no_node; -4 N is not at least 1e-12
/// long (NaN included); -5 kept_conn has entries and another number of rows than conn; -199 out of
/// memory. Linear.
KVX_ZELVO_API int clip(const dense2D<double>& pos, const dense2D<unsigned int>& conn,
                       const vector_fixed<double, 3>& P, const vector_fixed<double, 3>& N,
                       dense2D<unsigned int>& kept_conn) noexcept;

} // namespace kvx::zelvo
