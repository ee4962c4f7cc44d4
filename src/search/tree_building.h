#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <span>
#include <utility>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>

#include "foundation/hashing.h"
#include "foundation/large_blocks.h"

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

/// std::mt19937 is the same, but may have its words in 64 bits each.
using mersenne_twister =
    std::mersenne_twister_engine<std::uint32_t, 32, 624, 397, 31, 0x9908b0df, 11, 0xffffffff, 7,
                                 0x9d2c5680, 15, 0xefc60000, 18, 1812433253>;

/// Shuffles so that nothing but the length decides: the generator starts anew at every call. The
/// draw and its remainder are part of the result, which std::shuffle leaves to each library.
inline void shuffle(std::span<unsigned int> list) {
    multiplicative_seed seed;
    mersenne_twister generator(seed);
    for (std::size_t i = 1; i < list.size(); ++i) {
        const std::uint32_t draw = generator();
        const bool fits = i < std::numeric_limits<std::uint32_t>::max(); // divides faster
        std::swap(list[i], list[fits ? draw % static_cast<std::uint32_t>(i + 1) : draw]);
    }
}

/// A node of a tree with what a walk down needs: the one coordinate that is compared, as it was at
/// the time of the insertion.
struct tree_record {
    double split; ///< coordinate on `axis`
    unsigned int node;
    unsigned axis;
    unsigned int lower = no_node;
    unsigned int upper = no_node;
};

/// The coordinates kept in the records.
struct built_coordinates {
    static constexpr bool reads_live = false;
    double split(const tree_record& R) const { return R.split; }
};

template <unsigned Dim>
unsigned next_axis(unsigned axis) {
    return axis + 1 == Dim ? 0 : axis + 1;
}

template <unsigned Dim>
struct placed_node {
    std::array<double, Dim> x;
    unsigned int node;
};

/// The tree of a few nodes, each of which splits the others of its subtree that come after it.
///
/// All go down level by level, in their order: the first one to come to a place stays there, and
/// the others go on below it. So no step waits for the one before, and no branch is to be
/// predicted.
template <unsigned Dim>
class small_tree {
public:
    static constexpr unsigned int most = 1024;

    /// Makes the tree of at most `most` nodes, at least one, whose root splits on `axis`. False
    /// when it is too deep for that, as where many nodes coincide.
    bool grow(const placed_node<Dim>* items, unsigned int count, unsigned axis) {
        std::fill_n(below_.begin(), count, std::array{no_node, no_node});
        std::size_t steps = 64 * std::size_t{count};
        unsigned int moving = 0;
        for (unsigned int k = 1; k < count; ++k)
            moving_[moving++] = {k, 0};
        for (; moving > 0; axis = next_axis<Dim>(axis)) {
            if (moving > steps) return false;
            steps -= moving;
            unsigned int left = 0;
            for (unsigned int j = 0; j < moving; ++j) {
                const auto [k, parent] = moving_[j];
                unsigned int& place = below_[parent][!(items[parent].x[axis] > items[k].x[axis])];
                const unsigned int child = place;
                const unsigned int goes_on = child != no_node;
                place = child & (k | (0u - goes_on)); // k where there was none
                moving_[left] = {k, child};
                left += goes_on;
            }
            moving = left;
        }
        count_ = count;
        return true;
    }

    /// Hands on the nodes of the tree with their axes: each before those below it, the lower ones
    /// first. Of the children of a node is told how far behind it they come, or no_node.
    template <class Emit>
    void list(unsigned root_axis, Emit&& emit) {
        sizes_[0] = 0;
        for (unsigned int k = count_; k-- > 0;)
            of(sizes_, k) = 1 + of(sizes_, below_[k][0]) + of(sizes_, below_[k][1]);
        of(ranks_, 0) = 0;
        of(axes_, 0) = root_axis;
        for (unsigned int k = 0; k < count_; ++k) {
            const unsigned int rank = of(ranks_, k);
            const unsigned axis = next_axis<Dim>(of(axes_, k));
            listed_[rank] = k;
            of(axes_, below_[k][0]) = axis;
            of(axes_, below_[k][1]) = axis;
            of(ranks_, below_[k][0]) = rank + 1;
            of(ranks_, below_[k][1]) = rank + 1 + of(sizes_, below_[k][0]);
        }
        for (unsigned int rank = 0; rank < count_; ++rank) {
            const unsigned int k = listed_[rank];
            const auto [lower, upper] = below_[k];
            emit(k, of(axes_, k), lower == no_node ? no_node : 1,
                 upper == no_node ? no_node : 1 + of(sizes_, lower));
        }
    }

private:
    struct step {
        unsigned int node;
        unsigned int parent;
    };
    /// One number for each node, and before them one for children that are not there.
    using numbers = std::array<unsigned int, most + 1>;
    static unsigned int& of(numbers& n, unsigned int k) { return n[k + 1u]; }

