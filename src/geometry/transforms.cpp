#include <kvx/zelvo/transforms.h>

#include <cmath>

#include "foundation/memory_guard.h"
#include "indices/index_collection.h"

namespace kvx::zelvo {

namespace {

/// Neither below nor above, so that NaN is neutral too.
bool is_neutral(double value, double neutral) {
    return !(value < neutral) && !(value > neutral);
}

template <unsigned Dim>
bool is_neutral(const vector_fixed<double, Dim>& v, double neutral) {
    for (unsigned i = 0; i < Dim; ++i) {
        if (!is_neutral(v[i], neutral)) return false;
    }
    return true;
}

// A transform is what it does to one node, and how its family treats lists of nodes:
// dimension            number of coordinates it changes
// counts_listed        whether the result is the number of listed nodes moved, or 0
// pads_for_empty_list  whether pos gets its rows also for an empty list

template <unsigned Dim>
struct translation {
    static constexpr unsigned dimension = Dim;
    static constexpr bool counts_listed = true;
    static constexpr bool pads_for_empty_list = false;

    const vector_fixed<double, Dim>& step;

    explicit translation(const vector_fixed<double, Dim>& T)
        : step(T) {}
    bool does_nothing() const { return is_neutral(step, 0.0); }
    void operator()(double* x) const {
        for (unsigned i = 0; i < Dim; ++i)
            x[i] += step[i];
    }
};

template <unsigned Dim>
struct scaling {
    static constexpr unsigned dimension = Dim;
    static constexpr bool counts_listed = false;
    static constexpr bool pads_for_empty_list = false;

    const vector_fixed<double, Dim>& centre;
    double factor;

    scaling(const vector_fixed<double, Dim>& C, double f)
        : centre(C)
        , factor(f) {}
    bool does_nothing() const { return is_neutral(factor, 1.0); }
    void operator()(double* x) const {
        for (unsigned i = 0; i < Dim; ++i)
            x[i] += (x[i] - centre[i]) * (factor - 1.0);
    }
};

matrix_fixed<double, 2, 2> rotation_matrix(double angle) {
    matrix_fixed<double, 2, 2> m;
    m(0, 0) = m(1, 1) = std::cos(angle);
    m(1, 0) = std::sin(angle);
    m(0, 1) = -m(1, 0);
    return m;
}

/// exp(K) = I + a K + b K^2 for the matrix K of the cross product with R (Rodrigues' formula).
matrix_fixed<double, 3, 3> rotation_matrix(const vector_fixed<double, 3>& R) {
    constexpr double largest_series_angle = 0.001; // beyond, the quotients are exact enough
    const double t = R[0] * R[0] + R[1] * R[1] + R[2] * R[2];
    const double angle = std::sqrt(t);
    double a = 1.0 + t * (-1.0 / 6 +
                          t * (1.0 / 120 + t * (-1.0 / 5040 + t * (1.0 / 362880 - t / 39916800))));
    double b = 0.5 + t * (-1.0 / 24 + t * (1.0 / 720 + t * (-1.0 / 40320 + t / 3628800)));
    if (angle > largest_series_angle) {
        a = std::sin(angle) / angle;
        b = (1.0 - std::cos(angle)) / t;
    }
    const double cross[3][3] = {{0.0, -R[2], R[1]}, {R[2], 0.0, -R[0]}, {-R[1], R[0], 0.0}};
    matrix_fixed<double, 3, 3> m;
    for (unsigned i = 0; i < 3; ++i) {
        for (unsigned j = 0; j < 3; ++j) {
            m(i, j) = (i == j ? 1.0 : 0.0) + a * cross[i][j];
            if (b == 0.0) continue; // a whole number of turns
            double square = 0.0;
            for (unsigned k = 0; k < 3; ++k)
                square += cross[i][k] * cross[k][j];
            m(i, j) += b * square;
        }
    }
    return m;
}

/// By an angle in 2-D, by a rotation vector in 3-D.
template <unsigned Dim, class Angle>
struct rotation {
    static constexpr unsigned dimension = Dim;
    static constexpr bool counts_listed = true;
    static constexpr bool pads_for_empty_list = true;

    const vector_fixed<double, Dim>& centre;
    const Angle& angle;
    matrix_fixed<double, Dim, Dim> matrix;

