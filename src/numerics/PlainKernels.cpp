// The plain kernel set. Each routine takes every element once, in increasing
// index order, with the run-time library's own fabs, sqrt, exp and log. A
// count of zero or below touches nothing; the matrix-vector product refuses an
// illegal shape with the kernel-library set's exception, so that the two sets
// fail alike and neither reads outside the caller's arrays.
#include "PlainKernels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <numeric>

#include "KernelArguments.h"
#include "MKLWrapper.h"

namespace qvsysbase::detail {
namespace {

// Element count as a length; a negative count is an empty range.
std::size_t Len(int n) { return n > 0 ? static_cast<std::size_t>(n) : 0; }

// Raw array storage, as new[] of the element type would give it; nspFree
// releases either kind without knowing which it was.
template <class T>
T* AllocateArray(int n) {
  MarkMemAllocExercised();
  if (n < 0) throw std::bad_array_new_length();
  return static_cast<T*>(::operator new[](Len(n) * sizeof(T)));
}

double* dMalloc(int n) { return AllocateArray<double>(n); }
int* iMalloc(int n) { return AllocateArray<int>(n); }
void Free(void* p) { ::operator delete[](p); }

void dbZero(double* dst, int n) { std::fill_n(dst, Len(n), 0.0); }

void dbAbs1(double* vec, int n) {
  std::transform(vec, vec + Len(n), vec, [](double x) { return std::fabs(x); });
}
void dbAbs2(const double* src, double* dst, int n) {
  std::transform(src, src + Len(n), dst, [](double x) { return std::fabs(x); });
}

double dDotProd(const double* a, const double* b, int n) {
  return std::inner_product(a, a + Len(n), b, 0.0);
}

// One dot product per row.
void MatrixMultiplyByVector(const double* A, int rows, int cols, int lda, const double* x,
                            double* y) {
  CheckMatrixByVectorArguments(rows, cols, lda);
  for (std::size_t r = 0; r < Len(rows); ++r) {
    const double* row = A + r * static_cast<std::size_t>(lda);
    y[r] = std::inner_product(row, row + Len(cols), x, 0.0);
  }
}

void dbSqrt1(double* vec, int n) {
  std::transform(vec, vec + Len(n), vec, [](double x) { return std::sqrt(x); });
}
void dbSqrt2(const double* src, double* dst, int n) {
  std::transform(src, src + Len(n), dst, [](double x) { return std::sqrt(x); });
}

void dbCopy(const double* src, double* dst, int n) { std::copy_n(src, Len(n), dst); }

void dbMpy1(double val, double* dst, int n) {
  std::transform(dst, dst + Len(n), dst, [val](double x) { return x * val; });
}
void dbMpy2(const double* src, double* dst, int n) {
  std::transform(src, src + Len(n), dst, dst, [](double s, double d) { return s * d; });
}
void dbMpy3(const double* a, const double* b, double* dst, int n) {
  std::transform(a, a + Len(n), b, dst, [](double x, double y) { return x * y; });
}

void dbAdd2(const double* src, double* dst, int n) {
  std::transform(src, src + Len(n), dst, dst, [](double s, double d) { return s + d; });
}
void dbAddScaledVector(const double* src, double scale, double* dst, int n) {
  for (std::size_t i = 0; i < Len(n); ++i) dst[i] += src[i] * scale;
}

void dbSub2(const double* src, double* dst, int n) {
  std::transform(src, src + Len(n), dst, dst, [](double s, double d) { return d - s; });
}
void dbSub3(const double* a, const double* b, double* dst, int n) {
  std::transform(a, a + Len(n), b, dst, [](double x, double y) { return x - y; });
}

void dbExp1(double* vec, int n) {
  std::transform(vec, vec + Len(n), vec, [](double x) { return std::exp(x); });
}
void dbLn1(double* vec, int n) {
  std::transform(vec, vec + Len(n), vec, [](double x) { return std::log(x); });
}

// Ascending, NaNs last. The plain "<" is no ordering once a NaN is present (the
// standard sort may then run past the array's end), so the NaNs are moved
// behind the numbers first and only the numbers are sorted.
void SortVector(double* vec, int n) {
  double* const numbersEnd =
      std::partition(vec, vec + Len(n), [](double x) { return !std::isnan(x); });
  std::sort(vec, numbersEnd);
}

void dbSet(double val, double* dst, int n) { std::fill_n(dst, Len(n), val); }
void wbZero(short* dst, int n) { std::fill_n(dst, Len(n), static_cast<short>(0)); }
void dbIntToFloat(const int* src, double* dst, int n) {
  std::transform(src, src + Len(n), dst, [](int x) { return static_cast<double>(x); });
}
void wbCopy(const short* src, short* dst, int n) { std::copy_n(src, Len(n), dst); }
void dbAdd1(double val, double* dst, int n) {
  std::transform(dst, dst + Len(n), dst, [val](double x) { return x + val; });
}
void dbSub1(double val, double* dst, int n) {
  std::transform(dst, dst + Len(n), dst, [val](double x) { return x - val; });
}

// Sum from 0.0 in index order, divided by n (0 / 0 for an empty vector).
double dMean(const double* vec, int n) { return std::accumulate(vec, vec + Len(n), 0.0) / n; }

// Sample deviation: sqrt(sum((x - mean)^2) / (n - 1)); a single value gives
// 0 / 0, not-a-number, as the formula says.
double dStdDev(const double* vec, int n) {
  const double mean = dMean(vec, n);
  const double squares = std::accumulate(vec, vec + Len(n), 0.0, [mean](double sum, double x) {
    return sum + (x - mean) * (x - mean);
  });
  return std::sqrt(squares / (n - 1));
}

}  // namespace

KernelSet PlainKernelSet() {
  return {
      .nspdMalloc = &dMalloc,
      .nspiMalloc = &iMalloc,
      .nspFree = &Free,
      .nspdbSet = &dbSet,
      .nspdbZero = &dbZero,
      .nspwbZero = &wbZero,
      .nspdbIntToFloat = &dbIntToFloat,
      .nspdbAbs1 = &dbAbs1,
      .nspdbAbs2 = &dbAbs2,
      .nspdDotProd = &dDotProd,
      .nspMatrixMultiplyByVector = &MatrixMultiplyByVector,
      .nspdbSqrt1 = &dbSqrt1,
      .nspdbSqrt2 = &dbSqrt2,
      .nspdbCopy = &dbCopy,
      .nspwbCopy = &wbCopy,
      .nspdbMpy1 = &dbMpy1,
      .nspdbMpy2 = &dbMpy2,
      .nspdbMpy3 = &dbMpy3,
      .nspdbAdd1 = &dbAdd1,
      .nspdbAdd2 = &dbAdd2,
      .nspdbAddScaledVector = &dbAddScaledVector,
      .nspdbSub1 = &dbSub1,
      .nspdbSub2 = &dbSub2,
      .nspdbSub3 = &dbSub3,
      .nspdbExp1 = &dbExp1,
      .nspdbLn1 = &dbLn1,
      .nspSortVector = &SortVector,
      .nspdMean = &dMean,
      .nspdStdDev = &dStdDev,
  };
}

}  // namespace qvsysbase::detail
