#include <kvx/zelvo/clipping.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <kvx/zelvo/node_indices.h>

#include "foundation/appending.h"
#include "foundation/memory_guard.h"

namespace kvx::zelvo {

namespace {

constexpr double shortest_normal = 1e-12;

double length(const vector_fixed<double, 3>& v) {
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

/// Tells the nodes strictly inside a half space, each found out once.
class half_space {
public:
    half_space(const dense2D<double>& pos, const vector_fixed<double, 3>& P,
               const vector_fixed<double, 3>& N)
        : pos_(pos)
        , point_(P)
        , normal_(N)
        , dimension_(static_cast<unsigned>(std::min<std::uint64_t>(pos.rows(), 3)))
        , sides_(pos.cols(), side::unknown) {
        for (unsigned i = dimension_; i < 3; ++i)
            normal_[i] = 0.0;
    }

    bool holds(unsigned int node) {
        side& known = sides_[node];
        if (known == side::unknown) known = height(node) > 0.0 ? side::in : side::out;
        return known == side::in;
    }

private:
    enum class side : char { unknown, in, out };

    double height(unsigned int node) const {
        double d[3] = {0.0, 0.0, 0.0};
        for (unsigned i = 0; i < dimension_; ++i)
            d[i] = pos_(i, node) - point_[i];
        return d[1] * normal_[1] + d[0] * normal_[0] + d[2] * normal_[2];
    }

    const dense2D<double>& pos_;
    vector_fixed<double, 3> point_;
    vector_fixed<double, 3> normal_;
    unsigned dimension_;
    std::vector<side> sides_;
};

std::vector<std::uint64_t> elements_inside(const dense2D<unsigned int>& conn, half_space& kept) {
    std::vector<std::uint64_t> elements;
    for (std::uint64_t j = 0; j < conn.cols(); ++j) {
        const unsigned int* const begin = &conn(0, j);
        const unsigned int* const end = std::find(begin, begin + conn.rows(), no_node);
        if (std::all_of(begin, end, [&kept](unsigned int node) { return kept.holds(node); }))
            elements.push_back(j);
    }
    return elements;
}

} // namespace

int clip(const dense2D<double>& pos, const dense2D<unsigned int>& conn,
         const vector_fixed<double, 3>& P, const vector_fixed<double, 3>& N,
         dense2D<unsigned int>& kept_conn) noexcept {
    if (conn.empty()) return 0;
    if (!check_IDs(conn, index_bound(pos.cols()))) return -2;
    if (!(length(N) >= shortest_normal)) return -4;
    if (!kept_conn.empty() && kept_conn.rows() != conn.rows()) return -5;
    return guarded([&] {
        const dense2D<unsigned int> source(conn); // keeps shared storage as it is
        half_space kept(pos, P, N);
        const std::vector<std::uint64_t> elements = elements_inside(source, kept);
        std::uint64_t place = kept_conn.cols();
        append_columns(kept_conn, source.rows(), elements.size(), no_node);
        for (const std::uint64_t j : elements)
            std::copy_n(&source(0, j), source.rows(), &kept_conn(0, place++));
        return 0;
    });
}

} // namespace kvx::zelvo
