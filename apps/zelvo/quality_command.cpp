#include "commands.h"
#include "output.h"
#include "quality.h"

int run_quality(const quality_options& given) {
    return work_on(given.file, [&] {
        const mesh_file file =
            read_mesh(given.file, format_named(given.from), node_choice::numbered);
        const quality_report report = quality_of(file);
        file.notes.say_all(given.file);
        return print(given.json ? as_json(report) : as_text(report));
    });
}
