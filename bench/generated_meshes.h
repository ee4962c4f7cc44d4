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

constexpr std::uint64_t no_blocks = ~std::uint64_t{0};

/// Puts n things in random order, each within its block.
template <class Swap>
void shuffle(std::uint64_t n, Swap&& swap, std::uint64_t block = no_blocks) {
    std::mt19937_64 draw(seed);
    for (std::uint64_t i = 1; i < n; ++i) {
        const std::uint64_t first = i - i % block;
        swap(i, first + draw() % (i - first + 1));
    }
}

/// A random order of 0 .. n - 1.
inline dense1D<unsigned int> random_order(std::uint64_t n, std::uint64_t block = no_blocks) {
    dense1D<unsigned int> order(n);
    std::iota(order.begin(), order.end(), 0u);
    shuffle(
        n, [&](std::uint64_t i, std::uint64_t j) { std::swap(order[i], order[j]); }, block);
    return order;
}

/// A draw from 0 to 1.
inline double fraction(std::mt19937_64& draw) {
    return double(draw() >> 11) / double(1ull << 53);
}

/// The facets of a mesh, each with nodes of its own: what an STL file holds.
inline mesh separate_facets(const mesh& m) {
    const std::uint64_t n = m.conn.cols();
    mesh soup;
    soup.pos = dense2D<double>(3, 3 * n);
    soup.conn = dense2D<unsigned int>(3, n);
    for (std::uint64_t node = 0; node < 3 * n; ++node) {
        soup.conn(node % 3, node / 3) = index(node);
        std::copy_n(&m.pos(0, m.conn(node % 3, node / 3)), 3, &soup.pos(0, node));
    }
    return soup;
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
            m.pos(axis, j) = double(cell[axis]) + 0.2 * (fraction(draw) - 0.5);
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
inline mesh shuffled_elements(const mesh& m, std::uint64_t block = no_blocks) {
    const dense1D<unsigned int> order = random_order(m.conn.cols(), block);
    mesh other = m;
    other.conn = dense2D<unsigned int>(m.conn.rows(), m.conn.cols());
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j)
        std::copy_n(&m.conn(0, order[j]), m.conn.rows(), &other.conn(0, j));
    return other;
}

/// The facets of a mesh in random order, each with nodes of its own.
inline mesh facet_soup(const mesh& m) {
    return separate_facets(shuffled_elements(m));
}

/// The same mesh with its nodes numbered at random.
inline mesh shuffled_nodes(const mesh& m, std::uint64_t block = no_blocks) {
    const dense1D<unsigned int> places = random_order(m.pos.cols(), block);
    mesh other = m;
    other.pos = dense2D<double>(m.pos.rows(), m.pos.cols());
    other.conn = dense2D<unsigned int>(m.conn.rows(), m.conn.cols());
    for (std::uint64_t j = 0; j < m.pos.cols(); ++j)
        std::copy_n(&m.pos(0, j), m.pos.rows(), &other.pos(0, places[j]));
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

/// A mesh made of patches: numbers are in random order within blocks of a thousand.
template <mesh (*make)(std::uint64_t)>
mesh clustered(std::uint64_t elements) {
    return shuffled_elements(shuffled_nodes(make(elements), 1000), 1000);
}

/// A mesh whose node numbers are spread over the whole range; it has no coordinates.
template <mesh (*make)(std::uint64_t)>
mesh sparse(std::uint64_t elements) {
    mesh m = make(elements);
    const unsigned int step = 0xFFFFFFF0u / index(m.pos.cols());
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
        for (std::uint64_t k = 0; k < m.conn.rows(); ++k)
            m.conn(k, j) *= step;
    }
    m.pos.clear_hard();
    return m;
}

/// Triangles around node 0, which is the smallest node of nearly every side.
inline mesh fan(std::uint64_t triangles) {
    mesh m;
    m.pos = dense2D<double>(3, triangles + 1, 0.0);
    m.conn = dense2D<unsigned int>(3, triangles, 0);
    for (std::uint64_t j = 0; j < triangles; ++j) {
        m.conn(1, j) = index(j + 1);
        m.conn(2, j) = index((j + 1) % triangles + 1);
        const double angle = 2 * M_PI * double(j) / double(triangles);
        m.pos(0, j + 1) = std::cos(angle);
        m.pos(1, j + 1) = std::sin(angle);
    }
    return m;
}

/// One triangle over and over: every side has all elements.
inline mesh one_triangle(std::uint64_t times) {
    mesh m = fan(3);
    m.conn = dense2D<unsigned int>(3, times, 0);
    for (std::uint64_t j = 0; j < times; ++j) {
        m.conn(1, j) = 1;
        m.conn(2, j) = 2;
    }
    return m;
}

/// Hexahedra, of which every other one is cut down to a tetrahedron.
inline mesh mixed_solids(std::uint64_t elements) {
    mesh m = hexahedral_grid(elements);
    m.kind = ET_SOLID_MIX;
    for (std::uint64_t j = 0; j < m.conn.cols(); j += 2)
        std::fill_n(&m.conn(4, j), 4, no_node);
    return m;
}

/// Ways to scatter points: each corner of a shuffled facet soup, at random in a cube, around a
/// hundred places from a thousandth to a tenth of the cube wide, the nodes of a cubic lattice (full
/// of equal distances) in order and shuffled, all at one place.
enum cloud { on_surface, at_random, in_clusters, in_order, on_lattice, all_equal };

inline dense2D<double> points(cloud kind, std::uint64_t n, unsigned int first_draw = seed) {
    if (kind == on_surface) {
        return facet_soup(bumpy_sphere(n / 3 + 1)).pos.sub_matrix(0, 0, 3, n);
    }
    dense2D<double> pos(3, n, 0.5);
    std::mt19937_64 draw(first_draw);
    std::normal_distribution<double> normal;
    std::array<std::array<double, 4>, 100> clusters{}; // centre and width
    std::mt19937_64 place(seed); // the same clusters whatever is drawn from them
    for (auto& [x, y, z, width] : clusters) {
        for (double* const coordinate : {&x, &y, &z})
            *coordinate = fraction(place);
        width = std::pow(10.0, -1 - 2 * fraction(place));
    }
    const auto side = static_cast<std::uint64_t>(std::ceil(std::cbrt(double(n))));
    const dense1D<unsigned int> order =
        kind == on_lattice ? random_order(n) : dense1D<unsigned int>();
    for (std::uint64_t j = 0; j < n && kind != all_equal; ++j) {
        std::uint64_t cell = order.empty() ? j : order[j];
        const auto& cluster = clusters[draw() % clusters.size()];
        for (unsigned axis = 0; axis < 3; ++axis, cell /= side) {
            pos(axis, j) = kind == at_random     ? fraction(draw)
                           : kind == in_clusters ? cluster[axis] + cluster[3] * normal(draw)
                                                 : double(cell % side) / double(side);
        }
    }
    return pos;
}

/// Points to search a cloud for, none of which is a node of it but where all are equal: scattered
/// as its nodes are, at random in the cube of a lattice, at the centres of facets of a surface.
inline dense2D<double> targets_in(cloud kind, const dense2D<double>& pos, std::uint64_t n) {
    const bool scattered = kind == in_clusters || kind == all_equal;
    dense2D<double> targets = points(scattered ? kind : at_random, n, seed + 1);
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

} // namespace kvx::zelvo::bench
