#pragma once

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <type_traits>
#include <utility>

#include "meshes.h"

/// Small random arrays and meshes, hostile ones among them, for comparison with plain references.
namespace kvx::zelvo::tests {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

/// The 32-bit numbers of the standard engine, as such.
using engine = std::independent_bits_engine<std::mt19937, 32, unsigned>;
using column_list = std::vector<std::vector<unsigned int>>;

inline unsigned int below(engine& random, unsigned int n) {
    return random() % n;
}

template <class T>
T one_of(engine& random, std::initializer_list<T> choices) {
    return choices.begin()[below(random, unsigned(choices.size()))];
}

/// Compares until it fails.
template <class Compare>
void often(int trials, Compare&& compare) {
    engine random(1);
    while (trials-- > 0 && !testing::Test::HasFailure())
        compare(random);
}

inline std::vector<unsigned> identity(std::uint64_t n) {
    std::vector<unsigned> ids(n);
    std::iota(ids.begin(), ids.end(), 0u);
    return ids;
}

inline bool names(const std::vector<unsigned int>& column, unsigned int node) {
    return std::find(column.begin(), column.end(), node) != column.end();
}

/// The distinct nodes in order of first appearance.
inline std::vector<unsigned> used_nodes(const column_list& elements) {
    std::vector<unsigned> nodes;
    for (const auto& element : elements)
        std::copy_if(element.begin(), element.end(), std::back_inserter(nodes),
                     [&](unsigned n) { return n != none && !names(nodes, n); });
    return nodes;
}
inline bool all_below(unsigned n, const column_list& elements) {
    return std::ranges::all_of(used_nodes(elements), [n](unsigned node) { return node < n; });
}

/// Lists one after the other, list k from offsets[k] to offsets[k + 1], as lists.
inline column_list split(const dense1D<unsigned int>& items, const dense1D<unsigned int>& offsets) {
    column_list lists;
    for (std::uint64_t k = 0; k + 1 < offsets.size(); ++k)
        lists.emplace_back(items.begin() + offsets[k], items.begin() + offsets[k + 1]);
    EXPECT_TRUE(offsets[0] == 0 && *(offsets.end() - 1) == items.size());
    return lists;
}

/// Of any shape, 0 x n and n x 0 too; as often a view with a stride and an offset as not.
template <class Draw>
auto random_matrix(engine& random, unsigned rows, unsigned cols, Draw&& draw) {
    using T = std::decay_t<decltype(draw())>;
    dense2D<T> m(rows, cols);
    std::generate_n(m.data(), rows * cols, draw);
    return below(random, 2) == 0 ? m : strided(m, T(7));
}
/// A node of n, no_node (one in 6) or now and then, when asked for, an index beyond.
inline unsigned int any_node(engine& random, unsigned int n, unsigned int one_stray_in = 0) {
    if (one_stray_in > 0 && below(random, one_stray_in) == 0)
        return below(random, 2) == 0 ? n : none - 1 - below(random, 2);
    return n == 0 || below(random, 6) == 0 ? none : below(random, n);
}

/// Any number of rows and columns of nodes of n: elements without kind, padded anywhere, repeated,
/// degenerate.
inline dense2D<unsigned int> random_elements(engine& random, unsigned int n,
                                             unsigned int one_stray_in = 0) {
    return random_matrix(random, below(random, 6), below(random, 13),
                         [&] { return any_node(random, n, one_stray_in); });
}
inline dense1D<unsigned int> random_nodes(engine& random, unsigned int size, unsigned int n,
                                          unsigned int one_stray_in = 0) {
    return random_matrix(random, size, 1, [&] { return any_node(random, n, one_stray_in); }).col(0);
}

/// Coordinates on a lattice about the origin.
inline dense2D<double> random_lattice(engine& random, unsigned rows, unsigned cols) {
    return random_matrix(random, rows, cols, [&] { return below(random, 65) / 8. - 4; });
}

/// Elements of a kind over at most 9 nodes, so that sides shared by many, repeated and degenerate
/// elements are frequent. Every third mesh has indices near 2^32, no_node among them in the kinds
/// without padding, every eighth is a strip numbered round its contour, so that the sums of the
/// indices of all sides are alike. For the mixed kinds `shapes` tells the kind of every column.
inline column_list random_columns(engine& random, element_type kind,
                                  std::vector<element_type>& shapes) {
    static const std::vector<element_type> faces = {ET_TRIA3, ET_QUAD4};
    static const std::vector<element_type> solids = {ET_TETRA4, ET_PYRAMID5, ET_PENTA6, ET_HEXA8};
    const bool mixed = kind == ET_FACE_MIX || kind == ET_SOLID_MIX;
    const bool strip = below(random, 8) == 0;
    const auto& choice = kind == ET_FACE_MIX ? faces : solids;
    const unsigned int nodes = 2 + below(random, 8);
    const unsigned int first = below(random, 3) == 0 ? none - nodes + !mixed : 0;
    const bool crowd = below(random, 24) == 0; // more sides at a node than at any usual one
    column_list columns(1 + below(random, strip ? 60 : crowd ? 400 : 12));
    shapes.clear();
    for (unsigned int e = 0; e < columns.size(); ++e) {
        std::vector<unsigned int>& column = columns[e];
        shapes.push_back(mixed ? choice[below(random, unsigned(choice.size()))] : kind);
        for (unsigned int i = 0; i < node_count(shapes.back()); ++i) {
            const unsigned int along = e + i / 2;
            column.push_back(!strip       ? first + below(random, nodes)
                             : i % 2 == 0 ? along
                                          : 199 - along);
        }
        if (mixed) column.resize(kind == ET_FACE_MIX ? 4 : 8, none);
    }
    return columns;
}

/// A cloud of n nodes drawn by a generator.
using cloud_maker = std::function<double(engine&)>;

inline dense2D<double> cloud(unsigned rows, unsigned n, const cloud_maker& draw, engine& random) {
    return random_matrix(random, rows, n, [&] { return draw(random); });
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

/// Whether two matrices hold the same numbers to a tolerance; NaN is like NaN.
inline bool alike(const dense2D<double>& a, const dense2D<double>& b, double tolerance = 0) {
    bool same = a.rows() == b.rows() && a.cols() == b.cols();
    for (std::uint64_t k = 0; same && k < a.rows() * a.cols(); ++k) {
        const double x = a(k % a.rows(), k / a.rows()), y = b(k % b.rows(), k / b.rows());
        same = x == y || (x != x && y != y) || std::abs(x - y) <= tolerance;
    }
    return same;
}

} // namespace kvx::zelvo::tests
