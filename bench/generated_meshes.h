#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>

/// Meshes of any size for the benchmarks. Everything random comes from a fixed seed, so runs on
/// different days and machines measure the same mesh.
namespace kvx::zelvo::bench {

constexpr unsigned int seed = 20240229;

struct mesh {
    dense2D<double> pos;
    dense2D<unsigned int> conn;
    element_type kind = ET_TRIA3;
};

inline unsigned int index(std::uint64_t i) {
    return static_cast<unsigned int>(i);
}

/// Position of latitude t (0 to 1) and longitude u (0 to 1) on a unit sphere with bumps and dents.
inline std::array<double, 3> bumpy_point(double t, double u) {
    const double theta = M_PI * t;
    const double phi = 2 * M_PI * u;
    const double radius = 1 + 0.1 * std::sin(theta) * std::sin(7 * theta) * std::cos(5 * phi);
    return {radius * std::sin(theta) * std::cos(phi), radius * std::sin(theta) * std::sin(phi),
            radius * std::cos(theta)};
}

/// A closed bumpy sphere of `facets` triangles or a few more that share their nodes: rings of
/// latitude between two poles, twice as many nodes on a ring as there are rings.
inline mesh bumpy_sphere(std::uint64_t facets) {
    const double exact_rings = (1 + std::sqrt(1.0 + double(facets))) / 2;
    const auto rings =
        std::max<std::uint64_t>(2, static_cast<std::uint64_t>(std::ceil(exact_rings)));
    const std::uint64_t around = 2 * rings;
    const std::uint64_t south = 1 + (rings - 1) * around;
    mesh m;
    m.pos = dense2D<double>(3, south + 1);
    m.conn = dense2D<unsigned int>(3, 2 * around * (rings - 1));
    const auto place = [&](std::uint64_t node, double t, double u) {
        const std::array<double, 3> p = bumpy_point(t, u);
        for (unsigned axis = 0; axis < 3; ++axis)
            m.pos(axis, node) = p[axis];
    };
    std::uint64_t next = 0;
    const auto add = [&](std::uint64_t a, std::uint64_t b, std::uint64_t c) {
        m.conn(0, next) = index(a);
        m.conn(1, next) = index(b);
        m.conn(2, next++) = index(c);
    };
    place(0, 0, 0);
    place(south, 1, 0);
    for (std::uint64_t r = 1; r < rings; ++r) {
        const std::uint64_t ring = 1 + (r - 1) * around;
        for (std::uint64_t s = 0; s < around; ++s) {
            const std::uint64_t here = ring + s;
            const std::uint64_t right = ring + (s + 1) % around;
            place(here, double(r) / double(rings), double(s) / double(around));
            if (r == 1) add(0, here, right);
            if (r + 1 == rings) {
                add(here, south, right);
            } else {
                add(here, here + around, right);
                add(right, here + around, right + around);
            }
        }
    }
    return m;
}

template <class Swap>
void shuffle(std::uint64_t n, Swap&& swap) {
    std::mt19937_64 draw(seed);
    for (std::uint64_t i = 1; i < n; ++i)
        swap(i, draw() % (i + 1));
}

/// The facets of a mesh in random order, each with nodes of its own: what an STL file holds.
inline mesh facet_soup(const mesh& m) {
    const std::uint64_t n = m.conn.cols();
    dense1D<unsigned int> order(n);
    for (std::uint64_t j = 0; j < n; ++j)
        order[j] = index(j);
    shuffle(n, [&](std::uint64_t i, std::uint64_t j) { std::swap(order[i], order[j]); });
    mesh soup;
    soup.pos = dense2D<double>(3, 3 * n);
    soup.conn = dense2D<unsigned int>(3, n);
    for (std::uint64_t j = 0; j < n; ++j) {
        for (unsigned k = 0; k < 3; ++k) {
            const std::uint64_t node = 3 * j + k;
            soup.conn(k, j) = index(node);
            for (unsigned axis = 0; axis < 3; ++axis)
                soup.pos(axis, node) = m.pos(axis, m.conn(k, order[j]));
        }
    }
    return soup;
}

/// Ways to scatter points: each node of a facet soup, at random in a cube, the nodes of a cubic
/// lattice in random order (full of equal distances), all at one place.
enum cloud : int { on_surface, at_random, on_lattice, all_equal };
constexpr const char* cloud_names[] = {"surface", "random", "lattice", "equal"};

inline dense2D<double> points(cloud kind, std::uint64_t n, unsigned int first_draw = seed) {
    if (kind == on_surface) return facet_soup(bumpy_sphere(n / 3 + 1)).pos.sub_matrix(0, 0, 3, n);
    dense2D<double> pos(3, n, 0.5);
    if (kind == all_equal) return pos;
    std::mt19937_64 draw(first_draw);
    const auto side = static_cast<std::uint64_t>(std::ceil(std::cbrt(double(n))));
    for (std::uint64_t j = 0; j < n; ++j) {
        std::uint64_t cell = j;
        for (unsigned axis = 0; axis < 3; ++axis, cell /= side) {
            pos(axis, j) = kind == on_lattice ? double(cell % side) / double(side)
                                              : double(draw() >> 11) / double(1ull << 53);
        }
    }
    shuffle(n, [&](std::uint64_t i, std::uint64_t j) {
        for (unsigned axis = 0; axis < 3; ++axis)
            std::swap(pos(axis, i), pos(axis, j));
    });
    return pos;
}

/// Points to search a cloud for, none of which is a node of it: at random in its cube, or at the
/// centres of facets of its surface.
inline dense2D<double> targets_in(cloud kind, const dense2D<double>& pos, std::uint64_t n) {
    dense2D<double> targets = points(at_random, n, seed + 1);
    if (kind != on_surface) return targets;
    std::mt19937_64 draw(seed);
    for (std::uint64_t i = 0; i < n; ++i) {
        const std::uint64_t corner = 3 * (draw() % (pos.cols() / 3));
        for (unsigned axis = 0; axis < 3; ++axis)
            targets(axis, i) =
                (pos(axis, corner) + pos(axis, corner + 1) + pos(axis, corner + 2)) / 3;
    }
    return targets;
}

/// A cube of about `cells` hexahedra, the nodes shaken by up to a tenth of an edge.
inline mesh hexahedral_grid(std::uint64_t cells) {
    const auto side = static_cast<std::uint64_t>(std::ceil(std::cbrt(double(cells))));
    const std::uint64_t n = side + 1;
    mesh m;
    m.kind = ET_HEXA8;
    m.pos = dense2D<double>(3, n * n * n);
    m.conn = dense2D<unsigned int>(8, side * side * side);
    std::mt19937_64 draw(seed);
    for (std::uint64_t j = 0; j < m.pos.cols(); ++j) {
        const std::uint64_t cell[] = {j % n, j / n % n, j / (n * n)};
        for (unsigned axis = 0; axis < 3; ++axis)
            m.pos(axis, j) =
                double(cell[axis]) + 0.2 * (double(draw() >> 11) / double(1ull << 53) - 0.5);
    }
    const std::uint64_t offsets[] = {0, 1, 1 + n, n};
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
        const std::uint64_t origin = j % side + n * (j / side % side) + n * n * (j / (side * side));
        for (unsigned k = 0; k < 8; ++k)
            m.conn(k, j) = index(origin + offsets[k % 4] + (k / 4) * n * n);
    }
    return m;
}

