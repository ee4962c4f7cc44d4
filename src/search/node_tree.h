#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>

#include "foundation/appending.h"
#include "foundation/large_blocks.h"
#include "search/distances.h"
#include "search/tree_building.h"

namespace kvx::zelvo {

/// Stack of work to do that allocates only beyond its first N items.
template <class T, unsigned N>
class short_stack {
public:
    bool empty() const { return size_ == 0; }
    void push(const T& item) {
        if (size_ < N) {
            first_[size_] = item;
        } else {
            rest_.push_back(item);
        }
        ++size_;
    }
    /// Without a branch on `wanted`, which nothing predicts.
    void push_if(bool wanted, const T& item) {
        if (size_ < N) {
            first_[size_] = item;
            size_ += wanted;
        } else if (wanted) {
            push(item);
        }
    }
    T pop() {
        if (--size_ < N) return first_[size_];
        const T item = rest_.back();
        rest_.pop_back();
        return item;
    }

private:
    std::array<T, N> first_;
    std::vector<T> rest_;
    std::size_t size_ = 0;
};

/// Binary search tree over node indices. The record at depth d splits on axis d mod Dim: below it,
/// nodes with a smaller coordinate lie in its lower subtree, all others in its upper subtree.
/// Nothing recurses: m coincident nodes are a chain of depth m.
template <unsigned Dim>
class node_tree {
public:
    using point = std::array<double, Dim>;

    explicit node_tree(const dense2D<double>& pos)
        : pos_(&pos) {}

    std::uint64_t size() const { return records_.size(); }

    /// Inserts the nodes in shuffled order; those beyond the coordinate matrix are skipped. Throws
    /// std::bad_alloc with some of them inserted. Takes none when the matrix has lost nodes of the
    /// tree.
    void insert(std::span<const unsigned int> nodes) {
        const scratch<unsigned int> copy = make_scratch<unsigned int>(nodes.size());
        std::copy(nodes.begin(), nodes.end(), copy.get());
        insert_listed({copy.get(), nodes.size()});
    }

    /// Inserts every node of the coordinate matrix, as insert() does.
    void insert_all() {
        need_numbers_for(pos_->cols());
        const scratch<unsigned int> nodes = make_scratch<unsigned int>(pos_->cols());
        std::iota(nodes.get(), nodes.get() + pos_->cols(), 0u);
        insert_listed({nodes.get(), pos_->cols()});
    }

    /// The node closest to P other than `skipped`, or no_node.
    unsigned int find_closest(const point& P, unsigned int skipped = no_node) const {
        if (!covered()) return no_node;
        nearest best;
        if (find_closest_ahead(P, skipped, best)) return best.node;
        best = {};
        if (search_closest(built_coordinates(), P, skipped, best)) return best.node;
        best = {};
        search_closest(live_coordinates(*pos_), P, skipped, best);
        return best.node;
    }

    /// Appends the nodes of all records inside the closed box: record, lower, upper subtree. Throws
    /// std::bad_alloc with some of them appended.
    void find_in_box(const point& min, const point& max, dense1D<unsigned int>& nodes) const {
        if (!covered() || find_in_box_ahead(min, max, nodes)) return;
        const std::uint64_t before = nodes.size();
        if (search_box(built_coordinates(), min, max, nodes)) return;
        nodes.resize(before);
        search_box(live_coordinates(*pos_), min, max, nodes);
    }

    bool has_node(unsigned int node) const { return node < pos_->cols() && pos_->rows() >= Dim; }
    point at(unsigned int node) const {
        point x;
        std::copy_n(live_coordinates(*pos_).of(node), Dim, x.begin());
        return x;
    }

private:
    using record = tree_record;
    struct nearest {
        double d2 = std::numeric_limits<double>::max();
        unsigned int node = no_node;
        bool offer(unsigned int other, double other_d2) {
            if (!(other_d2 < d2)) return false;
            node = other;
            d2 = other_d2;
            return true;
        }
    };
    /// The caller's coordinates, of which each is far from those of the records around.
    class live_coordinates {
    public:
        static constexpr bool reads_live = true;
        explicit live_coordinates(const dense2D<double>& pos)
            : first_(pos.data())
            , stride_(pos.ld()) {}
        const double* of(unsigned int node) const { return first_ + node * stride_; }
        double split(const record& R) const { return of(R.node)[R.axis]; }
        void fetch(const record& R) const {
            prefetch(of(R.node));
            prefetch(of(R.node) + Dim - 1);
        }
        /// Whether a record's coordinate is still the one that it came with.
        bool hold(const record& R) const {
            return std::bit_cast<std::uint64_t>(split(R)) == std::bit_cast<std::uint64_t>(R.split);
        }