    rotation(const vector_fixed<double, Dim>& C, const Angle& a)
        : centre(C)
        , angle(a)
        , matrix(rotation_matrix(a)) {}
    bool does_nothing() const { return is_neutral(angle, 0.0); }
    void operator()(double* x) const {
        vector_fixed<double, Dim> turned(centre);
        for (unsigned k = 0; k < Dim; ++k) {
            const double d = x[k] - centre[k];
            if (d == 0.0) continue; // the result stays exact where an axis is not involved
            for (unsigned i = 0; i < Dim; ++i)
                turned[i] += d * matrix(i, k);
        }
        for (unsigned i = 0; i < Dim; ++i)
            x[i] = turned[i];
    }
};

void pad_rows(dense2D<double>& pos, unsigned dimension) {
    if (pos.rows() < dimension) need(pos.resize(dimension, pos.cols(), 0.0));
}

template <class Transform>
int move_all(dense2D<double>& pos, const Transform& transform) {
    if (pos.empty() || transform.does_nothing()) return 0;
    return guarded([&] {
        pad_rows(pos, Transform::dimension);
        for (std::uint64_t j = 0; j < pos.cols(); ++j)
            transform(&pos(0, j));
        return count_result(pos.cols());
    });
}

template <class Transform>
int move_listed(dense2D<double>& pos, const Transform& transform,
                const dense1D<unsigned int>& nodes) {
    if (pos.empty() || transform.does_nothing()) return 0;
    if (nodes.empty() && !Transform::pads_for_empty_list) return 0;
    return guarded([&] {
        pad_rows(pos, Transform::dimension);
        std::uint64_t moved = 0;
        for (const unsigned int node : nodes) {
            if (node >= pos.cols()) continue;
            transform(&pos(0, node));
            ++moved;
        }
        return Transform::counts_listed ? count_result(moved) : 0;
    });
}

/// The distinct nodes of a connectivity.
template <class Transform>
int move_used(dense2D<double>& pos, const Transform& transform, const dense2D<unsigned int>& conn) {
    return guarded([&] {
        dense1D<unsigned int> nodes;
        append_unique(nodes, &conn, &conn + 1);
        return move_listed(pos, transform, nodes);
    });
}

} // namespace

int translate(dense2D<double>& pos, const vector_fixed<double, 2>& T) noexcept {
    return move_all(pos, translation(T));
}

int translate(dense2D<double>& pos, const vector_fixed<double, 3>& T) noexcept {
    return move_all(pos, translation(T));
}

int translate(dense2D<double>& pos, const vector_fixed<double, 2>& T,
              const dense1D<unsigned int>& nodes) noexcept {
    return move_listed(pos, translation(T), nodes);
}

int translate(dense2D<double>& pos, const vector_fixed<double, 3>& T,
              const dense1D<unsigned int>& nodes) noexcept {
    return move_listed(pos, translation(T), nodes);
}

int translate(dense2D<double>& pos, const vector_fixed<double, 2>& T,
              const dense2D<unsigned int>& conn) noexcept {
    return move_used(pos, translation(T), conn);
}

int translate(dense2D<double>& pos, const vector_fixed<double, 3>& T,
              const dense2D<unsigned int>& conn) noexcept {
    return move_used(pos, translation(T), conn);
}

int zoom(dense2D<double>& pos, const vector_fixed<double, 2>& C, double f) noexcept {
    return move_all(pos, scaling(C, f));
}

int zoom(dense2D<double>& pos, const vector_fixed<double, 3>& C, double f) noexcept {
    return move_all(pos, scaling(C, f));
}

int zoom(dense2D<double>& pos, const vector_fixed<double, 2>& C, double f,
         const dense1D<unsigned int>& nodes) noexcept {
    return move_listed(pos, scaling(C, f), nodes);
}

int zoom(dense2D<double>& pos, const vector_fixed<double, 3>& C, double f,
         const dense1D<unsigned int>& nodes) noexcept {
    return move_listed(pos, scaling(C, f), nodes);
}

int zoom(dense2D<double>& pos, const vector_fixed<double, 2>& C, double f,
         const dense2D<unsigned int>& conn) noexcept {
    return move_used(pos, scaling(C, f), conn);
}

int zoom(dense2D<double>& pos, const vector_fixed<double, 3>& C, double f,
         const dense2D<unsigned int>& conn) noexcept {
    return move_used(pos, scaling(C, f), conn);
}

int rotate(dense2D<double>& pos, const vector_fixed<double, 2>& C, double angle) noexcept {
    return move_all(pos, rotation(C, angle));
}

int rotate(dense2D<double>& pos, const vector_fixed<double, 3>& C,
           const vector_fixed<double, 3>& R) noexcept {
    return move_all(pos, rotation(C, R));
}

int rotate(dense2D<double>& pos, const vector_fixed<double, 2>& C, double angle,
           const dense1D<unsigned int>& nodes) noexcept {
    return move_listed(pos, rotation(C, angle), nodes);
}

int rotate(dense2D<double>& pos, const vector_fixed<double, 3>& C, const vector_fixed<double, 3>& R,
           const dense1D<unsigned int>& nodes) noexcept {
    return move_listed(pos, rotation(C, R), nodes);
}

int rotate(dense2D<double>& pos, const vector_fixed<double, 2>& C, double angle,
           const dense2D<unsigned int>& conn) noexcept {
    return move_used(pos, rotation(C, angle), conn);
}

int rotate(dense2D<double>& pos, const vector_fixed<double, 3>& C, const vector_fixed<double, 3>& R,
           const dense2D<unsigned int>& conn) noexcept {
    return move_used(pos, rotation(C, R), conn);
}

} // namespace kvx::zelvo
