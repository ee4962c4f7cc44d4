#include "exported_target.h"

namespace kvx::zelvo::fuzzing {

namespace {

void examine_statistics(const histogram& statistics) {
    std::uint64_t count = statistics.below() + statistics.above();
    for (std::uint64_t k = 0; k < statistics.bins(); ++k)
        count += statistics.count_in(k);
    demand(count == statistics.count(), "every value is counted once");
    demand(statistics.count() == 0 || statistics.minimum() <= statistics.maximum(),
           "the extremes are in order");
    demand(!(statistics.standard_deviation() < 0), "deviations are not negative");
    demand(statistics.text().ends_with('\n'), "the text has whole lines");
}

/// Sizes go down or stay.
void examine_sizes(const dense1D<double>& before, const dense1D<double>& after) {
    for (std::uint64_t i = 0; i < before.size(); ++i)
        demand(!(after[i] > before[i]) && (before[i] > 0) == (after[i] > 0), "sizes go down");
}

template <unsigned N>
void examine_pairs(const arguments& after) {
    const auto& values = static_cast<const vector_fixed<double, N>&>(after.values);
    for (unsigned int i = 0; i < N; ++i)
        demand(std::isfinite(values[i]), "eigenvalues are finite");
    demand(std::is_sorted(values.data(), values.data() + N), "eigenvalues ascend");
}

} // namespace

void examine_call(const std::string& function, const arguments& before, arguments& after,
                  std::int64_t result) {
    examine_statistics(after.statistics);
    if (function == "shape_qualities" && result == 0)
        for (const double q : after.Q)
            demand(!before.takes("Q") || (q >= -1 && q <= 1), "ratings lie between -1 and 1");
    if (function == "bound_metric_gradation" && before.takes("sizes")) {
        examine_sizes(before.sizes, after.sizes);
        demand(result == 0 || equal(before.sizes, after.sizes), "a refusal changes nothing");
    }
    if (function == "H_shock" && result == 0 && !before.conn.empty()) {
        demand(after.shocks.size() == before.pos.cols(), "a shock for each node");
        for (const double shock : after.shocks)
            demand(shock >= 0, "shocks are not negative");
    }
    if (function == "edge_lengths" && result == 0 && !before.conn.empty())
        for (std::uint64_t j = 0; j < after.lengths.cols(); ++j)
            demand(!(after.lengths(0, j) < 0) && !(after.lengths(2, j) < 0),
                   "lengths are not negative");
    if (before.form() == "bound_metrics(sizes, hmin, hmax)")
        for (const double size : after.sizes)
            demand(!(size > before.hmax), "sizes are bounded");
    if (before.form() == "are_valid_metrics(sizes)") {
        const auto valid = [](double x) { return x > 0 && std::isfinite(x); };
        demand(result == std::all_of(before.sizes.begin(), before.sizes.end(), valid),
               "sizes are valid where they are positive and finite");
    }
    if (function == "metrics_iso_to_aniso2d" && result == 0)
        demand(after.metrics.rows() == 3 && after.metrics.cols() == before.sizes.size(),
               "a metric for each size");
    if (function == "eigen_pairs" && result == 1) {
        // 2-D and 3-D forms have one name: the one that was called has written its values.
        examine_pairs<2>(after);
        examine_pairs<3>(after);
    }
}

} // namespace kvx::zelvo::fuzzing
