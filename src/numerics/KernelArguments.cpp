#include "numerics/KernelArguments.h"

#include <stdexcept>

namespace qvsysbase::detail {
namespace {

constexpr const char* kIllegalArgumentStart = "Parameter ";
constexpr const char* kIllegalArgumentMiddle = " was incorrect on entry to ";
constexpr const char* kIllegalArgumentEnd = ".";

constexpr const char* kDgemvName = "cblas_dgemv";
constexpr const char* kDgemmName = "cblas_dgemm";

// Positions in cblas_dgemv(order, trans, M, N, alpha, A, lda, x, incX, beta, y, incY);
// row-major and not transposed, M is the row count. The increments are always 1.
enum DgemvArgument : int { kDgemvRows = 3, kDgemvCols = 4, kDgemvLda = 7 };

// Positions in cblas_dgemm(order, transA, transB, M, N, K, alpha, A, lda, B,
// ldb, beta, C, ldc). A is used as it is (m×k) and B transposed (stored n×k),
// so both strides cover k elements and C's covers n.
enum DgemmArgument : int {
  kDgemmM = 4,
  kDgemmN = 5,
  kDgemmK = 6,
  kDgemmLda = 9,
  kDgemmLdb = 11,
  kDgemmLdc = 14,
};

[[noreturn]] void ThrowIllegalArgument(int position, const char* routine) {
  throw std::runtime_error(IllegalArgumentText(position, routine));
}

}  // namespace

int FirstIllegalArgument(std::initializer_list<ArgumentRule> rules) {
  for (const ArgumentRule& rule : rules) {
    if (rule.broken) return rule.position;
  }
  return 0;
}

std::string IllegalArgumentText(int position, const char* routine) {
  return kIllegalArgumentStart + std::to_string(position) + kIllegalArgumentMiddle + routine +
         kIllegalArgumentEnd;
}

void CheckMatrixByVectorArguments(int rows, int cols, int lda) {
  const int position = FirstIllegalArgument({
      {rows < 0, kDgemvRows},
      {cols < 0, kDgemvCols},
      {IsIllegalStride(lda, cols), kDgemvLda},
  });
  if (position != 0) ThrowIllegalArgument(position, kDgemvName);
}

void CheckMatrixMultiplyArguments(int m, int k, int lda, int n, int ldb, int ldc) {
  const int position = FirstIllegalArgument({
      {m < 0, kDgemmM},
      {n < 0, kDgemmN},
      {k < 0, kDgemmK},
      {IsIllegalStride(lda, k), kDgemmLda},
      {IsIllegalStride(ldb, k), kDgemmLdb},
      {IsIllegalStride(ldc, n), kDgemmLdc},
  });
  if (position != 0) ThrowIllegalArgument(position, kDgemmName);
}

}  // namespace qvsysbase::detail