    private:
        const double* first_;
        std::uint64_t stride_;
    };

    void insert_listed(std::span<unsigned int> nodes) {
        constexpr std::uint64_t most_records = no_node;
        shuffle(nodes);
        const auto end = std::remove_if(nodes.begin(), nodes.end(),
                                        [&](unsigned int node) { return node >= pos_->cols(); });
        const auto count = std::min(static_cast<std::uint64_t>(end - nodes.begin()),
                                    most_records - records_.size());
        nodes = nodes.first(count);
        if (nodes.empty() || !has_node(largest_)) return;
        const std::size_t wanted = records_.size() + nodes.size();
        if (wanted > records_.capacity()) {
            records_.reserve(std::max(wanted, 2 * records_.size()));
            prefer_large_pages(records_.data(), records_.capacity() * sizeof(record));
        }
        largest_ = std::max(largest_, *std::max_element(nodes.begin(), nodes.end()));
        tree_builder<Dim> builder(*pos_, records_);
        if (records_.empty()) {
            builder.build(nodes);
        } else {
            builder.insert(nodes, live_coordinates(*pos_));
        }
    }

    /// Whether there are records and the matrix still has all that they refer to.
    bool covered() const { return !records_.empty() && has_node(largest_); }

    /// Counts, as branches on a few comparisons would not be predicted.
    static bool inside(const double* x, const point& min, const point& max) {
        unsigned held = 0;
        for (unsigned i = 0; i < Dim; ++i) {
            held += min[i] <= x[i];
            held += x[i] <= max[i];
        }
        return held == 2 * Dim;
    }

    /// Both records below are fetched before it is known which of them are visited.
    void fetch_below(const record& R) const {
        for (const unsigned int r : {R.lower, R.upper})
            prefetch(&records_[r != no_node ? r : 0]);
    }

    /// A box that only shrinks while a search goes on.
    struct bounds {
        point min;
        point max;
        static bounds about(const point& P, double radius) {
            bounds box;
            for (unsigned i = 0; i < Dim; ++i) {
                box.min[i] = P[i] - radius;
                box.max[i] = P[i] + radius;
            }
            return box;
        }
        /// Whether the nearest search goes below a record whose coordinate is `split`. Only what
        /// surely lies outside is left out: below a NaN anything may be.
        bool lower(double split, unsigned axis) const { return !(split <= min[axis]); }
        bool upper(double split, unsigned axis) const { return !(split >= max[axis]); }
        /// Whether a point lies inside and not on the boundary.
        bool holds_within(const double* x) const {
            unsigned held = 0;
            for (unsigned i = 0; i < Dim; ++i) {
                held += min[i] < x[i];
                held += x[i] < max[i];
            }
            return held == 2 * Dim;
        }
    };

    struct visit {
        unsigned int record;
        unsigned parent; ///< place of its visit
    };
    /// The descent, then the upper and then the lower subtrees beside it, which is the order of the
    /// plain search. That narrows its box at once; here many subtrees are visited level by level
    /// with the box that they are entered with, so that no record waits for the one before. This
    /// visits all records that the plain search does, and more: their coordinates must be those of
    /// the walk, and what is found must be what the plain search comes to whatever its box is by
    /// then. False where that is not sure.
    bool find_closest_ahead(const point& P, unsigned int skipped, nearest& best) const {
        constexpr unsigned most_steps = 64;
        std::array<visit, 1024> visits;
        const live_coordinates live(*pos_);
        unsigned steps = 0;
        for (unsigned int r = 0; r != no_node; ++steps) {
            if (steps == most_steps) return false;
            const record& R = records_[r];
            fetch_below(R);
            live.fetch(R);
            visits[steps] = {r, steps - 1};
            r = R.split > P[R.axis] ? R.lower : R.upper;
        }
        for (unsigned k = 0; k < steps; ++k) {
            const record& R = records_[visits[k].record];
            if (!live.hold(R)) return false;
            if (R.node == skipped) continue;
            best.offer(R.node, squared_distance<Dim>(live.of(R.node), P.data()));
            if (best.d2 == 0) return true;
        }
        unsigned n = steps;
        for (const bool lower : {false, true}) {
            const bounds box = bounds::about(P, std::sqrt(best.d2));
            const auto visit_below = [&](unsigned place, bool go_lower, bool go_upper) {
                const record& R = records_[visits[place].record];
                visits[n] = {R.upper, place};
                n += go_upper & (R.upper != no_node) & box.upper(R.split, R.axis);
                visits[n] = {R.lower, place};
                n += go_lower & (R.lower != no_node) & box.lower(R.split, R.axis);
            };
            const unsigned first = n;
            for (unsigned k = 0; k < steps; ++k) {
                const record& R = records_[visits[k].record];
                const bool was_lower = R.split > P[R.axis];
                visit_below(k, lower & !was_lower, !lower & was_lower);
            }
            for (unsigned k = first; k < n; ++k) {
                if (n + most_steps > visits.size()) return false;
                const record& R = records_[visits[k].record];
                fetch_below(R);
                live.fetch(R);
                visit_below(k, true, true);
            }
            if (!take_closest(visits.data(), first, n, P, skipped, best)) return false;
        }
        return true;
    }

