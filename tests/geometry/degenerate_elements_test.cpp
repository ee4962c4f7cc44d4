#include "meshes.h"

namespace kvx::zelvo::tests {

TEST(remove_degenerated, tells_by_real_nodes_and_strictly_by_empty_rows_too) {
    constexpr unsigned int o = none;
    for (const bool many_rows : {false, true}) {
        std::vector<std::vector<unsigned int>> elements = {
            {4, 3, 2, 4}, {0, 1, 2, o}, {3, 3, o, o}, {1, 2, o, o}, {5, 6, 7, 8}};
        for (auto& element : elements) // more rows than are compared by pairs
            if (many_rows) element.insert(element.begin(), {14, 13, 12, 11, 10, 9});
        const auto before = strided(columns(elements), 99u);
        auto conn = before;
        auto new_IDs = conn.col(0); // the map may be a view of the elements
        EXPECT_EQ(remove_degenerated(conn, new_IDs, false), 2);
        EXPECT_EQ(list(new_IDs), list(vec({o, 0, o, 1, 2})));
        EXPECT_EQ(list(conn), list(columns({elements[1], elements[3], elements[4]})));
        EXPECT_EQ(list(before)[4], elements[4]); // behind the kept elements nothing is written
        EXPECT_EQ(remove_degenerated(conn, new_IDs, true), 1);
        EXPECT_EQ(list(new_IDs), list(vec({0, o, 1})));
    }
}

} // namespace kvx::zelvo::tests
