#pragma once

#include <array>
#include <cstdint>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/node_indices.h>

#include "foundation/matrix_range.h"
#include "foundation/memory_guard.h"

/// What the writers of ranges of connectivities have in common.
namespace kvx::zelvo {

/// Checks a range of connectivities and their kinds against the number of nodes; no_node leaves
/// the indices of fixed kinds unchecked. Returns 0, or, in the order checked: -4 the range runs
/// backwards; -5 number of kinds; -3 a connectivity fails check_IDs or has fewer rows than
/// rows_read(kind), which check_IDs does not see without a bound.
template <class RowsRead>
int check_range(const dense2D<unsigned int>* first, const dense2D<unsigned int>* last,
                const dense1D<int>& FEs, unsigned int node_bound, RowsRead&& rows_read) {
    if (is_reversed(first, last)) return -4;
    if (static_cast<std::uint64_t>(last - first) != FEs.size()) return -5;
    for (std::uint64_t i = 0; i < FEs.size(); ++i) {
        const auto kind = static_cast<element_type>(FEs[i]);
        if (!check_IDs(first[i], kind, node_bound)) return -3;
        if (!first[i].empty() && first[i].rows() < rows_read(kind)) return -3;
    }
    return 0;
}

/// write(first, last, FEs) with the range holding one matrix.
template <class Write>
int write_one(const dense2D<unsigned int>& connectM, element_type FE, Write&& write) noexcept {
    return guarded([&] { return write(&connectM, &connectM + 1, dense1D<int>(1, FE)); });
}

/// write(first, last, FEs) with the range of two matrices.
template <class Write>
int write_two(const dense2D<unsigned int>& connectM1, const dense2D<unsigned int>& connectM2,
              element_type FE1, element_type FE2, Write&& write) noexcept {
    return guarded([&] {
        const std::array<dense2D<unsigned int>, 2> matrices = {connectM1, connectM2};
        dense1D<int> FEs(2, FE1);
        FEs[1] = FE2;
        return write(matrices.data(), matrices.data() + 2, FEs);
    });
}

} // namespace kvx::zelvo