    std::array<std::array<unsigned int, 2>, most> below_;
    std::array<step, most> moving_;
    numbers sizes_;
    numbers ranks_;
    numbers axes_;
    std::array<unsigned int, most> listed_;
    unsigned int count_ = 0;
};

/// Makes the records of a tree from nodes in the order of their insertion.
template <unsigned Dim>
class tree_builder {
public:
    using point = std::array<double, Dim>;
    using placed = placed_node<Dim>;

    tree_builder(const dense2D<double>& pos, std::vector<tree_record>& records)
        : pos_(pos)
        , records_(records) {}

    /// The tree of one insertion after the other, where there are no records yet. The first nodes
    /// are inserted so; they stay in cache while the others look for their subtree below them.
    /// Then each subtree is made, in cache as well.
    void build(std::span<const unsigned int> nodes) {
        constexpr std::size_t share_on_top = 64;
        constexpr std::size_t most_on_top = 4096;
        constexpr unsigned deep = 64; // coincident nodes are chains
        const auto top = std::clamp<std::size_t>(nodes.size() / share_on_top, 1, most_on_top);
        place(nodes, top);
        append(items_[0], 0);
        const unsigned depth =
            insert_below(0, items_.data() + 1, items_.data() + top, built_coordinates());
        if (depth > deep) {
            records_.clear();
            build_subtree(nodes, {0, nodes.size(), no_node, false, 0});
            return;
        }
        const gathered below = gather_by_gap(nodes, top);
        const std::span<const unsigned int> sorted(below.nodes.get(), nodes.size() - top);
        std::size_t first = 0;
        for (std::size_t g = 0; g < below.gaps.size(); ++g) {
            const auto [parent, is_lower] = below.gaps[g];
            const std::size_t last = below.ends[g];
            if (first == last) continue;
            build_subtree(sorted.subspan(first),
                          {0, last - first, parent, is_lower, below.depths[parent] + 1});
            first = last;
        }
    }

    /// Inserts more nodes one after the other, by the coordinates of the records that are given.
    template <class Coordinates>
    void insert(std::span<const unsigned int> nodes, const Coordinates& coordinates) {
        place(nodes, nodes.size());
        insert_below(0, items_.data(), items_.data() + nodes.size(), coordinates);
    }

private:
    /// Nodes of one subtree, in the order of their insertion.
    struct segment {
        std::size_t first;
        std::size_t last;
        unsigned int parent;
        bool is_lower;
        unsigned depth;
    };
    /// A missing child of one of the first records.
    struct gap {
        unsigned int parent;
        bool is_lower;
    };
    struct gathered {
        std::vector<unsigned> depths; ///< of the first records
        std::vector<gap> gaps;
        std::vector<unsigned int> ends; ///< of the nodes that come to each gap
        scratch<unsigned int> nodes;
    };
    using gap_number = std::uint16_t;
    /// A record without what its search does not need. A gap is one as well, below itself.
    struct split {
        double x;
        std::array<unsigned int, 2> below;
    };

    const double* coordinates(unsigned int node) const { return pos_.data() + node * pos_.ld(); }
    point at(unsigned int node) const {
        point x;
        std::copy_n(coordinates(node), Dim, x.begin());
        return x;
    }
    void fetch(unsigned int node) const {
        prefetch(coordinates(node));
        prefetch(coordinates(node) + Dim - 1);
    }

    unsigned int append(const placed& item, unsigned axis) {
        records_.push_back({item.x[axis], item.node, axis});
        return static_cast<unsigned int>(records_.size() - 1);
    }

    /// Makes items of the first `count` nodes and fetches what comes after them.
    void place(std::span<const unsigned int> nodes, std::size_t count) {
        constexpr std::size_t ahead = 48;
        if (items_.size() < count) items_.resize(count);
        for (std::size_t k = 0; k < count; ++k) {
            fetch(nodes[std::min(k + ahead, nodes.size() - 1)]);
            items_[k] = {at(nodes[k]), nodes[k]};
        }
    }

