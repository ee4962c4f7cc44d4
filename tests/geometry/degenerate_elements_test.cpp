#include "random_meshes.h"

namespace kvx::zelvo::tests {

TEST(remove_degenerated, removes_columns_with_a_repeated_entry) {
    often(4000, [](engine& random) {
        const unsigned rows = 1 + below(random, 11); // up to 8 are compared by pairs
        auto conn = random_matrix(random, rows, 1 + below(random, 8),
                                  [&] { return any_node(random, 1 + rows * rows / 2, rows); });
        const auto view = conn;
        const column_list before = list(conn);
        const bool strict = below(random, 2) == 0;
        column_list expected;
        std::vector<unsigned> map;
        for (auto element : before) {
            if (!strict) std::erase(element, none);
            std::sort(element.begin(), element.end());
            const bool twice = std::adjacent_find(element.begin(), element.end()) != element.end();
            map.push_back(twice ? none : unsigned(expected.size()));
            if (!twice) expected.push_back(before[map.size() - 1]);
        }
        dense1D<unsigned> new_IDs;
        ASSERT_EQ(remove_degenerated(conn, new_IDs, strict), before.size() - expected.size());
        ASSERT_EQ(list(conn), expected);
        ASSERT_EQ(list(new_IDs), map);
        // behind the kept elements nothing is written
        expected.insert(expected.end(), before.begin() + int(expected.size()), before.end());
        ASSERT_EQ(list(view), expected);
    });
}

} // namespace kvx::zelvo::tests
