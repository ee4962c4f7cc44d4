// The command `zelvo`: its arguments.
#include <cmath>
#include <csignal>
#include <functional>
#include <sstream>
#include <string>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "file_formats.h"
#include "messages.h"

namespace {

constexpr const char* exit_codes =
    "Results go to the standard output, messages to the standard error. Exit codes:\n"
    "  0  done\n"
    "  2  wrong usage\n"
    "  3  a file cannot be read or is malformed\n"
    "  4  the output was not written (a file that existed is then as it was)";

/// An empty argument would pass for the number 0, or for a file of no name.
std::string not_empty(const std::string& argument) {
    return argument.empty() ? "an empty argument" : "";
}

/// A check of numbers that are at least, or above, 0 and finite.
std::function<std::string(const std::string&)> number_check(bool zero_allowed) {
    return [=](const std::string& argument) -> std::string {
        double x = 0.0;
        const bool is_number = !argument.empty() && CLI::detail::lexical_cast(argument, x);
        if (is_number && std::isfinite(x) && (x > 0 || (zero_allowed && x == 0))) return "";
        return zero_allowed ? "a number of 0 or more is needed" : "a number above 0 is needed";
    };
}

std::string readable_format(const std::string& name) {
    const auto form = format_named(name);
    return form && facts(*form).readable ? "" : "one of " + names_of_readable_formats();
}

std::string writable_format(const std::string& name) {
    return format_named(name) ? "" : "one of " + names_of_writable_formats();
}

void add_file(CLI::App& command, const char* name, std::string& file, const char* meaning) {
    command.add_option(name, file, meaning)->required()->check(not_empty);
}

void add_mesh(CLI::App& command, const char* name, std::string& file) {
    add_file(command, name, file, "Mesh; its format is told by its content, or else its name");
}

void add_from(CLI::App& command, std::string& from) {
    command
        .add_option("--from", from,
                    "Format of the mesh, whatever it looks like: " + names_of_readable_formats())
        ->check(readable_format)
        ->option_text("FORMAT");
}

void add_nodes(CLI::App& command, node_choice& nodes) {
    command
        .add_option_function<std::string>(
            "--nodes",
            [&nodes](const std::string& choice) {
                nodes = choice == "all" ? node_choice::all : node_choice::used;
            },
            "'used' leaves out nodes without an element, 'all' keeps them, also those that stand "
            "for unused numbers of a NASTRAN deck, which else become no nodes")
        ->check(CLI::IsMember({"used", "all"}))
        ->option_text("used|all");
}

void add_number(CLI::App& command, const char* name, double& x, bool zero_allowed,
                const char* meaning) {
    command.add_option(name, x, meaning)->check(number_check(zero_allowed));
}

void add_json(CLI::App& command, bool& json) {
    command.add_flag("--json", json, "Prints a JSON object");
}

void add_report(CLI::App& app, report_options& given) {
    CLI::App& command = *app.add_subcommand(
        "report", "Reads an STL surface, welds its nodes, removes what collapsed and measures it.");
    add_file(command, "FILE", given.file, "ASCII or binary STL file");
    add_number(command, "--tolerance", given.tolerance, true,
               "Distance up to which nodes are welded, in the units of the file; without it a "
               "twentieth of the smallest height of a facet");
    command.add_option("--vtk", given.vtk, "Writes the welded surface as a legacy VTK file")
        ->check(not_empty);
    add_json(command, given.json);
}

void add_convert(CLI::App& app, convert_options& given) {
    CLI::App& command = *app.add_subcommand(
        "convert", "Writes a mesh in another format, and says what that format does not hold.");
    add_mesh(command, "IN", given.input);
    add_file(command, "OUT", given.output, "File to write; its format is told by its name");
    add_from(command, given.from);
    command
        .add_option("--to", given.to,
                    "Format to write, whatever the name: " + names_of_writable_formats())
        ->check(writable_format)
        ->option_text("FORMAT");
    add_nodes(command, given.nodes);
}

void add_quality(CLI::App& app, quality_options& given) {
    CLI::App& command = *app.add_subcommand(
        "quality", "Rates the shapes of the elements of a mesh and measures its edges.");
    add_mesh(command, "FILE", given.file);
    add_from(command, given.from);
    add_json(command, given.json);
}

void add_metric(CLI::App& app, metric_options& given) {
    CLI::App& command = *app.add_subcommand(
        "metric", "Checks, bounds and smooths a size or metric field on the nodes of a mesh.");
    add_mesh(command, "MESH", given.file);
    add_file(command, "OUT", given.output, "MEDIT solution to write");
    command
        .add_option(
            "--field", given.field,
            "MEDIT solution with the field; without it the mean length of the edges at each node")
        ->check(not_empty);
    add_number(command, "--fallback", given.fallback, false,
               "Size that replaces what is not valid");
    add_number(command, "--min", given.min, false, "Smallest size");
    add_number(command, "--max", given.max, false, "Largest size");
    add_number(
        command, "--gradation", given.gradation, false,
        "Largest shock between neighbours: sizes grow at most by ln(1 + G) per unit of length");
    add_from(command, given.from);
    add_nodes(command, given.nodes);
    add_json(command, given.json);
}

int run(int argc, char** argv) {
    report_options report;
    convert_options convert;
    quality_options quality;
    metric_options metric;
    CLI::App app("Processes meshes.", "zelvo");
    app.set_version_flag("--version", "zelvo " KVX_ZELVO_RELEASE);
    app.require_subcommand(0, 1); // with 1 at least, a misspelt name would only be a missing one
    add_report(app, report);
    add_convert(app, convert);
    add_quality(app, quality);
    add_metric(app, metric);
    app.footer(exit_codes);
    for (CLI::App* const command : app.get_subcommands({}))
        command->footer(exit_codes);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) { // --help and --version
        std::ostringstream answer;
        app.exit(asked, answer, answer);
        return print(answer.str());
    } catch (const CLI::ParseError& mistake) {
        return fail(wrong_usage, std::string(mistake.what()) + " (zelvo --help tells the usage)");
    }
    if (app.got_subcommand("report")) return run_report(report);
    if (app.got_subcommand("convert")) return run_convert(convert);
    if (app.got_subcommand("quality")) return run_quality(quality);
    if (app.got_subcommand("metric")) return run_metric(metric);
    return fail(wrong_usage, "a subcommand is needed (zelvo --help tells the usage)");
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