    /// Sorts the nodes from `top` on by the missing children below the first records that they
    /// come to: by record, lower child first, otherwise in the order that they had.
    gathered gather_by_gap(std::span<const unsigned int> nodes, std::size_t top) const {
        gathered found;
        found.depths.resize(top);
        std::vector<split> splits(2 * top + 1);
        for (unsigned int r = 0; r < top; ++r) {
            const tree_record& R = records_[r];
            splits[r].x = R.split;
            for (const bool upper : {false, true}) {
                unsigned int child = upper ? R.upper : R.lower;
                if (child != no_node) {
                    found.depths[child] = found.depths[r] + 1;
                } else {
                    child = static_cast<unsigned int>(top + found.gaps.size());
                    splits[child].below = {child, child};
                    found.gaps.push_back({r, !upper});
                }
                splits[r].below[upper] = child;
            }
        }

        // In the matrix nodes are met one behind the other, in the shuffled list they are not.
        const std::size_t n = nodes.size();
        const bool all = pos_.cols() / 2 <= n;
        const std::size_t count = all ? pos_.cols() : n;
        const scratch<gap_number> gaps = make_scratch<gap_number>(count);
        if (all) {
            find_gaps(splits, count, gaps.get(),
                      [](std::size_t k) { return static_cast<unsigned int>(k); });
        } else {
            find_gaps(splits, count, gaps.get(), [nodes](std::size_t k) { return nodes[k]; });
        }
        const auto gap_of = [&](std::size_t k) { return gaps[all ? nodes[k] : k]; };
        found.ends.resize(found.gaps.size());
        for (std::size_t k = top; k < n; ++k)
            ++found.ends[gap_of(k)];
        unsigned int begin = 0;
        for (unsigned int& end : found.ends)
            begin += std::exchange(end, begin);
        found.nodes = make_scratch<unsigned int>(n - top);
        for (std::size_t k = top; k < n; ++k)
            found.nodes[found.ends[gap_of(k)]++] = nodes[k];
        return found;
    }

    /// Finds for every node which gap it comes to. Several go down side by side, as one waits at
    /// every step; those that have far to go do so together.
    template <class NodeAt>
    void find_gaps(const std::vector<split>& splits, std::size_t count, gap_number* gaps,
                   NodeAt&& node_at) const {
        constexpr std::size_t lanes = 16;
        constexpr std::size_t block = 64 * lanes;
        constexpr unsigned short_path = 15;
        const auto top = static_cast<unsigned int>(splits.size() / 2);
        const split* const first_split = splits.data();
        const auto below = [first_split](unsigned int s, double x) {
            return first_split[s].below[!(first_split[s].x > x)];
        };
        std::array<std::pair<unsigned int, unsigned int>, block> moving; // within the block
        for (std::size_t first = 0; first < count; first += block) {
            const std::size_t last = std::min(first + block, count);
            std::size_t left = 0;
            for (std::size_t k = first; k < last; k += lanes) {
                std::array<point, lanes> x;
                std::array<unsigned int, lanes> s{};
                for (std::size_t i = 0; i < lanes; ++i) {
                    fetch(node_at(std::min(k + i + 3 * lanes, count - 1)));
                    x[i] = at(node_at(std::min(k + i, last - 1)));
                }
                for (unsigned round = 0; round < short_path / Dim; ++round)
                    for (unsigned axis = 0; axis < Dim; ++axis)
                        for (std::size_t i = 0; i < lanes; ++i)
                            s[i] = below(s[i], x[i][axis]);
                for (std::size_t i = 0; i < std::min(lanes, last - k); ++i) {
                    gaps[k + i] = static_cast<gap_number>(s[i] - top);
                    moving[left] = {static_cast<unsigned int>(k + i - first), s[i]};
                    left += s[i] < top;
                }
            }
            while (left > 0) {
                const std::size_t before = std::exchange(left, 0);
                for (std::size_t j = 0; j < before; ++j) {
                    auto [k, s] = moving[j];
                    const double* const x = coordinates(node_at(first + k));
                    for (unsigned axis = 0; axis < Dim; ++axis)
                        s = below(s, x[axis]);
                    gaps[first + k] = static_cast<gap_number>(s - top);
                    moving[left] = {k, s};
                    left += s < top;
                }
            }
        }
    }

