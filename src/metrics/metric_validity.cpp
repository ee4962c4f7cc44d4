#include <kvx/zelvo/metric_validity.h>

#include "foundation/memory_guard.h"
#include "foundation/memory_overlap.h"
#include "metrics/symmetric_eigen.h"

namespace kvx::zelvo {

namespace {

// ---- Testing -----------------------------------------------------------------------------------

bool is_size(double h) {
    return h > 0 && std::isfinite(h);
}

template <unsigned Dim>
bool all_valid(const dense2D<double>& metrics) {
    for (std::uint64_t j = 0; j < metrics.cols(); ++j) {
        if (!is_metric<Dim>(&metrics(0, j))) return false;
    }
    return true;
}

template <unsigned Dim>
bool listed_valid(const dense1D<unsigned int>& nodes, const dense2D<double>& metrics) {
    for (const unsigned int node : nodes) {
        if (node >= metrics.cols() || !is_metric<Dim>(&metrics(0, node))) return false;
    }
    return true;
}

// ---- Bounding ----------------------------------------------------------------------------------

/// Sizes as bounds of eigenvalues.
struct eigenvalue_bounds {
    double low = 0.0;
    double high = std::numeric_limits<double>::max();

    eigenvalue_bounds(double hmin, double hmax) {
        constexpr double largest_square_root = 1.3407807929942596e154; // of the largest double
        if (hmin > 0) high = 1.0 / (hmin * hmin);
        if (hmax > 0 && hmax < largest_square_root) low = 1.0 / (hmax * hmax);
    }

