#include "topology/distinct_edges.h"

#include <array>
#include <new>

#include "foundation/compact_indices.h"
#include "topology/side_groups.h"

namespace kvx::zelvo {

void distinct_edges::add(const dense2D<unsigned int>& conn, element_type kind) {
    const element_type edges_of = edge_kind(kind);
    const std::uint64_t rows = is_mixed(edges_of) ? conn.rows() : rows_read(edges_of);
    kinds_.push_back(edges_of);
    // no columns where there are no rows to read
    corners_.push_back(conn.sub_matrix(0, 0, rows, conn.empty() ? 0 : conn.cols()));
}

/// Upper bound of the number of edges met.
std::uint64_t distinct_edges::edge_bound() const {
    std::uint64_t bound = 0;
    for (std::size_t m = 0; m < corners_.size(); ++m) {
        with_columns(kinds_[m], corners_[m].rows(), [&](auto columns) {
            bound += corners_[m].cols() * columns.edge_count;
            return 0;
        });
    }
    return bound;
}

std::uint64_t distinct_edges::find() {
    const std::uint64_t bound = edge_bound();
    if (bound > most_items) throw std::bad_alloc();
    is_first_.assign(bound, false);
    matrices compact = corners_;
    const std::uint64_t node_count = compact_indices(compact, no_node_entries::absent);
    const auto every_edge = [&](auto&& visit) {
        number_edges(compact, [&](unsigned int number, unsigned int a, unsigned int b) {
            visit(number, std::array<unsigned int, 2>{a, b});
        });
    };
    std::uint64_t distinct = 0;
    group_by_nodes<2>(node_count, every_edge, [&](const item_group& group) {
        is_first_[group.first] = true;
        ++distinct;
    });
    return distinct;
}

} // namespace kvx::zelvo
