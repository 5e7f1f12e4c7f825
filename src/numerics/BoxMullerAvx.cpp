// The Box–Muller kernel 4 pairs wide through SLEEF's AVX functions without
// fused multiply-add. Compiled with -mavx: called only after the processor was
// seen to support it. Free of shared inline code (standard library templates
// included), so that nothing compiled for AVX is merged into other units.
#include <sleef.h>

#include "BoxMullerKernels.h"

namespace qvsysbase::detail {
namespace {

struct Avx {
  static constexpr std::size_t kWidth = 4;
  using Vec = __m256d;
  static Vec Load(const double* p) { return _mm256_loadu_pd(p); }
  static void Store(double* p, Vec v) { _mm256_storeu_pd(p, v); }
  static Vec Mul(Vec a, Vec b) { return _mm256_mul_pd(a, b); }
  static Vec Radius(Vec u) {
    return _mm256_sqrt_pd(_mm256_mul_pd(_mm256_set1_pd(-2.0), Sleef_logd4_u10avx(u)));
  }
  static Sleef___m256d_2 SinCosTwoPi(Vec u) { return Sleef_sincospid4_u05avx(_mm256_add_pd(u, u)); }
};

}  // namespace

void BoxMullerAvx(const double* u1, const double* u2, double* zc, double* zs, std::size_t pairs) {
  BoxMullerVectors<Avx, &BoxMullerSse2>(u1, u2, zc, zs, pairs);
}

}  // namespace qvsysbase::detail
