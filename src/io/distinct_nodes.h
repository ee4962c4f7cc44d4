#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <span>

#include <kvx/dense_array.h>

#include "foundation/hashing.h"
#include "foundation/large_blocks.h"
#include "foundation/memory_guard.h"

namespace kvx::zelvo {

/// Numbers nodes as they are read, equal coordinates alike, and gathers one column of coordinates
/// for each number. Equal is equal bit by bit, so that nothing is lost; nodes with a coordinate
/// that is no finite number have numbers of their own.
class distinct_nodes {
public:
    static constexpr std::size_t most_at_once = 96;
    using coordinates = std::array<double, 3>;

    /// The matrix is empty; `expected` is how many distinct nodes there may be.
    distinct_nodes(dense2D<double>& pos, std::uint64_t expected)
        : pos_(pos)
        , most_(std::max<std::uint64_t>(expected, 1024))
        , slots_(most_, most_) {
        need(pos_.reserve(3, expected));
    }

    /// Numbers at most `most_at_once` nodes.
    void number(std::span<const coordinates> nodes, unsigned int* numbers) {
        make_room(nodes.size());
        std::array<std::uint64_t, most_at_once> hashes;
        const std::uint64_t seed = slots_.seed();
        for (std::size_t k = 0; k < nodes.size(); ++k) {
            hashes[k] = hash(nodes[k].data(), seed);
            slots_.prefetch(hashes[k]);
        }
        for (std::size_t k = 0; k < nodes.size(); ++k) {
            const unsigned int other = slots_.likely(hashes[k]);
            if (other != no_node) prefetch(x_ + 3 * std::uint64_t{other});
        }
        for (std::size_t k = 0; k < nodes.size(); ++k)
            numbers[k] = number(nodes[k].data(), hashes[k]);
    }

    /// Cuts off the room that was not used; returns the number of distinct nodes.
    std::uint64_t finish() {
        if (count_ == 0) {
            pos_.clear();
        } else {
            pos_.resize(3, count_);
        }
        return count_;
    }

private:
    static bool is_finite(const double* x) {
        return (x[0] - x[0]) + (x[1] - x[1]) + (x[2] - x[2]) == 0;
    }
    static bool same_bits(const double* a, const double* b) {
        return std::equal(a, a + 3, b, [](double p, double q) {
            return std::bit_cast<std::uint64_t>(p) == std::bit_cast<std::uint64_t>(q);
        });
    }
    static std::uint64_t hash(const double* x, std::uint64_t seed) {
        return place_hash(x[0], 0, seed) + place_hash(x[1], 1, seed) + place_hash(x[2], 2, seed);
    }

    unsigned int number(const double* x, std::uint64_t hash) {
        unsigned int found = no_node;
        if (is_finite(x)) {
            std::uint64_t steps = 0;
            const std::uint64_t end = slots_.search(hash, steps, [&](unsigned int other) {
                if (!same_bits(x, x_ + 3 * std::uint64_t{other})) return true;
                found = other;
                return false;
            });
            if (found != no_node) return found;
            slots_.store(end, hash, count_);
        }
        std::copy_n(x, 3, x_ + 3 * std::uint64_t{count_});
        return count_++;
    }

    /// Room doubles; what is filled in advance is a small step only, so that the memory in use
    /// follows the nodes that are there.
    void make_room(std::uint64_t n) {
        constexpr std::uint64_t step = 1024;
        const std::uint64_t wanted = count_ + n;
        if (wanted > most_) {
            most_ = std::min(2 * most_, std::uint64_t{no_node});
            slots_ = tagged_slots(0, 0); // before the next one
            slots_ = tagged_slots(most_, most_);
            for (unsigned int other = 0; other < count_; ++other)
                store_again(other);
        }
        if (wanted <= pos_.cols()) return;
        if (wanted > pos_.col_capacity()) need(pos_.reserve(3, 2 * wanted + step));
        need(pos_.resize(3, std::min(wanted + step, pos_.col_capacity())));
        x_ = pos_.data();
    }
    void store_again(unsigned int node) {
        const double* const x = x_ + 3 * std::uint64_t{node};
        if (!is_finite(x)) return;
        std::uint64_t steps = 0;
        const std::uint64_t own = hash(x, slots_.seed());
        slots_.store(slots_.search(own, steps, [](unsigned int) { return true; }), own, node);
    }

    dense2D<double>& pos_;
    double* x_ = nullptr;
    unsigned int count_ = 0;
    std::uint64_t most_;
    tagged_slots slots_;
};

} // namespace kvx::zelvo
