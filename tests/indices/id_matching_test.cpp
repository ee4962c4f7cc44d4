#include "random_meshes.h"

namespace kvx::zelvo::tests {

/// The first or last place of every item of `two` in `one`, and the last one of the other way.
template <class Item>
column_list plain_maps(const std::vector<Item>& one, const std::vector<Item>& two, bool last) {
    column_list maps = {std::vector(two.size(), none), std::vector(one.size(), none)};
    for (unsigned j = 0; j < two.size(); ++j) {
        for (unsigned i = 0; i < one.size(); ++i)
            if (one[i] == two[j] && (last || maps[0][j] == none)) maps[0][j] = i;
        if (maps[0][j] != none) maps[1][maps[0][j]] = j;
    }
    return maps;
}

// Elements count as they stand, or turned until the first of the largest nodes leads.
TEST(get_IDs, finds_what_a_plain_search_finds) {
    often(6000, [](engine& random) {
        const auto A = random_nodes(random, below(random, 12), 8);
        const auto B = random_nodes(random, below(random, 12), 8);
        std::vector<unsigned> values = list(A);
        std::replace(values.begin(), values.end(), none, none - 1); // which is not found
        dense1D<unsigned> first, second;
        ASSERT_EQ(get_IDs(A, B, first, second), 0);
        ASSERT_EQ((column_list{list(first), list(second)}), plain_maps(values, list(B), true));

        const unsigned rows = below(random, 5);
        const auto draw = [&] { return any_node(random, 3); };
        const auto E1 = random_matrix(random, rows, below(random, 20), draw);
        const auto E2 = random_matrix(random, rows, below(random, 20), draw);
        const bool exact = below(random, 2) == 0;
        column_list one = list(E1), two = list(E2);
        for (column_list* elements : {&one, &two})
            for (auto& e : *elements) {
                const auto end = std::find(e.begin(), e.end(), none);
                if (!exact) std::rotate(e.begin(), std::max_element(e.begin(), end), end);
            }
        ASSERT_EQ(get_IDs(E1, E2, first, second, exact), 0);
        ASSERT_EQ((column_list{list(first), list(second)}), plain_maps(one, two, false));
    });
}

} // namespace kvx::zelvo::tests
