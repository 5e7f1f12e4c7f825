#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include "qvsysbase/RefCounterProt.h"

namespace qvsysbase {
namespace {

constexpr int kThreads = 4;

// Runs work(threadIndex) on kThreads threads released together, so that their
// operations overlap as much as possible.
template <class Work>
void RunTogether(Work work) {
  std::latch start(kThreads);
  std::vector<std::jthread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] { start.arrive_and_wait(), work(t); });
  }
}

// Whichever thread deletes must see every thread's write to its slot.
struct Shared : RefCounterProtocolImp {
  explicit Shared(std::atomic<int>* destroyed) : pDestroyed(destroyed) {}
  ~Shared() override {
    *pDestroyed += aSlots[0] + aSlots[1] + aSlots[2] + aSlots[3] == 10 ? 1 : 100;
  }
  int aSlots[kThreads] = {};
  std::atomic<int>* pDestroyed;
};

// Self-counted, external and internal counters (the internal one forwarding to
// the self-counted object) and the atomic helpers stay exact under contention.
TEST(RefCounterProtImpThreadTest, CountsAndSumsAreExactUnderContention) {
  constexpr int kIterations = 20000;
  std::atomic<int> destroyed{0};
  auto* object = new Shared(&destroyed);
  auto* pInt = new int(7);
  const SmartRefCountedPtr<Shared> owner(object, object);
  const SmartRefCountedPtr<int> external(pInt, new ExtRefCounter<int>(pInt));
  InternalRefCounter internal(2, object);
  internal.AddRef(), internal.AddRef();  // the owner's own two links
  std::int32_t interlocked = 0;
  double sum = 0.0;
  ASSERT_TRUE(qvSafeIncrement::IsSafeIncrementSupported());
  RunTogether([&](int) {
    for (int i = 0; i < kIterations; ++i) {
      SmartRefCountedPtr<Shared> copy(owner), another;
      another = copy;
      const SmartRefCountedPtr<int> externalCopy(external), viaInternal(pInt, &internal);
      qvInterlockedIncrement(&interlocked);
      qvSafeIncrement::SafeIncrement(&sum, 1.5);  // halves add exactly: a lost update shows
    }
  });
  EXPECT_EQ(object->GetCount(), 1);
  EXPECT_EQ(destroyed.load(), 0);
  EXPECT_EQ(external.GetRefCounter()->AddRef(), 2);
  EXPECT_EQ(external.GetRefCounter()->Release(), 1);
  EXPECT_EQ(internal.Release(), 1);
  EXPECT_EQ(interlocked, kThreads * kIterations);
  EXPECT_EQ(sum, 1.5 * kThreads * kIterations);
}

// Each thread writes its slot and drops its copy; the destructor, on whichever
// thread drops last, reads all slots. Without release/acquire on the
// decrement ThreadSanitizer reports those reads.
TEST(RefCounterProtImpThreadTest, ExactlyOneThreadDeletesAfterTheLastRelease) {
  for (int round = 0; round < 200; ++round) {
    std::atomic<int> destroyed{0};
    auto* object = new Shared(&destroyed);
    std::vector<SmartRefCountedPtr<Shared>> copies(kThreads, {object, object});
    RunTogether([&](int t) {
      copies[t]->aSlots[t] = t + 1;
      copies[t] = {};
    });
    ASSERT_EQ(destroyed.load(), 1) << "round " << round;
  }
}

}  // namespace
}  // namespace qvsysbase
