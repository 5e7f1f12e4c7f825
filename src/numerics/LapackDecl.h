// The LAPACK routines the kernels call, declared by their standard Fortran symbols.
//
// Every argument is passed by address, as Fortran passes it. Each CHARACTER
// argument is followed, after the last ordinary argument, by a hidden length of
// type size_t (the gfortran convention since version 8, also what OpenBLAS's C
// replacements expect or ignore). Leaving the lengths out works by accident on
// x86-64 until a routine compares a flag string by its length, so they are always
// passed, one per flag, in the order the flags appear.
//
// INTEGER is a 32-bit int: the LP64 interface of OpenBLAS and reference LAPACK.
#ifndef QVSYSBASE_SRC_NUMERICS_LAPACKDECL_H_
#define QVSYSBASE_SRC_NUMERICS_LAPACKDECL_H_

#include <cstddef>

namespace qvsysbase::detail {

// The hidden length of a one-character flag such as "U".
inline constexpr std::size_t kFlagLen = 1;

}  // namespace qvsysbase::detail

extern "C" {

// Cholesky factorisation A = Uᵀ·U ('U') of a symmetric positive-definite matrix.
void dpotrf_(const char* uplo, const int* n, double* a, const int* lda, int* info,
             std::size_t uplo_len);

// Inverse of A from the factor dpotrf left in the same triangle.
void dpotri_(const char* uplo, const int* n, double* a, const int* lda, int* info,
             std::size_t uplo_len);

// Solves A·X = B from the factor dpotrf left in the same triangle.
void dpotrs_(const char* uplo, const int* n, const int* nrhs, const double* a, const int* lda,
             double* b, const int* ldb, int* info, std::size_t uplo_len);

// Inverse of a triangular matrix in place.
void dtrtri_(const char* uplo, const char* diag, const int* n, double* a, const int* lda, int* info,
             std::size_t uplo_len, std::size_t diag_len);

// Solves op(A)·X = B for a triangular A.
void dtrtrs_(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs,
             const double* a, const int* lda, double* b, const int* ldb, int* info,
             std::size_t uplo_len, std::size_t trans_len, std::size_t diag_len);

// U·Uᵀ ('U') of a triangular factor, in place.
void dlauum_(const char* uplo, const int* n, double* a, const int* lda, int* info,
             std::size_t uplo_len);

// QR factorisation with column pivoting, A·P = Q·R: R in the upper triangle, Q as
// Householder reflectors below it and in tau; jpvt (1-based) names P's columns.
// lwork = -1 asks for the optimal work size in work[0].
void dgeqp3_(const int* m, const int* n, double* a, const int* lda, int* jpvt, double* tau,
             double* work, const int* lwork, int* info);

// C = op(Q)·C ('L') for the Q of dgeqrf or dgeqp3; lwork = -1 queries as above.
void dormqr_(const char* side, const char* trans, const int* m, const int* n, const int* k,
             const double* a, const int* lda, const double* tau, double* c, const int* ldc,
             double* work, const int* lwork, int* info, std::size_t side_len,
             std::size_t trans_len);

// Sorts d in increasing ('I') or decreasing ('D') order.
void dlasrt_(const char* id, const int* n, double* d, int* info, std::size_t id_len);

}  // extern "C"

#endif  // QVSYSBASE_SRC_NUMERICS_LAPACKDECL_H_
