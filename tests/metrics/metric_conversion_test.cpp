#include "random_metrics.h"

namespace kvx::zelvo::tests {

TEST(metric_conversion, makes_matrices_of_sizes) {
    auto bases = strided(dense2D<double>(6, 1, 1.0), 3.0); // all products are 3
    for (const auto& [h, v] : std::vector<std::pair<double, double>>{
             {0.5, 4}, {0.1, 99.99999999999999}, {0, 0}, {-1, 0}, {1e200, 0}}) {
        dense2D<double> metrics(1, 1, h), tangent = bases;
        const auto sizes = metrics.col(0); // in the memory of the output, as the bases are
        metrics_iso_to_aniso2d(sizes, metrics);
        EXPECT_EQ(list(metrics), list(points({{v, 0, v}})));
        metrics_iso_to_aniso3d(sizes, metrics);
        EXPECT_EQ(list(metrics), list(points({{v, 0, v, 0, 0, v}})));
        EXPECT_EQ(metrics_iso_to_aniso2d(sizes, tangent, tangent), 0);
        EXPECT_EQ(list(tangent), list(points({{3 * v, 3 * v, 3 * v}})));
    }
}

TEST(metric_conversion, projects_onto_the_tangent_plane) {
    const std::vector<double> M3 = {1, 2, 4, 3, 5, 6}, basis = {1, 2, 2, 0, 1, -1};
    const auto bases = strided(points({basis, basis}), 7.0);
    for (const std::uint64_t first :
         {0u, 1u, 2u}) { // the output on top of, behind, apart from them
        const auto frame = strided(points({M3, M3, M3, M3}), 7.0);
        dense2D<double> out = frame.sub_matrix(0, first, 6, 2);
        EXPECT_EQ(metrics_aniso3d_to_aniso2d(frame.sub_matrix(0, 0, 6, 2), bases, out), 0);
        EXPECT_EQ(list(out), list(points({{101, -5, 0}, {101, -5, 0}})));
    }
    dense2D<double> wide(6, 3);
    EXPECT_EQ(metrics_aniso3d_to_aniso2d(wide, bases, wide), -2);
    EXPECT_EQ(metrics_aniso3d_to_aniso2d(wide.sub_matrix(0, 0, 5, 1), bases, wide), -1);
    EXPECT_EQ(metrics_iso_to_aniso2d(dense1D<double>(2), wide, wide), -2);
}

} // namespace kvx::zelvo::tests
