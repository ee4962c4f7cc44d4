#include <sstream>

#include "random_meshes.h"
#include "reference_shapes.h"

namespace kvx::zelvo::tests {
using owned_entry = std::pair<unsigned int, unsigned int*>; // of an element, in its column

// and the lists of all and of free sides; each output is also tried as the input's own object
TEST(Neighbors, RandomMeshesOfEveryKind) {
    const std::tuple<element_type, std::size_t, std::size_t> kinds[] = {
        {ET_BAR2, 2, 1},     {ET_TRIA3, 3, 2},  {ET_QUAD4, 4, 2},
        {ET_FACE_MIX, 4, 2}, {ET_TETRA4, 4, 3}, {ET_PYRAMID5, 5, 4},
        {ET_PENTA6, 5, 4},   {ET_HEXA8, 6, 4},  {ET_SOLID_MIX, 6, 4}};
    often(5000, [&](engine& random) {
        const auto [shape, side_count, side_rows] = kinds[below(random, std::size(kinds))];
        std::vector<element_type> shapes;
        const column_list mesh = random_columns(random, shape, shapes);
        const bool flag = below(random, 2) == 0, in_place = below(random, 2) == 0;
        const element_type kind = shape == ET_TRIA3 && flag ? ET_FACE_MIX : shape; // of 3 rows

        column_list all, free, expected(mesh.size(), std::vector<unsigned int>(side_count, none));
        std::vector<unsigned int*> across; // the entry in `expected` of every side
        std::map<std::vector<unsigned int>, std::vector<owned_entry>> same;
        for (unsigned int e = 0; e < mesh.size(); ++e) {
            std::istringstream sides(sides_of.at(shapes[e]));
            unsigned int* entry = expected[e].data();
            for (std::string side; sides >> side; ++entry) {
                std::vector<unsigned int> nodes;
                for (const char local : side)
                    nodes.push_back(mesh[e][unsigned(local - '0')]);
                all.push_back(nodes);
                all.back().resize(side_rows, none);
                std::sort(nodes.begin(), nodes.end());
                same[nodes].emplace_back(e, entry);
                across.push_back(entry);
            }
        }
        for (const auto& [nodes, group] : same) {
            if (group.size() < 2 || (group.size() > 2 && !flag)) continue;
            *group[0].second = group[1].first;
            *group[1].second = group[0].first;
        }
        for (std::size_t k = 0; k < all.size(); ++k)
            if (*across[k] == none) free.push_back(all[k]);

        dense2D<unsigned int> conn = strided(columns(mesh), 0u), sides(conn), neighbors(conn);
        ASSERT_EQ(get_element_boundaries(in_place ? sides : conn, kind, sides), 0);
        ASSERT_EQ(list(sides), all) << kind;
        ASSERT_EQ(get_neighbors(in_place ? neighbors : conn, kind, flag, neighbors), 0);
        ASSERT_EQ(list(neighbors), expected) << kind << ::testing::PrintToString(mesh);
        const dense2D<unsigned int> view = strided(neighbors, 0u);
        ASSERT_EQ(get_mesh_boundaries(conn, view, kind, in_place ? conn : neighbors), 0);
        ASSERT_EQ(list(in_place ? conn : neighbors), free) << kind;
    });
}

} // namespace kvx::zelvo::tests
