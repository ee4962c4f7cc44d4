#include "report.h"

#include <algorithm>
#include <vector>

#include <kvx/zelvo/boundaries.h>
#include <kvx/zelvo/shape_qualities.h>
#include <kvx/zelvo/subdomains.h>

using namespace kvx;

namespace {

/// Flatter elements have no area to the precision of the 32-bit numbers in STL files.
constexpr double least_quality = 1e-6;

/// The sides of all elements as (smaller node, larger node) in one number, equal ones together.
std::vector<std::uint64_t> sorted_sides(const dense2D<unsigned int>& triangles) {
    dense2D<unsigned int> sides;
    need(zelvo::get_element_boundaries(triangles, ET_TRIA3, sides));
    std::vector<std::uint64_t> keys(sides.cols());
    for (std::uint64_t j = 0; j < keys.size(); ++j) {
        const auto [low, high] = std::minmax(sides(0, j), sides(1, j));
        keys[j] = std::uint64_t{low} << 32 | high;
    }
    std::sort(keys.begin(), keys.end());
    return keys;
}

void measure_edges(const stl_surface& mesh, surface_report& report) {
    const std::vector<std::uint64_t> sides = sorted_sides(mesh.triangles);
    spread_of lengths;
    for (auto side = sides.begin(); side != sides.end();) {
        const auto next = std::find_if(side, sides.end(), [&](auto key) { return key != *side; });
        const auto elements = next - side;
        if (elements == 1) ++report.free_edges;
        if (elements > 2) ++report.non_manifold_edges;
        lengths.add(distance(&mesh.pos(0, *side >> 32), &mesh.pos(0, *side & 0xFFFFFFFFu)));
        side = next;
    }
    report.edge_length = lengths.result();
}

void count_subdomains(const stl_surface& mesh, surface_report& report) {
    dense1D<unsigned int> elements, offsets;
    need(zelvo::get_subdomains(mesh.triangles, elements, offsets));
    report.subdomains = offsets.size() - 1;
}

void measure_shapes(const stl_surface& mesh, surface_report& report) {
    dense1D<double> qualities;
    need(zelvo::shape_qualities(mesh.pos, mesh.triangles, ET_TRIA3, qualities));
    report.degenerate_elements = static_cast<std::uint64_t>(std::count_if(
        qualities.begin(), qualities.end(), [](double q) { return q < least_quality; }));
    report.shape_quality.process(qualities);
}

} // namespace

surface_report report_on(const std::string& file, format form, const stl_surface& surface) {
    surface_report report;
    report.file = file;
    report.form = form;
    const zelvo::STL_report& account = surface.account;
    report.facets = account.facets;
    report.unread_bytes = account.unread_bytes;
    report.tolerance = account.tolerance;
    report.merged_nodes = account.merged_nodes;
    report.removed_elements = account.removed_elements;
    report.nodes = surface.pos.cols();
    report.elements = surface.triangles.cols();
    report.box = bounding_box(surface.pos);
    measure_edges(surface, report);
    count_subdomains(surface, report);
    measure_shapes(surface, report);
    return report;
}
