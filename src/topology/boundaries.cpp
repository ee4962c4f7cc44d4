#include <kvx/zelvo/boundaries.h>

#include <algorithm>

#include "foundation/memory_guard.h"
#include "topology/element_walks.h"

namespace kvx::zelvo {

namespace {

/// Writes the sides with wanted(element, side).
template <class Columns, class Wanted>
int write_sides(const dense2D<unsigned int>& conn, Columns columns, Wanted wanted,
                dense2D<unsigned int>& boundaries) {
    std::uint64_t count = 0;
    walk_sides(conn, columns,
               [&](std::uint64_t e, unsigned s, const auto&) { count += wanted(e, s); });
    need(boundaries.resize(Columns::side_nodes, count));
    unsigned int* side = boundaries.data();
    walk_sides(conn, columns, [&](std::uint64_t e, unsigned s, const auto& nodes) {
        if (!wanted(e, s)) return;
        for (const unsigned int node : nodes)
            *side++ = node; // out of registers, where std::copy goes through memory
    });
    return 0;
}

} // namespace

int get_element_boundaries(const dense2D<unsigned int>& connectM, element_type FE_type,
                           dense2D<unsigned int>& boundaries) noexcept {
    const dense2D<unsigned int> source(connectM);
    boundaries.clear();
    if (source.empty()) return 0;
    if (const int code = check_sides(source, FE_type); code != 0) return code;
    return guarded([&] {
        return with_columns(FE_type, source.rows(), [&](auto columns) {
            const auto every_side = [](std::uint64_t, unsigned) { return true; };
            return write_sides(source, columns, every_side, boundaries);
        });
    });
}

int get_mesh_boundaries(const dense2D<unsigned int>& connectM,
                        const dense2D<unsigned int>& neighbors, element_type FE_type,
                        dense2D<unsigned int>& boundaries) noexcept {
    const dense2D<unsigned int> source(connectM);
    const dense2D<unsigned int> across(neighbors);
    boundaries.clear();
    if (source.empty()) return 0;
    if (const int code = check_sides(source, FE_type); code != 0) return code;
    return guarded([&] {
        return with_columns(FE_type, source.rows(), [&](auto columns) {
            if (across.rows() != columns.side_count || across.cols() != source.cols()) return -2;
            const auto free_side = [first = across.data(), ld = across.ld()](std::uint64_t e,
                                                                             unsigned s) {
                return first[s + e * ld] == no_node;
            };
            return write_sides(source, columns, free_side, boundaries);
        });
    });
}

} // namespace kvx::zelvo
