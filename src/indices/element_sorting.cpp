#include <kvx/zelvo/element_sorting.h>

#include <algorithm>
#include <vector>

#include <kvx/element_type.h>

#include "foundation/appending.h"
#include "foundation/large_blocks.h"
#include "foundation/memory_guard.h"

namespace kvx::zelvo {

namespace {

/// Entries before the first no_node.
std::uint64_t leading_nodes(const dense2D<unsigned int>& conn, std::uint64_t j) {
    const unsigned int* const column = conn.data() + j * conn.ld();
    return static_cast<std::uint64_t>(std::find(column, column + conn.rows(), no_node) - column);
}

/// Moves every column j of a matrix to new_IDs[j], by way of a copy: in place, a column after the
/// other would be waited for. The copy has room for the matrix.
void move_columns(dense2D<unsigned int>& m, const dense1D<unsigned int>& new_IDs,
                  unsigned int* copy) {
    const std::uint64_t rows = m.rows();
    for (std::uint64_t j = 0; j < m.cols(); ++j)
        std::copy_n(m.data() + j * m.ld(), rows, copy + new_IDs[j] * rows);
    for (std::uint64_t j = 0; j < m.cols(); ++j)
        std::copy_n(copy + j * rows, rows, m.data() + j * m.ld());
}

/// Places of the elements when ordered by number of nodes, elements without nodes last.
struct grouping {
    dense1D<unsigned int> nodes;
    dense1D<unsigned int> ends;
    dense1D<unsigned int> new_IDs;
    unsigned int kept = 0;

    explicit grouping(const dense2D<unsigned int>& conn)
        : new_IDs(conn.cols()) {
        // next[k]: first the number of elements of k nodes, then the place of the next such one.
        std::vector<unsigned int> next(conn.empty() ? 1 : conn.rows() + 1);
        for (std::uint64_t j = 0; j < conn.cols(); ++j)
            ++next[leading_nodes(conn, j)];
        appender<unsigned int> group_nodes(nodes);
        appender<unsigned int> group_ends(ends);
        for (std::uint64_t k = 1; k < next.size(); ++k) {
            const unsigned int count = next[k];
            next[k] = kept;
            if (count == 0) continue;
            kept += count;
            group_nodes.push(static_cast<unsigned int>(k));
            group_ends.push(kept);
        }
        next[0] = kept;
        if (kept == 0) {
            group_nodes.push(no_node);
            group_ends.push(0);
        }
        for (std::uint64_t j = 0; j < conn.cols(); ++j)
            new_IDs[j] = next[leading_nodes(conn, j)]++;
    }
};

void renumber(dense2D<unsigned int>& refs, const dense1D<unsigned int>& new_IDs) {
    for (std::uint64_t j = 0; j < refs.cols(); ++j) {
        for (std::uint64_t i = 0; i < refs.rows(); ++i) {
            unsigned int& element = refs(i, j);
            if (element < new_IDs.size()) element = new_IDs[element];
        }
    }
}

} // namespace

int sort_elfes(dense2D<unsigned int>& conn, dense2D<unsigned int>& elem_refs,
               dense1D<unsigned int>& group_nodes, dense1D<unsigned int>& group_ends,
               dense1D<unsigned int>& new_IDs) noexcept {
    const bool has_refs = !elem_refs.empty();
    if (has_refs && elem_refs.cols() != conn.cols()) return -1;
    return guarded([&] {
        need(conn.cols() < no_node); // element numbers are 32-bit
        grouping groups(conn);
        if (!std::is_sorted(groups.new_IDs.begin(), groups.new_IDs.end())) {
            const std::uint64_t most_rows = std::max(conn.rows(), has_refs ? elem_refs.rows() : 0);
            const auto copy = make_scratch<unsigned int>(most_rows * conn.cols());
            move_columns(conn, groups.new_IDs, copy.get());
            if (has_refs) move_columns(elem_refs, groups.new_IDs, copy.get());
        }

        conn.resize(conn.rows(), groups.kept);
        for (unsigned int& place : groups.new_IDs) {
            if (place >= groups.kept) place = no_node;
        }
        if (has_refs) {
            elem_refs.resize(elem_refs.rows(), groups.kept);
            renumber(elem_refs, groups.new_IDs);
        }
        group_nodes.swap(groups.nodes);
        group_ends.swap(groups.ends);
        new_IDs.swap(groups.new_IDs);
        return 0;
    });
}

int sort_elfes(dense2D<unsigned int>& conn, dense1D<unsigned int>& group_nodes,
               dense1D<unsigned int>& group_ends, dense1D<unsigned int>& new_IDs) noexcept {
    dense2D<unsigned int> no_refs;
    return sort_elfes(conn, no_refs, group_nodes, group_ends, new_IDs);
}

} // namespace kvx::zelvo
