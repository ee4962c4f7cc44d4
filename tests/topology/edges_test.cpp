#include <algorithm>
#include <map>
#include <set>

#include "topology/random_meshes.h"

namespace kvx::zelvo::tests {
namespace {

// the edges of one element with nodes 0, 1, 2, ...
const column_list bar = {{0, 1}};
const column_list triangle = {{0, 1}, {1, 2}, {2, 0}};
const column_list quadrangle = {{0, 1}, {1, 2}, {2, 3}, {3, 0}};
const column_list tetrahedron = {{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}};
const column_list pyramid = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}};
const column_list wedge = {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}};
const column_list hexahedron = {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6},
                                {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}};
const std::map<element_type, column_list> edges_of = {
    {ET_BAR2, bar},         {ET_BAR3, bar},           {ET_TRIA3, triangle},
    {ET_TRIA6, triangle},   {ET_QUAD4, quadrangle},   {ET_QUAD8, quadrangle},
    {ET_QUAD9, quadrangle}, {ET_TETRA4, tetrahedron}, {ET_TETRA10, tetrahedron},
    {ET_PYRAMID5, pyramid}, {ET_PYRAMID14, pyramid},  {ET_PENTA6, wedge},
    {ET_PENTA18, wedge},    {ET_HEXA8, hexahedron},   {ET_HEXA27, hexahedron}};

TEST(Edges, RandomRangesOfKinds) {
    std::mt19937 random(3);
    for (int trial = 0; trial < 3000; ++trial) {
        std::vector<dense2D<unsigned int>> matrices;
        dense1D<int> kinds(below(random, 4));
        column_list expected = {{8, 8}, {0, 1}}; // in the list before
        dense2D<unsigned int> edges = strided(columns(expected), 7u), more(5, 0);
        std::set<std::pair<unsigned int, unsigned int>> seen;
        for (int& kind : kinds) {
            const auto type = static_cast<element_type>(1 + below(random, 20));
            kind = type == ET_EDGE_MIX ? ET_HEXA20 : type;
            std::vector<element_type> shapes;
            const column_list mesh = random_columns(random, element_type(kind), shapes);
            matrices.push_back(strided(columns(mesh), 0u));
            for (std::size_t e = 0; e < mesh.size(); ++e) {
                if (edges_of.count(shapes[e]) == 0) continue;
                for (const auto& edge : edges_of.at(shapes[e])) {
                    const unsigned int from = mesh[e][edge[0]], to = mesh[e][edge[1]];
                    if (from == none || to == none || !seen.insert(std::minmax(from, to)).second)
                        continue;
                    expected.push_back({from, to});
                }
            }
        }
        const dense2D<unsigned int>* const first = matrices.data();
        ASSERT_EQ(copy_edges(first, first + matrices.size(), kinds, edges), 0);
        ASSERT_EQ(list(edges), expected);
        if (matrices.size() != 1) continue;
        ASSERT_EQ(copy_edges(*first, static_cast<element_type>(kinds[0]), more), 0);
        ASSERT_EQ(list(more), column_list(expected.begin() + 2, expected.end()));
    }
}

TEST(Edges, SpareAndMissingRowsAndTheMatrixItself) {
    const std::tuple<element_type, column_list, column_list> meshes[] = {
        {ET_TRIA3, {{0, 1, 2, none}}, triangle}, {ET_SOLID_MIX, {{0, 1, 2, 3}}, tetrahedron}};
    for (const auto& [kind, conn, expected] : meshes) {
        dense2D<unsigned int> edges;
        EXPECT_EQ(copy_edges(columns(conn), kind, edges), 0);
        EXPECT_EQ(list(edges), expected);
    }
    dense2D<unsigned int> bars = columns({{0, 1}, {1, 0}, {2, 2}});
    EXPECT_EQ(copy_edges(bars, ET_BAR2, bars), 0);
    EXPECT_EQ(list(bars), (column_list{{0, 1}, {1, 0}, {2, 2}, {0, 1}, {2, 2}}));
}

TEST(Edges, RejectedCalls) {
    unsigned int never_read = 0;
    const auto huge = dense2D<unsigned int>::wrap(&never_read, 3, 1431655766);
    const dense2D<unsigned int> good = columns({{0, 1, 2}}), three_rows(3, 1);
    const dense2D<unsigned int> empty(0, 3), hole = columns({{0, none, 2}});
    const std::tuple<dense2D<unsigned int>, int, int, int> calls[] = {
        {empty, ET_TRIA3, 0, 0},  {hole, ET_FACE_MIX, -1, -1}, {good, ET_QUAD4, -1, -1},
        {good, ET_HEXA20, 0, -3}, {good, 21, 0, -3},           {huge, ET_TRIA3, -199, -3}};
    for (const auto& [conn, kind, code, with_three_rows] : calls) {
        dense2D<unsigned int> edges, other = three_rows;
        EXPECT_EQ(copy_edges(conn, static_cast<element_type>(kind), edges), code) << kind;
        EXPECT_TRUE(edges.empty());
        EXPECT_EQ(copy_edges(conn, static_cast<element_type>(kind), other), with_three_rows)
            << kind;
    }
    const dense2D<unsigned int> range[] = {good, columns({{0, 1}})};
    dense2D<unsigned int> edges = three_rows, no_edges;
    EXPECT_EQ(copy_edges(&empty, &empty + 1, dense1D<int>(1, ET_TRIA3), no_edges), 0);
    EXPECT_EQ(copy_edges(range, range, dense1D<int>(3), edges), 0);
    EXPECT_EQ(copy_edges(range + 2, range, dense1D<int>(), edges), -4);
    EXPECT_EQ(copy_edges(range, range + 2, dense1D<int>(1), edges), -5);
    EXPECT_EQ(copy_edges(range, range + 2, dense1D<int>(2, ET_TRIA3), edges), -1);
    EXPECT_EQ(copy_edges(range, range + 2, dense1D<int>(2, ET_BAR2), edges), -3);
    EXPECT_EQ(list(edges), list(three_rows));
}

} // namespace
} // namespace kvx::zelvo::tests
