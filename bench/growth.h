#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <kvx/dense_array.h>

#include "resident_memory.h"

/// Tables of functions and inputs that become benchmarks, one for each pair and size.
namespace kvx::zelvo::bench {

constexpr std::uint64_t smallest_size = 10'000;
constexpr std::uint64_t largest_size = 4'000'000;

/// Sizes that double, and the largest one.
inline std::vector<std::uint64_t> sizes() {
    std::vector<std::uint64_t> all;
    for (std::uint64_t n = smallest_size; n < largest_size; n *= 2)
        all.push_back(n);
    all.push_back(largest_size);
    return all;
}

template <class T>
double bytes(const dense1D<T>& v) {
    return double(v.size() * sizeof(T));
}

template <class T>
double bytes(const dense2D<T>& m) {
    return double(m.rows() * m.cols() * sizeof(T));
}

/// Times a function on one input and measures the memory that it takes.
class measurement {
public:
    measurement(benchmark::State& state, std::uint64_t items)
        : state_(state)
        , items_(items) {}

    /// What times and bytes are divided by, where it is not the size asked for.
    measurement& per(std::uint64_t items) {
        items_ = items;
        return *this;
    }
    /// Arrays that are there before the function is called.
    template <class... Arrays>
    measurement& reads(const Arrays&... arrays) {
        inputs_ = (bytes(arrays) + ...);
        return *this;
    }
    /// A file that the function reads.
    measurement& reads_file(const char* name) {
        std::error_code ignored;
        inputs_ = double(std::filesystem::file_size(name, ignored));
        return *this;
    }
    /// Arrays that it makes, or leaves changed in size. They are empty where memory is measured,
    /// and hold the results of the round before where time is.
    template <class... Arrays>
    measurement& makes(Arrays&... arrays) {
        clear_ = [&arrays...] { (arrays.clear_hard(), ...); };
        outputs_ = [&arrays...] { return (bytes(arrays) + ...); };
        return *this;
    }
    /// A step before each round that is not measured: it makes what a round uses up.
    measurement& before(std::function<bool()> step) {
        before_ = std::move(step);
        return *this;
    }
    /// Calls the function, which returns a negative number when it fails.
    template <class Function>
    void run(Function&& function) {
        clear_();
        bool done = !before_ || before_();
        const double peak = peak_of([&] { done = function() >= 0 && done; });
        for (auto _ : state_) {
            if (before_) {
                state_.PauseTiming();
                done = before_() && done;
                state_.ResumeTiming();
            }
            done = function() >= 0 && done;
            benchmark::ClobberMemory();
        }
        if (!done) return state_.SkipWithError("the measured call returned an error");
        const auto items = double(items_);
        state_.counters["per_item"] = benchmark::Counter(
            items, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
        state_.counters["peak_bytes"] = peak / items;
        state_.counters["input_bytes"] = inputs_ / items;
        state_.counters["output_bytes"] = outputs_() / items;
    }

private:
    benchmark::State& state_;
    std::uint64_t items_;
    double inputs_ = 0;
    std::function<void()> clear_ = [] {};
    std::function<double()> outputs_ = [] { return 0.0; };
    std::function<bool()> before_;
};

template <class Input>
struct shape {
    const char* name;
    Input (*make)(std::uint64_t size);
};

template <class Input>
struct job {
    const char* name;
    void (*measure)(measurement& measured, const Input& input);
};

/// The input of one shape and size. The last one stays: benchmarks in a row share it, and each is
/// run more than once until its time is long enough.
template <class Input>
const Input& input_of(const shape<Input>& s, std::uint64_t size) {
    static shape<Input> last{};
    static std::uint64_t last_size = 0;
    static Input input;
    if (s.make != last.make || size != last_size) {
        input = Input();
        input = s.make(size);
        last = s;
        last_size = size;
    }
    return input;
}

/// Registers each job on each shape, as JOB/SHAPE/SIZE.
template <class Input>
void over_sizes(const std::vector<shape<Input>>& shapes, const std::vector<job<Input>>& jobs) {
    for (const shape<Input>& s : shapes) {
        for (const std::uint64_t size : sizes()) {
            for (const job<Input>& j : jobs) {
                const std::string name =
                    std::string(j.name) + "/" + s.name + "/" + std::to_string(size);
                const auto measure = [=](benchmark::State& state) {
                    measurement measured(state, size);
                    j.measure(measured, input_of(s, size));
                };
                benchmark::RegisterBenchmark(name.c_str(), measure)->Unit(benchmark::kMillisecond);
            }
        }
    }
}

/// Runs what was registered; what main returns.
inline int run_benchmarks(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace kvx::zelvo::bench
