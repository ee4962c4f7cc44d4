#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>

#include "foundation/memory_guard.h"
#include "indices/connectivity_check.h"
#include "metrics/symmetric_eigen.h"

/// Lengths of edges in space and in a metric given by nodes, as one size each or as symmetric
/// matrices, packed columns of 3 entries in the plane and 6 in space.
namespace kvx::zelvo {

/// Stands for the length of an edge that the metric does not measure: an end whose metric is
/// missing, not positive or not a number.
constexpr double unmeasured = std::numeric_limits<double>::max();

/// Whether a connectivity fits its kind and names nodes of pos only.
inline bool names_nodes(const dense2D<double>& pos, const dense2D<unsigned int>& conn,
                        element_type kind) {
    return fits(conn, kind, index_bound(pos.cols()));
}

/// Euclidean distance of two points. Differences whose squares leave the range of a double are
/// scaled first.
inline double distance(const double* a, const double* b, std::uint64_t dimension) {
    constexpr double smallest = 1e-280;
    constexpr double largest = 1e300;
    double sum = 0;
    for (std::uint64_t i = 0; i < dimension; ++i)
        sum += (b[i] - a[i]) * (b[i] - a[i]);
    if (sum >= smallest && sum <= largest) return std::sqrt(sum);
    double scale = 0;
    for (std::uint64_t i = 0; i < dimension; ++i)
        scale = std::max(scale, std::abs(b[i] - a[i]));
    if (scale == 0 || !std::isfinite(scale)) return std::sqrt(sum);
    sum = 0;
    for (std::uint64_t i = 0; i < dimension; ++i)
        sum += (b[i] - a[i]) / scale * ((b[i] - a[i]) / scale);
    return scale * std::sqrt(sum);
}

/// e^T M e of a packed metric.
template <unsigned Dim>
double quadratic_form(const double* metric, const double* e) {
    double sum = 0;
    for (unsigned j = 0; j < Dim; ++j) {
        for (unsigned i = 0; i < j; ++i)
            sum += 2 * *metric++ * e[i] * e[j];
        sum += *metric++ * e[j] * e[j];
    }
    return sum;
}

/// The logarithmic mean of the sizes at both ends of an edge: the constant size that gives the edge
/// the metric length which sizes varying linearly between the ends give it. 0 unless both are > 0.
inline double effective_size(double h0, double h1) {
    constexpr double nearly_equal = 0.001;
    constexpr double smallest_term = 1e-12;
    const double larger = h0 > h1 ? h0 : h1;
    const double smaller = h0 > h1 ? h1 : h0;
    if (!(smaller > 0)) return 0;
    const double x = 1 - smaller / larger;
    // of the ratio itself: 1 - x has lost the digits of a small one
    if (x > nearly_equal) return (smaller - larger) / std::log(smaller / larger);
    // -ln(1 - x) / x = 1 + x/2 + x^2/3 + ... where the quotient above cancels
    double sum = 1;
    double power = x;
    double term = x;
    for (int n = 2; term > smallest_term; ++n) {
        term = power / n;
        sum += term;
        power *= x;
    }
    return larger / sum;
}

/// An edge as the metric sees it: its length and the sizes at its ends, in one unit.
struct measured_edge {
    double length;
    double h0, h1;

    /// The length in units of the effective size.
    double metric_length() const {
        const double h = effective_size(h0, h1);
        return h > 0 ? length / h : unmeasured;
    }
};

/// The edge from a to b in sizes. A node behind the last size has none.
template <unsigned Dim>
measured_edge measure(const dense2D<double>& pos, const dense1D<double>& sizes, unsigned int a,
                      unsigned int b) {
    const auto size_at = [&](unsigned int n) { return n < sizes.size() ? sizes[n] : 0; };
    return {distance(&pos(0, a), &pos(0, b), Dim), size_at(a), size_at(b)};
}

/// The edge from a to b in metrics, in units of the edge itself: each end's metric asks for the
/// size 1 / sqrt(e^T M e) along it.
template <unsigned Dim>
measured_edge measure(const dense2D<double>& pos, const dense2D<double>& metrics, unsigned int a,
                      unsigned int b) {
    if (metrics.rows() != packed_size<Dim> || std::max(a, b) >= metrics.cols()) return {1, 0, 0};
    double e[Dim];
    for (unsigned i = 0; i < Dim; ++i)
        e[i] = pos(i, b) - pos(i, a);
    const double qa = quadratic_form<Dim>(&metrics(0, a), e);
    const double qb = quadratic_form<Dim>(&metrics(0, b), e);
    if (!(qa > 0 && qb > 0)) return {1, 0, 0};
    return {1, std::sqrt(1 / qa), std::sqrt(1 / qb)};
}

} // namespace kvx::zelvo
