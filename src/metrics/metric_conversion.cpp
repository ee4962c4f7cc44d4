#include <kvx/zelvo/metric_conversion.h>

#include "foundation/memory_guard.h"
#include "foundation/memory_overlap.h"
#include "metrics/symmetric_eigen.h"

namespace kvx::zelvo {

namespace {

constexpr std::uint64_t basis_rows = 6;

/// t_i^T M t_j for the two vectors t1, t2 of a basis, where product(u) is M u.
template <class Product>
void project(const double* basis, const Product& product, double* m) {
    for (unsigned j = 0; j < 2; ++j) {
        const small_vector<3> image = product(basis + 3 * j);
        for (unsigned i = 0; i <= j; ++i) {
            const double* const t = basis + 3 * i;
            m[packed_place(i, j)] = t[0] * image[0] + t[1] * image[1] + t[2] * image[2];
        }
    }
}

void project_size(double h, const double* basis, double* m) {
    std::fill_n(m, packed_size<2>, 0.0);
    const double v = h > 0 ? 1.0 / (h * h) : 0.0;
    if (v == 0) return;
    project(
        basis,
        [](const double* t) {
            return small_vector<3>{t[0], t[1], t[2]};
        },
        m);
    for (unsigned i = 0; i < packed_size<2>; ++i)
        m[i] *= v;
}

void project_metric(const double* m3, const double* basis, double* m) {
    project(
        basis,
        [&](const double* t) {
            return small_vector<3>{m3[0] * t[0] + m3[1] * t[1] + m3[3] * t[2],
                                   m3[1] * t[0] + m3[2] * t[1] + m3[4] * t[2],
                                   m3[3] * t[0] + m3[4] * t[1] + m3[5] * t[2]};
        },
        m);
}

template <unsigned Dim>
void convert_all(const dense1D<double>& sizes, dense2D<double>& metrics) {
    metrics.clear(); // lets its storage go where sizes share it
    if (!metrics.resize(packed_size<Dim>, sizes.size())) return;
    for (std::uint64_t j = 0; j < sizes.size(); ++j)
        set_isotropic<Dim>(sizes[j], &metrics(0, j));
}

/// Fills the columns of a set of 2-D metrics, in place unless that would write over an input.
template <class Fill>
int fill_metrics(dense2D<double>& metrics, std::uint64_t cols, bool overlaps, const Fill& fill) {
    dense2D<double> fresh;
    dense2D<double>& target = overlaps ? fresh : metrics;
    if (!target.resize(packed_size<2>, cols)) return out_of_memory;
    for (std::uint64_t j = 0; j < cols; ++j)
        fill(j, &target(0, j));
    if (overlaps) metrics.swap(fresh);
    return 0;
}

template <class First>
bool overlap_one(const dense2D<double>& written, const First& first,
                 const dense2D<double>& second) {
    const memory_run<double> run(written);
    return overlap(run, memory_run<double>(first)) || overlap(run, memory_run<double>(second));
}

} // namespace

void metric_iso_to_aniso(double h, symmetric_fixed<double, 2>& M) noexcept {
    set_isotropic<2>(h, M.data());
}

void metric_iso_to_aniso(double h, symmetric_fixed<double, 3>& M) noexcept {
    set_isotropic<3>(h, M.data());
}

void metrics_iso_to_aniso2d(const dense1D<double>& sizes, dense2D<double>& metrics) noexcept {
    convert_all<2>(sizes, metrics);
}

void metrics_iso_to_aniso3d(const dense1D<double>& sizes, dense2D<double>& metrics) noexcept {
    convert_all<3>(sizes, metrics);
}

void metric_iso_to_aniso2d(double h, const matrix_fixed<double, 3, 2>& basis,
                           symmetric_fixed<double, 2>& M) noexcept {
    project_size(h, basis.data(), M.data());
}

int metrics_iso_to_aniso2d(const dense1D<double>& sizes, const dense2D<double>& bases,
                           dense2D<double>& metrics) noexcept {
    if (bases.rows() != basis_rows || bases.cols() != sizes.size()) return -2;
    const dense1D<double> h(sizes);
    const dense2D<double> basis(bases);
    return fill_metrics(metrics, h.size(), overlap_one(metrics, h, basis),
                        [&](std::uint64_t j, double* m) { project_size(h[j], &basis(0, j), m); });
}

void metric_aniso3d_to_aniso2d(const symmetric_fixed<double, 3>& M3,
                               const matrix_fixed<double, 3, 2>& basis,
                               symmetric_fixed<double, 2>& M2) noexcept {
    project_metric(M3.data(), basis.data(), M2.data());
}

int metrics_aniso3d_to_aniso2d(const dense2D<double>& metrics3d, const dense2D<double>& bases,
                               dense2D<double>& metrics2d) noexcept {
    if (metrics3d.rows() != packed_size<3>) return -1;
    if (bases.rows() != basis_rows || bases.cols() != metrics3d.cols()) return -2;
    const dense2D<double> m3(metrics3d), basis(bases);
    return fill_metrics(
        metrics2d, m3.cols(), overlap_one(metrics2d, m3, basis),
        [&](std::uint64_t j, double* m) { project_metric(&m3(0, j), &basis(0, j), m); });
}

} // namespace kvx::zelvo
