#include <kvx/zelvo/edges.h>

#include "foundation/appending.h"
#include "foundation/matrix_range.h"
#include "foundation/memory_guard.h"
#include "indices/connectivity_check.h"
#include "topology/distinct_edges.h"

namespace kvx::zelvo {

namespace {

int append_edges(distinct_edges& mesh, dense2D<unsigned int>& edges) {
    const std::uint64_t distinct = mesh.find();
    if (distinct == 0) return 0;

    // a list without entries may have any number of rows
    dense2D<unsigned int> fresh;
    dense2D<unsigned int>& list = edges.empty() ? fresh : edges;
    const std::uint64_t kept = list.cols();
    append_columns(list, 2, distinct, no_node);
    unsigned int* edge = &list(0, kept);
    mesh.walk([&](unsigned int from, unsigned int to) {
        edge[0] = from;
        edge[1] = to;
        edge += list.ld();
    });
    if (edges.empty()) edges.swap(fresh);
    return 0;
}

} // namespace

int copy_edges(const dense2D<unsigned int>& connectM, element_type FE_type,
               dense2D<unsigned int>& edges) noexcept {
    if (connectM.empty()) return 0;
    int kind = FE_type;
    return guarded(
        [&] { return copy_edges(&connectM, &connectM + 1, dense1D<int>::wrap(&kind, 1), edges); });
}

int copy_edges(const dense2D<unsigned int>* first, const dense2D<unsigned int>* last,
               const dense1D<int>& FE_types, dense2D<unsigned int>& edges) noexcept {
    if (first == last) return 0;
    if (is_reversed(first, last)) return -4;
    if (static_cast<std::uint64_t>(last - first) != FE_types.size()) return -5;
    return guarded([&] {
        distinct_edges mesh;
        for (auto m = first; m != last; ++m) {
            const element_type kind = edge_kind(FE_types[static_cast<std::uint64_t>(m - first)]);
            if (!fits(*m, kind, no_node)) return -1;
            mesh.add(*m, kind);
        }
        if (!edges.empty() && edges.rows() != 2) return -3;
        return append_edges(mesh, edges);
    });
}

} // namespace kvx::zelvo
