#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "numerics/KernelTestSupport.h"
#include "numerics/MKLWrapper.h"
#include "qvsysbase/IntelSPLHandler.h"
#include "qvsysbase/qvExcept.h"

namespace qvsysbase {
namespace {

using H = IntelSPLHandler;
using testing_support::Select;

// clang-format off
#define QV_FOR_EACH_SLOT(X)                                                                       \
  X(nspdMalloc) X(nspiMalloc) X(nspFree) X(nspdbSet) X(nspdbZero) X(nspwbZero) X(nspdbIntToFloat) \
  X(nspdbAbs1) X(nspdbAbs2) X(nspdDotProd) X(nspMatrixMultiplyByVector) X(nspdbSqrt1)             \
  X(nspdbSqrt2) X(nspdbCopy) X(nspwbCopy) X(nspdbMpy1) X(nspdbMpy2) X(nspdbMpy3) X(nspdbAdd1)     \
  X(nspdbAdd2) X(nspdbAddScaledVector) X(nspdbSub1) X(nspdbSub2) X(nspdbSub3) X(nspdbExp1)        \
  X(nspdbLn1) X(ERF) X(PhiInverse) X(LnGamma) X(nspSortVector) X(nspdMean) X(nspdStdDev)          \
  X(InitRandGen) X(InitRandGenWithSeed) X(nspdbRandGaus) X(InitRandUniformGen)                    \
  X(nspiRandUniformBits) X(nspCholDcInplace) X(nspCholInverseInplace)                             \
  X(nspInverseTriangularInplace) X(nspSolveLinEquatTriangular) X(nspSolveLinEquatSymmetr)         \
  X(nspProductTrMatrTranspByTrMatrInplace) X(nspMatrixMultiply) X(nspTROptimise)
// clang-format on

std::set<std::string> NullSlots() {
  std::set<std::string> names;
#define QV_NOTE_IF_NULL(slot) \
  if (H::slot == nullptr) names.insert(#slot);
  QV_FOR_EACH_SLOT(QV_NOTE_IF_NULL)
#undef QV_NOTE_IF_NULL
  return names;
}

std::set<std::string> AllSlots() {
  return {
#define QV_NAME(slot) #slot,
      QV_FOR_EACH_SLOT(QV_NAME)
#undef QV_NAME
  };
}

// The state the library-load step left, captured before any test runs.
struct LoadState {
  std::set<std::string> nullSlots;
  H::SplMode mode = H::SplModeMKL;
  bool active = true;
  unsigned threads = 0;
  bool memAllocExercised = true;
};
LoadState g_loadState;

class LoadStateCapture : public ::testing::Environment {
 public:
  void SetUp() override {
    g_loadState = {NullSlots(),
                   H::getIntelSPLMode(),
                   H::isIntelSPLActive(),
                   H::getCurrentThreads(),
                   H::isMemAllocExercised()};
  }
};
[[maybe_unused]] const auto* const g_capture =
    ::testing::AddGlobalTestEnvironment(new LoadStateCapture);

TEST(KernelDispatchLoadTest, TableIsEmptyAfterTheLoadStep) {
  EXPECT_EQ(AllSlots().size(), 45u);
  EXPECT_EQ(g_loadState.nullSlots, AllSlots());
  EXPECT_EQ(g_loadState.mode, H::SplModePlain);
  EXPECT_FALSE(g_loadState.active);
  EXPECT_EQ(g_loadState.threads, 1u);
  EXPECT_FALSE(g_loadState.memAllocExercised);
}

// Fakes the processor count and records the thread counts handed to BLAS.
class KernelDispatchTest : public ::testing::Test {
 protected:
  void SetUp() override {
    s_processors = 4;
    s_counterCalls = 0;
    s_applied.clear();
    m_previousCounter = detail::SetProcessorCounter(&FakeCounter);
    m_previousApplier = detail::SetThreadApplier(&RecordThreads);
  }
  void TearDown() override {
    Select(H::SplModePlain);
    detail::SetProcessorCounter(m_previousCounter);
    detail::SetThreadApplier(m_previousApplier);
  }
  static unsigned FakeCounter() {
    ++s_counterCalls;
    return s_processors;
  }
  static void RecordThreads(int threads) { s_applied.push_back(threads); }

  static inline unsigned s_processors = 4;
  static inline int s_counterCalls = 0;
  static inline std::vector<int> s_applied;

 private:
  detail::ProcessorCountFn m_previousCounter = nullptr;
  detail::ThreadApplyFn m_previousApplier = nullptr;
};

TEST_F(KernelDispatchTest, ProcessorCountIsAskedOnceAndIsAtLeastOne) {
  s_processors = 0;
  detail::SetProcessorCounter(&FakeCounter);  // forgets the cached count
  EXPECT_EQ(H::getMaxThreads(), 1u);
  EXPECT_EQ(H::getMaxThreads(), 1u);
  EXPECT_EQ(s_counterCalls, 1);
}

TEST_F(KernelDispatchTest, DefaultThreadsAreHalfTheProcessors) {
  const struct {
    unsigned processors, expected;
  } rows[] = {{1, 1}, {2, 1}, {3, 1}, {4, 2}, {7, 3}, {8, 4}, {32, 16}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.processors);
    s_processors = row.processors;
    detail::SetProcessorCounter(&FakeCounter);
    EXPECT_EQ(H::getDefaultThreads(), row.expected);
  }
}

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
    EXPECT_EQ(H::isIntelSPLActive(), row.mode == 1);
  }
  EXPECT_NE(H::ERF, nullptr);
}

