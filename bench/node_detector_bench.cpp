#include <kvx/zelvo/node_detector.h>

#include "benchmark_sizes.h"
#include "generated_meshes.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

struct searched_points {
    explicit searched_points(benchmark::State& state)
        : pos(points(static_cast<cloud>(state.range(1)),
                     static_cast<std::uint64_t>(state.range(0))))
        , queries(state.range(1) == all_equal ? 10 : 10'000)
        , targets(targets_in(static_cast<cloud>(state.range(1)), pos, queries)) {
        state.SetLabel(cloud_names[state.range(1)]);
    }
    vector_fixed<double, 3> target(std::uint64_t i, double shift = 0) const {
        return {targets(0, i) + shift, targets(1, i) + shift, targets(2, i) + shift};
    }

    dense2D<double> pos;
    std::uint64_t queries; ///< fewer where each of them meets all nodes
    dense2D<double> targets;
};

void build(benchmark::State& state) {
    const searched_points searched(state);
    for (auto _ : state) {
        node_detector detector;
        if (failed(state, detector.reinit(searched.pos))) return;
        benchmark::DoNotOptimize(detector.size());
    }
    per_item(state, searched.pos.cols());
}
BENCHMARK(build)->Apply(doubling_clouds);

void find_closest(benchmark::State& state) {
    const searched_points searched(state);
    const node_detector detector(searched.pos);
    for (auto _ : state) {
        for (std::uint64_t i = 0; i < searched.queries; ++i)
            benchmark::DoNotOptimize(detector.find_closest(searched.target(i)));
    }
    per_item(state, searched.queries);
}
BENCHMARK(find_closest)->Apply(doubling_clouds);

/// Boxes of about 8 nodes; where all lie in one place, a rare box holds all of them.
void find_in_box(benchmark::State& state) {
    const searched_points searched(state);
    const node_detector detector(searched.pos);
    const double part = 8 / double(searched.pos.cols());
    constexpr double sphere = 12.6; // area, without its bumps
    const double edge = state.range(1) == on_surface ? std::sqrt(part * sphere) : std::cbrt(part);
    dense1D<unsigned int> found;
    for (auto _ : state) {
        for (std::uint64_t i = 0; i < searched.queries; ++i) {
            found.resize(0);
            detector.find_in_box(searched.target(i, -edge / 2), searched.target(i, edge / 2),
                                 found);
            benchmark::DoNotOptimize(found.data());
        }
    }
    per_item(state, searched.queries);
}
BENCHMARK(find_in_box)->Apply(doubling_clouds);

} // namespace

BENCHMARK_MAIN();
