#include <numeric>

#include "random_meshes.h"

namespace kvx::zelvo::tests {
/// Every element takes the lowest label among those it shares a node with, as often as it takes.
static column_list plain_parts(const column_list& mesh) {
    const std::size_t n = mesh.size();
    column_list parts(n);
    std::vector<unsigned int> label(n);
    std::iota(label.begin(), label.end(), 0u);
    for (std::size_t k = 0; k < n * n * n; ++k) {
        const std::size_t a = k % n, b = k / n % n;
        for (const unsigned int node : mesh[b])
            if (node != none && names(mesh[a], node))
                label[a] = label[b] = std::min(label[a], label[b]);
    }
    for (unsigned int e = 0; e < n; ++e)
        parts[label[e]].push_back(e);
    std::erase(parts, std::vector<unsigned int>());
    return parts;
}

TEST(Subdomains, RandomMeshes) {
    often(2000, [](engine& random) {
        const unsigned int n = below(random, 13);
        const unsigned int scale =
            below(random, 3) == 0 ? 170000000 : 1; // too far apart for an array
        column_list mesh(n, std::vector<unsigned int>(3)), across = mesh, joined = mesh;
        for (unsigned int e = 0; e < n; ++e) {
            for (unsigned int i = 0; i < 3; ++i) {
                mesh[e][i] = below(random, 3) == 0 ? none : scale * below(random, 25);
                joined[e][i] = across[e][i] = below(random, 4) == 0 ? below(random, n) : none;
            }
            joined[e].push_back(e); // shares a node with those who name it
        }
        const dense2D<unsigned int> conn = strided(columns(mesh), 1u);
        dense1D<unsigned int> elements = conn.as_vector(), offsets;
        ASSERT_EQ(get_subdomains(conn, elements, offsets), 0);
        ASSERT_EQ(split(elements, offsets), plain_parts(mesh));

        const dense2D<unsigned int> neighbors = strided(columns(across), 1u);
        dense2D<unsigned int> moved(conn), moved_neighbors(neighbors); // written in place
        ASSERT_EQ(get_subdomains(moved, moved_neighbors, offsets), 0);
        dense1D<unsigned int> order, expected;
        ASSERT_EQ(get_subdomains(columns(joined), order, expected), 0); // as tested above
        ASSERT_EQ(list(offsets), list(expected));
        for (unsigned int e = 0; e < 3 * n; ++e) {
            const unsigned int f = neighbors(e % 3, e / 3);
            ASSERT_EQ(conn(e % 3, e / 3), mesh[order[e / 3]][e % 3]);
            ASSERT_EQ(f == none ? none : order[f], across[order[e / 3]][e % 3]);
        }
    });
}

} // namespace kvx::zelvo::tests
