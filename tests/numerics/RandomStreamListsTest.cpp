// The random-stream slots of the kernel-library set: the two lists and their
// holders, the generator choice, clock seeds, bounds checks, reports, and the
// lists emptied when mode 1 is left.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "ExpectThrow.h"
#include "numerics/KernelTestSupport.h"
#include "numerics/RandomStreamLists.h"
#include "qvsysbase/IntelSPLHandler.h"
#include "qvsysbase/RandomStreams.h"

namespace qvsysbase {
namespace {

using H = IntelSPLHandler;
using detail::RandomHolder;
using detail::RandomListLength;
using testing_support::ExpectThrowText;
using testing_support::ReportCapture;
using Normals = std::vector<double>;
using Words = std::vector<unsigned>;

// The library-load step created both lists empty.
class RandomLoadStateCheck : public ::testing::Environment {
  void SetUp() override {
    EXPECT_EQ(RandomListLength(true), 0u);
    EXPECT_EQ(RandomListLength(false), 0u);
  }
};
[[maybe_unused]] const auto* const g_randomLoadStateCheck =
    ::testing::AddGlobalTestEnvironment(new RandomLoadStateCheck);

Normals Gauss(int n, unsigned index) {
  Normals v(static_cast<std::size_t>(n));
  H::nspdbRandGaus(v.data(), n, index);
  return v;
}
Words Bits(int n, unsigned index) {
  Words v(static_cast<std::size_t>(n));
  H::nspiRandUniformBits(v.data(), n, index);
  return v;
}
Normals StandaloneGauss(unsigned brng, std::uint32_t seed, int n) {
  Normals v(static_cast<std::size_t>(n));
  StandaloneRandomStream(brng, seed).Gaussian(v.data(), n);
  return v;
}
Words StandaloneBits(unsigned brng, std::uint32_t seed, int n) {
  Words v(static_cast<std::size_t>(n));
  StandaloneRandomStream(brng, seed).UniformBits(v.data(), n);
  return v;
}

// Every test starts in mode 1 with both lists empty: leaving mode 1 empties them.
class RandomStreamsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    H::setIntelSPLMode(H::SplModeMKL, 1);
    H::setIntelSPLMode(H::SplModePlain, 1);
    H::setIntelSPLMode(H::SplModeMKL, 1);
  }
  void TearDown() override { H::setIntelSPLMode(H::SplModePlain, 1); }
};

TEST_F(RandomStreamsTest, FixedSeedRepeatsAndClockSeedsDiffer) {
  EXPECT_EQ(H::InitRandGen(true, 0), 0);
  const Normals first = Gauss(100, 0);
  EXPECT_EQ(H::InitRandGen(true, 0), 0);
  EXPECT_EQ(Gauss(100, 0), first);
  EXPECT_EQ(first, StandaloneGauss(kBrngMT19937, 0, 100));

  const int a = H::InitRandGen(false, 0);
  const Normals clockA = Gauss(100, 0);
  const int b = H::InitRandGen(false, 0);
  EXPECT_NE(a, b);
  EXPECT_NE(Gauss(100, 0), clockA);
  EXPECT_EQ(clockA, StandaloneGauss(kBrngMT19937, static_cast<std::uint32_t>(a), 100));
}

TEST_F(RandomStreamsTest, InitAppendsHoldersUpToTheIndexAndOnlyThatOneGetsAStream) {
  EXPECT_EQ(H::InitRandGenWithSeed(7, 3), 7);
  ASSERT_EQ(RandomListLength(true), 4u);
  for (std::size_t i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(RandomHolder(true, i).brng(), kBrngMT19937);
    EXPECT_EQ(RandomHolder(true, i).stream() != nullptr, i == 3);
  }
  EXPECT_EQ(Gauss(50, 3), StandaloneGauss(kBrngMT19937, 7, 50));
  EXPECT_EQ(RandomListLength(false), 0u);

  // The uniform list starts with MCG31; negative seeds are their bit pattern.
  EXPECT_EQ(H::InitRandUniformGen(-1, false, 1), -1);
  EXPECT_EQ(RandomHolder(false, 0).brng(), kBrngMCG31);
  EXPECT_EQ(Bits(50, 1), StandaloneBits(kBrngMCG31, 0xffffffffu, 50));
}

