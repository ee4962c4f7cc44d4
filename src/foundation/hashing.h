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
/// keeps the keys; so the table costs 4 bytes a slot, 6 to 12 bytes a value.
class hash_slots {
public:
    /// Room for at most `count` values. Throws std::bad_alloc.
    explicit hash_slots(std::uint64_t count)
        : slots_(slot_count(count), no_node)
        , seed_(mixed_bits(reinterpret_cast<std::uintptr_t>(slots_.data()))) {}

    /// What every hash for this table begins with. Made of the place of the table in memory, which
    /// nobody can foresee who makes up values to share a slot; no result depends on it.
    std::uint64_t seed() const { return seed_; }

    /// The stored value v with equal(v), or no_node.
    template <class Equal>
    unsigned int find(std::uint64_t hash, Equal&& equal) const {
        return slots_[place(hash, equal)];
    }

    /// The stored value v with equal(v); where there is none, `value` is stored and no_node
    /// returned.
    template <class Equal>
    unsigned int find_or_insert(std::uint64_t hash, unsigned int value, Equal&& equal) {
        const std::uint64_t at = place(hash, equal);
        if (slots_[at] != no_node) return slots_[at];
        slots_[at] = value;
        return no_node;
    }

    /// Stores `value` in place of the stored value that equals it, or anew.
    template <class Equal>
    void assign(std::uint64_t hash, unsigned int value, Equal&& equal) {
        slots_[place(hash, equal)] = value;
    }

private:
    static std::uint64_t slot_count(std::uint64_t count) {
        if (count > (std::uint64_t{1} << 40)) throw std::bad_alloc();
        return std::bit_ceil(count + count / 2 + 16);
    }

    template <class Equal>
    std::uint64_t place(std::uint64_t hash, Equal&& equal) const {
        const std::uint64_t mask = slots_.size() - 1;
        std::uint64_t at = hash & mask;
        while (slots_[at] != no_node && !equal(slots_[at]))
            at = (at + 1) & mask;
        return at;
    }

    std::vector<unsigned int> slots_;
    std::uint64_t seed_;
};

} // namespace kvx::zelvo
