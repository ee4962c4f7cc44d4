#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>

#include "foundation/entry_runs.h"
#include "foundation/memory_guard.h"

namespace kvx::zelvo {

/// What an entry no_node of a connectivity stands for.
enum class no_node_entries { absent, ordinary };

/// Makes the node indices of connectivities fit to size an array: returns the length of an array
/// over them. Where the largest index is out of proportion to the number of entries (or no_node an
/// ordinary index), the views are replaced by copies in which every index gave way to its rank;
/// absent entries stay no_node. Equal indices stay equal and different ones different. Linear, but
/// for a sort of the entries in the second case. Throws std::bad_alloc.
inline std::uint64_t compact_indices(std::span<dense2D<unsigned int>> views,
                                     no_node_entries meaning) {
    // An array of 16 bytes an entry is still cheaper to fill than the entries are to sort.
    constexpr std::uint64_t in_proportion = 4;
    std::vector<unsigned int> ranked;
    std::uint64_t length = 0;
    std::uint64_t entries = 0;
    const auto counts = [meaning](unsigned int e) {
        return e != no_node || meaning == no_node_entries::ordinary;
    };
    const auto every_entry = [&views](auto&& visit) {
        for (dense2D<unsigned int>& m : views) {
            if (m.empty()) continue; // of however many columns
            for (std::uint64_t j = 0; j < m.cols(); ++j) {
                unsigned int* const column = m.data() + j * m.ld();
                for (std::uint64_t i = 0; i < m.rows(); ++i)
                    visit(column[i]);
            }
        }
    };

    const unsigned int shift = meaning == no_node_entries::absent ? 1 : 0; // no_node becomes 0
    for (const dense2D<unsigned int>& m : views) {
        entries += m.rows() * m.cols();
        if (!m.empty())
            length = std::max(length, std::uint64_t{largest_shifted(m, shift)} + 1 - shift);
    }
    if (length <= no_node && length / in_proportion <= entries) return length;

    ranked.reserve(entries);
    every_entry([&](unsigned int e) {
        if (counts(e)) ranked.push_back(e);
    });
    std::sort(ranked.begin(), ranked.end());
    ranked.erase(std::unique(ranked.begin(), ranked.end()), ranked.end());
    for (dense2D<unsigned int>& m : views)
        need(m.copy(dense2D<unsigned int>(m)));
    every_entry([&](unsigned int& e) {
        if (!counts(e)) return;
        const auto place = std::lower_bound(ranked.begin(), ranked.end(), e);
        e = static_cast<unsigned int>(place - ranked.begin());
    });
    return ranked.size();
}

} // namespace kvx::zelvo
