#include <set>

#include "random_meshes.h"
#include "reference_shapes.h"

namespace kvx::zelvo::tests {
TEST(Edges, RandomRangesOfKinds) {
    often(3000, [](engine& random) {
        std::vector<dense2D<unsigned int>> matrices;
        dense1D<int> kinds(below(random, 4));
        column_list expected = {{8, 8}, {0, 1}}; // in the list before
        dense2D<unsigned int> edges = strided(columns(expected), 7u);
        std::set<std::pair<unsigned int, unsigned int>> seen;
        for (int& kind : kinds) {
            kind = int(below(random, 21));
            std::vector<element_type> shapes;
            column_list mesh = random_columns(random, element_type(kind), shapes);
            for (std::size_t e = 0; e < mesh.size(); ++e) {
                const std::string local = edges_of(shapes[e]);
                for (std::size_t k = 0; k < local.size(); k += 3) {
                    const auto from = mesh[e][unsigned(local[k] - '0')];
                    const auto to = mesh[e][unsigned(local[k + 1] - '0')];
                    if (from != none && to != none && seen.insert(std::minmax(from, to)).second)
                        expected.push_back({from, to});
                }
                if (shapes[e] == kind) mesh[e].resize(28, none); // rows that are not read
            }
            matrices.push_back(strided(columns(mesh), 0u));
        }
        const dense2D<unsigned int>* const first = matrices.data();
        ASSERT_EQ(copy_edges(first, first + matrices.size(), kinds, edges), 0);
        ASSERT_EQ(list(edges), expected);
    });
}

} // namespace kvx::zelvo::tests
