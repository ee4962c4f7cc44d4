// The command `zelvo`: arguments, messages and exit codes.
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <sstream>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>

#include "output.h"
#include "report.h"

namespace {

enum exit_code { done = 0, wrong_usage = 2, bad_input = 3, not_written = 4 };

constexpr const char* exit_codes =
    "Results go to the standard output, messages to the standard error. Exit codes:\n"
    "  0  done\n"
    "  2  wrong usage\n"
    "  3  the file cannot be read or is malformed\n"
    "  4  the output was not written (a VTK file that existed is then as it was)";

struct arguments {
    std::string file;
    std::string vtk;
    double tolerance = std::numeric_limits<double>::quiet_NaN();
    bool json = false;
};

void say(const std::string& what) {
    std::fprintf(stderr, "zelvo: %s\n", printable(what).c_str());
}

int fail(exit_code code, const std::string& what) {
    say(what);
    return code;
}

int print(const std::string& text) {
    errno = 0;
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return done;
    return fail(not_written, std::string("standard output: ") + std::strerror(errno));
}

bool same_file(const struct stat& a, const struct stat& b) {
    return S_ISREG(a.st_mode) && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// An empty argument would pass for the number 0, or for a file of no name.
std::string not_empty(const std::string& argument) {
    return argument.empty() ? "an empty argument" : "";
}

/// What is wrong with arguments that are well-formed; empty when nothing is.
std::string objection(const arguments& given, bool has_tolerance, bool has_vtk) {
    if (has_tolerance && !(given.tolerance >= 0 && std::isfinite(given.tolerance)))
        return "--tolerance: a distance of 0 or more is needed";
    struct stat input = {}, results = {}, vtk = {};
    if (!has_vtk || stat(given.vtk.c_str(), &vtk) != 0) return "";
    if (stat(given.file.c_str(), &input) == 0 && same_file(vtk, input))
        return given.vtk + ": the VTK file would replace the STL file";
    if (fstat(STDOUT_FILENO, &results) == 0 && same_file(vtk, results))
        return given.vtk + ": the VTK file would replace the report";
    return "";
}

void warn(const surface_report& report) {
    const auto warning = [&](const std::string& what) { say(report.file + ": warning: " + what); };
    if (report.announced_facets > report.facets)
        warning("facets announced: " + std::to_string(report.announced_facets) +
                ", found: " + std::to_string(report.facets));
    if (report.unread_bytes > 0)
        warning("bytes behind the last facet that were not understood: " +
                std::to_string(report.unread_bytes));
    if (report.non_finite_nodes > 0)
        warning("nodes with coordinates that are no finite numbers: " +
                std::to_string(report.non_finite_nodes));
}

int run_report(const arguments& given, bool has_vtk) {
    surface mesh;
    surface_report report;
    try {
        report = report_on(given.file, given.tolerance, mesh);
    } catch (const unreadable_file& reason) {
        return fail(bad_input, given.file + ": " + reason.what());
    } catch (const std::bad_alloc&) {
        return fail(bad_input, given.file + ": " + std::strerror(ENOMEM));
    }
    warn(report);
    // The one output is written though the other fails.
    int code = print(given.json ? as_json(report) : as_text(report));
    if (has_vtk) {
        const int error = write_vtk(given.vtk, mesh);
        if (error != 0) code = fail(not_written, given.vtk + ": " + std::strerror(error));
    }
    return code;
}

int run(int argc, char** argv) {
    arguments given;
    CLI::App app("Processes meshes.", "zelvo");
    app.set_version_flag("--version", "zelvo " KVX_ZELVO_RELEASE);
    app.require_subcommand(1);
    app.footer(exit_codes);

    CLI::App* const report = app.add_subcommand(
        "report", "Reads an STL surface, welds its nodes, removes what collapsed and measures it.");
    report->footer(exit_codes);
    CLI::Option* const file =
        report->add_option("FILE", given.file, "ASCII or binary STL file")->required();
    CLI::Option* const tolerance = report->add_option(
        "--tolerance", given.tolerance,
        "Distance up to which nodes are welded, in the units of the file; without it a twentieth "
        "of the smallest height of a facet");
    CLI::Option* const vtk =
        report->add_option("--vtk", given.vtk, "Writes the welded surface as a legacy VTK file");
    for (CLI::Option* const option : {file, tolerance, vtk})
        option->check(not_empty);
    report->add_flag("--json", given.json, "Prints the report as a JSON object");

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) { // --help and --version
        std::ostringstream answer;
        app.exit(asked, answer, answer);
        return print(answer.str());
    } catch (const CLI::ParseError& mistake) {
        return fail(wrong_usage, std::string(mistake.what()) + " (zelvo --help tells the usage)");
    }
    const std::string wrong = objection(given, tolerance->count() > 0, vtk->count() > 0);
    if (!wrong.empty()) return fail(wrong_usage, wrong);
    return run_report(given, vtk->count() > 0);
}

} // namespace

int main(int argc, char** argv) {
    // A reader that went away and a file that grew too large are failed writes like others.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return run(argc, argv);
    } catch (const std::exception& failure) {
        return fail(bad_input, failure.what());
    }
}
