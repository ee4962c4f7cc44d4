#include <kvx/zelvo/edge_qualities.h>

#include <vector>

#include "foundation/matrix_range.h"
#include "foundation/memory_guard.h"
#include "metrics/metric_length.h"
#include "metrics/symmetric_eigen.h"
#include "topology/distinct_edges.h"

namespace kvx::zelvo {

namespace {

std::uint64_t entry_count(const dense1D<double>& sizes) {
    return sizes.size();
}
std::uint64_t entry_count(const dense2D<double>& metrics) {
    return metrics.cols();
}

template <unsigned Dim>
bool is_valid_at(unsigned int node, const dense1D<double>& sizes) {
    return node < sizes.size() && !(sizes[node] <= 0);
}
template <unsigned Dim>
bool is_valid_at(unsigned int node, const dense2D<double>& metrics) {
    return metrics.rows() == packed_size<Dim> && node < metrics.cols() &&
           is_metric<Dim>(&metrics(0, node));
}

constexpr int incomplete = -5;

/// Hands the metric length of every edge with valid ends to the statistics; incomplete when there
/// are others or the field has other than one entry per node.
template <unsigned Dim, class Field>
int measure_edges(const dense2D<double>& pos, const distinct_edges& mesh, const Field& field,
                  kvx::misc::histogram& statistics) {
    enum : unsigned char { unknown, valid, invalid };
    std::vector<unsigned char> states(pos.cols()); // a node has many edges, its test may be long
    const auto is_valid = [&](unsigned int node) {
        if (states[node] == unknown) states[node] = is_valid_at<Dim>(node, field) ? valid : invalid;
        return states[node] == valid;
    };
    bool complete = entry_count(field) == pos.cols();
    mesh.walk([&](unsigned int a, unsigned int b) {
        if (is_valid(a) && is_valid(b)) {
            statistics.process(measure<Dim>(pos, field, a, b).metric_length());
        } else {
            complete = false;
        }
    });
    return complete ? 0 : incomplete;
}

template <class Field>
int measure_range(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                  const dense2D<unsigned int>* last, const dense1D<int>& types, const Field& field,
                  kvx::misc::histogram& statistics) {
    if (first == last) return 0;
    if (pos.rows() != 2 && pos.rows() != 3) return -1;
    if (is_reversed(first, last)) return -4;
    if (static_cast<std::uint64_t>(last - first) != types.size()) return -4;
    return guarded([&] {
        distinct_edges mesh;
        for (auto m = first; m != last; ++m) {
            const auto kind =
                static_cast<element_type>(types[static_cast<std::uint64_t>(m - first)]);
            if (!names_nodes(pos, *m, kind)) return -2;
            mesh.add(*m, kind);
        }
        mesh.find();
        return pos.rows() == 2 ? measure_edges<2>(pos, mesh, field, statistics)
                               : measure_edges<3>(pos, mesh, field, statistics);
    });
}

template <class Field>
int measure_matrix(const dense2D<double>& pos, const dense2D<unsigned int>& conn, element_type kind,
                   const Field& field, kvx::misc::histogram& statistics, int code_of_incomplete) {
    if (conn.empty()) return 0;
    return guarded([&] {
        const dense1D<int> types(1, kind);
        const int code = measure_range(pos, &conn, &conn + 1, types, field, statistics);
        return code == incomplete ? code_of_incomplete : code;
    });
}

} // namespace

int edge_qualities(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                   element_type kind, const dense1D<double>& sizes,
                   kvx::misc::histogram& statistics) noexcept {
    return measure_matrix(pos, connectM, kind, sizes, statistics, -4);
}

int edge_qualities(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                   element_type kind, const dense2D<double>& metrics,
                   kvx::misc::histogram& statistics) noexcept {
    // In space edges left out have always been passed over in silence; callers rely on it.
    return measure_matrix(pos, connectM, kind, metrics, statistics, pos.rows() == 3 ? 0 : -4);
}

int edge_qualities(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                   const dense2D<unsigned int>* last, const dense1D<int>& types,
                   const dense1D<double>& sizes, kvx::misc::histogram& statistics) noexcept {
    return measure_range(pos, first, last, types, sizes, statistics);
}

int edge_qualities(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                   const dense2D<unsigned int>* last, const dense1D<int>& types,
                   const dense2D<double>& metrics, kvx::misc::histogram& statistics) noexcept {
    return measure_range(pos, first, last, types, metrics, statistics);
}

} // namespace kvx::zelvo
