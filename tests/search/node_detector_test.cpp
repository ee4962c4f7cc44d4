#include <cmath>

#include "random_meshes.h"
#include "search/node_tree.h"

namespace kvx::zelvo::tests {
namespace {

/// The tree as it is described: one insertion after the other, recursive visits.
struct plain_tree {
    const dense2D<double>& pos;
    unsigned dim = static_cast<unsigned>(pos.rows());
    struct record {
        unsigned node;
        unsigned lower = none;
        unsigned upper = none;
    };
    std::vector<record> records = {};

    void insert(std::vector<unsigned> nodes) {
        shuffle(nodes);
        for (const unsigned node : nodes) {
            if (node >= pos.cols()) continue;
            unsigned* place = nullptr;
            for (unsigned r = 0, axis = 0; r < records.size(); axis = (axis + 1) % dim) {
                place = pos(axis, records[r].node) > pos(axis, node) ? &records[r].lower
                                                                     : &records[r].upper;
                r = *place;
            }
            if (place) *place = static_cast<unsigned>(records.size());
            records.push_back({node});
        }
    }

    double squared(unsigned node, const double* P) const {
        double sum = 0;
        for (unsigned i = 0; i < dim; ++i)
            sum += (pos(i, node) - P[i]) * (pos(i, node) - P[i]);
        return sum;
    }

    unsigned closest(const double* P, unsigned skipped) const {
        double d2 = std::numeric_limits<double>::max();
        unsigned best = none;
        unsigned r = records.empty() ? none : 0;
        for (unsigned axis = 0; r != none; axis = (axis + 1) % dim) {
            const auto& [node, lower, upper] = records[r];
            if (node != skipped && squared(node, P) < d2) d2 = squared(best = node, P);
            r = pos(axis, node) > P[axis] ? lower : upper;
        }
        if (!records.empty() && d2 != 0) visit(0, 0, P, skipped, d2, best);
        return best;
    }

    void visit(unsigned r, unsigned axis, const double* P, unsigned skipped, double& d2,
               unsigned& best) const {
        if (r == none) return;
        const auto& [node, lower, upper] = records[r];
        // Where rounding makes another node closer by a hair, the box about P leaves it out.
        bool in = node != skipped;
        for (unsigned i = 0; i < dim; ++i)
            in = in && P[i] - std::sqrt(d2) <= pos(i, node) && pos(i, node) <= P[i] + std::sqrt(d2);
        if (in && squared(node, P) < d2) d2 = squared(best = node, P);
        const double c = pos(axis, node);
        // Negated, so that a NaN hides nothing below it.
        if (!(c >= P[axis] + std::sqrt(d2))) visit(upper, (axis + 1) % dim, P, skipped, d2, best);
        if (!(c <= P[axis] - std::sqrt(d2))) visit(lower, (axis + 1) % dim, P, skipped, d2, best);
    }

