#include <kvx/zelvo/id_matching.h>

#include <algorithm>

#include "foundation/hashing.h"
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

/// Fills the maps between two collections. place_of(j) is the place in the first one of item j of
/// the second, or no_node.
template <class PlaceOf>
int match(std::uint64_t first_count, std::uint64_t second_count, PlaceOf&& place_of,
          dense1D<unsigned int>& second_in_first, dense1D<unsigned int>& first_in_second) {
    dense1D<unsigned int> found(second_count, no_node);
    dense1D<unsigned int> found_by(first_count, no_node);
    for (std::uint64_t j = 0; j < second_count; ++j) {
        const unsigned int i = place_of(j);
        if (i == no_node) continue;
        found[j] = i;
        found_by[i] = static_cast<unsigned int>(j);
    }
    second_in_first.swap(found);
    first_in_second.swap(found_by);
    return 0;
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
        const unsigned int* const values = first.data();
        const auto holds = [=](unsigned int value) {
            return [=](unsigned int i) { return values[i] == value; };
        };
        hash_slots places(first.size());
        const auto hash = [&](unsigned int value) { return mixed_bits(places.seed() + value); };
        for (unsigned int i = 0; i < first.size(); ++i) {
            if (values[i] != no_node) places.assign(hash(values[i]), i, holds(values[i]));
        }
        const auto place_of = [&](std::uint64_t j) {
            return places.find(hash(second[j]), holds(second[j]));
        };
        return match(first.size(), second.size(), place_of, B_in_A, A_in_B);
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
        const auto element = [&](unsigned int i) { return turned_column(first, i, exact_order); };
        const auto equals = [&](const turned_column& other) {
            return [&](unsigned int i) { return element(i) == other; };
        };
        hash_slots places(first.cols());
        for (unsigned int i = 0; i < first.cols(); ++i) {
            const turned_column own = element(i);
            places.find_or_insert(own.hash(places.seed()), i, equals(own));
        }
        const auto place_of = [&](std::uint64_t j) {
            const turned_column sought(second, j, exact_order);
            return places.find(sought.hash(places.seed()), equals(sought));
        };
        return match(first.cols(), second.cols(), place_of, E2_in_E1, E1_in_E2);
    });
}

} // namespace kvx::zelvo
