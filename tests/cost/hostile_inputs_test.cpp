#include <bit>
#include <functional>
#include <numeric>

#include <sys/resource.h>

#include "foundation/appending.h"
#include "foundation/hashing.h"
#include "meshes.h"

/// The compiler's hook at the head of every basic block of the library's sources in this program.
static std::uint64_t steps = 0;
extern "C" void __sanitizer_cov_trace_pc() { // NOLINT
    ++steps;
}

/// What calls cost on inputs made to defeat hashing, buckets and trees: in steps of the program
/// instead of seconds, and on a small stack, which recursion a node deep would leave.
namespace kvx::zelvo::tests {

constexpr unsigned int nodes = 8192;

struct mesh {
    dense2D<double> pos = dense2D<double>(2, nodes);
    dense2D<unsigned int> conn = dense2D<unsigned int>(3, nodes - 2);
    dense2D<unsigned int> neighbors, sides;
    dense1D<unsigned int> list, offsets;
};
using numbering = std::function<unsigned(unsigned)>;
using placing = std::function<double(unsigned, unsigned)>;

/// Triangles on each three nodes in a row, or all round one node.
mesh strip(const numbering& number, unsigned hub, const placing& place) {
    mesh m;
    for (unsigned i = 0; i < nodes; ++i)
        for (unsigned k = 0; k < 3; ++k) {
            if (k < 2) m.pos(k, number(i)) = place(k, i);
            if (i + 2 < nodes) m.conn(k, i) = k == 0 && hub != none ? hub : number(i + k);
        }
    return m;
}

std::uint64_t steps_of(void (*call)(mesh&), mesh m) {
    steps = 0;
    call(m);
    return steps;
}

TEST(hostile_inputs, cost_little_more_than_friendly_ones_and_no_deep_stack) {
    // along one side and back along the other: opposite nodes have one sum
    const numbering round = [](unsigned i) { return i % 2 ? nodes - 1 - i / 2 : i / 2; };
    const numbering bit_reversed = [](unsigned i) {
        unsigned reversed = 0;
        for (unsigned bit = 1; bit < nodes; bit *= 2, i /= 2)
            reversed = 2 * reversed + i % 2;
        return reversed;
    };
    const placing zigzag = [](unsigned k, unsigned i) { return k == 0 ? i / 2 : i % 2; };
    const placing lattice = [](unsigned k, unsigned i) { return k == 0 ? i / 90 : i % 90; };
    const placing line = [](unsigned k, unsigned i) { return k == 0 ? i : 0.5; };
    const placing one_place = [](unsigned, unsigned) { return 0.3; };
    const placing no_place = [](unsigned, unsigned) { return std::nan(""); };
    std::vector<mesh> meshes; // friendly first
    for (const numbering& number : {numbering(std::identity()), round, bit_reversed})
        for (const unsigned hub : {none, 0u, nodes - 1})
            meshes.push_back(strip(number, hub, zigzag));
    for (const placing& place : {lattice, line, one_place, no_place})
        meshes.push_back(strip(bit_reversed, none, place));
    void (*const calls[])(mesh&) = {
        [](mesh& m) { unique_indices(m.list, m.conn); },
        [](mesh& m) { get_neighbors(m.conn, ET_TRIA3, false, m.neighbors); },
        [](mesh& m) { get_element_boundaries(m.conn, ET_TRIA3, m.sides); },
        [](mesh& m) { copy_edges(m.conn, ET_TRIA3, m.sides); },
        [](mesh& m) { get_node_graph(m.conn, m.offsets, m.list); },
        [](mesh& m) { merge(m.pos, 1e9); },
        [](mesh& m) { merge(m.pos, m.conn, 1e-3, 1); },
        [](mesh& m) { node_detector detector(m.pos); },
    };
    const rlimit stack = {1u << 18, 1u << 18};
    ASSERT_EQ(setrlimit(RLIMIT_STACK, &stack), 0);
    for (std::size_t c = 0; c < std::size(calls); ++c) {
        const std::uint64_t friendly = steps_of(calls[c], meshes[0]);
        EXPECT_GT(friendly, nodes) << "steps of call " << c << " are not counted";
        for (std::size_t k = 0; k < meshes.size(); ++k)
            EXPECT_LT(steps_of(calls[c], meshes[k]), 8 * friendly)
                << "call " << c << ", mesh " << k;
    }

    mesh huge; // one element, of more pairs of nodes than 32 bits count
    huge.conn = dense2D<unsigned int>(70000, 1);
    std::iota(huge.conn.data(), huge.conn.data() + huge.conn.rows(), 0u);
    void (*const refused)(mesh&) = [](mesh& m) {
        EXPECT_EQ(get_node_graph(m.conn, m.offsets, m.list), -199);
    };
    EXPECT_LT(steps_of(refused, huge), 100 * huge.conn.rows());
    std::fill_n(huge.conn.data(), 69990, 0u);
    void (*const joined)(mesh&) = [](mesh& m) { get_node_graph(m.conn, m.offsets, m.list); };
    EXPECT_LT(steps_of(joined, huge), 100 * huge.conn.rows());

    mesh alike; // whose hashes by themselves have the same low bits
    alike.conn.resize(1, 0), alike.pos.resize(2, 0);
    for (unsigned int i = 1u << 31; alike.conn.cols() < 2048; ++i)
        if (mixed_bits(i) % 4096 == 0) append_columns(alike.conn, 1, 1, i);
    const std::uint64_t first = mixed_bits(3 + std::bit_cast<std::uint64_t>(1.0));
    for (double y = 1; alike.pos.cols() < 2048; ++y)
        if (mixed_bits(first + std::bit_cast<std::uint64_t>(y)) % 4096 == 0) {
            append_columns(alike.pos, 2, 1, 1.0);
            alike.pos(1, alike.pos.cols() - 1) = y;
        }
    EXPECT_LT(steps_of(calls[0], alike), 100u * 2048) << "distinct indices";
    void (*const merge_places)(mesh&) = [](mesh& m) { merge(m.pos, 0); };
    EXPECT_LT(steps_of(merge_places, alike), 1000u * 2048) << "distinct places";
}

} // namespace kvx::zelvo::tests
