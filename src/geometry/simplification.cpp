#include <kvx/zelvo/simplification.h>

#include <algorithm>
#include <functional>
#include <vector>

#include <kvx/zelvo/node_indices.h>

#include "foundation/matrix_range.h"
#include "foundation/memory_guard.h"
#include "foundation/memory_overlap.h"

namespace kvx::zelvo {

namespace {

using connectivity = dense2D<unsigned int>;

/// The matrices of a range with their entries on entry: copies of those that overlap in memory,
/// where renumbering one would change another, views of the rest.
std::vector<connectivity> entries_on_entry(const connectivity* first, const connectivity* last) {
    std::vector<connectivity> matrices(first, last);
    std::vector<connectivity*> by_place;
    for (connectivity& m : matrices) {
        if (!m.empty()) by_place.push_back(&m);
    }
    const std::less<const unsigned int*> before; // orders pointers into different arrays too
    std::sort(by_place.begin(), by_place.end(), [=](const connectivity* a, const connectivity* b) {
        return before(a->data(), b->data());
    });
    // A matrix that overlaps an earlier one overlaps the earlier one that reaches farthest.
    std::vector<connectivity*> overlapping;
    connectivity* farthest = nullptr;
    bool farthest_overlaps = false;
    for (connectivity* const m : by_place) {
        const bool overlaps = farthest && overlap(memory_run(*farthest), memory_run(*m));
        if (overlaps) {
            overlapping.push_back(m);
            if (!farthest_overlaps) overlapping.push_back(farthest);
            farthest_overlaps = true;
        }
        if (!farthest || before(memory_run(*farthest).end, memory_run(*m).end)) {
            farthest = m;
            farthest_overlaps = overlaps;
        }
    }
    for (connectivity* const m : overlapping)
        need(m->copy(*m));
    return matrices;
}

/// Marks in the map the nodes that elements use.
void mark_used(const connectivity& conn, dense1D<unsigned int>& new_IDs) {
    if (conn.empty()) return;
    constexpr unsigned int used = 0;
    unsigned int* const marks = new_IDs.data();
    const std::uint64_t nodes = new_IDs.size();
    for (std::uint64_t j = 0; j < conn.cols(); ++j) {
        const unsigned int* const column = &conn(0, j);
        for (std::uint64_t i = 0; i < conn.rows(); ++i) {
            if (column[i] < nodes) marks[column[i]] = used;
        }
    }
}

/// Moves the marked nodes and the first n_kept ones to the front, and makes the marks a map from
/// old to new nodes.
void compact_nodes(dense2D<double>& pos, dense1D<unsigned int>& new_IDs, std::uint64_t n_kept) {
    std::uint64_t kept = 0;
    for (std::uint64_t j = 0; j < pos.cols(); ++j) {
        if (j >= n_kept && new_IDs[j] == no_node) continue;
        if (kept != j) std::copy_n(&pos(0, j), pos.rows(), &pos(0, kept));
        new_IDs[j] = static_cast<unsigned int>(kept++);
    }
    pos.resize(pos.rows(), kept);
}

void renumber(connectivity& conn, const connectivity& on_entry, const dense1D<unsigned int>& map) {
    if (conn.empty()) return;
    const unsigned int* const target = map.data();
    const std::uint64_t nodes = map.size();
    for (std::uint64_t j = 0; j < conn.cols(); ++j) {
        std::transform(&on_entry(0, j), &on_entry(0, j) + conn.rows(), &conn(0, j),
                       [=](unsigned int e) { return e < nodes ? target[e] : e; });
    }
}

} // namespace

int simplify(dense2D<double>& pos, dense2D<unsigned int>* first, dense2D<unsigned int>* last,
             dense1D<unsigned int>& new_IDs, unsigned int n_kept) noexcept {
    new_IDs.clear();
    if (first == last) return 0;
    if (is_reversed(first, last)) return -3;
    const std::uint64_t nodes = pos.cols();
    for (const connectivity* m = first; m != last; ++m) {
        if (!check_IDs(*m, index_bound(nodes))) return -2;
    }
    if (pos.empty()) return 0;
    if (n_kept >= nodes) return 0;
    return guarded([&] {
        need_numbers_for(nodes);
        const std::vector<connectivity> on_entry = entries_on_entry(first, last);
        need(new_IDs.resize(nodes, no_node));
        for (const connectivity* m = first; m != last; ++m)
            mark_used(*m, new_IDs);
        compact_nodes(pos, new_IDs, n_kept);
        if (pos.cols() == nodes) return 0;
        for (const connectivity& source : on_entry)
            renumber(*first++, source, new_IDs);
        return count_result(nodes - pos.cols());
    });
}

int simplify(dense2D<double>& pos, dense2D<unsigned int>& conn, dense1D<unsigned int>& new_IDs,
             unsigned int n_kept) noexcept {
    return simplify(pos, &conn, &conn + 1, new_IDs, n_kept);
}

int simplify(dense2D<double>& pos, dense2D<unsigned int>& conn, unsigned int n_kept) noexcept {
    dense1D<unsigned int> new_IDs;
    return simplify(pos, conn, new_IDs, n_kept);
}

int simplify(dense2D<double>& pos, dense2D<unsigned int>& conn1, dense2D<unsigned int>& conn2,
             unsigned int n_kept) noexcept {
    connectivity both[] = {conn1, conn2};
    dense1D<unsigned int> new_IDs;
    return simplify(pos, both, both + 2, new_IDs, n_kept);
}

} // namespace kvx::zelvo
