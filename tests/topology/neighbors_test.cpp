#include <algorithm>
#include <numeric>

#include "topology/random_meshes.h"

namespace kvx::zelvo::tests {
struct side {
    std::size_t element, number;
    std::vector<unsigned int> nodes, sorted;
};

/// Every side of a mesh, in order.
static std::vector<side> all_sides(const column_list& mesh,
                                   const std::vector<element_type>& shapes) {
    std::vector<side> all;
    for (std::size_t e = 0; e < mesh.size(); ++e) {
        dense2D<unsigned int> local(node_count(shapes[e]), 1);
        std::iota(local.data(), local.data() + local.rows(), 0u);
        EXPECT_EQ(get_element_boundaries(local, shapes[e], local), 0);
        for (std::size_t s = 0; s < local.cols(); ++s) {
            side next = {e, s, {}, {}};
            for (const unsigned int i : local.col(s))
                if (i != none) next.nodes.push_back(mesh[e][i]);
            next.sorted = next.nodes;
            std::sort(next.sorted.begin(), next.sorted.end());
            all.push_back(next);
        }
    }
    return all;
}

// and what get_mesh_boundaries makes of it; each output is also tried as the input's own object
TEST(Neighbors, RandomMeshesOfEveryKind) {
    const std::tuple<element_type, std::size_t, std::size_t> kinds[] = {
        {ET_BAR2, 2, 1},     {ET_TRIA3, 3, 2},  {ET_QUAD4, 4, 2},
        {ET_FACE_MIX, 4, 2}, {ET_TETRA4, 4, 3}, {ET_PYRAMID5, 5, 4},
        {ET_PENTA6, 5, 4},   {ET_HEXA8, 6, 4},  {ET_SOLID_MIX, 6, 4}};
    std::mt19937 random(5);
    for (int trial = 0; trial < 5000; ++trial) {
        const auto [kind, side_count, side_rows] = kinds[below(random, std::size(kinds))];
        std::vector<element_type> shapes;
        const column_list mesh = random_columns(random, kind, shapes);
        const bool flag = below(random, 2) == 0, in_place = below(random, 2) == 0;
        column_list expected(mesh.size(), std::vector<unsigned int>(side_count, none)), free;
        const std::vector<side> sides = all_sides(mesh, shapes);
        for (const side& s : sides) {
            std::vector<const side*> same;
            for (const side& other : sides)
                if (s.sorted == other.sorted) same.push_back(&other);
            const bool pairs = same.size() == 2 || (same.size() > 2 && flag);
            if (pairs && (&s == same[0] || &s == same[1])) {
                expected[s.element][s.number] = unsigned(same[&s == same[0]]->element);
            } else {
                free.push_back(s.nodes);
                free.back().resize(side_rows, none);
            }
        }
        dense2D<unsigned int> conn = strided(columns(mesh), 0u), neighbors(conn);
        ASSERT_EQ(get_neighbors(in_place ? neighbors : conn, kind, flag, neighbors), 0);
        ASSERT_EQ(list(neighbors), expected) << kind << ::testing::PrintToString(mesh);
        const dense2D<unsigned int> across = strided(neighbors, 0u);
        ASSERT_EQ(get_mesh_boundaries(conn, across, kind, in_place ? conn : neighbors), 0);
        ASSERT_EQ(list(in_place ? conn : neighbors), free) << kind;
    }
}

TEST(Neighbors, HubIsNoBurden) {
    constexpr unsigned int n = 100000;
    dense2D<unsigned int> fan(3, n), neighbors; // closed: one side of each is free
    for (unsigned int k = 0; k < n; ++k) {
        const unsigned int blade[] = {n, k, (k + 1) % n};
        std::copy_n(blade, 3, &fan(0, k));
    }
    ASSERT_EQ(get_neighbors(fan, ET_TRIA3, false, neighbors), 0);
    EXPECT_EQ(std::count(neighbors.data(), neighbors.data() + 3 * n, none), n);
}

} // namespace kvx::zelvo::tests
