#include <random>

#include "foundation/index_set.h"
#include "meshes.h"

namespace kvx::zelvo::tests {

using elements = std::vector<std::vector<unsigned int>>;

TEST(max_ID, leaves_no_node_out) {
    EXPECT_EQ(max_ID(vec({})), none);
    EXPECT_EQ(max_ID(dense2D<unsigned int>(0, 3)), none);
    EXPECT_EQ(max_ID(columns({{none}})), 0);
    EXPECT_EQ(max_ID(strided(columns({{2, none}, {4, 1}}), 9u)), 4);
}

TEST(check_IDs, without_a_kind_accepts_no_node_anywhere) {
    const struct {
        elements m;
        unsigned int n;
        bool valid;
    } cases[] = {
        {{}, 0, true},          {{{none}}, 0, true},    {{{0}}, 0, false},
        {{{7, none}}, 8, true}, {{{1}, {8}}, 8, false}, {{{none - 1}}, none, true},
    };
    for (const auto& c : cases) {
        const dense2D<unsigned int> m = columns(c.m);
        EXPECT_EQ(check_IDs(strided(m, 8u), c.n), c.valid) << testing::PrintToString(c.m);
        EXPECT_EQ(check_IDs(m.as_vector(), c.n), c.valid) << testing::PrintToString(c.m);
    }
}

TEST(check_IDs, with_a_kind_follows_its_rows_and_padding) {
    constexpr unsigned int o = none;
    const struct {
        elements m;
        int kind;
        unsigned int n;
        bool valid;
    } cases[] = {
        {{}, ET_NODE_MIX, 0, true},
        {{{0}}, ET_NODE_MIX, 5, false},
        {{{9}}, ET_EDGE_MIX, none, true},
        {{{9}}, 21, none, true},
        {{{0}}, 21, 5, false},
        {{{0, 1, 2}}, ET_TRIA3, 3, true},
        {{{0, 1, 2}, {0, 1, 3}}, ET_TRIA3, 3, false},
        {{{0, 1, o}}, ET_TRIA3, 3, false},
        {{{0, 1, 2, 3}}, ET_TRIA3, 9, false},
        {{{5, 6, 7, o}, {4, 5, 6, 7}}, ET_FACE_MIX, 8, true},
        {{{5, 6, 8}}, ET_FACE_MIX, 8, false},
        {{{5, o, 7, 8}}, ET_FACE_MIX, 9, false},
        {{{5, 6, o}}, ET_FACE_MIX, none, false},
        {{{0, 1, 2, 3}}, ET_SOLID_MIX, 4, true},
        {{{0, 1, 2, o}}, ET_SOLID_MIX, 4, false},
        {{{0, 1, 2, 3, o, o}, {0, 1, 2, 3, 4, o}}, ET_SOLID_MIX, 5, true},
        {{{0, 1, 2, 3, 4, o, o, o}, {0, 1, 2, 3, 4, 5, 6, 7}}, ET_SOLID_MIX, none, true},
        {{{0, 1, 2, 3, 4, o, 6, o}}, ET_SOLID_MIX, 9, false},
        {{{0, 1, 2, 3, 4, 5, 6, o}}, ET_SOLID_MIX, 9, false},
        {{{0, 1, 2, 3, 4, 5, 6}}, ET_SOLID_MIX, 9, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(check_IDs(strided(columns(c.m), 99u), static_cast<element_type>(c.kind), c.n),
                  c.valid)
            << testing::PrintToString(c.m) << " kind " << c.kind << " n " << c.n;
    }
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
    auto m = strided(columns({{0, 1}, {2, 3}, {none, 0}}), 0u);
    change_indices(m, vec({2, none, 1}));
    EXPECT_EQ(list(m), list(columns({{2, none}, {1, 3}, {none, 2}})));

    auto v = vec({1, 2, 0});
    change_indices(v, v);
    EXPECT_EQ(list(v), list(vec({2, 0, 1})));
    unsigned int caller_memory[] = {1, 2, 0};
    auto again = dense2D<unsigned int>::wrap(caller_memory, 1, 3);
    change_indices(again, dense1D<unsigned int>::wrap(caller_memory, 3));
    EXPECT_EQ(list(again), list(columns({{2}, {0}, {1}})));
}

TEST(permutation, scatters_entries) {
    const struct {
        dense1D<unsigned int> perm;
        std::vector<double> moved;
    } cases[] = {
        {vec({2, 0, 1}), {20, 30, 10}},
        {vec({5, none, 3}), {10, 20, 30}},
        {vec({1, 1}), {10, 10, 30}}, // an entry that stays does not claim its place
        {vec({2}), {10, 20, 10}},
    };
    for (const auto& c : cases) {
        const dense1D<double> storage = points({{9, 10, 20, 30, 9}}).as_vector();
        dense1D<double> v = storage.sub_vector(1, 3);
        permutation(v, c.perm);
        EXPECT_EQ(list(storage.sub_vector(1, 3)), c.moved);
    }
    auto own = vec({1, 2, 0});
    permutation(own, own);
    EXPECT_EQ(list(own), list(vec({0, 1, 2})));
}

TEST(unique_indices, appends_in_order_of_first_appearance) {
    auto out = vec({7});
    EXPECT_EQ(unique_indices(out, columns({{7, 3, none, 3}})), 0);
    EXPECT_EQ(list(out), list(vec({7, 7, 3})));
    EXPECT_EQ(unique_indices(out, vec({4, 1, none, 4, 2}), vec({2, 4000000000})), 0);
    EXPECT_EQ(list(out), list(vec({7, 7, 3, 4, 1})));

    dense2D<unsigned int> range[] = {
        strided(columns({{4000000000, 5}, {0, 5}}), 8u),
        dense2D<unsigned int>(0, std::uint64_t{1} << 60), // its columns count for nothing
        columns({{none - 1}, {0}, {6}})};
    out = vec({});
    EXPECT_EQ(unique_indices(out, range, range + 3), 0);
    EXPECT_EQ(list(out), list(vec({4000000000, 5, 0, none - 1, 6})));
    EXPECT_EQ(count_unique_indices(range, range + 3), 5);
    EXPECT_EQ(count_unique_indices(columns({{none, none}})), 0);

    EXPECT_EQ(unique_indices(out, range + 1, range), -3);
    EXPECT_EQ(unique_indices(out, range, range), 0);
    EXPECT_EQ(out.size(), 5);
    EXPECT_EQ(count_unique_indices(range + 1, range), -2);
    EXPECT_EQ(count_unique_indices(range, range), 0);
}

TEST(unique_indices, appends_to_its_own_source) {
    auto v = vec({3, 3});
    unique_indices(v, v);
    EXPECT_EQ(list(v), list(vec({3, 3, 3})));
    const auto conn = columns({{1, 2}, {2, 4}});
    auto column = conn.col(0);
    unique_indices(column, conn);
    EXPECT_EQ(list(column), list(vec({1, 2, 1, 2, 4})));
    EXPECT_EQ(list(conn), list(columns({{1, 2}, {2, 4}})));
}

TEST(index_set, tells_the_same_by_bits_and_by_hash) {
    constexpr unsigned int largest = 100000;
    index_set bits(largest, largest), hash(largest, 2); // the hash table grows far beyond 2
    std::vector<bool> seen(largest + 1);
    std::mt19937 random(1);
    for (int k = 0; k < 5000; ++k) {
        const auto index = k == 0 ? largest : static_cast<unsigned int>(random() % 1000);
        EXPECT_EQ(bits.insert(index), !seen[index]);
        EXPECT_EQ(hash.insert(index), !seen[index]);
        seen[index] = true;
    }
}

} // namespace kvx::zelvo::tests
