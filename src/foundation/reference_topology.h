#pragma once

#include <array>
#include <cstdint>

#include <kvx/element_type.h>

/// The one table of sides and edges. A kind has a shape, a shape has sides and edges in local node
/// numbers; quadratic kinds share the shape of their corners.
///
/// Conventions, kept on purpose:
/// - Side k of a bar is the node opposite node k, side k of a triangle the edge opposite node k,
///   side k of a tetrahedron the face opposite node k; side k of a quadrangle is the edge that
///   starts at node k.
/// - Faces of pyramids, wedges and hexahedra in the usual numbering point inwards, and so do those
///   of a tetrahedron whose shape quality is positive (det(P0 - P3, P1 - P3, P2 - P3) > 0), which
///   is the mirror image of the usual tetrahedron.
/// - The 20-node hexahedron yields no edges (see yields_edges).
namespace kvx::zelvo {

inline constexpr unsigned max_sides = 6;
inline constexpr unsigned max_side_nodes = 4;
inline constexpr unsigned max_edges = 12;

enum class shape : std::uint8_t {
    none,
    bar,
    triangle,
    quadrangle,
    tetrahedron,
    pyramid,
    wedge,
    hexahedron
};

struct reference_side {
    unsigned node_count = 0;
    std::array<std::uint8_t, max_side_nodes> nodes{};
};

struct reference_edge {
    std::uint8_t from = 0;
    std::uint8_t to = 0;
};

struct reference_shape {
    unsigned corner_count = 0;
    unsigned side_count = 0;
    unsigned edge_count = 0;
    std::array<reference_side, max_sides> sides{};
    std::array<reference_edge, max_edges> edges{};
};

inline constexpr std::array<reference_shape, 8> reference_shapes = {{
    {},
    {2, 2, 1, {{{1, {1}}, {1, {0}}}}, {{{0, 1}}}},
    {3, 3, 3, {{{2, {1, 2}}, {2, {2, 0}}, {2, {0, 1}}}}, {{{0, 1}, {1, 2}, {2, 0}}}},
    {4,
     4,
     4,
     {{{2, {0, 1}}, {2, {1, 2}}, {2, {2, 3}}, {2, {3, 0}}}},
     {{{0, 1}, {1, 2}, {2, 3}, {3, 0}}}},
    {4,
     4,
     6,
     {{{3, {1, 2, 3}}, {3, {2, 0, 3}}, {3, {1, 3, 0}}, {3, {2, 1, 0}}}},
     {{{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}}},
    {5,
     5,
     8,
     {{{3, {0, 4, 1}}, {3, {1, 4, 2}}, {3, {2, 4, 3}}, {3, {3, 4, 0}}, {4, {0, 1, 2, 3}}}},
     {{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}}},
    {6,
     5,
     9,
     {{{3, {0, 1, 2}}, {3, {3, 5, 4}}, {4, {2, 1, 4, 5}}, {4, {5, 3, 0, 2}}, {4, {0, 3, 4, 1}}}},
     {{{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}}}},
    {8,
     6,
     12,
     {{{4, {0, 3, 7, 4}},
       {4, {1, 5, 6, 2}},
       {4, {0, 4, 5, 1}},
       {4, {3, 2, 6, 7}},
       {4, {0, 1, 2, 3}},
       {4, {4, 7, 6, 5}}}},
     {{{0, 1},
       {1, 2},
       {2, 3},
       {3, 0},
       {4, 5},
       {5, 6},
       {6, 7},
       {7, 4},
       {0, 4},
       {1, 5},
       {2, 6},
       {3, 7}}}},
}};

constexpr const reference_shape& topology_of(shape s) {
    return reference_shapes[static_cast<unsigned>(s)];
}

/// Shape of an element by its number of corners, one table for the faces and one for the solids.
inline constexpr std::array<shape, 9> face_shapes = {
    shape::none, shape::none, shape::none, shape::triangle, shape::quadrangle,
    shape::none, shape::none, shape::none, shape::none};
inline constexpr std::array<shape, 9> solid_shapes = {
    shape::none,    shape::none,  shape::none, shape::none,      shape::tetrahedron,
    shape::pyramid, shape::wedge, shape::none, shape::hexahedron};

struct kind_traits {
    shape corners = shape::none; ///< shape of every element; none for points and mixed kinds
    bool linear = false;         ///< no nodes besides the corners; true for the mixed kinds
    unsigned family = 0;         ///< dimension of the elements: 0 points to 3 solids
};

inline constexpr std::array<kind_traits, 21> kinds = {{
    {shape::none, false, 0},        // ET_NODE_MIX
    {shape::none, true, 0},         // ET_NODE1
    {shape::none, false, 1},        // ET_EDGE_MIX
    {shape::bar, true, 1},          // ET_BAR2
    {shape::bar, false, 1},         // ET_BAR3
    {shape::none, true, 2},         // ET_FACE_MIX
    {shape::triangle, true, 2},     // ET_TRIA3
    {shape::quadrangle, true, 2},   // ET_QUAD4
    {shape::triangle, false, 2},    // ET_TRIA6
    {shape::quadrangle, false, 2},  // ET_QUAD8
    {shape::quadrangle, false, 2},  // ET_QUAD9
    {shape::none, true, 3},         // ET_SOLID_MIX
    {shape::tetrahedron, true, 3},  // ET_TETRA4
    {shape::tetrahedron, false, 3}, // ET_TETRA10
    {shape::pyramid, true, 3},      // ET_PYRAMID5
    {shape::pyramid, false, 3},     // ET_PYRAMID14
    {shape::wedge, true, 3},        // ET_PENTA6
    {shape::wedge, false, 3},       // ET_PENTA18
    {shape::hexahedron, true, 3},   // ET_HEXA8
    {shape::hexahedron, false, 3},  // ET_HEXA20
    {shape::hexahedron, false, 3},  // ET_HEXA27
}};

/// Traits of a kind; those of a point-family slot for values that are no kind.
constexpr kind_traits traits_of(element_type kind) {
    return is_element_type(kind) ? kinds[static_cast<unsigned>(kind)] : kind_traits{};
}

constexpr bool is_mixed(element_type kind) {
    return kind == ET_FACE_MIX || kind == ET_SOLID_MIX;
}

/// The linear kind whose elements have this shape.
constexpr element_type linear_kind_of(shape s) {
    constexpr std::array<element_type, 8> linear_kinds = {
        ET_NODE_MIX, ET_BAR2, ET_TRIA3, ET_QUAD4, ET_TETRA4, ET_PYRAMID5, ET_PENTA6, ET_HEXA8};
    return linear_kinds[static_cast<unsigned>(s)];
}

/// Whether the edges of a kind are collected: every kind with edges but the 20-node hexahedron,
/// which has always been left out and which callers rely on being left out.
constexpr bool yields_edges(element_type kind) {
    return kind != ET_HEXA20 && (is_mixed(kind) || traits_of(kind).corners != shape::none);
}

// The compiler proves the table: every edge of a solid is walked once in each direction by its
// sides, and a linear kind has as many nodes as its shape has corners.
namespace topology_proof {

consteval unsigned times_walked(const reference_shape& s, unsigned from, unsigned to) {
    unsigned times = 0;
    for (unsigned f = 0; f < s.side_count; ++f) {
        const reference_side& side = s.sides[f];
        for (unsigned i = 0; i < side.node_count; ++i) {
            times += side.nodes[i] == from && side.nodes[(i + 1) % side.node_count] == to;
        }
    }
    return times;
}

consteval bool sides_close(shape s) {
    const reference_shape& r = topology_of(s);
    unsigned walked = 0;
    for (unsigned f = 0; f < r.side_count; ++f)
        walked += r.sides[f].node_count;
    bool each_once = walked == 2 * r.edge_count;
    for (unsigned e = 0; e < r.edge_count; ++e) {
        each_once = each_once && times_walked(r, r.edges[e].from, r.edges[e].to) == 1 &&
                    times_walked(r, r.edges[e].to, r.edges[e].from) == 1;
    }
    return each_once;
}

consteval bool node_counts_agree() {
    bool agree = true;
    for (int k = 0; k <= ET_HEXA27; ++k) {
        const auto kind = static_cast<element_type>(k);
        const kind_traits t = traits_of(kind);
        if (t.corners == shape::none) continue;
        const unsigned corners = topology_of(t.corners).corner_count;
        agree = agree && (t.linear ? node_count(kind) == corners : node_count(kind) > corners);
        if (t.linear) agree = agree && linear_kind_of(t.corners) == kind;
    }
    return agree;
}

static_assert(sides_close(shape::tetrahedron) && sides_close(shape::pyramid) &&
              sides_close(shape::wedge) && sides_close(shape::hexahedron));
static_assert(node_counts_agree());

} // namespace topology_proof

} // namespace kvx::zelvo
