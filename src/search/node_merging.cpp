#include <kvx/zelvo/node_merging.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include <kvx/zelvo/node_indices.h>

#include "foundation/hashing.h"
#include "foundation/large_blocks.h"
#include "foundation/matrix_range.h"
#include "foundation/memory_guard.h"
#include "indices/index_collection.h"
#include "search/cell_pairs.h"
#include "search/close_pairs.h"
#include "search/distances.h"

namespace kvx::zelvo {

namespace {

constexpr double default_tolerance = 1e-6;

/// Pairs held at a time, per node.
constexpr std::uint64_t pairs_per_node = 4;

/// Width of cells in tolerances: few nodes look beyond a wide one, few share a narrow one.
constexpr double wide_cells = 32;
constexpr double narrow_cells = 4;

/// Two nodes that may be joined; the collector that made the pair knows what the numbers stand for.
struct merge_pair {
    double distance;
    unsigned int survivor;
    unsigned int absorbed;
};

/// Half-open range of turns.
struct turn_range {
    std::uint64_t first = 0;
    std::uint64_t last = 0;

    bool contains(std::uint64_t turn) const { return turn >= first && turn < last; }
    bool operator==(const turn_range&) const = default;
};

/// Pairs with above < distance <= up_to whose turns lie in a range, at most `room` of them. Pairs
/// act by distance, then by turn, so a band may be narrowed in turns only when it holds a single
/// distance.
class pair_band {
public:
    pair_band(double tol, std::uint64_t turn_count, std::uint64_t room)
        : tol_(tol)
        , turn_count_(turn_count)
        , room_(room)
        , up_to_(tol)
        , turns_{0, turn_count} {}

    double up_to() const { return up_to_; }
    turn_range turns() const { return turns_; }
    std::vector<merge_pair>& pairs() { return pairs_; }
    bool holds(double d) const { return d <= up_to_ && d > above_; }

    /// False when there is no room left.
    bool push(const merge_pair& pair) {
        if (pairs_.size() == room_) return false;
        if (pairs_.size() == pairs_.capacity())
            pairs_.reserve(std::min<std::uint64_t>(room_, 2 * pairs_.size() + 64));
        pairs_.push_back(pair);
        return true;
    }

    /// Halves the band, or doubles the room of one that cannot be halved.
    void narrow() {
        pairs_.clear();
        const std::int64_t below = place(above_);
        const std::int64_t here = place(up_to_);
        if (here - below > 1) {
            up_to_ = std::bit_cast<double>(below + (here - below) / 2);
        } else if (turns_.last - turns_.first > 1) {
            turns_.last = turns_.first + (turns_.last - turns_.first) / 2;
        } else {
            room_ *= 2;
        }
    }

    /// Goes on to the pairs behind this band; false behind the tolerance.
    bool advance() {
        pairs_.clear();
        if (turns_.last < turn_count_) {
            turns_ = {turns_.last, turn_count_};
            return true;
        }
        turns_ = {0, turn_count_};
        if (up_to_ >= tol_) return false;
        above_ = up_to_;
        up_to_ = tol_;
        return true;
    }

private:
    /// Number of a distance among all doubles from 0 up; -1 for below 0.
    static std::int64_t place(double d) { return d < 0 ? -1 : std::bit_cast<std::int64_t>(d); }

