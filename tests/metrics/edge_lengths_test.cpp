#include "metrics/random_metrics.h"

namespace kvx::zelvo::tests {

TEST(EdgeLengths, ShortestMeanLongestOfTheEdgesAtEachNode) {
    often(3000, [](engine& random) {
        const unsigned n = 1 + below(random, 6), rows = 1 + below(random, 3);
        const double unit = one_of(random, {1.0, 1e-200, 1e200});
        const auto pos = random_matrix(random, rows, n, [&] { return below(random, 9) * unit; });
        const auto edges =
            random_matrix(random, 2, below(random, 9), [&] { return below(random, n); });
        std::vector<std::vector<double>> ends(n);
        for (const auto& edge : list(edges))
            for (const unsigned node : edge) {
                double squares = 0;
                for (unsigned i = 0; i < rows; ++i)
                    squares += std::pow((pos(i, edge[1]) - pos(i, edge[0])) / unit, 2);
                ends[node].push_back(std::sqrt(squares) * unit);
            }
        dense2D<double> lengths;
        ASSERT_EQ(edge_lengths(pos, edges, lengths), 0);
        ASSERT_EQ(lengths.cols(), edges.empty() ? 0 : n);
        for (unsigned k = 0; k < lengths.cols(); ++k) {
            double expected[] = {std::numeric_limits<double>::max(), 0, 0};
            for (const double length : ends[k]) {
                expected[0] = std::min(expected[0], length);
                expected[1] += length / double(ends[k].size());
                expected[2] = std::max(expected[2], length);
            }
            for (unsigned i = 0; i < 3; ++i)
                ASSERT_NEAR(lengths(i, k), expected[i], 1e-14 * expected[i]) << unit;
        }
    });
}

} // namespace kvx::zelvo::tests
