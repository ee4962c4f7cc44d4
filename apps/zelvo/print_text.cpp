#include "output.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

namespace {

std::string number(double value) {
    if (std::isnan(value)) return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

std::string line(const char* label, const std::string& value) {
    constexpr std::size_t value_column = 22;
    std::string text = "  ";
    text += label;
    text.resize(std::max(text.size() + 1, value_column), ' ');
    return text + value + '\n';
}

std::string line(const char* label, std::uint64_t count) {
    return line(label, std::to_string(count));
}

std::string box_line(const char* axis, const spread& values) {
    return line(axis, number(values.min) + " .. " + number(values.max) + "   (" +
                          number(values.max - values.min) + ")");
}

std::string box_lines(const std::array<spread, 3>& box) {
    return "\nBounding box\n" + box_line("x", box[0]) + box_line("y", box[1]) +
           box_line("z", box[2]);
}

std::string length_lines(const spread& lengths) {
    return "\nEdge length\n" + line("shortest", number(lengths.min)) +
           line("mean", number(lengths.mean)) + line("longest", number(lengths.max));
}

std::string change(const std::string& before, const std::string& after) {
    return before + " -> " + after;
}

} // namespace

std::string as_text(const surface_report& report) {
    std::string text = printable(report.file) + '\n';
    text += line("format", facts(report.form).title);

    text += "\nCleaning\n";
    text += line("facets read", report.facets);
    text +=
        line("nodes", std::to_string(3 * report.facets) + " -> " + std::to_string(report.nodes) +
                          "   (" + std::to_string(report.merged_nodes) + " merged)");
    text +=
        line("elements", std::to_string(report.facets) + " -> " + std::to_string(report.elements) +
                             "   (" + std::to_string(report.removed_elements) + " removed)");
    text += line("tolerance", number(report.tolerance));

    text += "\nSurface\n";
    text += line("subdomains", report.subdomains);
    text += line("free edges", report.free_edges);
    text += line("non-manifold edges", report.non_manifold_edges);
    text += line("degenerate elements", report.degenerate_elements);

    text += box_lines(report.box) + length_lines(report.edge_length);
    text += "\nShape quality (1: equilateral, 0: flat)\n" + report.shape_quality.text();
    return text;
}

std::string as_text(const quality_report& report) {
    std::string text = printable(report.file) + '\n';
    text += line("format", facts(report.form).title);
    text += line("nodes", report.nodes);
    text += line("elements", report.elements);
    text += line("edges", report.edges);
    text += box_lines(report.box) + length_lines(report.edge_length);
    for (const kind_quality& kind : report.kinds) {
        std::string title = facts(kind.kind).plural;
        title[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(title[0])));
        text += '\n' + title + '\n' + line("elements", kind.elements);
        if (kind.kind == kvx::ET_NODE1) continue;
        text += line("inverted", kind.inverted);
        text +=
            "Shape quality (1: ideal, 0: flat, negative: inverted)\n" + kind.shape_quality.text();
    }
    return text;
}

std::string as_text(const metric_report& report) {
    const auto sizes = [](const spread& values) {
        return number(values.min) + " .. " + number(values.max);
    };
    std::string text = printable(report.output) + '\n';
    text += line("mesh", printable(report.file));
    text += line("field", report.field.empty() ? "mean edge lengths" : printable(report.field));
    text += line("values", !report.metrics         ? "sizes"
                           : report.dimension == 2 ? "metrics, 2-D"
                                                   : "metrics, 3-D");
    text += line("nodes", report.nodes);
    text += line("invalid", change(std::to_string(report.invalid),
                                   std::to_string(report.invalid - report.replaced)));
    text += line("size", change(sizes(report.size_before), sizes(report.size_after)));
    text += line("largest shock", change(number(report.shock_before), number(report.shock_after)));
    return text;
}
