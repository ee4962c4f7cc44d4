#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// The version of the library as text, "4.2".
KVX_ZELVO_API const char* version() noexcept;

/// Largest entry other than no_node; no_node for an empty array, 0 when every entry is no_node.
/// Linear.
KVX_ZELVO_API unsigned int max_ID(const dense1D<unsigned int>& v) noexcept;
KVX_ZELVO_API unsigned int max_ID(const dense2D<unsigned int>& m) noexcept;

/// Whether every entry is no_node or below n. True for an empty array and for n = no_node. Stops at
/// the first entry (column) that fails. Linear.
KVX_ZELVO_API bool check_IDs(const dense1D<unsigned int>& v, unsigned int n) noexcept;
KVX_ZELVO_API bool check_IDs(const dense2D<unsigned int>& m, unsigned int n) noexcept;

/// Whether a connectivity fits an element kind and names nodes below n only. In this order:
/// - an empty matrix is valid, whatever the kind;
/// - ET_FACE_MIX: 3 or 4 rows; rows 0 to 2 below n, row 3 below n or no_node;
/// - ET_SOLID_MIX: 4, 5, 6 or 8 rows; the first no_node may stand in row 4, 5 or 6 and everything
///   behind it is no_node too; other entries below n;
/// - any other kind: valid at once for n = no_node, row count included; else the row count is the
///   kind's node count and every entry below n. A value that is no kind is invalid for other n.
/// Unlike the forms without a kind, fixed kinds may not hold no_node. Stops at the first column
/// that fails. Linear.
KVX_ZELVO_API bool check_IDs(const dense2D<unsigned int>& conn, element_type t,
                             unsigned int n) noexcept;

/// Adds s to every entry other than no_node, in unsigned 32-bit arithmetic (wraps below 0).
/// Returns 0. Linear.
KVX_ZELVO_API int shift_indices(dense1D<unsigned int>& v, int s) noexcept;

/// The same for a connectivity of kind t. Only the mixed kinds keep no_node: the fixed kinds have
/// no padding, so there no_node is shifted too and wraps to s - 1. Returns 0. Linear.
KVX_ZELVO_API int shift_indices(dense2D<unsigned int>& conn, int s, element_type t) noexcept;

/// Replaces every entry e below the size of map by map[e]; other entries stay. The map is taken as
/// it is on entry, also when it overlaps the array in memory; where that needs a copy of the map
/// and memory runs out, nothing changes. Linear.
KVX_ZELVO_API void change_indices(dense1D<unsigned int>& v,
                                  const dense1D<unsigned int>& map) noexcept;
KVX_ZELVO_API void change_indices(dense2D<unsigned int>& m,
                                  const dense1D<unsigned int>& map) noexcept;

/// Scatters: entry k moves to place perm[k], for the k below both sizes whose perm[k] is below the
/// size of v and differs from k. Places that no entry moves to keep their value; the storage of v
/// is kept. When memory runs out v stays as it was. Linear.
KVX_ZELVO_API void permutation(dense1D<unsigned int>& v,
                               const dense1D<unsigned int>& perm) noexcept;
KVX_ZELVO_API void permutation(dense1D<double>& v, const dense1D<unsigned int>& perm) noexcept;

/// Appends the distinct node indices of a range of connectivities to out, in order of first
/// appearance (matrix by matrix, column by column, row by row), no_node left out. What out held
/// before stays and does not count for duplicates. out may share storage with the input.
///
/// out           appended to; when memory runs out the growth stops silently
/// first, last   half-open range of matrices
///
/// Returns 0 (also for an empty range), or -3 when last comes before first, with out untouched.
/// Expected linear.
KVX_ZELVO_API int unique_indices(dense1D<unsigned int>& out, const dense2D<unsigned int>* first,
                                 const dense2D<unsigned int>* last) noexcept;
/// The range holding conn alone. Returns 0.
KVX_ZELVO_API int unique_indices(dense1D<unsigned int>& out,
                                 const dense2D<unsigned int>& conn) noexcept;
/// The entries of a vector, without those of `excluded`. Returns 0.
KVX_ZELVO_API int unique_indices(dense1D<unsigned int>& out, const dense1D<unsigned int>& v,
                                 const dense1D<unsigned int>& excluded) noexcept;
/// The entries of a vector. Returns 0.
KVX_ZELVO_API int unique_indices(dense1D<unsigned int>& out,
                                 const dense1D<unsigned int>& v) noexcept;

/// Number of distinct entries other than no_node of a half-open range of connectivities. Returns
/// the count (at most 2147483647; 0 for an empty range), -2 when last comes before first, -199 when
/// memory runs out. Expected linear.
KVX_ZELVO_API int count_unique_indices(const dense2D<unsigned int>* first,
                                       const dense2D<unsigned int>* last) noexcept;
KVX_ZELVO_API int count_unique_indices(const dense2D<unsigned int>& conn) noexcept;

} // namespace kvx::zelvo