    double tol_;
    std::uint64_t turn_count_;
    std::uint64_t room_;
    double above_ = -1;
    double up_to_;
    turn_range turns_;
    std::vector<merge_pair> pairs_;
};

/// Renumbering in the making: an entry that is its own index has not been absorbed.
bool stays(const dense1D<unsigned int>& new_IDs, unsigned int node) {
    return new_IDs[node] == node;
}

dense1D<unsigned int> identity(std::uint64_t n) {
    need_numbers_for(n);
    auto map = zeros_to_fill<unsigned int>(n);
    std::iota(map.begin(), map.end(), 0u);
    return map;
}

/// Points every absorbed node at the node that stays in the end.
void resolve_chains(dense1D<unsigned int>& new_IDs) {
    for (std::uint64_t k = 0; k < new_IDs.size(); ++k) {
        unsigned int last = new_IDs[k];
        while (!stays(new_IDs, last))
            last = new_IDs[last];
        for (unsigned int i = static_cast<unsigned int>(k); i != last;)
            i = std::exchange(new_IDs[i], last);
    }
}

template <unsigned Dim>
bool is_finite(const double* x) {
    return std::all_of(x, x + Dim, [](double c) { return std::isfinite(c); });
}

/// Joins pairs in their order where both nodes stay; node(number) tells the nodes. Returns how many.
template <class Node>
std::uint64_t join_in_order(const std::vector<merge_pair>& pairs, Node&& node,
                            dense1D<unsigned int>& new_IDs) {
    std::uint64_t joined = 0;
    for (const merge_pair& pair : pairs) {
        const unsigned int by = node(pair.survivor);
        const unsigned int absorbed = node(pair.absorbed);
        if (!stays(new_IDs, by) || !stays(new_IDs, absorbed)) continue;
        new_IDs[absorbed] = by;
        ++joined;
    }
    return joined;
}

/// Joins pairs nearest first, with the result of sorting all pairs up to the tolerance at once.
///
/// Nodes that both stay after all pairs up to some distance lie further apart than that, so the
/// pairs at a slightly larger distance are few, whatever the tolerance. Hence the pairs are taken
/// in bands with limited room. Pairs of nodes that were absorbed before a band began could not act
/// and are not made.
///
/// Collector: turns() tells how many turns there are; collect(band, new_IDs) fills the band, false
/// when the room does not do; sort(pairs) puts them in the order in which they act; node(number)
/// tells their nodes; drop_absorbed(new_IDs) is called when nodes have been absorbed.
template <class Collector>
std::uint64_t join_nearest_first(Collector& collector, double tol, std::uint64_t nodes,
                                 dense1D<unsigned int>& new_IDs) {
    std::uint64_t joined = 0;
    pair_band band(tol, collector.turns(), pairs_per_node * nodes + 64);
    do {
        while (!collector.collect(band, new_IDs))
            band.narrow();
        collector.sort(band.pairs());
        const std::uint64_t newly_joined = join_in_order(
            band.pairs(), [&](unsigned int number) { return collector.node(number); }, new_IDs);
        if (newly_joined > 0) collector.drop_absorbed(new_IDs);
        joined += newly_joined;
    } while (band.advance());
    return joined;
}

/// The order in which pairs of nodes act that are numbered by their turn.
void sort_by_turn(std::vector<merge_pair>& pairs) {
    std::sort(pairs.begin(), pairs.end(), [](const merge_pair& a, const merge_pair& b) {
        return a.distance != b.distance ? a.distance < b.distance : a.survivor < b.survivor;
    });
}

/// Distinct nodes in the order of their turn, and their roles.
struct listed_nodes {
    dense1D<unsigned int> nodes;
    std::vector<pair_role> roles; ///< one per column of pos; none where all nodes are in both

    pair_role role(unsigned int node) const { return roles.empty() ? both : roles[node]; }
};

/// Pairs of listed nodes. Nodes are numbered by their turn: survivors in list order first.
template <unsigned Dim>
class list_pairs {
public:
    list_pairs(const dense2D<double>& pos, const listed_nodes& listed, double tol)
        : listed_(listed)
        , tol_(tol)
        , points_(listed.nodes.size()) {
        for (std::size_t k = 0; k < points_.size(); ++k) {
            std::copy_n(&pos(0, listed.nodes[k]), Dim, points_[k].x.begin());
            points_[k].id = static_cast<unsigned int>(k);
        }
        std::erase_if(points_, [](const auto& p) {
            return std::any_of(p.x.begin(), p.x.end(), [](double x) { return std::isnan(x); });
        });
    }

