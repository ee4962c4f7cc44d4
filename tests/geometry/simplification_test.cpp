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
    const struct {
        unsigned int n_kept;
        std::vector<unsigned int> nodes, map;
    } cases[] = {
        {0, {1, 4, 6}, {none, 0, none, none, 1, none, 2, none}},
        {3, {0, 1, 2, 4, 6}, {0, 1, 2, none, 3, none, 4, none}},
    };
    for (const auto& [n_kept, nodes, map] : cases) {
        auto pos = strided(nodes_at({0, 1, 2, 3, 4, 5, 6, 7}), 0.5);
        auto conn = strided(columns({{6, 1, 4, none}, {1, 6, 4, 1}}), 3u);
        auto new_IDs = vec({9});
        EXPECT_EQ(simplify(pos, conn, new_IDs, n_kept), 8 - static_cast<int>(nodes.size()));
        EXPECT_EQ(list(new_IDs), map);
        EXPECT_EQ(list(pos), list(nodes_at(nodes)));
        EXPECT_EQ(list(conn), list(columns({{map[6], map[1], map[4], none},
                                            {map[1], map[6], map[4], map[1]}})));
    }
}

TEST(simplify, rejects_in_order_and_changes_nothing_but_the_map) {
    dense2D<unsigned int> conns[] = {columns({{1, 2}}), columns({{0, 3}})}; // 3 nodes: no node 3
    dense2D<unsigned int>* const c = conns;
    const auto three = nodes_at({0, 1, 2});
    const struct {
        dense2D<double> pos;
        dense2D<unsigned int>*first, *last;
        unsigned int n_kept;
        int code;
    } cases[] = {
        {three, c, c, 0, 0},     {three, c + 2, c, 0, -3}, {three, c, c + 2, 0, -2},
        {{}, c, c + 1, 0, -2},   {three, c, c + 2, 3, -2}, {dense2D<double>(0, 3), c, c + 1, 0, 0},
        {three, c, c + 1, 3, 0},
    };
    for (const auto& [pos, first, last, n_kept, code] : cases) {
        dense2D<double> same(pos);
        auto new_IDs = vec({5});
        EXPECT_EQ(simplify(same, first, last, new_IDs, n_kept), code);
        EXPECT_TRUE(new_IDs.empty());
        EXPECT_EQ(same.cols(), pos.cols());
    }
    EXPECT_EQ(list(three), list(nodes_at({0, 1, 2})));
    EXPECT_EQ(list(conns[0]), list(columns({{1, 2}})));
}

// Nodes 1, 3, 4, 6 become 0, 1, 2, 3: a map that sends 3 to 1 and 1 to 0 must not act twice.
TEST(simplify, renumbers_elements_met_twice_once) {
    auto conn = columns({{1, 3}, {3, 4}, {4, 6}});
    const auto renumbered = columns({{0, 1}, {1, 2}, {2, 3}});
    auto pos = nodes_at({0, 1, 2, 3, 4, 5, 6});
    auto tail = conn.sub_matrix(0, 1, 2, 2);
    EXPECT_EQ(simplify(pos, tail, conn, 0), 3);
    EXPECT_EQ(list(conn), list(renumbered));

    pos = nodes_at({0, 1, 2, 3, 4, 5, 6});
    conn = columns({{1, 3}, {3, 4}, {4, 6}});
    auto new_IDs = conn.col(1);
    dense2D<unsigned int> range[] = {conn.sub_matrix(0, 1, 2, 1),
                                     {},
                                     dense2D<unsigned int>::wrap(conn.data(), 2, 3),
                                     columns({{6, 3}}),
                                     conn.sub_matrix(1, 0, 1, 3),
                                     conn.sub_matrix(0, 2, 2, 1)};
    EXPECT_EQ(simplify(pos, range, range + 6, new_IDs, 0), 3);
    EXPECT_EQ(list(conn), list(renumbered));
    EXPECT_EQ(list(range[3]), list(columns({{3, 1}})));
    EXPECT_EQ(list(new_IDs), list(vec({none, 0, none, 1, 2, none, 3})));
}

} // namespace kvx::zelvo::tests
