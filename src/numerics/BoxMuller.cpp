// The Box–Muller transform over blocks of generator words, with the scalar and
// the SSE2 kernels (SSE2 is part of every x86-64 processor).
#include "BoxMuller.h"

#include <sleef.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace qvsysbase::detail {
namespace {

// Pairs per block: the words, uniforms and both halves of a block stay in the
// first-level cache (512 words, 4 arrays of 256 doubles: 10 KiB).
constexpr std::size_t kBlockPairs = 256;

// u = (w - lowest + 0.5)·(1/span), written as (w - (lowest - 0.5))·scale: the
// difference is exact (both terms are multiples of 0.5 below 2^33), so the
// product is the one rounding.
struct UniformMap {
  explicit UniformMap(WordRange range)
      : offset(static_cast<double>(range.lowest) - 0.5), scale(1.0 / range.span) {}
  double operator()(std::uint32_t w) const { return (static_cast<double>(w) - offset) * scale; }
  double offset;
  double scale;
};

// Turns one block of 2·pairs words into 2·pairs normals at dst.
void TransformBlock(const std::uint32_t* words, std::size_t pairs, UniformMap map,
                    BoxMullerKernel kernel, double* dst, std::size_t n) {
  double u1[kBlockPairs], u2[kBlockPairs], zc[kBlockPairs], zs[kBlockPairs];
  for (std::size_t i = 0; i < pairs; ++i) {
    u1[i] = map(words[2 * i]);
    u2[i] = map(words[2 * i + 1]);
  }
  kernel(u1, u2, zc, zs, pairs);
  for (std::size_t i = 0; i < pairs; ++i) {
    dst[2 * i] = zc[i];
    if (2 * i + 1 < n) dst[2 * i + 1] = zs[i];  // an odd count drops the last sine
  }
}

}  // namespace

void BoxMullerScalar(const double* u1, const double* u2, double* zc, double* zs,
                     std::size_t pairs) {
  for (std::size_t i = 0; i < pairs; ++i) {
    const double r = std::sqrt(-2.0 * Sleef_logd1_u10purec(u1[i]));
    const Sleef_double_2 angle = Sleef_sincospid1_u05purec(2.0 * u2[i]);
    zc[i] = r * angle.y;
    zs[i] = r * angle.x;
  }
}

#if defined(__SSE2__)
namespace {
struct Sse2 {
  static constexpr std::size_t kWidth = 2;
  using Vec = __m128d;
  static Vec Load(const double* p) { return _mm_loadu_pd(p); }
  static void Store(double* p, Vec v) { _mm_storeu_pd(p, v); }
  static Vec Mul(Vec a, Vec b) { return _mm_mul_pd(a, b); }
  static Vec Radius(Vec u) {
    return _mm_sqrt_pd(_mm_mul_pd(_mm_set1_pd(-2.0), Sleef_logd2_u10sse2(u)));
  }
  static Sleef___m128d_2 SinCosTwoPi(Vec u) { return Sleef_sincospid2_u05sse2(_mm_add_pd(u, u)); }
};
}  // namespace

void BoxMullerSse2(const double* u1, const double* u2, double* zc, double* zs,
                   std::size_t pairs) {
  BoxMullerVectors<Sse2, &BoxMullerScalar>(u1, u2, zc, zs, pairs);
}
#else
void BoxMullerSse2(const double* u1, const double* u2, double* zc, double* zs,
                   std::size_t pairs) {
  BoxMullerScalar(u1, u2, zc, zs, pairs);
}
#endif

BoxMullerKernel WidestBoxMullerKernel() {
#if defined(QV_HAVE_X86_VECTOR_MATH)
  if (__builtin_cpu_supports("avx512f")) return &BoxMullerAvx512;
  if (__builtin_cpu_supports("avx")) return &BoxMullerAvx;
#endif
  return &BoxMullerSse2;
}

void GenerateGaussian(RandomGenerator& generator, double* dst, std::size_t n,
                      BoxMullerKernel kernel) {
  const UniformMap map(generator.Range());
  std::uint32_t words[2 * kBlockPairs];
  while (n > 0) {
    const std::size_t count = std::min(n, 2 * kBlockPairs);
    const std::size_t pairs = (count + 1) / 2;
    generator.Generate(words, 2 * pairs);
    TransformBlock(words, pairs, map, kernel, dst, count);
    dst += count;
    n -= count;
  }
}

}  // namespace qvsysbase::detail
