#include <kvx/lapack.h>

// The Fortran routine; compilers append the lengths of character arguments.
extern "C" void dspev_(const char* jobz, const char* uplo, const int* n, double* ap, double* w,
                       double* z, const int* ldz, double* work, int* info,
                       unsigned long jobz_length, unsigned long uplo_length);

namespace kvx::lapack {

void dspev(char job, char uplo, int order, double* packed, double* values, double* vectors, int ld,
           double* work, int& info) noexcept {
    dspev_(&job, &uplo, &order, packed, values, vectors, &ld, work, &info, 1, 1);
}

} // namespace kvx::lapack
