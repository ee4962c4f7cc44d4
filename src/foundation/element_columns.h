#pragma once

#include <cstdint>

#include <kvx/dense_array.h>

#include "foundation/reference_topology.h"

namespace kvx::zelvo {

/// Number of rows that an element of a checked ET_FACE_MIX or ET_SOLID_MIX column uses. Rows that
/// the matrix does not have count as no_node.
inline unsigned mixed_node_count(element_type kind, const unsigned* column, std::uint64_t rows) {
    if (kind == ET_FACE_MIX) return rows > 3 && column[3] != no_node ? 4 : 3;
    for (unsigned row = 4; row <= 6; ++row) {
        if (row >= rows || column[row] == no_node) return row;
    }
    return 8;
}

/// Shape of one column of a matrix of a mixed kind that passed check_IDs.
inline shape column_shape(element_type kind, const unsigned* column, std::uint64_t rows) {
    return (kind == ET_FACE_MIX ? face_shapes : solid_shapes)[mixed_node_count(kind, column, rows)];
}

/// Number of rows that a routine which knows the kind reads from every column: the corners; for the
/// mixed kinds the smallest matrix that check_IDs accepts.
inline unsigned rows_read(element_type kind) {
    if (kind == ET_FACE_MIX) return 3;
    if (kind == ET_SOLID_MIX) return 4;
    return topology_of(traits_of(kind).corners).corner_count;
}

} // namespace kvx::zelvo
