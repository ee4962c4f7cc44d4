#pragma once

#include <cstdint>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>

namespace kvx::zelvo {

/// Elements of one kind.
struct element_group {
    dense2D<unsigned int> connectM;
    element_type kind;
    std::uint64_t source; ///< place of the matrix they come from in the range that was split
};

/// Splits the mixed kinds of a range of connectivities, which passed check_IDs with their kinds,
/// into groups of one linear kind each, in ascending number of nodes and with the order of the
/// elements kept. Matrices of other kinds are groups as they are, sharing their elements; empty
/// matrices are left out. Throws std::bad_alloc.
///
/// FEs   one kind for each matrix
std::vector<element_group> split_mixed(const dense2D<unsigned int>* first,
                                       const dense2D<unsigned int>* last, const dense1D<int>& FEs);

} // namespace kvx::zelvo
