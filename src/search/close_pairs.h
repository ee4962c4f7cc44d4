#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "search/distances.h"

namespace kvx::zelvo {

/// What a point may be in a pair, as bits. A pair is made of a survivor and an absorbable point.
enum pair_role : std::uint8_t { neither = 0, absorbable = 1, survivor = 2, both = 3 };

constexpr bool may_pair(std::uint8_t a, std::uint8_t b) {
    return ((a & survivor) != 0 && (b & absorbable) != 0) ||
           ((a & absorbable) != 0 && (b & survivor) != 0);
}

/// A point to be paired, with the caller's number for it.
template <unsigned Dim>
struct numbered_point {
    std::array<double, Dim> x;
    unsigned int id;
    pair_role role;
};

/// Largest number whose square root is no larger than the radius. It is found among a few
/// neighbours of the square.
inline double largest_square_within(double radius) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    double square = radius * radius;
    while (std::sqrt(square) > radius)
        square = std::nextafter(square, 0.0);
    while (square < infinity && std::sqrt(std::nextafter(square, infinity)) <= radius)
        square = std::nextafter(square, infinity);
    return square;
}

/// All pairs of a survivor and an absorbable point within a radius, by a balanced k-d tree that is
/// joined with itself. The points are reordered; node k of the tree has the children 2k and 2k + 1
/// and covers a run of points that follows from k alone, so the tree is nothing but its boxes. None
/// of the coordinates may be NaN. `reach` is a radius as a bound on squared_distance.
template <unsigned Dim>
class close_pairs {
public:
    explicit close_pairs(std::vector<numbered_point<Dim>>& points)
        : points_(points)
        , depth_(static_cast<unsigned>(std::bit_width(points.size() / leaf_size)))
        , boxes_(std::size_t{2} << depth_) {
        if (!points.empty()) build(1, 0, 0);
    }

    /// Calls visit(p, q, distance) once for every two points that may pair with a distance of at
    /// most `radius`; stops and returns false when visit does.
    template <class Visit>
    bool each_within(double radius, Visit&& visit) const {
        return points_.empty() || join_self(1, 0, 0, largest_square_within(radius), visit);
    }

private:
    static constexpr std::size_t leaf_size = 8;

    struct box {
        std::array<double, Dim> min;
        std::array<double, Dim> max;
        std::uint8_t roles;
    };

    /// First point of run `place` of the 2^level runs of a level.
    std::size_t start(unsigned level, std::size_t place) const {
        return static_cast<std::size_t>((static_cast<unsigned __int128>(points_.size()) * place) >>
                                        level);
    }

    // Recursion is as deep as the tree, at most 32 levels: points have 32-bit numbers.
    void build(std::size_t node, unsigned level, std::size_t place) {
        const auto first = points_.begin() + static_cast<std::ptrdiff_t>(start(level, place));
        const auto last = points_.begin() + static_cast<std::ptrdiff_t>(start(level, place + 1));
        box& b = boxes_[node];
        b = {first->x, first->x, neither};
        for (auto p = first; p != last; ++p) {
            b.roles |= p->role;
            for (unsigned i = 0; i < Dim; ++i) {
                b.min[i] = std::min(b.min[i], p->x[i]);
                b.max[i] = std::max(b.max[i], p->x[i]);
            }
        }
        if (level == depth_) return;
        unsigned widest = 0;
        for (unsigned i = 1; i < Dim; ++i) {
            if (b.max[i] - b.min[i] > b.max[widest] - b.min[widest]) widest = i;
        }
        const auto middle =
            points_.begin() + static_cast<std::ptrdiff_t>(start(level + 1, 2 * place + 1));
        std::nth_element(first, middle, last, [widest](const auto& p, const auto& q) {
            return p.x[widest] < q.x[widest];
        });
        build(2 * node, level + 1, 2 * place);
        build(2 * node + 1, level + 1, 2 * place + 1);
    }

    /// Exact although the gaps are rounded: rounding keeps the order, so the same sum for two
    /// points of the boxes is never less. The gap of two infinite bounds is NaN and counts as 0.
    bool apart(std::size_t a, std::size_t b, double reach) const {
        if (!may_pair(boxes_[a].roles, boxes_[b].roles)) return true;
        double sum = 0;
        for (unsigned i = 0; i < Dim; ++i) {
            const double above = std::max(0.0, boxes_[a].min[i] - boxes_[b].max[i]);
            const double gap = std::max(above, boxes_[b].min[i] - boxes_[a].max[i]);
            sum += gap * gap;
        }
        return sum > reach;
    }

    template <class Visit>
    bool join_self(std::size_t node, unsigned level, std::size_t place, double reach,
                   Visit&& visit) const {
        if (!may_pair(boxes_[node].roles, boxes_[node].roles)) return true;
        if (level < depth_) {
            return join_self(2 * node, level + 1, 2 * place, reach, visit) &&
                   join_self(2 * node + 1, level + 1, 2 * place + 1, reach, visit) &&
                   join(2 * node, 2 * place, 2 * node + 1, 2 * place + 1, level + 1, reach, visit);
        }
        const std::size_t last = start(level, place + 1);
        for (std::size_t p = start(level, place); p < last; ++p) {
            for (std::size_t q = p + 1; q < last; ++q) {
                if (!visit_near(points_[p], points_[q], reach, visit)) return false;
            }
        }
        return true;
    }

    template <class Visit>
    bool join(std::size_t a, std::size_t place_a, std::size_t b, std::size_t place_b,
              unsigned level, double reach, Visit&& visit) const {
        if (apart(a, b, reach)) return true;
        if (level < depth_) {
            for (unsigned i = 0; i < 2; ++i) {
                for (unsigned j = 0; j < 2; ++j) {
                    if (!join(2 * a + i, 2 * place_a + i, 2 * b + j, 2 * place_b + j, level + 1,
                              reach, visit))
                        return false;
                }
            }
            return true;
        }
        const std::size_t last_a = start(level, place_a + 1);
        const std::size_t last_b = start(level, place_b + 1);
        for (std::size_t p = start(level, place_a); p < last_a; ++p) {
            for (std::size_t q = start(level, place_b); q < last_b; ++q) {
                if (!visit_near(points_[p], points_[q], reach, visit)) return false;
            }
        }
        return true;
    }

    template <class Visit>
    static bool visit_near(const numbered_point<Dim>& p, const numbered_point<Dim>& q, double reach,
                           Visit&& visit) {
        const double square = squared_distance<Dim>(p.x.data(), q.x.data());
        if (!(square <= reach) || !may_pair(p.role, q.role)) return true;
        return visit(p, q, std::sqrt(square));
    }

    std::vector<numbered_point<Dim>>& points_;
    unsigned depth_;
    std::vector<box> boxes_;
};

} // namespace kvx::zelvo
