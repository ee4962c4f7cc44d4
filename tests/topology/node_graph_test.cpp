#include "topology/compressed_lists.h"
#include "topology/random_meshes.h"

namespace kvx::zelvo::tests {
TEST(NodeGraph, RandomMeshes) {
    std::mt19937 random(2);
    for (int trial = 0; trial < 2000; ++trial) {
        column_list mesh(1 + below(random, 9), std::vector<unsigned int>(1 + below(random, 5)));
        unsigned int node_count = 1; // also when no node is used
        for (auto& column : mesh) {
            for (unsigned int& n : column) {
                n = below(random, 4) == 0 ? none : below(random, 12);
                node_count = std::max(node_count, n + 1); // none + 1 is 0
            }
        }
        // the whole mesh once more for every node
        std::vector<unsigned int> last(node_count, none), elements, nodes;
        std::vector<std::size_t> element_offsets = {0}, node_offsets = {0};
        for (unsigned int n = 0; n < node_count; ++n) {
            std::vector<unsigned int> met = {n, none};
            for (unsigned int e = 0; e < mesh.size(); ++e) {
                for (const unsigned int m : mesh[e])
                    if (m == n) elements.push_back(last[n] = e);
                for (const unsigned int m : mesh[e])
                    if (last[n] == e && !names(met, m)) met.push_back(m);
            }
            nodes.insert(nodes.end(), met.begin() + 2, met.end());
            element_offsets.push_back(elements.size());
            node_offsets.push_back(nodes.size());
        }
        const dense2D<unsigned int> conn = strided(columns(mesh), 20u);
        dense1D<unsigned int> ancestors, offsets(3), found = conn.as_vector(); // view of the input
        ASSERT_EQ(get_ancestors(conn, ancestors), 0);
        ASSERT_EQ(list(ancestors), last);
        ASSERT_EQ(get_connected_elements(conn, offsets, found), 0);
        ASSERT_THAT(offsets, ::testing::ElementsAreArray(element_offsets));
        ASSERT_EQ(list(found), elements);
        ASSERT_EQ(get_node_graph(conn, offsets, found), 0);
        ASSERT_THAT(offsets, ::testing::ElementsAreArray(node_offsets));
        ASSERT_EQ(list(found), nodes);
    }
}

TEST(NodeGraph, AncestorsKeepTheirSizeAndOldEntries) {
    unsigned int memory[] = {2, 1, 3, 3};
    const auto conn = dense2D<unsigned int>::wrap(memory, 2, 2);
    const dense1D<unsigned int> longer = vec({7, 7, 7, 7});
    dense1D<unsigned int> ancestors = longer.sub_vector(0, 3);
    EXPECT_EQ(get_ancestors(conn, ancestors), 0);
    EXPECT_EQ(list(longer), list(vec({7, 0, 0, 7})));
    ancestors = dense1D<unsigned int>::wrap(memory, 4); // overwritten while it is walked
    EXPECT_EQ(get_ancestors(conn, ancestors), 0);
    EXPECT_EQ(list(ancestors), list(vec({2, 0, 0, 1})));
}

TEST(NodeGraph, EmptyAndOversizedInput) {
    unsigned int never_read = 0;
    const auto huge = dense2D<unsigned int>::wrap(&never_read, 1, std::uint64_t{1} << 32);
    dense1D<unsigned int> ancestors = vec({4}), offsets(3), items(3);
    EXPECT_EQ(get_ancestors({}, ancestors), 0);
    EXPECT_EQ(get_ancestors(huge, ancestors), -199);
    EXPECT_EQ(list(ancestors), list(vec({4})));
    for (const auto build : {get_connected_elements, get_node_graph}) {
        EXPECT_EQ(build(dense2D<unsigned int>(0, 2), offsets, items), 0);
        EXPECT_EQ(list(offsets), list(vec({0})));
        EXPECT_TRUE(items.empty());
        EXPECT_EQ(build(huge, offsets, items = vec({4})), -199);
        EXPECT_TRUE(offsets.empty() && items.empty());
    }
    EXPECT_EQ(list_offset(0xFFFFFFFFu), 0xFFFFFFFFu);
    EXPECT_THROW(list_offset(0x100000000u), std::bad_alloc);
}

} // namespace kvx::zelvo::tests
