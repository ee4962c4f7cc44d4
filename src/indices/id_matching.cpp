#include <kvx/zelvo/id_matching.h>

#include <algorithm>
#include <array>

#include "foundation/hashing.h"
#include "foundation/large_blocks.h"
#include "foundation/memory_guard.h"

namespace kvx::zelvo {

namespace {

/// An element as a sequence of nodes: the first `turned` ones cyclically from `start`, the others
/// as they stand.
struct turned_column {
    const unsigned int* nodes;
    std::uint64_t rows;
    std::uint64_t turned = 0;
    std::uint64_t start = 0;

    turned_column(const dense2D<unsigned int>& conn, std::uint64_t j, bool exact_order)
        : nodes(conn.data() + j * conn.ld())
        , rows(conn.rows()) {
        if (exact_order) return;
        const unsigned int* const end = std::find(nodes, nodes + rows, no_node);
        turned = static_cast<std::uint64_t>(end - nodes);
        start = static_cast<std::uint64_t>(std::max_element(nodes, end) - nodes);
    }

    unsigned int operator[](std::uint64_t k) const {
        if (k >= turned) return nodes[k];
        const std::uint64_t place = start + k;
        return nodes[place < turned ? place : place - turned];
    }
    bool operator==(const turned_column& other) const {
        for (std::uint64_t k = 0; k < rows; ++k) {
            if ((*this)[k] != other[k]) return false;
        }
        return true;
    }
    std::uint64_t hash(std::uint64_t seed) const {
        std::uint64_t mixed = seed;
        for (std::uint64_t k = 0; k < rows; ++k)
            mixed = mixed_bits(mixed ^ (*this)[k]);
        return mixed;
    }
};

/// Fills the maps between two collections. find(take) calls take(i, j) for every item j of the second
/// one, in ascending order, that is item i of the first one.
template <class Find>
int match(std::uint64_t first_count, std::uint64_t second_count,
          dense1D<unsigned int>& second_in_first, dense1D<unsigned int>& first_in_second,
          Find&& find) {
    dense1D<unsigned int> found(second_count, no_node);
    dense1D<unsigned int> found_by(first_count, no_node);
    find([&](unsigned int i, std::uint64_t j) {
        found[j] = i;
        found_by[i] = static_cast<unsigned int>(j);
    });
    second_in_first.swap(found);
    first_in_second.swap(found_by);
    return 0;
}

/// Calls use(i, hash(i)) for every i below count. The slots of some, and what they seem to hold, are
/// fetched before the first of them is used.
template <class Hash, class Address, class Use>
void each_fetched(const tagged_slots& slots, std::uint64_t count, Hash&& hash, Address&& address,
                  Use&& use) {
    std::array<std::uint64_t, 32> hashes;
    for (std::uint64_t first = 0; first < count; first += hashes.size()) {
        const std::uint64_t n = std::min<std::uint64_t>(hashes.size(), count - first);
        for (std::uint64_t k = 0; k < n; ++k) {
            hashes[k] = hash(first + k);
            slots.prefetch(hashes[k]);
        }
        for (std::uint64_t k = 0; k < n; ++k) {
            const unsigned int other = slots.likely(hashes[k]);
            if (other != no_node) prefetch(address(other));
        }
        for (std::uint64_t k = 0; k < n; ++k)
            use(first + k, hashes[k]);
    }
}

} // namespace

int get_IDs(const dense1D<unsigned int>& A, const dense1D<unsigned int>& B,
            dense1D<unsigned int>& B_in_A, dense1D<unsigned int>& A_in_B) noexcept {
    const dense1D<unsigned int> first(A);
    const dense1D<unsigned int> second(B);
    B_in_A.clear();
    A_in_B.clear();
    return guarded([&] {
        need(std::max(first.size(), second.size()) < no_node); // places are 32-bit
        tagged_slots places(first.size(), first.size());
        std::uint64_t steps = 0;
        const auto hash_in = [seed = places.seed()](const dense1D<unsigned int>& v) {
            return [&v, seed](std::uint64_t i) { return mixed_bits(seed + v[i]); };
        };
        const auto address = [&](unsigned int i) { return &first[i]; };
        each_fetched(places, first.size(), hash_in(first), address,
                     [&](std::uint64_t i, std::uint64_t h) {
                         if (first[i] == no_node) return;
                         const auto differs = [&](unsigned int k) { return first[k] != first[i]; };
                         places.store(places.search(h, steps, differs), h,
                                      static_cast<unsigned int>(i)); // the last one counts
                     });
        return match(first.size(), second.size(), B_in_A, A_in_B, [&](auto&& take) {
            each_fetched(places, second.size(), hash_in(second), address,
                         [&](std::uint64_t j, std::uint64_t h) {
                             places.search(h, steps, [&](unsigned int i) {
                                 if (first[i] != second[j]) return true;
                                 take(i, j);
                                 return false;
                             });
                         });
        });
    });
}

int get_IDs(const dense2D<unsigned int>& E1, const dense2D<unsigned int>& E2,
            dense1D<unsigned int>& E2_in_E1, dense1D<unsigned int>& E1_in_E2,
            bool exact_order) noexcept {
    const dense2D<unsigned int> first(E1);
    const dense2D<unsigned int> second(E2);
    E2_in_E1.clear();
    E1_in_E2.clear();
    if (first.rows() != second.rows()) return -2;
    return guarded([&] {
        need(std::max(first.cols(), second.cols()) < no_node);
        const auto element = [exact_order](const dense2D<unsigned int>& E, std::uint64_t j) {
            return turned_column(E, j, exact_order);
        };
        tagged_slots places(first.cols(), first.cols());
        std::uint64_t steps = 0;
        const auto hash_in = [&](const dense2D<unsigned int>& E) {
            return [&](std::uint64_t j) { return element(E, j).hash(places.seed()); };
        };
        const auto address = [&](unsigned int i) { return first.data() + i * first.ld(); };
        each_fetched(places, first.cols(), hash_in(first), address,
                     [&](std::uint64_t i, std::uint64_t h) {
                         bool known = false; // the first one counts
                         const std::uint64_t at = places.search(h, steps, [&](unsigned int k) {
                             known = element(first, k) == element(first, i);
                             return !known;
                         });
                         if (!known) places.store(at, h, static_cast<unsigned int>(i));
                     });
        return match(first.cols(), second.cols(), E2_in_E1, E1_in_E2, [&](auto&& take) {
            each_fetched(places, second.cols(), hash_in(second), address,
                         [&](std::uint64_t j, std::uint64_t h) {
                             const turned_column sought = element(second, j);
                             places.search(h, steps, [&](unsigned int i) {
                                 if (!(element(first, i) == sought)) return true;
                                 take(i, j);
                                 return false;
                             });
                         });
        });
    });
}

} // namespace kvx::zelvo
