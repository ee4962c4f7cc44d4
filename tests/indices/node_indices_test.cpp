#include "meshes.h"

namespace kvx::zelvo::tests {

TEST(max_ID, leaves_no_node_out) {
    EXPECT_EQ(max_ID(dense2D<unsigned int>(0, 3)), none);
    EXPECT_EQ(max_ID(vec({none})), 0);
    EXPECT_EQ(max_ID(strided(columns({{2, none}, {4, 1}}), 9u)), 4);
}

TEST(check_IDs, accepts_no_node_anywhere_or_where_the_kind_pads) {
    EXPECT_TRUE(check_IDs(vec({none}), 0));
    EXPECT_FALSE(check_IDs(vec({0}), 0));
    EXPECT_TRUE(check_IDs(strided(columns({{7}, {none}}), 8u), 8));
    constexpr unsigned int o = none;
    const struct {
        std::vector<std::vector<unsigned int>> m;
        int kind;
        unsigned int n;
        bool valid;
    } cases[] = {
        {{}, ET_NODE_MIX, 0, true},
        {{{0}}, ET_NODE_MIX, 5, false},
        {{{9}}, ET_EDGE_MIX, none, true},
        {{{9}}, 21, none, true},
        {{{0, 1, 2}, {0, 1, 3}}, ET_TRIA3, 3, false},
        {{{0, 1, o}}, ET_TRIA3, 3, false},
        {{{0, 1, 2, 3}}, ET_TRIA3, 9, false},
        {{{5, 6, 7, o}, {4, 5, 6, 7}}, ET_FACE_MIX, 8, true},
        {{{5, o, 7, 8}}, ET_FACE_MIX, 9, false},
        {{{0, 1, 2, o}}, ET_SOLID_MIX, 4, false},
        {{{0, 1, 2, 3, o, o}, {0, 1, 2, 3, 4, o}}, ET_SOLID_MIX, 5, true},
        {{{0, 1, 2, 3, 4, 5, 6, o}}, ET_SOLID_MIX, 9, false},
        {{{0, 1, 2, 3, 4, o, 6, o}}, ET_SOLID_MIX, 9, false},
    };
    for (const auto& [m, kind, n, valid] : cases)
        EXPECT_EQ(check_IDs(strided(columns(m), 99u), static_cast<element_type>(kind), n), valid)
            << testing::PrintToString(m) << " kind " << kind << " n " << n;
}

TEST(shift_indices, wraps_and_shifts_no_node_in_fixed_kinds_only) {
    auto v = vec({0, 5, none});
    EXPECT_EQ(shift_indices(v, -1), 0);
    EXPECT_EQ(list(v), list(vec({none, 4, none})));
    for (const auto& [kind, shifted] : {std::pair(ET_TRIA3, 2u), std::pair(ET_FACE_MIX, none)}) {
        auto m = strided(columns({{1, 2, none}, {4, 5, 6}}), 0u);
        EXPECT_EQ(shift_indices(m, 3, kind), 0);
        EXPECT_EQ(list(m), list(columns({{4, 5, shifted}, {7, 8, 9}})));
    }
}

TEST(change_indices, takes_the_map_as_it_was) {
    unsigned int caller_memory[] = {2, 0, 77, 1, none};
    auto m = dense2D<unsigned int>::wrap(caller_memory, 2, 2, 3);
    change_indices(m, dense1D<unsigned int>::wrap(caller_memory, 4));
    EXPECT_THAT(caller_memory, testing::ElementsAre(77, 2, 77, 0, none));
}

TEST(permutation, scatters_entries) {
    const dense1D<double> storage = points({{9, 10, 20, 30, 9}}).as_vector();
    dense1D<double> v = storage.sub_vector(1, 3);
    permutation(v, vec({2, 0, 1}));
    EXPECT_EQ(list(storage), (std::vector<double>{9, 20, 30, 10, 9}));
    permutation(v, vec({1, 1, 3})); // an entry that stays does not claim its place
    EXPECT_EQ(list(v), (std::vector<double>{20, 20, 10}));
    auto own = vec({1, 2, 0});
    permutation(own, own);
    EXPECT_EQ(list(own), list(vec({0, 1, 2})));
}

TEST(unique_indices, appends_in_order_of_first_appearance) {
    auto out = vec({7});
    EXPECT_EQ(unique_indices(out, vec({33, 1, none, 33, 2, 7}), vec({2, 4000000000})), 0);
    EXPECT_EQ(list(out), list(vec({7, 33, 1, 7})));
    unique_indices(out, out); // its own source
    EXPECT_EQ(list(out), list(vec({7, 33, 1, 7, 7, 33, 1})));

    dense2D<unsigned int> range[] = {
        strided(columns({{4000000000, 5}, {0, 5}}), 8u),
        dense2D<unsigned int>(0, std::uint64_t{1} << 60), // its columns count for nothing
        columns({{none - 1}, {0}, {6}})};
    out = range[0].col(0);
    EXPECT_EQ(unique_indices(out, range, range + 3), 0);
    EXPECT_EQ(list(out), list(vec({4000000000, 5, 4000000000, 5, 0, none - 1, 6})));
    EXPECT_EQ(list(range[0]), list(columns({{4000000000, 5}, {0, 5}})));
    EXPECT_EQ(count_unique_indices(range, range + 3), 5);
    EXPECT_EQ(unique_indices(out, range + 1, range), -3);
    EXPECT_EQ(count_unique_indices(range + 1, range), -2);
    EXPECT_EQ(out.size(), 7);
}

} // namespace kvx::zelvo::tests
