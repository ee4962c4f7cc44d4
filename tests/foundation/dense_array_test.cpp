#include <limits>
#include <thread>

#include <sys/resource.h>

#include "foundation/memory_guard.h"
#include "meshes.h"

namespace kvx::zelvo::tests {
namespace {

using testing::ElementsAre;

TEST(dense1D, copies_share_until_one_grows) {
    dense1D<unsigned> a = vec({1, 2, 3});
    dense1D<unsigned> b = a.sub_vector(0, 2);
    b[0] = 7;
    EXPECT_EQ(a[0], 7u);
    ASSERT_TRUE(b.resize(1));
    b = 5u; // fills: a number is no vector
    EXPECT_EQ(a[0], 5u);
    ASSERT_TRUE(b.resize(3, 9)); // would run over a's elements
    EXPECT_THAT(list(a), ElementsAre(5, 2, 3));
    ASSERT_TRUE(a.copy(a.sub_vector(1, 99)));
    EXPECT_THAT(list(a), ElementsAre(2, 3));
    EXPECT_TRUE(a.sub_vector(5, 1).empty());
    b = a;
    b.clear(); // lets go of shared storage, and keeps its own
    ASSERT_TRUE(b.resize(2, 9));
    EXPECT_THAT(list(a), ElementsAre(2, 3));
    const unsigned* const kept = b.data();
    b.clear();
    ASSERT_TRUE(b.resize(2));
    EXPECT_EQ(b.data(), kept);
}

TEST(dense2D, grows_without_touching_other_views) {
    const dense2D<double> m = points({{1, 2}, {3, 4}, {5, 6}});
    dense1D<double> column = m.col(0);
    ASSERT_TRUE(column.resize(3, 9));
    dense2D<double> block = m.sub_matrix(0, 0, 1, 2);
    ASSERT_TRUE(block.resize(2, 2, 9));
    EXPECT_EQ(list(block), list(points({{1, 9}, {3, 9}})));
    EXPECT_EQ(list(m), list(points({{1, 2}, {3, 4}, {5, 6}})));
    EXPECT_EQ(m.sub_matrix(1, 1, 9, 9).rows(), 1u);
    EXPECT_TRUE(m.sub_matrix(2, 0, 1, 1).empty());
}

TEST(dense2D, resize_keeps_places) {
    using shape = std::pair<std::uint64_t, std::uint64_t>;
    for (const bool as_view : {false, true}) {
        dense2D<unsigned> m = columns({{1, 2}, {3, 4}});
        if (as_view) m = strided(m, 77u);
        dense2D<unsigned> expected(9, 9, 5);
        for (unsigned i = 0; i < 2; ++i)
            for (unsigned j = 0; j < 2; ++j)
                expected(i, j) = m(i, j);
        for (const auto& [rows, cols] :
             {shape{2, 3}, shape{4, 3}, shape{4, 9}, shape{3, 2}, shape{3, 9}, shape{9, 1},
              shape{1, 4}, shape{0, 7}, shape{5, 0}, shape{2, 2}}) {
            for (std::uint64_t j = 0; j < 9; ++j)
                for (std::uint64_t i = 0; i < 9; ++i)
                    if (i >= m.rows() || j >= m.cols()) expected(i, j) = 5;
            ASSERT_TRUE(m.resize(rows, cols, 5));
            ASSERT_EQ(list(m), list(expected.sub_matrix(0, 0, rows, cols)));
            // reserve shows in nothing but the capacity
            ASSERT_TRUE(m.reserve(rows + 1, cols + 3));
            ASSERT_GE(m.col_capacity(), cols + 3);
            ASSERT_EQ(list(m), list(expected.sub_matrix(0, 0, rows, cols)));
        }
    }
}

TEST(dense2D, copies_without_gaps_and_reads_with_them) {
    const auto view = strided(columns({{1, 2}, {3, 4}}), 7u);
    EXPECT_THAT(list(view.as_vector()), ElementsAre(1, 2, 7, 7, 7, 3, 4));
    dense2D<unsigned> m;
    ASSERT_TRUE(m.copy(view));
    EXPECT_EQ(m.ld(), 2u);
    EXPECT_THAT(list(m.as_vector()), ElementsAre(1, 2, 3, 4));
    EXPECT_TRUE(view.col(2).empty());
}

TEST(dense2D, makes_zeros_that_take_no_memory) {
    dense2D<double> m = points({{1, 2}});
    dense2D<double> view = m;
    ASSERT_TRUE(m.make_zeros(3, 2));
    EXPECT_EQ(list(m), list(points({{0, 0, 0}, {0, 0, 0}})));
    EXPECT_EQ(list(view), list(points({{1, 2}})));
    rusage before, after;
    getrusage(RUSAGE_SELF, &before);
    if (m.make_zeros(3, 100'000'000)) m(2, 99'999'999) = 1.0;
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 1'000'000); // KiB
}

TEST(dense2D, refuses_sizes_that_no_memory_holds) {
    constexpr std::uint64_t huge = std::uint64_t{1} << 33;
    dense2D<double> m = points({{1, 2}});
    dense1D<double> v(2, 1);
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    EXPECT_FALSE(m.resize(huge, huge));
    EXPECT_FALSE(m.reserve(2, most));
    EXPECT_FALSE(m.make_zeros(2, most));
    EXPECT_FALSE(m.sub_matrix(0, 0, 2, 1).reserve(3, most / 8));
    EXPECT_FALSE(v.resize(most));
    EXPECT_FALSE(v.sub_vector(1, 1).reserve(most / 8));
    EXPECT_EQ(list(m), list(points({{1, 2}})));
    EXPECT_EQ(v.size(), 2u);
    EXPECT_THROW(dense2D<double>(huge, huge), std::bad_alloc);
    double x = 0;
    EXPECT_THROW(dense2D<double>::wrap(&x, 3, most / 2), std::bad_alloc);
    EXPECT_THROW(dense2D<double>::wrap(&x, 3, 2, 2), std::invalid_argument);
    EXPECT_THROW(dense2D<double>::wrap(nullptr, 1, 1), std::invalid_argument);
    EXPECT_TRUE(dense2D<double>::wrap(nullptr, 0, 1).empty());
    dense2D<double>(0, most) = 1.0; // nothing to fill, at once
}

TEST(dense_arrays, wrap_memory_of_the_caller) {
    unsigned memory[] = {0, 1, 2, 3, 4, 5, 6, 7};
    auto v = dense1D<unsigned>::wrap(&memory[1], 3);
    auto m = dense2D<unsigned>::wrap(&memory[1], 2, 2, 4);
    EXPECT_EQ(list(m), list(columns({{1, 2}, {5, 6}})));
    m(1, 1) = 9;
    EXPECT_EQ(memory[6], 9u);
    ASSERT_TRUE(m.resize(2, 3, 8)); // moves out
    m(0, 0) = 4;
    EXPECT_EQ(memory[1], 1u);
    ASSERT_TRUE(v.resize(4, 8));
    EXPECT_THAT(list(v), ElementsAre(1, 2, 3, 8));
    EXPECT_EQ(memory[4], 4u);
}

TEST(vector_num, grows_by_the_rule_and_stays_aligned) {
    auto block = vector_num<double>::make(3);
    EXPECT_GE(block->capacity(), 4u);
    const auto capacity = block->capacity();
    ASSERT_TRUE(block->reserve(capacity + 1, 3, 0));
    EXPECT_GE(block->capacity(), 3 * capacity);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block->data()) % 16, 0u);
    EXPECT_FALSE(block->reserve(std::uint64_t{1} << 63, 1, 0));
}

