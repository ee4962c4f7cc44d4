#include <limits>

#include <sys/resource.h>

#include "foundation/memory_guard.h"
#include "meshes.h"

namespace kvx::zelvo::tests {
namespace {

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

TEST(dense2D, refuses_memory_that_is_none) {
    double x = 0;
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    EXPECT_THROW(dense2D<double>::wrap(&x, 3, most / 2), std::bad_alloc);
    EXPECT_THROW(dense2D<double>::wrap(nullptr, 1, 1), std::invalid_argument);
    EXPECT_TRUE(dense2D<double>::wrap(nullptr, 0, 1).empty());
    dense2D<double>(0, most) = 1.0; // nothing to fill, at once
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

} // namespace
} // namespace kvx::zelvo::tests
