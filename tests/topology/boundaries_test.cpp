#include <tuple>

#include "topology/random_meshes.h"

// What the functions make of valid meshes is tested with get_neighbors.
namespace kvx::zelvo::tests {
// what get_neighbors and both functions here refuse
TEST(Boundaries, RejectedCalls) {
    const dense2D<unsigned int> two(2, 1), three(3, 1), four(4, 1), wide(3, 2), empty(3, 0);
    const dense2D<unsigned int> hole = columns({{0, 1, none, 3}});
    unsigned int never_read = 0;
    auto huge = dense2D<unsigned int>::wrap(&never_read, 3, 1431655766);
    EXPECT_EQ(get_neighbors(huge, ET_TRIA3, false, huge), -199);
    const std::tuple<dense2D<unsigned int>, dense2D<unsigned int>, int, int, int> calls[] = {
        {empty, empty, ET_TRIA6, 0, 0},   {hole, three, ET_FACE_MIX, -1, -1},
        {three, three, ET_TRIA6, -2, -2}, {three, three, ET_EDGE_MIX, -2, -2},
        {three, three, 21, -2, -2},       {four, two, ET_TRIA3, -1, -1},
        {three, two, ET_TRIA3, -2, 0},    {three, wide, ET_FACE_MIX, -2, 0}};
    for (const auto& [conn, across, value, code, of_sides] : calls) {
        const auto kind = static_cast<element_type>(value);
        dense2D<unsigned int> free_sides(2, 2), sides(2, 2), neighbors(2, 2);
        EXPECT_EQ(get_mesh_boundaries(conn, across, kind, free_sides), code) << kind;
        EXPECT_EQ(get_element_boundaries(conn, kind, sides), of_sides) << kind;
        EXPECT_EQ(get_neighbors(conn, kind, false, neighbors), of_sides) << kind;
        EXPECT_TRUE(free_sides.empty());
        EXPECT_EQ(sides.empty() && neighbors.empty(), code == of_sides);
    }
}

} // namespace kvx::zelvo::tests
