#include "output.h"

#include <algorithm>
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

} // namespace

std::string printable(const std::string& name) {
    std::string text;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        char escaped[8] = {c};
        if (byte < 0x20 || byte == 0x7F) std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
        text += escaped;
    }
    return text;
}

std::string as_text(const surface_report& report) {
    std::string text = printable(report.file) + '\n';
    text += line("format", report.ascii ? "STL, ASCII" : "STL, binary");

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

    text += "\nBounding box\n";
    text += box_line("x", report.box[0]);
    text += box_line("y", report.box[1]);
    text += box_line("z", report.box[2]);

    text += "\nEdge length\n";
    text += line("shortest", number(report.edge_length.min));
    text += line("mean", number(report.edge_length.mean));
    text += line("longest", number(report.edge_length.max));

    text += "\nShape quality (1: equilateral, 0: flat)\n" + report.shape_quality.text();
    return text;
}
