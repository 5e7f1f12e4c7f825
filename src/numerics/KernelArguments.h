// Argument checks for the kernels whose arguments BLAS or LAPACK would reject.
// They run before the library is called: a rejected argument would otherwise
// make the library print a line of its own and return with the output as it
// was, and the caller would go on computing with it.
//
// A count below zero is an error, and so is a row stride (leading dimension)
// below max(1, row width): a matrix with no columns still has a stride of at
// least 1, as BLAS and LAPACK require.
#ifndef QVSYSBASE_SRC_NUMERICS_KERNELARGUMENTS_H_
#define QVSYSBASE_SRC_NUMERICS_KERNELARGUMENTS_H_

#include <initializer_list>
#include <string>

namespace qvsysbase::detail {

// One argument rule: whether the argument breaks it, and the argument's
// position in the routine's list, counted from 1.
struct ArgumentRule {
  bool broken;
  int position;
};

// The position of the first broken rule in the order given (the routines'
// argument order), or 0 when every argument is legal.
int FirstIllegalArgument(std::initializer_list<ArgumentRule> rules);

// True when `stride` cannot be the row stride of rows of `width` elements.
inline bool IsIllegalStride(int stride, int width) { return stride < (width > 1 ? width : 1); }

// "Parameter <position> was incorrect on entry to <routine>.": the BLAS error
// handler's wording, with positions counted as the C interface lists them.
std::string IllegalArgumentText(int position, const char* routine);

// y = A·x with A rows×cols, row stride lda: throws std::runtime_error with the
// text of cblas_dgemv for the first illegal argument. Both kernel sets check it.
void CheckMatrixByVectorArguments(int rows, int cols, int lda);

// C = A·Bᵀ with A m×k, B n×k, C m×n: throws std::runtime_error with the text
// of cblas_dgemm for the first illegal argument.
void CheckMatrixMultiplyArguments(int m, int k, int lda, int n, int ldb, int ldc);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_KERNELARGUMENTS_H_
