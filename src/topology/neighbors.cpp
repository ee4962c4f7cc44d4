#include <kvx/zelvo/neighbors.h>

#include "foundation/compact_indices.h"
#include "foundation/memory_guard.h"
#include "topology/element_walks.h"
#include "topology/side_groups.h"

namespace kvx::zelvo {

namespace {

/// Sides are numbered as the entries of neighbors lie in memory, element * sides + side.
template <class Columns>
int pair_sides(dense2D<unsigned int> conn, Columns columns, bool pair_first_two,
               dense2D<unsigned int>& neighbors) {
    constexpr unsigned sides = Columns::side_count;
    if (conn.cols() > most_items / sides) return out_of_memory;
    const std::uint64_t node_count = compact_indices({&conn, 1}, Columns::no_node_is);
    need(neighbors.resize(sides, conn.cols(), no_node));
    unsigned int* const neighbor = neighbors.data();

    const auto every_side = [&](auto&& visit) {
        walk_sides(conn, columns, [&visit](std::uint64_t e, unsigned s, const auto& nodes) {
            visit(static_cast<unsigned int>(e * sides + s), nodes);
        });
    };
    group_by_nodes<Columns::side_nodes>(node_count, every_side, [=](const item_group& group) {
        if (group.size < 2 || (group.size > 2 && !pair_first_two)) return;
        neighbor[group.first] = group.second / sides;
        neighbor[group.second] = group.first / sides;
    });
    return 0;
}

} // namespace

int get_neighbors(const dense2D<unsigned int>& connectM, element_type FE_type, bool flag,
                  dense2D<unsigned int>& neighbors) noexcept {
    const dense2D<unsigned int> source(connectM);
    neighbors.clear();
    if (source.empty()) return 0;
    if (const int code = check_sides(source, FE_type); code != 0) return code;
    const int code = guarded([&] {
        return with_columns(FE_type, source.rows(), [&](auto columns) {
            return pair_sides(source, columns, flag, neighbors);
        });
    });
    if (code != 0) neighbors.clear();
    return code;
}

} // namespace kvx::zelvo
