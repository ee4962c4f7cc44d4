#include <kvx/zelvo/node_graph.h>

#include <algorithm>
#include <utility>
#include <vector>

#include <kvx/element_type.h>
#include <kvx/zelvo/node_indices.h>

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
    std::uint64_t total = 0;
    walk_nodes(conn, [&total](unsigned int, unsigned int) { ++total; });
    need(c.list.resize(list_offset(total)));
    need(c.offsets.resize(std::uint64_t{max_ID(conn)} + 2));

    // offsets[n + 1] counts node n, then is where it begins, then, all placed, where it ends
    unsigned int* const next = c.offsets.data() + 1;
    walk_nodes(conn, [next](unsigned int, unsigned int n) { ++next[n]; });
    unsigned int begin = 0;
    for (auto count = c.offsets.begin() + 1; count != c.offsets.end(); ++count)
        begin += std::exchange(*count, begin);
    unsigned int* const list = c.list.data();
    walk_nodes(conn, [next, list](unsigned int e, unsigned int n) { list[next[n]++] = e; });
    return c;
}

/// Calls visit(node, other) for every other node that shares an element with a node, once each.
template <class Visit, class Done>
void walk_graph(const dense2D<unsigned int>& conn, const compressed& elements,
                std::vector<unsigned int>& marker, Visit&& visit, Done&& node_done) {
    std::fill(marker.begin(), marker.end(), no_node);
    const auto node_count = static_cast<unsigned int>(marker.size());
    for (unsigned int i = 0; i < node_count; ++i) {
        marker[i] = i;
        for (unsigned int k = elements.offsets[i]; k < elements.offsets[i + 1]; ++k) {
            const unsigned int* const column = conn.data() + elements.list[k] * conn.ld();
            for (std::uint64_t row = 0; row < conn.rows(); ++row) {
                const unsigned int j = column[row];
                if (j == no_node || marker[j] == i) continue;
                marker[j] = i;
                visit(j);
            }
        }
        node_done(i);
    }
}

/// Refuses an element whose different nodes alone make more entries of the graph than offsets tell,
/// before as many pairs of nodes are walked. The marker has an entry for each node.
void need_countable_pairs(const dense2D<unsigned int>& conn, std::vector<unsigned int>& marker) {
    constexpr std::uint64_t harmless_rows = 65536;
    if (conn.rows() <= harmless_rows) return;
    std::fill(marker.begin(), marker.end(), no_node);
    unsigned int element = no_node;
    std::uint64_t others = 0; // of each node of the element
    walk_nodes(conn, [&](unsigned int e, unsigned int n) {
        if (std::exchange(marker[n], e) == e) return;
        others = std::exchange(element, e) == e ? others + 1 : 0;
        list_offset(others * (others + 1));
    });
}

compressed node_graph(const dense2D<unsigned int>& conn) {
    compressed elements = elements_by_node(conn);
    if (conn.empty()) return elements;
    compressed graph;
    need(graph.offsets.resize(elements.offsets.size()));
    std::vector<unsigned int> marker(elements.offsets.size() - 1);
    need_countable_pairs(conn, marker);

    std::uint64_t total = 0;
    walk_graph(
        conn, elements, marker, [&total](unsigned int) { ++total; },
        [&](unsigned int i) { graph.offsets[i + 1] = list_offset(total); });
    need(graph.list.resize(total));
    unsigned int* next = graph.list.data();
    walk_graph(
        conn, elements, marker, [&next](unsigned int j) { *next++ = j; }, [](unsigned int) {});
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
