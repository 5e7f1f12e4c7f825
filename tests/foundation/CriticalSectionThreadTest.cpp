#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

#include "qvsysbase/CriticalSection.h"

namespace qvsysbase {
namespace {

bool OtherThreadCanEnter(CriticalSection& cs) {
  bool entered = false;
  std::thread([&] {
    if (cs.TryEnter()) {
      cs.Leave();
      entered = true;
    }
  }).join();
  return entered;
}

// Each increment enters twice (the second time through the null-tolerant
// guard) and leaves a gap between read and write, so that a lock which failed
// to exclude would lose updates.
TEST(CriticalSectionThreadTest, GuardsExcludeEachOtherAndReenter) {
  constexpr int kThreads = 4, kIterations = 20000;
  CriticalSection cs;
  int count QV_GUARDED_BY(cs) = 0;
  std::latch start(kThreads);
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&] {
        start.arrive_and_wait();
        for (int i = 0; i < kIterations; ++i) {
          csLocker outer(cs);
          qvLocker inner(&cs);
          const int value = count;
          if (i % 64 == 0) std::this_thread::yield();
          count = value + 1;
        }
      });
    }
  }
  csLocker lock(cs);
  EXPECT_EQ(count, kThreads * kIterations);
}

TEST(CriticalSectionThreadTest, SectionIsFreeOnlyWhenEveryEntryIsLeft) {
  CriticalSection cs;
  {
    csLocker outer(cs);
    {
      qvLocker inner(&cs);
      EXPECT_FALSE(OtherThreadCanEnter(cs));
    }
    EXPECT_FALSE(OtherThreadCanEnter(cs));
  }
  EXPECT_TRUE(OtherThreadCanEnter(cs));
  qvLocker none(nullptr);  // guards nothing
  EXPECT_TRUE(OtherThreadCanEnter(cs));
}

}  // namespace
}  // namespace qvsysbase
