#include "node_field.h"

#include <algorithm>
#include <cmath>

#include <kvx/fixed_size.h>
#include <kvx/zelvo/edge_lengths.h>
#include <kvx/zelvo/metric_combination.h>
#include <kvx/zelvo/metric_validity.h>

using namespace kvx;

namespace {

template <unsigned Dim>
symmetric_fixed<double, Dim> metric_at(const dense2D<double>& metrics, std::uint64_t node) {
    symmetric_fixed<double, Dim> M;
    std::copy_n(&metrics(0, node), M.packed_size, M.data());
    return M;
}

bool is_valid_at(const dense1D<double>& sizes, std::uint64_t node) {
    return sizes[node] > 0 && std::isfinite(sizes[node]);
}

bool is_valid_at(const dense2D<double>& metrics, std::uint64_t node) {
    const double* const entries = &metrics(0, node);
    if (!std::all_of(entries, entries + metrics.rows(), [](double x) { return std::isfinite(x); }))
        return false;
    return metrics.rows() == 3 ? zelvo::is_valid_metric(metric_at<2>(metrics, node))
                               : zelvo::is_valid_metric(metric_at<3>(metrics, node));
}

void add_sizes(const dense1D<double>& sizes, std::uint64_t node, spread_of& all) {
    all.add(sizes[node]);
}

template <unsigned Dim>
void add_axes(const dense2D<double>& metrics, std::uint64_t node, spread_of& all) {
    vector_fixed<double, Dim> values;
    matrix_fixed<double, Dim, Dim> vectors;
    if (!zelvo::eigen_pairs(metric_at<Dim>(metrics, node), values, vectors)) return;
    for (unsigned i = 0; i < Dim; ++i)
        all.add(1.0 / std::sqrt(values[i]));
}

void add_sizes(const dense2D<double>& metrics, std::uint64_t node, spread_of& all) {
    if (metrics.rows() == 3)
        add_axes<2>(metrics, node, all);
    else
        add_axes<3>(metrics, node, all);
}

/// Gives the nodes that are no corners the mean of the corners of their elements.
void fill_between_corners(const mesh& m, dense1D<double>& sizes) {
    dense1D<double> sums(sizes.size()), counts(sizes.size());
    for (const element_group& group : m.groups) {
        const unsigned corners = node_count(facts(group.kind).corners);
        for (std::uint64_t j = 0; j < group.connectM.cols(); ++j) {
            double sum = 0.0;
            for (unsigned i = 0; i < corners; ++i)
                sum += sizes[group.connectM(i, j)];
            for (unsigned i = corners; i < group.connectM.rows(); ++i) {
                sums[group.connectM(i, j)] += sum / corners;
                counts[group.connectM(i, j)] += 1.0;
            }
        }
    }
    for (std::uint64_t j = 0; j < sizes.size(); ++j)
        if (sizes[j] == 0.0 && counts[j] > 0.0) sizes[j] = sums[j] / counts[j];
}

} // namespace

std::uint64_t node_count(const node_field& field) {
    if (const auto* const sizes = std::get_if<dense1D<double>>(&field)) return sizes->size();
    return std::get<dense2D<double>>(field).cols();
}

dense1D<double> mean_edge_lengths(const mesh& m) {
    constexpr unsigned mean_row = 1; // between the shortest and the longest
    dense2D<double> lengths;
    need(zelvo::edge_lengths(m.pos, edges_of(m), lengths));
    dense1D<double> means(m.pos.cols());
    for (std::uint64_t j = 0; j < means.size() && !lengths.empty(); ++j)
        means[j] = lengths(mean_row, j);
    fill_between_corners(m, means);
    return means;
}

bool is_valid(const node_field& field, std::uint64_t node) {
    return std::visit([&](const auto& values) { return is_valid_at(values, node); }, field);
}

spread sizes_of(const node_field& field) {
    spread_of all;
    for (std::uint64_t j = 0; j < node_count(field); ++j)
        if (is_valid(field, j))
            std::visit([&](const auto& values) { add_sizes(values, j, all); }, field);
    return all.result();
}
