#include <kvx/zelvo/size_gradation.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include <kvx/zelvo/node_graph.h>
#include <kvx/zelvo/node_indices.h>

#include "foundation/memory_guard.h"
#include "metrics/metric_length.h"
#include "metrics/symmetric_eigen.h"

namespace kvx::zelvo {

namespace {

// ---- Shocks ------------------------------------------------------------------------------------

/// The ratio of the end sizes to the power of 1 / metric length, minus 1, without cancellation.
double shock_of(const measured_edge& edge) {
    constexpr double largest = std::numeric_limits<double>::max();
    const double length = edge.metric_length();
    if (!(length > 0 && length < unmeasured)) return largest;
    const auto [smaller, larger] = std::minmax(edge.h0, edge.h1);
    return std::min(std::expm1(std::log1p((larger - smaller) / smaller) / length), largest);
}

template <unsigned Dim, class Field>
void raise_shocks(const dense2D<double>& pos, const dense2D<unsigned int>& edges,
                  const Field& field, dense1D<double>& shocks) {
    for (std::uint64_t j = 0; j < edges.cols(); ++j) {
        const unsigned int a = edges(0, j);
        const unsigned int b = edges(1, j);
        const double shock = shock_of(measure<Dim>(pos, field, a, b));
        shocks[a] = std::max(shocks[a], shock);
        shocks[b] = std::max(shocks[b], shock);
    }
}

template <class Field>
int shocks_in(const dense2D<double>& pos, const dense2D<unsigned int>& edges, const Field& field,
              dense1D<double>& shocks) {
    if (edges.empty()) return 0;
    if (pos.rows() != 2 && pos.rows() != 3) return -1;
    if (!names_nodes(pos, edges, ET_BAR2)) return -2;
    return guarded([&] {
        dense1D<double> fresh(pos.cols()); // shocks may be the sizes
        if (pos.rows() == 2) raise_shocks<2>(pos, edges, field, fresh);
        if (pos.rows() == 3) raise_shocks<3>(pos, edges, field, fresh);
        need(shocks.resize(fresh.size()));
        std::copy(fresh.begin(), fresh.end(), shocks.begin());
        return 0;
    });
}

// ---- Gradation ---------------------------------------------------------------------------------

/// The nodes that share an element with each node.
struct neighbour_lists {
    dense1D<unsigned int> offsets;
    dense1D<unsigned int> nodes;

