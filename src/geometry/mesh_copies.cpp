#include <kvx/zelvo/mesh_copies.h>

#include <algorithm>
#include <numeric>

#include <kvx/zelvo/node_indices.h>
#include <kvx/zelvo/transforms.h>

#include "foundation/appending.h"
#include "foundation/memory_guard.h"
#include "indices/index_collection.h"

namespace kvx::zelvo {

namespace {

/// Elements to copy: their distinct nodes, and the elements in places of that list.
struct mesh_part {
    dense1D<unsigned int> nodes;
    dense2D<unsigned int> elements;

    explicit mesh_part(const dense2D<unsigned int>& conn) {
        append_unique(nodes, &conn, &conn + 1);
        dense1D<unsigned int> places(nodes.empty() ? 0 : std::uint64_t{max_ID(nodes)} + 1, no_node);
        for (std::uint64_t k = 0; k < nodes.size(); ++k)
            places[nodes[k]] = static_cast<unsigned int>(k);
        need(elements.copy(conn));
        change_indices(elements, places);
    }
};

/// Appends one copy of the part and gives pos at least `rows` rows. Throws std::bad_alloc with pos
/// unchanged.
void append_copy(const mesh_part& part, dense2D<double>& pos, std::uint64_t rows,
                 dense2D<unsigned int>& conn) {
    const std::uint64_t first_node = pos.cols();
    const std::uint64_t first_element = conn.cols();
    const dense2D<unsigned int>& elements = part.elements;
    need(part.nodes.size() <= no_node - std::min<std::uint64_t>(first_node, no_node));
    append_columns(conn, elements.rows(), elements.cols(), no_node);
    append_columns(pos, rows, part.nodes.size(), 0.0);
    double* const x = pos.data(); // which may be without rows
    for (std::uint64_t k = 0; k < part.nodes.size(); ++k)
        std::copy_n(x + part.nodes[k] * pos.ld(), pos.rows(), x + (first_node + k) * pos.ld());
    if (elements.empty()) return;
    for (std::uint64_t j = 0; j < elements.cols(); ++j) {
        std::transform(&elements(0, j), &elements(0, j) + elements.rows(),
                       &conn(0, first_element + j), [first_node](unsigned int place) {
                           return place == no_node ? no_node
                                                   : static_cast<unsigned int>(first_node + place);
                       });
    }
}

double times(double factor, double angle) {
    return factor * angle;
}

template <unsigned Dim>
vector_fixed<double, Dim> times(double factor, vector_fixed<double, Dim> v) {
    for (unsigned i = 0; i < Dim; ++i)
        v[i] *= factor;
    return v;
}

template <unsigned Dim, class Angle>
int copy_in_pattern(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
                    const vector_fixed<double, Dim>& T, const vector_fixed<double, Dim>& C,
                    const Angle& angle, unsigned n_copies, const dense2D<unsigned int>& conn) {
    if (pos.empty() || n_copies == 0) return 0;
    if (!check_IDs(conn, index_bound(pos.cols()))) return -2;
    return guarded([&] {
        const mesh_part part(conn.rows() == 0 ? dense2D<unsigned int>() : conn);
        if (part.elements.empty()) n_copies = 1; // copies of nothing are all alike
        dense1D<unsigned int> moved(part.nodes.size());
        for (std::uint64_t i = 1; i <= n_copies; ++i) {
            const auto steps = static_cast<double>(i);
            const std::uint64_t coordinates = pos.rows(), nodes = pos.cols();
            const std::uint64_t rows = copy_conn.rows(), elements = copy_conn.cols();
            const int code = guarded([&] {
                append_copy(part, pos, pos.rows(), copy_conn);
                std::iota(moved.begin(), moved.end(), static_cast<unsigned int>(nodes));
                need(rotate(pos, C, times(steps, angle), moved) >= 0);
                need(translate(pos, times(steps, T), moved) >= 0);
                return 0;
            });
            if (code == 0) continue;
            pos.resize(coordinates, nodes);
            copy_conn.resize(rows, elements);
            return code;
        }
        return 0;
    });
}

template <unsigned Dim>
double dot(const double* a, const vector_fixed<double, Dim>& b) {
    double sum = 0.0;
    for (unsigned i = 0; i < Dim; ++i)
        sum += a[i] * b[i];
    return sum;
}

template <unsigned Dim>
void mirror(double* x, const vector_fixed<double, Dim>& P, const vector_fixed<double, Dim>& N,
            double scale) {
    vector_fixed<double, Dim> d;
    for (unsigned i = 0; i < Dim; ++i)
        d[i] = x[i] - P[i];
    const double s = dot(d.data(), N) * scale;
    for (unsigned i = 0; i < Dim; ++i)
        x[i] += s * N[i];
}

template <unsigned Dim>
int copy_mirrored(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
                  const vector_fixed<double, Dim>& P, const vector_fixed<double, Dim>& N,
                  const dense2D<unsigned int>& conn) {
    if (pos.empty()) return 0;
    const double squared_length = dot(N.data(), N);
    if (!(squared_length > 0.0)) return -4;
    if (!check_IDs(conn, index_bound(pos.cols()))) return -2;
    return guarded([&] {
        dense2D<unsigned int> copied;
        const std::uint64_t nodes = pos.cols();
        append_copy(mesh_part(conn), pos, Dim, copied);
        for (std::uint64_t j = nodes; j < pos.cols(); ++j)
            mirror(&pos(0, j), P, N, -2.0 / squared_length);
        copy_conn.swap(copied);
        return 0;
    });
}

} // namespace

int copy_mesh(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
              const dense2D<unsigned int>& conn) noexcept {
    if (!check_IDs(conn, index_bound(pos.cols()))) return -2;
    return guarded([&] {
        dense2D<unsigned int> copied;
        append_copy(mesh_part(conn), pos, pos.rows(), copied);
        copy_conn.swap(copied);
        return 0;
    });
}

int copy_mesh(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
              const vector_fixed<double, 2>& T, const vector_fixed<double, 2>& C, double angle,
              unsigned n_copies, const dense2D<unsigned int>& conn) noexcept {
    return copy_in_pattern(pos, copy_conn, T, C, angle, n_copies, conn);
}

int copy_mesh(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
              const vector_fixed<double, 3>& T, const vector_fixed<double, 3>& C,
              const vector_fixed<double, 3>& R, unsigned n_copies,
              const dense2D<unsigned int>& conn) noexcept {
    return copy_in_pattern(pos, copy_conn, T, C, R, n_copies, conn);
}

int copy_sym_mesh(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
                  const vector_fixed<double, 2>& P, const vector_fixed<double, 2>& N,
                  const dense2D<unsigned int>& conn) noexcept {
    return copy_mirrored(pos, copy_conn, P, N, conn);
}

int copy_sym_mesh(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
                  const vector_fixed<double, 3>& P, const vector_fixed<double, 3>& N,
                  const dense2D<unsigned int>& conn) noexcept {
    return copy_mirrored(pos, copy_conn, P, N, conn);
}

} // namespace kvx::zelvo
