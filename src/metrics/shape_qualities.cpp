#include <kvx/zelvo/shape_qualities.h>

#include <tuple>
#include <type_traits>

#include <kvx/zelvo/node_indices.h>

#include "foundation/element_columns.h"
#include "foundation/matrix_range.h"
#include "foundation/memory_guard.h"
#include "foundation/memory_overlap.h"
#include "metrics/shape_blocks.h"

namespace kvx::zelvo {

namespace {

bool is_rated(element_type kind) {
    return traits_of(kind).linear && traits_of(kind).family > 0;
}

/// 0, or the code of the first check that fails.
int check(const dense2D<double>& pos, const dense2D<unsigned int>& conn, element_type kind) {
    if (!is_rated(kind)) return -3;
    if (conn.empty()) return 0;
    // Where pos has more columns than an index can tell, check_IDs leaves the rows unchecked.
    if (!check_IDs(conn, kind, index_bound(pos.cols())) || conn.rows() < rows_read(kind)) return -2;
    return 0;
}

template <shape S>
using constant = std::integral_constant<shape, S>;

/// Calls visit with the shape of a surface or solid element as a compile-time constant; shapes that
/// have no measure in this dimension are passed over.
template <std::size_t Dim, class Visit>
void with_shape(shape s, Visit&& visit) {
    switch (s) {
    case shape::triangle:
        return visit(constant<shape::triangle>());
    case shape::quadrangle:
        return visit(constant<shape::quadrangle>());
    default:
        break;
    }
    if constexpr (Dim == 3) {
        switch (s) {
        case shape::tetrahedron:
            return visit(constant<shape::tetrahedron>());
        case shape::pyramid:
            return visit(constant<shape::pyramid>());
        case shape::wedge:
            return visit(constant<shape::wedge>());
        default:
            return visit(constant<shape::hexahedron>());
        }
    }
}

/// Rates the columns of a checked surface or solid connectivity; values were set to 0.
template <std::size_t Dim>
void rate_columns(const dense2D<double>& pos, const dense2D<unsigned int>& conn, element_type kind,
                  double* values) {
    const double* const nodes = pos.data();
    const std::uint64_t ld = pos.ld();
    const bool wide = has_avx2();
    if (!is_mixed(kind)) {
        with_shape<Dim>(traits_of(kind).corners, [&](auto s) {
            shape_block<Dim, s()> block(wide);
            block.rate_run(nodes, ld, conn.data(), conn.ld(), conn.cols(), values);
        });
        return;
    }
    std::tuple<shape_block<Dim, shape::triangle>, shape_block<Dim, shape::quadrangle>,
               shape_block<3, shape::tetrahedron>, shape_block<3, shape::pyramid>,
               shape_block<3, shape::wedge>, shape_block<3, shape::hexahedron>>
        blocks(wide, wide, wide, wide, wide, wide);
    for (std::uint64_t j = 0; j < conn.cols(); ++j) {
        const unsigned int* const column = &conn(0, j);
        with_shape<Dim>(column_shape(kind, column, conn.rows()), [&](auto s) {
            std::get<shape_block<Dim, s()>>(blocks).add(nodes, ld, column, values[j]);
        });
    }
    std::apply([](auto&... block) { (block.finish(), ...); }, blocks);
}

void rate(const dense2D<double>& pos, const dense2D<unsigned int>& conn, element_type kind,
          double* values) {
    const bool bars = kind == ET_BAR2 && !conn.empty();
    std::fill_n(values, conn.cols(), bars ? 1.0 : 0.0);
    if (bars || conn.empty()) return;
    if (pos.rows() == 2) rate_columns<2>(pos, conn, kind, values);
    if (pos.rows() == 3) rate_columns<3>(pos, conn, kind, values);
}

/// Gives Q n values, which fill(values) writes while it reads pos. Where the two overlap the values
/// are gathered apart first.
template <class Fill>
void fill_values(const dense2D<double>& pos, std::uint64_t n, dense1D<double>& Q, Fill&& fill) {
    if (!overlap(memory_run(pos), memory_run(Q))) {
        need(Q.resize(n));
        fill(Q.data());
        return;
    }
    dense1D<double> values(n);
    fill(values.data());
    need(Q.resize(n));
    std::copy(values.begin(), values.end(), Q.begin());
}

/// Runs work, which fills Q; any code but 0 leaves Q empty.
template <class Work>
int filled_or_empty(dense1D<double>& Q, Work&& work) noexcept {
    const int result = guarded(work);
    if (result != 0) Q.clear();
    return result;
}

} // namespace

int shape_qualities(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                    element_type kind, dense1D<double>& Q) noexcept {
    return filled_or_empty(Q, [&] {
        if (const int code = check(pos, connectM, kind); code != 0) return code;
        fill_values(pos, connectM.cols(), Q,
                    [&](double* values) { rate(pos, connectM, kind, values); });
        return 0;
    });
}

int shape_qualities(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                    const dense2D<unsigned int>* last, const dense1D<int>& types,
                    dense1D<double>& Q) noexcept {
    if (is_reversed(first, last)) return -3;
    if (static_cast<std::uint64_t>(last - first) != types.size()) return -4;
    const auto kind_of = [&](const dense2D<unsigned int>* m) {
        return static_cast<element_type>(types[static_cast<std::uint64_t>(m - first)]);
    };
    return filled_or_empty(Q, [&] {
        std::uint64_t total = 0;
        for (auto m = first; m != last; ++m) {
            if (m->empty()) continue;
            if (const int code = check(pos, *m, kind_of(m)); code != 0) return code;
            total += m->cols();
        }
        fill_values(pos, total, Q, [&](double* values) {
            for (auto m = first; m != last; ++m) {
                if (m->empty()) continue;
                rate(pos, *m, kind_of(m), values);
                values += m->cols();
            }
        });
        return 0;
    });
}

int shape_qualities(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                    const dense2D<unsigned int>* last, const dense1D<int>& types,
                    kvx::misc::histogram& statistics) noexcept {
    dense1D<double> Q;
    const int result = shape_qualities(pos, first, last, types, Q);
    if (result == 0) statistics.process(Q);
    return result;
}

int shape_qualities(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                    element_type kind, kvx::misc::histogram& statistics) noexcept {
    return guarded([&] {
        const dense1D<int> types(1, kind);
        return shape_qualities(pos, &connectM, &connectM + 1, types, statistics);
    });
}

} // namespace kvx::zelvo
