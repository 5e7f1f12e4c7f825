#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "ExpectThrow.h"
#include "numerics/KernelTestSupport.h"
#include "numerics/MKLWrapper.h"
#include "qvsysbase/IntelSPLHandler.h"

namespace qvsysbase {
namespace {

using H = IntelSPLHandler;
using testing_support::Select;

std::set<std::string> NullSlots() {
  std::set<std::string> names;
#define QVSYSBASE_SPL_SLOT(result, name, parameters) \
  if (H::name == nullptr) names.insert(#name);
#include "qvsysbase/IntelSPLSlots.def"
#undef QVSYSBASE_SPL_SLOT
  return names;
}

// The state the library-load step left, checked before any test runs.
class LoadStateCheck : public ::testing::Environment {
  void SetUp() override {
    EXPECT_EQ(NullSlots().size(), 45u);
    EXPECT_EQ(H::getIntelSPLMode(), H::SplModePlain);
    EXPECT_EQ(H::getCurrentThreads(), 1u);
    EXPECT_FALSE(H::isMemAllocExercised());
  }
};
[[maybe_unused]] const auto* const g_loadStateCheck =
    ::testing::AddGlobalTestEnvironment(new LoadStateCheck);

// Fakes the processor count and records the thread counts handed to BLAS.
class KernelDispatchTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SetProcessors(4);
    detail::SetThreadApplier(&RecordThreads);
  }
  void TearDown() override {
    Select(H::SplModePlain);
    detail::SetProcessorCounter(nullptr);  // the real ones again
    detail::SetThreadApplier(nullptr);
  }
  // Installing a counter forgets the cached count.
  static void SetProcessors(unsigned processors) {
    s_processors = processors;
    s_counterCalls = 0;
    detail::SetProcessorCounter(&FakeCounter);
  }
  static unsigned FakeCounter() {
    ++s_counterCalls;
    return s_processors;
  }
  static void RecordThreads(int threads) { s_applied.push_back(threads); }

  static inline unsigned s_processors = 4;
  static inline int s_counterCalls = 0;
  static inline std::vector<int> s_applied;
};

TEST_F(KernelDispatchTest, ProcessorsAreCountedOnceAtLeastOneAndHalvedForTheDefault) {
  const struct {
    unsigned processors, max, defaults;
  } rows[] = {{0, 1, 1}, {1, 1, 1}, {2, 2, 1}, {3, 3, 1}, {4, 4, 2}, {7, 7, 3}, {32, 32, 16}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.processors);
    SetProcessors(row.processors);
    EXPECT_EQ(H::getMaxThreads(), row.max);
    EXPECT_EQ(H::getDefaultThreads(), row.defaults);
    EXPECT_EQ(s_counterCalls, 1);
  }
}

double Sentinel(double x) { return x; }

TEST_F(KernelDispatchTest, ThreadCountsAreStoredAlwaysAndAppliedOnlyInModeOneClamped) {
  const struct {
    int mode, threads;
    std::vector<int> applied;
  } rows[] = {
      {1, 64, {4}},  // entering mode 1 applies min(64, 4)
      {1, 0, {}},    // same mode: stored, a count below 1 is not applied
      {1, 2, {2}},   // same mode, new count: applied
      {1, 2, {}},    // nothing changes
      {0, 3, {}},    // plain set: never applied
      {0, 5, {}},
      {1, 0, {}},  // entering mode 1 with 0 threads installs but applies nothing
  };
  Select(H::SplModePlain);
  for (const auto& row : rows) {
    SCOPED_TRACE(::testing::Message() << "mode " << row.mode << ", threads " << row.threads);
    s_applied.clear();
    H::setIntelSPLMode(static_cast<H::SplMode>(row.mode), row.threads);
    EXPECT_EQ(s_applied, row.applied);
    EXPECT_EQ(H::getCurrentThreads(), static_cast<unsigned>(row.threads));
  }
  // The current mode again changes the count only: the table is not reinstalled.
  H::ERF = &Sentinel;
  H::setIntelSPLMode(H::SplModeMKL, 3);
  EXPECT_EQ(H::ERF, &Sentinel);
  EXPECT_EQ(H::getCurrentThreads(), 3u);
}

TEST_F(KernelDispatchTest, EachSetLeavesItsOwnSlotsNull) {
  // clang-format off
  const std::set<std::string> fastNull = {};
  const std::set<std::string> plainNull = {
      "InitRandGen", "InitRandGenWithSeed", "nspdbRandGaus", "InitRandUniformGen",
      "nspiRandUniformBits", "nspTROptimise", "ERF", "PhiInverse", "LnGamma",
      "nspCholDcInplace", "nspCholInverseInplace", "nspInverseTriangularInplace",
      "nspSolveLinEquatTriangular", "nspSolveLinEquatSymmetr",
      "nspProductTrMatrTranspByTrMatrInplace", "nspMatrixMultiply"};
  // clang-format on
  EXPECT_EQ(plainNull.size(), 16u);
  const struct {
    int mode;
    const std::set<std::string>& nulls;
  } rows[] = {{1, fastNull}, {0, plainNull}, {7, plainNull}, {-1, plainNull}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.mode);
    Select(static_cast<H::SplMode>(row.mode));
    EXPECT_EQ(H::getIntelSPLMode(), row.mode);
    EXPECT_EQ(NullSlots(), row.nulls);
  }
}

TEST(CeilNspdbSizeTest, RoundsUpToWholeCacheLines) {
  // clang-format off
  const struct {
    int n, expected;
  } rows[] = {{0, 0},   {1, 8},   {7, 8},   {8, 8},       {9, 16},
              {16, 16}, {-1, 0},  {-9, -8}, {1001, 1008}, {INT_MAX - 7, INT_MAX - 7}};
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.n);
    EXPECT_EQ(H::CeilNspdbSize(row.n), row.expected);
  }
}

TEST(KernelBufferTest, ZeroedBuffersFillWholeCacheLinesAndFastOnesAreAligned) {
  for (const H::SplMode mode : {H::SplModePlain, H::SplModeMKL}) {
    Select(mode);
    for (const int n : {1, 8, 9, 13, 130}) {
      SCOPED_TRACE(::testing::Message() << "mode " << mode << ", n " << n);
      double* buffer = H::AllocateZeroedBuffer(n);
      for (int i = 0; i < H::CeilNspdbSize(n); ++i) EXPECT_EQ(buffer[i], 0.0) << i;
      if (H::isIntelSPLActive()) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer) % 64, 0u);
      }
      H::nspFree(buffer);
    }
  }
  // Marked by the allocations above and kept across a change of set.
  Select(H::SplModePlain);
  EXPECT_TRUE(H::isMemAllocExercised());
}

TEST(KernelBufferTest, ZeroedBufferNeedsTheAllocationSlots) {
  Select(H::SplModeMKL);
  H::nspdMalloc = nullptr;
  testing_support::ExpectThrowText([] { H::AllocateZeroedBuffer(4); }, "nspdMalloc && nspdbZero",
                                   "MKLWrapper");
  Select(H::SplModePlain);
}

}  // namespace
}  // namespace qvsysbase