    /// Takes the closest node of some visits, the first one in the order of the plain search where
    /// several are equally close. False when it is not sure that the plain search takes it.
    bool take_closest(const visit* visits, unsigned first, unsigned last, const point& P,
                      unsigned int skipped, nearest& best) const {
        const live_coordinates live(*pos_);
        double second = best.d2; // of the next distance
        unsigned place = 0;
        unsigned ties = 64; // each of which walks up some visits
        for (unsigned k = first; k < last; ++k) {
            const record& R = records_[visits[k].record];
            if (!live.hold(R)) return false;
            const double d2 = squared_distance<Dim>(live.of(R.node), P.data());
            if (!(d2 <= second) || R.node == skipped) continue;
            if (d2 < best.d2) {
                second = best.d2;
                best = {d2, R.node};
                place = k;
            } else if (d2 > best.d2) {
                second = d2;
            } else if (place != 0) {
                if (ties-- == 0) return false;
                if (is_before(visits, place, k)) continue;
                best.node = R.node;
                place = k;
            }
        }
        return place == 0 || surely_visited(visits, place, P, std::sqrt(second));
    }

    /// Whether the plain search comes to the record of a visit before that of a later one.
    bool is_before(const visit* visits, unsigned place, unsigned later) const {
        unsigned child = no_node; // on the way up from `place`
        while (place != later) {
            if (later > place) {
                later = visits[later].parent;
            } else {
                child = std::exchange(place, visits[place].parent);
            }
        }
        return child == no_node || records_[visits[place].record].upper == visits[child].record;
    }

    /// Whether the plain search takes the node of a visit as long as its radius is not below the
    /// one given: rounding could keep it outside the box or cut off a record above it.
    bool surely_visited(const visit* visits, unsigned place, const point& P, double radius) const {
        const bounds box = bounds::about(P, radius);
        const live_coordinates live(*pos_);
        if (!inside(live.of(records_[visits[place].record].node), box.min, box.max)) return false;
        for (unsigned k = place; k != 0; k = visits[k].parent) {
            const record& R = records_[visits[visits[k].parent].record];
            if (!(R.lower == visits[k].record ? box.lower(R.split, R.axis)
                                              : box.upper(R.split, R.axis)))
                return false;
        }
        return true;
    }

    /// Goes down by the given coordinates, then visits what is near; distances are those of the
    /// caller's coordinates. False when the given ones turn out to be others, or where that may not
    /// be what the plain search comes to.
    template <class Coordinates>
    bool search_closest(const Coordinates& coordinates, const point& P, unsigned int skipped,
                        nearest& best) const {
        const live_coordinates live(*pos_);
        for (unsigned int r = 0; r != no_node;) {
            constexpr unsigned ahead = 16; // chains of coincident nodes stand in a row
            if (ahead < records_.size() - r) live.fetch(records_[r + ahead]);
            const record& R = records_[r];
            if (!coordinates.reads_live && !live.hold(R)) return false;
            if (R.node != skipped)
                best.offer(R.node, squared_distance<Dim>(live.of(R.node), P.data()));
            if (best.d2 == 0) return true;
            r = coordinates.split(R) > P[R.axis] ? R.lower : R.upper;
        }
        return visit_near(coordinates, P, skipped, best);
    }

