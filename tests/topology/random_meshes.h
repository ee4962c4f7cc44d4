#pragma once

#include <algorithm>
#include <random>

#include "meshes.h"

namespace kvx::zelvo::tests {

using column_list = std::vector<std::vector<unsigned int>>;

inline unsigned int below(std::mt19937& random, unsigned int n) {
    return static_cast<unsigned int>(random() % n);
}

inline bool names(const std::vector<unsigned int>& column, unsigned int node) {
    return std::find(column.begin(), column.end(), node) != column.end();
}

/// Lists one after the other, list k from offsets[k] to offsets[k + 1], as lists.
inline column_list split(const dense1D<unsigned int>& items, const dense1D<unsigned int>& offsets) {
    column_list lists;
    for (std::uint64_t k = 0; k + 1 < offsets.size(); ++k)
        lists.emplace_back(items.begin() + offsets[k], items.begin() + offsets[k + 1]);
    EXPECT_TRUE(offsets[0] == 0 && *(offsets.end() - 1) == items.size());
    return lists;
}

/// Elements of a kind over at most 9 nodes, so that sides shared by many, repeated and degenerate
/// elements are frequent. Every third mesh has indices near 2^32, no_node among them in the kinds
/// without padding. For the mixed kinds `shapes` tells the kind of every column.
inline column_list random_columns(std::mt19937& random, element_type kind,
                                  std::vector<element_type>& shapes) {
    static const std::vector<element_type> faces = {ET_TRIA3, ET_QUAD4};
    static const std::vector<element_type> solids = {ET_TETRA4, ET_PYRAMID5, ET_PENTA6, ET_HEXA8};
    const bool mixed = kind == ET_FACE_MIX || kind == ET_SOLID_MIX;
    const auto& choice = kind == ET_FACE_MIX ? faces : solids;
    const unsigned int nodes = 2 + below(random, 8);
    const unsigned int first = below(random, 3) == 0 ? none - nodes + !mixed : 0;
    column_list columns(1 + below(random, 12));
    shapes.clear();
    for (std::vector<unsigned int>& column : columns) {
        shapes.push_back(mixed ? choice[below(random, unsigned(choice.size()))] : kind);
        for (unsigned int i = 0; i < node_count(shapes.back()); ++i)
            column.push_back(first + below(random, nodes));
        if (mixed) column.resize(kind == ET_FACE_MIX ? 4 : 8, none);
    }
    return columns;
}

} // namespace kvx::zelvo::tests
