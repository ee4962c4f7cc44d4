#include "random_meshes.h"

namespace kvx::zelvo::tests {

// Lattice nodes often lie in the plane exactly; the arithmetic is exact.
TEST(clip, appends_the_elements_of_positive_distances) {
    often(6000, [](engine& random) {
        const unsigned n = below(random, 9), dim = below(random, 5);
        const auto pos = random_matrix(random, dim, n,
                                       [&] { return below(random, 30) ? below(random, 5) : nan; });
        const auto conn = random_elements(random, n);
        const vector_fixed<double, 3> P(1.0, 2.0, 1.0);
        const vector_fixed<double, 3> N(below(random, 5) - 2., 0.5, dim == 2 ? inf : -1);
        auto kept = random_matrix(random, unsigned(conn.rows()), 2, [] { return 5u; });
        if (below(random, 3) == 0) kept = conn; // appended to what is clipped
        column_list expected = list(kept);
        for (const auto& e : list(conn))
            if (std::all_of(e.begin(), std::find(e.begin(), e.end(), none), [&](unsigned node) {
                    double distance = 0;
                    for (unsigned i = 0; i < std::min(dim, 3u); ++i)
                        distance += (pos(i, node) - P[i]) * N[i];
                    return distance > 0;
                }))
                expected.push_back(e);
        ASSERT_EQ(clip(pos, conn, P, N, kept), 0);
        ASSERT_TRUE(list(kept) == expected || conn.empty());
    });
}

} // namespace kvx::zelvo::tests
