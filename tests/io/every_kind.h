#pragma once

#include <numeric>

#include "meshes.h"

namespace kvx::zelvo::tests {

/// A range with one element of nodes 0, 1, 2, ... for each kind, at the place of the kind's value;
/// those of the mixed kinds have one for each shape, largest first. Views with stride and offset.
struct every_kind {
    std::vector<dense2D<unsigned int>> matrices;
    dense1D<int> FEs{21};

    every_kind() {
        std::iota(FEs.begin(), FEs.end(), 0);
        for (const int kind : FEs) {
            std::vector<std::vector<unsigned int>> elements;
            if (kind == ET_FACE_MIX) elements = {first(4, 4), first(3, 4)};
            if (kind == ET_SOLID_MIX)
                elements = {first(8, 8), first(6, 8), first(5, 8), first(4, 8)};
            const unsigned int n = node_count(static_cast<element_type>(kind));
            if (n > 0) elements = {first(n, n)};
            matrices.push_back(strided(columns(elements), 99u));
        }
    }
    static std::vector<unsigned int> first(unsigned int n, unsigned int rows) {
        std::vector<unsigned int> nodes(rows, none);
        std::iota(nodes.begin(), nodes.begin() + n, 0u);
        return nodes;
    }
    const dense2D<unsigned int>* begin() const { return matrices.data(); }
    const dense2D<unsigned int>* end() const { return begin() + matrices.size(); }
};

} // namespace kvx::zelvo::tests
