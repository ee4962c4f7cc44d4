#pragma once

#include <cstdint>
#include <cstdlib>

#include <benchmark/benchmark.h>

namespace kvx::zelvo::bench {

/// Sizes that double from 10 thousand to 2.56 million items; the growth of time over them is fitted
/// and named with each benchmark.
inline void doubling_sizes(benchmark::internal::Benchmark* b) {
    b->RangeMultiplier(2)->Range(10'000, 2'560'000)->Unit(benchmark::kMillisecond)->Complexity();
}

/// The same for each of the four ways to scatter points, the second argument.
inline void doubling_clouds(benchmark::internal::Benchmark* b) {
    for (int kind = 0; kind < 4; ++kind) {
        for (std::int64_t n = 10'000; n <= 2'560'000; n *= 2)
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
