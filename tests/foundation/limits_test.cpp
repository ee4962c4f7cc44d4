#include <sys/mman.h>

#include "io/files.h"
#include "meshes.h"

namespace kvx::zelvo::tests {
namespace {

constexpr std::uint64_t numbers = 0xFFFFFFFF; ///< those of nodes and elements
constexpr std::uint64_t many = numbers + 1, endless = std::uint64_t{1} << 40;

/// The caller's memory, all zeros, that takes no room until it is written to; empty where there are
/// no addresses for it. Stays until the program ends.
template <class T>
dense2D<T> wide(std::uint64_t rows, std::uint64_t cols) {
    void* const memory = mmap(nullptr, rows * cols * sizeof(T), PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) return {};
    return dense2D<T>::wrap(static_cast<T*>(memory), rows, cols);
}

/// Results of calls, as arguments.
const auto results = [](auto... codes) { return std::vector<int>{codes...}; };

// At once: what walked so much, or took memory for it, would not come back for a long time.
TEST(Limits, MoreThanNumbersTellIsRefusedBeforeItIsWalked) {
    auto one = wide<unsigned int>(1, many), two = wide<unsigned int>(2, many);
    const auto three = wide<unsigned int>(3, many);
    auto x = wide<double>(2, many);
    if (one.empty() || two.empty() || three.empty() || x.empty()) GTEST_SKIP() << "no addresses";
    const auto bars = columns({{0, 1}});
    dense2D<unsigned int> conn = bars, out;
    dense1D<unsigned int> a, b, c;
    const vector_fixed<double, 2> P(1.0);
    unsigned int full = 0xFFFFFFFF, nearly = 0xFFFFFFFE;
    const auto codes = results(
        get_neighbors(two.sub_matrix(0, 0, 2, many / 2), ET_BAR2, true, out),
        copy_edges(two, ET_BAR2, out), get_ancestors(one, a), get_connected_elements(one, a, b),
        get_node_graph(one, a, b), get_subdomains(one, a, b), get_subdomains(one, two, b),
        remove_degenerated(one, b, true), sort_elfes(one, a, b, c), get_IDs(one, one, a, b, true),
        get_IDs(one.as_vector(), a, b, c), simplify(x, conn, 0), copy_mesh(x, conn, bars),
        copy_mesh(x, conn, P, P, 1.0, 7, bars), copy_sym_mesh(x, conn, P, P, bars),
        merge(x, bars.as_vector(), b, 1.0), merge(x, conn, 1.0, 1), merge(x, 1.0),
        node_detector().reinit(x), NASTRAN_output("/dev/null", x, one, one, ET_NODE1, ET_NODE1),
        FEMAP_output("/dev/null", x, one, ET_NODE1), vtk_convert(bars, ET_BAR2, full, a, b),
        vtk_convert(columns({{0, 1, 2}}), ET_BAR3, nearly, a, b));
    EXPECT_THAT(codes, testing::Each(-199));
    EXPECT_EQ(STL_output("/dev/null", dense2D<double>(3, 1), three, false), -3);
    EXPECT_TRUE(list(conn) == list(bars) && a.empty() && b.empty() && x.cols() == many);
    EXPECT_EQ(full - nearly, 1u);
}

TEST(Limits, ColumnsWithoutRowsAreNotWalked) {
    const dense2D<unsigned int> m(0, endless);
    const dense2D<double> x(3, 3);
    dense1D<unsigned int> a, b;
    const char* const f = "/dev/null";
    EXPECT_TRUE(max_ID(m) == no_node && check_IDs(m, 0) && check_IDs(m, ET_SOLID_MIX, 0));
    const auto codes =
        results(count_unique_indices(m), get_ancestors(m, a), get_node_graph(m, a, b),
                get_subdomains(m, a, b), STL_output(f, x, m, false), vtk_output(f, x, m, ET_TRIA3),
                WavefrontOBJ_output(f, x, {}, {}, m, m), medit_output(f, x, m, ET_BAR2),
                medit_vector(f, 3, {0, endless}), ensight_output(f, x, m, ET_BAR2),
                FEMAP_output(f, x, m, m, ET_BAR2, ET_BAR2));
    EXPECT_THAT(codes, testing::Each(0));
}

TEST(Limits, OffsetsAndSizesBeyond32Bits) {
    auto x = wide<double>(3, numbers);
    constexpr unsigned int last = no_node - 1;
    const scratch_file file(std::string(80, '\1') + std::string(4, '\xFF'));
    const auto triangle = columns({{0, 1, last}});
    if (x.empty() || truncate(file, 84 + 50 * std::int64_t{numbers}) != 0) GTEST_SKIP();
    EXPECT_EQ(STL_detect(file), STL_format::binary);
    dense2D<double> pos;
    dense2D<unsigned int> conn;
    EXPECT_EQ(STL_input(file, pos, conn, false), -199) << "more corners than numbers";
    x(1, last) = 2;
    EXPECT_EQ(translate(x, vector_fixed<double, 3>(1.0), vec({last})), 1);
    vector_fixed<double, 3> lo(9.0), hi(-9.0);
    EXPECT_EQ(inc_bounding_box(x, triangle, lo, hi), 0);
    EXPECT_EQ(std::tuple(hi[1], x.col(last)[1]), std::tuple(3.0, 3.0));
    EXPECT_EQ(STL_output(file, x, triangle, false), 0);
    EXPECT_EQ(file.content()[84 + 12 + 24 + 4 + 3], '\x40') << "the y of the last vertex is 3";
}

} // namespace
} // namespace kvx::zelvo::tests
