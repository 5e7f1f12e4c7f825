// The matrix kernels and the sort of the kernel-library set: thin adapters over
// BLAS and LAPACK that IntelSPLHandler installs in its slots when the mode is 1.
// Arrays are row-major with explicit row strides; LAPACK sees them transposed,
// so its 'U' triangle is the row-major lower triangle (on and below the diagonal).
#ifndef QVSYSBASE_SRC_NUMERICS_MATRIXKERNELS_H_
#define QVSYSBASE_SRC_NUMERICS_MATRIXKERNELS_H_

namespace qvsysbase::detail {

bool mklCholDcInplace(double* a, int n, int lda, int* info);
bool mklCholInverseInplace(double* a, int n, int lda);
void mklInverseTriangularInplace(double* a, int n, int lda);
void mklSolveLinEquatTriangular(const double* a, int n, int lda, double* b, int nrhs, int ldb);
void mklSolveLinEquatSymmetr(const double* a, int n, int lda, double* b, int nrhs, int ldb);
void mklProductTrMatrTranspByTrMatrInplace(double* a, int n, int lda);
void mklMatrixMultiply(const double* A, int m, int k, int lda, const double* B, int n, int ldb,
                       double* C, int ldc);
void mklMatrixMultiplyByVector(const double* A, int rows, int cols, int lda, const double* x,
                               double* y);
void mklSortVector(double* vec, int n);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_MATRIXKERNELS_H_
