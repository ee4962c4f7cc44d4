#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/node_indices.h>

#include "foundation/element_columns.h"

namespace kvx::zelvo {

/// Whether a connectivity without entries, or one that passes check_IDs and has the rows that its
/// kind reads: those check_IDs leaves unchecked where the bound is no_node.
inline bool fits(const dense2D<unsigned int>& conn, element_type kind, unsigned int bound) {
    return conn.empty() || (check_IDs(conn, kind, bound) && conn.rows() >= rows_read(kind));
}

} // namespace kvx::zelvo
