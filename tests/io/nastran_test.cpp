#include <cstdlib>
#include <numeric>
#include <random>

#include "io/files.h"
#include "meshes.h"

namespace kvx::zelvo::tests {
namespace {

std::string deck(const std::string& elements, const std::string& grid_points = {}) {
    const std::string rule = "$" + std::string(40, '-') + "\n",
                      blank = "$" + std::string(40, ' ') + "\n";
    return "$ KVX Zelvo Nastran exporter\nBEGIN BULK\n" + rule + blank +
           "$                 ELEMENTS               \n" + blank + rule + elements + rule +
           "$ Referenced Material Records -----------\n$ Material Record :    "
           "------------------\n$ Description of Material :   -----------\n"
           "MAT1     1      1100.           .35 1.1E-6\n" +
           rule + blank + "$                GRID POINTS             \n" + blank + rule +
           grid_points + "ENDDATA\n";
}

const dense2D<double> no_points(3, 0);
const dense2D<unsigned int> tria = columns({{10, 11, 12, none}});

TEST(NastranOutput, WritesEveryKindAndGridPoints) {
    constexpr auto n = static_cast<unsigned>(element_node_counts.size());
    dense2D<unsigned int> conn(ET_HEXA27 + 7, n);
    dense1D<unsigned int> offsets(n + 1), props;
    dense1D<int> FEs(n);
    for (unsigned int kind = 0; kind < n; ++kind)
        std::iota(&conn(0, kind), &conn(0, kind) + conn.rows(), 10u);
    std::iota(offsets.begin(), offsets.end(), 0u);
    ASSERT_TRUE(props.copy(offsets.sub_vector(0, n)));
    std::iota(FEs.begin(), FEs.end(), 0);
    FEs[ET_SOLID_MIX] = ET_FACE_MIX; // solids can be mixed in matrices of up to 8 rows only
    conn(3, ET_SOLID_MIX) = none;
    const auto pos = points({{0, -0.5, 999999.5}, {1e10, 123456.7, -1e-300}});
    const scratch_file file;
    EXPECT_EQ(NASTRAN_output(file, strided(pos, 7.0), strided(conn, 3u), offsets, FEs, props), 0);
    EXPECT_EQ(file.content(),
              deck(",1,1,10,\nCBAR,3,3,10,11,\nCQUAD4,5,5,10,11,12,13,\n"
                   "CTRIA3,6,6,10,11,12,\nCQUAD4,7,7,10,11,12,13,\nCTRIA6,8,8,10,11,12,15,13,14,\n"
                   "CQUAD8,9,9,10,11,12,13,14,15,16,17,\nCTRIA3,11,11,10,11,12,\n"
                   "CTETRA,12,12,11,10,12,0,\n,13,13,10,12,11,13,15,14,16,17,19,18,\n"
                   ",16,16,10,11,12,13,14,15,\nCHEXA,18,18,10,11,12,13,14,15,16,17,\n"
                   ",19,19,10,11,12,13,14,15,16,17,26,25,29,22,18,19,20,21,27,24,28,23,\n",
                   "GRID*   0               0.00000         -0.500000       \n*       1.00000e+06\n"
                   "GRID*   1               1.00000e+10     123457.         \n"
                   "*       -1.00000e-300\n"));
    dense2D<unsigned int> solids(8, 4, none);
    for (unsigned int j = 0; j < 4; ++j)
        std::iota(&solids(0, j), &solids(0, j) + std::array{4, 5, 6, 8}[j], 0u);
    FEs = dense1D<int>(1, ET_SOLID_MIX);
    EXPECT_EQ(NASTRAN_output(file, no_points, solids, vec({1, 4}), FEs, vec({7, 7, 9, 9})), 0);
    EXPECT_EQ(file.content(), deck("CPENTA,1,7,0,1,2,3,4,\n,2,9,0,1,2,3,4,5,\n"
                                   "CHEXA,3,9,0,1,2,3,4,5,6,7,\n"));
    EXPECT_EQ(NASTRAN_output(file, no_points, columns({{5, 6}}), tria, ET_BAR2, ET_FACE_MIX), 0);
    EXPECT_EQ(file.content(), deck("CBAR,0,1,5,6,\nCTRIA3,1,2,10,11,12,\n"));
}

struct reading {
    dense2D<double> pos{2, 5};
    dense2D<unsigned int> conn{7, 1};
    dense1D<unsigned int> offsets{3}, props{3};
    dense1D<int> FEs{3};
    int code;

