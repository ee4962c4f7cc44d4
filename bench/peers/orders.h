#pragma once

#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

#include "../generated_meshes.h"

/// Meshes whose numbers say nothing about places.
namespace kvx::zelvo::bench {

inline mesh shuffled_elements(const mesh& m) {
    mesh other = m;
    other.conn.copy(m.conn);
    shuffle(m.conn.cols(), [&](std::uint64_t i, std::uint64_t j) {
        for (std::uint64_t k = 0; k < m.conn.rows(); ++k)
            std::swap(other.conn(k, i), other.conn(k, j));
    });
    return other;
}

inline mesh shuffled_nodes(const mesh& m) {
    std::vector<unsigned int> places(m.pos.cols());
    std::iota(places.begin(), places.end(), 0u);
    shuffle(places.size(),
            [&](std::uint64_t i, std::uint64_t j) { std::swap(places[i], places[j]); });
    mesh other;
    other.kind = m.kind;
    other.pos = dense2D<double>(m.pos.rows(), m.pos.cols());
    other.conn = dense2D<unsigned int>(m.conn.rows(), m.conn.cols());
    for (std::uint64_t j = 0; j < m.pos.cols(); ++j) {
        for (std::uint64_t k = 0; k < m.pos.rows(); ++k)
            other.pos(k, places[j]) = m.pos(k, j);
    }
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
        for (std::uint64_t k = 0; k < m.conn.rows(); ++k)
            other.conn(k, j) = places[m.conn(k, j)];
    }
    return other;
}

} // namespace kvx::zelvo::bench
