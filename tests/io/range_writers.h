#pragma once

#include <numeric>

#include "meshes.h"

/// What the tests of writers of ranges have in common; write(pos, first, last, FEs) calls one.
namespace kvx::zelvo::tests {

/// Writes an element of nodes 0, 1, 2, ... of each kind, the kind's value being its place; of mixed
/// kinds one of each shape, largest first, of quadratic triangles two. All views have a stride and
/// an offset.
template <class Write>
int write_every_kind(const dense2D<double>& pos, Write&& write) {
    dense1D<int> FEs(21);
    std::iota(FEs.begin(), FEs.end(), 0);
    std::vector<dense2D<unsigned int>> matrices;
    for (const int kind : FEs) {
        std::vector<unsigned int> sizes = {node_count(static_cast<element_type>(kind))};
        if (kind == ET_FACE_MIX) sizes = {4, 3};
        if (kind == ET_TRIA6) sizes = {6, 6};
        if (kind == ET_SOLID_MIX) sizes = {8, 6, 5, 4};
        dense2D<unsigned int> elements(sizes[0], sizes.size(), none);
        for (std::size_t j = 0; j < sizes.size(); ++j)
            std::iota(elements.data() + j * sizes[0], elements.data() + j * sizes[0] + sizes[j],
                      0u);
        matrices.push_back(strided(elements, 99u));
    }
    return write(strided(pos, 9.0), matrices.data(), matrices.data() + matrices.size(), FEs);
}

} // namespace kvx::zelvo::tests
