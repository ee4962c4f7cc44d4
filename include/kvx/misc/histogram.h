#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

namespace kvx::misc {

/// Counts values in bins and keeps their statistics; the values themselves are not stored.
///
/// Bin k of n holds limit(k) <= v < limit(k + 1), the last bin its upper limit too. Values below
/// the first limit, above the last one and those that are not a number (NaN) are counted apart.
///
/// The statistics are over every value but NaN, inside the bins or not. Infinite values count, and
/// show in minimum() and maximum(), but would leave no mean: mean() and standard_deviation() are
/// over the finite values alone, and infinite() tells how many were left out. Mean and deviation
/// follow the values one by one (B. P. Welford, Technometrics 4, 1962), so large values of small
/// spread lose nothing.
///
/// Copies are independent. Nothing but the constructors, copying and text() allocates or throws.
class KVX_ZELVO_API histogram {
public:
    /// Bins between the given limits, one fewer than there are limits; the first limit may be
    /// minus infinity, the last one infinity. A value finds its bin in O(log bins).
    ///
    /// Throws std::invalid_argument for fewer than 2 limits, a NaN, or limits that do not ascend
    /// strictly; std::bad_alloc.
    explicit histogram(const dense1D<double>& limits);

    /// `bins` bins of one width from lowest to highest. A value finds its bin in O(1).
    ///
    /// Throws std::invalid_argument for 0 bins, a NaN or infinite limit, lowest not below highest,
    /// or so many bins that neighbouring limits are one number; std::bad_alloc.
    histogram(double lowest, double highest, std::uint64_t bins);

    /// Takes one value. O(1) or O(log bins), see the constructors.
    void process(double value) noexcept;
    /// Takes every value of a vector, in order.
    void process(const dense1D<double>& values) noexcept;

    /// Adds what the other one has taken: counts are as if this one had taken the other's values
    /// too; mean and deviation agree with that to rounding (T. F. Chan, G. H. Golub, R. J. LeVeque,
    /// The American Statistician 37, 1983). Returns false, with nothing changed, when the limits
    /// are not all equal. Linear in the number of bins.
    bool merge(const histogram& other) noexcept;

    /// Number of bins.
    std::uint64_t bins() const noexcept { return counts_.size(); }
    /// Limit i of bins() + 1.
    double limit(std::uint64_t i) const noexcept { return limits_[i]; }
    /// Number of values in bin k of bins().
    std::uint64_t count_in(std::uint64_t k) const noexcept { return counts_[k]; }
    /// Number of values below the first limit.
    std::uint64_t below() const noexcept { return below_; }
    /// Number of values above the last limit.
    std::uint64_t above() const noexcept { return above_; }
    /// Number of NaN.
    std::uint64_t not_a_number() const noexcept { return not_a_number_; }
    /// Number of infinite values of either sign.
    std::uint64_t infinite() const noexcept { return count_ - finite_; }

    /// Number of all values but NaN: those in the bins, below and above.
    std::uint64_t count() const noexcept { return count_; }
    /// Smallest and largest value; NaN when there was none.
    double minimum() const noexcept { return minimum_; }
    double maximum() const noexcept { return maximum_; }
    /// Mean of the finite values; NaN when there was none.
    double mean() const noexcept;
    /// Standard deviation of the finite values, taken as the whole population (the mean square is
    /// over their number); NaN when there was none, infinity when a square leaves the range.
    double standard_deviation() const noexcept;

    /// One line per bin with limits, count, share and a bar, before and after them the values
    /// counted apart where there are some, then the statistics. Lines are at most `width` columns
    /// of ASCII wide (1000 at most), or as wide as the numbers with the shortest bars need; the
    /// fullest bin has the longest bar, and a bin with any value at least one mark. Numbers do not
    /// follow the process locale and have up to 6 digits. Throws std::bad_alloc.
    std::string text(unsigned width = 80) const;

private:
    std::uint64_t bin_of(double value) const noexcept;

    std::vector<double> limits_;
    std::vector<std::uint64_t> counts_;
    double bins_per_unit_ = 0; ///< 0: limits are searched
    std::uint64_t below_ = 0;
    std::uint64_t above_ = 0;
    std::uint64_t not_a_number_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t finite_ = 0;
    double minimum_ = std::numeric_limits<double>::quiet_NaN();
    double maximum_ = std::numeric_limits<double>::quiet_NaN();
    double mean_ = 0;
    double squares_ = 0; ///< sum of squared distances from the mean
};

} // namespace kvx::misc
