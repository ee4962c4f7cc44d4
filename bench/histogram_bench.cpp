#include <kvx/misc/histogram.h>

#include <limits>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

using values = dense1D<double>;

values random_values(std::uint64_t n) {
    values v(n);
    std::mt19937_64 draw(seed);
    for (double& x : v)
        x = fraction(draw);
    return v;
}

values ascending(std::uint64_t n) {
    values v = random_values(n);
    std::sort(v.begin(), v.end());
    return v;
}

values one_value(std::uint64_t n) {
    return values(n, 0.5);
}

/// Outside the bins, infinite, or no number.
values uncounted(std::uint64_t n) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    values v(n, std::numeric_limits<double>::quiet_NaN());
    for (std::uint64_t i = 0; i < n; i += 3) {
        v[i] = infinity;
        if (i + 1 < n) v[i + 1] = -1e300;
    }
    return v;
}

void count(measurement& measured, const values& v, misc::histogram statistics) {
    measured.reads(v).run([&] {
        statistics.process(v);
        return 0;
    });
}

void even_bins(measurement& measured, const values& v) {
    count(measured, v, misc::histogram(0, 1, 1000));
}

void listed_limits(measurement& measured, const values& v) {
    dense1D<double> limits(1001);
    for (std::uint64_t i = 0; i < limits.size(); ++i)
        limits[i] = std::sqrt(double(i) / 1000);
    count(measured, v, misc::histogram(limits));
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<values>({{"random", random_values},
                        {"ascending", ascending},
                        {"equal", one_value},
                        {"uncounted", uncounted}},
                       {{"even_bins", even_bins}, {"listed_limits", listed_limits}});
    return run_benchmarks(argc, argv);
}
