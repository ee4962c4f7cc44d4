#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>

#include "foundation/large_blocks.h"
#include "foundation/memory_guard.h"

namespace kvx::zelvo {

/// Mixes the bits of a 64-bit number (the finaliser of SplitMix64, Steele, Lea, Flood 2014).
inline std::uint64_t mixed_bits(std::uint64_t x) {
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return x ^ (x >> 31);
}

/// What every hash for a table begins with, made of the place of the table in memory: nobody can
/// foresee it who makes up values to share a slot. No result depends on it.
inline std::uint64_t table_seed(const void* table) {
    return mixed_bits(reinterpret_cast<std::uintptr_t>(table));
}

/// The part of one coordinate in the hash of a place, which is the sum of the parts.
inline std::uint64_t place_hash(double x, unsigned axis, std::uint64_t seed) {
    return mixed_bits(std::bit_cast<std::uint64_t>(x) + axis * 0x9E3779B97F4A7C15u + seed);
}

/// Open-addressing table of 32-bit values below no_node. What is equal is told by the caller, who
/// keeps the keys; so the table costs 4 bytes a slot, 6 to 12 bytes a value.
class hash_slots {
public:
    /// Room for at most `count` values. Throws std::bad_alloc.
    explicit hash_slots(std::uint64_t count)
        : slots_(slot_count(count), no_node)
        , seed_(table_seed(slots_.data())) {}

    /// What every hash for this table begins with.
    std::uint64_t seed() const { return seed_; }

    /// The stored value v with equal(v); where there is none, `value` is stored and no_node
    /// returned.
    template <class Equal>
    unsigned int find_or_insert(std::uint64_t hash, unsigned int value, Equal&& equal) {
        const std::uint64_t mask = slots_.size() - 1;
        std::uint64_t at = hash & mask;
        while (slots_[at] != no_node) {
            if (equal(slots_[at])) return slots_[at];
            at = (at + 1) & mask;
        }
        slots_[at] = value;
        return no_node;
    }

private:
    static std::uint64_t slot_count(std::uint64_t count) {
        if (count > (std::uint64_t{1} << 40)) throw std::bad_alloc();
        return std::bit_ceil(count + count / 2 + 16);
    }

    std::vector<unsigned int> slots_;
    std::uint64_t seed_;
};

/// Open-addressing table of numbers below a bound, for keys that lie elsewhere in memory: a slot
/// has, in the bits that the number leaves free, a part of the hash, so keys are looked at for
/// little else than what is sought. What is about to be sought may be fetched ahead. 7 bytes a
/// number stored.
class tagged_slots {
public:
    /// For at most `count` numbers below `bound`. Throws std::bad_alloc.
    tagged_slots(std::uint64_t count, std::uint64_t bound)
        : number_bits_(static_cast<unsigned>(std::bit_width(bound)))
        , number_mask_(static_cast<unsigned int>((std::uint64_t{1} << number_bits_) - 1)) {
        need_numbers_for(bound);
        need(slots_.resize(count + count / 4 * 3 + 16, no_node));
    }

    /// What every hash for this table begins with.
    std::uint64_t seed() const { return table_seed(slots_.data()); }

    void prefetch(std::uint64_t hash) const { zelvo::prefetch(&slots_[place(hash)]); }

    /// A guess, cheap and mostly right, at what a search finds first; no_node for nothing.
    unsigned int likely(std::uint64_t hash) const {
        const unsigned int slot = slots_[place(hash)];
        return slot != no_node && has_tag(slot, hash) ? slot & number_mask_ : no_node;
    }

    /// Calls visit(number) for every number that may have been stored with this hash, among them
    /// all that have been, until it answers false. Returns the slot where it ended: the one to
    /// store a number of this hash in, when visit always answered true. Adds to `steps` the slots
    /// looked at.
    template <class Visit>
    std::uint64_t search(std::uint64_t hash, std::uint64_t& steps, Visit&& visit) const {
        std::uint64_t at = place(hash);
        for (;; at = at + 1 == slots_.size() ? 0 : at + 1) {
            ++steps;
            const unsigned int slot = slots_[at];
            if (slot == no_node || (has_tag(slot, hash) && !visit(slot & number_mask_))) return at;
        }
    }

    void store(std::uint64_t at, std::uint64_t hash, unsigned int number) {
        slots_[at] = tag(hash) | number;
    }

private:
    /// The upper bits of a hash tell the place, the lower ones the tag.
    std::uint64_t place(std::uint64_t hash) const {
        return static_cast<std::uint64_t>((static_cast<unsigned __int128>(hash) * slots_.size()) >>
                                          64);
    }
    unsigned int tag(std::uint64_t hash) const {
        return static_cast<unsigned int>(hash) & ~number_mask_;
    }
    bool has_tag(unsigned int slot, std::uint64_t hash) const {
        return ((slot ^ static_cast<unsigned int>(hash)) & ~number_mask_) == 0;
    }

    unsigned number_bits_;
    unsigned int number_mask_;
    dense1D<unsigned int> slots_;
};

} // namespace kvx::zelvo
