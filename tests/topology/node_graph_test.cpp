#include "random_meshes.h"

namespace kvx::zelvo::tests {
TEST(NodeGraph, RandomMeshes) {
    often(2000, [](engine& random) {
        column_list mesh(1 + below(random, 9), std::vector<unsigned int>(1 + below(random, 5)));
        unsigned int node_count = 1; // also when no node is used
        for (auto& column : mesh)
            for (unsigned int& n : column) {
                n = below(random, 4) == 0 ? none : below(random, 12);
                node_count = std::max(node_count, n + 1); // none + 1 is 0
            }
        column_list elements(node_count), nodes(node_count);
        for (unsigned int e = 0; e < mesh.size(); ++e)
            for (const unsigned int n : mesh[e])
                if (n != none) elements[n].push_back(e);
        std::vector<unsigned int> last;
        for (unsigned int n = 0; n < node_count; ++n) {
            last.push_back(elements[n].empty() ? none : elements[n].back());
            for (const unsigned int e : elements[n])
                for (const unsigned int m : mesh[e])
                    if (m != n && m != none && !names(nodes[n], m)) nodes[n].push_back(m);
        }
        const dense2D<unsigned int> conn = strided(columns(mesh), 20u);
        dense1D<unsigned int> ancestors, offsets(3), found = conn.as_vector(); // view of the input
        std::vector<unsigned int> kept = list(found);
        ASSERT_EQ(get_ancestors(conn, ancestors), 0);
        ASSERT_EQ(list(ancestors), last);
        ASSERT_EQ(get_connected_elements(conn, offsets, found), 0);
        ASSERT_EQ(split(found, offsets), elements);
        ASSERT_EQ(get_node_graph(conn, offsets, found), 0);
        ASSERT_EQ(split(found, offsets), nodes);
        ASSERT_EQ(get_ancestors(conn, found = conn.as_vector()), 0);
        for (unsigned int n = 0; n < std::min(kept.size(), last.size()); ++n)
            if (last[n] != none) kept[n] = last[n];
        ASSERT_EQ(list(found), kept);
    });
}

TEST(NodeGraph, MoreEntriesThanArePutInOnePiece) {
    constexpr unsigned int n = 1'100'000; // each joined to the hub, number n
    dense2D<unsigned int> bars(2, n + 1, n);
    for (unsigned int e = 0; e <= n; ++e)
        bars(1, e) = e == n ? 0 : e;
    dense1D<unsigned int> offsets, nodes;
    ASSERT_EQ(get_node_graph(bars, offsets, nodes), 0);
    ASSERT_EQ(offsets[n], n);
    ASSERT_EQ(nodes.size(), 2 * n);
    for (unsigned int k = 0; k < n; ++k)
        ASSERT_TRUE(offsets[k] == k && nodes[k] == n && nodes[n + k] == k);
}

} // namespace kvx::zelvo::tests
