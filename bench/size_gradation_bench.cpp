#include <kvx/zelvo/size_gradation.h>

#include <kvx/zelvo/edges.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

/// The edges of a cell are about 1 long.
constexpr double gradation = 0.2;

/// One random size a node, from a hundredth of an edge to a hundred edges: most nodes are lowered.
dense1D<double> random_sizes(std::uint64_t n) {
    dense1D<double> sizes(n);
    std::mt19937_64 draw(seed);
    for (double& h : sizes)
        h = std::pow(10.0, 4 * fraction(draw) - 2);
    return sizes;
}

/// One small size, at the last node: the bound travels through the whole mesh, against the
/// numbering.
dense1D<double> one_small_size(std::uint64_t n) {
    dense1D<double> sizes(n, 1e9);
    sizes[n - 1] = 0.01;
    return sizes;
}

/// Diagonal metrics, one random size an axis.
dense2D<double> random_metrics(std::uint64_t n) {
    dense2D<double> metrics(6, n);
    const dense1D<double> sizes = random_sizes(3 * n);
    constexpr unsigned diagonal[] = {0, 2, 5};
    for (std::uint64_t j = 0; j < n; ++j) {
        for (unsigned axis = 0; axis < 3; ++axis)
            metrics(diagonal[axis], j) = 1 / (sizes[3 * j + axis] * sizes[3 * j + axis]);
    }
    return metrics;
}

template <auto make, int rounds_before = 0>
void gradation_of(measurement& measured, const mesh& m) {
    const auto bound = [&m](auto& field) {
        const dense1D<unsigned int> none_listed;
        return bound_metric_gradation(m.pos, m.conn, m.kind, none_listed, gradation, field);
    };
    auto given = make(m.pos.cols());
    for (int round = 0; round < rounds_before; ++round)
        bound(given);
    auto bounded = given;
    measured.reads(m.pos, m.conn, given).before([&] { return bounded.copy(given); }).run([&] {
        return bound(bounded);
    });
}

template <auto make>
void shocks_of(measurement& measured, const mesh& m) {
    const auto field = make(m.pos.cols());
    dense2D<unsigned int> edges;
    copy_edges(m.conn, m.kind, edges);
    dense1D<double> shocks;
    measured.per(edges.cols()).reads(m.pos, edges, field).makes(shocks).run([&] {
        return H_shock(m.pos, edges, field, shocks);
    });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>({{"tetrahedra", tetrahedral_grid},
                      {"tetrahedra_clustered", clustered<tetrahedral_grid>},
                      {"tetrahedra_shuffled", shuffled<tetrahedral_grid>}},
                     {{"sizes", gradation_of<random_sizes>},
                      {"sizes_bounded_before", gradation_of<random_sizes, 1>},
                      {"one_small_size", gradation_of<one_small_size>},
                      {"metrics", gradation_of<random_metrics>},
                      {"metrics_bounded_before", gradation_of<random_metrics, 1>},
                      {"shocks_of_sizes", shocks_of<random_sizes>},
                      {"shocks_of_metrics", shocks_of<random_metrics>}});
    return run_benchmarks(argc, argv);
}