TEST_F(RandomStreamsTest, DrawingFromAHolderWithoutStreamReportsAndLeavesTheBuffer) {
  H::InitRandGenWithSeed(1, 1);
  H::InitRandUniformGen(1, false, 1);
  ReportCapture capture;
  Normals normals(4, -7.0);
  H::nspdbRandGaus(normals.data(), 4, 0);
  Words words(4, 9u);
  H::nspiRandUniformBits(words.data(), 4, 0);
  EXPECT_EQ(capture.reports(), (std::vector<std::string>{
                                   "mkldbRandGaus - stream is a NULL pointer",
                                   "mkliRandUniform - stream is a NULL pointer"}));
  EXPECT_EQ(normals, Normals(4, -7.0));
  EXPECT_EQ(words, Words(4, 9u));
}

TEST_F(RandomStreamsTest, IndicesBeyondTheListFailTheBoundsCheck) {
  H::InitRandGenWithSeed(1, 1);
  H::InitRandUniformGen(1, false, 0);
  Normals normals(8, -7.0);
  Words words(8, 9u);
  for (int n : {5, 0, -3}) {
    SCOPED_TRACE(n);
    ExpectThrowText<std::out_of_range>([&] { H::nspdbRandGaus(normals.data(), n, 2); },
                                       "vector subscript out of range");
    EXPECT_THROW(H::nspiRandUniformBits(words.data(), n, 1), std::out_of_range);
  }
  // Negative and zero counts draw nothing: the stream goes on where it was.
  H::nspdbRandGaus(normals.data(), -3, 1);
  H::nspiRandUniformBits(words.data(), 0, 0);
  EXPECT_EQ(normals, Normals(8, -7.0));
  EXPECT_EQ(words, Words(8, 9u));
  EXPECT_EQ(Gauss(6, 1), StandaloneGauss(kBrngMT19937, 1, 6));
  // Null destinations with n == 0 are fine; with n > 0 they break the contract.
  H::nspdbRandGaus(nullptr, 0, 1);
  ExpectThrowText([] { H::nspdbRandGaus(nullptr, 2, 1); }, "dst || n <= 0", "RandomStreamLists");
  EXPECT_THROW(H::nspiRandUniformBits(nullptr, 1, 0), AssertionException);
}

TEST_F(RandomStreamsTest, AnIndexBeyondTheLimitIsRefusedBeforeAnythingIsAllocated) {
  ExpectThrowText([] { H::InitRandGenWithSeed(1, kMaxRandomStreams); },
                  "index < kMaxRandomStreams");
  EXPECT_THROW(H::InitRandUniformGen(1, true, std::numeric_limits<unsigned>::max()),
               AssertionException);
  EXPECT_EQ(RandomListLength(true), 0u);
  EXPECT_EQ(RandomListLength(false), 0u);
}

TEST_F(RandomStreamsTest, FamiliesChooseTheGeneratorOfTheNextInitialisation) {
  struct Row {
    unsigned family;
    bool gaussian;
    unsigned expected;  // 0: the call is ignored
  };
  // clang-format off
  const Row rows[] = {
      {0, true, kBrngMT19937}, {1, true, kBrngMRG32K3A}, {2, true, kBrngMCG31},
      {3, true, kBrngR250},    {4, true, kBrngMCG59},    {5, true, kBrngWH},
      {6, true, kBrngMT19937}, {kBrngMCG31, true, kBrngMT19937},
      {kBrngMCG31, false, kBrngMCG31}, {kBrngMT19937, false, kBrngMCG31},
      {0, false, 0}, {1, false, 0}, {6, false, 0}, {kBrngMRG32K3A, false, 0}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::Message() << row.family << (row.gaussian ? " gaussian" : " uniform"));
    SetUp();
    H::setBRNGFamily(row.family, row.gaussian);
    ASSERT_EQ(RandomListLength(row.gaussian), row.expected != 0 ? 1u : 0u);
    if (row.expected == 0) continue;
    EXPECT_EQ(RandomHolder(row.gaussian, 0).stream(), nullptr);
    EXPECT_EQ(RandomHolder(row.gaussian, 0).brng(), row.expected);
    if (row.gaussian) {
      H::InitRandGenWithSeed(11, 2);
      EXPECT_EQ(Gauss(30, 2), StandaloneGauss(row.expected, 11, 30));
    } else {
      H::InitRandUniformGen(11, false, 2);
      EXPECT_EQ(Bits(30, 2), StandaloneBits(row.expected, 11, 30));
    }
    EXPECT_EQ(RandomHolder(row.gaussian, 1).brng(), row.expected);
  }
}

TEST_F(RandomStreamsTest, AFamilyChangeReachesEveryHolderButNotRunningStreams) {
  H::InitRandGenWithSeed(3, 0);
  H::InitRandGenWithSeed(4, 2);
  const Normals expected = StandaloneGauss(kBrngMT19937, 3, 20);
  H::setBRNGFamily(1, true);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(RandomHolder(true, i).brng(), kBrngMRG32K3A);
  EXPECT_EQ(Gauss(20, 0), expected);
  H::InitRandGenWithSeed(3, 0);
  EXPECT_EQ(Gauss(20, 0), StandaloneGauss(kBrngMRG32K3A, 3, 20));
}

