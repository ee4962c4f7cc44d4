#include "meshes.h"

namespace kvx::zelvo::tests {

TEST(sort_elfes, groups_faces_and_renumbers_references) {
    dense2D<unsigned int> conn = strided(
        columns({{0, 1, 2, 3}, {1, 4, 2, none}, {none, 9, 9, 9}, {5, 6, 7, 8}, {4, 6, 5, none}}),
        none);
    // 5 is no element; element 2 is dropped
    dense2D<unsigned int> refs = columns({{1, none}, {0, 4}, {2, 2}, {2, 5}, {3, 1}});
    dense1D<unsigned int> group_nodes = conn.col(0), group_ends = vec({9}), new_IDs;
    EXPECT_EQ(sort_elfes(conn, refs, group_nodes, group_ends, new_IDs), 0);
    EXPECT_EQ(list(conn),
              list(columns({{1, 4, 2, none}, {4, 6, 5, none}, {0, 1, 2, 3}, {5, 6, 7, 8}})));
    EXPECT_EQ(list(refs), list(columns({{2, 1}, {3, 0}, {0, none}, {none, 5}})));
    EXPECT_EQ(list(group_nodes), list(vec({3, 4})));
    EXPECT_EQ(list(group_ends), list(vec({2, 4})));
    EXPECT_EQ(list(new_IDs), list(vec({2, 0, none, 3, 1})));
}

TEST(sort_elfes, refuses_references_of_another_count_and_drops_all_without_nodes) {
    dense2D<unsigned int> conn = columns({{none, 1}, {none, 2}}), refs = columns({{0}});
    dense1D<unsigned int> group_nodes = vec({7}), group_ends, new_IDs;
    EXPECT_EQ(sort_elfes(conn, refs, group_nodes, group_ends, new_IDs), -1);
    EXPECT_TRUE(conn.cols() == 2 && group_nodes[0] == 7);
    EXPECT_EQ(sort_elfes(conn, group_nodes, group_ends, new_IDs), 0);
    EXPECT_EQ(conn.cols(), 0);
    EXPECT_EQ(list(group_nodes), list(vec({none})));
    EXPECT_EQ(list(group_ends), list(vec({0})));
    EXPECT_EQ(list(new_IDs), list(vec({none, none})));
    dense2D<unsigned int> no_elements(std::uint64_t{1} << 60, 0);
    EXPECT_EQ(sort_elfes(no_elements, group_nodes, group_ends, new_IDs), 0);
}

} // namespace kvx::zelvo::tests
