#include <kvx/zelvo/subdomains.h>

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include <kvx/zelvo/node_indices.h>

#include "foundation/compact_indices.h"
#include "foundation/large_blocks.h"
#include "foundation/memory_guard.h"
#include "topology/compressed_lists.h"

namespace kvx::zelvo {

namespace {

/// Disjoint sets of elements, each represented by its lowest element.
class element_sets {
public:
    explicit element_sets(unsigned int element_count)
        : size_(element_count)
        , parents_(make_scratch<unsigned int>(element_count)) {
        std::iota(parents_.get(), parents_.get() + element_count, 0u);
    }

    unsigned int lowest(unsigned int e) {
        while (parents_[e] != e)
            e = parents_[e] = parents_[parents_[e]];
        return e;
    }
    void unite(unsigned int a, unsigned int b) {
        const auto [low, high] = std::minmax({lowest(a), lowest(b)});
        parents_[high] = low;
    }
    unsigned int size() const { return size_; }

private:
    unsigned int size_;
    scratch<unsigned int> parents_;
};

struct subdomains {
    dense1D<unsigned int> elements;
    dense1D<unsigned int> offsets;
};

/// The sets in the order of their lowest elements.
subdomains listed(element_sets& sets) {
    subdomains parts;
    need(parts.elements.resize(sets.size()));
    const auto part_of = make_scratch<unsigned int>(sets.size());
    std::vector<unsigned int> ends; // of the parts; first their sizes, then their begins
    for (unsigned int e = 0; e < sets.size(); ++e) {
        const unsigned int lowest = sets.lowest(e);
        part_of[e] = lowest == e ? static_cast<unsigned int>(ends.size()) : part_of[lowest];
        if (lowest == e) ends.push_back(0);
        ++ends[part_of[e]];
    }
    unsigned int begin = 0;
    for (unsigned int& size : ends)
        begin += std::exchange(size, begin);
    for (unsigned int e = 0; e < sets.size(); ++e)
        parts.elements[ends[part_of[e]]++] = e;
    need(parts.offsets.resize(ends.size() + 1));
    std::copy(ends.begin(), ends.end(), parts.offsets.begin() + 1);
    return parts;
}

subdomains joined_by_nodes(dense2D<unsigned int> conn) {
    element_sets sets(list_offset(conn.cols()));
    const std::uint64_t node_count = compact_indices({&conn, 1}, no_node_entries::absent);
    const auto first_element = make_scratch<unsigned int>(node_count);
    std::fill_n(first_element.get(), node_count, no_node);
    const unsigned int* column = conn.data();
    for (unsigned int e = 0; e < sets.size(); ++e, column += conn.ld()) {
        for (std::uint64_t i = 0; i < conn.rows(); ++i) {
            if (column[i] == no_node) continue;
            unsigned int& first = first_element[column[i]];
            if (first == no_node) first = e;
            sets.unite(first, e);
        }
    }
    return listed(sets);
}

subdomains joined_by_sides(const dense2D<unsigned int>& neighbors) {
    element_sets sets(list_offset(neighbors.cols()));
    const unsigned int* column = neighbors.data();
    for (unsigned int e = 0; e < sets.size(); ++e, column += neighbors.ld()) {
        for (std::uint64_t s = 0; s < neighbors.rows(); ++s) {
            if (column[s] != no_node) sets.unite(column[s], e);
        }
    }
    return listed(sets);
}

/// Column k of m becomes column order[k] of a copy of m.
void take_columns(dense2D<unsigned int>& m, const dense2D<unsigned int>& copy,
                  const dense1D<unsigned int>& order) {
    unsigned int* column = m.data();
    for (const unsigned int from : order) {
        std::copy_n(copy.data() + from * copy.ld(), m.rows(), column);
        column += m.ld();
    }
}

} // namespace

int get_subdomains(const dense2D<unsigned int>& connectM, dense1D<unsigned int>& elements,
                   dense1D<unsigned int>& offsets) noexcept {
    const dense2D<unsigned int> source(connectM);
    elements.clear();
    offsets.clear();
    return guarded([&] {
        subdomains parts = joined_by_nodes(source.empty() ? dense2D<unsigned int>() : source);
        elements.swap(parts.elements);
        offsets.swap(parts.offsets);
        return 0;
    });
}

int get_subdomains(dense2D<unsigned int>& connectM, dense2D<unsigned int>& neighbors,
                   dense1D<unsigned int>& offsets) noexcept {
    if (neighbors.cols() != connectM.cols()) return -1;
    return guarded([&] {
        const unsigned int element_count = list_offset(neighbors.cols());
        if (!check_IDs(neighbors, element_count)) return -2;
        if (connectM.empty()) {
            dense1D<unsigned int> no_parts(1);
            offsets.swap(no_parts);
            return 0;
        }
        subdomains parts = joined_by_sides(neighbors);
        if (std::is_sorted(parts.elements.begin(), parts.elements.end())) { // nothing to move
            offsets.swap(parts.offsets);
            return 0;
        }
        dense1D<unsigned int> new_places(element_count);
        for (unsigned int place = 0; place < element_count; ++place)
            new_places[parts.elements[place]] = place;
        dense2D<unsigned int> conn_copy;
        dense2D<unsigned int> neighbors_copy;
        need(conn_copy.copy(connectM) && neighbors_copy.copy(neighbors));

        // nothing fails from here on
        change_indices(neighbors_copy, new_places);
        take_columns(connectM, conn_copy, parts.elements);
        take_columns(neighbors, neighbors_copy, parts.elements);
        offsets.swap(parts.offsets);
        return 0;
    });
}

} // namespace kvx::zelvo
