#pragma once

#include <kvx/dense_array.h>
#include <kvx/fixed_size.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Grows the box lo .. hi by nodes. The caller sets the box first; calls may be chained. For each
/// coordinate x, lo takes x unless x >= lo and hi takes x when x > hi, so a NaN replaces lo only.
///
/// pos      dimension x nodes; exactly 2 rows (2-D box) or 3 rows (3-D box)
/// lo, hi   in and out: the corners of the box, in the units of pos
///
/// All nodes of pos: returns 0, or -1 when pos has another number of rows. Linear.
KVX_ZELVO_API int inc_bounding_box(const dense2D<double>& pos, vector_fixed<double, 2>& lo,
                                   vector_fixed<double, 2>& hi) noexcept;
KVX_ZELVO_API int inc_bounding_box(const dense2D<double>& pos, vector_fixed<double, 3>& lo,
                                   vector_fixed<double, 3>& hi) noexcept;

/// The listed nodes; no_node is skipped, repeated nodes are harmless. Returns 0 for an empty list
/// before anything is checked, else, in this order and with the box untouched: -1 rows of pos, -2
/// an entry that is neither no_node nor a column of pos; 0 when done. Linear.
KVX_ZELVO_API int inc_bounding_box(const dense2D<double>& pos, const dense1D<unsigned int>& nodes,
                                   vector_fixed<double, 2>& lo,
                                   vector_fixed<double, 2>& hi) noexcept;
KVX_ZELVO_API int inc_bounding_box(const dense2D<double>& pos, const dense1D<unsigned int>& nodes,
                                   vector_fixed<double, 3>& lo,
                                   vector_fixed<double, 3>& hi) noexcept;

/// The nodes of a connectivity, each once; codes as for a list, and -199 when memory runs out.
KVX_ZELVO_API int inc_bounding_box(const dense2D<double>& pos, const dense2D<unsigned int>& conn,
                                   vector_fixed<double, 2>& lo,
                                   vector_fixed<double, 2>& hi) noexcept;
KVX_ZELVO_API int inc_bounding_box(const dense2D<double>& pos, const dense2D<unsigned int>& conn,
                                   vector_fixed<double, 3>& lo,
                                   vector_fixed<double, 3>& hi) noexcept;

} // namespace kvx::zelvo