    std::uint64_t turns() const { return listed_.nodes.size(); }

    bool collect(pair_band& band, const dense1D<unsigned int>&) {
        if (!tree_ || tree_turns_ != band.turns()) plant(band.turns());
        return tree_->each_within(band.up_to(), [&](const auto& p, const auto& q, double d) {
            if (!band.holds(d)) return true;
            // The reverse of a pair has its turn later and then finds one of the two absorbed.
            const auto& first = p.id < q.id ? p : q;
            const auto& second = p.id < q.id ? q : p;
            if (may_join(first, second)) return band.push({d, first.id, second.id});
            if (may_join(second, first)) return band.push({d, second.id, first.id});
            return true;
        });
    }

    static void sort(std::vector<merge_pair>& pairs) { sort_by_turn(pairs); }

    unsigned int node(unsigned int number) const { return listed_.nodes[number]; }

    void drop_absorbed(const dense1D<unsigned int>& new_IDs) {
        std::erase_if(points_, [&](const auto& p) { return !stays(new_IDs, node(p.id)); });
        tree_.reset();
    }

private:
    /// Nodes that do not have their turn can only be absorbed, and so can nodes at infinity: no box
    /// around them holds a node at a distance, however large the tolerance.
    void plant(turn_range turns) {
        for (auto& p : points_) {
            const pair_role role = listed_.role(node(p.id));
            const bool survives = turns.contains(p.id) && is_finite<Dim>(p.x.data());
            p.role = survives ? role : static_cast<pair_role>(role & absorbable);
        }
        tree_.emplace(points_);
        tree_turns_ = turns;
    }

    bool may_join(const numbered_point<Dim>& by, const numbered_point<Dim>& absorbed) const {
        return (by.role & survivor) != 0 && (absorbed.role & absorbable) != 0 &&
               in_box<Dim>(by.x.data(), absorbed.x.data(), tol_);
    }

    const listed_nodes& listed_;
    double tol_;
    std::vector<numbered_point<Dim>> points_;
    std::optional<close_pairs<Dim>> tree_;
    turn_range tree_turns_{};
};

/// Pairs of nodes of one element, in the order of matrices, elements and rows of the survivors.
template <unsigned Dim>
class element_pairs {
public:
    element_pairs(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                  const dense2D<unsigned int>* last, double tol)
        : pos_(pos)
        , first_(first)
        , last_(last)
        , tol_(tol) {}

    /// The elements are read through `renumbering` from here on.
    void begin_pass(const dense1D<unsigned int>& renumbering) {
        need(renumbering_.copy(renumbering));
    }

    std::uint64_t turns() const {
        std::uint64_t elements = 0;
        for (auto m = first_; m != last_; ++m)
            elements += m->empty() ? 0 : m->cols();
        return elements;
    }

    bool collect(pair_band& band, const dense1D<unsigned int>& new_IDs) const {
        std::uint64_t turn = 0;
        for (auto m = first_; m != last_; ++m) {
            for (std::uint64_t j = 0; j < (m->empty() ? 0 : m->cols()); ++j, ++turn) {
                if (band.turns().contains(turn) && !collect(&(*m)(0, j), m->rows(), band, new_IDs))
                    return false;
            }
        }
        return true;
    }

    static void sort(std::vector<merge_pair>& pairs) {
        std::stable_sort(pairs.begin(), pairs.end(), [](const merge_pair& a, const merge_pair& b) {
            return a.distance < b.distance;
        });
    }

    static unsigned int node(unsigned int number) { return number; }

