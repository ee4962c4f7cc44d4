#include <cmath>
#include <cstdlib>

#include "io/files.h"
#include "io/grouped_elements.h"
#include "meshes.h"

namespace kvx::zelvo::tests {
namespace {

const auto kinds = [](const std::vector<int>& FEs) { return matrix<int>({FEs}).col(0); };

int output(const char* file, const dense2D<double>& pos, const grouped_elements& m) {
    return FEMAP_output(file, pos, m.connectM, m.offsets, m.FEs, m.props);
}
auto lists(int code, const dense2D<double>& x, const grouped_elements& m) {
    return std::tuple(code, list(x), list(m.connectM), list(m.offsets), list(m.FEs), list(m.props));
}
auto input(const char* file) {
    dense2D<double> pos(2, 5);
    grouped_elements m{{7, 1}, vec({9}), kinds({9}), vec({9})};
    const int code = FEMAP_input(file, pos, m.connectM, m.offsets, m.FEs, m.props);
    return lists(code, pos, m);
}

// A tetrahedron and a wedge in a mixed group, a bar of three nodes and a point.
const dense2D<double> pos = strided(points({{0, 1}, {0.1, 1e23}, {-2, 1. / 3}}), 7.0);
const auto elements = strided(
    columns({{0, 1, 2, 3, none, none}, {0, 1, 2, 3, 4, 5}, {0, 1, 2, 0, 0, 0}, {4, 0, 0, 0, 0, 0}}),
    8u);
const grouped_elements mixed = {elements, vec({0, 2, 3, 4}), kinds({11, 4, 1}), vec({7, 7, 5, 2})};

// lines 3 to 7 of an element
const std::string triple = "0.,0.,0.,\n", no_slots = "0,0,0,0,0,0,0,0,0,0,\n";
const std::string rest = no_slots + triple + triple + triple + "0,0,0,0,0,0," + no_slots;

TEST(Femap, WritesTheseBytes) {
    const scratch_file file;
    ASSERT_EQ(output(file, pos, mixed), 0);
    const std::string property = ",1,0,\n<NULL>\n0,0,0,0,\n0,\n0,\n0,\n", gap = "   -1\n   -1\n   ";
    std::string expected = "   -1\n   100\n<NULL>\n4.41,\n" + gap + "402\n2,110,0,27" + property;
    expected += "7,110,0,25" + property + gap + "403\n1,0,0,1,46,0,0,0,0,0,0,0,1,0,\n";
    expected += "2,0,0,1,46,0,0,0,0,0,0,0.1,1e+23,0,\n";
    expected += "3,0,0,1,46,0,0,0,0,0,0,-2,0.3333333333333333,0,\n" + gap + "404\n";
    expected += "1,124,7,25,6,1,0,0,\n1,2,3,0,4,0,0,0,0,0,\n" + rest;
    expected += "2,124,7,25,7,1,0,0,\n1,2,3,0,4,5,6,0,0,0,\n" + rest;
    expected += "4,124,2,27,9,1,0,0,\n5,0,0,0,0,0,0,0,0,0,\n" + rest + "   -1\n";
    EXPECT_EQ(file.content(), expected);
}

TEST(Femap, ReadsOtherHabits) {
    const std::string edge = "\t -1 \r\n", more = "1 2 3 4 5 6 7 8 9\n1 2 3 4 5 6 7 8 9 10\n";
    std::string text = "404\n1 0 0 0 0 0 0 0 0 0 0 7 7 7\n" + edge + "404\n";
    for (const std::string element :
         {"7 1 3 25 7 1 0 0 9 9\n10 20 30 0 40 50 9223372036854775806 0 0 0\n",
          "8 , 1,-3 25,14 1 ,,0\r\n30 20 10 40 50 0 0 0 0 0\r\n",
          "9,1,99999999999,25,6,1,0,0\n20 10 30 40 0 0 0 0 0 0\n",
          "10 1 5 25 6 1 0 0 1 1\n20 10 30 0 40 0 0 0 0 0\n",
          "11 1 5 17 2 1 0 0\n10 20 15 0 0 0 0 0 0 0\n",
          "12 1 5 17 2 1 0 0\n10,20,18446744073709551636,0,0,0,0,0,0,0,\n",
          "13 1 5 17 2 1 0 0\n10 20 0 0 0 0 0 0 0 0\n",
          "14 1 5 17 11 1 0 0\n10 20 30 0 0 0 0 0 0 0\n"})
        text += element + rest + more;
    const std::string o = " 0 0 0 0 0 0 0 0 0 0 ", gap = edge + edge;
    const std::string nodes = "403,\n20,0,,,,,,,,,,x,1e5,2\r\n10" + o + "1 0 0\n50" + o + "5 0 0\n";
    text += gap + "402\n403\n10" + o + "7 7 7\n" + gap + "403\n-5" + o + "8 8 8\n10" + o;
    text += "9 9 9\n9223372036854775806" + o + "6. 0 0\n30" + o + "3.D-1 -1.5d+2 1d 4 5\n60" + o;
    text += "8 8\n9223372036854775808" + o + "8 8 8\n40" + o + "4 0 0\n" + edge + gap + nodes;
    const auto x = points({{1, 0, 0}, {0, 1e5, 2}, {.3, -150, 1}, {4, 0, 0}, {5, 0, 0}, {6, 0, 0}});
    const std::vector<unsigned> tetra = {1, 0, 2, 3, none, none};
    const auto conn = columns({{0, 1, 2, 3, 4, 5}, {2, 1, 0, 3, 4, none}, tetra, tetra});
    const grouped_elements all{conn, vec({0, 1, 2, 4}), kinds({16, 14, 12}), vec({3, 0, none, 5})};
    EXPECT_EQ(input(scratch_file(text)), lists(0, x, all));
    EXPECT_EQ(std::get<1>(input(scratch_file(edge + nodes))).size(), 3u);
    const scratch_file written; // without any blanks
    EXPECT_EQ(output(written, x, all), 0);
    EXPECT_EQ(input(written), lists(0, x, all));
}

TEST(Femap, ReadsFilesOfOtherPrograms) {
    const char* const folder = std::getenv("KVX_ZELVO_MESHES");
    if (!folder) GTEST_SKIP() << "KVX_ZELVO_MESHES is not set: no real meshes";
    const auto [code, x, conn, offsets, FEs, props] =
        input((folder + std::string("/quads-v7.neu")).c_str());
    ASSERT_EQ(std::tuple(code, x.size(), conn.size()), std::tuple(0, 1394u, 1016u));
    EXPECT_EQ(x[700], (std::vector{323.89, 188.5, -2.5}));
    EXPECT_EQ(conn[500], (std::vector{169u, 170u, 189u, 188u}));
    EXPECT_EQ(std::get<0>(input((folder + std::string("/results-only-v82.neu")).c_str())), -1);
}

} // namespace
} // namespace kvx::zelvo::tests
