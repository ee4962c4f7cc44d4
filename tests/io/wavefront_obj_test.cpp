#include <cmath>
#include <cstdlib>
#include <sstream>

#include "io/files.h"
#include "meshes.h"

namespace kvx::zelvo::tests {
namespace {

const dense2D<double> flat = strided(points({{1, 2}, {-0.5, 1e300}, {NAN, 0}}), 7.0);
const dense2D<double> normals = strided(points({{0, 0, 1}, {0, 1, 0}, {1, 0, 0}}), 8.0);
const dense2D<double> texcoords = strided(points({{0, 1}, {0.25, 2}, {3, 4}}), 9.0);
const dense2D<unsigned int> triangles = strided(columns({{0, 1, 2}, {7, none, 0}}), 5u);
const dense2D<unsigned int> quads = strided(columns({{0, 1, 2, 3}}), 5u);
const dense2D<double> no_numbers;
const dense2D<unsigned int> no_faces;

struct reading {
    dense2D<double> pos{2, 5}, normals{1, 1}, texcoords{1, 1};
    dense2D<unsigned int> triangles{7, 1}, quads{1, 1};
    int result;

    explicit reading(const char* file)
        : result(WavefrontOBJ_input(file, pos, normals, texcoords, triangles, quads)) {}
};

TEST(WavefrontOBJ, WritesTheseBytesAndReadsThemBackButForTheFaces) {
    const scratch_file file;
    ASSERT_EQ(WavefrontOBJ_output(file, flat, normals, texcoords, triangles, quads), 0);
    EXPECT_EQ(file.content(), R"( v 1.00000000e+00 2.00000000e+00 0.00000000e+00 
 v -5.00000000e-01 1.00000000e+300 0.00000000e+00 
 v nan 0.00000000e+00 0.00000000e+00 
 vt 0.00000000e+00 1.00000000e+00 
 vt 2.50000000e-01 2.00000000e+00 
 vt 3.00000000e+00 4.00000000e+00 
 vn 0.00000000e+00 0.00000000e+00 1.00000000e+00 
 vn 0.00000000e+00 1.00000000e+00 0.00000000e+00 
 vn 1.00000000e+00 0.00000000e+00 0.00000000e+00 
 f 1/1/12/2/23/3/3 
 f 8/8/84294967296/4294967296/42949672961/1/1 
 f 1/1/12/2/23/3/34/4/4 
)");
    const reading r(file);
    EXPECT_EQ(list(r.pos), list(points({{1, 2, 0}, {-0.5, 1e300, 0}})));
    EXPECT_EQ(list(r.normals), list(normals));
    EXPECT_EQ(list(r.texcoords), list(texcoords));
    EXPECT_TRUE(r.result == 0 && r.triangles.empty() && r.quads.empty());
    const auto faces = [&file](const dense2D<double>& vn, const dense2D<double>& vt) {
        EXPECT_EQ(WavefrontOBJ_output(file, flat, vn, vt, columns({{0, 1, 2}}), no_faces), 0);
        return file.content().substr(file.content().find(" f"));
    };
    EXPECT_EQ(faces(no_numbers, no_numbers), " f 1//2//3// \n");
    EXPECT_EQ(faces(normals, no_numbers), " f 1//12//23//3 \n");
    EXPECT_EQ(faces(no_numbers, texcoords), " f 1/1/2/2/3/3/ \n");
}

TEST(WavefrontOBJ, RejectsInOrderAndClosesTheFile) {
    const scratch_file file("old content");
    const auto before = open_descriptors();
    const dense2D<double> four(4, 3), one_less = normals.sub_matrix(0, 0, 3, 2);
    const auto two_rows = columns({{0, 1}});
    EXPECT_EQ(WavefrontOBJ_output(file, four, four, four, two_rows, two_rows), -2);
    EXPECT_EQ(WavefrontOBJ_output(file, flat, one_less, four, two_rows, two_rows), -3);
    EXPECT_EQ(WavefrontOBJ_output(file, flat, normals, one_less, two_rows, two_rows), -4);
    EXPECT_EQ(WavefrontOBJ_output(file, flat, normals, texcoords, two_rows, two_rows), -5);
    EXPECT_EQ(WavefrontOBJ_output(file, flat, normals, texcoords, triangles, triangles), -6);
    EXPECT_EQ(file.content(), "");
    for (const char* name :
         {static_cast<const char*>(nullptr), "/nowhere/file.obj", "/tmp", "/dev/full"}) {
        EXPECT_EQ(WavefrontOBJ_output(name, flat, normals, texcoords, triangles, quads), -1);
        const reading r(name);
        EXPECT_TRUE(r.result == -1 && r.pos.empty() && r.normals.empty() && r.texcoords.empty() &&
                    r.triangles.empty() && r.quads.empty());
    }
    EXPECT_EQ(open_descriptors(), before);
}

/// What was read, as keywords and entries; or as keywords, numbers of columns and last columns.
std::string summary(const reading& r, bool last_only = false) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    const auto add = [&text, last_only](const char* keyword, const auto& m) {
        if (!m.empty()) text << keyword;
        if (!m.empty() && last_only) text << " (" << m.cols() << ")";
        for (std::uint64_t j = last_only ? m.cols() - 1 : 0; j < m.cols(); ++j)
            for (std::uint64_t i = 0; i < m.rows(); ++i)
                text << ' ' << m(i, j);
    };
    add(" v", r.pos), add(" vt", r.texcoords), add(" vn", r.normals);
    add(" f3", r.triangles), add(" f4", r.quads);
    return text.str();
}

TEST(WavefrontOBJ, ReadsLineByLineWhatFits) {
    const std::string nul(1, '\0'), megabyte(1 << 20, ' ');
    const std::pair<std::string, std::string> cases[] = {
        {"v 1 2 3\r\n\tv\v+4 5. .6e1 7\nv 8 9-1 0.1 0.2 0.3", " v 1 2 3 4 5 6 8 9 -1"},
        {"v 1 2 x\nv 1 2\nv 1,2,3\nv1 2 3\nV 1 2 3\nv 1 2 3e\nv 1 2 0x\nv 1 2 1e999", " v 1 2 0"},
        {"v nan 1 2\nv 1 2 -inf\n#v 1 2 3\nv 1 2 3" + nul + "\nv 1 2 -1e-999", " v 1 2 3 1 2 -0"},
        {"v" + megabyte + "1 2 3\n" + megabyte + "v 4 5 6" + megabyte, " v 1 2 3 4 5 6"},
        {"vt 1\nvt 2 3\nvt 4 5 6\nvt 7 8 9 0\nvt\nvt x\nvt 1 inf", " vt 1 0 2 3 4 5 1 0"},
        {"vn 1 2\nvn 1 2 3\nvn 4 5 6 7\nvn 4 5 6 x", " vn 1 2 3 4 5 6"},
        {"f 1 2 3\nf 4/9 5//9 6/9/9\r\nf 0 00 4294967295", " f3 0 1 2 3 4 5 0 0 4294967294"},
        {"f 1 2 3 4\nf 1 2 3 4 5\nf 1 2\nf\nf 1 2 3 4 5 6", " f4 0 1 2 3"},
        {"f 1/ 2 3\nf 1// 2 3\nf 1/2/ 2 3\nf / 2 3\nf 1/2/3/4 2 3\nf 1 2 3x\nf 1//2//3//", ""},
        {"f -1 2 3\nf 1/-1 2 3\nf 1//-1 2 3\nf +1 2 3\nf 1 2.0 3\nf 1 2 3 \\\nf 1 2 3" + nul, ""},
        {"f 1 2 4294967296\nf 1/4294967296 2 3\nf 1//99999999999999999999 2 3\nf 1 2 3 # c", ""},
    };
    for (const auto& [lines, expected] : cases) {
        const reading r{scratch_file(lines)};
        EXPECT_EQ(summary(r), expected) << lines.substr(0, 99);
        EXPECT_TRUE(r.result == 0 && r.pos.rows() == 3);
    }
}

TEST(WavefrontOBJ, ReadsFilesOfOtherPrograms) {
    const char* const folder = std::getenv("KVX_ZELVO_MESHES");
    if (!folder) GTEST_SKIP() << "KVX_ZELVO_MESHES is not set: no real meshes";
    const std::pair<std::string, std::string> files[] = {
        {"continuation-polygons-crlf",
         " v (92) 7.5 12.5 -2.5 vt (92) 0.396447 0.309928 vn (92) 0.707107 0.707107 0"},
        {"gargoyle-50k", " v (24992) -0.573857 0.958507 678.686 f3 (49980) 23782 23881 23839"},
        {"joined-tetrahedra", " v (5) 0 0 -1 vn (3) -0.5 -0.866025 0 f3 (8) 2 0 1"},
        {"negative-indices", " v (8) -1 -1 1 vt (14) 0.125 0.75 vn (6) 0 0 -1"},
        {"nonmanifold-boundary", " v (75) 1.5674 -3.12696 4.54514 f3 (108) 74 71 67"},
        {"polygons-groups", " v (644) -1.92579e-16 1.37044 0.96 vn (732) -4.6021e-17 -1 "
                            "2.65506e-17 f3 (176) 641 643 640 f4 (496) 625 641 640 624"},
        {"quads-crlf", " v (1440) -5.27769 23.3625 -81.4328 vt (3) 0 0 vn (1440) 0.363569 "
                       "-0.811024 -0.45832 f4 (1440) 11 0 1428 1439"},
    };
    for (const auto& [name, expected] : files) {
        const reading r((std::string(folder) + "/" + name + ".obj").c_str());
        EXPECT_EQ(summary(r, true), expected) << name;
    }
}

} // namespace
} // namespace kvx::zelvo::tests
