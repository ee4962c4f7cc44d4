#include "meshes.h"

namespace kvx::zelvo::tests {

/// Node k at (k, -k), for the listed k.
static dense2D<double> nodes_at(const std::vector<unsigned int>& places) {
    std::vector<std::vector<double>> nodes;
    for (const double k : places)
        nodes.push_back({k, -k});
    return points(nodes);
}

TEST(simplify, drops_unused_nodes_behind_the_kept_block) {
    auto pos = strided(nodes_at({0, 1, 2, 3, 4, 5, 6, 7}), 0.5);
    auto conn = strided(columns({{6, 1, 4, none}, {1, 6, 4, 1}}), 3u);
    auto new_IDs = vec({9});
    EXPECT_EQ(simplify(pos, conn, new_IDs, 3), 3);
    EXPECT_EQ(list(new_IDs), list(vec({0, 1, 2, none, 3, none, 4, none})));
    EXPECT_EQ(list(pos), list(nodes_at({0, 1, 2, 4, 6})));
    EXPECT_EQ(list(conn), list(columns({{4, 1, 3, none}, {1, 4, 3, 1}})));
}

TEST(simplify, changes_nothing_but_the_map_when_it_refuses) {
    dense2D<unsigned int> conns[] = {columns({{1, 2}}), columns({{0, 3}})}; // 3 nodes: no node 3
    auto pos = nodes_at({0, 1, 2});
    auto new_IDs = vec({5});
    EXPECT_EQ(simplify(pos, conns, conns + 2, new_IDs, 0), -2);
    EXPECT_TRUE(new_IDs.empty());
    EXPECT_EQ(list(pos), list(nodes_at({0, 1, 2})));
    EXPECT_EQ(list(conns[0]), list(columns({{1, 2}})));
}

// Nodes 1, 3, 4, 6 become 0, 1, 2, 3: a map that sends 3 to 1 and 1 to 0 must not act twice.
TEST(simplify, renumbers_elements_met_twice_once) {
    auto pos = nodes_at({0, 1, 2, 3, 4, 5, 6});
    auto conn = columns({{1, 3}, {3, 4}, {4, 6}});
    auto new_IDs = conn.col(1);
    dense2D<unsigned int> range[] = {conn.sub_matrix(0, 1, 2, 1),
                                     {},
                                     dense2D<unsigned int>::wrap(conn.data(), 2, 3),
                                     columns({{6, 3}}),
                                     conn.sub_matrix(1, 0, 1, 3)};
    EXPECT_EQ(simplify(pos, range, range + 5, new_IDs, 0), 3);
    EXPECT_EQ(list(conn), list(columns({{0, 1}, {1, 2}, {2, 3}})));
    EXPECT_EQ(list(range[3]), list(columns({{3, 1}})));
    EXPECT_EQ(list(new_IDs), list(vec({none, 0, none, 1, 2, none, 3})));
    conn(0, 0) = 3; // no element names node 0 any longer
    auto tail = conn.sub_matrix(0, 1, 2, 2);
    EXPECT_EQ(simplify(pos, tail, conn, 0), 1);
    EXPECT_EQ(list(conn), list(columns({{2, 0}, {0, 1}, {1, 2}})));
}

} // namespace kvx::zelvo::tests
