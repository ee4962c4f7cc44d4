#pragma once

#include <kvx/dense_array.h>

#include "foundation/index_set.h"

namespace kvx::zelvo {

/// unique_indices for the library's own use: throws std::bad_alloc when memory runs out, so that no
/// caller works on half a list.
void append_unique(dense1D<unsigned int>& out, const dense2D<unsigned int>* first,
                   const dense2D<unsigned int>* last);
void append_unique(dense1D<unsigned int>& out, const dense1D<unsigned int>& v,
                   const dense1D<unsigned int>& excluded = {});

} // namespace kvx::zelvo
