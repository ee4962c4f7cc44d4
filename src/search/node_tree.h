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

#include "foundation/hashing.h"
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
            build(nodes);
        } else {
            std::vector<placed_node> items = placed(nodes);
            insert_below(0, 0, items.data(), items.data() + items.size());
        }
    }

    /// The node closest to P other than `skipped`, or no_node.
    unsigned int find_closest(const point& P, unsigned int skipped = no_node) const {
        nearest best;
        if (!covered()) return no_node;
        unsigned int r = 0;
        for (unsigned axis = 0; r != no_node; axis = next(axis)) {
            const record& R = records_[r];
            const double* const x = coordinates(R.node);
            if (R.node != skipped) best.offer(R.node, squared_distance<Dim>(x, P.data()));
            if (best.d2 == 0) return best.node;
            r = x[axis] > P[axis] ? R.lower : R.upper;
        }
        visit_near(P, skipped, best);
        return best.node;
    }

    /// Calls found(node) for every record inside the closed box: record, lower, upper subtree.
    template <class Found>
    void find_in_box(const point& min, const point& max, Found&& found) const {
        if (!covered()) return;
        short_stack<std::pair<unsigned int, unsigned>, 128> uppers;
        unsigned int r = 0;
        unsigned axis = 0;
        for (;;) {
            while (r != no_node) {
                const record& R = records_[r];
                const double* const x = coordinates(R.node);
                if (inside(x, min, max)) found(R.node);
                // Only what surely lies outside is left out: below a NaN anything may be.
                if (R.upper != no_node && !(x[axis] > max[axis]))
                    uppers.push({R.upper, next(axis)});
                r = x[axis] < min[axis] ? no_node : R.lower;
                axis = next(axis);
            }
            if (uppers.empty()) return;
            std::tie(r, axis) = uppers.pop();
        }
    }

    bool has_node(unsigned int node) const { return node < pos_->cols() && pos_->rows() >= Dim; }
    point at(unsigned int node) const {
        point x;
        std::copy_n(coordinates(node), Dim, x.begin());
        return x;
    }

private:
    struct record {
        unsigned int node;
        unsigned int lower;
        unsigned int upper;
    };
    struct placed_node {
        point x;
        unsigned int node;
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

    static bool inside(const double* x, const point& min, const point& max) {
        bool in = true;
        for (unsigned i = 0; i < Dim; ++i)
            in &= min[i] <= x[i] && x[i] <= max[i];
        return in;
    }

    unsigned int append(unsigned int node) {
        records_.push_back({node, no_node, no_node});
        return static_cast<unsigned int>(records_.size() - 1);
    }

    /// Depth-first visit pruned by the distance of the best node so far: record, upper, lower.
    void visit_near(const point& P, unsigned int skipped, nearest& best) const {
        struct pending {
            unsigned int record;
            unsigned axis;   ///< of that record
            double boundary; ///< coordinate of its parent, on the axis before
        };
        double radius = std::sqrt(best.d2);
        short_stack<pending, 128> lowers;
        unsigned int r = 0;
        unsigned axis = 0;
        for (;;) {
            while (r != no_node) {
                const record& R = records_[r];
                const double* const x = coordinates(R.node);
                if (R.node != skipped && in_box<Dim>(P.data(), x, radius) &&
                    best.offer(R.node, squared_distance<Dim>(x, P.data())))
                    radius = std::sqrt(best.d2);
                const double c = x[axis];
                const bool go_upper = !(c >= P[axis] + radius);
                axis = next(axis);
                if (R.lower != no_node) lowers.push({R.lower, axis, c});
                r = go_upper ? R.upper : no_node;
            }
            // By now the radius may have shrunk below the boundary.
            do {
                if (lowers.empty()) return;
                const pending lower = lowers.pop();
                const unsigned before = lower.axis == 0 ? Dim - 1 : lower.axis - 1;
                if (lower.boundary <= P[before] - radius) continue;
                r = lower.record;
                axis = lower.axis;
            } while (r == no_node);
        }
    }

    std::vector<placed_node> placed(const std::vector<unsigned int>& nodes) const {
        std::vector<placed_node> items(nodes.size());
        std::transform(nodes.begin(), nodes.end(), items.begin(), [this](unsigned int node) {
            return placed_node{at(node), node};
        });
        return items;
    }

    /// The tree of one insertion after the other, made from the top: the first node of a segment is
    /// the root of its subtree and parts the others, which keep their order. Same comparisons, but
    /// in sequence over memory.
    void build(const std::vector<unsigned int>& nodes) {
        constexpr std::size_t short_segment = 16;
        // Deeper segments hold many nodes at equal coordinates, which do not part.
        const unsigned deep = 64 + 4 * static_cast<unsigned>(std::bit_width(nodes.size()));
        std::vector<placed_node> items = placed(nodes);
        std::vector<placed_node> uppers(nodes.size());
        std::vector<segment> segments = {{0, items.size(), no_node, false, 0}};
        while (!segments.empty()) {
            const segment s = segments.back();
            segments.pop_back();
            const placed_node pivot = items[s.first];
            const unsigned axis = s.depth % Dim;
            const unsigned int root = append(pivot.node);
            if (s.parent != no_node)
                (s.is_lower ? records_[s.parent].lower : records_[s.parent].upper) = root;
            const std::size_t rest = s.first + 1;
            if (s.last - rest < short_segment || s.depth > deep) {
                insert_below(root, axis, items.data() + rest, items.data() + s.last);
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
    void insert_below(unsigned int root, unsigned root_axis, const placed_node* first,
                      const placed_node* last) {
        constexpr unsigned long_path = 128;
        struct place {
            point x;
            unsigned int record;
            unsigned axis;
        };
        std::vector<place> places;
        std::optional<hash_slots> slots; // once paths are long
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
            const unsigned int fresh = append(first->node);
            unsigned steps = 0;
            for (unsigned int* child = nullptr;; r = *child, axis = next(axis), ++steps) {
                const double c = coordinates(records_[r].node)[axis];
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
        }
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
