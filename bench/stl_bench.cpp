#include <kvx/zelvo/stl.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "benchmark_sizes.h"
#include "generated_meshes.h"
#include "temporary_file.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

void write(benchmark::State& state, bool ascii) {
    const mesh soup = facet_soup(bumpy_sphere(static_cast<std::uint64_t>(state.range(0))));
    const temporary_file file(".stl");
    for (auto _ : state) {
        if (failed(state, STL_output(file.name(), soup.pos, soup.conn, ascii))) return;
    }
    per_item(state, soup.conn.cols());
}
BENCHMARK_CAPTURE(write, binary, false)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(write, ascii, true)->Apply(doubling_sizes);

/// Reading includes the clean-up: welding, removal of degenerate triangles and unused nodes.
void read(benchmark::State& state, bool ascii) {
    const mesh soup = facet_soup(bumpy_sphere(static_cast<std::uint64_t>(state.range(0))));
    const temporary_file file(".stl");
    if (failed(state, STL_output(file.name(), soup.pos, soup.conn, ascii))) return;
    dense2D<double> pos;
    dense2D<unsigned int> conn;
    for (auto _ : state) {
        if (failed(state, STL_input(file.name(), pos, conn, ascii))) return;
    }
    per_item(state, soup.conn.cols());
}
BENCHMARK_CAPTURE(read, binary, false)->Apply(doubling_sizes);
BENCHMARK_CAPTURE(read, ascii, true)->Apply(doubling_sizes);

void read_file(benchmark::State& state, const std::string& name) {
    const bool ascii = STL_detect(name.c_str()) == STL_format::ascii;
    dense2D<double> pos;
    dense2D<unsigned int> conn;
    for (auto _ : state) {
        if (failed(state, STL_input(name.c_str(), pos, conn, ascii))) return;
    }
    per_item(state, conn.cols());
}

/// One benchmark for every STL file of the folder KVX_ZELVO_MESHES.
void register_real_meshes() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs yet
    const char* const folder = std::getenv("KVX_ZELVO_MESHES");
    if (!folder) {
        std::cerr << "KVX_ZELVO_MESHES is not set: no real meshes are read\n";
        return;
    }
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".stl") files.push_back(entry.path());
    }
    if (error) std::cerr << folder << ": " << error.message() << '\n';
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        benchmark::RegisterBenchmark(("read_file/" + file.stem().string()).c_str(), read_file,
                                     file.string())
            ->Unit(benchmark::kMillisecond);
    }
}

} // namespace

int main(int argc, char** argv) {
    register_real_meshes();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
