#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>

#include "foundation/appending.h"
#include "foundation/hashing.h"
#include "foundation/large_blocks.h"
#include "search/distances.h"

namespace kvx::zelvo {

/// Seeds a Mersenne Twister with state word[0] = 1, word[k] = 69069 word[k - 1].
struct multiplicative_seed {
    using result_type = std::uint32_t;
    template <class Iterator>
    void generate(Iterator first, Iterator last) const {
        std::uint32_t word = 1;
        for (; first != last; ++first, word *= 69069u)
            *first = word;
    }
};

/// Shuffles so that nothing but the length decides: the generator starts anew at every call. The
/// draw and its remainder are part of the result, which std::shuffle leaves to each library.
inline void shuffle(std::vector<unsigned int>& list) {
    multiplicative_seed seed;
    std::mt19937 generator(seed);
    for (std::size_t i = 1; i < list.size(); ++i)
        std::swap(list[i], list[static_cast<std::size_t>(generator() % (i + 1))]);
}

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
    void insert(std::vector<unsigned int> nodes) {
        shuffle(nodes);
        std::erase_if(nodes, [&](unsigned int node) { return node >= pos_->cols(); });
        if (nodes.empty() || !has_node(largest_)) return;
        constexpr std::uint64_t most_records = no_node;
        nodes.resize(std::min<std::uint64_t>(nodes.size(), most_records - records_.size()));
        const std::size_t wanted = records_.size() + nodes.size();
        if (wanted > records_.capacity()) records_.reserve(std::max(wanted, 2 * records_.size()));
        largest_ = std::max(largest_, *std::max_element(nodes.begin(), nodes.end()));
        if (records_.empty()) {
            build(std::move(nodes));
        } else {
            std::vector<placed_node> items(nodes.size());
            place(nodes.data(), nodes.data() + nodes.size(), items.data());
            insert_below(0, 0, items.data(), items.data() + items.size(), live_coordinates(*pos_));
        }
    }

    /// The node closest to P other than `skipped`, or no_node.
    unsigned int find_closest(const point& P, unsigned int skipped = no_node) const {
        if (!covered()) return no_node;
        nearest best;
        copied_coordinates copies(*pos_);
        if (search_closest(copies, P, skipped, best)) return best.node;
        best = {};
        live_coordinates live(*pos_);
        search_closest(live, P, skipped, best);
        return best.node;
    }

    /// Appends the nodes of all records inside the closed box: record, lower, upper subtree. Throws
    /// std::bad_alloc with some of them appended.
    void find_in_box(const point& min, const point& max, dense1D<unsigned int>& nodes) const {
        if (!covered()) return;
        const std::uint64_t before = nodes.size();
        copied_coordinates copies(*pos_);
        if (search_box(copies, min, max, nodes)) return;
        nodes.resize(before);
        live_coordinates live(*pos_);
        search_box(live, min, max, nodes);
    }

    bool has_node(unsigned int node) const { return node < pos_->cols() && pos_->rows() >= Dim; }
    point at(unsigned int node) const {
        point x;
        std::copy_n(coordinates(node), Dim, x.begin());
        return x;
    }

private:
    struct placed_node {
        point x;
        unsigned int node;
    };
    /// A node with its coordinates at the time of its insertion.
    struct record : placed_node {
        unsigned int lower = no_node;
        unsigned int upper = no_node;
    };
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
        explicit live_coordinates(const dense2D<double>& pos)
            : first_(pos.data())
            , stride_(pos.ld()) {}
        const double* of(unsigned int node) const { return first_ + node * stride_; }
        const double* of(const record& R) const { return of(R.node); }
        bool hold() const { return true; }

