#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Writer of EnSight 6 geometry files, ASCII, with node and element ids given (EnSight User Manual,
/// "EnSight6 Geometry File Format").

/// Writes the elements of a half-open range of connectivities to a file of that name, one part for
/// each connectivity with elements, numbered by its place in the range. Coordinates are written as
/// printf's "%12.5e", six significant digits, under every locale; missing ones are 0. Of quadratic
/// kinds with more nodes than the format has, the first nodes are written.
///
/// filename   created or truncated before anything is checked: a rejected call destroys what the
///            file held
/// pos        1 to 3 rows, one column per node
/// FEs        one kind for each connectivity; of mixed kinds, pyramids and points nothing is
///            written
///
/// Indices of fixed kinds are not compared with the number of nodes: run check_IDs before. Each is
/// written increased by 1 in 32 bits, so no_node as 0.
///
/// Returns 0, also when writing fails, or, in the order checked: -1 the file cannot be opened (or
/// its name is null); -2 rows of pos; -4 connect_end comes before connect_begin; -5 number of
/// connectivities different from that of kinds; -3 a connectivity fails check_IDs with its kind and
/// no bound, or has fewer rows than are written. With every code but -1 the empty file stays open
/// on purpose, as callers have always found it. The other overloads return -199 when memory runs
/// out, with the file untouched. Linear.
KVX_ZELVO_API int ensight_output(const char* filename, const dense2D<double>& pos,
                                 const dense2D<unsigned int>* connect_begin,
                                 const dense2D<unsigned int>* connect_end,
                                 const dense1D<int>& FEs) noexcept;
/// The range holding connectM alone.
KVX_ZELVO_API int ensight_output(const char* filename, const dense2D<double>& pos,
                                 const dense2D<unsigned int>& connectM, element_type FE) noexcept;
/// The range of the two connectivities.
KVX_ZELVO_API int ensight_output(const char* filename, const dense2D<double>& pos,
                                 const dense2D<unsigned int>& connectM1,
                                 const dense2D<unsigned int>& connectM2, element_type FE1,
                                 element_type FE2) noexcept;

} // namespace kvx::zelvo
