#include "random_meshes.h"

namespace kvx::zelvo::tests {

// The matrices of a range may be views of one another: every entry is renumbered once.
TEST(simplify, drops_unused_nodes_and_renumbers_every_entry_once) {
    often(6000, [](engine& random) {
        const unsigned n = below(random, 10), n_kept = below(random, 12);
        auto pos = random_lattice(random, below(random, 4), n);
        const auto base = random_elements(random, n, 60);
        std::vector<dense2D<unsigned>> range(below(random, 5));
        column_list all, map = {{}};
        std::vector<column_list> elements;
        for (auto& m : range) {
            m = below(random, 2) ? random_elements(random, n, 60)
                                 : base.sub_matrix(below(random, 3), below(random, 3),
                                                   below(random, 6), below(random, 9));
            elements.push_back(list(m));
            all.insert(all.end(), elements.back().begin(), elements.back().end());
        }
        const auto used = used_nodes(all);
        const bool sound = all_below(n, all);
        const bool acts = sound && !range.empty() && !pos.empty() && n_kept < n;
        auto kept = list(pos);
        if (acts) kept.clear();
        for (unsigned k = 0; acts && k < n; ++k) {
            const bool stays = names(used, k) || k < n_kept;
            map[0].push_back(stays ? unsigned(kept.size()) : none);
            if (stays) kept.push_back(list(pos.col(k)));
        }
        for (auto& m : elements)
            for (auto& element : m)
                for (unsigned& node : element)
                    if (acts && node != none) node = map[0][node];
        auto new_IDs = base.col(0); // may be a view of the elements
        const auto m = range.data();
        const bool plain = below(random, 2) == 0 && (range.size() == 1 || range.size() == 2);
        const int code = !plain              ? simplify(pos, m, m + range.size(), new_IDs, n_kept)
                         : range.size() == 1 ? simplify(pos, m[0], n_kept)
                                             : simplify(pos, m[0], m[1], n_kept);
        ASSERT_EQ(code, !sound ? -2 : acts ? int(n - kept.size()) : 0);
        ASSERT_EQ(list(pos), kept);
        ASSERT_TRUE(plain || list(new_IDs) == map[0]);
        for (std::size_t k = 0; k < range.size(); ++k)
            ASSERT_EQ(list(range[k]), elements[k]) << k;
    });
}

} // namespace kvx::zelvo::tests