    explicit reading(const char* file)
        : code(NASTRAN_input(file, pos, conn, offsets, FEs, props)) {}
    bool empty() const {
        return pos.empty() && conn.empty() && offsets.empty() && FEs.empty() && props.empty();
    }
};
reading read_bulk(const std::string& cards) {
    return reading(scratch_file("CEND\nCBAR,9,9,9,9\nBEGIN BULK\n" + cards));
}

TEST(NastranInput, ReadsGridPoints) {
    const std::pair<std::string, std::vector<double>> cases[] = {
        {"GRID,5,,1.5,2.5,3.5\n", {1.5, 2.5, 0}},
        {"GRID    5       0       1.5     2.5     3.5\n", {1.5, 2.5, 0}},
        {"GRID\t5               1.5     2.5     3.5\r\n", {1.5, 2.5, 3.5}},
        {"GRID, 5, 7, 1.5, 2.5, 3.5, 9.\n", {1.5, 2.5, 3.5}},
        {"GRID, 5, 1.5-3, $, 1.5D+3, 2.", {1.5, 1.5, 0}},
        {"GRID           5        112.001664.7919323.51444\n", {112.0016, 64.79193, 23.51444}},
        {"GRID 5 4. 112.001664.7919323.51444\n", {4, 112.0016, 64.79193}},
        {"GRID* 5 1.5 2.5\n* 3.5\nENDDATA", {1.5, 2.5, 3.5}},
        {"GRID*,5,2,1.5,2.5,5\r\n$*\n\n*5,5,3.5\n", {1.5, 2.5, 3.5}},
        {"GRID* 5 1.5 2.5\n*\nGRID,2,,0.\n", {1.5, 2.5, 0}},
        {"GRID* 5 1.5 2.5", {1.5, 2.5, 0}},
        {"GRID 5 9.\nGRID 5 1.\nGRID -1 2.\nGRID -4294967291 2.\nGRID\nGRID 4294967295 2.\n"
         "GRID 99999999999999999999 2.\n$ ENDDATA\nGRID 4 0.\nENDDATA\nGRID 9 2.\n",
         {1, 0, 0}},
    };
    for (const auto& [cards, x] : cases) {
        const std::vector<double> o = {0, 0, 0};
        EXPECT_THAT(list(read_bulk(cards).pos), testing::ElementsAre(o, o, o, o, o, x)) << cards;
    }
}

TEST(NastranInput, ReadsElements) {
    const std::vector<std::vector<unsigned>> hexahedron = {{0, 1, 2, 3, 4, 5, 6, 7}};
    const std::tuple<std::string, std::vector<int>, std::vector<std::vector<unsigned>>> cases[] = {
        {"BAR,1,7,3,4\nCBAR,1,7,3,-1\nBEAM 1 7 3 4\n", {3}, {{3, 4}, {3, none}, {3, 4}}},
        {"TRIA6 9 7 0 1 2 3 4 5 theta\nCTETRA,9,7,0,1,2,3,\nCPENTA,9,7,0,1,2,3,4,5\n",
         {8, 12, 14},
         {{0, 1, 2, 4, 5, 3}, {0, 2, 1, 3, none, none}, std::vector<unsigned>(6, none)}},
        {"CQUAD8 9 7 0 1 2 3 +A\n+A 4 +5\n $ c\n\n 5\n,6\n +B 7\n", {9}, hexahedron},
        {"HEXA* 9 7 0 1 +\n* 2 3 4 5\n*A 6 7\n", {18}, hexahedron},
        {"TRIA3 9 7 1 $ 2\nTRIA3*,9,7,1,*A\n*A,2\n", {6}, {{1, 0, 2}, {1, 0, 2}}},
        {"CQUAD4 9 7 0 1 2\nTRIA3 9 7 x 4294967296 2\nCTRIA3 9 7 0 1\n", {6}, {{0, none, 2}}},
        {"M* 1\n* 4\n ROD 1 7 3 4\nROD 1 7 1\n* 5\nROD 1 7 8 9\n,\nrod 1 7 8 9", {3}, {{3, 4}}},
        {"CTRIA3,9,7,0,1,2\nCQUAD4,9,7,0,1,2,3\nCTRIA3,9,7,2,1,0\n",
         {6, 7, 6},
         {{0, 1, 2, none}, {0, 1, 2, 3}, {2, 1, 0, none}}},
    };
    for (const auto& [cards, FEs, elements] : cases) {
        const reading mesh = read_bulk("GRID 1 1.\n" + cards);
        EXPECT_EQ(list(mesh.FEs), FEs) << cards;
        EXPECT_EQ(list(mesh.conn), elements) << cards;
        EXPECT_EQ(list(mesh.props), std::vector<unsigned>(mesh.conn.cols(), 7)) << cards;
        EXPECT_EQ(mesh.offsets[FEs.size()], mesh.conn.cols());
    }
}

// Indented lines are split before they are read.
TEST(NastranInput, ReadsPlainCardsAsItReadsSplitOnes) {
    const std::string fields[] = {"1",  "-.25",  "0123456789", "2.5e-3",    "7e1",
                                  "+4", "1.5-3", "1.2.",       "x",         "ENDDATA2",
                                  "",   "-4",    "$",          "4294967296"};
    std::mt19937 random;
    for (unsigned i = 0; i < 5000; ++i) {
        std::string card = std::array{"GRID", "GRIDX", "CTETRA", "PENTA", "ROD"}[random() % 5];
        for (std::size_t k = 0; k < 9; ++k)
            card += std::array{" ", ",", "\t ", ", ", " ,", "       "}[random() % (4 + i % 3)] +
                    (random() % 8 == 0 && k > 0 ? fields[random() % std::size(fields)]
                                                : fields[k > 0 && card[0] == 'G']);
        const auto read = [](const std::string& deck) {
            const reading mesh = read_bulk(deck + "\nGRID 9 1.\nROD 1 1 3 4\n");
            return std::tuple(list(mesh.pos), list(mesh.conn), list(mesh.props), list(mesh.FEs));
        };
        ASSERT_EQ(read(card), read(" " + card)) << card;
    }
}

TEST(NastranInput, EmptiesOutputsOrSharesTheGroupsOut) {
    const scratch_file no_bulk("GRID 1 2.\nROD 1 1 0 1"), bare("BEGIN BULK\nGRID 0 1.");
    EXPECT_TRUE(reading(no_bulk).code == -1 && reading(no_bulk).empty());
    const std::string cards = "$ BEGIN BULK\nQUAD4 1 1 0 1 2 3\nTRIA3 1 2 0 1 2\nROD 1 3 0 1\n";
    const scratch_file no_nodes(cards), file(cards + "GRID 3 1.\n");
    dense2D<double> pos;
    dense2D<unsigned int> conn1, conn2;
    element_type FE1 = ET_BAR3, FE2 = ET_BAR3;
    EXPECT_TRUE(NASTRAN_input(no_nodes, pos, conn1, FE1) == -1 && FE1 == ET_BAR3);
    EXPECT_TRUE(NASTRAN_input(file, pos, conn1, FE1) == 0 && FE1 == ET_NODE_MIX);
    EXPECT_EQ(list(conn1), list(columns({{0, 1, 2, 3}, {0, 1, 2, none}, {0, 1, none, none}})));
    EXPECT_TRUE(NASTRAN_input(file, pos, conn1, conn2, FE1, FE2) == 0 && FE1 == 7 && FE2 == 6);
    EXPECT_EQ(list(conn1), list(columns({{0, 1, 2, 3}})));
    EXPECT_EQ(list(conn2), list(columns({{0, 1, 2}})));
    EXPECT_EQ(NASTRAN_input(bare, pos, conn1, conn2, FE1, FE2), -1);
    EXPECT_TRUE(conn1.empty() && conn2.empty() && FE1 == 0 && FE2 == 0 && pos.cols() == 1);
}

TEST(NastranInput, ReadsDecksOfOtherPrograms) {
    const char* const folder = std::getenv("KVX_ZELVO_MESHES");
    if (!folder) GTEST_SKIP() << "KVX_ZELVO_MESHES is not set";
    const std::tuple<std::string, std::array<std::uint64_t, 4>, std::vector<double>> cases[] = {
        {"bars-wedges", {23, 10, 2, 22}, {495, 140, 0}},
        {"exponent-without-e", {16558, 3540, 13, 11031}, {1, 4, 3}},
        {"free-field", {16, 8, 1, 14}, {3, 2, 0}},
        {"large-field-elements", {173, 480, 24, 172}, {2418, 4.31591, 1800}},
        {"large-field-grid", {170, 144, 1, 1}, {8.12593, 99652, 23.03465}},
        {"penta-hexa-tria-quad", {336, 25, 4, 324}, {0.75, 0.2, 0}},
        {"small-field-mixed", {37, 26, 2, 36}, {10, 10, 0}},
        {"swept-wing-quads", {4463, 4584, 1, 4462}, {227.274, 3420.333, 4}},
        {"tetra-quad-contact", {790, 1551, 2, 696}, {20, 66.99337, 4.8822}},
    };
    for (const auto& [name, sizes, x] : cases) {
        const reading mesh((std::string(folder) + "/" + name + ".bdf").c_str());
        EXPECT_THAT(sizes, testing::ElementsAre(mesh.pos.cols(), mesh.conn.cols(), mesh.FEs.size(),
                                                testing::_));
        EXPECT_EQ(list(mesh.pos.col(sizes[3])), x) << name;
    }
}

} // namespace
} // namespace kvx::zelvo::tests
