#include "exported_target.h"

namespace kvx::zelvo::fuzzing {

namespace {

/// Kept things keep their order; the others are gone.
void examine_kept(const dense1D<unsigned int>& new_IDs, std::uint64_t kept) {
    unsigned int next = 0;
    for (const unsigned int place : new_IDs)
        if (place != no_node) demand(place == next++, "what is kept keeps its order");
    demand(next == kept, "what is kept is counted");
}

bool has_column(const dense2D<unsigned int>& m, const dense1D<unsigned int>& column) {
    bool found = false;
    for (std::uint64_t j = 0; j < m.cols() && !found; ++j)
        found = equal(m.col(j), column);
    return found;
}

} // namespace

void examine_call(const std::string& function, const arguments& before, arguments& after,
                  std::int64_t result) {
    if (function == "remove_degenerated" && result >= 0 && !before.conn.empty()) {
        demand(before.conn.cols() == after.conn.cols() + static_cast<std::uint64_t>(result),
               "the code counts what is removed");
        examine_kept(after.new_IDs, after.conn.cols());
        for (std::uint64_t j = 0; j < after.conn.cols(); ++j)
            demand(has_column(before.conn, after.conn.col(j)), "elements were there before");
    }
    if (function == "simplify" && result >= 0) {
        demand(before.pos.cols() == after.pos.cols() + static_cast<std::uint64_t>(result),
               "the code counts what is removed");
        if (result > 0 && before.takes("new_IDs")) examine_kept(after.new_IDs, after.pos.cols());
        if (result > 0)
            for (const auto* m = before.takes("first") ? after.first : after.range;
                 m != (before.takes("first")   ? after.last
                       : before.takes("conn2") ? after.range + 2
                                               : after.range + 1);
                 ++m)
                demand(check_IDs(*m, bound(after.pos.cols())), "elements name nodes that are kept");
    }
    if (function == "clip" && result == 0 && !before.conn.empty())
        for (std::uint64_t j = before.kept_conn.cols(); j < after.kept_conn.cols(); ++j)
            demand(has_column(before.conn, after.kept_conn.col(j)), "kept elements are whole");
    if (function.starts_with("copy") && result == 0 && !before.pos.empty()) {
        demand(after.pos.cols() >= before.pos.cols(), "nodes are added");
        if (!before.takes("n_copies"))
            demand(check_IDs(after.copy_conn, bound(after.pos.cols())), "copies name nodes");
    }
    if (function == "translate" || function == "rotate" || function == "zoom")
        demand(after.pos.cols() == before.pos.cols() && after.pos.rows() >= before.pos.rows(),
               "nodes stay");
}

} // namespace kvx::zelvo::fuzzing
