#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/node_indices.h>

#include "foundation/compact_indices.h"
#include "foundation/element_columns.h"
#include "foundation/reference_topology.h"

/// Walks over the sides and corner edges of the elements of a connectivity.
namespace kvx::zelvo {

/// Number of nodes of the longest side of a shape.
template <shape S>
inline constexpr unsigned longest_side =
    std::ranges::max(topology_of(S).sides, {}, &reference_side::node_count).node_count;

/// Columns of one shape, known to the compiler, so that walks over them unroll.
template <shape S>
struct uniform_columns {
    static constexpr unsigned corner_count = topology_of(S).corner_count;
    static constexpr unsigned side_count = topology_of(S).side_count;
    static constexpr unsigned side_nodes = longest_side<S>;
    static constexpr unsigned edge_count = topology_of(S).edge_count;
    static constexpr auto no_node_is = no_node_entries::ordinary;

    explicit uniform_columns(std::uint64_t) {}
    constexpr const reference_shape& shape_of(const unsigned int*) const { return topology_of(S); }
};

/// Columns of a mixed kind that passed check_IDs; the largest shape, which has the most of
/// everything, gives the counts.
template <element_type Kind>
struct mixed_columns {
    static constexpr shape largest = Kind == ET_FACE_MIX ? shape::quadrangle : shape::hexahedron;
    static constexpr unsigned corner_count = topology_of(largest).corner_count;
    static constexpr unsigned side_count = topology_of(largest).side_count;
    static constexpr unsigned side_nodes = longest_side<largest>;
    static constexpr unsigned edge_count = topology_of(largest).edge_count;
    static constexpr auto no_node_is = no_node_entries::absent;

    explicit mixed_columns(std::uint64_t row_count)
        : rows(row_count) {}
    const reference_shape& shape_of(const unsigned int* column) const {
        return topology_of(column_shape(Kind, column, rows));
    }

    std::uint64_t rows;
};

/// work(columns) with the columns of a matrix of this kind; 0 for kinds whose elements have no
/// shape.
template <class Work>
int with_columns(element_type kind, std::uint64_t rows, Work&& work) {
    if (kind == ET_FACE_MIX) return work(mixed_columns<ET_FACE_MIX>(rows));
    if (kind == ET_SOLID_MIX) return work(mixed_columns<ET_SOLID_MIX>(rows));
    switch (traits_of(kind).corners) {
    case shape::bar:
        return work(uniform_columns<shape::bar>(rows));
    case shape::triangle:
        return work(uniform_columns<shape::triangle>(rows));
    case shape::quadrangle:
        return work(uniform_columns<shape::quadrangle>(rows));
    case shape::tetrahedron:
        return work(uniform_columns<shape::tetrahedron>(rows));
    case shape::pyramid:
        return work(uniform_columns<shape::pyramid>(rows));
    case shape::wedge:
        return work(uniform_columns<shape::wedge>(rows));
    case shape::hexahedron:
        return work(uniform_columns<shape::hexahedron>(rows));
    case shape::none:
        break;
    }
    return 0;
}

/// Checks a connectivity with entries whose sides are wanted: 0, -1 when it does not fit the kind,
/// -2 when the kind is none of the linear ones. A 3-row ET_FACE_MIX becomes ET_TRIA3.
inline int check_sides(const dense2D<unsigned int>& conn, element_type& kind) {
    if (kind == ET_FACE_MIX && conn.rows() == 3) kind = ET_TRIA3;
    if (!check_IDs(conn, kind, no_node)) return -1;
    if (!is_mixed(kind) && (traits_of(kind).corners == shape::none || !traits_of(kind).linear))
        return -2;
    return with_columns(kind, conn.rows(), [&conn](auto columns) {
        return conn.rows() == columns.corner_count ? 0 : -1;
    });
}

/// Calls visit(element, side, nodes) for every side of every element, in this order. Sides with
/// fewer nodes than the longest one of the kind are padded with no_node.
template <class Columns, class Visit>
void walk_sides(const dense2D<unsigned int>& conn, Columns columns, Visit&& visit) {
    const std::uint64_t element_count = conn.cols();
    const unsigned int* column = conn.data();
    for (std::uint64_t e = 0; e < element_count; ++e, column += conn.ld()) {
        const reference_shape& element = columns.shape_of(column);
        for (unsigned s = 0; s < element.side_count; ++s) {
            const reference_side& side = element.sides[s];
            std::array<unsigned int, Columns::side_nodes> nodes;
            for (unsigned i = 0; i < Columns::side_nodes; ++i)
                nodes[i] = i < side.node_count ? column[side.nodes[i]] : no_node;
            visit(e, s, nodes);
        }
    }
}

/// Calls visit(from, to) for every corner edge of every element, in element, then edge order.
template <class Columns, class Visit>
void walk_edges(const dense2D<unsigned int>& conn, Columns columns, Visit&& visit) {
    const std::uint64_t element_count = conn.cols();
    const unsigned int* column = conn.data();
    for (std::uint64_t e = 0; e < element_count; ++e, column += conn.ld()) {
        const reference_shape& element = columns.shape_of(column);
        for (unsigned k = 0; k < element.edge_count; ++k)
            visit(column[element.edges[k].from], column[element.edges[k].to]);
    }
}

} // namespace kvx::zelvo
