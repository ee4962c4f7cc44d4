// Times this library beside other tools at the same jobs; docs/performance.md says how to read it.
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>

#include "contest.h"

namespace {

int run(int argc, char** argv) {
    using namespace kvx::zelvo::bench;
    CLI::App app{
        "Times kvx zelvo beside other tools at the same jobs, one thread, round by round."};
    contest_options options;
    const std::pair<std::string, void (*)(contest&)> families[] = {{"stl", hold_stl_rows},
                                                                   {"search", hold_search_rows},
                                                                   {"topology", hold_topology_rows},
                                                                   {"metrics", hold_metric_rows},
                                                                   {"text", hold_text_rows}};
    std::string only_family;
    app.add_option("--family", only_family, "hold the rows of one family")
        ->check(CLI::IsMember({"stl", "search", "topology", "metrics", "text"}));
    app.add_option("--scale", options.scale, "factor on all sizes")->check(CLI::PositiveNumber);
    app.add_option("--rounds", options.rounds, "timed rounds of each row")
        ->check(CLI::PositiveNumber);
    app.add_option("--only", options.only, "hold the rows whose name contains this");
    app.add_option("--folder", options.folder, "where files are written (the system's folder)");
    app.add_flag("--cpu-time", options.cpu_time, "time of the process, where others are at work");
    app.add_option("--json", options.json, "file for all times");
    app.add_option("--markdown", options.markdown, "file for the table");
    // One thread for each: what VTK and libraries built with OpenMP read when first used.
    for (const char* const threads : {"VTK_SMP_MAX_THREADS", "OMP_NUM_THREADS"})
        setenv(threads, "1", 1); // NOLINT(concurrency-mt-unsafe): no other thread runs yet
    setenv("VTK_SMP_BACKEND_IN_USE", "Sequential", 1); // NOLINT(concurrency-mt-unsafe)
    CLI11_PARSE(app, argc, argv);
    contest c(options);
    for (const auto& [name, hold_rows] : families) {
        if (only_family.empty() || name == only_family) hold_rows(c);
    }
    return c.finish() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& e) {
        std::cerr << "peers_bench: " << e.what() << '\n';
        return 1;
    }
}