    /// The upper bound first, so that hmax wins; NaN does not pass it. Whether the value changed.
    bool apply(double& value) const {
        const double before = value;
        if (!(high >= value)) value = high;
        if (low > value) value = low;
        return value != before;
    }
};

template <unsigned Dim>
void bound(double* m, const eigenvalue_bounds& bounds) {
    if constexpr (Dim == 3) {
        const double beyond_all = 2 * sum_of_magnitudes(m); // a bound on the scale of the matrix
        if (is_surely_positive(m, 1.0, bounds.low) &&
            is_surely_positive(m, -1.0, std::min(bounds.high, beyond_all)))
            return;
    }
    eigen_system<Dim> e;
    bool changed = false;
    if (decompose<Dim>(m, e)) {
        for (double& value : e.values)
            changed = bounds.apply(value) || changed;
    } else {
        e = {};
        e.values.fill(bounds.low);
        for (unsigned k = 0; k < Dim; ++k)
            e.vectors[k][k] = 1.0;
        changed = true;
    }
    if (changed) sum_of_squares<Dim>(e.values, e.vectors, m);
}

template <unsigned Dim>
void bound_all(dense2D<double>& metrics, const eigenvalue_bounds& bounds) {
    for (std::uint64_t j = 0; j < metrics.cols(); ++j)
        bound<Dim>(&metrics(0, j), bounds);
}

// ---- Replacing ---------------------------------------------------------------------------------

/// The array that a function reads, or a copy of it where it writes to the same memory.
template <class Read, class Written>
Read apart_from(const Read& read, const Written& written) {
    if (!overlap(memory_run<double>(read), memory_run<double>(written))) return read;
    Read copy;
    need(copy.copy(read));
    return copy;
}

template <unsigned Dim>
void replace_by_sizes(dense2D<double>& metrics, const dense1D<double>& sizes) {
    const std::uint64_t n = std::min(metrics.cols(), sizes.size());
    for (std::uint64_t j = 0; j < n; ++j) {
        const double h = sizes[j];
        if (h > 0 && !is_metric<Dim>(&metrics(0, j))) set_isotropic<Dim>(h, &metrics(0, j));
    }
}

template <unsigned Dim>
void replace_by_metrics(dense2D<double>& metrics, const dense2D<double>& fallback) {
    const std::uint64_t n = std::min(metrics.cols(), fallback.cols());
    for (std::uint64_t j = 0; j < n; ++j) {
        if (!is_metric<Dim>(&metrics(0, j)) && is_metric<Dim>(&fallback(0, j)))
            std::copy_n(&fallback(0, j), packed_size<Dim>, &metrics(0, j));
    }
}

} // namespace

bool is_valid_metric(const symmetric_fixed<double, 2>& M) noexcept {
    return is_metric<2>(M.data());
}

bool is_valid_metric(const symmetric_fixed<double, 3>& M) noexcept {
    return is_metric<3>(M.data());
}

bool are_valid_metrics(const dense1D<double>& sizes) noexcept {
    return std::all_of(sizes.begin(), sizes.end(), is_size);
}

bool are_valid_metrics(const dense1D<unsigned int>& nodes, const dense1D<double>& sizes) noexcept {
    return std::all_of(nodes.begin(), nodes.end(), [&](unsigned int node) {
        return node < sizes.size() && is_size(sizes[node]);
    });
}

bool are_valid_metrics(const dense2D<double>& metrics) noexcept {
    if (metrics.rows() == packed_size<2>) return all_valid<2>(metrics);
    return metrics.rows() == packed_size<3> && all_valid<3>(metrics);
}

bool are_valid_metrics(const dense1D<unsigned int>& nodes,
                       const dense2D<double>& metrics) noexcept {
    if (metrics.empty() && nodes.empty()) return true;
    if (metrics.rows() == packed_size<2>) return listed_valid<2>(nodes, metrics);
    return metrics.rows() == packed_size<3> && listed_valid<3>(nodes, metrics);
}

void bound_metric(symmetric_fixed<double, 2>& M, double hmin, double hmax) noexcept {
    bound<2>(M.data(), {hmin, hmax});
}

void bound_metric(symmetric_fixed<double, 3>& M, double hmin, double hmax) noexcept {
    bound<3>(M.data(), {hmin, hmax});
}

int bound_metrics(dense1D<double>& sizes, double hmin, double hmax) noexcept {
    for (double& size : sizes) {
        if (hmin > size) size = hmin;
        if (!(hmax >= size)) size = hmax;
    }
    return 0;
}

int bound_metrics(dense2D<double>& metrics, double hmin, double hmax) noexcept {
    if (metrics.empty() || (!(hmin >= 0) && !(hmax >= 0))) return 0;
    const eigenvalue_bounds bounds(hmin, hmax);
    switch (metrics.rows()) {
    case packed_size<2>:
        bound_all<2>(metrics, bounds);
        return 0;
    case packed_size<3>:
        bound_all<3>(metrics, bounds);
        return 0;
    default:
        return -1;
    }
}

int overwrite_invalid_metrics(dense1D<double>& sizes, const dense1D<double>& fallback) noexcept {
    return guarded([&] {
        const dense1D<double> source = apart_from(fallback, sizes);
        const std::uint64_t n = std::min(sizes.size(), source.size());
        for (std::uint64_t i = 0; i < n; ++i) {
            if (sizes[i] <= 0 && source[i] > 0) sizes[i] = source[i];
        }
        return 0;
    });
}

int overwrite_invalid_metrics(dense2D<double>& metrics,
                              const dense1D<double>& fallback_sizes) noexcept {
    if (metrics.empty()) return 0;
    if (metrics.rows() != packed_size<2> && metrics.rows() != packed_size<3>) return -1;
    return guarded([&] {
        const dense1D<double> source = apart_from(fallback_sizes, metrics);
        if (metrics.rows() == packed_size<2>) {
            replace_by_sizes<2>(metrics, source);
        } else {
            replace_by_sizes<3>(metrics, source);
        }
        return 0;
    });
}

int overwrite_invalid_metrics(dense2D<double>& metrics, const dense2D<double>& fallback) noexcept {
    if (metrics.empty()) return 0;
    if (metrics.rows() != packed_size<2> && metrics.rows() != packed_size<3>) return -1;
    if (fallback.rows() != metrics.rows()) return -2;
    return guarded([&] {
        const dense2D<double> source = apart_from(fallback, metrics);
        if (metrics.rows() == packed_size<2>) {
            replace_by_metrics<2>(metrics, source);
        } else {
            replace_by_metrics<3>(metrics, source);
        }
        return 0;
    });
}

} // namespace kvx::zelvo
