#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include <kvx/lapack.h>

/// Eigenvalues of symmetric 2x2 and 3x3 matrices, and what metrics are made of them. Matrices come
/// as pointers to their packed upper triangle by columns: (0,0), (0,1), (1,1), (0,2), (1,2), (2,2),
/// as they lie in a column of an array of metrics. 2x2 goes by closed forms, 3x3 through LAPACK's
/// dspev, to which no entry that is not finite is ever handed.
namespace kvx::zelvo {

template <unsigned Dim>
constexpr unsigned packed_size = Dim*(Dim + 1) / 2;

/// Place of entry (i, j), i <= j.
constexpr unsigned packed_place(unsigned i, unsigned j) {
    return i + j * (j + 1) / 2;
}

template <unsigned Dim>
using small_vector = std::array<double, Dim>;
template <unsigned Dim>
using small_matrix = std::array<small_vector<Dim>, Dim>; // column by column
template <unsigned Dim>
using packed_matrix = std::array<double, packed_size<Dim>>;

/// Eigenvalues, ascending, and orthonormal eigenvectors.
template <unsigned Dim>
struct eigen_system {
    small_vector<Dim> values{};
    small_matrix<Dim> vectors{};
};

// ---- Range -------------------------------------------------------------------------------------

template <unsigned Dim>
double largest_magnitude(const double* m) {
    double largest = 0.0;
    for (unsigned i = 0; i < packed_size<Dim>; ++i)
        largest = std::max(largest, std::abs(m[i]));
    return largest;
}

/// A norm that takes no branches, which processors guess wrong: no eigenvalue is larger, and it is
/// NaN when an entry is.
inline double sum_of_magnitudes(const double* m) {
    double sum = 0.0;
    for (unsigned i = 0; i < packed_size<3>; ++i)
        sum += std::abs(m[i]);
    return sum;
}

template <unsigned Dim>
bool is_finite(const double* m) {
    double zero_or_nan = 0.0;
    for (unsigned i = 0; i < packed_size<Dim>; ++i)
        zero_or_nan += 0.0 * m[i];
    return zero_or_nan == 0.0;
}

/// The factor that brings a matrix to about size 1 where its squares could leave the range of a
/// double; 1 for all others, those that are zero or not finite among them. A power of four, so that
/// products and square roots scale without rounding.
template <unsigned Dim>
double range_factor(const double* m) {
    constexpr double smallest = 1e-60, largest = 1e60;
    constexpr int lowest_exponent = -1022; // of a factor whose inverse is exact too
    const double size = largest_magnitude<Dim>(m);
    if ((size >= smallest && size <= largest) || size == 0.0 || !is_finite<Dim>(m)) return 1.0;
    const int exponent = std::max(std::ilogb(size), lowest_exponent);
    return std::ldexp(1.0, -(exponent - exponent % 2));
}

template <unsigned Dim>
packed_matrix<Dim> scaled(const double* m, double factor) {
    packed_matrix<Dim> result;
    for (unsigned i = 0; i < packed_size<Dim>; ++i)
        result[i] = factor * m[i];
    return result;
}

// ---- Eigenvalues -------------------------------------------------------------------------------

/// Both eigenvalues of a matrix in range; false when one is not finite. The smaller one comes out
/// of a difference, with an error relative to the larger one. The determinant over the larger one
/// is never less accurate, and far more so for nearly singular matrices.
inline bool values_in_range(const packed_matrix<2>& m, small_vector<2>& values) {
    constexpr double cancelled = 0.5; // from here on the difference loses digits
    const double a = m[0], c = m[1], b = m[2];
    const double determinant = a * b - c * c;
    const double difference = std::sqrt((a - b) * (a - b) + 4 * c * c);
    double& low = values[0];
    double& high = values[1];
    low = (a + b - difference) / 2;
    high = low + difference;
    if (std::abs(low) < cancelled * std::abs(high)) {
        low = determinant / high;
    } else if (std::abs(high) < cancelled * std::abs(low)) {
        high = determinant / low;
    }
    return std::isfinite(low) && std::isfinite(high);
}

/// The eigenvectors: a column of M - values[1] I, the longer one, is the first, and a quarter turn
/// makes the second of it. Multiples of the identity, to working precision, get the axes.
inline small_matrix<2> vectors_in_range(const packed_matrix<2>& m, const small_vector<2>& values) {
    constexpr double isotropic = 1e-24; // a square
    const double a = m[0], c = m[1], b = m[2];
    const double d0 = values[0] - a, d1 = values[0] - b;
    const bool first = d1 * d1 > d0 * d0;
    double x = first ? d1 : c;
    double y = first ? c : d0;
    const double square = c * c + std::max(d0 * d0, d1 * d1);
    if (square > std::max(a * a, b * b) * isotropic) {
        const double length = std::sqrt(square);
        x /= length;
        y /= length;
    } else {
        x = 1.0;
        y = 0.0;
    }
    return {{{x, y}, {-y, x}}};
}

/// LAPACK's answer; NaN and false where an entry is not finite, which LAPACK's versions treat in
/// different ways.
inline bool dspev_of(char job, const double* m, eigen_system<3>& e) {
    e.values.fill(std::numeric_limits<double>::quiet_NaN());
    if (!is_finite<3>(m)) return false;
    packed_matrix<3> copy = scaled<3>(m, 1.0);
    double work[9];
    int info = 0;
    lapack::dspev(job, 'U', 3, copy.data(), e.values.data(), e.vectors[0].data(), 3, work, info);
    return info == 0;
}

/// Eigenvalues only; the result tells whether they could be had.
template <unsigned Dim>
bool eigenvalues(const double* m, small_vector<Dim>& values) {
    if constexpr (Dim == 2) {
        const double factor = range_factor<2>(m);
        values_in_range(scaled<2>(m, factor), values);
        for (double& value : values)
            value /= factor;
        return std::isfinite(values[0]) && std::isfinite(values[1]);
    } else {
        eigen_system<3> e;
        const bool found = dspev_of('N', m, e);
        values = e.values;
        return found;
    }
}

/// Eigenvalues and eigenvectors; false when they cannot be had, and then e is partly written.
template <unsigned Dim>
bool decompose(const double* m, eigen_system<Dim>& e) {
    if constexpr (Dim == 2) {
        const double factor = range_factor<2>(m);
        const packed_matrix<2> in_range = scaled<2>(m, factor);
        const bool found = values_in_range(in_range, e.values);
        if (found) e.vectors = vectors_in_range(in_range, e.values);
        for (double& value : e.values)
            value /= factor;
        return found && std::isfinite(e.values[0]) && std::isfinite(e.values[1]);
    } else {
        return dspev_of('V', m, e);
    }
}

// ---- Definiteness ------------------------------------------------------------------------------

/// Whether all eigenvalues of sign (M - bound I) are positive beyond doubt: those of the exact
/// matrix exceed what rounding here and in dspev (less than 1e-14 of the norm) may change, as a
/// matrix with a much larger margin taken off the diagonal is still positive. False says nothing,
/// and is the answer also for entries that are not finite.
///
/// That matrix is positive where its first entry p is, and the Schur complement of p. Taken p times,
/// the complement needs no division, and the squares and products subtracted there are no larger
/// than what they are subtracted from, so that rounding changes it as if the matrix had changed by a
/// few units in the last place of its norm.
inline bool is_surely_positive(const double* m, double sign, double bound) {
    constexpr double relative_margin = 1e-12;
    constexpr double smallest = 1e-30, largest = 1e60; // products of four entries stay in range
    const double norm = sum_of_magnitudes(m) + std::abs(bound);
    const double margin = relative_margin * norm;
    const double p = sign * (m[0] - bound) - margin;
    const double c00 = p * (sign * (m[2] - bound) - margin) - m[1] * m[1];
    const double c01 = p * (sign * m[4]) - m[1] * m[3];
    const double c11 = p * (sign * (m[5] - bound) - margin) - m[3] * m[3];
    return (norm >= smallest) & (norm <= largest) & (p > 0) & (c00 > 0) & (c00 * c11 > c01 * c01);
}

/// Whether a packed column is a metric: its smallest eigenvalue is not <= 0. NaN passes.
template <unsigned Dim>
bool is_metric(const double* m) {
    if constexpr (Dim == 3) {
        if (is_surely_positive(m, 1.0, 0.0)) return true;
    }
    small_vector<Dim> values;
    eigenvalues<Dim>(m, values);
    double smallest = values[0];
    for (const double value : values) {
        if (value < smallest) smallest = value;
    }
    return !(smallest <= 0);
}

// ---- Products ----------------------------------------------------------------------------------

/// sum over k of d[k] v[k] v[k]^T. A factor of 0 counts for nothing also where d is infinite.
template <unsigned Dim>
void sum_of_squares(const small_vector<Dim>& d, const small_matrix<Dim>& v, double* m) {
    for (unsigned j = 0; j < Dim; ++j) {
        for (unsigned i = 0; i <= j; ++i) {
            double sum = 0.0;
            for (unsigned k = 0; k < Dim; ++k) {
                if (v[k][i] != 0 && v[k][j] != 0) sum += d[k] * v[k][i] * v[k][j];
            }
            m[packed_place(i, j)] = sum;
        }
    }
}

/// I / h^2 for h > 0, else the zero matrix.
template <unsigned Dim>
void set_isotropic(double h, double* m) {
    const double v = h > 0 ? 1.0 / (h * h) : 0.0;
    for (unsigned j = 0; j < Dim; ++j) {
        for (unsigned i = 0; i <= j; ++i)
            m[packed_place(i, j)] = i == j ? v : 0.0;
    }
}

// ---- Two matrices at once ----------------------------------------------------------------------

/// M1 = L L^T and M2 = L K L^T with K = Z diag(values) Z^T: the simultaneous reduction of two
/// symmetric matrices (G. H. Golub, C. F. Van Loan, Matrix Computations, section 8.7). It is that
/// of factor1 M1 and factor2 M2, which keeps it in range.
template <unsigned Dim>
struct reduction {
    double factor1 = 1.0, factor2 = 1.0;
    small_matrix<Dim> lower{};  // L
    eigen_system<Dim> middle{}; // of K

