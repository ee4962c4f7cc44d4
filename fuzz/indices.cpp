#include <set>

#include "exported_target.h"

namespace kvx::zelvo::fuzzing {

namespace {

using node_set = std::set<unsigned int>;

void gather(const dense1D<unsigned int>& v, node_set& nodes) {
    nodes.insert(v.begin(), v.end());
    nodes.erase(no_node);
}
node_set nodes_of(const dense2D<unsigned int>* first, const dense2D<unsigned int>* last) {
    node_set nodes;
    for (; first < last; ++first)
        for (std::uint64_t j = 0; j < first->cols(); ++j)
            gather(first->col(j), nodes);
    return nodes;
}
node_set nodes_of(const arguments& a) {
    return a.takes("first") ? nodes_of(a.first, a.last) : nodes_of(a.range, a.range + 1);
}

/// What was in front stays, and the entries that were added are those of a set, each once.
void examine_added(const dense1D<unsigned int>& before, const dense1D<unsigned int>& after,
                   const node_set& added) {
    demand(equal(after.sub_vector(0, before.size()), before), "what was there stays in front");
    const dense1D<unsigned int> rest = after.sub_vector(before.size(), after.size());
    demand(rest.size() == added.size() && node_set(rest.begin(), rest.end()) == added,
           "every node is added once");
}

/// The grouped columns are those that hold a node, each at its new place.
void examine_sorted(const arguments& before, const arguments& after) {
    std::set<unsigned int> places;
    for (std::uint64_t j = 0; j < before.conn.cols() && !before.conn.empty(); ++j) {
        const unsigned int place = after.new_IDs[j];
        demand((place == no_node) == (before.conn(0, j) == no_node), "empty elements are dropped");
        if (place == no_node) continue;
        demand(places.insert(place).second && place < after.conn.cols(), "places are distinct");
        demand(equal(after.conn.col(place), before.conn.col(j)), "columns go where new_IDs says");
    }
    demand(std::is_sorted(after.group_ends.begin(), after.group_ends.end()), "groups ascend");
    demand(after.group_ends.size() == after.group_nodes.size(), "groups have a size and an end");
}

void examine_matches(std::uint64_t size, const dense1D<unsigned int>& found,
                     std::uint64_t other_size) {
    demand(found.size() == size && check_IDs(found, bound(other_size)), "matches exist");
}

} // namespace

void examine_call(const std::string& function, const arguments& before, arguments& after,
                  std::int64_t result) {
    if (function == "max_ID") {
        const node_set nodes = nodes_of(before);
        const auto& v = before.list_of_nodes();
        node_set listed;
        gather(v, listed);
        const bool list = before.form() == "max_ID(v)";
        const node_set& all = list ? listed : nodes;
        const bool empty = list ? v.empty() : before.conn.empty();
        demand(result == (empty ? no_node : all.empty() ? 0 : *all.rbegin()), "the largest index");
    }
    if (before.form() == "check_IDs(m, n)") {
        const node_set nodes = nodes_of(before);
        demand((result == 1) == (nodes.empty() || *nodes.rbegin() < before.n), "indices are below");
    }
    if (function == "check_IDs" && before.takes("t,") && result == 1 && before.n != no_node) {
        const node_set nodes = nodes_of(before);
        demand(before.conn.empty() || nodes.empty() || *nodes.rbegin() < before.n,
               "indices are below");
    }
    if (function == "count_unique_indices" && result >= 0)
        demand(nodes_of(before).size() == static_cast<std::uint64_t>(result), "distinct nodes");
    if (function == "unique_indices" && result == 0) {
        node_set added, excluded;
        if (before.takes(" v"))
            gather(before.list_of_nodes(), added);
        else
            added = nodes_of(before);
        if (before.takes("excluded")) gather(before.nodes2, excluded);
        for (const unsigned int node : excluded)
            added.erase(node);
        examine_added(before.out, after.out, added);
    }
    if (function == "sort_elfes" && result == 0) examine_sorted(before, after);
    if (before.form() == "get_IDs(A, B, B_in_A, A_in_B)") {
        examine_matches(before.nodes2.size(), after.out, before.nodes.size());
        examine_matches(before.nodes.size(), after.new_IDs, before.nodes2.size());
        for (std::uint64_t k = 0; k < after.out.size(); ++k)
            demand(after.out[k] == no_node || before.nodes[after.out[k]] == before.nodes2[k],
                   "matches are equal");
    } else if (function == "get_IDs" && result == 0) {
        examine_matches(after.out.size(), after.out, before.E1.cols());
        examine_matches(after.new_IDs.size(), after.new_IDs, before.E2.cols());
        for (std::uint64_t k = 0; before.exact_order && k < after.out.size(); ++k)
            demand(after.out[k] == no_node || equal(before.E1.col(after.out[k]), before.E2.col(k)),
                   "matches are equal");
    }
}

} // namespace kvx::zelvo::fuzzing
