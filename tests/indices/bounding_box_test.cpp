#include "random_meshes.h"

namespace kvx::zelvo::tests {

template <unsigned Dim>
void compare_boxes(engine& random) {
    const auto number = [&] {
        const unsigned k = below(random, 40);
        return k < 3 ? one_of(random, {nan, inf, -inf}) : 20.0 - k;
    };
    const unsigned n = below(random, 9), form = below(random, 3);
    const auto pos = random_matrix(random, Dim, n, number);
    const auto conn = random_elements(random, n, 60);
    const auto listed = random_nodes(random, below(random, 9), n, 40);
    const auto nodes = form == 0 ? identity(n) : form == 1 ? list(listed) : used_nodes(list(conn));
    vector_fixed<double, Dim> lo, hi;
    for (unsigned i = 0; i < Dim; ++i)
        lo[i] = number(), hi[i] = number();
    auto low = lo, high = hi;
    const bool sound = all_below(n, {nodes});
    for (unsigned k = 0; k < Dim * nodes.size() && sound; ++k) {
        const unsigned i = k % Dim, node = nodes[k / Dim];
        if (node == none) continue;
        if (!(pos(i, node) >= low[i])) low[i] = pos(i, node); // so a NaN, and what follows it
        if (pos(i, node) > high[i]) high[i] = pos(i, node);
    }
    ASSERT_EQ(form == 0   ? inc_bounding_box(pos, lo, hi)
              : form == 1 ? inc_bounding_box(pos, listed, lo, hi)
                          : inc_bounding_box(pos, conn, lo, hi),
              sound ? 0 : -2);
    for (unsigned i = 0; i < Dim; ++i)
        ASSERT_TRUE(alike(points({{lo[i], hi[i]}}), points({{low[i], high[i]}})));
}

TEST(inc_bounding_box, grows_as_a_plain_loop_over_all_listed_or_used_nodes) {
    often(4000, compare_boxes<2>);
    often(4000, compare_boxes<3>);
}

} // namespace kvx::zelvo::tests
