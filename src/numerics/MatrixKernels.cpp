// Row-major arrays go to LAPACK unchanged. LAPACK reads an n×n row-major array
// with stride lda as the column-major array of its transpose, so LAPACK's upper
// triangle ('U') is our lower triangle, and a factor U = Lᵀ in LAPACK's view is
// the lower-triangular L of the row-major caller:
//   dpotrf  A = Uᵀ·U          ->  A = L·Lᵀ, L in the row-major lower triangle
//   dtrtrs  Uᵀ·X = B ('T')    ->  L·x = b for every row b of the right-hand sides
//   dlauum  U·Uᵀ              ->  Lᵀ·L in the row-major lower triangle
// The other triangle is never read or written.
//
// LAPACK's info has two meanings: negative is an illegal argument (a bug in the
// caller), positive a numerical outcome. Each call below handles both. The
// arguments are checked here first, giving the info LAPACK would give, so that
// an illegal one never reaches the library (which would print a line of its own).
#include "numerics/MatrixKernels.h"

#include <cblas.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "numerics/KernelArguments.h"
#include "numerics/LapackDecl.h"
#include "qvsysbase/KernelErrorReport.h"

namespace qvsysbase::detail {
namespace {

// LAPACK's flags, held as one-character strings since Fortran takes them by address.
constexpr char kUpper[] = "U";
constexpr char kNonUnitDiag[] = "N";
constexpr char kTransposed[] = "T";
constexpr char kIncreasing[] = "I";

constexpr const char* kCholDcIllegalText = "illegal parameter in mklCholDcInplace()/dpotrf()";
constexpr const char* kCholInvFactorIllegalText =
    "illegal parameter in mklCholInverseInplace()/dpotrf()";
constexpr const char* kCholInvInverseIllegalText =
    "illegal parameter in mklCholInverseInplace()/dpotri()";
constexpr const char* kTriangularInverseSingularText =
    "mklInverseTriangularInplace()/dtrtri() - source matrix is singular";
constexpr const char* kTriangularSolveSingularText =
    "mklSolveLinEquatTriangular()/dtrtrs() - source matrix is singular";
constexpr const char* kSymmetricSolveSingularText =
    "mklSolveLinEquatSymmetr()/dpotrs() - source matrix is singular";
constexpr const char* kProductIllegalText =
    "illegal parameter in mklProductTrMatrTranspByTrMatrInplace()/dlauum()";
constexpr const char* kSortIllegalText = "dlasrt - illegal element at";

// The info LAPACK would return: minus the position of the first illegal
// argument, 0 when all are legal.
int LapackArgumentInfo(std::initializer_list<ArgumentRule> rules) {
  return -FirstIllegalArgument(rules);
}

// dpotrf, dpotri and dlauum take (uplo, n, a, lda, info).
int SquareArgumentInfo(int n, int lda) {
  return LapackArgumentInfo({{n < 0, 2}, {IsIllegalStride(lda, n), 4}});
}

}  // namespace

bool mklCholDcInplace(double* a, int n, int lda, int* info) {
  *info = SquareArgumentInfo(n, lda);
  if (*info == 0) dpotrf_(kUpper, &n, a, &lda, info, kFlagLen);
  if (*info < 0) throw std::runtime_error(kCholDcIllegalText);
  // info > 0: the leading minor of that order is not positive definite; the
  // caller reads the order from its variable.
  if (*info > 0) return false;
  return true;
}

bool mklCholInverseInplace(double* a, int n, int lda) {
  int info = SquareArgumentInfo(n, lda);
  if (info == 0) dpotrf_(kUpper, &n, a, &lda, &info, kFlagLen);
  if (info < 0) throw std::runtime_error(kCholInvFactorIllegalText);
  if (info > 0) return false;  // not positive definite; a holds the partial factor

  dpotri_(kUpper, &n, a, &lda, &info, kFlagLen);
  if (info < 0) throw std::runtime_error(kCholInvInverseIllegalText);
  // info > 0: a zero on the factor's diagonal, so the matrix has no inverse.
  if (info > 0) return false;
  return true;
}

void mklInverseTriangularInplace(double* a, int n, int lda) {
  // dtrtri(uplo, diag, n, a, lda, info)
  int info = LapackArgumentInfo({{n < 0, 3}, {IsIllegalStride(lda, n), 5}});
  if (info == 0) dtrtri_(kUpper, kNonUnitDiag, &n, a, &lda, &info, kFlagLen, kFlagLen);
  // Both signs share one text: callers treat a bad call and a singular matrix alike.
  if (info < 0) throw std::runtime_error(kTriangularInverseSingularText);
  if (info > 0) throw std::runtime_error(kTriangularInverseSingularText);
}

void mklSolveLinEquatTriangular(const double* a, int n, int lda, double* b, int nrhs, int ldb) {
  // dtrtrs(uplo, trans, diag, n, nrhs, a, lda, b, ldb, info)
  int info = LapackArgumentInfo(
      {{n < 0, 4}, {nrhs < 0, 5}, {IsIllegalStride(lda, n), 7}, {IsIllegalStride(ldb, n), 9}});
  if (info == 0) {
    dtrtrs_(kUpper,
            kTransposed,
            kNonUnitDiag,
            &n,
            &nrhs,
            a,
            &lda,
            b,
            &ldb,
            &info,
            kFlagLen,
            kFlagLen,
            kFlagLen);
  }
  if (info < 0) throw std::runtime_error(kTriangularSolveSingularText);
  if (info > 0) throw std::runtime_error(kTriangularSolveSingularText);
}

void mklSolveLinEquatSymmetr(const double* a, int n, int lda, double* b, int nrhs, int ldb) {
  // dpotrs(uplo, n, nrhs, a, lda, b, ldb, info)
  int info = LapackArgumentInfo(
      {{n < 0, 2}, {nrhs < 0, 3}, {IsIllegalStride(lda, n), 5}, {IsIllegalStride(ldb, n), 7}});
  if (info == 0) dpotrs_(kUpper, &n, &nrhs, a, &lda, b, &ldb, &info, kFlagLen);
  // dpotrs reports only illegal arguments; a positive value would be a new
  // failure of the library and gets the same text rather than passing silently.
  if (info < 0) throw std::runtime_error(kSymmetricSolveSingularText);
  if (info > 0) throw std::runtime_error(kSymmetricSolveSingularText);
}

void mklProductTrMatrTranspByTrMatrInplace(double* a, int n, int lda) {
  int info = SquareArgumentInfo(n, lda);
  if (info == 0) dlauum_(kUpper, &n, a, &lda, &info, kFlagLen);
  if (info < 0) throw std::runtime_error(kProductIllegalText);
  if (info > 0) throw std::runtime_error(kProductIllegalText);
}

void mklMatrixMultiply(const double* A, int m, int k, int lda, const double* B, int n, int ldb,
                       double* C, int ldc) {
  CheckMatrixMultiplyArguments(m, k, lda, n, ldb, ldc);
  // C = A·Bᵀ: B is stored n×k by rows, so its transpose is the k×n operand.
  cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasTrans, m, n, k, 1.0, A, lda, B, ldb, 0.0, C, ldc);
}

