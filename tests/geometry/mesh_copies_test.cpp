#include "random_meshes.h"

namespace kvx::zelvo::tests {

/// One copy, copies in a pattern or a mirror image. How nodes turn and move is tested elsewhere.
template <unsigned Dim, class Angle>
void compare_copies(engine& random) {
    const unsigned n = below(random, 8), form = below(random, 3);
    const unsigned times = form == 1 ? below(random, 4) : 1;
    auto pos = random_lattice(random, below(random, 5), n);
    const auto conn = random_elements(random, n);
    auto copies = random_matrix(random, below(random, 6), below(random, 3), [] { return 9u; });
    if (below(random, 2) == 0) copies = conn;
    vector_fixed<double, Dim> T(0.25), N(1.5);
    const vector_fixed<double, Dim> C(0.75);
    T[0] = below(random, 3), N[Dim - 1] = below(random, 9) - 4.;
    const double angle = one_of(random, {0.0, 0.5});
    const bool idle = times == 0 || (form > 0 && pos.empty());
    const auto nodes = used_nodes(list(conn));
    column_list expected = idle || form == 1 ? list(copies) : column_list();
    dense2D<double> x;
    x.copy(pos);
    if (!idle && form == 2 && x.rows() < Dim) x.resize(Dim, n, 0.0);
    for (unsigned i = 1; !idle && i <= times; ++i) {
        const auto first = unsigned(x.cols());
        dense1D<unsigned> added(nodes.size());
        x.resize(x.rows(), first + nodes.size());
        for (unsigned k = 0; k < nodes.size(); ++k) {
            double distance = 0, square = 0;
            for (unsigned l = 0; form == 2 && l < Dim; square += N[l] * N[l], ++l)
                distance += (x(l, nodes[k]) - C[l]) * N[l];
            for (unsigned l = 0; l < x.rows(); ++l)
                x(l, first + k) =
                    x(l, nodes[k]) - (form == 2 && l < Dim ? 2 * distance * N[l] / square : 0);
            added[k] = first + k;
        }
        auto shift = T;
        for (unsigned l = 0; l < Dim; ++l)
            shift[l] *= i;
        if (form == 1) rotate(x, C, Angle(i * angle), added);
        if (form == 1) translate(x, shift, added);
        for (auto element : list(conn)) {
            for (unsigned& node : element)
                if (node != none)
                    node = first + unsigned(std::ranges::find(nodes, node) - nodes.begin());
            if (!element.empty()) expected.push_back(element);
        }
    }
    for (auto& element : expected)
        if (!idle && form == 1) element.resize(std::max(copies.rows(), conn.rows()), none);
    ASSERT_EQ(form == 0   ? copy_mesh(pos, copies, conn)
              : form == 1 ? copy_mesh(pos, copies, T, C, Angle(angle), times, conn)
                          : copy_sym_mesh(pos, copies, C, N, conn),
              0);
    ASSERT_TRUE(alike(pos, x, 1e-13));
    ASSERT_TRUE(list(copies) == expected || (copies.empty() && expected.empty()));
}

TEST(mesh_copies, append_what_plain_loops_do) {
    often(8000, compare_copies<2, double>);
    often(8000, compare_copies<3, vector_fixed<double, 3>>);
    dense2D<double> pos = points({{1}, {2}}); // many copies of nothing end at once
    dense2D<unsigned> out, of_no_row(0, 1ull << 60);
    EXPECT_EQ(copy_mesh(pos, out, {0.0, 1.0}, {0.0, 1.0}, 1.0, none, of_no_row), 0);
}

} // namespace kvx::zelvo::tests
