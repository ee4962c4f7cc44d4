#pragma once

#include <cstdint>
#include <cstdlib>
#include <vector>

#include <benchmark/benchmark.h>

namespace kvx::zelvo::bench {

constexpr std::int64_t smallest_size = 10'000;
constexpr std::int64_t largest_size = 4'000'000;

/// Sizes that double, and the largest one.
inline std::vector<std::int64_t> sizes() {
    std::vector<std::int64_t> all;
    for (std::int64_t n = smallest_size; n < largest_size; n *= 2)
        all.push_back(n);
    all.push_back(largest_size);
    return all;
}

/// Sizes that double; the growth of time over them is fitted and named with each benchmark.
inline void doubling_sizes(benchmark::internal::Benchmark* b) {
    for (const std::int64_t n : sizes())
        b->Arg(n);
    b->Unit(benchmark::kMillisecond)->Complexity();
}

/// The same for each of the four ways to scatter points, the second argument; no fit, as it would
/// run over all four.
inline void doubling_clouds(benchmark::internal::Benchmark* b) {
    for (int kind = 0; kind < 4; ++kind) {
        for (const std::int64_t n : sizes())
            b->Args({n, kind});
    }
    b->Unit(benchmark::kMillisecond);
}

/// Adds the time per item to the report.
inline void per_item(benchmark::State& state, std::uint64_t items) {
    state.SetComplexityN(static_cast<std::int64_t>(items));
    state.counters["per_item"] = benchmark::Counter(static_cast<double>(items),
                                                    benchmark::Counter::kIsIterationInvariantRate |
                                                        benchmark::Counter::kInvert);
}

/// Ends a benchmark whose call failed: the time of an error is no result.
inline bool failed(benchmark::State& state, int code) {
    if (code < 0) state.SkipWithError("the measured call returned an error");
    return code < 0;
}

} // namespace kvx::zelvo::bench