TEST(vector_num, is_dropped_by_several_threads) {
    auto whole = std::make_unique<dense1D<double>>(1000, 1.0);
    std::vector<dense1D<double>> views(64, *whole);
    whole.reset();
    const auto drop = [&](unsigned from) {
        for (unsigned k = from; k < 64; k += 2)
            views[k].clear();
    };
    std::thread even(drop, 0), odd(drop, 1);
    even.join();
    odd.join(); // the sanitizers tell of a block freed twice or never
}

TEST(fixed_size, reads_as_many_numbers_as_it_holds) {
    EXPECT_EQ((vector_fixed<double, 3>(1, 2.5, 3)[2]), 3);
    static_assert(!std::is_convertible_v<double, vector_fixed<double, 2>>);
    symmetric_fixed<double, 3> s(0, 1, 2, 3, 4, 5); // (0,0) (0,1) (1,1) (0,2) (1,2) (2,2)
    EXPECT_EQ(s(1, 2), 4);
    EXPECT_EQ(s(2, 0), 3);
    matrix_fixed<double, 3, 2> m;
    m(2, 1) = 7;
    EXPECT_EQ(m.data()[5], 7);
}

TEST(results, large_counts_stay_counts) {
    EXPECT_EQ(count_result(3000000000), std::numeric_limits<int>::max());
    EXPECT_EQ(index_bound(std::uint64_t{1} << 32), no_node);
    EXPECT_EQ(guarded([]() -> int { throw std::length_error(""); }), -199);
}

TEST(lapack, finds_eigenvalues_and_vectors) {
    double packed[] = {2, 1, 2}, values[2], vectors[4], work[6]; // (2 1; 1 2)
    int info = 7;
    lapack::dspev('V', 'U', 2, packed, values, vectors, 2, work, info);
    EXPECT_EQ(info, 0);
    EXPECT_NEAR(values[1], 3, 1e-15);
    EXPECT_NEAR(vectors[0] * vectors[1], -0.5, 1e-15);
}

} // namespace
} // namespace kvx::zelvo::tests