    /// Makes a subtree from the top: the first node of a segment is its root and parts the others,
    /// which keep their order. Behind the nodes of the subtree come those needed next.
    void build_subtree(std::span<const unsigned int> nodes, const segment& whole) {
        // Deeper segments hold many nodes at equal coordinates, which do not part.
        const unsigned deep =
            whole.depth + 64 + 4 * static_cast<unsigned>(std::bit_width(whole.last));
        place(nodes, whole.last);
        std::vector<segment> segments = {whole};
        while (!segments.empty()) {
            const segment s = segments.back();
            segments.pop_back();
            const placed* const items = items_.data() + s.first;
            const std::size_t count = s.last - s.first;
            const unsigned axis = s.depth % Dim;
            const auto root = static_cast<unsigned int>(records_.size());
            if (s.parent != no_node)
                (s.is_lower ? records_[s.parent].lower : records_[s.parent].upper) = root;
            const bool is_small = count <= small_tree<Dim>::most;
            if (is_small && small_.grow(items, static_cast<unsigned int>(count), axis)) {
                std::size_t ahead = whole.last;
                unsigned int r = root;
                small_.list(axis, [&](unsigned int k, unsigned split_axis, unsigned int lower,
                                      unsigned int upper) {
                    fetch(nodes[std::min(ahead++, nodes.size() - 1)]);
                    records_.push_back({items[k].x[split_axis], items[k].node, split_axis,
                                        lower == no_node ? no_node : r + lower,
                                        upper == no_node ? no_node : r + upper});
                    ++r;
                });
                continue;
            }
            append(items[0], axis);
            if (is_small || s.depth > deep) {
                insert_below(root, items + 1, items + count, built_coordinates());
                continue;
            }
            const std::size_t middle = part(s.first + 1, s.last, axis, items[0].x[axis]);
            if (middle < s.last) segments.push_back({middle, s.last, root, false, s.depth + 1});
            if (s.first + 1 < middle)
                segments.push_back({s.first + 1, middle, root, true, s.depth + 1});
        }
    }

    /// Moves items with a smaller coordinate before the others; each keep their order. Returns
    /// where the others begin.
    std::size_t part(std::size_t first, std::size_t last, unsigned axis, double pivot) {
        if (uppers_.size() < last - first) uppers_.resize(last - first);
        std::size_t lower_end = first;
        std::size_t upper_count = 0;
        for (std::size_t k = first; k < last; ++k) {
            const bool lower = pivot > items_[k].x[axis];
            (lower ? items_[lower_end] : uppers_[upper_count]) = items_[k];
            lower_end += lower;
            upper_count += !lower;
        }
        std::copy_n(uppers_.begin(), upper_count,
                    items_.begin() + static_cast<std::ptrdiff_t>(lower_end));
        return lower_end;
    }

    /// Inserts nodes one after the other below a record. Returns the length of the longest path.
    ///
    /// A node at the coordinates of an earlier one takes the same path up to it and its upper
    /// subtree then. As soon as a path is long, the last record at each place is remembered, so
    /// that coincident nodes do not walk down the whole chain again and again.
    template <class Coordinates>
    unsigned insert_below(unsigned int root, const placed* first, const placed* last,
                          const Coordinates& coordinates) {
        constexpr unsigned long_path = 128;
        struct place {
            point x;
            unsigned int record;
        };
        std::vector<place> places;
        std::optional<hash_slots> slots; // once paths are long
        unsigned longest = 0;
        for (; first != last; ++first) {
            const auto same = [&](unsigned int k) { return coincide(places[k].x, first->x); };
            unsigned int r = root;
            unsigned int known = no_node;
            if (slots) {
                known = slots->find_or_insert(hash(first->x, slots->seed()),
                                              static_cast<unsigned int>(places.size()), same);
                if (known == no_node) {
                    known = static_cast<unsigned int>(places.size());
                    places.push_back({first->x, root});
                }
                r = places[known].record;
            }
            unsigned steps = 0;
            for (;; ++steps) {
                const tree_record& R = records_[r];
                const unsigned int child =
                    coordinates.split(R) > first->x[R.axis] ? R.lower : R.upper;
                if (child == no_node) break;
                r = child;
            }
            const unsigned int fresh = append(*first, next_axis<Dim>(records_[r].axis));
            tree_record& R = records_[r];
            (coordinates.split(R) > first->x[R.axis] ? R.lower : R.upper) = fresh;
            if (slots) places[known].record = fresh;
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

    const dense2D<double>& pos_;
    std::vector<tree_record>& records_;
    std::vector<placed> items_;
    std::vector<placed> uppers_;
    small_tree<Dim> small_;
};

} // namespace kvx::zelvo
