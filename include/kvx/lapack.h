#pragma once

#include <kvx/zelvo/export.h>

namespace kvx::lapack {

/// Eigenvalues, and on demand eigenvectors, of a symmetric matrix in packed storage: the LAPACK
/// routine of that name (LAPACK Users' Guide, 3rd ed., 1999), the one place where it is called.
///
/// job     'N' eigenvalues only, 'V' eigenvectors too
/// uplo    'U' or 'L': which triangle `packed` holds, column by column
/// order   n, the order of the matrix
/// packed  n (n + 1) / 2 entries, overwritten
/// values  n eigenvalues, ascending
/// vectors n columns of stride ld, the orthonormal eigenvectors in the order of the values; not
///         touched for job 'N'
/// work    3 n entries of scratch space
/// info    0 on success, negative for a wrong argument, positive when it did not converge
KVX_ZELVO_API void dspev(char job, char uplo, int order, double* packed, double* values,
                         double* vectors, int ld, double* work, int& info) noexcept;

} // namespace kvx::lapack
