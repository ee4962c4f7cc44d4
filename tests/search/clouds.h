#pragma once

#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "meshes.h"

/// Clouds of nodes that a search has to get right.
namespace kvx::zelvo::tests {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

/// The 32-bit numbers of the standard engine, as such.
using engine = std::independent_bits_engine<std::mt19937, 32, unsigned>;

/// A cloud of n nodes drawn by a generator.
using cloud_maker = std::function<double(engine&)>;

inline dense2D<double> cloud(unsigned rows, unsigned n, const cloud_maker& draw, engine& random) {
    dense2D<double> pos(rows, n);
    for (unsigned j = 0; j < n; ++j)
        for (unsigned i = 0; i < rows; ++i)
            pos(i, j) = draw(random);
    return pos;
}

inline const std::vector<std::pair<const char*, cloud_maker>> hostile_clouds = {
    {"random", [](auto& r) { return std::uniform_real_distribution<>(0, 1)(r); }},
    {"lattice full of ties", [](auto& r) { return double(r() % 5) / 4; }},
    {"decimal lattice", [](auto& r) { return 0.1 * double(r() % 9); }},
    {"all equal", [](auto&) { return 0.3; }},
    {"far from the origin", [](auto& r) { return 1e6 + double(r() % 6) * 0x1p-33; }},
    {"many scales", [](auto& r) { return std::pow(10.0, -double(r() % 200)) * double(r() % 3); }},
    {"squares underflow", [](auto& r) { return 1e-163 * double(r() % 40); }},
    {"not numbers", [](auto& r) { return r() % 7 == 0 ? (r() % 2 ? nan : inf) : double(r() % 3); }},
};

inline std::vector<unsigned> identity(std::uint64_t n) {
    std::vector<unsigned> ids(n);
    std::iota(ids.begin(), ids.end(), 0u);
    return ids;
}

inline dense1D<unsigned> random_list(unsigned size, unsigned nodes, engine& random) {
    dense1D<unsigned> v(size);
    for (unsigned& entry : v)
        entry = random() % 20 == 0 ? none : random() % nodes;
    return v;
}

} // namespace kvx::zelvo::tests
