#pragma once

#include <array>
#include <cstdint>
#include <limits>

#include <kvx/dense_array.h>

/// Not a number where there is nothing to measure.
struct spread {
    double min = std::numeric_limits<double>::quiet_NaN();
    double mean = std::numeric_limits<double>::quiet_NaN();
    double max = std::numeric_limits<double>::quiet_NaN();
};

/// Spread of finite numbers; the others are left out.
class spread_of {
public:
    void add(double value);
    spread result() const;

private:
    double min_ = std::numeric_limits<double>::infinity();
    double max_ = -std::numeric_limits<double>::infinity();
    double sum_ = 0.0;
    std::uint64_t count_ = 0;
};

/// x, y and z of the nodes. pos: 3 x nodes
std::array<spread, 3> bounding_box(const kvx::dense2D<double>& pos);

/// Number of nodes with a coordinate that is no finite number.
std::uint64_t non_finite_nodes(const kvx::dense2D<double>& pos);

/// Distance of two nodes.
double distance(const double* a, const double* b);
