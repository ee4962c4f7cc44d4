#include "measures.h"

#include <algorithm>
#include <cmath>

void spread_of::add(double value) {
    if (!std::isfinite(value)) return;
    min_ = std::min(min_, value);
    max_ = std::max(max_, value);
    sum_ += value;
    ++count_;
}

spread spread_of::result() const {
    if (count_ == 0) return {};
    return {min_, sum_ / static_cast<double>(count_), max_};
}

std::array<spread, 3> bounding_box(const kvx::dense2D<double>& pos) {
    std::array<spread_of, 3> box;
    for (std::uint64_t j = 0; j < pos.cols(); ++j)
        for (unsigned i = 0; i < 3; ++i)
            box[i].add(pos(i, j));
    return {box[0].result(), box[1].result(), box[2].result()};
}

std::uint64_t non_finite_nodes(const kvx::dense2D<double>& pos) {
    std::uint64_t count = 0;
    for (std::uint64_t j = 0; j < pos.cols(); ++j) {
        const double* const x = &pos(0, j);
        if (!std::all_of(x, x + 3, [](double c) { return std::isfinite(c); })) ++count;
    }
    return count;
}

double distance(const double* a, const double* b) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}