    private:
        const double* first_;
        std::uint64_t stride_;
    };
    /// The coordinates beside the records, just copied.
    struct built_coordinates {
        const double* of(const record& R) const { return R.x.data(); }
    };
    /// The coordinates beside the records, for which a search does not wait. What it has read is
    /// compared with the caller's coordinates afterwards, many at a time: where all bits are the
    /// same, it went the way of a search that reads those.
    class copied_coordinates {
    public:
        explicit copied_coordinates(const dense2D<double>& pos)
            : live_(pos) {}
        /// nullptr once the caller's coordinates have been seen to differ.
        const double* of(const record& R) {
            if (count_ == read_.size() && !hold()) return nullptr;
            read_[count_++] = &R;
            prefetch(live_.of(R));
            return R.x.data();
        }
        /// Whether the caller's coordinates are those that have been read.
        bool hold() {
            std::uint64_t difference = 0;
            for (unsigned k = 0; k < count_; ++k) {
                const double* const x = live_.of(*read_[k]);
                for (unsigned i = 0; i < Dim; ++i)
                    difference |= std::bit_cast<std::uint64_t>(x[i]) ^
                                  std::bit_cast<std::uint64_t>(read_[k]->x[i]);
            }
            count_ = 0;
            return difference == 0;
        }

    private:
        live_coordinates live_;
        std::array<const record*, 64> read_;
        unsigned count_ = 0;
    };
    /// Nodes of one subtree, in the order of their insertion.
    struct segment {
        std::size_t first;
        std::size_t last;
        unsigned int parent;
        bool is_lower;
        unsigned depth;
    };

    static unsigned next(unsigned axis) { return axis + 1 == Dim ? 0 : axis + 1; }

    const double* coordinates(unsigned int node) const { return pos_->data() + node * pos_->ld(); }

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

    unsigned int append(const placed_node& placed) {
        records_.push_back({placed});
        return static_cast<unsigned int>(records_.size() - 1);
    }

    /// Both records below are fetched before it is known which of them are visited.
    void prefetch_below(const record& R) const {
        for (const unsigned int r : {R.lower, R.upper}) {
            const record& below = records_[r != no_node ? r : 0];
            prefetch(&below);
            prefetch(&below.upper);
        }
    }

    /// False when the coordinates do not hold.
    template <class Coordinates>
    bool search_closest(Coordinates& coordinates, const point& P, unsigned int skipped,
                        nearest& best) const {
        unsigned int r = 0;
        for (unsigned axis = 0; r != no_node; axis = next(axis)) {
            const record& R = records_[r];
            prefetch_below(R);
            const double* const x = coordinates.of(R);
            if (!x) return false;
            if (R.node != skipped) best.offer(R.node, squared_distance<Dim>(x, P.data()));
            if (best.d2 == 0) return coordinates.hold();
            r = x[axis] > P[axis] ? R.lower : R.upper;
        }
        return visit_near(coordinates, P, skipped, best) && coordinates.hold();
    }

    /// Depth-first visit pruned by the distance of the best node so far: record, upper, lower.
    template <class Coordinates>
    bool visit_near(Coordinates& coordinates, const point& P, unsigned int skipped,
                    nearest& best) const {
        struct pending {
            double boundary; ///< of a lower record: coordinate of its parent
            unsigned int record;
            unsigned split; ///< axis of its parent
        };
        constexpr double none = std::numeric_limits<double>::quiet_NaN();
        point min{};
        point max{};
        const auto shrink = [&] {
            const double radius = std::sqrt(best.d2);
            for (unsigned i = 0; i < Dim; ++i) {
                min[i] = P[i] - radius;
                max[i] = P[i] + radius;
            }
        };
        shrink();
        short_stack<pending, 128> visits;
        visits.push({none, 0, Dim - 1});
        while (!visits.empty()) {
            const auto [boundary, r, split] = visits.pop();
            // By now the box may have shrunk below the boundary.
            if (boundary <= min[split]) continue;
            const unsigned axis = next(split);
            const record& R = records_[r];
            prefetch_below(R);
            const double* const x = coordinates.of(R);
            if (!x) return false;
            if (inside(x, min, max) && R.node != skipped &&
                best.offer(R.node, squared_distance<Dim>(x, P.data())))
                shrink();
            const double c = x[axis];
            // Only what surely lies outside is left out: below a NaN anything may be.
            visits.push_if((R.lower != no_node) & !(c <= min[axis]), {c, R.lower, axis});
            visits.push_if((R.upper != no_node) & !(c >= max[axis]), {none, R.upper, axis});
        }
        return true;
    }

    /// False when the coordinates do not hold.
    template <class Coordinates>
    bool search_box(Coordinates& coordinates, const point& min, const point& max,
                    dense1D<unsigned int>& nodes) const {
        appender<unsigned int> found(nodes);
        short_stack<std::pair<unsigned int, unsigned>, 128> visits;
        visits.push({0, 0});
        while (!visits.empty()) {
            const auto [r, axis] = visits.pop();
            const record& R = records_[r];
            prefetch_below(R);
            const double* const x = coordinates.of(R);
            if (!x) return false;
            if (inside(x, min, max)) found.push(R.node);
            // Only what surely lies outside is left out: below a NaN anything may be.
            visits.push_if((R.upper != no_node) & !(x[axis] > max[axis]), {R.upper, next(axis)});
            visits.push_if((R.lower != no_node) & !(x[axis] < min[axis]), {R.lower, next(axis)});
        }
        return coordinates.hold();
    }

    void place(const unsigned int* first, const unsigned int* last, placed_node* items) const {
        std::transform(first, last, items, [this](unsigned int node) {
            return placed_node{at(node), node};
        });
    }

    /// The tree of one insertion after the other. The first nodes are inserted so; they stay in
    /// cache while the others look for their subtree below them. Then each subtree is made, in
    /// cache as well.
    void build(std::vector<unsigned int> nodes) {
        constexpr std::size_t most_on_top = 4096;
        constexpr unsigned deep = 64; // coincident nodes are chains
        std::vector<placed_node> items(std::min(nodes.size(), most_on_top));
        std::vector<placed_node> uppers;
        const std::size_t top = items.size();
        place(nodes.data(), nodes.data() + top, items.data());
        append(items[0]);
        const unsigned depth =
            insert_below(0, 0, items.data() + 1, items.data() + top, built_coordinates());
        if (top == nodes.size()) return;
        if (depth > deep) {
            records_.clear();
            build_subtree(nodes.data(), nodes.data() + nodes.size(),
                          {0, nodes.size(), no_node, false, 0}, items, uppers);
            return;
        }
        std::vector<unsigned> ends = gather_by_gap(nodes, top);
        std::vector<unsigned> depths(top);
        for (unsigned int r = 0; r < top; ++r) {
            for (const unsigned int child : {records_[r].lower, records_[r].upper})
                if (child != no_node) depths[child] = depths[r] + 1;
        }
        const unsigned int* first = nodes.data() + top;
        for (unsigned int gap = 0; gap < ends.size(); ++gap) {
            const unsigned int* const last = nodes.data() + ends[gap];
            if (first == last) continue;
            build_subtree(first, last,
                          {0, static_cast<std::size_t>(last - first), gap / 2, gap % 2 == 0,
                           depths[gap / 2] + 1},
                          items, uppers);
            first = last;
        }
    }

    /// Sorts the nodes from `top` on by the missing children below the first records that they
    /// come to: by record, lower child first, otherwise in the order that they had. Returns where
    /// those of each end. Several nodes go down side by side, as one waits at every step.
    std::vector<unsigned> gather_by_gap(std::vector<unsigned int>& nodes, std::size_t top) const {
        constexpr unsigned lanes = 8;
        std::vector<unsigned int> next_of(2 * top);
        for (unsigned int r = 0; r < top; ++r) {
            const record& R = records_[r];
            next_of[2 * r] = R.lower != no_node ? R.lower : static_cast<unsigned>(top) + 2 * r;
            next_of[2 * r + 1] =
                R.upper != no_node ? R.upper : static_cast<unsigned>(top) + 2 * r + 1;
        }
        std::vector<unsigned> ends(2 * top + 1);
        std::vector<unsigned int> gaps(nodes.size());
        const live_coordinates live(*pos_);
        for (std::size_t k = top; k < nodes.size(); k += lanes) {
            const std::size_t used = std::min<std::size_t>(lanes, nodes.size() - k);
            std::array<point, lanes> x;
            std::array<unsigned int, lanes> r{};
            for (std::size_t i = 0; i < lanes; ++i) {
                if (k + i + 3 * lanes < nodes.size()) prefetch(live.of(nodes[k + i + 3 * lanes]));
                x[i] = at(nodes[k + std::min(i, used - 1)]);
            }
            bool on_top = true;
            for (unsigned axis = 0; on_top; axis = next(axis)) {
                on_top = false;
                for (std::size_t i = 0; i < lanes; ++i) {
                    const bool there = r[i] < top;
                    const unsigned int parent = there ? r[i] : 0;
                    const bool lower = records_[parent].x[axis] > x[i][axis];
                    const unsigned int child = next_of[2 * parent + !lower];
                    r[i] = there ? child : r[i];
                    on_top |= r[i] < top;
                }
            }
            for (std::size_t i = 0; i < used; ++i) {
                gaps[k + i] = r[i] - static_cast<unsigned>(top);
                ++ends[gaps[k + i] + 1];
            }
        }
        ends[0] = static_cast<unsigned>(top);
        for (std::size_t gap = 1; gap < ends.size(); ++gap)
            ends[gap] += ends[gap - 1];
        std::vector<unsigned int> sorted(nodes.size());
        for (std::size_t k = top; k < nodes.size(); ++k)
            sorted[ends[gaps[k]]++] = nodes[k];
        nodes.swap(sorted);
        ends.pop_back();
        return ends;
    }

    /// Makes a subtree from the top: the first node of a segment is its root and parts the others,
    /// which keep their order.
    void build_subtree(const unsigned int* first, const unsigned int* last, const segment& whole,
                       std::vector<placed_node>& items, std::vector<placed_node>& uppers) {
        constexpr std::size_t short_segment = 16;
        // Deeper segments hold many nodes at equal coordinates, which do not part.
        const unsigned deep =
            whole.depth + 64 + 4 * static_cast<unsigned>(std::bit_width(whole.last));
        if (items.size() < whole.last) items.resize(whole.last);
        if (uppers.size() < whole.last) uppers.resize(whole.last);
        place(first, last, items.data());
        std::vector<segment> segments = {whole};
        while (!segments.empty()) {
            const segment s = segments.back();
            segments.pop_back();
            const placed_node pivot = items[s.first];
            const unsigned axis = s.depth % Dim;
            const unsigned int root = append(pivot);
            if (s.parent != no_node)
                (s.is_lower ? records_[s.parent].lower : records_[s.parent].upper) = root;
            const std::size_t rest = s.first + 1;
            if (s.last - rest < short_segment || s.depth > deep) {
                insert_below(root, axis, items.data() + rest, items.data() + s.last,
                             built_coordinates());
                continue;
            }
            std::size_t lower_end = rest;
            std::size_t upper_count = 0;
            for (std::size_t k = rest; k < s.last; ++k) {
                const bool lower = pivot.x[axis] > items[k].x[axis];
                (lower ? items[lower_end] : uppers[upper_count]) = items[k];
                lower_end += lower;
                upper_count += !lower;
            }
            std::copy_n(uppers.begin(), upper_count,
                        items.begin() + static_cast<std::ptrdiff_t>(lower_end));
            if (lower_end < s.last)
                segments.push_back({lower_end, s.last, root, false, s.depth + 1});
            if (rest < lower_end) segments.push_back({rest, lower_end, root, true, s.depth + 1});
        }
    }

    /// Inserts nodes one after the other below a record that splits on `root_axis`.
    ///
    /// A node at the coordinates of an earlier one takes the same path up to it and its upper
    /// subtree then. As soon as a path is long, the last record at each place is remembered, so
    /// that coincident nodes do not walk down the whole chain again and again.
    template <class Coordinates>
    unsigned insert_below(unsigned int root, unsigned root_axis, const placed_node* first,
                          const placed_node* last, const Coordinates& coordinates) {
        constexpr unsigned long_path = 128;
        struct place {
            point x;
            unsigned int record;
            unsigned axis;
        };
        std::vector<place> places;
        std::optional<hash_slots> slots; // once paths are long
        unsigned longest = 0;
        for (; first != last; ++first) {
            const auto same = [&](unsigned int k) { return coincide(places[k].x, first->x); };
            unsigned int r = root;
            unsigned axis = root_axis;
            unsigned int known = no_node;
            if (slots) {
                known = slots->find_or_insert(hash(first->x, slots->seed()),
                                              static_cast<unsigned int>(places.size()), same);
                if (known == no_node) {
                    known = static_cast<unsigned int>(places.size());
                    places.push_back({first->x, root, root_axis});
                }
                r = places[known].record;
                axis = places[known].axis;
            }
            const unsigned int fresh = append(*first);
            unsigned steps = 0;
            for (unsigned int* child = nullptr;; r = *child, axis = next(axis), ++steps) {
                const double c = coordinates.of(records_[r])[axis];
                child = c > first->x[axis] ? &records_[r].lower : &records_[r].upper;
                if (*child != no_node) continue;
                *child = fresh;
                break;
            }
            if (slots) {
                places[known].record = fresh;
                places[known].axis = next(axis);
            }
            if (!slots && steps > long_path)
                slots.emplace(static_cast<std::uint64_t>(last - first));
            longest = std::max(longest, steps);
        }
        return longest;
    }

    static std::uint64_t bits(double x) {
        return std::isnan(x) ? ~std::uint64_t{0} : std::bit_cast<std::uint64_t>(x + 0.0);
    }
    static std::uint64_t hash(const point& x, std::uint64_t h) {
        for (const double c : x)
            h = mixed_bits(h + bits(c));
        return h;
    }
    /// Whether no comparison tells two points apart.
    static bool coincide(const point& a, const point& b) {
        return std::equal(a.begin(), a.end(), b.begin(),
                          [](double p, double q) { return bits(p) == bits(q); });
    }

    const dense2D<double>* pos_;
    std::vector<record> records_;
    unsigned int largest_ = 0;
};

} // namespace kvx::zelvo
