#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <thread>

#include "qvsysbase/Aborter.h"

namespace qvsysbase {
namespace {

// A computation polls the flag while another thread aborts it; the abort must
// be seen, and under ThreadSanitizer the flag's accesses must not race.
// Aborter's progress reports write the flag too, so they run alongside.
template <class Channel>
bool ComputationSeesAbortFromOtherThread(void (*report)(Channel&, int)) {
  Channel channel;
  std::latch start(2);
  bool bSeen = false;
  std::atomic<bool> bDone{false};
  std::thread computation([&] {
    start.arrive_and_wait();
    // Bounded, so that a lost abort fails instead of hanging.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    for (int step = 0; std::chrono::steady_clock::now() < deadline; ++step) {
      if (channel.IsAborted()) {
        bSeen = true;
        break;
      }
      if (step < 1000) report(channel, step);
    }
    bDone = true;
  });
  start.arrive_and_wait();
  // Aborter drops an abort at its next report: abort again until the
  // computation has stopped.
  while (!bDone) channel.Abort();
  computation.join();
  return bSeen;
}

TEST(AborterThreadTest, AbortFromAnotherThreadIsSeen) {
  EXPECT_TRUE(ComputationSeesAbortFromOtherThread<Aborter>(
      [](Aborter& a, int step) { a.ReportProgress(step); }));
  EXPECT_TRUE(ComputationSeesAbortFromOtherThread<DualAborter>(
      [](DualAborter& a, int step) { a.ReportProgress1(step), a.ReportProgress2(step); }));
}

}  // namespace
}  // namespace qvsysbase
