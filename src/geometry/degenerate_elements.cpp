#include <kvx/zelvo/degenerate_elements.h>

#include <algorithm>
#include <vector>

#include <kvx/element_type.h>

#include "foundation/memory_guard.h"

namespace kvx::zelvo {

namespace {

/// Up to here comparing all pairs of a column beats sorting it; the linear kinds have no more rows.
constexpr std::uint64_t most_rows_compared = 8;

bool has_equal_pair(const unsigned int* column, std::uint64_t rows, bool strict) {
    for (std::uint64_t i = 1; i < rows; ++i) {
        if (!strict && column[i] == no_node) continue;
        for (std::uint64_t k = 0; k < i; ++k) {
            if (column[k] == column[i]) return true;
        }
    }
    return false;
}

/// The same for many rows; `sorted` is scratch space of as many entries.
bool has_equal_neighbours(const unsigned int* column, std::vector<unsigned int>& sorted,
                          bool strict) {
    std::copy_n(column, sorted.size(), sorted.begin());
    std::sort(sorted.begin(), sorted.end());
    const auto pair = std::adjacent_find(sorted.begin(), sorted.end());
    return pair != sorted.end() && (strict || *pair != no_node); // no_node sorts last
}

} // namespace

int remove_degenerated(dense2D<unsigned int>& conn, dense1D<unsigned int>& new_IDs,
                       bool strict) noexcept {
    return guarded([&] {
        new_IDs.clear();
        if (conn.empty()) return 0;
        const std::uint64_t rows = conn.rows();
        const std::uint64_t elements = conn.cols();
        need_numbers_for(elements);
        std::vector<unsigned int> sorted(rows > most_rows_compared ? rows : 0);
        need(new_IDs.resize(elements, no_node));
        std::uint64_t kept = 0;
        for (std::uint64_t j = 0; j < elements; ++j) {
            const unsigned int* const column = &conn(0, j);
            if (sorted.empty() ? has_equal_pair(column, rows, strict)
                               : has_equal_neighbours(column, sorted, strict))
                continue;
            if (kept != j) std::copy_n(column, rows, &conn(0, kept));
            new_IDs[j] = static_cast<unsigned int>(kept++);
        }
        conn.resize(rows, kept);
        return count_result(elements - kept);
    });
}

} // namespace kvx::zelvo
