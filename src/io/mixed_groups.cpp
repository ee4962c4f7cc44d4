#include "io/mixed_groups.h"

#include <kvx/zelvo/element_sorting.h>

#include "foundation/memory_guard.h"
#include "foundation/reference_topology.h"

namespace kvx::zelvo {

namespace {

/// Elements of a matrix that passed check_IDs: each has as many nodes as a shape has corners.
void append_groups(const dense2D<unsigned int>& mixed, element_type kind, std::uint64_t source,
                   std::vector<element_group>& groups) {
    dense2D<unsigned int> sorted;
    need(sorted.copy(mixed)); // sorting is in place, and the matrix is the caller's
    dense1D<unsigned int> group_nodes, group_ends, new_IDs;
    need(sort_elfes(sorted, group_nodes, group_ends, new_IDs) == 0);
    const auto& shapes = kind == ET_FACE_MIX ? face_shapes : solid_shapes;
    unsigned int begin = 0;
    for (std::uint64_t g = 0; g < group_nodes.size(); ++g) {
        const unsigned int nodes = group_nodes[g];
        groups.push_back({sorted.sub_matrix(0, begin, nodes, group_ends[g] - begin),
                          linear_kind_of(shapes[nodes]), source});
        begin = group_ends[g];
    }
}

} // namespace

std::vector<element_group> split_mixed(const dense2D<unsigned int>* first,
                                       const dense2D<unsigned int>* last, const dense1D<int>& FEs) {
    std::vector<element_group> groups;
    for (const auto* m = first; m != last; ++m) {
        const auto source = static_cast<std::uint64_t>(m - first);
        const auto kind = static_cast<element_type>(FEs[source]);
        if (m->empty()) continue;
        if (is_mixed(kind)) {
            append_groups(*m, kind, source, groups);
        } else {
            groups.push_back({*m, kind, source});
        }
    }
    return groups;
}

} // namespace kvx::zelvo
