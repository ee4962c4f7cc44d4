#include <algorithm>
#include <map>
#include <numeric>

#include "topology/random_meshes.h"

namespace kvx::zelvo::tests {
namespace {

struct plain_sides {
    column_list neighbors, free;
};

/// Every side into the list of those with its nodes, then pairs list by list.
plain_sides pair_plainly(const column_list& mesh, const std::vector<element_type>& shapes,
                         std::size_t side_count, std::size_t side_rows, bool flag) {
    std::map<std::vector<unsigned int>, std::vector<std::array<std::size_t, 3>>> shared;
    plain_sides all;
    for (std::size_t e = 0; e < mesh.size(); ++e) {
        std::vector<unsigned int> local(node_count(shapes[e]));
        std::iota(local.begin(), local.end(), 0u);
        dense2D<unsigned int> sides;
        EXPECT_EQ(get_element_boundaries(columns({local}), shapes[e], sides), 0);
        for (std::size_t s = 0; s < sides.cols(); ++s) {
            std::vector<unsigned int> side;
            for (const unsigned int i : sides.col(s))
                if (i != none) side.push_back(mesh[e][i]);
            std::vector<unsigned int> key = side;
            std::sort(key.begin(), key.end());
            shared[key].push_back({e, s, all.free.size()});
            side.resize(side_rows, none);
            all.free.push_back(side);
        }
    }
    all.neighbors.resize(mesh.size(), std::vector<unsigned int>(side_count, none));
    for (const auto& [nodes, same] : shared) {
        if (same.size() < 2 || (same.size() > 2 && !flag)) continue;
        for (const std::size_t k : {0u, 1u}) {
            all.neighbors[same[k][0]][same[k][1]] = static_cast<unsigned int>(same[1 - k][0]);
            all.free[same[k][2]].clear();
        }
    }
    std::erase(all.free, std::vector<unsigned int>());
    return all;
}

// and what get_mesh_boundaries makes of it; each output is also tried as the input's own object
TEST(Neighbors, RandomMeshesOfEveryKind) {
    const std::tuple<element_type, std::size_t, std::size_t> kinds[] = {
        {ET_BAR2, 2, 1},     {ET_TRIA3, 3, 2},  {ET_QUAD4, 4, 2},
        {ET_FACE_MIX, 4, 2}, {ET_TETRA4, 4, 3}, {ET_PYRAMID5, 5, 4},
        {ET_PENTA6, 5, 4},   {ET_HEXA8, 6, 4},  {ET_SOLID_MIX, 6, 4}};
    std::mt19937 random(5);
    for (int trial = 0; trial < 9000; ++trial) {
        const auto [kind, side_count, side_rows] = kinds[below(random, std::size(kinds))];
        std::vector<element_type> shapes;
        const column_list mesh = random_columns(random, kind, shapes);
        const bool flag = below(random, 2) == 0, in_place = below(random, 2) == 0;
        const plain_sides expected = pair_plainly(mesh, shapes, side_count, side_rows, flag);
        dense2D<unsigned int> conn = strided(columns(mesh), 0u), neighbors(conn);
        ASSERT_EQ(get_neighbors(in_place ? neighbors : conn, kind, flag, neighbors), 0);
        ASSERT_EQ(list(neighbors), expected.neighbors) << kind << ::testing::PrintToString(mesh);
        const dense2D<unsigned int> across = strided(neighbors, 0u);
        ASSERT_EQ(get_mesh_boundaries(conn, across, kind, in_place ? conn : neighbors), 0);
        ASSERT_EQ(list(in_place ? conn : neighbors), expected.free) << kind;
    }
}

TEST(Neighbors, TwoTriangles) {
    dense2D<unsigned int> neighbors;
    for (const element_type kind : {ET_TRIA3, ET_FACE_MIX}) {
        EXPECT_EQ(get_neighbors(columns({{0, 1, 2}, {2, 1, 3}}), kind, false, neighbors), 0);
        EXPECT_EQ(list(neighbors), (column_list{{1, none, none}, {none, none, 0}}));
    }
}

// a fan round one node; a strip numbered round its contour, where many edges have one node sum
TEST(Neighbors, HubsAndEqualNodeSumsAreNoBurden) {
    constexpr unsigned int n = 100000;
    dense2D<unsigned int> fan(3, n), strip(3, n), neighbors;
    for (unsigned int k = 0; k < n; ++k) {
        const unsigned int low = k / 2, high = n + 1 - k / 2; // low + high is constant
        const unsigned int blade[] = {0, k + 1, (k + 1) % n + 1};
        const unsigned int tile[] = {low + k % 2, k % 2 == 0 ? low + 1 : high - 1, high};
        std::copy_n(blade, 3, &fan(0, k));
        std::copy_n(tile, 3, &strip(0, k));
    }
    ASSERT_EQ(get_neighbors(fan, ET_TRIA3, false, neighbors), 0);
    EXPECT_EQ(std::count(neighbors.data(), neighbors.data() + 3 * n, none), n);
    ASSERT_EQ(get_neighbors(strip, ET_TRIA3, false, neighbors), 0);
    EXPECT_EQ(std::count(neighbors.data(), neighbors.data() + 3 * n, none), n + 2);
}

TEST(Neighbors, MoreSidesThanNumbers) {
    unsigned int never_read = 0;
    dense2D<unsigned int> neighbors(2, 2);
    const auto huge = dense2D<unsigned int>::wrap(&never_read, 3, 1431655766);
    EXPECT_EQ(get_neighbors(huge, ET_TRIA3, false, neighbors), -199);
    EXPECT_TRUE(neighbors.empty());
}

} // namespace
} // namespace kvx::zelvo::tests