    /// Depth-first visit pruned by the distance of the best node so far: record, upper, lower. Where
    /// coordinates are not the caller's, these are read many at a time, so that the box is too wide
    /// for a while: what is then visited for nothing does not lie within the box any more, but for
    /// rounding on its boundary.
    template <class Coordinates>
    bool visit_near(const Coordinates& coordinates, const point& P, unsigned int skipped,
                    nearest& best) const {
        constexpr bool plain = Coordinates::reads_live;
        struct pending {
            double boundary; ///< of a lower record: coordinate of its parent
            unsigned int record;
            unsigned split; ///< axis of its parent
        };
        constexpr double none = std::numeric_limits<double>::quiet_NaN();
        const live_coordinates live(*pos_);
        bounds box = bounds::about(P, std::sqrt(best.d2));
        std::array<const record*, plain ? 1 : 64> read{};
        short_stack<pending, 128> visits;
        const auto go_below = [&](const record& R) {
            const double c = coordinates.split(R);
            visits.push_if((R.lower != no_node) & box.lower(c, R.axis), {c, R.lower, R.axis});
            visits.push_if((R.upper != no_node) & box.upper(c, R.axis), {none, R.upper, R.axis});
        };
        visits.push({none, 0, 0});
        while (!visits.empty()) {
            unsigned n = 0;
            while (n < read.size() && !visits.empty()) {
                const auto [boundary, r, split] = visits.pop();
                // By now the box may have shrunk below the boundary.
                if (!box.lower(boundary, split)) continue;
                const record& R = records_[r];
                read[n++] = &R;
                fetch_below(R);
                live.fetch(R);
                if (!plain) go_below(R);
            }
            for (unsigned k = 0; k < n; ++k) {
                const record& R = *read[k];
                if (!plain && !live.hold(R)) return false;
                const double* const x = live.of(R.node);
                if (inside(x, box.min, box.max) && R.node != skipped &&
                    best.offer(R.node, squared_distance<Dim>(x, P.data()))) {
                    if (!plain && !box.holds_within(x)) return false;
                    box = bounds::about(P, std::sqrt(best.d2));
                }
                if (plain) go_below(R);
            }
        }
        return true;
    }

    /// Visits level by level, so that no record waits for the one before, and puts what lies in
    /// the box into the order of the plain search. Takes no more than a bounded number of records,
    /// whose coordinates must be those of the walk: else false, with nothing appended.
    bool find_in_box_ahead(const point& min, const point& max, dense1D<unsigned int>& nodes) const {
        struct step {
            std::uint64_t path; ///< from the root, first step in the highest bit, upper set
            unsigned int record;
            unsigned depth;
        };
        std::array<step, 256> steps;
        const live_coordinates live(*pos_);
        unsigned n = 1;
        steps[0] = {0, 0, 0};
        for (unsigned head = 0; head < n; ++head) {
            const auto [path, r, depth] = steps[head];
            const record& R = records_[r];
            if (n + 2 > steps.size() || depth == 64) return false;
            fetch_below(R);
            live.fetch(R);
            steps[n] = {path, R.lower, depth + 1};
            n += (R.lower != no_node) & !(R.split < min[R.axis]);
            steps[n] = {path | std::uint64_t{1} << (63 - depth), R.upper, depth + 1};
            n += (R.upper != no_node) & !(R.split > max[R.axis]);
        }
        unsigned found = 0;
        for (unsigned k = 0; k < n; ++k) {
            const record& R = records_[steps[k].record];
            if (!live.hold(R)) return false;
            steps[found] = steps[k];
            found += inside(live.of(R.node), min, max);
        }
        std::sort(steps.begin(), steps.begin() + found, [](const step& a, const step& b) {
            return a.path != b.path ? a.path < b.path : a.depth < b.depth;
        });
        appender<unsigned int> out(nodes);
        out.make_room(found);
        for (unsigned k = 0; k < found; ++k)
            out.push(records_[steps[k].record].node);
        return true;
    }

    /// Goes by the given coordinates; the caller's, many at a time, decide what lies inside. False
    /// when they turn out to be others.
    template <class Coordinates>
    bool search_box(const Coordinates& coordinates, const point& min, const point& max,
                    dense1D<unsigned int>& nodes) const {
        appender<unsigned int> found(nodes);
        const live_coordinates live(*pos_);
        std::array<const record*, 64> read;
        short_stack<unsigned int, 128> visits;
        visits.push(0);
        bool held = true;
        while (held && !visits.empty()) {
            unsigned n = 0;
            while (n < read.size() && !visits.empty()) {
                const record& R = records_[visits.pop()];
                read[n++] = &R;
                fetch_below(R);
                live.fetch(R);
                const double c = coordinates.split(R);
                // Only what surely lies outside is left out: below a NaN anything may be.
                visits.push_if((R.upper != no_node) & !(c > max[R.axis]), R.upper);
                visits.push_if((R.lower != no_node) & !(c < min[R.axis]), R.lower);
            }
            for (unsigned k = 0; k < n; ++k) {
                held &= coordinates.reads_live || live.hold(*read[k]);
                if (inside(live.of(read[k]->node), min, max)) found.push(read[k]->node);
            }
        }
        return held;
    }

    const dense2D<double>* pos_;
    std::vector<record> records_;
    unsigned int largest_ = 0;
};

} // namespace kvx::zelvo
