// Times this library beside other tools at the same jobs; docs/performance.md says how to read it.
#include <cstdlib>
#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

#include "contest.h"

int main(int argc, char** argv) {
    using namespace kvx::zelvo::bench;
    CLI::App app{
        "Times kvx zelvo beside other tools at the same jobs, one thread, round by round."};
    contest_options options;
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
    try {
        contest c(options);
        hold_stl_rows(c);
        hold_search_rows(c);
        hold_topology_rows(c);
        hold_metric_rows(c);
        hold_text_rows(c);
        return c.finish() ? 0 : 1;
    } catch (const std::exception& e) {
        std::cerr << "peers_bench: " << e.what() << '\n';
        return 1;
    }
}