/// Elements cut out of the cells of a hexahedral grid: each list names corners of a cell.
template <std::size_t Corners, std::size_t Pieces>
mesh cut(const mesh& grid, element_type kind, const unsigned (&pieces)[Pieces][Corners]) {
    mesh m;
    m.kind = kind;
    m.pos = grid.pos;
    m.conn = dense2D<unsigned int>(Corners, Pieces * grid.conn.cols());
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
        for (unsigned k = 0; k < Corners; ++k)
            m.conn(k, j) = grid.conn(pieces[j % Pieces][k], j / Pieces);
    }
    return m;
}

/// A cube of about `elements` tetrahedra, six around a diagonal of each cell, of positive quality.
inline mesh tetrahedral_grid(std::uint64_t elements) {
    return cut(
        hexahedral_grid(elements / 6), ET_TETRA4,
        {{1, 0, 2, 6}, {2, 0, 3, 6}, {3, 0, 7, 6}, {7, 0, 4, 6}, {4, 0, 5, 6}, {5, 0, 1, 6}});
}

/// The same mesh with its elements in random order.
inline mesh shuffled_elements(const mesh& m) {
    mesh other = m;
    other.conn.copy(m.conn);
    shuffle(m.conn.cols(), [&](std::uint64_t i, std::uint64_t j) {
        for (std::uint64_t k = 0; k < m.conn.rows(); ++k)
            std::swap(other.conn(k, i), other.conn(k, j));
    });
    return other;
}

/// The same mesh with its nodes numbered at random.
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

/// A mesh whose numbers say nothing about places.
template <mesh (*make)(std::uint64_t)>
mesh shuffled(std::uint64_t elements) {
    return shuffled_elements(shuffled_nodes(make(elements)));
}

/// Triangles around node 0, which is the smallest node of nearly every side.
inline mesh fan(std::uint64_t triangles) {
    mesh m;
    m.conn = dense2D<unsigned int>(3, triangles);
    for (std::uint64_t j = 0; j < triangles; ++j) {
        m.conn(1, j) = index(j + 1);
        m.conn(2, j) = index((j + 1) % triangles + 1);
    }
    return m;
}

} // namespace kvx::zelvo::bench
