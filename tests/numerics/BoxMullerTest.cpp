// The Box–Muller transform: every vector width against the scalar kernel bit
// for bit, the formula and the order of the outputs, odd counts, and golden
// first normals.
//
// To regenerate the golden normals after a deliberate change, run the test with
// QV_PRINT_GOLDEN=1 and paste the printed values.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <bit>
#include <numbers>
#include <vector>

#include "numerics/BoxMuller.h"
#include "numerics/RandomGenerator.h"
#include "qvsysbase/RandomStreams.h"

namespace qvsysbase::detail {
namespace {

using Vec = std::vector<double>;

struct NamedKernel {
  const char* name;
  BoxMullerKernel kernel;
  bool available;
};

std::vector<NamedKernel> Kernels() {
  std::vector<NamedKernel> kernels = {{"sse2", &BoxMullerSse2, true}};
#if defined(__x86_64__)
  __builtin_cpu_init();
  kernels.push_back({"avx", &BoxMullerAvx, __builtin_cpu_supports("avx") != 0});
  kernels.push_back({"avx512", &BoxMullerAvx512, __builtin_cpu_supports("avx512f") != 0});
#endif
  return kernels;
}

// Uniforms as the streams make them, with both ends of (0, 1) among them.
Vec Uniforms(std::size_t n, std::uint32_t seed) {
  std::vector<std::uint32_t> words(n);
  NewMT19937(seed)->Generate(words.data(), n);
  words[0] = 0;
  words[1] = 0xffffffffu;
  Vec u(n);
  for (std::size_t i = 0; i < n; ++i) u[i] = (words[i] + 0.5) * 0x1p-32;
  return u;
}

TEST(BoxMuller, EveryWidthGivesTheScalarBits) {
  const std::size_t kPairs = 100003;  // not a multiple of any width: tails too
  const Vec u1 = Uniforms(kPairs, 1), u2 = Uniforms(kPairs, 2);
  Vec zc(kPairs), zs(kPairs);
  BoxMullerScalar(u1.data(), u2.data(), zc.data(), zs.data(), kPairs);
  for (const NamedKernel& k : Kernels()) {
    SCOPED_TRACE(k.name);
    if (!k.available) continue;
    for (std::size_t pairs : {kPairs, std::size_t{0}, std::size_t{1}, std::size_t{15}}) {
      Vec c(kPairs, -1.0), s(kPairs, -1.0);
      k.kernel(u1.data(), u2.data(), c.data(), s.data(), pairs);
      for (std::size_t i = 0; i < pairs; ++i) {
        ASSERT_EQ(std::bit_cast<std::uint64_t>(c[i]), std::bit_cast<std::uint64_t>(zc[i])) << i;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(s[i]), std::bit_cast<std::uint64_t>(zs[i])) << i;
      }
      if (pairs < kPairs) {
        EXPECT_EQ(c[pairs], -1.0);  // nothing written beyond
      }
    }
  }
}

TEST(BoxMuller, StreamsGiveTheSameNumbersThroughEveryWidth) {
  for (unsigned brng : {kBrngMT19937, kBrngMCG31, kBrngMRG32K3A, kBrngR250, kBrngMCG59, kBrngWH}) {
    SCOPED_TRACE(brng);
    Vec reference(20001);
    GenerateGaussian(*NewRandomGenerator(brng, 5), reference.data(), reference.size(),
                     &BoxMullerScalar);
    for (const NamedKernel& k : Kernels()) {
      if (!k.available) continue;
      Vec z(reference.size());
      GenerateGaussian(*NewRandomGenerator(brng, 5), z.data(), z.size(), k.kernel);
      EXPECT_EQ(z, reference) << k.name;
    }
  }
}

// z1 = sqrt(-2 ln u1)·cos(2π u2), z2 = sqrt(-2 ln u1)·sin(2π u2) from each pair of
// words, computed here with the run-time library: within a few ulps. Whether
// the formula makes normal numbers at all is the quality test's question.
TEST(BoxMuller, PairsFollowTheFormulaInOrderFromTheOpenInterval) {
  struct Row {
    unsigned brng;
    double offset, scale;  // u = (w - offset)·scale
  };
  const Row rows[] = {{kBrngMT19937, -0.5, 0x1p-32},
                      {kBrngR250, -0.5, 0x1p-32},
                      {kBrngMCG59, -0.5, 0x1p-32},
                      {kBrngWH, -0.5, 0x1p-32},
                      {kBrngMCG31, 0.5, 1.0 / 2147483646.0},
                      {kBrngMRG32K3A, 0.5, 1.0 / 4294967087.0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.brng);
    std::vector<std::uint32_t> words(2000);
    NewRandomGenerator(row.brng, 9)->Generate(words.data(), words.size());
    Vec z(words.size());
    GenerateGaussian(*NewRandomGenerator(row.brng, 9), z.data(), z.size());
    for (std::size_t i = 0; i < words.size(); i += 2) {
      const double u1 = (words[i] - row.offset) * row.scale;
      const double u2 = (words[i + 1] - row.offset) * row.scale;
      ASSERT_GT(u1, 0.0);
      ASSERT_LT(u1, 1.0);
      const double r = std::sqrt(-2.0 * std::log(u1));
      const double angle = 2.0 * std::numbers::pi * u2;
      EXPECT_NEAR(z[i], r * std::cos(angle), 1e-14 * (1 + r)) << i;
      EXPECT_NEAR(z[i + 1], r * std::sin(angle), 1e-14 * (1 + r)) << i;
    }
  }
}

TEST(BoxMuller, OddCountsDropTheLastSineAndTakeWholePairs) {
  Vec six(6), five(5), next(4), afterSix(4);
  auto a = NewMT19937(77), b = NewMT19937(77);
  GenerateGaussian(*a, six.data(), 6);
  GenerateGaussian(*a, afterSix.data(), 4);
  GenerateGaussian(*b, five.data(), 5);
  GenerateGaussian(*b, next.data(), 4);
  EXPECT_EQ(five, Vec(six.begin(), six.begin() + 5));
  EXPECT_EQ(next, afterSix);
  // A long odd count crosses the block boundary.
  Vec long1(1025), long2(1026);
  GenerateGaussian(*NewMT19937(3), long1.data(), long1.size());
  GenerateGaussian(*NewMT19937(3), long2.data(), long2.size());
  EXPECT_EQ(long1, Vec(long2.begin(), long2.end() - 1));
}

// The extreme words give finite numbers: the smallest u1 gives the largest
// radius, sqrt(-2 ln 2^-33) = 6.7685...
TEST(BoxMuller, ExtremeWordsStayFinite) {
  const double u1[] = {0x1p-33, 1 - 0x1p-33, 0.5 / 2147483646.0};
  const double u2[] = {0x1p-33, 1 - 0x1p-33, 0.25};
  double zc[3], zs[3];
  BoxMullerScalar(u1, u2, zc, zs, 3);
  EXPECT_NEAR(zc[0], std::sqrt(66 * std::numbers::ln2), 1e-12);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(std::isfinite(zc[i]) && std::isfinite(zs[i])) << i;
  }
  EXPECT_GT(zc[1], 0.0);  // u1 just below 1: a tiny positive radius, not zero
}

constexpr double kGoldenMT19937Seed12345[] = {
    0x1.2dafde384f184p-2, -0x1.f22acde7939d9p-3, 0x1.089af534c5f6ep+0, 0x1.1c4c21ac845ep+0,
    0x1.c87ae379937ap+0,  0x1.d1e06c361d443p-2, 0x1.a56ab5609bd04p-1, -0x1.947952861f9d3p+0,
};

TEST(BoxMuller, GoldenFirstNormals) {
  Vec z(8);
  GenerateGaussian(*NewMT19937(12345), z.data(), z.size());
  if (std::getenv("QV_PRINT_GOLDEN") != nullptr) {
    for (double v : z) std::printf("    %a,\n", v);
  }
  EXPECT_EQ(z, Vec(std::begin(kGoldenMT19937Seed12345), std::end(kGoldenMT19937Seed12345)));
}

}  // namespace
}  // namespace qvsysbase::detail
