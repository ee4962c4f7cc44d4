// Checking, renumbering, collecting, matching and sorting indices.
#include <kvx/zelvo/degenerate_elements.h>
#include <kvx/zelvo/element_sorting.h>
#include <kvx/zelvo/id_matching.h>
#include <kvx/zelvo/node_indices.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

void checking(measurement& measured, const mesh& m) {
    const unsigned int n = max_ID(m.conn) + 1;
    measured.reads(m.conn).run([&] { return check_IDs(m.conn, m.kind, n) ? 0 : -1; });
}

void largest(measurement& measured, const mesh& m) {
    measured.reads(m.conn).run([&] {
        benchmark::DoNotOptimize(max_ID(m.conn));
        return 0;
    });
}

void shifting(measurement& measured, const mesh& m) {
    dense2D<unsigned int> conn;
    conn.copy(m.conn);
    measured.reads(m.conn).run([&] { return shift_indices(conn, 1, m.kind); });
}

void unique(measurement& measured, const mesh& m) {
    dense1D<unsigned int> nodes;
    measured.reads(m.conn).makes(nodes).run([&] {
        nodes.clear(); // indices are appended
        return unique_indices(nodes, m.conn);
    });
}

void counting(measurement& measured, const mesh& m) {
    measured.reads(m.conn).run([&] { return count_unique_indices(m.conn); });
}

/// Elements with the same ones from the last to the first.
template <bool exact_order>
void matching(measurement& measured, const mesh& m) {
    const std::uint64_t n = m.conn.cols();
    dense2D<unsigned int> reversed(m.conn.rows(), n);
    for (std::uint64_t j = 0; j < n; ++j)
        std::copy_n(&m.conn(0, j), m.conn.rows(), &reversed(0, n - 1 - j));
    dense1D<unsigned int> there, back;
    measured.reads(m.conn, reversed).makes(there, back).run([&] {
        return get_IDs(m.conn, reversed, there, back, exact_order);
    });
}

void sorting(measurement& measured, const mesh& m) {
    dense2D<unsigned int> conn;
    dense1D<unsigned int> nodes, ends, new_IDs;
    measured.reads(m.conn)
        .makes(nodes, ends, new_IDs)
        .before([&] { return conn.copy(m.conn); })
        .run([&] { return sort_elfes(conn, nodes, ends, new_IDs); });
}

void removing_degenerated(measurement& measured, const mesh& m) {
    dense2D<unsigned int> conn;
    dense1D<unsigned int> new_IDs;
    measured.reads(m.conn).makes(new_IDs).before([&] { return conn.copy(m.conn); }).run([&] {
        return remove_degenerated(conn, new_IDs, false);
    });
}

/// Triangles, every third of which names a node twice.
mesh partly_degenerated(std::uint64_t elements) {
    mesh m = bumpy_sphere(elements);
    for (std::uint64_t j = 0; j < m.conn.cols(); j += 3)
        m.conn(2, j) = m.conn(0, j);
    return m;
}

using indices = dense1D<unsigned int>;

indices ascending(std::uint64_t n) {
    indices v(n);
    std::iota(v.begin(), v.end(), 0u);
    return v;
}

indices in_random_order(std::uint64_t n) {
    return random_order(n);
}

indices in_blocks(std::uint64_t n) {
    return random_order(n, 1000);
}

indices over_the_range(std::uint64_t n) {
    indices v = random_order(n);
    for (unsigned int& i : v)
        i *= 0xFFFFFFF0u / index(n);
    return v;
}

indices one_value(std::uint64_t n) {
    return indices(n, 1u);
}

void unique_entries(measurement& measured, const indices& v) {
    indices found;
    measured.reads(v).makes(found).run([&] {
        found.clear();
        return unique_indices(found, v);
    });
}

/// Entries with the same ones from the last to the first.
void matching_entries(measurement& measured, const indices& v) {
    indices reversed(v.size());
    std::reverse_copy(v.begin(), v.end(), reversed.begin());
    indices there, back;
    measured.reads(v, reversed).makes(there, back).run([&] {
        return get_IDs(v, reversed, there, back);
    });
}

void mapping(measurement& measured, const indices& v) {
    const indices map = ascending(v.size());
    indices mapped;
    mapped.copy(v);
    measured.reads(v, map).run([&] {
        change_indices(mapped, map);
        return 0;
    });
}

void permuting(measurement& measured, const indices& v) {
    dense1D<double> values(v.size(), 1.0);
    measured.reads(v, values).run([&] {
        permutation(values, v);
        return 0;
    });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>({{"triangles", bumpy_sphere},
                      {"triangles_clustered", clustered<bumpy_sphere>},
                      {"triangles_shuffled", shuffled<bumpy_sphere>},
                      {"triangles_sparse", sparse<shuffled<bumpy_sphere>>},
                      {"triangles_degenerated", partly_degenerated},
                      {"one_triangle", one_triangle},
                      {"solids", mixed_solids}},
                     {{"check_IDs", checking},
                      {"max_ID", largest},
                      {"shift_indices", shifting},
                      {"unique_indices", unique},
                      {"count_unique_indices", counting},
                      {"get_IDs_exact", matching<true>},
                      {"get_IDs_turned", matching<false>},
                      {"sort_elfes", sorting},
                      {"remove_degenerated", removing_degenerated}});
    over_sizes<indices>({{"ascending", ascending},
                         {"clustered", in_blocks},
                         {"shuffled", in_random_order},
                         {"sparse", over_the_range},
                         {"equal", one_value}},
                        {{"unique_entries", unique_entries},
                         {"get_IDs_of_entries", matching_entries},
                         {"change_indices", mapping},
                         {"permutation", permuting}});
    return run_benchmarks(argc, argv);
}
