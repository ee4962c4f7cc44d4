#include "meshes.h"

namespace kvx::zelvo::tests {

TEST(remove_degenerated, tells_by_real_nodes_and_strictly_by_empty_rows_too) {
    const struct {
        std::vector<unsigned int> element;
        int gone, gone_strictly;
    } cases[] = {
        {{1, 2, 3, none}, 0, 0},
        {{2, 2, none, none}, 1, 1},
        {{0, 1, 2, 3, none, none, none, none}, 0, 1},
        {{7, 6, 5, 4, 3, 2, 1, 7}, 1, 1},
        {{9, 8, 7, 6, 5, 4, 3, 2, 1, 0}, 0, 0}, // more rows than are compared by pairs
        {{9, 8, 7, 6, 5, 4, 3, 2, none, none}, 0, 1},
        {{9, 8, 7, 9, 5, 4, 3, 2, none, none}, 1, 1},
    };
    for (const auto& [element, gone, gone_strictly] : cases) {
        auto conn = columns({element}), again = columns({element});
        dense1D<unsigned int> new_IDs;
        EXPECT_EQ(remove_degenerated(conn, new_IDs, false), gone)
            << testing::PrintToString(element);
        EXPECT_EQ(remove_degenerated(again, new_IDs, true), gone_strictly)
            << testing::PrintToString(element);
    }
}

TEST(remove_degenerated, keeps_the_order_and_maps_old_to_new) {
    auto conn = strided(columns({{1, 1, 2}, {0, 1, 2}, {3, 4, 3}, {5, 6, 7}, {2, 1, 0}}), 99u);
    const auto before(conn);
    auto new_IDs = conn.col(0);
    EXPECT_EQ(remove_degenerated(conn, new_IDs, false), 2);
    EXPECT_EQ(list(conn), list(columns({{0, 1, 2}, {5, 6, 7}, {2, 1, 0}})));
    EXPECT_EQ(list(new_IDs), list(vec({none, 0, none, 1, 2})));
    EXPECT_EQ(list(before.sub_matrix(0, 3, 3, 2)), list(columns({{5, 6, 7}, {2, 1, 0}})))
        << "columns behind the kept ones were written to";
}

} // namespace kvx::zelvo::tests
