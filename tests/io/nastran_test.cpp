#include <cstdlib>
#include <numeric>

#include "io/files.h"
#include "meshes.h"

namespace kvx::zelvo::tests {
namespace {

const std::string rule = "$----------------------------------------\n";
const std::string blank_comment = "$                                        \n";
std::string banner(const std::string& title) {
    return rule + blank_comment + title + blank_comment + rule;
}
std::string deck(const std::string& elements, const std::string& grid_points = {}) {
    return "$ KVX Zelvo Nastran exporter\nBEGIN BULK\n" +
           banner("$                 ELEMENTS               \n") + elements + rule +
           "$ Referenced Material Records -----------\n"
           "$ Material Record :    ------------------\n"
           "$ Description of Material :   -----------\n"
           "MAT1     1      1100.           .35 1.1E-6\n" +
           banner("$                GRID POINTS             \n") + grid_points + "ENDDATA\n";
}

const dense2D<double> no_points(3, 0);
const dense2D<unsigned int> tria = columns({{10, 11, 12, none}});

TEST(NastranOutput, WritesEveryKindAndGridPoints) {
    const auto kind_count = static_cast<unsigned>(element_node_counts.size());
    dense2D<unsigned int> conn(ET_HEXA27 + 7, kind_count);
    dense1D<unsigned int> offsets(kind_count + 1, kind_count), props(kind_count, none);
    dense1D<int> FEs(kind_count);
    for (unsigned int kind = 0; kind < kind_count; ++kind) {
        std::iota(&conn(0, kind), &conn(0, kind) + conn.rows(), 10u);
        offsets[kind] = props[kind] = kind;
        FEs[kind] = static_cast<int>(kind);
    }
    props[ET_NODE1] = none;
    FEs[ET_SOLID_MIX] = ET_FACE_MIX; // solids can be mixed in matrices of up to 8 rows only
    conn(3, ET_SOLID_MIX) = none;
    const auto pos = points({{0, -0.5, 999999.5}, {1e10, 123456.7, -1e-300}});
    const scratch_file file;
    EXPECT_EQ(NASTRAN_output(file, strided(pos, 7.0), strided(conn, 3u), offsets, FEs, props), 0);
    EXPECT_EQ(file.content(),
              deck(",1,4294967295,10,\nCBAR,3,3,10,11,\nCQUAD4,5,5,10,11,12,13,\n"
                   "CTRIA3,6,6,10,11,12,\nCQUAD4,7,7,10,11,12,13,\nCTRIA6,8,8,10,11,12,15,13,14,\n"
                   "CQUAD8,9,9,10,11,12,13,14,15,16,17,\nCTRIA3,11,11,10,11,12,\n"
                   "CTETRA,12,12,11,10,12,0,\n,13,13,10,12,11,13,15,14,16,17,19,18,\n"
                   ",16,16,10,11,12,13,14,15,\nCHEXA,18,18,10,11,12,13,14,15,16,17,\n"
                   ",19,19,10,11,12,13,14,15,16,17,26,25,29,22,18,19,20,21,27,24,28,23,\n",
                   "GRID*   0               0.00000         -0.500000       \n*       1.00000e+06\n"
                   "GRID*   1               1.00000e+10     123457.         \n"
                   "*       -1.00000e-300\n"));
    const auto solids = columns({{9, 9, 9, 9, 9, 9, 9, 9},
                                 {0, 1, 2, 3, none, none, none, none},
                                 {0, 1, 2, 3, 4, none, none, none},
                                 {0, 1, 2, 3, 4, 5, none, none},
                                 {0, 1, 2, 3, 4, 5, 6, 7}});
    EXPECT_EQ(NASTRAN_output(file, no_points, solids, vec({1, 5}), dense1D<int>(1, ET_SOLID_MIX),
                             vec({7, 7, 7, 9, 9})),
              0);
    EXPECT_EQ(file.content(), deck("CTETRA,1,7,1,0,2,0,\nCPENTA,2,7,0,1,2,3,4,\n"
                                   ",3,9,0,1,2,3,4,5,\nCHEXA,4,9,0,1,2,3,4,5,6,7,\n"));
    EXPECT_EQ(NASTRAN_output(file, no_points, columns({{5, 6}}), tria, ET_BAR2, ET_FACE_MIX), 0);
    EXPECT_EQ(file.content(), deck("CBAR,0,1,5,6,\nCTRIA3,1,2,10,11,12,\n"));
}

TEST(NastranOutput, RejectsInOrderAndLeavesTheFileEmpty) {
    const scratch_file file("old content");
    const auto write = [&](const dense2D<double>& pos, std::initializer_list<unsigned> offsets,
                           std::uint64_t groups, int kind, std::uint64_t props) {
        return NASTRAN_output(file, pos, tria, vec(offsets), dense1D<int>(groups, kind),
                              dense1D<unsigned>(props));
    };
    EXPECT_EQ(write(dense2D<double>(2, 1), {0}, 1, ET_HEXA8, 2), -2);
    EXPECT_EQ(write(no_points, {0}, 1, ET_HEXA8, 2), -5);
    EXPECT_EQ(write(no_points, {}, 0, ET_HEXA8, 2), -5);
    EXPECT_EQ(write(no_points, {0, 2}, 1, ET_HEXA8, 2), -5);
    EXPECT_EQ(write(no_points, {1, 0}, 1, ET_HEXA8, 2), -5);
    EXPECT_EQ(write(no_points, {0, 1}, 1, ET_HEXA8, 2), -6);
    for (const int kind : {static_cast<int>(ET_HEXA8), static_cast<int>(ET_BAR3) + 100, -1})
        EXPECT_EQ(write(no_points, {0, 1}, 1, kind, 1), -3);
    EXPECT_EQ(NASTRAN_output(file, no_points, columns({{0}, {0}}), ET_NODE1), -6);
    EXPECT_EQ(NASTRAN_output(file, no_points, tria, dense2D<unsigned>(0, 9), ET_TRIA3, ET_BAR2),
              -6);
    EXPECT_EQ(NASTRAN_output(file, no_points, dense2D<unsigned>(10, 1), ET_SOLID_MIX), -3);
    EXPECT_EQ(file.content(), "");
    for (const char* name : {static_cast<const char*>(nullptr), "/nowhere/deck.bdf", "/tmp"}) {
        EXPECT_EQ(NASTRAN_output(name, dense2D<double>(2, 1), tria, ET_TRIA3), -1);
        EXPECT_EQ(NASTRAN_output(name, dense2D<double>(), dense2D<unsigned>(3, 0), ET_BAR2), 0);
    }
}

struct reading {
    dense2D<double> pos{2, 5};
    dense2D<unsigned int> conn{7, 1};
    dense1D<unsigned int> offsets{3}, props{3};
    dense1D<int> FEs{3};
    int code;

