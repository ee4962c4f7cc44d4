#include <bit>
#include <cmath>

#include "io/files.h"
#include "random_meshes.h"

namespace kvx::zelvo::tests {
namespace {

// Two facets that share an edge:
//
//   2 --- 3
//   | \   |
//   0 --- 1
const dense2D<double> square = points({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
const dense2D<unsigned int> facets = columns({{0, 1, 2}, {2, 1, 3}});
const dense2D<unsigned int> one_facet = columns({{0, 1, 2}});

std::string written(const dense2D<double>& pos, const dense2D<unsigned int>& conn, bool ascii) {
    const scratch_file file;
    EXPECT_EQ(STL_output(file, pos, conn, ascii), 0);
    return file.content();
}

struct reading {
    dense2D<double> pos{2, 5};
    dense2D<unsigned int> conn{7, 1};
    STL_report report;
    int result;

    reading(const char* file, bool ascii, double tolerance = NAN)
        : result(STL_input(file, pos, conn, ascii, tolerance, report)) {}
};
reading read_text(const std::string& content, bool ascii = true, double tolerance = NAN) {
    return {scratch_file(content), ascii, tolerance};
}

TEST(StlOutput, WritesLikeThePlainWriter) {
    often(1000, [](engine& random) {
        const unsigned step = below(random, 40) == 0 ? 2048 : 1; // far nodes share their places
        const auto pos = random_lattice(random, 2 + below(random, 2), 8 * step + 1);
        const auto conn =
            random_matrix(random, 3, below(random, 5), [&] { return step * below(random, 9); });
        std::string text = "solid KVX\n";
        const auto add = [&](const char* words, const std::vector<double>& x) {
            char line[99];
            std::snprintf(line, sizeof line, "%s %e %e %e\n", words, x[0], x[1], x[2]);
            text += line;
        };
        for (const auto& facet : list(conn)) {
            std::vector<std::vector<double>> p;
            for (const unsigned node : facet)
                p.push_back(list(pos.col(node))), p.back().resize(3);
            std::vector<double> n(3);
            for (unsigned i = 0, j = 1, k = 2; i < 3; j = k, k = i++)
                n[i] = (p[1][j] - p[0][j]) * (p[2][k] - p[0][k]) -
                       (p[1][k] - p[0][k]) * (p[2][j] - p[0][j]);
            const double length = std::hypot(n[0], n[1], n[2]);
            for (double& x : n)
                x = length > 0 ? x / length : 0;
            add("   facet normal", n);
            text += "      outer loop\n";
            for (const auto& x : p)
                add("         vertex", x);
            text += "      endloop\n   endfacet\n";
        }
        ASSERT_EQ(written(pos, conn, true), text + "endsolid KVX\n");
    });
}

TEST(StlOutput, WritesBinaryBytes) {
    std::string expected = "KVX STL Binary" + std::string(66, '\0') + std::string("\1\0\0\0", 4);
    for (const float x : {0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 2.f, 0.f, 0.f, 0.f, INFINITY, 0.f})
        expected.append(std::bit_cast<std::array<char, 4>>(x).data(), 4);
    EXPECT_EQ(written(points({{0, 0}, {2, 0}, {0, 1e300}}), one_facet, false),
              expected + std::string(2, '\0'));
}

TEST(StlOutput, NormalsAreUnitVectorsOrZero) {
    const dense2D<double> pos = points(
        {{0, 0, 0}, {1e-200, 0, 0}, {0, 1e-200, 1e-200}, {2, 0, 0}, {INFINITY, 0, 0}, {0, NAN, 0}});
    const std::string text = written(pos, columns({{0, 1, 2}, {0, 1, 3}, {0, 4, 5}}), true);
    EXPECT_THAT(text, testing::HasSubstr(" 0.000000e+00 -7.071068e-01 7.071068e-01\n"));
    EXPECT_THAT(text, testing::Not(testing::ContainsRegex("normal [^\n]*nan")));
}

TEST(StlInput, CleansByTheSmallestPositiveHeightOrAsTold) {
    // facets without area or with a coordinate that is no finite number do not count; alone they
    // stay as they are
    for (const double x : {0.0, 0.5, double{NAN}, double{INFINITY}}) {
        const dense2D<double> pos =
            points({{0, 0, 0}, {1, 0, 0}, {x, 0, 0}, {3, 4, 0}, {0.5, -0.01, 0}});
        EXPECT_EQ(list(read_text(written(pos, columns({{0, 1, 2}, {0, 0, 1}}), true)).conn),
                  list(columns({{0, 1, 2}, {3, 4, 5}})));
        const std::string all = written(pos, columns({{0, 1, 2}, {0, 1, 3}, {1, 0, 4}}), true);
        EXPECT_NEAR(read_text(all).report.tolerance, 0.05 * 0.01, 1e-15) << x;
    }
    const reading refused = read_text(written(square, facets, true), true, -1.0);
    EXPECT_EQ(refused.result, -5);
    EXPECT_TRUE(refused.pos.empty() && refused.conn.empty());
}

TEST(StlInput, CleansLikeThePlainProcedure) {
    often(80, [](engine& random) {
        const unsigned n = below(random, 40) == 0 ? 900 : 1 + below(random, 30);
        dense2D<double> pos(3, 3 * n);
        dense2D<unsigned> conn(3, n);
        std::iota(conn.data(), conn.data() + 3 * n, 0u);
        std::generate_n(pos.data(), 9 * n, [&] {
            const double near = one_of(random, {0.0, 0.0, 3.0 / 64, 1.0 / 64});
            return below(random, 9) > 0 ? near + below(random, 3 + n / 20)
                                        : one_of(random, {-0.0, -0.0, nan, inf});
        });
        const bool ascii = n < 31 && below(random, 2) == 0;
        double tol = one_of(random, {n < 31 ? nan : 0.25, 0.0, 1.0 / 64, 0.5});
        const scratch_file file(written(pos, conn, ascii));
        reading r(file, ascii, tol);
        const bool derive = std::isnan(tol);
        for (unsigned j = 0; derive && j < n; ++j) {
            const std::string facet = written(pos, conn.sub_matrix(0, j, 3, 1), false);
            const double derived = read_text(facet, false).report.tolerance;
            if (derived > 0 && !(derived >= tol)) tol = derived;
        }
        dense1D<unsigned> ids;
        if (tol >= 0) {
            EXPECT_EQ(r.report.merged_nodes, merge(pos, conn, ids, tol, 0));
            EXPECT_EQ(r.report.removed_elements, remove_degenerated(conn, ids, true));
            EXPECT_EQ(r.report.removed_nodes, simplify(pos, conn, 0));
        }
        EXPECT_EQ(r.report.announced_facets, ascii ? 0 : n);
        EXPECT_EQ(derive ? STL_input(file, r.pos, r.conn, ascii) : r.result, conn.cols());
        EXPECT_EQ(list(r.conn), list(conn));
        EXPECT_TRUE(alike(r.pos, pos) && written(r.pos, conn, false) == written(pos, conn, false));
    });
}

TEST(StlInput, ReadsTheAsciiFormAsItIsScanned) {
    const auto facet = [](const std::string& name, const std::string& vertex) {
        return name + " 0 0 1\nloop\n" + vertex + " 0 0 0 " + vertex + "+1 0 -0.e0\r\n" + vertex +
               " 0\n\n1 0 endloop\nendfacet\n";
    };
    const std::string good = facet("facet normal", "vertex"), line(300000, 's'), nul(1, '\0');
    const auto expect = [](const std::string& text, int whole, std::uint64_t unread) {
        const reading r = read_text(text);
        EXPECT_EQ(r.result, whole) << text.substr(0, 99);
        EXPECT_EQ(r.report.unread_bytes, unread) << text.substr(0, 99);
    };
    expect(line + nul + "\n" + good + "endsolid\n \r\n", 1, 0);
    expect(std::string("\n") + facet("\t facet\n\nnormal", "\v vertex") + "  endsolid a b", 1, 0);
    expect("s\n" + good + good + "endsolid\nsolid\n" + good, 2, 6 + good.size());
    expect(std::string("s\n") + facet("facetnormal", "VERTEX"), 0, good.size() - 1);
    expect("s\n" + good + "facet normal 0 0\nendsolid", 1, 25);
    const std::string none = written(square, facets, false).replace(80, 4, 4, '\0');
    EXPECT_EQ(read_text(none, false).report.unread_bytes, 100u);
}

TEST(StlDetect, TellsTheFormBySizeAndContent) {
    const std::string binary = written(square, facets, false), nuls(200, '\0');
    const std::string zero = std::string(binary).replace(80, 4, 4, '\0');
    const std::string solid = "solid of steel" + binary.substr(14);
    const auto expect = [](STL_format format, const std::vector<std::string>& contents) {
        for (const std::string& content : contents)
            EXPECT_EQ(STL_detect(scratch_file(content)), format) << content << content.size();
    };
    expect(STL_format::ascii, {written(square, facets, true), "\xEF\xBB\xBF \r\n\tSOLID"});
    expect(STL_format::binary, {solid, solid + '\n', binary.substr(0, 134), zero});
    expect(STL_format::unknown, {"", "soli" + std::string(500, 'v'), "\x89PNG\n\x1a" + nuls,
                                 "\n" + solid, binary.substr(0, 133)});
}

} // namespace
} // namespace kvx::zelvo::tests
