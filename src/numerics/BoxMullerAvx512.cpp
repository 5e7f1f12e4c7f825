// The Box–Muller kernel 8 pairs wide through SLEEF's AVX-512 functions without
// fused multiply-add. Compiled with -mavx512f: called only after the processor
// was seen to support it. Free of shared inline code (standard library
// templates included), so that nothing compiled for AVX-512 is merged into
// other units.
#include <sleef.h>

#include "BoxMullerKernels.h"

namespace qvsysbase::detail {

void BoxMullerAvx512(const double* u1, const double* u2, double* zc, double* zs,
                     std::size_t pairs) {
  constexpr std::size_t kWidth = 8;
  const __m512d minusTwo = _mm512_set1_pd(-2.0);
  std::size_t i = 0;
  for (; i + kWidth <= pairs; i += kWidth) {
    const __m512d square =
        _mm512_mul_pd(minusTwo, Sleef_logd8_u10avx512fnofma(_mm512_loadu_pd(u1 + i)));
    // The masked form with every lane selected: the plain one trips GCC 12's
    // maybe-uninitialized warning over its undefined pass-through operand.
    const __m512d r = _mm512_mask_sqrt_pd(square, 0xFF, square);
    const __m512d twice = _mm512_loadu_pd(u2 + i);
    const Sleef___m512d_2 angle = Sleef_sincospid8_u05avx512fnofma(_mm512_add_pd(twice, twice));
    _mm512_storeu_pd(zc + i, _mm512_mul_pd(r, angle.y));
    _mm512_storeu_pd(zs + i, _mm512_mul_pd(r, angle.x));
  }
  BoxMullerSse2(u1 + i, u2 + i, zc + i, zs + i, pairs - i);
}

}  // namespace qvsysbase::detail
