#include <cmath>

#include <kvx/zelvo/medit.h>

#include "commands.h"
#include "mesh_writing.h"
#include "metric.h"
#include "output.h"

using namespace kvx;

namespace {

/// What is wrong with options that are well-formed; empty when nothing is.
std::string objection(const metric_options& given) {
    if (given.min > given.max) return "--min: larger than --max";
    for (const std::string& input : {given.file, given.field})
        if (are_same_file(input, given.output))
            return given.output + ": the output would replace an input";
    if (is_standard_output(given.output))
        return given.output + ": the output would replace the report";
    return "";
}

/// The field that the options name, which has to fit the mesh.
solution field_for(const mesh& m, const metric_options& given) {
    if (given.field.empty()) return {3, mean_edge_lengths(m)};
    need_readable(given.field);
    solution field = read_solution(given.field);
    if (node_count(field.values) != m.pos.cols())
        throw unreadable_file("has " + std::to_string(node_count(field.values)) +
                              " nodes, the mesh " + std::to_string(m.pos.cols()));
    const auto* const metrics = std::get_if<dense2D<double>>(&field.values);
    const spread z = bounding_box(m.pos)[2];
    if (metrics && metrics->rows() == 3 && z.min != z.max)
        throw unreadable_file("metrics of the plane, but the z of the mesh differ");
    return field;
}

int write_field(const std::string& file, const solution& field) {
    return write_file(file, [&](const char* name) {
        if (const auto* const sizes = std::get_if<dense1D<double>>(&field.values))
            return zelvo::medit_scalar(name, field.dimension, *sizes);
        return zelvo::medit_tensor(name, std::get<dense2D<double>>(field.values));
    });
}

int limit_and_write(const mesh_file& file, solution& field, const metric_options& given) {
    metric_report report = limit_field(file.content, given, field.values);
    report.file = given.file;
    report.output = given.output;
    report.field = given.field;
    report.dimension = field.dimension;

    file.notes.say_all(given.file);
    warnings notes;
    notes.add("nodes without a valid size or metric (--fallback replaces it)",
              report.invalid - report.replaced);
    if (!report.gradation_reached) notes.add("the gradation was not reached");
    notes.say_all(given.output);
    // The one output is written though the other fails.
    const int code = print(given.json ? as_json(report) : as_text(report));
    const int error = write_field(given.output, field);
    return error == 0 ? code : fail(not_written, given.output + ": " + reason_of(error));
}

} // namespace

int run_metric(const metric_options& given) {
    const std::string wrong = objection(given);
    if (!wrong.empty()) return fail(wrong_usage, wrong);
    return work_on(given.file, [&] {
        const mesh_file file = read_mesh(given.file, format_named(given.from), given.nodes);
        const std::string& source = given.field.empty() ? given.file : given.field;
        return work_on(source, [&] {
            solution field = field_for(file.content, given);
            return limit_and_write(file, field, given);
        });
    });
}
