// exp and log 8 doubles wide through SLEEF's AVX-512 functions (1-ulp
// accuracy). Compiled with -mavx512f: called only after the processor was seen
// to support it. Keep this unit free of shared inline code (standard library
// templates included), so that nothing compiled for AVX-512 is merged into
// functions that other units call.
#include <sleef.h>

#include "VectorMath.h"
#include "VectorMathLoop.h"

namespace qvsysbase::detail {
namespace {

struct Avx512 {
  static constexpr int kWidth = 8;
  using Vec = __m512d;
  static Vec Load(const double* p) { return _mm512_loadu_pd(p); }
  static void Store(double* p, Vec v) { _mm512_storeu_pd(p, v); }
};

struct Exp {
  static __m512d Compute(__m512d x) { return Sleef_expd8_u10(x); }
  // An infinite result of an argument that is not +inf overflowed.
  static bool Suspect(__m512d x, __m512d y) {
    const __m512d inf = _mm512_set1_pd(__builtin_inf());
    return _mm512_mask_cmp_pd_mask(_mm512_cmp_pd_mask(y, inf, _CMP_EQ_OQ), x, inf, _CMP_NEQ_UQ) !=
           0;
  }
  static void Check(const double* x, const double* y, int lanes) { CheckExpLanes(x, y, lanes); }
};

struct Ln {
  static __m512d Compute(__m512d x) { return Sleef_logd8_u10(x); }
  // Zero, negative and -inf arguments; NaN compares false and passes.
  static bool Suspect(__m512d x, __m512d) {
    return _mm512_cmp_pd_mask(x, _mm512_setzero_pd(), _CMP_LE_OQ) != 0;
  }
  static void Check(const double* x, const double*, int lanes) { CheckLnLanes(x, lanes); }
};

}  // namespace

void ExpInPlaceAvx512(double* vec, int n) { ApplyChecked<Avx512, Exp>(vec, n); }
void LnInPlaceAvx512(double* vec, int n) { ApplyChecked<Avx512, Ln>(vec, n); }

}  // namespace qvsysbase::detail