void mklMatrixMultiplyByVector(const double* A, int rows, int cols, int lda, const double* x,
                               double* y) {
  CheckMatrixByVectorArguments(rows, cols, lda);
  // A row of no columns sums to zero, but dgemv returns early without writing y.
  if (cols == 0) {
    std::fill_n(y, rows, 0.0);
    return;
  }
  cblas_dgemv(CblasRowMajor, CblasNoTrans, rows, cols, 1.0, A, lda, x, 1, 0.0, y, 1);
}

void mklSortVector(double* vec, int n) {
  // dlasrt(id, n, d, info)
  int info = LapackArgumentInfo({{n < 0, 2}});
  if (info == 0) {
    // dlasrt compares with "<" and ">", which every comparison with a NaN
    // fails, so a NaN would stop the order where it stands. NaNs go last
    // first; the numbers before them are sorted.
    double* const end = std::partition(vec, vec + n, [](double x) { return !std::isnan(x); });
    const int numbers = static_cast<int>(end - vec);
    dlasrt_(kIncreasing, &numbers, vec, &info, kFlagLen);
  }
  // The sort is reported, not thrown. dlasrt defines only negative values; a
  // positive one is reported the same way rather than lost.
  if (info < 0) ReportKernelError(kSortIllegalText + std::to_string(info));
  if (info > 0) ReportKernelError(kSortIllegalText + std::to_string(info));
}

}  // namespace qvsysbase::detail
