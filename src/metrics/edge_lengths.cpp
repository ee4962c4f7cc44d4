#include <kvx/zelvo/edge_lengths.h>

#include <limits>
#include <vector>

#include "foundation/memory_guard.h"
#include "metrics/metric_length.h"

namespace kvx::zelvo {

namespace {

/// The lengths of the edges at one node, the second entry being their sum at first.
void include(double* column, double length) {
    if (length < column[0]) column[0] = length;
    column[1] += length;
    if (length > column[2]) column[2] = length;
}

void fill_lengths(const dense2D<double>& pos, const dense2D<unsigned int>& edges,
                  dense2D<double>& lengths) {
    std::vector<std::uint64_t> counts(lengths.cols());
    for (std::uint64_t n = 0; n < lengths.cols(); ++n)
        lengths(0, n) = std::numeric_limits<double>::max();
    const std::uint64_t edge_count = edges.empty() ? 0 : edges.cols();
    for (std::uint64_t j = 0; j < edge_count; ++j) {
        const unsigned int a = edges(0, j);
        const unsigned int b = edges(1, j);
        const double length = pos.empty() ? 0 : distance(&pos(0, a), &pos(0, b), pos.rows());
        for (const unsigned int n : {a, b}) {
            include(&lengths(0, n), length);
            ++counts[n];
        }
    }
    for (std::uint64_t n = 0; n < lengths.cols(); ++n) {
        if (counts[n] > 0) lengths(1, n) /= static_cast<double>(counts[n]);
    }
}

} // namespace

int edge_lengths(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                 dense2D<double>& lengths) noexcept {
    const dense2D<double> points(pos); // lengths may be pos
    lengths.clear();
    if (connectM.cols() == 0) return 0;
    if (!names_nodes(points, connectM, ET_BAR2)) return -2;
    return guarded([&] {
        dense2D<double> fresh(3, points.cols());
        fill_lengths(points, connectM, fresh);
        lengths.swap(fresh);
        return 0;
    });
}

} // namespace kvx::zelvo
