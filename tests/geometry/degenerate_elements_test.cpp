#include "meshes.h"

namespace kvx::zelvo::tests {

TEST(remove_degenerated, tells_by_real_nodes_and_strictly_by_empty_rows_too) {
    const struct {
        std::vector<unsigned int> element;
        bool goes, goes_strictly;
    } cases[] = {
        {{7, 4, 7}, true, true},
        {{1, 2, 3, none}, false, false},
        {{2, 2, none, none}, true, true},
        {{0, 1, 2, 3, none, none, none, none}, false, true},
        {{7, 6, 5, 4, 3, 2, 1, 0}, false, false},
        {{7, 6, 5, 4, 3, 2, 1, 7}, true, true},
        {{9, 8, 7, 6, 5, 4, 3, 2, 1, 0}, false, false}, // more rows than are compared by pairs
        {{9, 8, 7, 6, 5, 4, 3, 2, none, none}, false, true},
        {{9, 8, 7, 9, 5, 4, 3, 2, none, none}, true, true},
    };
    for (const auto& c : cases) {
        for (const bool strict : {false, true}) {
            dense2D<unsigned int> conn = columns({c.element});
            dense1D<unsigned int> new_IDs;
            const bool goes = strict ? c.goes_strictly : c.goes;
            EXPECT_EQ(remove_degenerated(conn, new_IDs, strict), goes ? 1 : 0)
                << testing::PrintToString(c.element) << ", strict " << strict;
            EXPECT_EQ(list(new_IDs), list(vec({goes ? none : 0})));
        }
    }
}

TEST(remove_degenerated, keeps_the_order_and_maps_old_to_new) {
    dense2D<unsigned int> conn =
        strided(columns({{1, 1, 2}, {0, 1, 2}, {3, 4, 3}, {5, 6, 7}, {2, 1, 0}}), 99u);
    const dense2D<unsigned int> frame(conn);
    dense1D<unsigned int> new_IDs = conn.col(0);
    EXPECT_EQ(remove_degenerated(conn, new_IDs, false), 2);
    EXPECT_EQ(list(conn), list(columns({{0, 1, 2}, {5, 6, 7}, {2, 1, 0}})));
    EXPECT_EQ(list(new_IDs), list(vec({none, 0, none, 1, 2})));
    EXPECT_EQ(list(frame.sub_matrix(0, 3, 3, 2)), list(columns({{5, 6, 7}, {2, 1, 0}})))
        << "columns behind the kept ones were written to";
}

} // namespace kvx::zelvo::tests
