#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "foundation/hashing.h"
#include "foundation/large_blocks.h"

namespace kvx::zelvo {

/// Items (sides, edges) are numbered in 32 bits.
inline constexpr std::uint64_t most_items = std::numeric_limits<unsigned int>::max();

/// Items with the same nodes: the lowest number, the next one if there is any, how many they are.
struct item_group {
    unsigned int first;
    unsigned int second;
    unsigned int size;
};

/// An item in the bucket of its smallest node: its K - 1 other nodes, ascending, then its number.
/// The order of these arrays is the order by nodes, then by number.
template <std::size_t K>
using bucket_item = std::array<unsigned int, K>;

template <std::size_t K>
void sort_nodes(std::array<unsigned int, K>& nodes) {
    for (std::size_t sorted = K; sorted > 1; --sorted) {
        for (std::size_t i = 0; i + 1 < sorted; ++i) {
            const unsigned int low = std::min(nodes[i], nodes[i + 1]); // no branch to mispredict
            nodes[i + 1] = std::max(nodes[i], nodes[i + 1]);
            nodes[i] = low;
        }
    }
}

template <std::size_t K>
bool same_nodes(const bucket_item<K>& a, const bucket_item<K>& b) {
    bool same = true;
    for (std::size_t i = 0; i + 1 < K; ++i)
        same &= a[i] == b[i]; // no branch to mispredict
    return same;
}

/// Finds the groups of one bucket after the other.
template <std::size_t K>
class bucket_groups {
public:
    bucket_groups() {
        std::uint64_t seed = table_seed(this);
        for (std::uint64_t& factor : factors_)
            factor = (seed = mixed_bits(seed)) | 1;
    }

    /// Calls visit(item_group) for every group of a bucket, whose items stand by their numbers.
    template <class Visit>
    void find(bucket_item<K>* first, bucket_item<K>* last, const Visit& visit) {
        if (static_cast<std::size_t>(last - first) > most_hashed) {
            find_sorted(first, last, visit);
            return;
        }
        unsigned int count = 0;
        for (const bucket_item<K>* item = first; item != last; ++item) {
            std::size_t at = hash(*item) % slots_.size();
            unsigned int number = slots_[at] - base_;
            while (number < count && !same_nodes<K>(groups_[number].first, *item)) {
                at = (at + 1) % slots_.size();
                number = slots_[at] - base_;
            }
            if (number >= count) {
                slots_[at] = base_ + count;
                groups_[count++] = {*item, 0, 1};
            } else {
                same_items& g = groups_[number];
                if (g.size == 1) g.second = item->back();
                ++g.size;
            }
        }
        for (unsigned int g = 0; g < count; ++g)
            visit(item_group{groups_[g].first.back(), groups_[g].second, groups_[g].size});
        base_ += count;
    }

private:
    static constexpr std::size_t most_hashed = 128;

    struct same_items {
        bucket_item<K> first;
        unsigned int second; ///< number of the next item
        unsigned int size;
    };

    std::size_t hash(const bucket_item<K>& item) const {
        std::uint64_t h = 0;
        for (std::size_t i = 0; i + 1 < K; ++i)
            h += item[i] * factors_[i];
        return h >> 40;
    }

    /// The bucket of a hub may hold all items.
    template <class Visit>
    void find_sorted(bucket_item<K>* first, bucket_item<K>* last, const Visit& visit) {
        std::sort(first, last);
        while (first != last) {
            const bucket_item<K>* const group = first;
            while (++first != last && same_nodes<K>(*group, *first)) {
            }
            const auto size = static_cast<unsigned int>(first - group);
            visit(item_group{group[0].back(), size > 1 ? group[1].back() : 0, size});
        }
    }

    // Groups of the bucket at hand are numbered from base_ on, so that slots of earlier ones count
    // as empty without being emptied. There are fewer groups than numbers of items.
    std::array<std::uint64_t, K - 1> factors_{}; ///< that nobody can foresee
    std::array<unsigned int, 2 * most_hashed> slots_{};
    unsigned int base_ = 1;
    std::array<same_items, most_hashed> groups_;
};

/// Groups numbered items by their sets of K nodes (with repetitions; shorter sets are padded with a
/// number that is no node of the others). The groups come in no particular order.
///
/// node_count   every smallest node of an item is below it; two numbers are stored for each
/// walk         walk(visit) calls visit(number, std::array of K nodes) for every item, in ascending
///              order of the numbers and twice the same; at most most_items of them
/// visit        called with the item_group of every group
///
/// Counting sort by the smallest node, then a small table for every bucket, or a sort where it is
/// large: no hash that an unlucky numbering defeats. The buckets lie in the order in which the
/// items meet their nodes, so that memory is walked in the order of the elements, however the nodes
/// are numbered. Linear where buckets are small, n log n at worst. Throws std::bad_alloc.
template <std::size_t K, class Walk, class Visit>
void group_by_nodes(std::uint64_t node_count, const Walk& walk, const Visit& visit) {
    // by node: how many items its bucket has, then where the next one goes
    const auto ends_memory = make_zero_scratch<unsigned int>(node_count);
    // by bucket: its node, then where it ends; and one place more
    const auto buckets_memory = make_scratch<unsigned int>(node_count + 1);
    unsigned int* const ends = ends_memory.get();
    unsigned int* const buckets = buckets_memory.get();
    std::uint64_t bucket_count = 0;
    walk([&bucket_count, ends, buckets](unsigned int, const std::array<unsigned int, K>& nodes) {
        const unsigned int node = *std::min_element(nodes.begin(), nodes.end());
        buckets[bucket_count] = node;
        bucket_count += ends[node]++ == 0; // no branch to mispredict
    });
    unsigned int total = 0;
    for (std::uint64_t b = 0; b < bucket_count; ++b) {
        const unsigned int begin = total;
        total += std::exchange(ends[buckets[b]], begin);
        buckets[b] = total;
    }

    const auto items_memory = make_scratch<bucket_item<K>>(total);
    bucket_item<K>* const items = items_memory.get();
    walk([ends, items](unsigned int number, std::array<unsigned int, K> nodes) {
        sort_nodes(nodes);
        bucket_item<K>& item = items[ends[nodes[0]]++];
        for (std::size_t i = 0; i + 1 < K; ++i)
            item[i] = nodes[i + 1]; // out of registers, where std::copy goes through memory
        item.back() = number;
    });

    bucket_groups<K> groups;
    bucket_item<K>* first = items;
    for (std::uint64_t b = 0; b < bucket_count; ++b) {
        bucket_item<K>* const last = items + buckets[b];
        groups.find(first, last, visit);
        first = last;
    }
}

} // namespace kvx::zelvo
