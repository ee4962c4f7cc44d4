#pragma once

#include "io/files.h"
#include "random_meshes.h"

/// What the comparisons of writers of ranges with plain ones have in common.
namespace kvx::zelvo::tests {

/// What printf writes, which does not follow the tests' locale.
template <class... Numbers>
std::string text(const char* format, Numbers... numbers) {
    char line[400];
    std::snprintf(line, sizeof line, format, numbers...);
    return line;
}

/// Up to 4 matrices of any kinds, with and without elements, over at least one node.
struct random_range {
    dense2D<double> pos;
    dense1D<int> FEs;
    std::vector<dense2D<unsigned>> matrices;
    struct element {
        unsigned source;
        element_type kind;
        std::vector<unsigned> nodes;
    };
    std::vector<element> elements; ///< as they are stored

    random_range(engine& random, unsigned fewest_rows)
        : pos(random_lattice(random, fewest_rows + below(random, 4 - fewest_rows),
                             1 + below(random, 12)))
        , FEs(below(random, 5)) {
        for (unsigned k = 0; k < FEs.size(); ++k) {
            FEs[k] = one_of(
                random, {0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20});
            std::vector<element_type> shapes;
            column_list all = random_columns(random, element_type(FEs[k]), shapes);
            if (below(random, 5) == 0 || all[0].empty()) all.clear();
            for (std::size_t j = 0; j < all.size(); ++j) {
                const auto end = all[j].begin() + node_count(shapes[j]);
                std::for_each(all[j].begin(), end,
                              [&](unsigned& node) { node %= unsigned(pos.cols()); });
                elements.push_back({k, shapes[j], {all[j].begin(), end}});
            }
            matrices.push_back(strided(columns(all), 0u));
        }
    }
    /// As a writer takes it, by the overload for one or two matrices where there are as many.
    template <class Write>
    int write(Write&& write_mesh) const {
        const auto kind = [this](unsigned k) { return element_type(FEs[k]); };
        const auto* const m = matrices.data();
        return FEs.size() == 1   ? write_mesh(pos, m[0], kind(0))
               : FEs.size() == 2 ? write_mesh(pos, m[0], m[1], kind(0), kind(1))
                                 : write_mesh(pos, m, m + FEs.size(), FEs);
    }
};

} // namespace kvx::zelvo::tests
