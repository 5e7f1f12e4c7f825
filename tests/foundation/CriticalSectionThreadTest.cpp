#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

#include "qvsysbase/CriticalSection.h"

namespace qvsysbase {
namespace {

constexpr int kThreads = 4;
constexpr int kIterations = 20000;

struct Counter {
  CriticalSection cs;
  int m_nCount QV_GUARDED_BY(cs) = 0;
};

// Enters the section a second time through the null-tolerant guard, then
// increments with a deliberate gap between read and write, so that a lock
// which failed to exclude would lose updates.
void IncrementReentering(Counter& counter, int i) {
  qvLocker inner(&counter.cs);
  const int value = counter.m_nCount;
  if (i % 64 == 0) std::this_thread::yield();
  counter.m_nCount = value + 1;
}

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

// Takes and leaves a second entry; the first one must still exclude others.
void ProbeSecondEntry(CriticalSection& cs) {
  {
    qvLocker inner(&cs);
    EXPECT_FALSE(OtherThreadCanEnter(cs));
  }
  EXPECT_FALSE(OtherThreadCanEnter(cs));
}

TEST(CriticalSectionThreadTest, GuardsExcludeEachOtherAndReenter) {
  Counter counter;
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      for (int i = 0; i < kIterations; ++i) {
        csLocker outer(counter.cs);
        IncrementReentering(counter, i);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  csLocker lock(counter.cs);
  EXPECT_EQ(counter.m_nCount, kThreads * kIterations);
}

TEST(CriticalSectionThreadTest, SectionIsFreeOnlyWhenEveryEntryIsLeft) {
  CriticalSection cs;
  EXPECT_TRUE(OtherThreadCanEnter(cs));
  {
    csLocker outer(cs);
    EXPECT_FALSE(OtherThreadCanEnter(cs));
    ProbeSecondEntry(cs);
  }
  EXPECT_TRUE(OtherThreadCanEnter(cs));
  {
    qvLocker none(nullptr);  // guards nothing
    EXPECT_TRUE(OtherThreadCanEnter(cs));
  }
  EXPECT_TRUE(OtherThreadCanEnter(cs));
}

}  // namespace
}  // namespace qvsysbase
