#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace kvx::zelvo {

/// Items (sides, edges) are numbered in 32 bits.
inline constexpr std::uint64_t most_items = std::numeric_limits<unsigned int>::max();

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
    return std::equal(a.begin(), a.end() - 1, b.begin());
}

/// Sorts one bucket. Most hold a handful of items; the bucket of a hub may hold them all.
template <std::size_t K>
void sort_bucket(bucket_item<K>* first, bucket_item<K>* last) {
    constexpr std::ptrdiff_t handful = 32;
    if (last - first > handful) {
        std::sort(first, last);
        return;
    }
    for (auto next = first; next != last; ++next) {
        const bucket_item<K> item = *next;
        auto place = next;
        for (; place != first && item < place[-1]; --place)
            *place = place[-1];
        *place = item;
    }
}

/// Groups numbered items by their sets of K nodes (with repetitions; shorter sets are padded with a
/// number that is no node of the others). The groups come in no particular order, the items of a
/// group in the order of their numbers.
///
/// node_count   every smallest node of an item is below it; one number is stored for each
/// walk         walk(visit) calls visit(number, std::array of K nodes) for every item, in ascending
///              order of the numbers and twice the same; at most most_items of them
/// visit        called with the std::span of bucket_item of every group
///
/// Counting sort by the smallest node, then a sort of every bucket: no hash that an unlucky
/// numbering defeats, and memory is read in the order of the mesh's own numbering. Linear in items
/// and node_count where buckets are small, n log n at worst. Throws std::bad_alloc.
template <std::size_t K, class Walk, class Visit>
void group_by_nodes(std::uint64_t node_count, const Walk& walk, const Visit& visit) {
    std::vector<unsigned int> ends(node_count);
    walk([&ends](unsigned int, std::array<unsigned int, K> nodes) {
        sort_nodes(nodes);
        ++ends[nodes[0]];
    });
    unsigned int total = 0;
    for (unsigned int& end : ends)
        total += std::exchange(end, total);

    // each entry starts as the begin of its bucket and has become its end when all are placed
    const auto items = std::make_unique_for_overwrite<bucket_item<K>[]>(total);
    walk([&](unsigned int number, std::array<unsigned int, K> nodes) {
        sort_nodes(nodes);
        bucket_item<K>& item = items[ends[nodes[0]]++];
        std::copy(nodes.begin() + 1, nodes.end(), item.begin());
        item.back() = number;
    });

    bucket_item<K>* first = items.get();
    for (const unsigned int end : ends) {
        bucket_item<K>* const last = items.get() + end;
        sort_bucket(first, last);
        while (first != last) {
            const bucket_item<K>* const group = first;
            while (++first != last && same_nodes(*group, *first)) {
            }
            visit(std::span<const bucket_item<K>>(group, first));
        }
    }
}

} // namespace kvx::zelvo
