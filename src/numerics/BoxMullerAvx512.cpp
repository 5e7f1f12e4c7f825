// The Box–Muller kernel 8 pairs wide through SLEEF's AVX-512 functions without
// fused multiply-add. Compiled with -mavx512f: called only after the processor
// was seen to support it. Free of shared inline code (standard library
// templates included), so that nothing compiled for AVX-512 is merged into
// other units.
#include <sleef.h>

#include "BoxMullerKernels.h"

namespace qvsysbase::detail {
namespace {

struct Avx512 {
  static constexpr std::size_t kWidth = 8;
  using Vec = __m512d;
  static Vec Load(const double* p) { return _mm512_loadu_pd(p); }
  static void Store(double* p, Vec v) { _mm512_storeu_pd(p, v); }
  static Vec Mul(Vec a, Vec b) { return _mm512_mul_pd(a, b); }
  // The masked square root with every lane selected: the plain one trips
  // GCC 12's maybe-uninitialized warning over its undefined pass-through operand.
  static Vec Radius(Vec u) {
    const Vec square = _mm512_mul_pd(_mm512_set1_pd(-2.0), Sleef_logd8_u10avx512fnofma(u));
    return _mm512_mask_sqrt_pd(square, 0xFF, square);
  }
  static Sleef___m512d_2 SinCosTwoPi(Vec u) {
    return Sleef_sincospid8_u05avx512fnofma(_mm512_add_pd(u, u));
  }
};

}  // namespace

void BoxMullerAvx512(const double* u1, const double* u2, double* zc, double* zs,
                     std::size_t pairs) {
  BoxMullerVectors<Avx512, &BoxMullerSse2>(u1, u2, zc, zs, pairs);
}

}  // namespace qvsysbase::detail
