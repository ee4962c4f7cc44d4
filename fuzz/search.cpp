#include "exported_target.h"

namespace kvx::zelvo::fuzzing {

namespace {

/// Nodes that stay take themselves, the others one that stays.
void examine_merged(const dense1D<unsigned int>& new_IDs, std::uint64_t nodes,
                    std::int64_t absorbed) {
    if (new_IDs.empty()) return demand(absorbed == 0, "nothing is absorbed without a map");
    demand(new_IDs.size() == nodes, "a survivor for each node");
    demand(max_ID(new_IDs) < nodes, "survivors exist");
    std::int64_t redirected = 0;
    for (std::uint64_t i = 0; i < nodes; ++i) {
        demand(new_IDs[new_IDs[i]] == new_IDs[i], "survivors stay");
        redirected += new_IDs[i] != i;
    }
    demand(redirected == absorbed, "the code counts the nodes absorbed");
}

double squared_distance(const dense2D<double>& pos, unsigned int node, const double* point) {
    double sum = 0;
    for (std::uint64_t i = 0; i < pos.rows(); ++i)
        sum += (pos(i, node) - point[i]) * (pos(i, node) - point[i]);
    return sum;
}

/// No node of a detector over all nodes is closer than the one found.
void examine_closest(const dense2D<double>& pos, unsigned int found, const double* point,
                     unsigned int but) {
    demand(found < pos.cols() && found != but, "the closest node exists");
    const double distance = squared_distance(pos, found, point);
    for (unsigned int k = 0; k < pos.cols(); ++k)
        demand(k == but || !(squared_distance(pos, k, point) < distance), "no node is closer");
}
bool all_finite(const dense2D<double>& pos) {
    bool finite = true;
    for (std::uint64_t j = 0; j < pos.cols(); ++j)
        for (const double x : pos.col(j))
            finite = finite && std::abs(x) < 1e150;
    return finite;
}

} // namespace

void examine_call(const std::string& function, const arguments& before, arguments& after,
                  std::int64_t result) {
    if (function == "merge" && before.takes("new_IDs") && result >= 0 && !before.pos.empty())
        examine_merged(after.new_IDs, before.pos.cols(), result);
    if (function == "merge" && result >= 0 && before.takes("conn"))
        for (unsigned int i = 0; i < 3; ++i)
            demand(after.range[i].cols() == before.range[i].cols(), "elements stay");
    const bool found = result != no_node && after.detector.size() == after.pos.cols();
    if (before.takes("find_closest") && found && all_finite(after.pos)) {
        const double* const P = static_cast<const vector_fixed<double, 3>&>(before.P).data();
        if (before.takes("node)")) {
            if (before.node < after.pos.cols())
                examine_closest(after.pos, static_cast<unsigned int>(result),
                                &after.pos(0, before.node), before.node);
        } else if (after.pos.rows() == 2 && std::abs(P[0]) < 1e150 && std::abs(P[1]) < 1e150) {
            examine_closest(after.pos, static_cast<unsigned int>(result), P, no_node);
        }
    }
    if (before.takes("find_in_box"))
        demand(max_ID(after.nodes.sub_vector(before.nodes.size(), after.nodes.size())) <
                       after.pos.cols() ||
                   after.nodes.size() == before.nodes.size(),
               "nodes in the box exist");
    if (before.takes("::reinit") && result == 0 && before.form().ends_with("reinit(pos)"))
        demand(after.detector.size() == before.pos.cols(), "all nodes are taken");
}

} // namespace kvx::zelvo::fuzzing
