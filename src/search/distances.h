#pragma once

/// The two tests of nearness that searching and merging share. Their arithmetic is part of the
/// results: the same operations in the same order everywhere.
namespace kvx::zelvo {

/// The sum whose square root is the distance, in one fixed order.
template <unsigned Dim>
double squared_distance(const double* a, const double* b) {
    double sum = 0;
    for (unsigned i = 0; i < Dim; ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return sum;
}

/// Whether q lies in the closed box p +/- tol.
template <unsigned Dim>
bool in_box(const double* p, const double* q, double tol) {
    bool inside = true;
    for (unsigned i = 0; i < Dim; ++i)
        inside &= p[i] - tol <= q[i] && q[i] <= p[i] + tol;
    return inside;
}

} // namespace kvx::zelvo
