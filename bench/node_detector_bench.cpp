#include <kvx/zelvo/node_detector.h>

#include <memory>
#include <optional>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

constexpr std::uint64_t queries = 10'000;

/// Points and places to search them for.
struct searched_points {
    cloud kind = at_random;
    dense2D<double> pos;
    dense2D<double> targets;
    std::shared_ptr<const dense2D<double>> searched; ///< stays in place, as the detector asks for
    std::shared_ptr<node_detector> detector;

    vector_fixed<double, 3> target(std::uint64_t i, double shift = 0) const {
        return {targets(0, i) + shift, targets(1, i) + shift, targets(2, i) + shift};
    }
};

template <cloud kind>
searched_points search_in(std::uint64_t n) {
    searched_points s;
    s.kind = kind;
    s.pos = points(kind, n);
    s.searched = std::make_shared<const dense2D<double>>(s.pos);
    s.detector = std::make_shared<node_detector>(*s.searched);
    s.targets = targets_in(kind, s.pos, queries);
    return s;
}

void build(measurement& measured, const searched_points& s) {
    std::optional<node_detector> detector;
    const auto start_anew = [&] {
        detector.emplace();
        return true;
    };
    measured.before(start_anew).run([&] { return detector->reinit(s.pos); });
}

/// Where all nodes are at one place a query from elsewhere reads every one, and they are the items.
void find_closest(measurement& measured, const searched_points& s) {
    const std::uint64_t rounds = s.kind == all_equal ? 3 : queries;
    const std::uint64_t read = s.kind == all_equal ? s.pos.cols() : 1;
    const double aside = s.kind == all_equal ? 0.25 : 0;
    measured.per(rounds * read).reads(s.pos).run([&] {
        for (std::uint64_t i = 0; i < rounds; ++i)
            benchmark::DoNotOptimize(s.detector->find_closest(s.target(i, aside)));
        return 0;
    });
}

/// Boxes of about 8 nodes, more in clusters, all where they are equal. Items are boxes and what is
/// found in them, as every node found is an answer.
void find_in_box(measurement& measured, const searched_points& s) {
    const double part = 8 / double(s.pos.cols());
    constexpr double sphere = 12.6; // area, without its bumps
    const double edge = s.kind == on_surface ? std::sqrt(part * sphere) : std::cbrt(part);
    const std::uint64_t rounds = s.kind == all_equal ? 3 : queries;
    dense1D<unsigned int> found;
    const auto find = [&] {
        std::uint64_t items = 0;
        for (std::uint64_t i = 0; i < rounds; ++i) {
            found.clear();
            s.detector->find_in_box(s.target(i, -edge / 2), s.target(i, edge / 2), found);
            items += 1 + found.size();
        }
        return items;
    };
    measured.per(find()).reads(s.pos).makes(found).run([&] {
        benchmark::DoNotOptimize(find());
        return 0;
    });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<searched_points>(
        {{"surface", search_in<on_surface>},
         {"random", search_in<at_random>},
         {"clusters", search_in<in_clusters>},
         {"lattice", search_in<in_order>},
         {"lattice_shuffled", search_in<on_lattice>},
         {"equal", search_in<all_equal>}},
        {{"build", build}, {"find_closest", find_closest}, {"find_in_box", find_in_box}});
    return run_benchmarks(argc, argv);
}
