#include <tuple>

#include "topology/random_meshes.h"

// What the functions make of valid meshes is tested with get_neighbors.
namespace kvx::zelvo::tests {
// what get_neighbors and both functions here refuse
TEST(Boundaries, MoreSidesThanIndicesCanTell) {
    unsigned int never_read = 0;
    auto huge = dense2D<unsigned int>::wrap(&never_read, 3, 1431655766);
    EXPECT_EQ(get_neighbors(huge, ET_TRIA3, false, huge), -199);
}

} // namespace kvx::zelvo::tests
