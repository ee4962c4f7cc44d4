#include "random_metrics.h"

namespace kvx::zelvo::tests {

const double h_and_v[][2] = {{0.5, 4}, {0.1, 99.99999999999999}, {0, 0}, {-1, 0}, {1e200, 0}};

TEST(metric_conversion, makes_matrices_of_sizes) {
    const auto bases = strided(dense2D<double>(6, 5, 1.0), 3.0); // all products are 3
    dense1D<double> sizes(5);
    std::vector<std::vector<double>> plane, space, tangent;
    for (const auto& [h, v] : h_and_v) {
        metric<2> M(7.0), T(7.0);
        metric<3> N(7.0);
        metric_iso_to_aniso(h, M);
        metric_iso_to_aniso(h, N);
        metric_iso_to_aniso2d(h, matrix_fixed<double, 3, 2>(1.0), T);
        sizes[plane.size()] = h;
        plane.push_back({v, 0, v});
        space.push_back({v, 0, v, 0, 0, v});
        tangent.push_back({3 * v, 3 * v, 3 * v});
        EXPECT_EQ(list(M), plane.back());
        EXPECT_EQ(list(N), space.back());
        EXPECT_EQ(list(T), tangent.back());
    }
    dense2D<double> metrics(9, 2, 7.0);
    metrics_iso_to_aniso2d(sizes, metrics);
    EXPECT_EQ(list(metrics), plane);
    metrics_iso_to_aniso3d(sizes, metrics);
    EXPECT_EQ(list(metrics), space);
    EXPECT_EQ(metrics_iso_to_aniso2d(sizes, bases, metrics), 0);
    EXPECT_EQ(list(metrics), tangent);

    metrics = dense2D<double>(5, 2, 0.5); // sizes and bases in the memory of the output
    metrics_iso_to_aniso3d(metrics.col(0), metrics);
    EXPECT_EQ(list(metrics)[4], space[0]);
    EXPECT_EQ(metrics_iso_to_aniso2d(dense1D<double>(5, 0.5), metrics, metrics), 0);
    EXPECT_EQ(list(metrics)[4], (std::vector<double>{128, 64, 64}));
}

TEST(metric_conversion, projects_onto_the_tangent_plane) {
    const metric<3> M3(1, 2, 4, 3, 5, 6);
    matrix_fixed<double, 3, 2> B;
    const std::vector<double> packed = list(M3), basis = {1, 2, 2, 0, 1, -1}, flat = {101, -5, 0};
    std::copy(basis.begin(), basis.end(), B.data());
    metric<2> M2(7.0);
    metric_aniso3d_to_aniso2d(M3, B, M2);
    EXPECT_EQ(list(M2), flat);

    const auto bases = strided(points({basis, basis}), 7.0);
    for (const std::uint64_t first : {0, 1, 2}) { // the output on top of, behind, apart from them
        const auto frame = strided(points({packed, packed, packed, packed}), 7.0);
        dense2D<double> out = frame.sub_matrix(0, first, 6, 2);
        EXPECT_EQ(metrics_aniso3d_to_aniso2d(frame.sub_matrix(0, 0, 6, 2), bases, out), 0);
        EXPECT_EQ(list(out), (std::vector<std::vector<double>>{flat, flat}));
    }
    dense2D<double> out(1, 1), none_at_all, wide(6, 3), flat_bases(5, 2);
    EXPECT_EQ(metrics_aniso3d_to_aniso2d(none_at_all, wide, out), -1);
    EXPECT_EQ(metrics_aniso3d_to_aniso2d(bases, wide, out), -2);
    EXPECT_EQ(metrics_aniso3d_to_aniso2d(bases, flat_bases, out), -2);
    EXPECT_EQ(metrics_iso_to_aniso2d(dense1D<double>(2), wide, out), -2);
    EXPECT_EQ(metrics_iso_to_aniso2d(dense1D<double>(2), flat_bases, out), -2);
    EXPECT_EQ(metrics_iso_to_aniso2d(dense1D<double>(), none_at_all, out), -2);
    EXPECT_TRUE(out.rows() == 1 && out.cols() == 1);
}

} // namespace kvx::zelvo::tests
