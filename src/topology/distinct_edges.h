#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>

#include "foundation/reference_topology.h"
#include "topology/element_walks.h"

namespace kvx::zelvo {

/// The kind of a matrix as the caller's number; values that are no kind have no edges.
inline element_type edge_kind(int value) {
    const auto kind = is_element_type(value) ? static_cast<element_type>(value) : ET_NODE_MIX;
    return yields_edges(kind) ? kind : ET_NODE_MIX;
}

/// The distinct corner edges of the elements of one or more matrices; (a, b) and (b, a) are one
/// edge, and one with no_node is none. Everything may throw std::bad_alloc.
class distinct_edges {
public:
    /// Adds the elements of a matrix, a view of which is kept. It passed check_IDs, the mixed kinds
    /// at least for no_node, and has the rows that its kind reads.
    void add(const dense2D<unsigned int>& conn, element_type kind);

    /// Finds the distinct edges of all matrices added and returns their number. More than
    /// most_items edges met are std::bad_alloc too.
    std::uint64_t find();

    /// Once they are found: calls visit(from, to) for every distinct edge, in order of first
    /// occurrence and with its nodes as first met.
    template <class Visit>
    void walk(Visit&& visit) const {
        number_edges(corners_, [&](unsigned int number, unsigned int from, unsigned int to) {
            if (is_first_[number]) visit(from, to);
        });
    }

private:
    using matrices = std::vector<dense2D<unsigned int>>;

    std::uint64_t edge_bound() const;

    /// Calls visit(number, from, to) for every edge without no_node, numbered in the order met.
    template <class Visit>
    void number_edges(const matrices& corners, Visit&& visit) const {
        unsigned int number = 0;
        for (std::size_t m = 0; m < corners.size(); ++m) {
            with_columns(kinds_[m], corners[m].rows(), [&](auto columns) {
                walk_edges(corners[m], columns, [&](unsigned int from, unsigned int to) {
                    if (from != no_node && to != no_node) visit(number++, from, to);
                });
                return 0;
            });
        }
    }

    matrices corners_; ///< the rows that hold the corners
    std::vector<element_type> kinds_;
    std::vector<bool> is_first_; ///< by number: the first edge of its nodes
};

} // namespace kvx::zelvo
