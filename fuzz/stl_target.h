#pragma once

#include "fuzzing.h"

#include <limits>

namespace kvx::zelvo::fuzzing {

constexpr std::uint64_t bytes_before_facets = 84;
constexpr std::uint64_t facet_bytes = 50;

/// Writes a surface in one form and reads it back.
inline void write_stl(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                      bool ascii) {
    demand(STL_output(output_file.path(), pos, connectM, ascii) == 0, "what was read is written");
    demand(ascii || output_file.size() == bytes_before_facets + facet_bytes * connectM.cols(),
           "50 bytes a facet");
    const STL_format form = STL_detect(output_file.path());
    demand(form == (ascii ? STL_format::ascii : STL_format::binary), "the form is detected");
    dense2D<double> nodes;
    dense2D<unsigned int> triangles;
    STL_report report;
    STL_input(output_file.path(), nodes, triangles, ascii, 0.0, report);
    demand(report.facets == connectM.cols() && report.unread_bytes == 0, "all facets are read");
}

inline void read_stl(const std::uint8_t* data, std::size_t size, bool ascii) {
    const char* const path = input_file.fill(data, size);
    STL_detect(path);
    dense2D<double> pos, same_pos;
    dense2D<unsigned int> connectM, same_connectM;
    const int code = read_within_limit(size, [&] { return STL_input(path, pos, connectM, ascii); });
    STL_report report;
    const int same_code = read_within_limit(size, [&] {
        constexpr double derived = std::numeric_limits<double>::quiet_NaN();
        return STL_input(path, same_pos, same_connectM, ascii, derived, report);
    });
    demand(code == same_code && equal(pos, same_pos) && equal(connectM, same_connectM),
           "forms read the same");
    demand(code >= -1, "no memory is lacking");
    demand(connectM.cols() == static_cast<std::uint64_t>(std::max(code, 0)), "the code counts");
    const std::uint64_t whole =
        size < bytes_before_facets ? 0 : (size - bytes_before_facets) / facet_bytes;
    demand(ascii || (code == -1) == (size < bytes_before_facets), "what comes before facets");
    demand(ascii || report.facets == std::min(report.announced_facets, whole), "no count on trust");
    if (code < 0) return demand(pos.empty(), "a failure leaves nothing");
    demand(report.facets == connectM.cols() + report.removed_elements, "facets are accounted for");
    demand(pos.cols() + report.removed_nodes == 3 * report.facets, "nodes are accounted for");
    demand(report.unread_bytes <= size, "no more is unread than there is");
    demand(connectM.empty() || check_IDs(connectM, ET_TRIA3, bound(pos.cols())), "nodes exist");
    if (connectM.empty()) return;
    examine(pos, connectM, ET_TRIA3);
    write_stl(pos, connectM, true);
    write_stl(pos, connectM, false);
}

} // namespace kvx::zelvo::fuzzing
