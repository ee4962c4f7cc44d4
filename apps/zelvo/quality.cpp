#include "quality.h"

#include <algorithm>
#include <map>

#include <kvx/zelvo/shape_qualities.h>

using namespace kvx;

namespace {

void rate(const element_group& group, const dense2D<double>& pos, kind_quality& result) {
    result.elements += group.connectM.cols();
    if (group.kind == ET_NODE1) return;
    const element_group corners = corners_of(group);
    dense1D<double> qualities;
    need(zelvo::shape_qualities(pos, corners.connectM, corners.kind, qualities));
    result.inverted += static_cast<std::uint64_t>(
        std::count_if(qualities.begin(), qualities.end(), [](double q) { return q < 0; }));
    result.shape_quality.process(qualities);
}

spread lengths_of(const dense2D<unsigned int>& edges, const dense2D<double>& pos) {
    spread_of lengths;
    for (std::uint64_t j = 0; j < edges.cols(); ++j)
        lengths.add(distance(&pos(0, edges(0, j)), &pos(0, edges(1, j))));
    return lengths.result();
}

} // namespace

quality_report quality_of(const mesh_file& file) {
    const mesh& m = file.content;
    quality_report report;
    report.file = file.name;
    report.form = file.form;
    report.nodes = m.pos.cols();
    report.elements = element_count(m);
    std::map<element_type, kind_quality> kinds;
    for (const element_group& group : m.groups)
        rate(group, m.pos, kinds[group.kind]);
    for (auto& [kind, rated] : kinds) {
        rated.kind = kind;
        report.kinds.push_back(std::move(rated));
    }
    const dense2D<unsigned int> edges = edges_of(m);
    report.edges = edges.cols();
    report.edge_length = lengths_of(edges, m.pos);
    report.box = bounding_box(m.pos);
    return report;
}
