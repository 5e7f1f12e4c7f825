// exp, log and square root 8 doubles wide through SLEEF's AVX-512 functions (1-ulp
// accuracy). Compiled with -mavx512f: called only after the processor was seen
// to support it. Keep this unit free of shared inline code (standard library
// templates included), so that nothing compiled for AVX-512 is merged into
// functions that other units call.
#include <sleef.h>

#include "VectorMath.h"
#include "VectorMathLoop.h"

namespace qvsysbase::detail {
namespace {

constexpr double kExpCheckAbove = 709.0;

struct Avx512 {
  static constexpr int kWidth = 8;
  using Vec = __m512d;
  static Vec Load(const double* p) { return _mm512_loadu_pd(p); }
  static void Store(double* p, Vec v) { _mm512_storeu_pd(p, v); }
};

struct Exp {
  static __m512d Compute(__m512d x) { return Sleef_expd8_u10(x); }
  // exp overflows from ln(DBL_MAX) = 709.78...; anything above 709 (+inf
  // included) is checked against its result. Testing the argument rather
  // than the result keeps the branch off SLEEF's latency chain, so that
  // successive calls still overlap.
  static unsigned FlagArguments(__m512d x) {
    return _mm512_cmp_pd_mask(x, _mm512_set1_pd(kExpCheckAbove), _CMP_GT_OQ);
  }
  static unsigned FlagResults(__m512d) { return 0; }
  static void Check(const double* x, const double* y, int lanes) { CheckExpLanes(x, y, lanes); }
};

struct Ln {
  static __m512d Compute(__m512d x) { return Sleef_logd8_u10(x); }
  // Zero, negative and -inf arguments; NaN compares false and passes.
  static unsigned FlagArguments(__m512d x) {
    return _mm512_cmp_pd_mask(x, _mm512_setzero_pd(), _CMP_LE_OQ);
  }
  static unsigned FlagResults(__m512d) { return 0; }
  static void Check(const double* x, const double*, int lanes) { CheckLnLanes(x, lanes); }
};

// Negative arguments (-inf included) are domain errors; -0.0 and NaN compare
// false and pass.
struct Sqrt {
  // The masked form with every lane set is the plain square root; GCC 12's
  // unmasked intrinsic trips its own -Wmaybe-uninitialized.
  static __m512d Compute(__m512d x) { return _mm512_mask_sqrt_pd(x, 0xFF, x); }
  static unsigned FlagArguments(__m512d x) {
    return _mm512_cmp_pd_mask(x, _mm512_setzero_pd(), _CMP_LT_OQ);
  }
  static unsigned FlagResults(__m512d) { return 0; }
  static void Check(const double* x, const double*, int lanes) { CheckSqrtLanes(x, lanes); }
};

}  // namespace

void ExpInPlaceAvx512(double* vec, int n) { ApplyChecked<Avx512, Exp>(vec, vec, n); }
void LnInPlaceAvx512(double* vec, int n) { ApplyChecked<Avx512, Ln>(vec, vec, n); }
void SqrtAvx512(const double* src, double* dst, int n) {
  ApplyChecked<Avx512, Sqrt>(src, dst, n);
}

}  // namespace qvsysbase::detail
