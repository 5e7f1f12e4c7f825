#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

#include "qvsysbase/SplittingInformation.h"

namespace qvsysbase {
namespace {

// Threads started together make the first calls: all get the same two-part cut.
TEST(SplittingInformationThreadTest, FirstCallsToTheSharedCutMayRace) {
  constexpr int kThreads = 4;
  std::latch start(kThreads);
  std::vector<const SplittingInformation*> seen(kThreads);
  std::vector<unsigned> sizes(kThreads);
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < kThreads; ++t)
      threads.emplace_back([&, t] {
        start.arrive_and_wait();
        const SplittingInformation& cut = SplittingInformation::GetHorizontalCut();
        seen[t] = &cut;
        sizes[t] = cut.getSize();
      });
  }  // the threads join here
  for (int t = 0; t < kThreads; ++t) {
    EXPECT_EQ(seen[t], seen[0]);
    EXPECT_EQ(sizes[t], 2u);
  }
}

}  // namespace
}  // namespace qvsysbase
