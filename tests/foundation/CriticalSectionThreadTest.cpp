#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <thread>
#include <vector>

#include "qvsysbase/CriticalSection.h"

namespace qvsysbase {
namespace {

struct Counter {
  CriticalSection cs;
  int m_nCount QV_GUARDED_BY(cs) = 0;
};

bool OtherThreadCanEnter(CriticalSection& cs) {
  return std::async(std::launch::async,
                    [&] {
                      if (!cs.TryEnter()) return false;
                      cs.Leave();
                      return true;
                    })
      .get();
}

// The second entries go through the null-tolerant guard, each in a function of
// its own: the static analysis does not model re-entry. The increment leaves a
// gap between read and write, so that a lock which failed to exclude loses updates.
void IncrementReentering(Counter& c, int i) {
  const qvLocker inner(&c.cs);
  const int value = c.m_nCount;
  if (i % 64 == 0) std::this_thread::yield();
  c.m_nCount = value + 1;
}

bool OtherThreadCanEnterWhileReentered(Counter& c) {
  const qvLocker inner(&c.cs);
  return OtherThreadCanEnter(c.cs);
}

// The section is free only when every entry is left.
TEST(CriticalSectionThreadTest, GuardsExcludeEachOtherAndReenter) {
  constexpr int kThreads = 4, kIterations = 20000;
  Counter c;
  std::latch start(kThreads);
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&] {
        start.arrive_and_wait();
        for (int i = 0; i < kIterations; ++i) {
          const csLocker outer(c.cs);
          IncrementReentering(c, i);
        }
      });
    }
  }
  {
    const csLocker outer(c.cs);
    EXPECT_EQ(c.m_nCount, kThreads * kIterations);
    EXPECT_FALSE(OtherThreadCanEnterWhileReentered(c));
    EXPECT_FALSE(OtherThreadCanEnter(c.cs));
  }
  EXPECT_TRUE(OtherThreadCanEnter(c.cs));
  const qvLocker none(nullptr);  // guards nothing
  EXPECT_TRUE(OtherThreadCanEnter(c.cs));
}

}  // namespace
}  // namespace qvsysbase
