#pragma once

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Matches the entries of two vectors of indices. no_node matches nothing.
///
/// A, B     entries to match, in any order. Of a value that occurs twice in A the last place counts
/// B_in_A   replaced: for each place of B the place of its value in A, no_node where there is none
/// A_in_B   replaced: the same from A to B, no_node at places of A that were not matched; the last
///          place counts of a value that occurs twice in B. The outputs may be views of the inputs
///
/// Returns 0, or -199 when memory runs out or one has more than 4294967294 entries, with the outputs
/// empty. Expected linear.
KVX_ZELVO_API int get_IDs(const dense1D<unsigned int>& A, const dense1D<unsigned int>& B,
                          dense1D<unsigned int>& B_in_A, dense1D<unsigned int>& A_in_B) noexcept;

/// Matches the elements of two connectivities.
///
/// E1, E2       nodes x elements. Of equal elements of E1 the first counts and only it is matched;
///              of equal elements of E2 E1_in_E2 names the last
/// E2_in_E1     replaced: for each element of E2 its place in E1, no_node where there is none
/// E1_in_E2     replaced: the same from E1 to E2. The outputs may be views of the inputs
/// exact_order  true: equal row by row. False: equal when the nodes before the first no_node are
///              turned cyclically until the largest (of equal ones the first) leads; that is the
///              same element with the same orientation from any starting node, but not a reversed
///              one. The rows from the first no_node on stay in place and must be equal
///
/// Returns 0, or -2 when the row counts differ, or -199 when memory runs out or one has more than
/// 4294967294 columns; the outputs are empty then. Expected linear in the number of entries.
KVX_ZELVO_API int get_IDs(const dense2D<unsigned int>& E1, const dense2D<unsigned int>& E2,
                          dense1D<unsigned int>& E2_in_E1, dense1D<unsigned int>& E1_in_E2,
                          bool exact_order) noexcept;

} // namespace kvx::zelvo
