#include "output.h"

#include <nlohmann/json.hpp>

namespace {

using json = nlohmann::ordered_json;

json as_json(const spread& values) {
    return {{"min", values.min}, {"mean", values.mean}, {"max", values.max}};
}

json as_json(const std::array<spread, 3>& box) {
    return {{"min", {box[0].min, box[1].min, box[2].min}},
            {"max", {box[0].max, box[1].max, box[2].max}}};
}

json as_json(const kvx::misc::histogram& values) {
    json bins = json::array();
    for (std::uint64_t k = 0; k < values.bins(); ++k) {
        bins.push_back({{"lower", values.limit(k)},
                        {"upper", values.limit(k + 1)},
                        {"count", values.count_in(k)}});
    }
    return {{"min", values.minimum()},
            {"mean", values.mean()},
            {"max", values.maximum()},
            {"bins", std::move(bins)}};
}

json as_json(const kind_quality& kind) {
    json object = {{"kind", facts(kind.kind).name}, {"elements", kind.elements}};
    if (kind.kind != kvx::ET_NODE1) {
        object["inverted"] = kind.inverted;
        object["shape_quality"] = as_json(kind.shape_quality);
    }
    return object;
}

std::string text_of(const json& object) {
    return object.dump(2, ' ', false, json::error_handler_t::replace) + '\n';
}

} // namespace

std::string as_json(const surface_report& report) {
    const json object = {
        {"file", report.file},
        {"format", facts(report.form).name},
        {"facets", report.facets},
        {"nodes", report.nodes},
        {"elements", report.elements},
        {"merged_nodes", report.merged_nodes},
        {"removed_elements", report.removed_elements},
        {"tolerance", report.tolerance},
        {"subdomains", report.subdomains},
        {"free_edges", report.free_edges},
        {"non_manifold_edges", report.non_manifold_edges},
        {"degenerate_elements", report.degenerate_elements},
        {"bounding_box", as_json(report.box)},
        {"edge_length", as_json(report.edge_length)},
        {"shape_quality", as_json(report.shape_quality)},
        {"unread_bytes", report.unread_bytes},
    };
    return text_of(object);
}

std::string as_json(const quality_report& report) {
    json kinds = json::array();
    for (const kind_quality& kind : report.kinds)
        kinds.push_back(as_json(kind));
    const json object = {
        {"file", report.file},
        {"format", facts(report.form).name},
        {"nodes", report.nodes},
        {"elements", report.elements},
        {"edges", report.edges},
        {"bounding_box", as_json(report.box)},
        {"edge_length", as_json(report.edge_length)},
        {"kinds", std::move(kinds)},
    };
    return text_of(object);
}

std::string as_json(const metric_report& report) {
    const json object = {
        {"file", report.file},
        {"output", report.output},
        {"field", report.field.empty() ? json() : json(report.field)},
        {"values", report.metrics ? "metrics" : "sizes"},
        {"dimension", report.dimension},
        {"nodes", report.nodes},
        {"invalid", report.invalid},
        {"replaced", report.replaced},
        {"size_before", as_json(report.size_before)},
        {"size_after", as_json(report.size_after)},
        {"shock_before", report.shock_before},
        {"shock_after", report.shock_after},
        {"gradation_reached", report.gradation_reached},
    };
    return text_of(object);
}