    void in_box(unsigned r, unsigned axis, const double* min, const double* max,
                std::vector<unsigned>& found) const {
        if (r == none) return;
        const auto& [node, lower, upper] = records[r];
        bool in = true;
        for (unsigned i = 0; i < dim; ++i)
            in = in && min[i] <= pos(i, node) && pos(i, node) <= max[i];
        if (in) found.push_back(node);
        if (!(pos(axis, node) < min[axis])) in_box(lower, (axis + 1) % dim, min, max, found);
        if (!(pos(axis, node) > max[axis])) in_box(upper, (axis + 1) % dim, min, max, found);
    }
};

template <unsigned Dim>
void compare_with_plain_tree(unsigned n, const cloud_maker& draw, engine& random) {
    auto pos = strided(cloud(Dim, n, draw, random), 7.0);
    plain_tree plain{pos};
    node_detector detector(pos);
    if (random() % 2) {
        plain.insert(identity(n));
    } else { // few nodes of the matrix, or many, more than once
        const auto some = random_nodes(random, 1 + random() % n, n);
        plain.insert(list(some));
        ASSERT_EQ(detector.reinit(pos, some), 0);
    }
    if (random() % 2) {
        const auto before = plain.records.size();
        const auto more = random_nodes(random, 1 + random() % 40, n + 2);
        const bool once = random() % 2; // of a connectivity
        plain.insert(once ? used_nodes({list(more)}) : list(more));
        ASSERT_EQ(once ? detector.insert(columns({list(more)})) : detector.insert(more),
                  plain.records.size() - before);
    }
    ASSERT_EQ(detector.size(), plain.records.size());
    node_detector copy;
    copy = detector;
    for (unsigned query = 0; query < 60; ++query) {
        // Coordinates move: at first none, then some of those that a query meets, at last most.
        for (unsigned move = 20; move < query; ++move)
            pos(random() % Dim, random() % n) = random() % 9 ? draw(random) : nan;
        vector_fixed<double, Dim> P, Q;
        for (unsigned i = 0; i < Dim; ++i) {
            P[i] = query % 2 ? draw(random) : pos(i, random() % n);
            Q[i] = P[i] + (query % 3 ? 0.3 * double(random() % 4) : 0.0);
        }
        ASSERT_EQ(detector.find_closest(P), plain.closest(P.data(), none));
        const unsigned node = random() % n;
        ASSERT_EQ(detector.find_closest(node), plain.closest(&pos(0, node), node));
        auto found = vec({42});
        std::vector<unsigned> expected = {42};
        plain.in_box(plain.records.empty() ? none : 0, 0, P.data(), Q.data(), expected);
        copy.find_in_box(P, Q, found);
        ASSERT_EQ(list(found), expected);
    }
}

TEST(shuffle, draws_from_its_own_seed) {
    auto nodes = identity(10);
    shuffle(nodes);
    EXPECT_EQ(nodes, (std::vector<unsigned>{5, 8, 4, 3, 7, 1, 0, 6, 2, 9}));
}

TEST(node_detector, answers_like_the_plain_tree) {
    engine random(3);
    for (const auto& [name, draw] : hostile_clouds) {
        for (unsigned round = 0; round < 60; ++round) {
            SCOPED_TRACE(testing::Message() << name << ", round " << round);
            const unsigned n = round < 2 ? 6000 : 1 + random() % 300; // many gather by subtrees
            round % 2 ? compare_with_plain_tree<2>(n, draw, random)
                      : compare_with_plain_tree<3>(n, draw, random);
            if (HasFatalFailure()) return;
        }
    }
    // A chain on top, so that nodes are parted from there on, to both sides.
    const cloud_maker mostly_equal = [](auto& r) { return r() % 10 ? 300 : double(r() % 1000); };
    for (unsigned round = 0; round < 4; ++round)
        compare_with_plain_tree<2>(9000, mostly_equal, random);
}

TEST(node_detector, mixes_dimensions) {
    const auto flat = points({{0, 0}, {4, 0}}), solid = points({{0, 0, 0}, {0.5, 0, 3}});
    dense1D<unsigned> found;
    const dense2D<unsigned> nodes[] = {columns({{0}}), columns({{1}})};
    const node_detector in_plane(flat, nodes, nodes + 2), of_one(solid, nodes[1]);
    const node_detector in_space(solid, vec({1, 0})), copy(of_one);
    EXPECT_EQ(copy.find_closest({0.5, 0.0}), 1u);
    EXPECT_EQ(in_plane.find_closest({3.0, 0.0, 100.0}), 1u);
    EXPECT_EQ(in_space.find_closest({0.5, 0.0}), 0u);
    in_plane.find_in_box({0.0, 0.0, 5.0}, {9.0, 0.0, 6.0}, found);
    in_space.find_in_box({0.0, 0.0}, {1.0, 1.0}, found);
    EXPECT_THAT(list(found), testing::UnorderedElementsAre(0, 1, 0));
}

// Behind every node of the spine, on one of its sides, waits another one.
TEST(node_detector, walks_trees_of_any_depth) {
    for (const double side : {-1.0, 1.0}) {
        dense2D<double> pos(2, 600);
        for (unsigned k = 0; k < 600; ++k)
            pos(0, k) = pos(1, k) = side * (k < 300 ? k : k - 300.5);
        node_detector detector;
        detector.reinit(pos, vec({0}));
        for (unsigned k = 1; k < 600; ++k)
            detector.insert(vec({k}));
        dense1D<unsigned> found;
        detector.find_in_box({-999.0, -999.0}, {999.0, 999.0}, found);
        EXPECT_EQ(found.size(), 600u);
    }
}

TEST(node_detector, keeps_or_drops_its_tree_on_rejected_calls) {
    const auto pos = points({{0, 0}, {1, 0}, {2, 0}}), line = points({{0}, {1}});
    const dense2D<unsigned> conns[] = {columns({{0, 1}}), columns({{1, 2}})};
    node_detector detector;
    EXPECT_EQ(detector.find_closest({0.0, 0.0}), none);
    EXPECT_EQ(detector.insert(vec({0})), 0u);
    EXPECT_EQ(detector.reinit(pos, conns, conns + 2), 0);
    EXPECT_EQ(detector.reinit(line, conns + 1, conns), -3);
    EXPECT_EQ(detector.reinit(line, vec({7})), -1);
    EXPECT_EQ(detector.reinit(pos, vec({0, 3})), -2);
    EXPECT_EQ(detector.reinit(pos, columns({{7, 0}})), -2);
    EXPECT_EQ(detector.size(), 3u);
    EXPECT_EQ(detector.reinit(pos, vec({none, 1, 1})), 0);
    EXPECT_EQ(detector.size(), 2u);
    EXPECT_EQ(detector.find_closest(1u), none);
    EXPECT_EQ(detector.reinit(line), -1);
    EXPECT_EQ(detector.size(), 0u);
}

} // namespace
} // namespace kvx::zelvo::tests
