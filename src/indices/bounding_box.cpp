#include <kvx/zelvo/bounding_box.h>

#include <kvx/zelvo/node_indices.h>

#include "foundation/memory_guard.h"
#include "indices/index_collection.h"

namespace kvx::zelvo {

namespace {

template <unsigned Dim>
void include_node(const double* x, vector_fixed<double, Dim>& lo, vector_fixed<double, Dim>& hi) {
    for (unsigned i = 0; i < Dim; ++i) {
        if (!(x[i] >= lo[i])) lo[i] = x[i];
        if (x[i] > hi[i]) hi[i] = x[i];
    }
}

template <unsigned Dim>
int include_all(const dense2D<double>& pos, vector_fixed<double, Dim>& lo,
                vector_fixed<double, Dim>& hi) {
    if (pos.rows() != Dim) return -1;
    for (std::uint64_t j = 0; j < pos.cols(); ++j)
        include_node(&pos(0, j), lo, hi);
    return 0;
}

template <unsigned Dim>
int include_listed(const dense2D<double>& pos, const dense1D<unsigned int>& nodes,
                   vector_fixed<double, Dim>& lo, vector_fixed<double, Dim>& hi) {
    if (nodes.empty()) return 0;
    if (pos.rows() != Dim) return -1;
    if (!check_IDs(nodes, index_bound(pos.cols()))) return -2;
    for (const unsigned int node : nodes) {
        if (node != no_node) include_node(&pos(0, node), lo, hi);
    }
    return 0;
}

template <unsigned Dim>
int include_used(const dense2D<double>& pos, const dense2D<unsigned int>& conn,
                 vector_fixed<double, Dim>& lo, vector_fixed<double, Dim>& hi) {
    return guarded([&] {
        dense1D<unsigned int> nodes;
        append_unique(nodes, &conn, &conn + 1);
        return include_listed(pos, nodes, lo, hi);
    });
}

} // namespace

int inc_bounding_box(const dense2D<double>& pos, vector_fixed<double, 2>& lo,
                     vector_fixed<double, 2>& hi) noexcept {
    return include_all(pos, lo, hi);
}

int inc_bounding_box(const dense2D<double>& pos, vector_fixed<double, 3>& lo,
                     vector_fixed<double, 3>& hi) noexcept {
    return include_all(pos, lo, hi);
}

int inc_bounding_box(const dense2D<double>& pos, const dense1D<unsigned int>& nodes,
                     vector_fixed<double, 2>& lo, vector_fixed<double, 2>& hi) noexcept {
    return include_listed(pos, nodes, lo, hi);
}

int inc_bounding_box(const dense2D<double>& pos, const dense1D<unsigned int>& nodes,
                     vector_fixed<double, 3>& lo, vector_fixed<double, 3>& hi) noexcept {
    return include_listed(pos, nodes, lo, hi);
}

int inc_bounding_box(const dense2D<double>& pos, const dense2D<unsigned int>& conn,
                     vector_fixed<double, 2>& lo, vector_fixed<double, 2>& hi) noexcept {
    return include_used(pos, conn, lo, hi);
}

int inc_bounding_box(const dense2D<double>& pos, const dense2D<unsigned int>& conn,
                     vector_fixed<double, 3>& lo, vector_fixed<double, 3>& hi) noexcept {
    return include_used(pos, conn, lo, hi);
}

} // namespace kvx::zelvo
