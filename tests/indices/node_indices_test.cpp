#include "random_meshes.h"

namespace kvx::zelvo::tests {

using entries = std::vector<unsigned>;

column_list columns_of(const dense1D<unsigned>& v) {
    return {list(v)};
}
column_list columns_of(const dense2D<unsigned>& m) {
    return list(m);
}

/// Bounds, a map and a shift of a vector or a matrix.
template <class Array>
void compare_with_loops(Array a, engine& random) {
    constexpr bool is_list = std::is_same_v<Array, dense1D<unsigned>>;
    column_list expected = columns_of(a);
    const entries used = used_nodes(expected);
    ASSERT_EQ(max_ID(a), a.empty()      ? none
                         : used.empty() ? 0
                                        : *std::max_element(used.begin(), used.end()));
    for (const unsigned n : {none, below(random, 9)})
        ASSERT_EQ(check_IDs(a, n), n == none || all_below(n, expected));

    auto map = random_nodes(random, below(random, 12), 9, 9);
    if constexpr (!is_list)
        if (below(random, 4) == 0) map = a.as_vector(); // the map is taken as it was
    const int s = int(below(random, 11)) - 5;
    const auto kind = element_type(below(random, 21));
    const bool pads = is_list || kind == ET_FACE_MIX || kind == ET_SOLID_MIX;
    for (auto& column : expected)
        for (unsigned& e : column) {
            if (e < map.size()) e = map[e];
            if (!pads || e != none) e += unsigned(s);
        }
    change_indices(a, map);
    if constexpr (is_list)
        shift_indices(a, s);
    else
        shift_indices(a, s, kind);
    ASSERT_EQ(columns_of(a), expected);
}

TEST(node_indices, are_bounded_mapped_and_shifted_as_by_plain_loops) {
    often(3000, [](engine& random) {
        compare_with_loops(random_nodes(random, below(random, 9), 9, 20), random);
        compare_with_loops(random_elements(random, 9, 20), random);
    });
}

TEST(check_IDs, accepts_the_columns_that_a_kind_can_have) {
    int accepted = 0;
    often(20000, [&](engine& random) {
        const int kind = int(below(random, 23)) - 1;
        const unsigned n = below(random, 4) == 0 ? none : 2 + below(random, 5);
        const entries solids = {4, 5, 6, 8};
        const unsigned usual = kind == ET_FACE_MIX    ? 3 + below(random, 2)
                               : kind == ET_SOLID_MIX ? solids[below(random, 4)]
                                                      : node_count(element_type(kind));
        const unsigned rows = below(random, 4) == 0 ? below(random, 10) : usual;
        auto m = random_matrix(random, rows, below(random, 4), [&] { return below(random, 2); });
        for (unsigned k = 0; k < 3 && !m.empty(); ++k) {
            const unsigned j = below(random, unsigned(m.cols()));
            for (unsigned i = below(random, 2 * rows); i < rows; ++i)
                m(i, j) = none; // padding
            if (below(random, 5) == 0) m(below(random, rows), j) = n - below(random, 2);
        }
        bool valid = true;
        for (const entries& column : list(m)) {
            const auto end = std::find(column.begin(), column.end(), none);
            const auto nodes = unsigned(end - column.begin());
            const bool known =
                all_below(n, {column}) && std::count(end, column.end(), none) == column.end() - end;
            if (kind == ET_FACE_MIX)
                valid = valid && known && (rows == 3 || rows == 4) && nodes >= 3;
            else if (kind == ET_SOLID_MIX)
                valid = valid && known && names(solids, rows) &&
                        (nodes == rows || (nodes > 3 && nodes < 7));
            else
                valid = valid && (n == none || (is_element_type(kind) && nodes == rows && known &&
                                                rows == node_count(element_type(kind))));
        }
        ASSERT_EQ(check_IDs(m, element_type(kind), n), valid || m.empty()) << kind << " " << n;
        accepted += valid && !m.empty();
    });
    EXPECT_GT(accepted, 3000);
}

TEST(permutation, scatters_entries) {
    often(3000, [](engine& random) {
        auto v = random_nodes(random, below(random, 8), 90);
        const auto perm = below(random, 5) ? random_nodes(random, below(random, 10), 8, 20) : v;
        dense1D<double> x(v.size());
        std::copy(v.begin(), v.end(), x.begin());
        entries expected = list(v);
        for (unsigned k = 0; k < std::min(v.size(), perm.size());
             ++k) // one that stays claims no place
            if (perm[k] < v.size() && perm[k] != k) expected[perm[k]] = v[k];
        permutation(x, perm);
        permutation(v, perm); // which may be v
        ASSERT_EQ(list(v), expected);
        ASSERT_TRUE(std::equal(x.begin(), x.end(), v.begin()));
    });
}

TEST(unique_indices, appends_in_order_of_first_appearance) {
    often(4000, [](engine& random) {
        dense2D<unsigned> range[] = {random_elements(random, 12, 12),
                                     dense2D<unsigned>(0, std::uint64_t{1} << 60), // ends at once
                                     random_elements(random, 12, 12)};
        const unsigned count = below(random, 4);
        const auto excluded = random_nodes(random, below(random, 9), 12, 9);
        const auto v = random_nodes(random, below(random, 20), 12, 12);
        auto out = range[0].col(0), of_list = vec({7}), own = v; // views of what is read
        const column_list first = list(range[0]);
        column_list all = count > 0 ? first : column_list(), last = list(range[2]);
        if (count > 2) all.insert(all.end(), last.begin(), last.end());
        const entries used = used_nodes(all), of_v = used_nodes({list(v)});
        entries expected = list(out), twice = list(v), listed = {7};
        expected.insert(expected.end(), used.begin(), used.end());
        twice.insert(twice.end(), of_v.begin(), of_v.end());
        std::copy_if(of_v.begin(), of_v.end(), std::back_inserter(listed),
                     [&](unsigned e) { return !names(list(excluded), e); });
        ASSERT_EQ(count == 1 ? count_unique_indices(range[0])
                             : count_unique_indices(range, range + count),
                  used.size());
        ASSERT_EQ(count == 1 ? unique_indices(out, range[0])
                             : unique_indices(out, range, range + count),
                  0);
        ASSERT_EQ(list(out), expected);
        ASSERT_EQ(list(range[0]), first);
        ASSERT_EQ(unique_indices(of_list, v, excluded) + unique_indices(own, own), 0);
        ASSERT_EQ(list(of_list), listed);
        ASSERT_EQ(list(own), twice);
    });
}

} // namespace kvx::zelvo::tests
