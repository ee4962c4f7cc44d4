#include "metric.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <kvx/zelvo/metric_validity.h>
#include <kvx/zelvo/size_gradation.h>

using namespace kvx;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

std::vector<std::uint64_t> invalid_nodes(const node_field& field) {
    std::vector<std::uint64_t> nodes;
    for (std::uint64_t j = 0; j < node_count(field); ++j)
        if (!is_valid(field, j)) nodes.push_back(j);
    return nodes;
}

void set_zero(dense1D<double>& sizes, std::uint64_t node) {
    sizes[node] = 0.0;
}
void set_zero(dense2D<double>& metrics, std::uint64_t node) {
    std::fill_n(&metrics(0, node), metrics.rows(), 0.0);
}
void copy_entry(const dense1D<double>& from, dense1D<double>& to, std::uint64_t node) {
    to[node] = from[node];
}
void copy_entry(const dense2D<double>& from, dense2D<double>& to, std::uint64_t node) {
    std::copy_n(&from(0, node), from.rows(), &to(0, node));
}

/// Numbers that are not finite first become 0, which is what gets replaced.
template <class Values>
void replace(const std::vector<std::uint64_t>& invalid, double fallback, Values& values) {
    for (const std::uint64_t node : invalid)
        set_zero(values, node);
    need(zelvo::overwrite_invalid_metrics(values, dense1D<double>(node_count(values), fallback)));
}

/// A bound that was not given bounds nothing.
template <class Values>
void bound(const std::vector<std::uint64_t>& invalid, const metric_options& asked, Values& values) {
    Values before;
    if (!before.copy(values)) throw std::bad_alloc();
    need(zelvo::bound_metrics(values, std::isnan(asked.min) ? -infinity : asked.min,
                              std::isnan(asked.max) ? infinity : asked.max));
    for (const std::uint64_t node : invalid)
        copy_entry(before, values, node);
}

/// The pairs of nodes between which a field shall not change abruptly: the edges, and what joins
/// other nodes of an element to its corners.
dense2D<unsigned int> links_of(const mesh& m) {
    dense2D<unsigned int> links = edges_of(m);
    std::uint64_t next = links.cols(), added = 0;
    const auto corner_count = [](const element_group& group) {
        return node_count(facts(group.kind).corners);
    };
    for (const element_group& group : m.groups)
        added += group.connectM.cols() * corner_count(group) *
                 (group.connectM.rows() - corner_count(group));
    need(links.resize(2, next + added));
    for (const element_group& group : m.groups) {
        const unsigned corners = corner_count(group);
        for (std::uint64_t j = 0; j < group.connectM.cols(); ++j) {
            for (std::uint64_t i = corners; i < group.connectM.rows(); ++i) {
                for (unsigned k = 0; k < corners; ++k, ++next) {
                    links(0, next) = group.connectM(i, j);
                    links(1, next) = group.connectM(k, j);
                }
            }
        }
    }
    return links;
}

/// The largest shock over the links that have a length and a valid entry at both ends.
double largest_shock(const dense2D<double>& pos, const dense2D<unsigned int>& links,
                     const node_field& field) {
    std::vector<bool> valid(pos.cols());
    for (std::uint64_t j = 0; j < pos.cols(); ++j)
        valid[j] = is_valid(field, j);
    dense2D<unsigned int> rated(2, links.cols());
    std::uint64_t count = 0;
    for (std::uint64_t j = 0; j < links.cols(); ++j) {
        const unsigned a = links(0, j), b = links(1, j);
        if (!valid[a] || !valid[b] || std::equal(&pos(0, a), &pos(0, a) + pos.rows(), &pos(0, b)))
            continue;
        std::copy_n(&links(0, j), 2, &rated(0, count++));
    }
    if (count == 0) return std::numeric_limits<double>::quiet_NaN();
    need(rated.resize(2, count));
    dense1D<double> shocks;
    std::visit([&](const auto& values) { need(zelvo::H_shock(pos, rated, values, shocks)); },
               field);
    return *std::max_element(shocks.begin(), shocks.end());
}

/// Whether the gradation was reached.
template <class Values>
bool limit_gradation(const dense2D<double>& pos, const dense2D<unsigned int>& links,
                     double gradation, Values& values) {
    constexpr int too_many_sweeps = -7;
    const int result = zelvo::bound_metric_gradation(pos, links, ET_BAR2, dense1D<unsigned int>(),
                                                     gradation, values);
    if (result == too_many_sweeps) return false;
    need(result);
    return true;
}

/// Sizes of fewer nodes than the library takes get entries that count for nothing.
bool limit_gradation(const dense2D<double>& pos, const dense2D<unsigned int>& links,
                     double gradation, dense1D<double>& sizes) {
    const std::uint64_t count = sizes.size();
    need(sizes.resize(std::max<std::uint64_t>(count, 4)));
    const bool reached = limit_gradation<dense1D<double>>(pos, links, gradation, sizes);
    need(sizes.resize(count));
    return reached;
}

} // namespace

metric_report limit_field(const mesh& m, const metric_options& asked, node_field& field) {
    metric_report report;
    const auto* const metrics = std::get_if<dense2D<double>>(&field);
    report.metrics = metrics != nullptr;
    report.nodes = m.pos.cols();
    const std::uint64_t dimension = metrics && metrics->rows() == 3 ? 2 : 3;
    const dense2D<double> pos = m.pos.sub_matrix(0, 0, dimension, m.pos.cols());
    const dense2D<unsigned int> links = links_of(m);
    std::vector<std::uint64_t> invalid = invalid_nodes(field);
    report.invalid = invalid.size();
    report.size_before = sizes_of(field);
    report.shock_before = largest_shock(pos, links, field);

    std::visit(
        [&](auto& values) {
            if (!std::isnan(asked.fallback)) replace(invalid, asked.fallback, values);
            invalid = invalid_nodes(field);
            bound(invalid, asked, values);
            if (!std::isnan(asked.gradation))
                report.gradation_reached = limit_gradation(pos, links, asked.gradation, values);
        },
        field);
    report.replaced = report.invalid - invalid.size();
    report.size_after = sizes_of(field);
    report.shock_after = largest_shock(pos, links, field);
    return report;
}
