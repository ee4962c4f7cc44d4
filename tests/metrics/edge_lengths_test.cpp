#include <limits>

#include "meshes.h"

namespace kvx::zelvo::tests {

TEST(EdgeLengths, ShortestMeanLongest) {
    const double none_at_all = std::numeric_limits<double>::max();
    const std::vector<std::vector<double>> expected = {
        {0, 0.5, 1}, {1, 5. / 3, 3}, {3, 3, 3}, {none_at_all, 0, 0}};
    const auto edges = columns({{0, 1}, {2, 1}, {0, 1}, {0, 0}}); // one repeated, one of one node
    for (const double unit : {1.0, 1e-200, 1e200}) {
        const double x = 0.6 * unit, y = 0.8 * unit;
        dense2D<double> lengths = strided(points({{0, 0}, {x, y}, {4 * x, 4 * y}, {0, 0}}), 7.0);
        ASSERT_EQ(edge_lengths(lengths, strided(edges, 9u), lengths), 0); // pos itself
        for (unsigned k = 0; k < 9; ++k)
            EXPECT_DOUBLE_EQ(lengths(k % 3, k / 3) / unit, expected[k / 3][k % 3]) << unit;
        EXPECT_EQ(list(lengths)[3], expected[3]);
        EXPECT_EQ(edge_lengths(points({{5}}), columns({{0, 1}}), lengths), -2);
        EXPECT_EQ(edge_lengths(points({{5}}), dense2D<unsigned int>(0, 3), lengths), 0);
        EXPECT_EQ(list(lengths)[0], expected[3]);
    }
}

} // namespace kvx::zelvo::tests
