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
    /// A node with its coordinates at the time of its insertion.
    struct record : placed_node<Dim> {
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
        tree_builder<Dim, record> builder(*pos_, records_);
        if (records_.empty()) {
            builder.build(nodes);
        } else {
            builder.insert(nodes, live_coordinates(*pos_));
        }
    }

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

    const dense2D<double>* pos_;
    std::vector<record> records_;
    unsigned int largest_ = 0;
};

} // namespace kvx::zelvo
