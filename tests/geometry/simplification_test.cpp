#include "meshes.h"

namespace kvx::zelvo::tests {

/// Node k at (k, -k).
static dense2D<double> row_of_nodes(unsigned int n) {
    dense2D<double> pos(2, n);
    for (unsigned int k = 0; k < n; ++k) {
        pos(0, k) = k;
        pos(1, k) = -static_cast<double>(k);
    }
    return pos;
}

TEST(simplify, drops_unused_nodes_behind_the_kept_block) {
    struct {
        unsigned int n_kept;
        std::vector<double> nodes;
        std::vector<unsigned int> map;
    } const cases[] = {
        {0, {1, 4, 6}, {none, 0, none, none, 1, none, 2, none}},
        {3, {0, 1, 2, 4, 6}, {0, 1, 2, none, 3, none, 4, none}},
    };
    for (const auto& c : cases) {
        dense2D<double> pos = strided(row_of_nodes(8), 0.5);
        dense2D<unsigned int> conn = strided(columns({{6, 1, 4, none}, {1, 6, 4, 1}}), 3u);
        dense1D<unsigned int> new_IDs = vec({9});
        EXPECT_EQ(simplify(pos, conn, new_IDs, c.n_kept), 8 - static_cast<int>(c.nodes.size()));
        EXPECT_EQ(list(new_IDs), c.map);
        ASSERT_EQ(pos.cols(), c.nodes.size());
        for (std::uint64_t k = 0; k < c.nodes.size(); ++k) {
            EXPECT_EQ(pos(0, k), c.nodes[k]);
            EXPECT_EQ(pos(1, k), -c.nodes[k]);
        }
        EXPECT_EQ(list(conn), list(columns({{c.map[6], c.map[1], c.map[4], none},
                                            {c.map[1], c.map[6], c.map[4], c.map[1]}})));
    }
}

TEST(simplify, rejects_in_order_and_changes_nothing_but_the_map) {
    dense2D<unsigned int> stray[] = {columns({{1, 2}}), columns({{0, 3}})}; // 3 nodes: no node 3
    dense2D<unsigned int> good[] = {columns({{1, 2}})};
    const struct {
        const char* what;
        dense2D<double> pos;
        dense2D<unsigned int>*first, *last;
        unsigned int n_kept;
        int code;
    } cases[] = {
        {"empty range", row_of_nodes(3), stray, stray, 0, 0},
        {"reversed before stray", row_of_nodes(3), stray + 2, stray, 0, -3},
        {"stray in the second", row_of_nodes(3), stray, stray + 2, 0, -2},
        {"stray before empty pos", dense2D<double>(), stray, stray + 1, 0, -2},
        {"stray before all kept", row_of_nodes(3), stray, stray + 2, 3, -2},
        {"pos without rows", dense2D<double>(0, 3), good, good + 1, 0, 0},
        {"all kept", row_of_nodes(3), good, good + 1, 3, 0},
    };
    for (const auto& c : cases) {
        dense2D<double> pos;
        ASSERT_TRUE(pos.copy(c.pos));
        dense1D<unsigned int> new_IDs = vec({5});
        EXPECT_EQ(simplify(pos, c.first, c.last, new_IDs, c.n_kept), c.code) << c.what;
        EXPECT_TRUE(new_IDs.empty()) << c.what;
        EXPECT_EQ(list(pos), list(c.pos)) << c.what;
        EXPECT_EQ(list(stray[1]), list(columns({{0, 3}}))) << c.what;
        EXPECT_EQ(list(good[0]), list(columns({{1, 2}}))) << c.what;
    }
}

// Nodes 1, 3, 4, 6 become 0, 1, 2, 3: a map that sends 3 to 1 and 1 to 0 must not act twice.
TEST(simplify, renumbers_elements_met_twice_once) {
    const auto elements = columns({{1, 3}, {3, 4}, {4, 6}});
    const auto renumbered = columns({{0, 1}, {1, 2}, {2, 3}});
    dense2D<double> pos = row_of_nodes(7);
    dense2D<unsigned int> conn;
    ASSERT_TRUE(conn.copy(elements));
    dense2D<unsigned int> tail = conn.sub_matrix(0, 1, 2, 2);
    EXPECT_EQ(simplify(pos, tail, conn, 0), 3);
    EXPECT_EQ(list(conn), list(renumbered));

    pos = row_of_nodes(7);
    ASSERT_TRUE(conn.copy(elements));
    dense1D<unsigned int> new_IDs = conn.col(1);
    const auto caller_memory = dense2D<unsigned int>::wrap(conn.data(), 2, 3);
    dense2D<unsigned int> range[] = {conn.sub_matrix(0, 1, 2, 1),
                                     {},
                                     caller_memory,
                                     columns({{6, 3}}),
                                     conn.sub_matrix(1, 0, 1, 3),
                                     conn.sub_matrix(0, 2, 2, 1)};
    EXPECT_EQ(simplify(pos, range, range + 6, new_IDs, 0), 3);
    EXPECT_EQ(list(conn), list(renumbered));
    EXPECT_EQ(list(range[3]), list(columns({{3, 1}})));
    EXPECT_EQ(list(new_IDs), list(vec({none, 0, none, 1, 2, none, 3})));
}

} // namespace kvx::zelvo::tests