double Sentinel(double x) { return x; }

TEST_F(KernelDispatchTest, TheCurrentModeOnlyChangesTheThreadCount) {
  for (const H::SplMode mode : {H::SplModePlain, H::SplModeMKL}) {
    SCOPED_TRACE(mode);
    Select(mode);
    H::ERF = &Sentinel;
    H::setIntelSPLMode(mode, 3);
    EXPECT_EQ(H::ERF, &Sentinel);
    EXPECT_EQ(H::getCurrentThreads(), 3u);
  }
}

TEST_F(KernelDispatchTest, EachSetLeavesItsOwnSlotsNull) {
  const std::set<std::string> laterSlots = {"InitRandGen",
                                            "InitRandGenWithSeed",
                                            "nspdbRandGaus",
                                            "InitRandUniformGen",
                                            "nspiRandUniformBits",
                                            "nspTROptimise"};
  std::set<std::string> plainNull = laterSlots;
  plainNull.insert({"ERF",
                    "PhiInverse",
                    "LnGamma",
                    "nspCholDcInplace",
                    "nspCholInverseInplace",
                    "nspInverseTriangularInplace",
                    "nspSolveLinEquatTriangular",
                    "nspSolveLinEquatSymmetr",
                    "nspProductTrMatrTranspByTrMatrInplace",
                    "nspMatrixMultiply"});
  EXPECT_EQ(plainNull.size(), 16u);

  const struct {
    int mode;
    bool active;
    const std::set<std::string>& nulls;
  } rows[] = {
      {1, true, laterSlots}, {0, false, plainNull}, {7, false, plainNull}, {-1, false, plainNull}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.mode);
    Select(static_cast<H::SplMode>(row.mode));
    EXPECT_EQ(H::getIntelSPLMode(), row.mode);
    EXPECT_EQ(H::isIntelSPLActive(), row.active);
    EXPECT_EQ(NullSlots(), row.nulls);
  }
  Select(H::SplModeMKL);
  EXPECT_EQ(detail::GetVectorMathMode(), 0x1002);
}

TEST_F(KernelDispatchTest, AllocationMarksTheFlagInEitherSetAndForever) {
  Select(H::SplModePlain);
  H::nspFree(H::nspiMalloc(3));
  EXPECT_TRUE(H::isMemAllocExercised());
  Select(H::SplModeMKL);
  EXPECT_TRUE(H::isMemAllocExercised());
}

TEST(CeilNspdbSizeTest, RoundsUpToWholeCacheLines) {
  const struct {
    int n, expected;
  } rows[] = {{0, 0},
              {1, 8},
              {7, 8},
              {8, 8},
              {9, 16},
              {16, 16},
              {1001, 1008},
              {-1, 0},
              {-9, -8},
              {INT_MAX - 7, INT_MAX - 7}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.n);
    EXPECT_EQ(H::CeilNspdbSize(row.n), row.expected);
  }
}

class KernelSetTest : public ::testing::TestWithParam<H::SplMode> {
 protected:
  void SetUp() override { Select(GetParam()); }
};

TEST_P(KernelSetTest, ZeroedBufferFillsWholeCacheLines) {
  for (const int n : {1, 8, 9, 130}) {
    SCOPED_TRACE(n);
    double* buffer = H::AllocateZeroedBuffer(n);
    const int size = H::CeilNspdbSize(n);
    for (int i = 0; i < size; ++i) EXPECT_EQ(buffer[i], 0.0) << i;
    if (H::isIntelSPLActive()) {
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer) % 64, 0u);
    }
    H::nspFree(buffer);
  }
}

TEST_P(KernelSetTest, AllocationOfNothingAndOfANegativeCount) {
  H::nspFree(H::nspdMalloc(0));
  H::nspFree(H::nspiMalloc(0));
  EXPECT_THROW(H::nspdMalloc(-1), std::bad_alloc);
  EXPECT_THROW(H::nspiMalloc(-8), std::bad_alloc);
}

TEST_P(KernelSetTest, ZeroedBufferNeedsTheAllocationSlots) {
  const auto saved = H::nspdMalloc;
  H::nspdMalloc = nullptr;
  try {
    H::AllocateZeroedBuffer(4);
    ADD_FAILURE() << "no assertion";
  } catch (const AssertionException& e) {
    EXPECT_EQ(e.getMessage(), "nspdMalloc && nspdbZero");
    EXPECT_EQ(e.getFile(), "MKLWrapper");
  }
  H::nspdMalloc = saved;
}

INSTANTIATE_TEST_SUITE_P(BothSets, KernelSetTest,
                         ::testing::Values(H::SplModePlain, H::SplModeMKL));

TEST(KernelAlignmentTest, FastBuffersAre64ByteAligned) {
  Select(H::SplModeMKL);
  for (const int n : {1, 3, 8, 13, 1000}) {
    SCOPED_TRACE(n);
    double* d = H::nspdMalloc(n);
    int* i = H::nspiMalloc(n);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(d) % 64, 0u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(i) % 64, 0u);
    d[n - 1] = 1.0;  // the whole count is usable (AddressSanitizer checks)
    i[n - 1] = 1;
    H::nspFree(d);
    H::nspFree(i);
  }
}

}  // namespace
}  // namespace qvsysbase
