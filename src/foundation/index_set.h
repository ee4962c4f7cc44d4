#pragma once

#include <cstdint>
#include <vector>

#include "foundation/hashing.h"

namespace kvx::zelvo {

/// Set of node indices. One bit per index up to the largest one where that is no more than a small
/// multiple of the number of entries, else a hash table, so that no stray index sizes an array.
class index_set {
public:
    /// For indices up to `largest`, of which at most `entries` are inserted.
    index_set(unsigned int largest, std::uint64_t entries)
        : dense_(largest / 128 <= entries)
        , bits_(dense_ ? largest / 64 + 1 : 0)
        , table_(dense_ ? 0 : entries) {}

    /// Adds an index other than no_node; whether it was new.
    bool insert(unsigned int index) {
        if (dense_) {
            std::uint64_t& word = bits_[index / 64];
            const std::uint64_t bit = std::uint64_t{1} << (index % 64);
            const bool fresh = (word & bit) == 0;
            word |= bit;
            return fresh;
        }
        const std::uint64_t hash = mixed_bits(table_.seed() + index);
        const auto equal = [index](unsigned int other) { return other == index; };
        return table_.find_or_insert(hash, index, equal) == no_node;
    }

private:
    bool dense_;
    std::vector<std::uint64_t> bits_;
    hash_slots table_;
};

} // namespace kvx::zelvo
