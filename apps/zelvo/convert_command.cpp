#include "commands.h"
#include "conversion.h"
#include "mesh_writing.h"

namespace {

int convert(const convert_options& given, format form) {
    mesh_file file = read_mesh(given.input, format_named(given.from), given.nodes);
    warnings losses;
    fit_to_format(file.content, form, losses);
    file.notes.add(file.omitted);
    if (file.content.groups.empty()) {
        file.notes.add(losses);
        throw unreadable_file("no element that the other format can hold" +
                              file.notes.in_brackets());
    }
    file.notes.say_all(given.input);
    const int error = write_mesh(given.output, file.content, form);
    if (error != 0) return fail(not_written, given.output + ": " + reason_of(error));
    losses.say_all(given.output);
    return done;
}

} // namespace

int run_convert(const convert_options& given) {
    const auto form = given.to.empty() ? format_by_extension(given.output) : format_named(given.to);
    if (!form)
        return fail(wrong_usage, given.output + ": the name tells no format; --to takes one of " +
                                     names_of_writable_formats());
    if (are_same_file(given.input, given.output))
        return fail(wrong_usage, given.output + ": the output would replace the input");
    return work_on(given.input, [&] { return convert(given, *form); });
}