    static void drop_absorbed(const dense1D<unsigned int>&) {}

private:
    bool collect(const unsigned int* element, std::uint64_t rows, pair_band& band,
                 const dense1D<unsigned int>& new_IDs) const {
        for (std::uint64_t a = 0; a < rows; ++a) {
            if (element[a] == no_node) continue;
            const unsigned int n = renumbering_[element[a]];
            if (!stays(new_IDs, n)) continue;
            for (std::uint64_t b = 0; b < rows; ++b) {
                if (element[b] == no_node) continue;
                const unsigned int m = renumbering_[element[b]];
                if (m == n || !stays(new_IDs, m)) continue;
                const double* const pn = &pos_(0, n);
                const double* const pm = &pos_(0, m);
                const double d = std::sqrt(squared_distance<Dim>(pn, pm));
                if (!band.holds(d) || !in_box<Dim>(pn, pm, tol_)) continue;
                if (b < a && in_box<Dim>(pm, pn, tol_)) continue; // its reverse had its turn
                if (!band.push({d, n, m})) return false;
            }
        }
        return true;
    }

    const dense2D<double>& pos_;
    const dense2D<unsigned int>* first_;
    const dense2D<unsigned int>* last_;
    double tol_;
    dense1D<unsigned int> renumbering_;
};

/// Listed nodes at the place of an earlier one of their role, which stands for them: whatever
/// absorbs or stays with the one does so with the others at the same turn.
class coincident_nodes {
public:
    /// Of nodes in both roles the earlier absorbs the others before all other pairs.
    void add(unsigned int node, unsigned int stands, pair_role role,
             dense1D<unsigned int>& new_IDs) {
        if (role == absorbable) absorbable_.push_back({node, stands});
        if (role != both) return;
        new_IDs[node] = stands;
        ++joined_;
    }
    /// When all pairs have been joined; returns the number of nodes that were absorbed.
    std::uint64_t join(dense1D<unsigned int>& new_IDs) const {
        std::uint64_t joined = joined_;
        for (const auto& [node, stands] : absorbable_) {
            joined += !stays(new_IDs, stands);
            if (!stays(new_IDs, stands)) new_IDs[node] = new_IDs[stands];
        }
        return joined;
    }

private:
    std::uint64_t joined_ = 0;
    std::vector<std::array<unsigned int, 2>> absorbable_;
};

/// Takes coincident nodes out of the list.
template <unsigned Dim>
coincident_nodes take_out_coincident(const dense2D<double>& pos, listed_nodes& listed,
                                     dense1D<unsigned int>& new_IDs) {
    hash_slots places(listed.nodes.size());
    const auto hash = [&](unsigned int node) {
        std::uint64_t bits = places.seed() + listed.role(node);
        // Adding 0 makes the two zeros one.
        for (unsigned i = 0; i < Dim; ++i)
            bits = mixed_bits(bits + std::bit_cast<std::uint64_t>(pos(i, node) + 0.0));
        return bits;
    };
    const auto equal = [&](unsigned int a, unsigned int b) {
        bool same = listed.role(a) == listed.role(b);
        for (unsigned i = 0; i < Dim; ++i)
            same &= pos(i, a) == pos(i, b);
        return same;
    };
    coincident_nodes coincident;
    const auto is_taken_out = [&](unsigned int node) {
        if (!is_finite<Dim>(&pos(0, node))) return false; // infinite coordinates have no distance 0
        const unsigned int stands = places.find_or_insert(
            hash(node), node, [&](unsigned int other) { return equal(node, other); });
        if (stands == no_node) return false;
        coincident.add(node, stands, listed.role(node), new_IDs);
        return true;
    };
    const auto last = std::remove_if(listed.nodes.begin(), listed.nodes.end(), is_taken_out);
    need(listed.nodes.resize(static_cast<std::uint64_t>(last - listed.nodes.begin())));
    return coincident;
}

/// What a search through cells finds: coincident nodes, which are joined at once, and all pairs.
struct found_in_cells {
    coincident_nodes coincident;
    std::vector<merge_pair> pairs; ///< of nodes
};

/// False where cells are crowded or pairs many; new_IDs is then the identity again.
template <unsigned Dim>
bool find_in_cells(const dense2D<double>& pos, const listed_nodes& listed, double tol,
                   double tolerances_a_cell, dense1D<unsigned int>& new_IDs,
                   found_in_cells& found) {
    const auto same_place = [&](unsigned int node, unsigned int other) {
        const pair_role role = listed.role(node);
        if (role != listed.role(other)) return false;
        found.coincident.add(node, other, role, new_IDs);
        return true;
    };
    const auto may_join = [&](unsigned int by, unsigned int absorbed) {
        return (listed.role(by) & survivor) != 0 && (listed.role(absorbed) & absorbable) != 0 &&
               in_box<Dim>(&pos(0, by), &pos(0, absorbed), tol);
    };
    // Of two nodes that may absorb each other the first listed one has its turn first.
    const auto close = [&](unsigned int node, unsigned int other, double d) {
        if (may_join(other, node)) {
            found.pairs.push_back({d, other, node});
        } else if (may_join(node, other)) {
            found.pairs.push_back({d, node, other});
        }
        return found.pairs.size() <= listed.nodes.size();
    };
    cell_pairs<Dim> cells(pos, tol, tolerances_a_cell);
    if (cells.run(listed.nodes, same_place, close)) return true;
    found = {};
    std::iota(new_IDs.begin(), new_IDs.end(), 0u);
    return false;
}

/// Joins pairs nearest first. Those of two nodes that are in no other pair need no order.
std::uint64_t join_pairs(std::vector<merge_pair>& pairs, const listed_nodes& listed,
                         dense1D<unsigned int>& new_IDs) {
    if (pairs.empty()) return 0;
    constexpr std::uint8_t several = 2;
    std::vector<std::uint8_t> pairs_of(new_IDs.size());
    for (const merge_pair& pair : pairs) {
        for (const unsigned int node : {pair.survivor, pair.absorbed})
            pairs_of[node] = std::min<std::uint8_t>(several, pairs_of[node] + 1);
    }
    std::uint64_t joined = pairs.size();
    std::erase_if(pairs, [&](const merge_pair& pair) {
        if (pairs_of[pair.survivor] == several || pairs_of[pair.absorbed] == several) return false;
        new_IDs[pair.absorbed] = pair.survivor;
        return true;
    });
    joined -= pairs.size();
    if (pairs.empty()) return joined;
    std::vector<unsigned int> turns(new_IDs.size());
    for (std::size_t k = 0; k < listed.nodes.size(); ++k)
        turns[listed.nodes[k]] = static_cast<unsigned int>(k);
    for (merge_pair& pair : pairs)
        pair = {pair.distance, turns[pair.survivor], turns[pair.absorbed]};
    sort_by_turn(pairs);
    return joined + join_in_order(
                        pairs, [&](unsigned int turn) { return listed.nodes[turn]; }, new_IDs);
}

/// The whole procedure for listed nodes; new_IDs is the identity on entry.
template <unsigned Dim>
std::uint64_t merge_listed(const dense2D<double>& pos, listed_nodes& listed, double tol,
                           dense1D<unsigned int>& new_IDs) {
    std::uint64_t joined = 0;
    found_in_cells found;
    const bool sparse =
        cell_pairs<Dim>::takes(tol) &&
        (find_in_cells<Dim>(pos, listed, tol, wide_cells, new_IDs, found) ||
         (tol > 0 && find_in_cells<Dim>(pos, listed, tol, narrow_cells, new_IDs, found)));
    if (sparse) {
        joined = join_pairs(found.pairs, listed, new_IDs);
    } else {
        found.coincident = take_out_coincident<Dim>(pos, listed, new_IDs);
        list_pairs<Dim> pairs(pos, listed, tol);
        joined = join_nearest_first(pairs, tol, listed.nodes.size(), new_IDs);
    }
    joined += found.coincident.join(new_IDs);
    resolve_chains(new_IDs);
    return joined;
}

/// Survivors in list order, then the nodes that can only be absorbed.
listed_nodes in_order_of_turn(const dense1D<unsigned int>& nodes1,
                              const dense1D<unsigned int>& nodes2, std::uint64_t cols) {
    listed_nodes listed;
    listed.roles.resize(cols, neither);
    std::uint64_t count = 0;
    listed.nodes = zeros_to_fill<unsigned int>(std::min(cols, nodes1.size() + nodes2.size()));
    const auto add = [&](const dense1D<unsigned int>& nodes, pair_role r) {
        for (const unsigned int node : nodes) {
            if (node == no_node) continue;
            if (listed.roles[node] == neither) listed.nodes[count++] = node;
            listed.roles[node] = static_cast<pair_role>(listed.roles[node] | r);
        }
    };
    add(nodes2, survivor);
    add(nodes1, absorbable);
    need(listed.nodes.resize(count));
    return listed;
}

/// Fills new_IDs and returns the count. The list may be changed.
std::uint64_t merge_listed(const dense2D<double>& pos, listed_nodes&& listed, double tol,
                           dense1D<unsigned int>& new_IDs) {
    dense1D<unsigned int> map = identity(pos.cols());
    const std::uint64_t joined = pos.rows() == 2 ? merge_listed<2>(pos, listed, tol, map)
                                                 : merge_listed<3>(pos, listed, tol, map);
    new_IDs.swap(map);
    return joined;
}

/// Joins nodes of one element, in one pass or until a pass joins none. The elements stay as they
/// are until everything that can run out of memory has been done.
template <unsigned Dim>
std::uint64_t join_in_elements(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                               const dense2D<unsigned int>* last, std::uint64_t nodes, double tol,
                               bool repeat, dense1D<unsigned int>& new_IDs) {
    element_pairs<Dim> pairs(pos, first, last, tol);
    std::uint64_t total = 0;
    std::uint64_t joined = 0;
    do {
        pairs.begin_pass(new_IDs);
        joined = join_nearest_first(pairs, tol, nodes, new_IDs);
        resolve_chains(new_IDs);
        total += joined;
    } while (repeat && joined > 0);
    return total;
}

/// Connectivities whose other arguments passed their checks.
int merge_elements(const dense2D<double>& pos, dense2D<unsigned int>* first,
                   dense2D<unsigned int>* last, dense1D<unsigned int>& new_IDs, double tol,
                   unsigned int flags) {
    dense1D<unsigned int> used;
    append_unique(used, first, last);
    if (used.empty()) return 0;
    if (!check_IDs(used, index_bound(pos.cols()))) return -2;
    std::uint64_t joined = 0;
    if (flags == 0) {
        joined = merge_listed(pos, {used, {}}, tol, new_IDs);
    } else {
        dense1D<unsigned int> map = identity(pos.cols());
        const auto join = pos.rows() == 2 ? join_in_elements<2> : join_in_elements<3>;
        joined = join(pos, first, last, used.size(), tol, flags == 2, map);
        new_IDs.swap(map);
    }
    for (auto m = first; m != last; ++m)
        change_indices(*m, new_IDs);
    return count_result(joined);
}

/// A matrix of the columns `order` of another one.
template <unsigned Dim>
dense2D<double> columns(const dense2D<double>& pos, const dense1D<unsigned int>& order) {
    dense2D<double> taken;
    need(taken.make_zeros(Dim, order.size()));
    prefer_large_pages(taken.data(), Dim * order.size() * sizeof(double));
    for (std::uint64_t k = 0; k < order.size(); ++k)
        std::copy_n(&pos(0, order[k]), Dim, &taken(0, k));
    return taken;
}

bool is_planar_or_spatial(const dense2D<double>& pos) {
    return pos.rows() == 2 || pos.rows() == 3;
}

} // namespace

int merge(const dense2D<double>& pos, const dense1D<unsigned int>& nodes1,
          const dense1D<unsigned int>& nodes2, dense1D<unsigned int>& new_IDs,
          double tol) noexcept {
    const dense1D<unsigned int> from(nodes1);
    const dense1D<unsigned int> onto(nodes2);
    new_IDs.clear();
    if (pos.cols() == 0) return 0;
    if (!is_planar_or_spatial(pos)) return -1;
    if (!check_IDs(from, index_bound(pos.cols()))) return -2;
    if (!check_IDs(onto, index_bound(pos.cols()))) return -3;
    if (!(tol >= 0)) return -4;
    if (from.empty() || onto.empty()) return 0;
    return guarded([&] {
        return count_result(
            merge_listed(pos, in_order_of_turn(from, onto, pos.cols()), tol, new_IDs));
    });
}

int merge(const dense2D<double>& pos, const dense1D<unsigned int>& nodes,
          dense1D<unsigned int>& new_IDs, double tol) noexcept {
    return merge(pos, nodes, nodes, new_IDs, tol);
}

int merge(const dense2D<double>& pos, dense2D<unsigned int>* first, dense2D<unsigned int>* last,
          dense1D<unsigned int>& new_IDs, double tol, unsigned int flags) noexcept {
    new_IDs.clear();
    if (pos.cols() == 0 || first == last) return 0;
    if (!is_planar_or_spatial(pos)) return -1;
    if (is_reversed(first, last)) return -3;
    if (!(tol >= 0)) return -5;
    if (flags > 2) return -6;
    return guarded([&] { return merge_elements(pos, first, last, new_IDs, tol, flags); });
}

int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM,
          dense1D<unsigned int>& new_IDs, double tol, unsigned int flags) noexcept {
    return merge(pos, &connectM, &connectM + 1, new_IDs, tol, flags);
}

