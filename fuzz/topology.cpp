#include <set>

#include "exported_target.h"

namespace kvx::zelvo::fuzzing {

namespace {

void examine_lists(const dense1D<unsigned int>& offsets, std::uint64_t entries) {
    demand(!offsets.empty() && offsets[0] == 0, "offsets begin with 0");
    demand(std::is_sorted(offsets.begin(), offsets.end()), "offsets ascend");
    demand(offsets[offsets.size() - 1] == entries, "offsets end with the number of entries");
}

/// Elements name each other as often.
void examine_neighbors(const dense2D<unsigned int>& neighbors) {
    std::map<std::pair<std::uint64_t, std::uint64_t>, int> links;
    demand(check_IDs(neighbors, bound(neighbors.cols())), "neighbors are elements");
    for (std::uint64_t j = 0; j < neighbors.cols(); ++j)
        for (const unsigned int k : neighbors.col(j))
            if (k != no_node) ++links[{j, k}];
    for (const auto& [link, count] : links)
        demand(links[{link.second, link.first}] == count, "neighbors name each other");
}

/// Edges that were there stay in front of those that are new and distinct.
void examine_edges(const dense2D<unsigned int>& before, const dense2D<unsigned int>& edges) {
    demand(equal(edges.sub_matrix(0, 0, edges.rows(), before.cols()), before) || before.empty(),
           "edges that were there stay");
    std::set<std::pair<unsigned int, unsigned int>> distinct;
    for (std::uint64_t j = before.empty() ? 0 : before.cols(); j < edges.cols(); ++j) {
        demand(edges(0, j) != no_node && edges(1, j) != no_node, "edges have two ends");
        demand(distinct.insert(std::minmax(edges(0, j), edges(1, j))).second, "edges are distinct");
    }
}

} // namespace

void examine_call(const std::string& function, const arguments& before, arguments& after,
                  std::int64_t result) {
    if (result != 0) return;
    const std::uint64_t elements = before.conn.empty() ? 0 : before.conn.cols();
    if (function == "get_neighbors" && elements > 0) {
        demand(after.neighbors.cols() == elements, "a column for each element");
        examine_neighbors(after.neighbors);
    }
    if (function.ends_with("boundaries")) {
        demand(max_ID(after.boundaries) <= max_ID(before.conn) || after.boundaries.empty(),
               "sides have nodes of the elements");
    }
    if (function == "copy_edges") examine_edges(before.edges, after.edges);
    if (function == "get_ancestors" && before.ancestors.empty())
        demand(check_IDs(after.ancestors, bound(elements)), "ancestors are elements");
    if (function == "get_connected_elements") {
        examine_lists(after.offsets, after.elements.size());
        demand(check_IDs(after.elements, bound(elements)), "elements exist");
    }
    if (function == "get_node_graph") {
        examine_lists(after.offsets, after.nodes.size());
        for (const unsigned int node : after.nodes)
            demand(node + 1 < after.offsets.size(), "nodes have lists");
    }
    if (function == "get_subdomains" && after.takes("elements")) {
        examine_lists(after.offsets, after.elements.size());
        const std::set<unsigned int> distinct(after.elements.begin(), after.elements.end());
        demand(distinct.size() == elements && after.elements.size() == elements &&
                   check_IDs(after.elements, bound(elements)),
               "every element is in one part");
    }
    if (function == "get_subdomains" && after.takes("neighbors"))
        examine_lists(after.offsets, elements);
}

} // namespace kvx::zelvo::fuzzing
