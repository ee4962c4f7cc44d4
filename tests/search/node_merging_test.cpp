#include <cmath>

#include "random_meshes.h"
#include "search/cell_pairs.h"
#include "search/close_pairs.h"

namespace kvx::zelvo::tests {
namespace {

bool close_enough(const dense2D<double>& pos, unsigned j, unsigned i, double tol, double& d) {
    double sum = 0;
    for (unsigned k = 0; k < pos.rows(); ++k) {
        if (!(pos(k, j) - tol <= pos(k, i) && pos(k, i) <= pos(k, j) + tol)) return false;
        sum += (pos(k, j) - pos(k, i)) * (pos(k, j) - pos(k, i));
    }
    d = std::sqrt(sum);
    return d <= tol;
}

/// Nodes that may absorb, and nodes that they may absorb.
using candidates = std::pair<std::vector<unsigned>, std::vector<unsigned>>;

/// All pairs stored, sorted and walked; the candidates are renumbered for every pass.
int plain_merge(const dense2D<double>& pos, const std::vector<candidates>& groups, double tol,
                bool repeat, std::vector<unsigned>& ids) {
    ids = identity(pos.cols());
    int total = 0, before = 0;
    do {
        before = total;
        std::vector<std::tuple<double, unsigned, unsigned>> pairs;
        double d = 0;
        for (const auto& [survivors, absorbed] : groups)
            for (unsigned j : survivors)
                for (unsigned i : absorbed)
                    if (i != none && j != none && ids[i] != ids[j] &&
                        close_enough(pos, ids[j], ids[i], tol, d))
                        pairs.emplace_back(d, ids[j], ids[i]);
        std::stable_sort(pairs.begin(), pairs.end(), [](const auto& a, const auto& b) {
            return std::get<double>(a) < std::get<double>(b);
        });
        for (const auto& [distance, j, i] : pairs) {
            if (ids[j] != j || ids[i] != i) continue;
            ids[i] = j;
            ++total;
        }
        for (unsigned& id : ids)
            while (ids[id] != id)
                id = ids[id];
    } while (repeat && total > before);
    return total;
}

TEST(close_pairs, bounds_squares_as_their_roots_are_bounded) {
    engine random(6);
    for (int k = 0; k < 2000; ++k) {
        const double radius = std::pow(10.0, double(random() % 600) - 310) * random();
        const double square = largest_square_within(radius);
        ASSERT_LE(std::sqrt(square), radius);
        ASSERT_GT(std::sqrt(std::nextafter(square, inf)), radius);
    }
    EXPECT_EQ(largest_square_within(inf), inf);
}

TEST(merge, joins_like_the_plain_procedure) {
    engine random(1);
    for (const auto& [name, draw] : hostile_clouds) {
        for (const double tol : {0.0, 1e-170, 1e-162, 0x1p-33, 0.1, 0.25, 0.35, 2.0, inf}) {
            for (unsigned round = 0; round < 24; ++round) {
                SCOPED_TRACE(testing::Message() << name << ", tol " << tol << ", round " << round);
                const unsigned n = 1 + static_cast<unsigned>(random() % 90);
                const auto pos = strided(cloud(2 + round % 2, n, draw, random), 7.0);
                const auto l1 = random_nodes(random, n, n);
                const auto l2 = round % 3 == 0 ? l1 : random_nodes(random, n, n);
                std::vector<unsigned> expected;
                dense1D<unsigned> ids;
                int count = plain_merge(pos, {{list(l2), list(l1)}}, tol, false, expected);
                ASSERT_EQ(merge(pos, l1, l2, ids, tol), count);
                ASSERT_EQ(list(ids), expected);

                const auto all = identity(n);
                auto moved = pos;
                dense2D<double> onto;
                onto.copy(pos);
                count = plain_merge(pos, {{all, all}}, tol, false, expected);
                for (unsigned i = 0; i < pos.rows() * n; ++i)
                    onto(i % pos.rows(), i / pos.rows()) =
                        pos(i % pos.rows(), expected[i / pos.rows()]);
                ASSERT_EQ(merge(moved, ids, tol), count);
                ASSERT_EQ(list(ids), expected);
                ASSERT_TRUE(alike(moved, onto));

                std::vector<candidates> elements;
                const unsigned rows = n < 10 ? 30 : 4; // the same few nodes over and over
                for (unsigned e = 0; e < n / 2 + 1; ++e) {
                    const auto nodes = list(random_nodes(random, rows, n));
                    elements.push_back({nodes, nodes});
                }
                std::vector<std::vector<unsigned>> plain;
                for (const auto& e : elements)
                    plain.push_back(e.first);
                auto conn = strided(columns(plain), 5u);
                const bool repeat = round % 4 < 2;
                count = plain_merge(pos, elements, tol, repeat, expected);
                ASSERT_EQ(merge(pos, conn, ids, tol, repeat ? 2 : 1), count);
                if (ids.empty()) continue; // no element has a node
                ASSERT_EQ(list(ids), expected);
                for (auto& column : plain)
                    for (unsigned& node : column)
                        if (node != none) node = expected[node];
                ASSERT_EQ(list(conn), plain);
            }
        }
    }
}

TEST(merge, joins_alike_in_sparse_and_in_crowded_cells) {
    engine random(4);
    for (const double spacing : {1.01, 2.4, 5.0}) {
        dense2D<double> pos(2, 2500);
        for (unsigned i = 0; i < 5000; ++i) {
            const unsigned k = i < 400 ? i % 200 : i; // a few nodes coincide
            pos(i % 2, i / 2) = spacing * (k % 2 ? k % 100 : k / 100) + 0.25 * below(random, 2);
        }
        dense1D<unsigned> ids;
        std::vector<unsigned> all = identity(2500), expected;
        const auto distinct = [](auto...) { return false; };
        EXPECT_EQ(cell_pairs<2>(pos, 1, 4).run(all, distinct, std::not_fn(distinct)), spacing > 2);
        EXPECT_EQ(merge(pos, ids, 1), plain_merge(pos, {{all, all}}, 1, false, expected));
        EXPECT_EQ(list(ids), expected);
    }
}

TEST(merge, every_form_welds) {
    const auto pos = points({{0, 0}, {1, 0}, {1e-7, 0}, {1, 0}});
    auto a = columns({{2, 1}}), b = columns({{3, 0}});
    const auto view = b; // sees the renumbering
    dense1D<unsigned> ids;
    EXPECT_EQ(merge(pos, a, b), 2);
    EXPECT_EQ(list(view), list(columns({{1, 2}})));
    b = columns({{3, 0}});
    EXPECT_EQ(merge(pos, b, a, ids, 0, 0), 1);
    EXPECT_EQ(list(ids), (std::vector<unsigned>{0, 3, 2, 3}));
    EXPECT_EQ(merge(pos, a, b, 1, 1), 1); // node 3 goes to node 2, which is nearer than node 0
    a = columns({{0, 2, 3, 1}});
    EXPECT_EQ(merge(pos, a), 2);
    EXPECT_EQ(list(a), list(columns({{0, 0, 3, 3}})));

    auto moved = points({{0, 0}, {1, 0}, {1e-7, 0}, {1, 0}});
    const auto before = moved;
    EXPECT_EQ(merge(moved, ids, 1e-6), 2);
    EXPECT_EQ(list(moved), list(points({{0, 0}, {1, 0}, {0, 0}, {1, 0}})));
    EXPECT_EQ(list(before), list(pos));
    auto nodes = vec({3, 1, none});
    EXPECT_EQ(merge(pos, nodes, nodes, 0), 1); // the map takes the place of the list
    EXPECT_EQ(list(nodes), (std::vector<unsigned>{0, 3, 2, 3}));
}

} // namespace
} // namespace kvx::zelvo::tests
