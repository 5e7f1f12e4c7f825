// The Box–Muller kernel 4 pairs wide through SLEEF's AVX functions without
// fused multiply-add. Compiled with -mavx: called only after the processor was
// seen to support it. Free of shared inline code (standard library templates
// included), so that nothing compiled for AVX is merged into other units.
#include <sleef.h>

#include "BoxMullerKernels.h"

namespace qvsysbase::detail {

void BoxMullerAvx(const double* u1, const double* u2, double* zc, double* zs, std::size_t pairs) {
  constexpr std::size_t kWidth = 4;
  const __m256d minusTwo = _mm256_set1_pd(-2.0);
  std::size_t i = 0;
  for (; i + kWidth <= pairs; i += kWidth) {
    const __m256d r =
        _mm256_sqrt_pd(_mm256_mul_pd(minusTwo, Sleef_logd4_u10avx(_mm256_loadu_pd(u1 + i))));
    const __m256d twice = _mm256_loadu_pd(u2 + i);
    const Sleef___m256d_2 angle = Sleef_sincospid4_u05avx(_mm256_add_pd(twice, twice));
    _mm256_storeu_pd(zc + i, _mm256_mul_pd(r, angle.y));
    _mm256_storeu_pd(zs + i, _mm256_mul_pd(r, angle.x));
  }
  BoxMullerSse2(u1 + i, u2 + i, zc + i, zs + i, pairs - i);
}

}  // namespace qvsysbase::detail
