#include "random_meshes.h"

namespace kvx::zelvo::tests {

TEST(sort_elfes, is_a_stable_sort_by_the_number_of_nodes) {
    often(5000, [](engine& random) {
        auto conn = random_elements(random, 9);
        const auto n = unsigned(conn.cols());
        auto refs =
            random_matrix(random, below(random, 4), n, [&] { return any_node(random, n + 2); });
        const column_list before = list(conn), old_refs = list(refs);
        std::vector<unsigned> sizes, order = identity(n), groups, ends, map(n, none);
        for (const auto& e : before)
            sizes.push_back(unsigned(std::find(e.begin(), e.end(), none) - e.begin()));
        std::erase_if(order, [&](unsigned j) { return sizes[j] == 0; });
        std::ranges::stable_sort(order, {}, [&](unsigned j) { return sizes[j]; });
        column_list elements, moved;
        for (unsigned k = 0; k < order.size(); ++k) {
            map[order[k]] = k;
            elements.push_back(before[order[k]]);
            moved.push_back(old_refs[order[k]]);
            if (!names(groups, sizes[order[k]])) groups.push_back(sizes[order[k]]);
            ends.resize(groups.size());
            ends.back() = k + 1;
        }
        for (auto& column : moved)
            for (unsigned& e : column)
                e = e < n ? map[e] : e;
        if (groups.empty()) groups = {none}, ends = {0};
        dense1D<unsigned> new_IDs, group_ends, group_nodes;
        ASSERT_EQ(refs.empty() ? sort_elfes(conn, group_nodes, group_ends, new_IDs)
                               : sort_elfes(conn, refs, group_nodes, group_ends, new_IDs),
                  0);
        ASSERT_EQ(list(conn), elements);
        ASSERT_EQ(list(refs), refs.rows() > 0 ? moved : old_refs);
        ASSERT_EQ((column_list{list(group_nodes), list(group_ends), list(new_IDs)}),
                  (column_list{groups, ends, map}));
    });
}

} // namespace kvx::zelvo::tests
