#include <kvx/zelvo/edges.h>

#include <array>
#include <vector>

#include "foundation/appending.h"
#include "foundation/compact_indices.h"
#include "foundation/matrix_range.h"
#include "foundation/memory_guard.h"
#include "topology/element_walks.h"
#include "topology/side_groups.h"

namespace kvx::zelvo {

namespace {

/// The kind of a matrix as the caller's number; values that are no kind have no edges.
element_type edge_kind(int value) {
    const auto kind = is_element_type(value) ? static_cast<element_type>(value) : ET_NODE_MIX;
    return yields_edges(kind) ? kind : ET_NODE_MIX;
}

bool fits(const dense2D<unsigned int>& conn, element_type kind) {
    return conn.empty() || (check_IDs(conn, kind, no_node) && conn.rows() >= rows_read(kind));
}

/// The rows that hold the corners; no columns where there are no rows to read.
dense2D<unsigned int> corners_of(const dense2D<unsigned int>& conn, element_type kind) {
    const std::uint64_t rows = is_mixed(kind) ? conn.rows() : rows_read(kind);
    return conn.sub_matrix(0, 0, rows, conn.empty() ? 0 : conn.cols());
}

using matrices = std::vector<dense2D<unsigned int>>;

/// Upper bound of the number of edges met.
std::uint64_t edge_bound(const matrices& corners, const std::vector<element_type>& types) {
    std::uint64_t bound = 0;
    for (std::size_t m = 0; m < corners.size(); ++m) {
        with_columns(types[m], corners[m].rows(), [&](auto columns) {
            bound += corners[m].cols() * columns.edge_count;
            return 0;
        });
    }
    return bound;
}

/// Calls visit(number, from, to) for every edge without no_node, numbered in the order met.
template <class Visit>
void number_edges(const matrices& corners, const std::vector<element_type>& types, Visit&& visit) {
    unsigned int number = 0;
    for (std::size_t m = 0; m < corners.size(); ++m) {
        with_columns(types[m], corners[m].rows(), [&](auto columns) {
            walk_edges(corners[m], columns, [&](unsigned int from, unsigned int to) {
                if (from != no_node && to != no_node) visit(number++, from, to);
            });
            return 0;
        });
    }
}

/// Flags, by their numbers, the edges that are the first of their nodes; how many these are.
std::uint64_t flag_first_edges(matrices corners, const std::vector<element_type>& types,
                               std::vector<bool>& is_first) {
    const std::uint64_t node_count = compact_indices(corners, no_node_entries::absent);
    const auto every_edge = [&](auto&& visit) {
        number_edges(corners, types, [&](unsigned int number, unsigned int a, unsigned int b) {
            visit(number, std::array<unsigned int, 2>{a, b});
        });
    };
    std::uint64_t distinct = 0;
    group_by_nodes<2>(node_count, every_edge, [&](const auto group) {
        is_first[group.front().back()] = true;
        ++distinct;
    });
    return distinct;
}

int append_edges(const matrices& corners, const std::vector<element_type>& types,
                 dense2D<unsigned int>& edges) {
    const std::uint64_t bound = edge_bound(corners, types);
    if (bound > most_items) return out_of_memory;
    std::vector<bool> is_first(bound);
    const std::uint64_t distinct = flag_first_edges(corners, types, is_first);
    if (distinct == 0) return 0;

    // a list without entries may have any number of rows
    dense2D<unsigned int> fresh;
    dense2D<unsigned int>& list = edges.empty() ? fresh : edges;
    const std::uint64_t kept = list.cols();
    append_columns(list, 2, distinct, no_node);
    unsigned int* edge = &list(0, kept);
    number_edges(corners, types, [&](unsigned int number, unsigned int from, unsigned int to) {
        if (!is_first[number]) return;
        edge[0] = from;
        edge[1] = to;
        edge += list.ld();
    });
    if (edges.empty()) edges.swap(fresh);
    return 0;
}

} // namespace

int copy_edges(const dense2D<unsigned int>& connectM, element_type FE_type,
               dense2D<unsigned int>& edges) noexcept {
    if (connectM.empty()) return 0;
    int kind = FE_type;
    return guarded(
        [&] { return copy_edges(&connectM, &connectM + 1, dense1D<int>::wrap(&kind, 1), edges); });
}

int copy_edges(const dense2D<unsigned int>* first, const dense2D<unsigned int>* last,
               const dense1D<int>& FE_types, dense2D<unsigned int>& edges) noexcept {
    if (first == last) return 0;
    if (is_reversed(first, last)) return -4;
    if (static_cast<std::uint64_t>(last - first) != FE_types.size()) return -5;
    return guarded([&] {
        matrices corners;
        std::vector<element_type> types;
        for (auto m = first; m != last; ++m) {
            const element_type kind = edge_kind(FE_types[types.size()]);
            if (!fits(*m, kind)) return -1;
            types.push_back(kind);
            corners.push_back(corners_of(*m, kind));
        }
        if (!edges.empty() && edges.rows() != 2) return -3;
        return append_edges(corners, types, edges);
    });
}

} // namespace kvx::zelvo
