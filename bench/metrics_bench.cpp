#include <kvx/zelvo/metric_combination.h>
#include <kvx/zelvo/metric_conversion.h>
#include <kvx/zelvo/metric_validity.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

/// Metrics in general position, sums of squares of random vectors: the first is stretched most,
/// and the others are `width` times as long. At 1e-9 rounding decides what is positive definite.
template <unsigned Dim>
dense2D<double> sums_of_squares(std::uint64_t n, double width) {
    std::mt19937_64 draw(seed);
    std::normal_distribution<double> normal;
    dense2D<double> metrics(Dim * (Dim + 1) / 2, n);
    for (std::uint64_t k = 0; k < n; ++k) {
        for (unsigned square = 0; square < Dim; ++square) {
            double v[Dim];
            for (double& x : v)
                x = normal(draw) * (square == 0 ? 1.0 : width);
            for (unsigned j = 0, entry = 0; j < Dim; ++j) {
                for (unsigned i = 0; i <= j; ++i)
                    metrics(entry++, k) += v[i] * v[j];
            }
        }
    }
    return metrics;
}

template <unsigned Dim>
dense2D<double> general(std::uint64_t n) {
    return sums_of_squares<Dim>(n, 0.03);
}

template <unsigned Dim>
dense2D<double> nearly_singular(std::uint64_t n) {
    return sums_of_squares<Dim>(n, 1e-9);
}

template <unsigned Dim>
dense2D<double> isotropic(std::uint64_t n) {
    dense2D<double> metrics(Dim * (Dim + 1) / 2, n);
    for (std::uint64_t k = 0; k < n; ++k) {
        for (unsigned i = 0; i < Dim; ++i)
            metrics(i * (i + 3) / 2, k) = 1 + double(k % 100);
    }
    return metrics;
}

void validity(measurement& measured, const dense2D<double>& metrics) {
    // One by one, as the check of all stops at the first that fails.
    const std::uint64_t rows = metrics.rows();
    measured.reads(metrics).run([&] {
        for (std::uint64_t k = 0; k < metrics.cols(); ++k)
            benchmark::DoNotOptimize(are_valid_metrics(metrics.sub_matrix(0, k, rows, 1)));
        return 0;
    });
}

void all_valid(measurement& measured, const dense2D<double>& metrics) {
    measured.reads(metrics).run([&] { return are_valid_metrics(metrics) ? 0 : -1; });
}

/// Bounds that change no metric, or most of them.
template <bool most>
void bounding(measurement& measured, const dense2D<double>& metrics) {
    dense2D<double> bounded;
    measured.reads(metrics).before([&] { return bounded.copy(metrics); }).run([&] {
        return bound_metrics(bounded, most ? 1.0 : 1e-9, most ? 10.0 : 1e99);
    });
}

void overwriting(measurement& measured, const dense2D<double>& metrics) {
    const dense1D<double> fallback(metrics.cols(), 1.0);
    dense2D<double> valid;
    measured.reads(metrics, fallback).before([&] { return valid.copy(metrics); }).run([&] {
        return overwrite_invalid_metrics(valid, fallback);
    });
}

/// Each metric with the next one.
template <unsigned Dim>
void intersection(measurement& measured, const dense2D<double>& metrics) {
    symmetric_fixed<double, Dim> M[2], result;
    measured.reads(metrics).run([&] {
        for (std::uint64_t k = 0; k < metrics.cols(); ++k) {
            std::copy_n(&metrics(0, k), M[0].packed_size, M[k % 2].data());
            minimum_metric(M[0], M[1], result);
            benchmark::DoNotOptimize(result);
        }
        return 0;
    });
}

void from_sizes(measurement& measured, const dense2D<double>& metrics) {
    const dense1D<double> sizes(metrics.cols(), 2.0);
    dense2D<double> made;
    measured.reads(sizes).makes(made).run([&] {
        metrics_iso_to_aniso3d(sizes, made);
        return 0;
    });
}

void to_surface(measurement& measured, const dense2D<double>& metrics) {
    dense2D<double> bases(6, metrics.cols());
    for (std::uint64_t k = 0; k < bases.cols(); ++k)
        bases(0, k) = bases(4, k) = 1;
    dense2D<double> made;
    measured.reads(metrics, bases).makes(made).run([&] {
        return metrics_aniso3d_to_aniso2d(metrics, bases, made);
    });
}

} // namespace

int main(int argc, char** argv) {
    using shapes = std::vector<shape<dense2D<double>>>;
    const shapes plane = {{"general_2d", general<2>}, {"isotropic_2d", isotropic<2>}};
    const shapes space = {{"general_3d", general<3>}, {"isotropic_3d", isotropic<3>}};
    const shapes hostile_plane = {{"nearly_singular_2d", nearly_singular<2>}};
    const shapes hostile_space = {{"nearly_singular_3d", nearly_singular<3>}};
    // Of many random ones in the plane some are not valid for rounding.
    over_sizes<dense2D<double>>({plane[1], space[0], space[1]}, {{"all_valid", all_valid}});
    for (const shapes& any : {plane, hostile_plane, space, hostile_space}) {
        over_sizes<dense2D<double>>(any, {{"validity", validity},
                                          {"bounding_none", bounding<false>},
                                          {"bounding_most", bounding<true>},
                                          {"overwriting", overwriting}});
    }
    for (const shapes& any : {plane, hostile_plane})
        over_sizes<dense2D<double>>(any, {{"intersection", intersection<2>}});
    for (const shapes& any : {space, hostile_space})
        over_sizes<dense2D<double>>(any, {{"intersection", intersection<3>}});
    over_sizes<dense2D<double>>(space, {{"from_sizes", from_sizes}, {"to_surface", to_surface}});
    return run_benchmarks(argc, argv);
}