int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM1,
          dense2D<unsigned int>& connectM2, dense1D<unsigned int>& new_IDs, double tol,
          unsigned int flags) noexcept {
    // Views of both: renumbering writes through to the elements of the caller's matrices.
    std::array<dense2D<unsigned int>, 2> views = {connectM1, connectM2};
    return merge(pos, views.data(), views.data() + 2, new_IDs, tol, flags);
}

int merge(const dense2D<double>& pos, dense2D<unsigned int>* first, dense2D<unsigned int>* last,
          double tol, unsigned int flags) noexcept {
    dense1D<unsigned int> new_IDs;
    return merge(pos, first, last, new_IDs, tol, flags);
}

int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM, double tol,
          unsigned int flags) noexcept {
    dense1D<unsigned int> new_IDs;
    return merge(pos, connectM, new_IDs, tol, flags);
}

int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM1,
          dense2D<unsigned int>& connectM2, double tol, unsigned int flags) noexcept {
    dense1D<unsigned int> new_IDs;
    return merge(pos, connectM1, connectM2, new_IDs, tol, flags);
}

int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM) noexcept {
    return merge(pos, connectM, default_tolerance, 0);
}

int merge(const dense2D<double>& pos, dense2D<unsigned int>& connectM1,
          dense2D<unsigned int>& connectM2) noexcept {
    return merge(pos, connectM1, connectM2, default_tolerance, 0);
}

int merge(dense2D<double>& pos, dense1D<unsigned int>& new_IDs, double tol) noexcept {
    new_IDs.clear();
    if (pos.cols() == 0) return 0;
    if (!is_planar_or_spatial(pos)) return -1;
    if (!(tol >= 0)) return -3;
    return guarded([&] {
        dense1D<unsigned int> map;
        const std::uint64_t joined = merge_listed(pos, {identity(pos.cols()), {}}, tol, map);
        dense2D<double> moved = pos.rows() == 2 ? columns<2>(pos, map) : columns<3>(pos, map);
        pos.swap(moved);
        new_IDs.swap(map);
        return count_result(joined);
    });
}

int merge(dense2D<double>& pos, double tol) noexcept {
    dense1D<unsigned int> new_IDs;
    return merge(pos, new_IDs, tol);
}

} // namespace kvx::zelvo
