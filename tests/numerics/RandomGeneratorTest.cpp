// The six basic generators: MT19937 against the standard engine, MRG32k3a, R250
// and Wichmann–Hill against their recurrences computed here independently, the
// word ranges, block independence, and golden first words of every generator.
//
// To regenerate the golden words after a deliberate change of a generator, run
// the test with QV_PRINT_GOLDEN=1 and paste the printed table.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "numerics/RandomGenerator.h"
#include "qvsysbase/RandomStreams.h"

namespace qvsysbase::detail {
namespace {

using Words = std::vector<std::uint32_t>;

constexpr unsigned kAllGenerators[] = {kBrngMT19937, kBrngMCG31, kBrngMRG32K3A,
                                       kBrngR250,    kBrngMCG59, kBrngWH};

Words Draw(unsigned brng, std::uint32_t seed, std::size_t n) {
  Words w(n);
  NewRandomGenerator(brng, seed)->Generate(w.data(), n);
  return w;
}

Words StandardStartWords(std::uint32_t seed, std::size_t n) {
  std::mt19937 engine(seed);
  Words w(n);
  for (auto& word : w) word = static_cast<std::uint32_t>(engine());
  return w;
}

TEST(RandomGenerator, MT19937EqualsTheStandardEngine) {
  for (std::uint32_t seed : {0u, 1u, 5489u, 123456789u, 0xffffffffu}) {
    SCOPED_TRACE(seed);
    EXPECT_EQ(Draw(kBrngMT19937, seed, 2000), StandardStartWords(seed, 2000));
  }
  // The standard engine's known answer: the 10000th word from the default seed.
  EXPECT_EQ(Draw(kBrngMT19937, 5489, 10000).back(), 4123659995u);
}

TEST(RandomGenerator, MCG31IsItsRecurrenceWithZeroSeedsMovedToOne) {
  constexpr std::uint64_t m = 2147483647, a = 1132489760;
  struct Row { std::uint32_t seed; std::uint64_t start; };
  for (const Row row : {Row{0, 1}, Row{2147483647u, 1}, Row{2147483652u, 5}, Row{7, 7},
                        Row{0xffffffffu, 0xffffffffu % 2147483647u}}) {
    SCOPED_TRACE(row.seed);
    const Words w = Draw(kBrngMCG31, row.seed, 100);
    std::uint64_t x = row.start;
    for (std::uint32_t word : w) {
      x = a * x % m;
      ASSERT_EQ(word, x);
    }
  }
}

// L'Ecuyer's floating-point form: every product is below 2^53, so it is exact.
TEST(RandomGenerator, MRG32k3aFollowsTheCombinedRecurrence) {
  const double m1 = 4294967087.0, m2 = 4294944443.0;
  for (std::uint32_t seed : {0u, 42u, 0xfffffffeu}) {
    SCOPED_TRACE(seed);
    const Words start = StandardStartWords(seed, 6);
    double s1[3], s2[3];
    for (int k = 0; k < 3; ++k) {
      s1[k] = std::fmod(start[k], m1);
      s2[k] = std::fmod(start[3 + k], m2);
    }
    for (std::uint32_t word : Draw(kBrngMRG32K3A, seed, 5000)) {
      double p1 = std::fmod(1403580.0 * s1[1] - 810728.0 * s1[0], m1);
      if (p1 < 0) p1 += m1;
      double p2 = std::fmod(527612.0 * s2[2] - 1370589.0 * s2[0], m2);
      if (p2 < 0) p2 += m2;
      s1[0] = s1[1], s1[1] = s1[2], s1[2] = p1;
      s2[0] = s2[1], s2[1] = s2[2], s2[2] = p2;
      ASSERT_EQ(word, p1 > p2 ? p1 - p2 : p1 - p2 + m1);
    }
  }
}

TEST(RandomGenerator, R250XorsLags103And250OfItsDiagonalisedStart) {
  const std::uint32_t seed = 99;
  Words x = StandardStartWords(seed, 250);
  for (int j = 0; j < 32; ++j) {
    x[3 + 7 * j] &= 0xffffffffu >> j;
    x[3 + 7 * j] |= 0x80000000u >> j;
  }
  for (std::uint32_t word : Draw(kBrngR250, seed, 1000)) {
    x.push_back(x[x.size() - 103] ^ x[x.size() - 250]);
    ASSERT_EQ(word, x.back());
  }
}

// The floating-point sum may round across a word boundary: one unit apart at most.
TEST(RandomGenerator, WichmannHillIsTheFractionOfItsThreeSums) {
  const Words start = StandardStartWords(2024, 3);
  double x = 1 + start[0] % 30268, y = 1 + start[1] % 30306, z = 1 + start[2] % 30322;
  for (std::uint32_t word : Draw(kBrngWH, 2024, 5000)) {
    x = std::fmod(171 * x, 30269), y = std::fmod(172 * y, 30307), z = std::fmod(170 * z, 30323);
    const double u = x / 30269 + y / 30307 + z / 30323;
    const double expected = std::floor((u - std::floor(u)) * 4294967296.0);
    ASSERT_LE(std::fabs(word - expected), 1.0);
  }
}

TEST(RandomGenerator, MCG59WordsAreTheTopBitsOfItsOddState) {
  // Modular products by repeated doubling, independent of 64-bit wrap-around.
  const std::uint64_t mask = (std::uint64_t{1} << 59) - 1;
  auto mulmod = [mask](std::uint64_t a, std::uint64_t b) {
    std::uint64_t r = 0;
    for (; b != 0; b >>= 1, a = (a << 1) & mask) if (b & 1) r = (r + a) & mask;
    return r;
  };
  std::uint64_t x = 2 * 31337 + 1;
  for (std::uint32_t word : Draw(kBrngMCG59, 31337, 500)) {
    x = mulmod(x, 302875106592253u);
    ASSERT_EQ(word, x >> 27);
  }
}

TEST(RandomGenerator, WordsStayInTheirRangeAndBlocksDoNotMatter) {
  for (unsigned brng : kAllGenerators) {
    SCOPED_TRACE(brng);
    const auto generator = NewRandomGenerator(brng, 777);
    const WordRange range = generator->Range();
    const Words whole = Draw(brng, 777, 3001);
    for (std::uint32_t w : whole) {
      ASSERT_GE(w, range.lowest);
      ASSERT_LE(w - range.lowest, range.span - 1);
    }
    // Odd block sizes cross every regeneration boundary at a different place.
    Words pieces(whole.size());
    std::size_t done = 0;
    for (std::size_t block = 1; done < pieces.size(); block = block * 3 + 1) {
      const std::size_t take = std::min(block, pieces.size() - done);
      generator->Generate(pieces.data() + done, take);
      done += take;
    }
    EXPECT_EQ(pieces, whole);
  }
  EXPECT_EQ(NewRandomGenerator(0x600000, 1), nullptr);
  EXPECT_EQ(NewRandomGenerator(0, 1), nullptr);
}

// First words of every generator from seed 12345. A change here changes every
// stream of that generator: only deliberately, with a note to users.
struct Golden {
  unsigned brng;
  std::uint32_t words[6];
};
constexpr Golden kGolden[] = {
    {0x800000, {3992670690u, 3823185381u, 1358822685u, 561383553u, 789925284u, 170765737u}},
    {0x100000, {467545230u, 910408393u, 2002913910u, 614477597u, 1622587240u, 1261926762u}},
    {0x300000, {3518003991u, 580016475u, 4179004535u, 370835378u, 1163808771u, 966459217u}},
    {0x200000, {3092303995u, 1658868302u, 1171721960u, 2708868673u, 3373442281u, 882575521u}},
    {0x400000, {4177989283u, 1749336986u, 791427671u, 1207540327u, 1464269802u, 378082436u}},
    {0x500000, {1379616047u, 1988225919u, 2864157578u, 647246359u, 3498578482u, 928561539u}},
};

TEST(RandomGenerator, GoldenFirstWords) {
  if (std::getenv("QV_PRINT_GOLDEN") != nullptr) {
    for (unsigned brng : kAllGenerators) {
      const Words w = Draw(brng, 12345, 6);
      std::printf("    {0x%x, {%uu, %uu, %uu, %uu, %uu, %uu}},\n", brng, w[0], w[1], w[2], w[3],
                  w[4], w[5]);
    }
  }
  ASSERT_EQ(std::size(kGolden), std::size(kAllGenerators));
  for (const Golden& golden : kGolden) {
    SCOPED_TRACE(golden.brng);
    EXPECT_EQ(Draw(golden.brng, 12345, 6), Words(std::begin(golden.words), std::end(golden.words)));
  }
}

}  // namespace
}  // namespace qvsysbase::detail
