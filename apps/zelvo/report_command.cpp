#include <cerrno>

#include "commands.h"
#include "mesh_writing.h"
#include "output.h"
#include "report.h"

namespace {

/// What is wrong with options that are well-formed; empty when nothing is.
std::string objection(const report_options& given) {
    if (given.vtk.empty()) return "";
    if (are_same_file(given.file, given.vtk))
        return given.vtk + ": the VTK file would replace the STL file";
    if (is_standard_output(given.vtk)) return given.vtk + ": the VTK file would replace the report";
    return "";
}

int report_on_surface(const report_options& given) {
    need_readable(given.file);
    const auto form = stl_form(given.file);
    if (!form) throw unreadable_file("not an STL file");
    const stl_surface surface = read_stl(given.file, *form == format::stl_ascii, given.tolerance);
    const surface_report report = report_on(given.file, *form, surface);

    warnings notes;
    warn(surface, notes);
    warn_of_nodes(surface.pos, notes);
    notes.say_all(given.file);
    // The one output is written though the other fails.
    int code = print(given.json ? as_json(report) : as_text(report));
    if (!given.vtk.empty()) {
        const mesh triangles{surface.pos, {{kvx::ET_TRIA3, surface.triangles, {}}}};
        const int error = write_mesh(given.vtk, triangles, format::vtk);
        if (error != 0) code = fail(not_written, given.vtk + ": " + reason_of(error));
    }
    return code;
}

} // namespace

int run_report(const report_options& given) {
    const std::string wrong = objection(given);
    if (!wrong.empty()) return fail(wrong_usage, wrong);
    return work_on(given.file, [&] { return report_on_surface(given); });
}
