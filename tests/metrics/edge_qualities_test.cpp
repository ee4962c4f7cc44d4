#include <limits>

#include "metrics/metric_length.h"
#include "metrics/random_metrics.h"

namespace kvx::zelvo::tests {

TEST(EdgeQualities, EffectiveSizes) {
    EXPECT_NEAR(effective_size(1, 1e-20), 0.02171472409516259, 1e-16);
    EXPECT_NEAR(effective_size(1.0005, 1), 1.0002499791718733, 1e-15); // by the series
    EXPECT_EQ(folded_quality(0.5) + folded_quality(4) + folded_quality(unmeasured), 0.75);
}

// Metrics, and the sizes that round ones stand for; those of node 3 are invalid.
template <unsigned Dim>
void measure_two_matrices(double decades) {
    std::mt19937 random(4);
    const auto faces = strided(columns({{0, 1, 2, none}, {2, 1, 3, 4}}), 1u);
    const dense2D<unsigned int> range[] = {faces, columns({{4, 5, 0, 2}})};
    const dense1D<int> kinds(2, ET_FACE_MIX);
    dense1D<double> sizes(6);
    dense2D<double> pos(Dim, 6), metrics(metric<Dim>::packed_size, 6);
    std::vector<metric<Dim>> M(6);
    for (unsigned n = 0; n < 6; ++n) {
        sizes[n] = n == 3 ? 0 : std::exp(std::sin(9 * n));
        std::generate_n(&pos(0, n), Dim, [&] { return std::sin(double(random())); });
        M[n] = random_metric<Dim>(random, decades, n == 3 ? -1 : std::pow(sizes[n], -2));
        std::copy_n(M[n].data(), metrics.rows(), &metrics(0, n));
    }
    misc::histogram of_sizes(0, 1, 1), of_metrics(0, 1, 1), expected(0, 1, 1);
    for (const auto& [a, b] : {std::pair(0u, 1u), {1, 2}, {2, 0}, {4, 2}, {4, 5}, {5, 0}}) {
        vector_fixed<double, Dim> e;
        for (unsigned i = 0; i < Dim; ++i)
            e[i] = pos(i, b) - pos(i, a);
        const auto qa = double(form(M[a], e, e)), qb = double(form(M[b], e, e));
        expected.process(std::log(qa / qb) / 2 / (1 / std::sqrt(qb) - 1 / std::sqrt(qa)));
    }
    metrics = strided(metrics, -1.0);
    EXPECT_EQ(edge_qualities(pos, range, range + 2, kinds, metrics, of_metrics), -5);
    EXPECT_EQ(edge_qualities(strided(pos, -1.0), range, range + 2, kinds, sizes, of_sizes), -5);
    EXPECT_EQ(of_sizes.count(), expected.count());
    EXPECT_NEAR(of_metrics.mean(), expected.mean(), 1e-12);
    EXPECT_NEAR(decades > 0 ? expected.mean() : of_sizes.mean(), expected.mean(), 1e-12);
}

TEST(EdgeQualities, DistinctEdgesOfTwoMatrices) {
    measure_two_matrices<2>(0);
    measure_two_matrices<3>(3);
}

TEST(EdgeQualities, FeedsTheValidEdgesWhateverItReturns) {
    const auto bars = columns({{0, 1}, {1, 2}, {1, 1}});
    misc::histogram all(0, 1, 1);
    const auto call = [&](unsigned rows, const auto& field) {
        const dense2D<double> pos(rows, 3, 0.5);
        return std::pair(
            edge_qualities(pos, bars, ET_BAR2, field, all),
            edge_qualities(pos, &bars, &bars + 1, dense1D<int>(1, ET_BAR2), field, all));
    };
    const dense1D<double> sizes(3, NAN), few = sizes.sub_vector(0, 2); // NaN is not <= 0
    EXPECT_EQ(call(2, dense2D<double>(6, 3, NAN)), std::pair(-4, -5)); // rows for space
    EXPECT_EQ(call(3, dense2D<double>(6, 3, 1.0)), std::pair(0, -5));  // singular
    EXPECT_EQ(call(2, sizes), std::pair(0, 0));
    EXPECT_EQ(call(3, few), std::pair(-4, -5));
    EXPECT_EQ(all.count(), 2u * (3 + 2));
}

} // namespace kvx::zelvo::tests
