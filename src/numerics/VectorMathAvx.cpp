// exp, log and square root 4 doubles wide through SLEEF's 256-bit functions (1-ulp
// accuracy), whose dispatcher picks the AVX2+FMA or the plain AVX code at run
// time. Compiled with -mavx: called only after the processor was seen to
// support it. Keep this unit free of shared inline code (standard library
// templates included), so that nothing compiled for AVX is merged into
// functions that other units call.
#include <sleef.h>

#include "VectorMath.h"
#include "VectorMathLoop.h"

namespace qvsysbase::detail {
namespace {

constexpr double kExpCheckAbove = 709.0;

struct Avx {
  static constexpr int kWidth = 4;
  using Vec = __m256d;
  static Vec Load(const double* p) { return _mm256_loadu_pd(p); }
  static void Store(double* p, Vec v) { _mm256_storeu_pd(p, v); }
};

struct Exp {
  static __m256d Compute(__m256d x) { return Sleef_expd4_u10(x); }
  // exp overflows from ln(DBL_MAX) = 709.78...; anything above 709 (+inf
  // included) is checked against its result. Testing the argument rather
  // than the result keeps the branch off SLEEF's latency chain, so that
  // successive calls still overlap.
  static unsigned FlagArguments(__m256d x) {
    return static_cast<unsigned>(
        _mm256_movemask_pd(_mm256_cmp_pd(x, _mm256_set1_pd(kExpCheckAbove), _CMP_GT_OQ)));
  }
  static unsigned FlagResults(__m256d) { return 0; }
  static void Check(const double* x, const double* y, int lanes) { CheckExpLanes(x, y, lanes); }
};

struct Ln {
  static __m256d Compute(__m256d x) { return Sleef_logd4_u10(x); }
  // Zero, negative and -inf arguments; NaN compares false and passes.
  static unsigned FlagArguments(__m256d x) {
    return static_cast<unsigned>(
        _mm256_movemask_pd(_mm256_cmp_pd(x, _mm256_setzero_pd(), _CMP_LE_OQ)));
  }
  static unsigned FlagResults(__m256d) { return 0; }
  static void Check(const double* x, const double*, int lanes) { CheckLnLanes(x, lanes); }
};

// Negative arguments (-inf included) are domain errors; -0.0 and NaN compare
// false and pass.
struct Sqrt {
  static __m256d Compute(__m256d x) { return _mm256_sqrt_pd(x); }
  static unsigned FlagArguments(__m256d x) {
    return static_cast<unsigned>(
        _mm256_movemask_pd(_mm256_cmp_pd(x, _mm256_setzero_pd(), _CMP_LT_OQ)));
  }
  static unsigned FlagResults(__m256d) { return 0; }
  static void Check(const double* x, const double*, int lanes) { CheckSqrtLanes(x, lanes); }
};

}  // namespace

void ExpInPlaceAvx(double* vec, int n) { ApplyChecked<Avx, Exp>(vec, vec, n); }
void LnInPlaceAvx(double* vec, int n) { ApplyChecked<Avx, Ln>(vec, vec, n); }
void SqrtAvx(const double* src, double* dst, int n) {
  ApplyChecked<Avx, Sqrt>(src, dst, n);
}

}  // namespace qvsysbase::detail