    /// Value k of M2 v = value M1 v, ascending.
    double value(unsigned k) const { return middle.values[k] * (factor1 / factor2); }
};

/// Cholesky factor of m, false when it has none. The last pivot may be zero on demand: the factor
/// of a matrix that is only just singular still serves in products.
template <unsigned Dim>
bool factorise(const packed_matrix<Dim>& m, bool last_may_vanish, small_matrix<Dim>& lower) {
    for (unsigned j = 0; j < Dim; ++j) {
        double pivot = m[packed_place(j, j)];
        for (unsigned k = 0; k < j; ++k)
            pivot -= lower[k][j] * lower[k][j];
        if (!(pivot > 0) && !(j == Dim - 1 && last_may_vanish && pivot == 0)) return false;
        lower[j][j] = std::sqrt(pivot);
        for (unsigned i = j + 1; i < Dim; ++i) {
            double entry = m[packed_place(j, i)];
            for (unsigned k = 0; k < j; ++k)
                entry -= lower[k][i] * lower[k][j];
            lower[j][i] = entry / lower[j][j];
        }
    }
    return true;
}

/// The same in 2-D, where the pivot needs no square of a root: (2, 2, 2) shows that it is singular.
/// It never vanishes: the second matrix of a pair needs no factor.
template <>
inline bool factorise<2>(const packed_matrix<2>& m, bool, small_matrix<2>& lower) {
    const double pivot = m[2] - m[1] / m[0] * m[1];
    if (!(m[0] > 0) || !(pivot > 0)) return false;
    const double root = std::sqrt(m[0]);
    lower = {{{root, m[1] / root}, {0.0, std::sqrt(pivot)}}};
    return true;
}

/// K = L^-1 M2 L^-T in 2-D, for any symmetric M2.
inline bool middle_matrix(const small_matrix<2>& lower, const packed_matrix<2>& m2,
                          packed_matrix<2>& K) {
    const double ratio = lower[0][1] / lower[0][0];
    const double p = m2[0], q = m2[1], s = m2[2];
    K = {p / (lower[0][0] * lower[0][0]), (q - p * ratio) / (lower[0][0] * lower[1][1]),
         (s - 2 * q * ratio + p * ratio * ratio) / (lower[1][1] * lower[1][1])};
    return true;
}

/// The same in 3-D as a square, (L^-1 L2) (L^-1 L2)^T with M2 = L2 L2^T, which no rounding makes
/// indefinite; so M2 has to have such a factor or be zero.
inline bool middle_matrix(const small_matrix<3>& lower, const packed_matrix<3>& m2,
                          packed_matrix<3>& K) {
    small_matrix<3> w{};
    if (largest_magnitude<3>(m2.data()) > 0 && !factorise<3>(m2, true, w)) return false;
    for (small_vector<3>& column : w) {
        for (unsigned i = 0; i < 3; ++i) {
            for (unsigned k = 0; k < i; ++k)
                column[i] -= lower[k][i] * column[k];
            column[i] /= lower[i][i];
        }
    }
    sum_of_squares<3>({1.0, 1.0, 1.0}, w, K.data());
    return true;
}

/// Reduces two matrices; false when M1 is not positive definite, an entry is not finite, or (in
/// 3-D) M2 is neither positive semidefinite with a Cholesky factor nor zero.
template <unsigned Dim>
bool reduce(const double* m1, const double* m2, reduction<Dim>& r) {
    if (!is_finite<Dim>(m1) || !is_finite<Dim>(m2)) return false;
    r.factor1 = range_factor<Dim>(m1);
    r.factor2 = range_factor<Dim>(m2);
    packed_matrix<Dim> K;
    return factorise<Dim>(scaled<Dim>(m1, r.factor1), false, r.lower) &&
           middle_matrix(r.lower, scaled<Dim>(m2, r.factor2), K) &&
           decompose<Dim>(K.data(), r.middle);
}

/// L^-T z, of unit length.
template <unsigned Dim>
small_vector<Dim> back_transformed(const small_matrix<Dim>& lower, small_vector<Dim> z) {
    double square = 0.0;
    for (unsigned i = Dim; i-- > 0;) {
        for (unsigned k = i + 1; k < Dim; ++k)
            z[i] -= lower[i][k] * z[k];
        z[i] /= lower[i][i];
        square += z[i] * z[i];
    }
    if (square > 0) {
        for (double& x : z)
            x /= std::sqrt(square);
    }
    return z;
}

/// Values and unit vectors with M2 v = value M1 v; false when there are none, or when a value is
/// not finite.
template <unsigned Dim>
bool generalised_pairs(const double* m1, const double* m2, eigen_system<Dim>& pairs) {
    pairs = {};
    reduction<Dim> r;
    if (!reduce<Dim>(m1, m2, r)) return false;
    for (unsigned k = 0; k < Dim; ++k) {
        pairs.values[k] = r.value(k);
        if (!std::isfinite(pairs.values[k])) {
            pairs = {};
            return false;
        }
        pairs.vectors[k] = back_transformed<Dim>(r.lower, r.middle.vectors[k]);
    }
    return true;
}

/// L Z diag(d) Z^T L^T with d[k] chosen from 1, which makes M1, and value k, which makes M2: the
/// metric that along every common conjugate direction is the chosen one of the two. `chosen` is the
/// maximum or the minimum.
///
/// With unit vectors e_k = L^-T z_k / |L^-T z_k| as the columns of P this is
/// P^-T diag(chosen(e_k^T M1 e_k, e_k^T M2 e_k)) P^-1, but it needs no inverse, and so stays
/// accurate for nearly singular matrices, for which the columns of P are nearly parallel.
template <unsigned Dim, class Chosen>
void combine(const reduction<Dim>& r, const Chosen& chosen, double* m) {
    const double unit = chosen(1 / r.factor1, 1 / r.factor2);
    small_vector<Dim> d;
    small_matrix<Dim> v;
    for (unsigned k = 0; k < Dim; ++k) {
        d[k] = chosen(1 / r.factor1 / unit, 1 / r.factor2 / unit * r.middle.values[k]);
        for (unsigned i = 0; i < Dim; ++i) {
            v[k][i] = 0.0;
            for (unsigned j = 0; j <= i; ++j)
                v[k][i] += r.lower[j][i] * r.middle.vectors[k][j];
        }
    }
    sum_of_squares<Dim>(d, v, m);
    for (unsigned i = 0; i < packed_size<Dim>; ++i)
        m[i] *= unit;
}

/// The same of two metrics; the zero matrix where they cannot be reduced. m may be m1 or m2.
template <unsigned Dim, class Chosen>
void combine(const double* m1, const double* m2, const Chosen& chosen, double* m) {
    reduction<Dim> r;
    if (reduce<Dim>(m1, m2, r)) {
        combine(r, chosen, m);
    } else {
        std::fill_n(m, packed_size<Dim>, 0.0);
    }
}

/// The intersection: in every direction the smaller of the two sizes.
template <unsigned Dim>
void intersect(const double* m1, const double* m2, double* m) {
    combine<Dim>(
        m1, m2, [](double a, double b) { return std::max(a, b); }, m);
}

/// The same of two metrics that were reduced.
template <unsigned Dim>
void intersect(const reduction<Dim>& r, double* m) {
    combine(
        r, [](double a, double b) { return std::max(a, b); }, m);
}

/// The union: in every direction the larger one.
template <unsigned Dim>
void unite(const double* m1, const double* m2, double* m) {
    combine<Dim>(
        m1, m2, [](double a, double b) { return std::min(a, b); }, m);
}

} // namespace kvx::zelvo
