#include "random_metrics.h"

namespace kvx::zelvo::tests {

// Projections of lattice metrics are exact.
TEST(metric_conversion, follows_its_formulas) {
    often(3000, [](engine& random) {
        const unsigned n = below(random, 5), at = below(random, 3);
        const auto any = [&] { return below(random, 17) / 4. - 2; };
        const auto bases = random_matrix(random, 6, n, any);
        const auto frame = strided(random_matrix(random, 6, n + 2, any), 7.0);
        const auto m3 = frame.sub_matrix(0, 0, 6, n);
        dense1D<double> h(n);
        dense2D<double> plane(3, n), space(6, n), of_sizes(3, n), of_metrics(3, n), m2, m3_of_sizes;
        for (unsigned k = 0; k < n; ++k) {
            h[k] = one_of(random, {0.5, 0.1, 4.0, 0.0, -1.0, nan, 1e200});
            const double v = h[k] > 0 ? 1 / (h[k] * h[k]) : 0;
            plane(0, k) = plane(2, k) = space(0, k) = space(2, k) = space(5, k) = v;
            metric<3> M;
            direction<3> t[2];
            std::copy_n(&m3(0, k), 6, M.data());
            for (unsigned row = 0; row < 3; ++row) { // of the packed upper triangle
                std::copy_n(&bases(row == 2 ? 3 : 0, k), 3, t[0].data());
                std::copy_n(&bases(row == 0 ? 0 : 3, k), 3, t[1].data());
                of_sizes(row, k) = v * double(form(metric<3>(1, 0, 1, 0, 0, 1), t[0], t[1]));
                of_metrics(row, k) = double(form(M, t[0], t[1]));
            }
        }
        metrics_iso_to_aniso2d(h, m2);
        metrics_iso_to_aniso3d(h, m3_of_sizes);
        ASSERT_TRUE(alike(m2, plane) && alike(m3_of_sizes, space));
        // outputs on top of inputs, partly over and beside them
        dense2D<double> tangent = at == 0 ? bases : m2, out = frame.sub_matrix(0, at, 6, n);
        ASSERT_EQ(metrics_aniso3d_to_aniso2d(m3, bases, out), 0);
        ASSERT_EQ(metrics_iso_to_aniso2d(h, bases, tangent), 0);
        ASSERT_TRUE(alike(out, of_metrics) && alike(tangent, of_sizes));
    });
}

} // namespace kvx::zelvo::tests