TEST_F(RandomStreamsTest, LeavingModeOneEmptiesBothListsAndForgetsTheFamily) {
  H::setBRNGFamily(4, true);
  H::InitRandGenWithSeed(1, 2);
  H::InitRandUniformGen(1, false, 1);
  H::setIntelSPLMode(H::SplModePlain, 1);
  EXPECT_EQ(RandomListLength(true), 0u);
  EXPECT_EQ(RandomListLength(false), 0u);
  EXPECT_EQ(H::nspdbRandGaus, nullptr);
  EXPECT_EQ(H::InitRandUniformGen, nullptr);
  H::setIntelSPLMode(H::SplModeMKL, 1);
  H::InitRandGenWithSeed(1, 0);
  EXPECT_EQ(RandomHolder(true, 0).brng(), kBrngMT19937);
}

// Clock seeds: the monotonic clock's low 32 bits plus the count of clock seeds
// so far; the real-time clock when the monotonic one fails.
std::uint64_t g_monotonicNs = 0;
std::uint64_t g_realtimeNs = 0;
bool g_monotonicWorks = true;
bool FakeMonotonic(std::uint64_t* ns) {
  *ns = g_monotonicNs;
  return g_monotonicWorks;
}
bool FakeRealtime(std::uint64_t* ns) {
  *ns = g_realtimeNs;
  return true;
}

TEST_F(RandomStreamsTest, ClockSeedsCountUpAndFallBackToTheRealTimeClock) {
  const detail::SeedClocks previous = detail::SetSeedClocks({&FakeMonotonic, &FakeRealtime});
  g_monotonicNs = 0x500000000 + 1000;  // only the low 32 bits count
  g_realtimeNs = 900000;
  g_monotonicWorks = true;
  const auto first = static_cast<std::uint32_t>(H::InitRandGen(false, 0));
  const std::uint32_t counter = first - 1000;
  EXPECT_EQ(static_cast<std::uint32_t>(H::InitRandUniformGen(5, true, 0)), 1000 + counter + 1);
  EXPECT_EQ(H::InitRandUniformGen(5, false, 0), 5);  // no clock: the counter stays
  g_monotonicWorks = false;
  EXPECT_EQ(static_cast<std::uint32_t>(H::InitRandGen(false, 1)), 900000 + counter + 2);
  detail::SetSeedClocks(previous);
}

TEST(RandomStatusText, EveryStatusHasItsText) {
  using namespace detail;
  // clang-format off
  const struct { int status; const char* text; } init[] = {
      {kRngInvalidBrng, "VSLStreamStateHolder::InitStream() - BRNG index is invalid"},
      {kRngMemoryFailure, "VSLStreamStateHolder::InitStream() - failed to allocate memory in vslNewStream()"},
      {-3, "VSLStreamStateHolder::InitStream() - vslNewStream() failed"}};
  const struct { int status; const char* text; } draw[] = {
      {kRngNullStream, "stream is a NULL pointer"},
      {kRngBadStream, "stream is not a valid random stream"},
      {kRngPeriodExceeded, "Period of the generator has been exceeded"},
      {kRngBadCallbackReturn, "invalid return from BRNG callback"},
      {kRngCallbackReturnsZero, "BRNG callback returns zero"},
      {kRngTooManyRetries, "Number of retries exceeds threshold"},
      {-1, "vdRngGaussian() failed"}};
  // clang-format on
  for (const auto& row : init) EXPECT_EQ(InitStreamStatusText(row.status), row.text);
  for (const auto& row : draw) {
    SCOPED_TRACE(row.status);
    EXPECT_EQ(DrawStatusText("mkldbRandGaus", row.status), std::string("mkldbRandGaus - ") + row.text);
    EXPECT_EQ(DrawStatusText("mkliRandUniform", row.status),
              std::string("mkliRandUniform - ") + row.text);
  }
  VSLStreamStateHolder holder(0x600000);
  EXPECT_EQ(holder.InitStream(1), kRngInvalidBrng);
  EXPECT_EQ(holder.stream(), nullptr);
}

TEST(StandaloneRandomStreamTest, RefusesUnknownGenerators) {
  ExpectThrowText<std::domain_error>([] { StandaloneRandomStream(0x600000, 1); },
                                     "unknown random generator");
}

}  // namespace
}  // namespace qvsysbase
