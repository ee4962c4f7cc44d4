#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>

#include <kvx/dense_array.h>

#include "foundation/hashing.h"
#include "foundation/large_blocks.h"
#include "search/distances.h"

namespace kvx::zelvo {

/// Nodes and those listed before them that lie at the same place or close by, in one pass through
/// the list: nodes are kept by the cell of a uniform grid that they lie in, and a node looks into
/// those cells only that the box around it reaches. This is the quick way where cells hold few
/// nodes; where they are crowded it gives up after work in proportion to the nodes.
template <unsigned Dim>
class cell_pairs {
public:
    /// Cells are `tolerances_a_cell` (4 or more) tolerances wide; for tolerance 0 every place is a
    /// cell.
    cell_pairs(const dense2D<double>& pos, double tol, double tolerances_a_cell)
        : x_(pos.data())
        , ld_(pos.ld())
        , tol_(tol)
        , reach_(tol * slack) {
        if (tol > 0) {
            cells_a_length_ = 1 / (tolerances_a_cell * tol);
            to_integer_ = 0x1.8p52;
            most_cells_ = 0x1p50;
        }
    }

    /// Whether a tolerance is far enough from where squares underflow or overflow.
    static bool takes(double tol) { return tol == 0 || (tol >= 1e-150 && tol <= 1e150); }

    /// Calls same_place(node, other) for nodes of finite coordinates and others listed before them
    /// with equal ones; it answers whether the other one stands for the node, which then takes no
    /// further part. For all others of these nodes calls close(node, other, distance) for those
    /// listed before within the tolerance, and stops when it answers false. False when it stopped
    /// or gave up.
    template <class SamePlace, class Close>
    bool run(std::span<const unsigned int> nodes, SamePlace&& same_place, Close&& close) {
        constexpr std::uint64_t steps_a_node = 12;
        if (nodes.empty()) return true;
        tagged_slots cells(nodes.size(),
                           std::uint64_t{*std::max_element(nodes.begin(), nodes.end())} + 1);
        seed_ = cells.seed();
        std::uint64_t steps = 0;
        std::array<looking_node, 32> block;
        for (std::size_t first = 0; first < nodes.size(); first += block.size()) {
            const auto part = nodes.subspan(first, std::min(block.size(), nodes.size() - first));
            for (std::size_t k = 0; k < part.size(); ++k) {
                if (!look(part[k], block[k])) return false;
                for (unsigned c = 0; c < block[k].cells; ++c)
                    cells.prefetch(block[k].hash[c]);
            }
            for (std::size_t k = 0; k < part.size(); ++k) {
                const unsigned int other =
                    block[k].cells ? cells.likely(block[k].hash[0]) : no_node;
                if (other != no_node) prefetch(coordinates(other));
            }
            for (std::size_t k = 0; k < part.size(); ++k) {
                if (block[k].cells > 0 &&
                    !enter(part[k], block[k], cells, steps, same_place, close))
                    return false;
            }
            if (steps > steps_a_node * (first + 1000)) return false;
        }
        return true;
    }

private:
    /// More than the distance within the tolerance differs from the true one.
    static constexpr double slack = 1 + 0x1p-40;

    struct looking_node {
        std::array<double, Dim> x;
        unsigned cells; ///< that its box reaches, its own first; 0 for a node that has none
        std::array<std::uint64_t, 1u << Dim> hash;
    };

    /// Rounding keeps the order of coordinates, so that what lies between two coordinates lies in
    /// their cells or between.
    double cell(double x) const { return x * cells_a_length_ + to_integer_; }

    /// Tells the cells that a node looks into; false where the grid ends.
    bool look(unsigned int node, looking_node& looking) const {
        const double* const x = coordinates(node);
        looking.cells = 0;
        double zero = 0;
        double farthest = 0;
        for (unsigned i = 0; i < Dim; ++i) {
            looking.x[i] = x[i];
            zero += x[i] * 0;
            farthest = std::max(farthest, std::abs(x[i] * cells_a_length_));
        }
        if (!(zero == 0)) return true; // no finite coordinates: it is close to none
        if (farthest > most_cells_) return false;
        looking.cells = 1;
        looking.hash[0] = 0;
        for (unsigned i = 0; i < Dim; ++i) {
            const double own = cell(x[i]);
            const double lower = cell(x[i] - reach_);
            const double upper = cell(x[i] + reach_);
            // Adding does not make 0 of -0 in every rounding mode.
            const std::uint64_t own_hash = place_hash(own == 0 ? 0 : own, i, seed_);
            const unsigned count = looking.cells;
            if (lower != upper) {
                const std::uint64_t other_hash = place_hash(lower == own ? upper : lower, i, seed_);
                for (unsigned c = 0; c < count; ++c)
                    looking.hash[count + c] = looking.hash[c] + other_hash;
                looking.cells = 2 * count;
            }
            for (unsigned c = 0; c < count; ++c)
                looking.hash[c] += own_hash;
        }
        return true;
    }

    /// Searches the cells of a node, then puts it into its own.
    template <class SamePlace, class Close>
    bool enter(unsigned int node, const looking_node& looking, tagged_slots& cells,
               std::uint64_t& steps, SamePlace&& same_place, Close&& close) const {
        bool stood_for = false;
        const double* const x = looking.x.data();
        const std::uint64_t end = cells.search(looking.hash[0], steps, [&](unsigned int other) {
            stood_for = is_at(coordinates(other), x) && same_place(node, other);
            return !stood_for;
        });
        if (stood_for) return true;
        bool stopped = false;
        for (unsigned c = 0; c < looking.cells; ++c) {
            cells.search(looking.hash[c], steps, [&](unsigned int other) {
                const double d = std::sqrt(squared_distance<Dim>(x, coordinates(other)));
                stopped = d <= tol_ && !close(node, other, d);
                return !stopped;
            });
            if (stopped) return false;
        }
        cells.store(end, looking.hash[0], node);
        return true;
    }

    const double* coordinates(unsigned int node) const { return x_ + node * ld_; }

    static bool is_at(const double* a, const double* b) { return std::equal(a, a + Dim, b); }

    const double* x_;
    std::uint64_t ld_;
    double tol_;
    double reach_;
    double cells_a_length_ = 1;
    double to_integer_ = 0;
    double most_cells_ = std::numeric_limits<double>::max();
    std::uint64_t seed_ = 0;
};

} // namespace kvx::zelvo
