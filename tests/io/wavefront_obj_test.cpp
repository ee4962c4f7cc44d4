#include <cstdlib>
#include <sstream>

#include "io/files.h"
#include "meshes.h"

namespace kvx::zelvo::tests {
namespace {

const dense2D<double> flat = strided(points({{1, 2}, {-0.5, 1e300}}), 7.0);
const dense2D<double> normals = strided(points({{0, 0, 1}, {0, 1, 0}}), 8.0);
const dense2D<double> texcoords = strided(points({{0, 1}, {0.25, 2}}), 9.0);
const dense2D<unsigned int> triangles = strided(columns({{0, 1, 2}, {7, none, 0}}), 5u);
const dense2D<unsigned int> quads = strided(columns({{0, 1, 2, 3}}), 5u);

/// Code, and what was read as keywords and entries, or keywords, numbers of columns and last
/// entries.
std::string read(const char* file, bool last_only = false) {
    dense2D<double> v(2, 5), vn(1, 1), vt(1, 1);
    dense2D<unsigned int> f3(7, 1), f4(1, 1);
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << WavefrontOBJ_input(file, v, vn, vt, f3, f4);
    const auto add = [&text, last_only](const char* keyword, const auto& m) {
        if (!m.empty()) text << keyword;
        if (!m.empty() && last_only) text << ' ' << m.cols() << ": " << list(m).back().back();
        for (std::uint64_t k = 0; k < m.rows() * m.cols() && !last_only; ++k)
            text << ' ' << m(k % m.rows(), k / m.rows());
    };
    add(" v", v), add(" vt", vt), add(" vn", vn), add(" f3", f3), add(" f4", f4);
    return text.str();
}

TEST(WavefrontOBJ, WritesTheseBytesAndReadsThemBackButForTheFaces) {
    const scratch_file file;
    ASSERT_EQ(WavefrontOBJ_output(file, flat, normals, texcoords, triangles, quads), 0);
    EXPECT_EQ(file.content(), R"( v 1.00000000e+00 2.00000000e+00 0.00000000e+00 
 v -5.00000000e-01 1.00000000e+300 0.00000000e+00 
 vt 0.00000000e+00 1.00000000e+00 
 vt 2.50000000e-01 2.00000000e+00 
 vn 0.00000000e+00 0.00000000e+00 1.00000000e+00 
 vn 0.00000000e+00 1.00000000e+00 0.00000000e+00 
 f 1/1/12/2/23/3/3 
 f 8/8/84294967296/4294967296/42949672961/1/1 
 f 1/1/12/2/23/3/34/4/4 
)");
    EXPECT_EQ(read(file), "0 v 1 2 0 -0.5 1e+300 0 vt 0 1 0.25 2 vn 0 0 1 0 1 0");
    EXPECT_EQ(WavefrontOBJ_output(file, flat, {}, {}, columns({{0, 1, 2}}), {}), 0);
    EXPECT_THAT(file.content(), testing::EndsWith(" \n f 1//2//3// \n"));
}

TEST(WavefrontOBJ, ReadsLineByLineWhatFits) {
    const std::string nul(1, '\0'), megabyte(1 << 20, ' ');
    const std::pair<std::string, std::string> cases[] = {
        {"v 1 2 3\r\n\tv\v+4 5. .6e1 7\nv 8 9-1e0e 0.2 0.3", " v 1 2 3 4 5 6 8 9 -1"},
        {"v 1 2 x\nv 1 2\nv 1,2,3\nv1 2 3\nV 1 2 3\nv 1 2 3e\nv 1 2 0x\nv 1 2 1e999", " v 1 2 0"},
        {"v nan 1 2\nv 1 2 -inf\n#v 1 2 3\nv 1 2 3" + nul + "\nv 1 2 -1e-999", " v 1 2 3 1 2 -0"},
        {"v" + megabyte + "1 2 3\n" + megabyte + "v 4 5 6" + megabyte, " v 1 2 3 4 5 6"},
        {"vt 1\nvt 2 3\nvt 4 5 6\nvt 7 8 9 0\nvt\nvt x\nvt 1 inf", " vt 1 0 2 3 4 5 1 0"},
        {"vn 1 2\nvn 1 2 3\nvn 4 5 6 7\nvn 4 5 6 x", " vn 1 2 3 4 5 6"},
        {"f 1 2 3\nf 4/9 5//9 6/9/9\r\nf 0 0000000000000000000002 4294967295",
         " f3 0 1 2 3 4 5 0 1 4294967294"},
        {"f 1 2 3 4\nf 1 2 3 4 5\nf 1 2\nf\nf 1 2 3 4 5 6", " f4 0 1 2 3"},
        {"f 1/ 2 3\nf 1// 2 3\nf 1/2/ 2 3\nf 1/2/3/4 2 3\nf 1//2//3//\nf 1 2 3 \\\nf 1 2 3 # c",
         ""},
        {"f -1 2 3\nf 1/-1 2 3\nf 1//-1 2 3\nf +1 2 3\nf 1 2 4294967296\nf 1 2 "
         "018446744073709551617\nf 1//4294967296 2 3",
         ""},
    };
    for (const auto& [lines, expected] : cases)
        EXPECT_EQ(read(scratch_file(lines)), "0" + expected) << lines.substr(0, 99);
}

TEST(WavefrontOBJ, ReadsFilesOfOtherPrograms) {
    const char* const folder = std::getenv("KVX_ZELVO_MESHES");
    if (!folder) GTEST_SKIP() << "KVX_ZELVO_MESHES is not set: no real meshes";
    const std::pair<std::string, std::string> files[] = {
        {"continuation-polygons-crlf", " v 92: -2.5 vt 92: 0.309928 vn 92: 0"},
        {"gargoyle-50k", " v 24992: 678.686 f3 49980: 23839"},
        {"joined-tetrahedra", " v 5: -1 vn 3: 0 f3 8: 1"},
        {"negative-indices", " v 8: 1 vt 14: 0.75 vn 6: -1"},
        {"nonmanifold-boundary", " v 75: 4.54514 f3 108: 67"},
        {"polygons-groups", " v 644: 0.96 vn 732: 2.65506e-17 f3 176: 640 f4 496: 624"},
        {"quads-crlf", " v 1440: -81.4328 vt 3: 0 vn 1440: -0.45832 f4 1440: 1439"},
    };
    for (const auto& [name, expected] : files)
        EXPECT_EQ(read((std::string(folder) + "/" + name + ".obj").c_str(), true), "0" + expected);
}

} // namespace
} // namespace kvx::zelvo::tests
