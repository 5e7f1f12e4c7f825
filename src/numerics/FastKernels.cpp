// The kernel-library set (mode 1). BLAS routines go to the BLAS library as they
// are; the elementwise loops are written so that the compiler vectorises them
// (this unit is built without errno and with GCC's full vectoriser cost model);
// exp and log run through SLEEF at the widest width the processor offers; the
// vector-math functions check their results in the same pass and raise the
// vendor's statuses through RaiseVectorMathStatus.
#include "FastKernels.h"

#include <cblas.h>

#include <algorithm>
#include <bit>
#include <boost/math/constants/constants.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

#include "MKLWrapper.h"
#include "MatrixKernels.h"
#include "PlainKernels.h"
#include "RandomStreamLists.h"
#include "TROptimise.h"
#include "VectorMath.h"

namespace qvsysbase::detail {
namespace {

// Vendor names of the vector-math functions, as their statuses report them.
constexpr const char* kExpName = "vdExp";
constexpr const char* kLnName = "vdLn";
constexpr const char* kSqrtName = "vdSqrt";
constexpr const char* kCdfNormInvName = "vdCdfNormInv";
constexpr const char* kLGammaName = "vdLGamma";

// One cache line, and the widest vector register (AVX-512) that loads it whole.
constexpr std::size_t kBufferAlignment = 64;
// nspdbZero copies from this block, kZeroBlock elements at a time.
constexpr int kZeroBlock = 64;
constinit const double kZeros[kZeroBlock] = {};

template <class T>
T* AllocateAligned(int n) {
  MarkMemAllocExercised();
  if (n < 0) throw std::bad_alloc();
  const std::size_t bytes = static_cast<std::size_t>(n) * sizeof(T);
  // aligned_alloc wants a size that is a multiple of the alignment.
  const std::size_t rounded = (bytes + kBufferAlignment - 1) & ~(kBufferAlignment - 1);
  void* p = std::aligned_alloc(kBufferAlignment, rounded);
  if (p == nullptr && n != 0) throw std::bad_alloc();
  return static_cast<T*>(p);
}

double* dMalloc(int n) { return AllocateAligned<double>(n); }
int* iMalloc(int n) { return AllocateAligned<int>(n); }
void Free(void* p) { std::free(p); }

void dbZero(double* dst, int n) {
  int done = 0;
  for (; done + kZeroBlock <= n; done += kZeroBlock)
    cblas_dcopy(kZeroBlock, kZeros, 1, dst + done, 1);
  if (done < n) cblas_dcopy(n - done, kZeros, 1, dst + done, 1);
}

// ---- BLAS ------------------------------------------------------------------
double dDotProd(const double* a, const double* b, int n) { return cblas_ddot(n, a, 1, b, 1); }
void dbCopy(const double* src, double* dst, int n) { cblas_dcopy(n, src, 1, dst, 1); }
// dscal and daxpy take a zero factor as a shortcut: dscal fills with zeros and
// daxpy returns at once, so a NaN or an infinity would become 0 or stay where
// IEEE arithmetic makes a NaN, and -0.0 would keep its sign. A zero factor
// therefore takes the loop, which computes what the slot says.
void dbMpy1(double val, double* dst, int n) {
  if (val != 0.0) return cblas_dscal(n, val, dst, 1);
  for (int i = 0; i < n; ++i) dst[i] *= val;
}
void dbAddScaledVector(const double* src, double scale, double* dst, int n) {
  if (scale != 0.0) return cblas_daxpy(n, scale, src, 1, dst, 1);
  for (int i = 0; i < n; ++i) dst[i] += src[i] * scale;
}

// ---- Vectorised loops --------------------------------------------------------
void dbAbs1(double* vec, int n) {
  for (int i = 0; i < n; ++i) vec[i] = std::fabs(vec[i]);
}
void dbAbs2(const double* src, double* dst, int n) {
  for (int i = 0; i < n; ++i) dst[i] = std::fabs(src[i]);
}
void dbMpy2(const double* src, double* dst, int n) {
  for (int i = 0; i < n; ++i) dst[i] = src[i] * dst[i];
}
void dbMpy3(const double* a, const double* b, double* dst, int n) {
  for (int i = 0; i < n; ++i) dst[i] = a[i] * b[i];
}
void dbAdd2(const double* src, double* dst, int n) {
  for (int i = 0; i < n; ++i) dst[i] = src[i] + dst[i];
}
void dbSub2(const double* src, double* dst, int n) {
  for (int i = 0; i < n; ++i) dst[i] = dst[i] - src[i];
}
void dbSub3(const double* a, const double* b, double* dst, int n) {
  for (int i = 0; i < n; ++i) dst[i] = a[i] - b[i];
}

// sqrt: the vector-width units check each vector's arguments before its roots
// are taken (an in-place result no longer shows which were negative); the
// width is chosen when the set is installed.
using SqrtFn = void (*)(const double* src, double* dst, int n);
void SqrtScalar(const double* src, double* dst, int n);
constinit SqrtFn g_sqrt = &SqrtScalar;

void dbSqrt1(double* vec, int n) { g_sqrt(vec, vec, n); }
void dbSqrt2(const double* src, double* dst, int n) { g_sqrt(src, dst, n); }

// ---- exp and log -------------------------------------------------------------
// One element at a time, for processors without AVX.
void ExpInPlaceScalar(double* vec, int n) {
  for (int i = 0; i < n; ++i) {
    const double x = vec[i];
    vec[i] = std::exp(x);
    if (std::isinf(vec[i])) CheckExpLanes(&x, &vec[i], 1);
  }
}
void LnInPlaceScalar(double* vec, int n) {
  for (int i = 0; i < n; ++i) {
    const double x = vec[i];
    vec[i] = std::log(x);
    if (x <= 0.0) CheckLnLanes(&x, 1);
  }
}
void SqrtScalar(const double* src, double* dst, int n) {
  for (int i = 0; i < n; ++i) {
    const double x = src[i];
    dst[i] = std::sqrt(x);
    if (x < 0.0) CheckSqrtLanes(&x, 1);
  }
}

using InPlaceFn = void (*)(double* vec, int n);
struct VectorMathSet {
  InPlaceFn exp;
  InPlaceFn ln;
  SqrtFn sqrt;
};

VectorMathSet ChooseVectorMath() {
#if defined(QV_HAVE_X86_VECTOR_MATH)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512f")) return {&ExpInPlaceAvx512, &LnInPlaceAvx512, &SqrtAvx512};
  if (__builtin_cpu_supports("avx")) return {&ExpInPlaceAvx, &LnInPlaceAvx, &SqrtAvx};
#endif
  return {&ExpInPlaceScalar, &LnInPlaceScalar, &SqrtScalar};
}

// ---- Scalar functions --------------------------------------------------------
// Boost reports nothing itself; the statuses are decided from the argument and
// the result, as the vendor's functions decide them.
using QuietPolicy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::ignore_error>,
    boost::math::policies::pole_error<boost::math::policies::ignore_error>,
    boost::math::policies::overflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::underflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::evaluation_error<boost::math::policies::ignore_error>>;

double Erf(double x) { return boost::math::erf(x, QuietPolicy()); }

// Phi^-1(p) = -sqrt(2) * erfc^-1(2p); p outside [0, 1] is a domain error, 0 and
// 1 are the poles at -inf and +inf.
double PhiInverse(double p) {
  if (std::isnan(p)) return p;
  if (p < 0.0 || p > 1.0) {
    RaiseVectorMathStatus(kVmlDomainError, kCdfNormInvName);
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (p == 0.0 || p == 1.0) {
    RaiseVectorMathStatus(kVmlSingularity, kCdfNormInvName);
    return p == 0.0 ? -HUGE_VAL : HUGE_VAL;
  }
  return -boost::math::constants::root_two<double>() *
         boost::math::erfc_inv(2.0 * p, QuietPolicy());
}

// ln|Gamma(x)|: the poles are zero and the negative integers; beyond about
// 2.5e305 the finite argument overflows.
double LnGamma(double x) {
  if (std::isnan(x) || std::isinf(x)) return std::fabs(x);
  if (x <= 0.0 && std::floor(x) == x) {
    RaiseVectorMathStatus(kVmlSingularity, kLGammaName);
    return HUGE_VAL;
  }
  const double r = boost::math::lgamma(x, QuietPolicy());
  if (std::isinf(r)) RaiseVectorMathStatus(kVmlOverflow, kLGammaName);
  return r;
}

}  // namespace

void CheckExpLanes(const double* x, const double* y, int lanes) {
  for (int k = 0; k < lanes; ++k) {
    if (std::isfinite(x[k]) && std::isinf(y[k])) RaiseVectorMathStatus(kVmlOverflow, kExpName);
  }
}

void CheckSqrtLanes(const double* x, int lanes) {
  for (int k = 0; k < lanes; ++k) {
    if (x[k] < 0.0) RaiseVectorMathStatus(kVmlDomainError, kSqrtName);
  }
}

void CheckLnLanes(const double* x, int lanes) {
  for (int k = 0; k < lanes; ++k) {
    if (x[k] < 0.0) RaiseVectorMathStatus(kVmlDomainError, kLnName);
    if (x[k] == 0.0) RaiseVectorMathStatus(kVmlSingularity, kLnName);
  }
}

// The fast set is the plain set with the slots it replaces: the slots that
// keep the plain routine in both sets (set, 16-bit zero and copy, int to
// double, add and subtract a constant, mean, standard deviation) come from the
// plain set.
KernelSet FastKernelSet() {
  KernelSet set = PlainKernelSet();
  const VectorMathSet vectorMath = ChooseVectorMath();
  g_sqrt = vectorMath.sqrt;
  set.nspdMalloc = &dMalloc;
  set.nspiMalloc = &iMalloc;
  set.nspFree = &Free;
  set.nspdbZero = &dbZero;
  set.nspdbAbs1 = &dbAbs1;
  set.nspdbAbs2 = &dbAbs2;
  set.nspdDotProd = &dDotProd;
  set.nspMatrixMultiplyByVector = &mklMatrixMultiplyByVector;
  set.nspdbSqrt1 = &dbSqrt1;
  set.nspdbSqrt2 = &dbSqrt2;
  set.nspdbCopy = &dbCopy;
  set.nspdbMpy1 = &dbMpy1;
  set.nspdbMpy2 = &dbMpy2;
  set.nspdbMpy3 = &dbMpy3;
  set.nspdbAdd2 = &dbAdd2;
  set.nspdbAddScaledVector = &dbAddScaledVector;
  set.nspdbSub2 = &dbSub2;
  set.nspdbSub3 = &dbSub3;
  set.nspdbExp1 = vectorMath.exp;
  set.nspdbLn1 = vectorMath.ln;
  set.ERF = &Erf;
  set.PhiInverse = &PhiInverse;
  set.LnGamma = &LnGamma;
  set.nspSortVector = &mklSortVector;
  set.InitRandGen = &mklInitRandGen;
  set.InitRandGenWithSeed = &mklInitRandGenWithSeed;
  set.nspdbRandGaus = &mkldbRandGaus;
  set.InitRandUniformGen = &mklInitRandUniformGen;
  set.nspiRandUniformBits = &mkliRandUniformBits;
  set.nspCholDcInplace = &mklCholDcInplace;
  set.nspCholInverseInplace = &mklCholInverseInplace;
  set.nspInverseTriangularInplace = &mklInverseTriangularInplace;
  set.nspSolveLinEquatTriangular = &mklSolveLinEquatTriangular;
  set.nspSolveLinEquatSymmetr = &mklSolveLinEquatSymmetr;
  set.nspProductTrMatrTranspByTrMatrInplace = &mklProductTrMatrTranspByTrMatrInplace;
  set.nspMatrixMultiply = &mklMatrixMultiply;
  set.nspTROptimise = &mklTROptimise;
  return set;
}

}  // namespace qvsysbase::detail
