#pragma once

#include <vector>

#include "generated_meshes.h"
#include "growth.h"

namespace kvx::zelvo::bench {

/// Meshes for whatever goes by the sides of elements: in order and not, numbered with gaps, hostile.
inline std::vector<shape<mesh>> meshes_with_sides() {
    return {{"triangles", bumpy_sphere},
            {"triangles_clustered", clustered<bumpy_sphere>},
            {"triangles_shuffled", shuffled<bumpy_sphere>},
            {"triangles_sparse", sparse<bumpy_sphere>},
            {"triangles_around_a_node", fan},
            {"one_triangle", one_triangle},
            {"tetrahedra", tetrahedral_grid},
            {"tetrahedra_clustered", clustered<tetrahedral_grid>},
            {"tetrahedra_shuffled", shuffled<tetrahedral_grid>},
            {"tetrahedra_sparse", sparse<shuffled<tetrahedral_grid>>},
            {"hexahedra", hexahedral_grid},
            {"solids", mixed_solids}};
}

} // namespace kvx::zelvo::bench
