#include <tuple>

#include "topology/random_meshes.h"

namespace kvx::zelvo::tests {
constexpr unsigned int x = none;

const struct {
    element_type kind;
    column_list element, sides;
} elements[] = {
    {ET_BAR2, {{0, 1}}, {{1}, {0}}},
    {ET_TRIA3, {{0, 1, 2}}, {{1, 2}, {2, 0}, {0, 1}}},
    {ET_QUAD4, {{0, 1, 2, 3}}, {{0, 1}, {1, 2}, {2, 3}, {3, 0}}},
    {ET_FACE_MIX, {{0, 1, 2}}, {{1, 2}, {2, 0}, {0, 1}}},
    {ET_FACE_MIX,
     {{0, 1, 2, x}, {4, 5, 6, 7}},
     {{1, 2}, {2, 0}, {0, 1}, {4, 5}, {5, 6}, {6, 7}, {7, 4}}},
    {ET_TETRA4, {{0, 1, 2, 3}}, {{1, 2, 3}, {2, 0, 3}, {1, 3, 0}, {2, 1, 0}}},
    {ET_PYRAMID5,
     {{0, 1, 2, 3, 4}},
     {{0, 4, 1, x}, {1, 4, 2, x}, {2, 4, 3, x}, {3, 4, 0, x}, {0, 1, 2, 3}}},
    {ET_PENTA6,
     {{0, 1, 2, 3, 4, 5}},
     {{0, 1, 2, x}, {3, 5, 4, x}, {2, 1, 4, 5}, {5, 3, 0, 2}, {0, 3, 4, 1}}},
    {ET_HEXA8,
     {{0, 1, 2, 3, 4, 5, 6, 7}},
     {{0, 3, 7, 4}, {1, 5, 6, 2}, {0, 4, 5, 1}, {3, 2, 6, 7}, {0, 1, 2, 3}, {4, 7, 6, 5}}},
    {ET_SOLID_MIX,
     {{0, 1, 2, 3, x, x, x, x}},
     {{1, 2, 3, x}, {2, 0, 3, x}, {1, 3, 0, x}, {2, 1, 0, x}}},
};

TEST(Boundaries, SidesOfEveryKind) {
    for (const auto& [kind, element, sides] : elements) {
        dense2D<unsigned int> boundaries = strided(columns(element), 9u);
        EXPECT_EQ(get_element_boundaries(boundaries, kind, boundaries), 0);
        EXPECT_EQ(list(boundaries), sides) << kind;
    }
}

// what get_neighbors and both functions here refuse
TEST(Boundaries, RejectedCalls) {
    const dense2D<unsigned int> two(2, 1), three(3, 1), four(4, 1), wide(3, 2), empty(3, 0);
    const dense2D<unsigned int> hole = columns({{0, 1, x, 3}}), six = columns({{0, 1, 2, 3, 4, x}});
    const std::tuple<dense2D<unsigned int>, dense2D<unsigned int>, int, int, int> calls[] = {
        {empty, empty, ET_TRIA6, 0, 0},      {hole, three, ET_FACE_MIX, -1, -1},
        {three, three, ET_TRIA6, -2, -2},    {three, three, ET_SOLID_MIX, -1, -1},
        {three, three, ET_EDGE_MIX, -2, -2}, {three, three, 21, -2, -2},
        {four, two, ET_TRIA3, -1, -1},       {six, two, ET_SOLID_MIX, -1, -1},
        {three, two, ET_TRIA3, -2, 0},       {three, wide, ET_FACE_MIX, -2, 0}};
    unsigned int never_read = 0;
    dense2D<unsigned int> more_than_numbers =
        dense2D<unsigned int>::wrap(&never_read, 3, 1431655766);
    EXPECT_EQ(get_neighbors(more_than_numbers, ET_TRIA3, false, more_than_numbers), -199);
    EXPECT_TRUE(more_than_numbers.empty());
    for (const auto& [conn, across, value, code, of_sides] : calls) {
        const auto kind = static_cast<element_type>(value);
        dense2D<unsigned int> free_sides(2, 2), sides(2, 2), neighbors(2, 2);
        EXPECT_EQ(get_mesh_boundaries(conn, across, kind, free_sides), code) << kind;
        EXPECT_TRUE(free_sides.empty());
        EXPECT_EQ(get_element_boundaries(conn, kind, sides), of_sides) << kind;
        EXPECT_EQ(get_neighbors(conn, kind, false, neighbors), of_sides) << kind;
        EXPECT_EQ(sides.empty(), code == of_sides);
        EXPECT_EQ(neighbors.empty(), code == of_sides);
    }
}

} // namespace kvx::zelvo::tests
