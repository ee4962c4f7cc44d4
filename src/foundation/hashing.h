#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include <kvx/element_type.h>

#include "foundation/memory_guard.h"

namespace kvx::zelvo {

/// Mixes the bits of a 64-bit number (the finaliser of SplitMix64, Steele, Lea, Flood 2014).
inline std::uint64_t mixed_bits(std::uint64_t x) {
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return x ^ (x >> 31);
}

/// Open-addressing table of 32-bit values below no_node. What is equal is told by the caller, who
/// keeps the keys; so the table costs 4 bytes a slot, 6 to 12 bytes a value when the number of
/// values was given.
class hash_slots {
public:
    /// Room for `expected` values; grows beyond. Throws std::bad_alloc.
    explicit hash_slots(std::uint64_t expected) { slots_.resize(slot_count(expected), no_node); }

    /// The stored value v with equal(v), or no_node.
    template <class Equal>
    unsigned int find(std::uint64_t hash, Equal&& equal) const {
        return slots_[place(hash, equal)];
    }

    /// The stored value v with equal(v); where there is none, `value` is stored and no_node
    /// returned. hash_of(v) repeats the hash of a stored value when the table grows.
    template <class Equal, class HashOf>
    unsigned int find_or_insert(std::uint64_t hash, unsigned int value, Equal&& equal,
                                HashOf&& hash_of) {
        const std::uint64_t at = place(hash, equal);
        if (slots_[at] != no_node) return slots_[at];
        slots_[at] = value;
        if (++count_ > slots_.size() - slots_.size() / 4) grow(hash_of);
        return no_node;
    }

    /// Stores `value` in place of the stored value that equals it, or anew.
    template <class Equal, class HashOf>
    void assign(std::uint64_t hash, unsigned int value, Equal&& equal, HashOf&& hash_of) {
        const std::uint64_t at = place(hash, equal);
        const bool fresh = slots_[at] == no_node;
        slots_[at] = value;
        if (fresh && ++count_ > slots_.size() - slots_.size() / 4) grow(hash_of);
    }

private:
    static std::uint64_t slot_count(std::uint64_t expected) {
        if (expected > (std::uint64_t{1} << 40)) throw std::bad_alloc();
        return std::bit_ceil(expected + expected / 2 + 16);
    }

    template <class Equal>
    std::uint64_t place(std::uint64_t hash, Equal&& equal) const {
        const std::uint64_t mask = slots_.size() - 1;
        std::uint64_t at = hash & mask;
        while (slots_[at] != no_node && !equal(slots_[at]))
            at = (at + 1) & mask;
        return at;
    }

    template <class HashOf>
    void grow(HashOf&& hash_of) {
        std::vector<unsigned int> old(2 * slots_.size(), no_node);
        old.swap(slots_);
        for (const unsigned int value : old) {
            if (value == no_node) continue;
            slots_[place(hash_of(value), [](unsigned int) { return false; })] = value;
        }
    }

    std::vector<unsigned int> slots_;
    std::uint64_t count_ = 0;
};

} // namespace kvx::zelvo
