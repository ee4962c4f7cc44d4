#include <kvx/misc/histogram.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <new>
#include <stdexcept>

namespace kvx::misc {

namespace {

/// Columns; more would be no text for a person.
constexpr std::size_t widest_text = 1000;

std::vector<double> checked(std::vector<double> limits) {
    if (limits.size() < 2) throw std::invalid_argument("histogram: no bins");
    for (std::size_t i = 1; i < limits.size(); ++i) {
        if (!(limits[i - 1] < limits[i]))
            throw std::invalid_argument("histogram: limits do not ascend");
    }
    return limits;
}

std::vector<double> uniform_limits(double lowest, double highest, std::uint64_t bins) {
    if (bins == 0) throw std::invalid_argument("histogram: no bins");
    if (!std::isfinite(lowest) || !std::isfinite(highest))
        throw std::invalid_argument("histogram: limits are not finite");
    std::vector<double> limits;
    if (bins >= limits.max_size()) throw std::bad_alloc();
    limits.resize(bins + 1);
    // Both ends are weighted, as their difference may leave the range.
    for (std::uint64_t i = 0; i <= bins; ++i) {
        const double part = static_cast<double>(i) / static_cast<double>(bins);
        limits[i] = lowest * (1 - part) + highest * part;
    }
    return limits;
}

/// Point at `part` (0 to 1) of the way from a to b, whose difference may leave the range.
double on_the_way(double a, double b, double part) {
    const double difference = b - a;
    if (std::isfinite(difference)) return a + difference * part;
    return a * (1 - part) + b * part;
}

std::string number(double value) {
    constexpr int digits = 6;
    char buffer[32];
    const auto end =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, digits);
    return std::string(buffer, end.ptr);
}

std::string padded(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

struct row {
    std::string label;
    std::uint64_t count;
};

std::string share(std::uint64_t count, std::uint64_t total) {
    const double percent =
        total > 0 ? 100 * static_cast<double>(count) / static_cast<double>(total) : 0;
    char buffer[16];
    const auto end =
        std::to_chars(buffer, buffer + sizeof buffer, percent, std::chars_format::fixed, 1);
    return std::string(buffer, end.ptr) + "%";
}

/// Lines of label, count, share and a bar that fills the rest of the width.
std::string bar_chart(const std::vector<row>& rows, std::uint64_t total, std::size_t width) {
    constexpr std::size_t shortest_room = 10;
    constexpr std::size_t share_width = 6; // "100.0%"
    std::size_t label_width = 0;
    std::uint64_t largest = 1;
    for (const row& r : rows) {
        label_width = std::max(label_width, r.label.size());
        largest = std::max(largest, r.count);
    }
    const std::size_t count_width = std::to_string(largest).size();
    const std::size_t numbers = label_width + 2 + count_width + 1 + share_width + 1;
    const std::size_t room = std::max(width, numbers + shortest_room) - numbers;

    std::string text;
    for (const row& r : rows) {
        const double part = static_cast<double>(r.count) / static_cast<double>(largest);
        auto marks = static_cast<std::size_t>(std::lround(part * static_cast<double>(room)));
        if (r.count > 0 && marks == 0) marks = 1;
        text += padded(r.label, label_width);
        text += padded(std::to_string(r.count), 2 + count_width);
        text += padded(share(r.count, total), 1 + share_width);
        if (marks > 0) text.append(1, ' ').append(marks, '#');
        text += '\n';
    }
    return text;
}

} // namespace

histogram::histogram(const dense1D<double>& limits)
    : limits_(checked({limits.begin(), limits.end()}))
    , counts_(limits_.size() - 1) {}

histogram::histogram(double lowest, double highest, std::uint64_t bins)
    : limits_(checked(uniform_limits(lowest, highest, bins)))
    , counts_(bins) {
    const double per_unit = static_cast<double>(bins) / (highest - lowest);
    if (std::isfinite(per_unit)) bins_per_unit_ = per_unit;
}

std::uint64_t histogram::bin_of(double value) const noexcept {
    if (bins_per_unit_ > 0) {
        const std::uint64_t last = counts_.size() - 1;
        auto k = std::min(static_cast<std::uint64_t>((value - limits_[0]) * bins_per_unit_), last);
        // Rounding puts k next to its bin at worst.
        while (value < limits_[k])
            --k;
        while (k < last && value >= limits_[k + 1])
            ++k;
        return k;
    }
    const auto above = std::upper_bound(limits_.begin() + 1, limits_.end() - 1, value);
    return static_cast<std::uint64_t>(above - limits_.begin()) - 1;
}

void histogram::process(double value) noexcept {
    if (std::isnan(value)) {
        ++not_a_number_;
        return;
    }
    if (value < limits_.front()) {
        ++below_;
    } else if (value > limits_.back()) {
        ++above_;
    } else {
        ++counts_[bin_of(value)];
    }
    // Written so that the first value replaces NaN.
    if (!(value >= minimum_)) minimum_ = value;
    if (!(value <= maximum_)) maximum_ = value;
    ++count_;
    if (std::isinf(value)) return;
    ++finite_;
    const double from_old_mean = value - mean_;
    mean_ = on_the_way(mean_, value, 1 / static_cast<double>(finite_));
    squares_ += from_old_mean * (value - mean_);
}

void histogram::process(const dense1D<double>& values) noexcept {
    for (const double value : values)
        process(value);
}

bool histogram::merge(const histogram& other) noexcept {
    if (limits_ != other.limits_) return false;
    if (other.count_ > 0) {
        if (!(other.minimum_ >= minimum_)) minimum_ = other.minimum_;
        if (!(other.maximum_ <= maximum_)) maximum_ = other.maximum_;
    }
    if (other.finite_ > 0) {
        const double part = static_cast<double>(other.finite_) /
                            (static_cast<double>(finite_) + static_cast<double>(other.finite_));
        const double difference = other.mean_ - mean_;
        if (finite_ > 0)
            squares_ += difference * difference * (static_cast<double>(finite_) * part);
        squares_ += other.squares_;
        mean_ = on_the_way(mean_, other.mean_, part);
    }
    for (std::size_t k = 0; k < counts_.size(); ++k)
        counts_[k] += other.counts_[k];
    below_ += other.below_;
    above_ += other.above_;
    not_a_number_ += other.not_a_number_;
    count_ += other.count_;
    finite_ += other.finite_;
    return true;
}

double histogram::mean() const noexcept {
    return finite_ > 0 ? mean_ : std::numeric_limits<double>::quiet_NaN();
}

double histogram::standard_deviation() const noexcept {
    return finite_ > 0 ? std::sqrt(squares_ / static_cast<double>(finite_))
                       : std::numeric_limits<double>::quiet_NaN();
}

std::string histogram::text(unsigned width) const {
    std::size_t limit_width = 0;
    for (const double limit : limits_)
        limit_width = std::max(limit_width, number(limit).size());
    std::vector<row> rows;
    if (below_ > 0) rows.push_back({"below", below_});
    for (std::size_t k = 0; k < counts_.size(); ++k) {
        rows.push_back({padded(number(limits_[k]), limit_width) + " .. " +
                            padded(number(limits_[k + 1]), limit_width),
                        counts_[k]});
    }
    if (above_ > 0) rows.push_back({"above", above_});
    if (not_a_number_ > 0) rows.push_back({"not a number", not_a_number_});

    std::string text =
        bar_chart(rows, count_ + not_a_number_, std::min<std::size_t>(width, widest_text));
    text += "values              " + std::to_string(count_) + '\n';
    if (infinite() > 0) text += "infinite            " + std::to_string(infinite()) + '\n';
    text += "minimum             " + number(minimum_) + '\n';
    text += "mean                " + number(mean()) + '\n';
    text += "maximum             " + number(maximum_) + '\n';
    text += "standard deviation  " + number(standard_deviation()) + '\n';
    return text;
}

} // namespace kvx::misc
