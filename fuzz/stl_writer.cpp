#include "written_text.h"

namespace kvx::zelvo::fuzzing {

void examine_call(const std::string& function, const arguments& before, arguments&,
                  std::int64_t result) {
    if (function != "STL_output" || result != 0) return;
    const std::uint64_t facets = before.conn.empty() ? 0 : before.conn.cols();
    const STL_format form = STL_detect(output_file.path());
    demand(form == (before.ascii ? STL_format::ascii : STL_format::binary), "the form is detected");
    if (!before.ascii) demand(output_file.size() == 84 + 50 * facets, "50 bytes a facet");
    if (before.ascii) {
        const std::string text = output_file.text();
        demand(std::count(text.begin(), text.end(), '\n') ==
                   static_cast<std::ptrdiff_t>(2 + 7 * facets),
               "seven lines a facet");
    }
    dense2D<double> pos;
    dense2D<unsigned int> triangles;
    STL_report report;
    STL_input(output_file.path(), pos, triangles, before.ascii, 0.0, report);
    demand(report.facets == facets && report.unread_bytes == 0, "all facets are read");
    for (std::uint64_t k = 0; report.removed_elements == 0 && k < 3 * facets; ++k)
        for (std::uint64_t i = 0; i < before.pos.rows(); ++i) {
            const double x = before.pos(i, before.conn(k % 3, k / 3));
            const double y = pos(i, triangles(k % 3, k / 3));
            demand(!(std::abs(x) < 1e38) || std::abs(x - y) <= 1e-6 * std::abs(x) + 1e-37,
                   "corners come back");
        }
}

} // namespace kvx::zelvo::fuzzing