    explicit reading(const char* file)
        : code(NASTRAN_input(file, pos, conn, offsets, FEs, props)) {}
    /// "|kind:node,node kind:..." with a '|' before every group and '-' for no_node.
    std::string elements() const {
        std::string text;
        for (std::uint64_t g = 0; g < FEs.size(); ++g) {
            for (std::uint64_t j = offsets[g]; j < offsets[g + 1]; ++j) {
                text += (j == offsets[g] ? "|" : " ") + std::to_string(FEs[g]);
                for (const unsigned int node : list(conn.col(j)))
                    text += node == none ? ",-" : "," + std::to_string(node);
            }
        }
        return text;
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
        {"GRID, 5, 1.5-3, 1.5D+3, 2", {1.5, 1.5, 0}},
        {"GRID           5        112.001664.7919323.51444\n", {112.0016, 64.79193, 23.51444}},
        {"GRID 5 4. 112.001664.7919323.51444\n", {4, 112.0016, 64.79193}},
        {"GRID* 5 1.5 2.5\n* 3.5\nENDDATA", {1.5, 2.5, 3.5}},
        {"GRID*,5,2,1.5,2.5,5\r\n$*\n\n*5,5,3.5\n", {1.5, 2.5, 3.5}},
        {"GRID* 5 1.5 2.5 +\n+ 3.5\n", {1.5, 2.5, 0}},
        {"GRID* 5 1.5 2.5\n*\nGRID,2,,8.\n", {1.5, 2.5, 0}},
        {"GRID* 5 1.5 2.5", {1.5, 2.5, 0}},
        {"GRID* 5\n* 3.5", {3.5, 0, 0}},
        {"GRID 5 9.\nGRID 5 1.\nGRID -1 2.\nGRID -4294967291 2.\nGRID\nGRID 4294967295 2.\n"
         "GRID 99999999999999999999 2.\n$ ENDDATA\nGRID 4 0.\nENDDATA\nGRID 9 2.\n",
         {1, 0, 0}},
    };
    for (const auto& [cards, x] : cases) {
        const reading mesh = read_bulk(cards);
        EXPECT_EQ(mesh.code, -1); // no element
        ASSERT_EQ(mesh.pos.cols(), 6u) << cards;
        EXPECT_EQ(list(mesh.pos.sub_matrix(0, 4, 3, 2)), list(points({{0, 0, 0}, x}))) << cards;
        EXPECT_EQ(list(mesh.offsets), list(vec({0, 0})));
    }
}

TEST(NastranInput, ReadsElements) {
    const std::string hexahedron = "|18,0,1,2,3,4,5,6,7";
    const std::pair<std::string, std::string> cases[] = {
        {"BAR,1,7,3,4\nCBAR,1,7,3,-1\nBEAM,1,7,3,4\nCBEAM 1 7 3 4\nROD 1 7 3 4\n CROD 1 7 3 4\n",
         "|3,3,4 3,3,- 3,3,4 3,3,4 3,3,4 3,3,4"},
        {"TRIA6 9 7 0 1 2 3 4 5 theta\nCTETRA,9,7,0,1,2,3,\nCPENTA,9,7,0,1,2,3,4,5\n",
         "|8,0,1,2,4,5,3|12,0,2,1,3,-,-|14,-,-,-,-,-,-"},
        {"CQUAD8 9 7 0 1 2 3 4 5 +A\n+A 6 7\n", "|9,0,1,2,3,4,5,6,7"},
        {"CHEXA,9,7,0,1,2,3,4,5\n$\n,6,7,8\n", hexahedron},
        {"CHEXA 9 7 0 1 2 3 4 5 $ the rest\n  6\n +B 7\n", hexahedron},
        {"HEXA* 9 7 0 1 *\n* 2 3 4 5\n* 6 7\n* 8\n", hexahedron},
        {"CQUAD4 9 7 0 1 2\nTRIA3 9 7 x 4294967296 2\nCTRIA3 9 7 0 1\n", "|6,0,-,2"},
        {"MAT1* 1 2\n* 4\n* 5\n$*\nROD 1 7 3 4\nPROD*\nROD 1 7 8 9\n,\nCCBAR 1 7 8 9\nrod 1 7 8 9",
         "|3,3,4"},
        {"CTRIA3,9,7,0,1,2\nCQUAD4,9,7,0,1,2,3\nCTRIA3,9,7,2,1,0\n",
         "|6,0,1,2,-|7,0,1,2,3|6,2,1,0,-"},
    };
    for (const auto& [cards, elements] : cases) {
        const reading mesh = read_bulk("GRID 1 1.\n" + cards);
        EXPECT_EQ(mesh.code, 0);
        EXPECT_EQ(mesh.elements(), elements) << cards;
        EXPECT_EQ(list(mesh.props), std::vector<unsigned>(mesh.conn.cols(), 7)) << cards;
    }
}

TEST(NastranInput, FollowsTheFileInTimeAndMemory) {
    std::string cards = "GRID 1 2.\nCHEXA,1,1,2";
    for (int i = 0; i < 300'000; ++i)
        cards += "\n+";
    cards += "\nCROD 1 7 3 4 ";
    cards.append(3'000'000, ',').append(3'000'000, 'x').append("\nCBAR 1 7 5 6 +\n+");
    EXPECT_EQ(read_bulk(cards).elements(), "|3,3,4 3,5,6");
#ifndef __SANITIZE_ADDRESS__ // which would abort
    const reading far = read_bulk("ROD 1 7 3 4\nGRID 4294967294 7.");
    if (far.code == 0) { // where the system promises memory that is not used
        EXPECT_EQ(far.pos(0, 4294967294), 7.0);
    } else {
        EXPECT_EQ(far.code, -199);
        EXPECT_TRUE(far.pos.empty() && far.conn.empty() && far.offsets.empty());
    }
#endif
}

TEST(NastranInput, EmptiesOutputsOrSharesTheGroupsOut) {
    const scratch_file no_bulk("GRID 1 2.\nROD 1 1 0 1"), bare("BEGIN BULK\nGRID 0 1.");
    for (const char* name : {static_cast<const char*>(no_bulk), "/nowhere", "/tmp", "/dev/zero"}) {
        const reading mesh(name);
        EXPECT_EQ(mesh.code, -1);
        EXPECT_TRUE(mesh.pos.empty() && mesh.conn.empty() && mesh.offsets.empty() &&
                    mesh.FEs.empty() && mesh.props.empty());
    }
    const std::string cards = "$ BEGIN BULK\nQUAD4 1 1 0 1 2 3\nTRIA3 1 2 0 1 2\nROD 1 3 0 1\n";
    const scratch_file no_nodes(cards), file(cards + "GRID 3 1.\n");
    dense2D<double> pos;
    dense2D<unsigned int> conn1, conn2;
    element_type FE1 = ET_BAR3, FE2 = ET_BAR3;
    EXPECT_EQ(NASTRAN_input(nullptr, pos, conn1, FE1), -1);
    EXPECT_EQ(NASTRAN_input(no_nodes, pos, conn1, FE1), -1);
    EXPECT_EQ(FE1, ET_BAR3);
    EXPECT_EQ(NASTRAN_input(file, pos, conn1, FE1), 0);
    EXPECT_EQ(FE1, ET_NODE_MIX);
    EXPECT_EQ(list(conn1), list(columns({{0, 1, 2, 3}, {0, 1, 2, none}, {0, 1, none, none}})));
    EXPECT_EQ(NASTRAN_input(file, pos, conn1, conn2, FE1, FE2), 0);
    EXPECT_EQ(list(conn1), list(columns({{0, 1, 2, 3}})));
    EXPECT_EQ(list(conn2), list(columns({{0, 1, 2}})));
    EXPECT_TRUE(FE1 == ET_QUAD4 && FE2 == ET_TRIA3);
    EXPECT_EQ(NASTRAN_input(bare, pos, conn1, conn2, FE1, FE2), -1);
    EXPECT_TRUE(conn1.empty() && conn2.empty() && FE1 == ET_NODE_MIX && FE2 == ET_NODE_MIX);
    EXPECT_EQ(pos.cols(), 1u);
}

TEST(NastranInput, ReadsDecksOfOtherPrograms) {
    const char* const folder = std::getenv("KVX_ZELVO_MESHES");
    if (!folder) GTEST_SKIP() << "KVX_ZELVO_MESHES is not set";
    // nodes, elements, groups; a node and its coordinates; nodes of the first element
    const std::pair<std::string, std::vector<double>> cases[] = {
        {"bars-wedges", {23, 10, 2, 22, 495, 140, 0, 1, 2}},
        {"exponent-without-e", {16558, 3540, 13, 11031, 1, 4, 3, 11255, 11256, 12752, 12751}},
        {"exponent-without-e", {16558, 3540, 13, 16557, 121.8612, 0.023, 82.6018}},
        {"free-field", {16, 8, 1, 14, 3, 2, 0, 1, 2, 7, 6}},
        {"large-field-elements", {173, 480, 24, 172, 2418, 4.31591, 1800, 25, 36}},
        {"large-field-grid", {170, 144, 1, 1, 8.12593, 99652, 23.03465, 49, 60, 61, 50}},
        {"penta-hexa-tria-quad", {336, 25, 4, 324, 0.75, 0.2, 0, none, none, none, none, none}},
        {"small-field-mixed", {37, 26, 2, 36, 10, 10, 0, 1, 2, 8, 7}},
        {"swept-wing-quads", {4463, 4584, 1, 4462, 227.274, 3420.333, 4, 11, 12, 49, 48}},
        {"tetra-quad-contact", {790, 1551, 2, 696, 20, 66.99337, 4.8822, 481, 687, 482, 501}},
    };
    for (const auto& [name, expected] : cases) {
        const reading mesh((std::string(folder) + "/" + name + ".bdf").c_str());
        EXPECT_EQ(mesh.code, 0) << name;
        std::vector<double> read = {double(mesh.pos.cols()), double(mesh.conn.cols()),
                                    double(mesh.FEs.size()), expected[3]};
        for (const double x : list(mesh.pos.col(static_cast<std::uint64_t>(expected[3]))))
            read.push_back(x);
        for (std::uint64_t i = 0; read.size() < expected.size(); ++i)
            read.push_back(mesh.conn(i, 0));
        EXPECT_EQ(read, expected) << name;
    }
}

} // namespace
} // namespace kvx::zelvo::tests
