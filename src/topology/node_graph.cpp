#include <kvx/zelvo/node_graph.h>

#include <algorithm>
#include <utility>
#include <vector>

#include <kvx/element_type.h>
#include <kvx/zelvo/node_indices.h>

#include "foundation/large_blocks.h"
#include "foundation/memory_guard.h"
#include "foundation/memory_overlap.h"
#include "topology/compressed_lists.h"

namespace kvx::zelvo {

namespace {

/// Calls visit(element, node) for every entry other than no_node.
template <class Visit>
void walk_nodes(const dense2D<unsigned int>& conn, Visit&& visit) {
    const std::uint64_t rows = conn.rows();
    const unsigned int element_count = list_offset(conn.cols());
    const unsigned int* column = conn.data();
    for (unsigned int e = 0; e < element_count; ++e, column += conn.ld()) {
        for (std::uint64_t i = 0; i < rows; ++i) {
            if (column[i] != no_node) visit(e, column[i]);
        }
    }
}

struct compressed {
    dense1D<unsigned int> offsets;
    dense1D<unsigned int> list;
};

/// The elements of every node, by a counting sort.
compressed elements_by_node(const dense2D<unsigned int>& conn) {
    compressed c;
    if (conn.empty()) {
        need(c.offsets.resize(1));
        return c;
    }
    list_offset(conn.cols()); // before anything is read
    c.offsets = zeros_to_fill<unsigned int>(std::uint64_t{max_ID(conn)} + 2);

    // offsets[n + 1] counts node n, then is where it begins, then, all placed, where it ends
    unsigned int* const next = c.offsets.data() + 1;
    std::uint64_t total = 0;
    walk_nodes(conn, [next, &total](unsigned int, unsigned int n) {
        ++next[n];
        ++total;
    });
    c.list = zeros_to_fill<unsigned int>(list_offset(total));
    unsigned int begin = 0;
    for (auto count = c.offsets.begin() + 1; count != c.offsets.end(); ++count)
        begin += std::exchange(*count, begin);
    unsigned int* const list = c.list.data();
    walk_nodes(conn, [next, list](unsigned int e, unsigned int n) { list[next[n]++] = e; });
    return c;
}

/// A list whose length shows only at its end, in pieces. A piece has twice the room that is asked
/// for, so that it is left for another one only when it is half full or the room doubles.
class growing_list {
public:
    /// Where up to n more entries may be written. Throws std::bad_alloc.
    unsigned int* room_for(std::uint64_t n) {
        if (pieces_.empty() || n > room_ - pieces_.back().size) {
            constexpr std::uint64_t usual_room = std::uint64_t{1} << 20;
            room_ = std::max(2 * n, usual_room);
            pieces_.push_back({make_scratch<unsigned int>(room_), 0});
        }
        return pieces_.back().entries.get() + pieces_.back().size;
    }
    /// How many of them were.
    void written(std::uint64_t n) {
        pieces_.back().size += n;
        total_ += n;
    }
    std::uint64_t total() const { return total_; }
    void move_to(unsigned int* list) {
        for (piece& p : pieces_) {
            list = std::copy_n(p.entries.get(), p.size, list);
            p.entries.reset();
        }
    }

private:
    struct piece {
        scratch<unsigned int> entries;
        std::uint64_t size;
    };
    std::vector<piece> pieces_;
    std::uint64_t room_ = 0; ///< of the last piece
    std::uint64_t total_ = 0;
};

/// Refuses an element whose different nodes alone make more entries of the graph than offsets tell,
/// before as many pairs of nodes are walked. The marker has an entry for each node.
void need_countable_pairs(const dense2D<unsigned int>& conn, unsigned int* marker,
                          unsigned int node_count) {
    constexpr std::uint64_t harmless_rows = 65536;
    if (conn.rows() <= harmless_rows) return;
    std::fill_n(marker, node_count, no_node);
    unsigned int element = no_node;
    std::uint64_t others = 0; // of each node of the element
    walk_nodes(conn, [&](unsigned int e, unsigned int n) {
        if (std::exchange(marker[n], e) == e) return;
        others = std::exchange(element, e) == e ? others + 1 : 0;
        list_offset(others * (others + 1));
    });
}

/// For every node, the other nodes that share an element with it, once each, as met.
compressed node_graph(const dense2D<unsigned int>& conn) {
    compressed elements = elements_by_node(conn);
    if (conn.empty()) return elements;
    compressed graph;
    graph.offsets = zeros_to_fill<unsigned int>(elements.offsets.size());
    const unsigned int* const offsets = elements.offsets.data();
    const unsigned int* const around = elements.list.data();
    const std::uint64_t entry_count = elements.list.size();
    const auto node_count = static_cast<unsigned int>(elements.offsets.size() - 1);
    const auto marker = make_scratch<unsigned int>(node_count);
    need_countable_pairs(conn, marker.get(), node_count);
    std::fill_n(marker.get(), node_count, no_node);

    growing_list found;
    for (unsigned int i = 0; i < node_count; ++i) {
        marker[i] = i;
        const std::uint64_t met = std::uint64_t{offsets[i + 1] - offsets[i]} * conn.rows();
        unsigned int* const begin = found.room_for(std::min<std::uint64_t>(met, node_count));
        unsigned int* next = begin;
        for (std::uint64_t k = offsets[i]; k < offsets[i + 1]; ++k) {
            const bool repeated = k > offsets[i] && around[k] == around[k - 1];
            if (repeated) continue;
            constexpr std::uint64_t ahead = 24; // elements of shuffled meshes are far apart
            if (k + ahead < entry_count) prefetch(conn.data() + around[k + ahead] * conn.ld());
            const unsigned int* const column = conn.data() + around[k] * conn.ld();
            for (std::uint64_t row = 0; row < conn.rows(); ++row) {
                const unsigned int j = column[row];
                if (j == no_node || marker[j] == i) continue;
                marker[j] = i;
                *next++ = j;
            }
        }
        found.written(static_cast<std::uint64_t>(next - begin));
        graph.offsets[i + 1] = list_offset(found.total());
    }
    elements = {};
    graph.list = zeros_to_fill<unsigned int>(found.total());
    found.move_to(graph.list.data());
    return graph;
}

/// Replaces the outputs by what build(conn) gives; both are empty when memory runs out.
template <class Build>
int replace(const dense2D<unsigned int>& conn, dense1D<unsigned int>& offsets,
            dense1D<unsigned int>& list, Build build) {
    const dense2D<unsigned int> source(conn);
    offsets.clear();
    list.clear();
    return guarded([&] {
        compressed c = build(source);
        offsets.swap(c.offsets);
        list.swap(c.list);
        return 0;
    });
}

} // namespace

int get_ancestors(const dense2D<unsigned int>& connectM,
                  dense1D<unsigned int>& ancestors) noexcept {
    if (connectM.empty()) return 0;
    return guarded([&] {
        dense2D<unsigned int> source(connectM);
        list_offset(source.cols());
        if (ancestors.empty()) {
            need(ancestors.resize(std::uint64_t{max_ID(source)} + 1, no_node));
        } else if (overlap(memory_run(source), memory_run(ancestors))) {
            need(source.copy(connectM)); // else elements are written over nodes not read yet
        }
        unsigned int* const ancestor = ancestors.data();
        walk_nodes(source, [ancestor, size = ancestors.size()](unsigned int e, unsigned int n) {
            if (n < size) ancestor[n] = e;
        });
        return 0;
    });
}

int get_connected_elements(const dense2D<unsigned int>& connectM, dense1D<unsigned int>& offsets,
                           dense1D<unsigned int>& elements) noexcept {
    return replace(connectM, offsets, elements, elements_by_node);
}

int get_node_graph(const dense2D<unsigned int>& connectM, dense1D<unsigned int>& offsets,
                   dense1D<unsigned int>& nodes) noexcept {
    return replace(connectM, offsets, nodes, node_graph);
}

} // namespace kvx::zelvo
