// What moves, copies, cuts and measures meshes as a whole.
#include <kvx/zelvo/bounding_box.h>
#include <kvx/zelvo/clipping.h>
#include <kvx/zelvo/edge_lengths.h>
#include <kvx/zelvo/edges.h>
#include <kvx/zelvo/mesh_copies.h>
#include <kvx/zelvo/simplification.h>
#include <kvx/zelvo/transforms.h>

#include "generated_meshes.h"
#include "growth.h"

namespace {

using namespace kvx;
using namespace kvx::zelvo;
using namespace kvx::zelvo::bench;

using point = vector_fixed<double, 3>;
const point shift = {1e-3, 2e-3, 3e-3}, centre = {0.5, 0.5, 0.5}, turn = {0.1, 0.2, 0.3};

/// Nothing but reading the nodes of each element: how that alone grows as data leaves the caches.
void bare_reads(measurement& measured, const mesh& m) {
    measured.reads(m.pos, m.conn).run([&] {
        double sum = 0;
        for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
            for (std::uint64_t k = 0; k < m.conn.rows(); ++k)
                sum += m.pos(0, m.conn(k, j));
        }
        benchmark::DoNotOptimize(sum);
        return 0;
    });
}

void box_of_nodes(measurement& measured, const mesh& m) {
    point low = centre, high = centre;
    measured.reads(m.pos).run([&] { return inc_bounding_box(m.pos, low, high); });
}

void box_of_elements(measurement& measured, const mesh& m) {
    point low = centre, high = centre;
    measured.reads(m.pos, m.conn).run([&] { return inc_bounding_box(m.pos, m.conn, low, high); });
}

template <class Move>
void move(measurement& measured, const mesh& m, Move move_nodes) {
    dense2D<double> pos;
    pos.copy(m.pos);
    measured.reads(m.pos, m.conn).run([&] { return move_nodes(pos); });
}

void translation(measurement& measured, const mesh& m) {
    move(measured, m, [](dense2D<double>& pos) { return translate(pos, shift); });
}

void zooming(measurement& measured, const mesh& m) {
    move(measured, m, [](dense2D<double>& pos) { return zoom(pos, centre, 1.001); });
}

void rotation(measurement& measured, const mesh& m) {
    move(measured, m, [](dense2D<double>& pos) { return rotate(pos, centre, turn); });
}

void rotation_of_elements(measurement& measured, const mesh& m) {
    move(measured, m, [&m](dense2D<double>& pos) { return rotate(pos, centre, turn, m.conn); });
}

/// Copies elements behind the nodes that are there.
template <class Copy>
void copy(measurement& measured, const mesh& m, Copy copy_elements) {
    dense2D<double> pos;
    dense2D<unsigned int> conn;
    measured.reads(m.pos, m.conn)
        .makes(pos, conn)
        .before([&] {
            conn.clear();
            return pos.copy(m.pos);
        })
        .run([&] { return copy_elements(pos, conn, m.conn); });
}

using connectivity = dense2D<unsigned int>;

void three_copies(measurement& measured, const mesh& m) {
    copy(measured, m, [](dense2D<double>& pos, connectivity& copies, const connectivity& conn) {
        return copy_mesh(pos, copies, shift, centre, turn, 3, conn);
    });
}

void mirrored_copy(measurement& measured, const mesh& m) {
    copy(measured, m, [](dense2D<double>& pos, connectivity& copies, const connectivity& conn) {
        return copy_sym_mesh(pos, copies, centre, turn, conn);
    });
}

/// By a plane through the middle of the mesh.
void clipping(measurement& measured, const mesh& m) {
    point low = {m.pos(0, 0), m.pos(1, 0), m.pos(2, 0)}, high = low;
    inc_bounding_box(m.pos, low, high);
    const point middle = {(low[0] + high[0]) / 2, (low[1] + high[1]) / 2, (low[2] + high[2]) / 2};
    connectivity kept;
    measured.reads(m.pos, m.conn).makes(kept).run([&] {
        kept.clear(); // elements are appended
        return clip(m.pos, m.conn, middle, {1, 0, 0}, kept);
    });
}

/// Of a mesh without the second half of its elements.
void simplification(measurement& measured, const mesh& m) {
    const connectivity half = m.conn.sub_matrix(0, 0, m.conn.rows(), m.conn.cols() / 2);
    dense2D<double> pos;
    connectivity conn;
    dense1D<unsigned int> new_IDs;
    measured.reads(m.pos, half)
        .makes(new_IDs)
        .before([&] { return pos.copy(m.pos) && conn.copy(half); })
        .run([&] { return simplify(pos, conn, new_IDs, 0); });
}

void lengths_of_edges(measurement& measured, const mesh& m) {
    connectivity edges;
    copy_edges(m.conn, m.kind, edges);
    dense2D<double> lengths;
    measured.per(edges.cols()).reads(m.pos, edges).makes(lengths).run([&] {
        return edge_lengths(m.pos, edges, lengths);
    });
}

} // namespace

int main(int argc, char** argv) {
    over_sizes<mesh>({{"triangles", bumpy_sphere},
                      {"triangles_clustered", clustered<bumpy_sphere>},
                      {"triangles_shuffled", shuffled<bumpy_sphere>},
                      {"triangles_around_a_node", fan},
                      {"tetrahedra", tetrahedral_grid},
                      {"tetrahedra_shuffled", shuffled<tetrahedral_grid>}},
                     {{"bare_reads", bare_reads},
                      {"box_of_nodes", box_of_nodes},
                      {"box_of_elements", box_of_elements},
                      {"translate", translation},
                      {"zoom", zooming},
                      {"rotate", rotation},
                      {"rotate_elements", rotation_of_elements},
                      {"three_copies", three_copies},
                      {"mirrored_copy", mirrored_copy},
                      {"clip", clipping},
                      {"simplify", simplification},
                      {"edge_lengths", lengths_of_edges}});
    return run_benchmarks(argc, argv);
}
