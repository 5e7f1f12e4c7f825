#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <latch>
#include <thread>
#include <vector>

#include "qvsysbase/RefCounterProt.h"

namespace qvsysbase {
namespace {

constexpr int kThreads = 4;
constexpr int kIterations = 20000;

// Runs work(threadIndex) on kThreads threads released together, so that their
// operations overlap as much as possible.
template <class Work>
void RunTogether(Work work) {
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      start.arrive_and_wait();
      work(t);
    });
  }
  for (auto& thread : threads) thread.join();
}

class Shared : public RefCounterProtocolImp {
 public:
  explicit Shared(std::atomic<int>* destroyed) : m_pDestroyed(destroyed) {}
  // Reads every thread's slot: whichever thread deletes must see all writes.
  ~Shared() override {
    int sum = 0;
    for (int slot : m_aSlots) sum += slot;
    m_pDestroyed->fetch_add(sum == kThreads * (kThreads + 1) / 2 ? 1 : 100);
  }
  int m_aSlots[kThreads] = {};

 private:
  std::atomic<int>* m_pDestroyed;
};

TEST(RefCounterProtImpThreadTest, CountsAndSumsAreExactUnderContention) {
  std::atomic<int> destroyed{0};
  auto* object = new Shared(&destroyed);
  const SmartRefCountedPtr<Shared> owner(object, object);
  std::int32_t interlocked = 0;
  double sum = 0.0;
  ASSERT_TRUE(qvSafeIncrement::IsSafeIncrementSupported());

  RunTogether([&](int) {
    for (int i = 0; i < kIterations; ++i) {
      SmartRefCountedPtr<Shared> copy(owner);
      SmartRefCountedPtr<Shared> another;
      another = copy;
      qvInterlockedIncrement(&interlocked);
      // Small integers and halves add exactly, so any lost update shows.
      qvSafeIncrement::SafeIncrement(&sum, 1.5);
    }
  });

  EXPECT_EQ(object->GetCount(), 1);
  EXPECT_EQ(destroyed.load(), 0);
  EXPECT_EQ(interlocked, kThreads * kIterations);
  EXPECT_EQ(sum, 1.5 * kThreads * kIterations);
}

TEST(RefCounterProtImpThreadTest, ExactlyOneThreadDeletesAfterTheLastRelease) {
  for (int round = 0; round < 200; ++round) {
    std::atomic<int> destroyed{0};
    auto* object = new Shared(&destroyed);
    std::vector<SmartRefCountedPtr<Shared>> copies;
    {
      const SmartRefCountedPtr<Shared> first(object, object);
      copies.assign(kThreads, first);
    }
    // Each thread writes its slot through its copy and drops the copy; the
    // destructor, on whichever thread drops last, reads all slots. Without
    // release/acquire on the decrement ThreadSanitizer reports those reads.
    RunTogether([&](int t) {
      copies[t]->m_aSlots[t] = t + 1;
      copies[t] = SmartRefCountedPtr<Shared>();
    });
    ASSERT_EQ(destroyed.load(), 1) << "round " << round;
  }
}

TEST(RefCounterProtImpThreadTest, ExternalAndInternalCountersBalance) {
  auto* counted = new int(7);
  auto* external = new ExtRefCounter<int>(counted);
  const SmartRefCountedPtr<int> owner(counted, external);
  std::atomic<int> ownerCount{0};
  struct Owner : RefCounterProtocol {
    std::atomic<int>* count;
    std::int32_t AddRef() override { return count->fetch_add(1) + 1; }
    std::int32_t Release() override { return count->fetch_sub(1) - 1; }
  } ownerCounter;
  ownerCounter.count = &ownerCount;
  InternalRefCounter internal(2, &ownerCounter);
  internal.AddRef();
  internal.AddRef();  // the owner's own two internal links

  RunTogether([&](int) {
    for (int i = 0; i < kIterations; ++i) {
      const SmartRefCountedPtr<int> copy(owner);
      const SmartRefCountedPtr<int> viaInternal(counted, &internal);
    }
  });

  EXPECT_EQ(external->AddRef(), 2);
  EXPECT_EQ(external->Release(), 1);
  EXPECT_EQ(ownerCount.load(), 0);
  EXPECT_EQ(internal.Release(), 1);
}

}  // namespace
}  // namespace qvsysbase