    unsigned int node_count() const { return static_cast<unsigned int>(offsets.size() - 1); }
    std::span<const unsigned int> of(unsigned int node) const {
        return {nodes.begin() + offsets[node], nodes.begin() + offsets[node + 1]};
    }
};

/// Flags, by node, of those listed.
std::vector<bool> flags_of(const dense1D<unsigned int>& nodes, std::uint64_t node_count) {
    std::vector<bool> listed(node_count);
    for (const unsigned int node : nodes) {
        if (node != no_node) listed[node] = true;
    }
    return listed;
}

/// How much sizes may grow over a length; nothing over none, even without a bound on the growth.
double growth_over(double length, double growth) {
    return length == 0 ? 0 : growth * length;
}

/// Lowers sizes to what their neighbours allow; sizes that are not > 0 take no part. One pass in
/// node order settles most pairs. What it lowers behind its back goes on a heap, off which nodes
/// come from the smallest size up: what a node allows is no smaller than its own size, so each
/// hands on its size once, as nothing lowers it later.
void sweep_sizes(const dense2D<double>& pos, const neighbour_lists& neighbours,
                 const std::vector<bool>& fixed, double growth, dense1D<double>& sizes) {
    struct lowered_node {
        double size;
        unsigned int node;
    };
    const auto is_later = [](const lowered_node& a, const lowered_node& b) {
        return a.size > b.size;
    };
    const auto lower = [&](unsigned int node, unsigned int by) {
        if (!(sizes[by] > 0 && sizes[by] < sizes[node]) || fixed[node]) return false;
        const double length = distance(&pos(0, by), &pos(0, node), pos.rows());
        const double bound = sizes[by] + growth_over(length, growth);
        if (!(bound < sizes[node])) return false;
        sizes[node] = bound;
        return true;
    };
    std::vector<lowered_node> heap;
    for (unsigned int n = 0; n < neighbours.node_count(); ++n) {
        for (const unsigned int other : neighbours.of(n))
            lower(n, other);
        for (const unsigned int other : neighbours.of(n)) {
            if (other < n && lower(other, n)) heap.push_back({sizes[other], other});
        }
    }
    std::make_heap(heap.begin(), heap.end(), is_later);
    while (!heap.empty()) {
        const auto [size, node] = heap.front();
        std::pop_heap(heap.begin(), heap.end(), is_later);
        heap.pop_back();
        if (size > sizes[node]) continue; // it was lowered again
        for (const unsigned int other : neighbours.of(node)) {
            if (!lower(other, node)) continue;
            heap.push_back({sizes[other], other});
            std::push_heap(heap.begin(), heap.end(), is_later);
        }
    }
}

/// Whether a metric asks for no smaller size than m in any direction, beyond doubt; a cheap answer
/// to most questions. False says nothing.
bool is_surely_below(const double* metric, const double* m) {
    constexpr double rounding = 1e-12; // more than the difference has, relative to its terms
    packed_matrix<3> difference;
    for (unsigned i = 0; i < packed_size<3>; ++i)
        difference[i] = m[i] - metric[i];
    const double margin = rounding * (sum_of_magnitudes(m) + sum_of_magnitudes(metric));
    return is_surely_positive(difference.data(), 1.0, margin);
}

/// Intersects m with the metric that another one allows at the far end of the edge e; whether m
/// changed. Along e the sizes, in units of e, then differ by `growth` at most.
template <unsigned Dim>
bool bound_metric_by(const double* other, const double* e, double growth, double* m) {
    constexpr double tolerance = 1e-12;
    const double stretch = 1 + growth_over(std::sqrt(quadratic_form<Dim>(other, e)), growth);
    const packed_matrix<Dim> allowed = scaled<Dim>(other, 1 / (stretch * stretch));
    if constexpr (Dim == 3) {
        if (is_surely_below(allowed.data(), m)) return false;
    }
    reduction<Dim> both;
    if (!reduce<Dim>(m, allowed.data(), both)) return false;
    if (!(both.value(Dim - 1) > 1 + tolerance)) return false;
    packed_matrix<Dim> smaller;
    intersect(both, smaller.data());
    if (!is_finite<Dim>(smaller.data())) return false;
    std::copy(smaller.begin(), smaller.end(), m);
    return true;
}

constexpr int still_changing = -7;

/// Intersects every metric with what its neighbours allow, until nothing changes.
template <unsigned Dim>
int sweep_metrics(const dense2D<double>& pos, const neighbour_lists& neighbours,
                  const std::vector<bool>& fixed, double growth, dense2D<double>& metrics) {
    constexpr int most_sweeps = 1000;
    const unsigned int node_count = neighbours.node_count();
    std::vector<bool> bounds(node_count);
    std::vector<bool> changes(node_count);
    for (unsigned int n = 0; n < node_count; ++n) {
        bounds[n] = is_finite<Dim>(&metrics(0, n)) && is_metric<Dim>(&metrics(0, n));
        changes[n] = bounds[n] && !fixed[n];
    }
    const auto bound_by_neighbours = [&](unsigned int n) {
        bool changed = false;
        for (const unsigned int other : neighbours.of(n)) {
            if (!bounds[other]) continue;
            double e[Dim];
            for (unsigned i = 0; i < Dim; ++i)
                e[i] = pos(i, n) - pos(i, other);
            changed |= bound_metric_by<Dim>(&metrics(0, other), e, growth, &metrics(0, n));
        }
        return changed;
    };
    std::vector<bool> waits = changes;
    for (int sweep = 0; sweep < most_sweeps; ++sweep) {
        bool changed = false;
        for (unsigned int n = 0; n < node_count; ++n) {
            if (!waits[n]) continue;
            waits[n] = false;
            if (!bound_by_neighbours(n)) continue;
            changed = true;
            for (const unsigned int other : neighbours.of(n))
                waits[other] = changes[other];
        }
        if (!changed) return 0;
    }
    return still_changing;
}

/// The checks that sizes and metrics share, in their order.
int check(const dense2D<double>& pos, const dense2D<unsigned int>& conn, element_type kind,
          const dense1D<unsigned int>& nodes, double gradation) {
    if (pos.rows() != 2 && pos.rows() != 3) return -1;
    if (!names_nodes(pos, conn, kind)) return -2;
    if (!check_IDs(nodes, index_bound(pos.cols()))) return -3;
    if (!(gradation > 0) || gradation == std::numeric_limits<double>::max()) return -5;
    return 0;
}

/// work(neighbours, fixed) with the lists of all nodes up to the last one that an element names.
template <class Work>
int with_neighbours(const dense2D<double>& pos, const dense2D<unsigned int>& conn,
                    const dense1D<unsigned int>& nodes, Work&& work) {
    if (conn.empty()) return 0;
    return guarded([&] {
        neighbour_lists neighbours;
        const int code = get_node_graph(conn, neighbours.offsets, neighbours.nodes);
        return code < 0 ? code : work(neighbours, flags_of(nodes, pos.cols()));
    });
}

} // namespace

int H_shock(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
            const dense1D<double>& sizes, dense1D<double>& shocks) noexcept {
    return shocks_in(pos, connectM, sizes, shocks);
}

int H_shock(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
            const dense2D<double>& metrics, dense1D<double>& shocks) noexcept {
    return shocks_in(pos, connectM, metrics, shocks);
}

// Both work on a copy, in which what is missing is 0: memory that runs out on the way leaves the
// field as it was, and pos does not change under way where the two share storage.

int bound_metric_gradation(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                           element_type kind, const dense1D<unsigned int>& nodes, double gradation,
                           dense1D<double>& sizes) noexcept {
    if (const int code = check(pos, connectM, kind, nodes, gradation); code != 0) return code;
    if (sizes.size() <= pos.rows()) return -6;
    return with_neighbours(pos, connectM, nodes, [&](const auto& neighbours, const auto& fixed) {
        dense1D<double> lowered(neighbours.node_count());
        const std::uint64_t given = std::min(lowered.size(), sizes.size());
        std::copy_n(sizes.begin(), given, lowered.begin());
        sweep_sizes(pos, neighbours, fixed, std::log1p(gradation), lowered);
        std::copy_n(lowered.begin(), given, sizes.begin());
        return 0;
    });
}

int bound_metric_gradation(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                           element_type kind, const dense1D<unsigned int>& nodes, double gradation,
                           dense2D<double>& metrics) noexcept {
    if (const int code = check(pos, connectM, kind, nodes, gradation); code != 0) return code;
    const unsigned rows = pos.rows() == 2 ? packed_size<2> : packed_size<3>;
    if (metrics.rows() != rows || metrics.rows() * metrics.cols() <= pos.rows()) return -6;
    return with_neighbours(pos, connectM, nodes, [&](const auto& neighbours, const auto& fixed) {
        dense2D<double> lowered(rows, neighbours.node_count());
        const std::uint64_t given = std::min(lowered.cols(), metrics.cols());
        for (std::uint64_t n = 0; n < given; ++n)
            std::copy_n(&metrics(0, n), rows, &lowered(0, n));
        const double growth = std::log1p(gradation);
        const int code = pos.rows() == 2
                             ? sweep_metrics<2>(pos, neighbours, fixed, growth, lowered)
                             : sweep_metrics<3>(pos, neighbours, fixed, growth, lowered);
        for (std::uint64_t n = 0; n < given; ++n)
            std::copy_n(&lowered(0, n), rows, &metrics(0, n));
        return code;
    });
}

} // namespace kvx::zelvo
