#include <kvx/zelvo/stl.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "generated_meshes.h"
#include "growth.h"
#include "temporary_file.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

template <mesh (*make)(std::uint64_t)>
mesh soup_of(std::uint64_t facets) {
    return separate_facets(make(facets));
}

template <bool ascii>
void write(measurement& measured, const mesh& soup) {
    const temporary_file file(".stl");
    measured.reads(soup.pos, soup.conn).run([&] {
        return STL_output(file.name(), soup.pos, soup.conn, ascii);
    });
}

/// Reading includes the clean-up: welding, removal of degenerate triangles and unused nodes.
template <bool ascii>
void read(measurement& measured, const mesh& soup) {
    const temporary_file file(".stl");
    const int code = STL_output(file.name(), soup.pos, soup.conn, ascii);
    dense2D<double> pos;
    dense2D<unsigned int> conn;
    measured.reads_file(file.name()).makes(pos, conn).run([&] {
        return code < 0 ? code : STL_input(file.name(), pos, conn, ascii);
    });
}

void read_file(benchmark::State& state, const std::string& name) {
    const bool ascii = STL_detect(name.c_str()) == STL_format::ascii;
    dense2D<double> pos;
    dense2D<unsigned int> conn;
    STL_input(name.c_str(), pos, conn, ascii); // for the number of facets
    measurement(state, conn.cols()).reads_file(name.c_str()).makes(pos, conn).run([&] {
        return STL_input(name.c_str(), pos, conn, ascii);
    });
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
    over_sizes<mesh>({{"facets", soup_of<bumpy_sphere>},
                      {"facets_clustered", soup_of<clustered<bumpy_sphere>>},
                      {"facets_shuffled", soup_of<shuffled<bumpy_sphere>>},
                      {"facets_around_a_node", soup_of<fan>},
                      {"one_facet", soup_of<one_triangle>}},
                     {{"write_binary", write<false>},
                      {"write_ascii", write<true>},
                      {"read_binary", read<false>},
                      {"read_ascii", read<true>}});
    register_real_meshes();
    return run_benchmarks(argc, argv);
}
