#include "meshes.h"

namespace kvx::zelvo::tests {

TEST(get_IDs, matches_values_by_their_last_place) {
    dense1D<unsigned int> A = vec({5, 7, 5, none});
    dense1D<unsigned int> B = vec({7, 9, 5, 7, none});
    dense1D<unsigned int> B_in_A = vec({1});
    EXPECT_EQ(get_IDs(A, B, B_in_A, A), 0); // A is replaced by the map of its old entries
    EXPECT_EQ(list(B_in_A), list(vec({1, none, 2, 1, none})));
    EXPECT_EQ(list(A), list(vec({none, 3, 2, none})));
}

TEST(get_IDs, matches_elements_as_they_stand_or_turned) {
    constexpr unsigned int o = none;
    // Of two largest nodes in an element, the first leads.
    const auto E1 = strided(columns({{3, 8, 5, o}, {3, 8, o, 5}, {8, 1, 8, 2}, {o, 1, o, o}}), 8u);
    const auto E2 = strided(columns({{3, 8, 5, o},
                                     {5, 3, 8, o},
                                     {3, 5, 8, o},
                                     {3, 8, o, o},
                                     {8, 3, o, 5},
                                     {8, 2, 8, 1},
                                     {o, 1, o, o}}),
                            5u);
    dense1D<unsigned int> E2_in_E1, E1_in_E2;
    EXPECT_EQ(get_IDs(E1, E2, E2_in_E1, E1_in_E2, true), 0);
    EXPECT_EQ(list(E2_in_E1), list(vec({0, o, o, o, o, o, 3})));
    EXPECT_EQ(get_IDs(E1, E2, E2_in_E1, E1_in_E2, false), 0);
    EXPECT_EQ(list(E2_in_E1), list(vec({0, 0, o, o, 1, o, 3})));
    EXPECT_EQ(list(E1_in_E2), list(vec({1, 4, o, 6})));
}

TEST(get_IDs, names_the_first_of_equal_elements_and_the_last_that_matched_it) {
    const auto E1 = columns({{4, 5}, {1, 2}, {2, 1}, {1, 2}});
    dense1D<unsigned int> E2_in_E1, E1_in_E2;
    EXPECT_EQ(get_IDs(E1, columns({{2, 1}, {6, 6}, {1, 2}}), E2_in_E1, E1_in_E2, false), 0);
    EXPECT_EQ(list(E2_in_E1), list(vec({1, none, 1})));
    EXPECT_EQ(list(E1_in_E2), list(vec({none, 2, none, none})));

    EXPECT_EQ(get_IDs(E1, columns({{1, 2, 3}}), E2_in_E1, E1_in_E2, true), -2);
    EXPECT_TRUE(E2_in_E1.empty() && E1_in_E2.empty());
}

} // namespace kvx::zelvo::tests
