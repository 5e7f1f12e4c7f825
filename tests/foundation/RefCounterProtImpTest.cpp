#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "qvsysbase/RefCounterProt.h"

namespace qvsysbase {
namespace {

int g_nDestroyed = 0;
struct Tracked : RefCounterProtocolImp {
  ~Tracked() override { ++g_nDestroyed; }
};

// A counter that counts and logs "<name>+" and "<name>-".
struct LogCounter : RefCounterProtocol {
  LogCounter(std::string* log, char name) : pLog(log), cName(name) {}
  std::int32_t AddRef() override { return *pLog += {cName, '+'}, ++count; }
  std::int32_t Release() override { return *pLog += {cName, '-'}, --count; }
  std::string* pLog;
  char cName;
  int count = 0;
};

TEST(RefCounterProtImpTest, LastReleaseDeletesSafeReleaseNeverDoesCopiesStartUnreferenced) {
  auto* object = new Tracked;
  {
    const SmartRefCountedPtr<Tracked> p(object, object);
    const SmartRefCountedConstPtr<Tracked> constCopy(p);
    EXPECT_EQ(object->GetCount(), 2);
    Tracked copy(*object);
    copy = *object;
    EXPECT_EQ(copy.GetCount(), 0);
  }
  EXPECT_EQ(g_nDestroyed, 2);  // the copy, and the object with its last pointer
  object = new Tracked;
  object->AddRef();
  object->SafeRelease();
  EXPECT_EQ(g_nDestroyed, 2);
  delete object;  // count 0: the destructor's check passes
  struct Plain {
    ~Plain() { ++g_nDestroyed; }
  }* plain = new Plain;
  {
    const SmartRefCountedPtr<Plain> p(plain, new ExtRefCounter<Plain>(plain)), q = p;
    EXPECT_EQ(p.GetRefCounter()->AddRef(), 3);  // the new count, as the atomic helpers give it
    EXPECT_EQ(p.GetRefCounter()->Release(), 2);
  }
  EXPECT_EQ(g_nDestroyed, 4);  // the external counter went with its object
}

TEST(RefCounterProtImpTest, AssignmentReleasesTheOldCounterFirstAndSkipsTheSameObject) {
  std::string log;
  LogCounter a(&log, 'a'), b(&log, 'b');
  int x = 0, y = 0;
  SmartRefCountedPtr<int> p(&x, &a), q(&x, &a), r(&y, &b), empty, otherEmpty;
  SmartRefCountedPtr<int>& alias = p;
  log.clear();
  empty = otherEmpty;
  p = alias;
  p = q;
  EXPECT_EQ(log, "");
  p = r;
  EXPECT_EQ(log, "a-b+");
  EXPECT_EQ(p.GetObject(), &y);
}

// The owner holds exactly the references beyond the threshold, at every step
// of a climb to 5 references and the descent back to 0.
TEST(InternalRefCounterTest, OwnerHoldsTheReferencesBeyondTheThreshold) {
  constexpr int kTop = 5;
  std::string log;
  for (int threshold = 0; threshold <= kTop; ++threshold) {
    SCOPED_TRACE(threshold);
    LogCounter owner(&log, 'o');
    InternalRefCounter counter(threshold, &owner);
    for (int step = 1; step <= 2 * kTop; ++step) {
      const int k = std::min(step, 2 * kTop - step);
      EXPECT_EQ(step <= kTop ? counter.AddRef() : counter.Release(), k) << "step " << step;
      EXPECT_EQ(owner.count, std::max(0, k - threshold)) << "step " << step;
    }
  }
  InternalRefCounter orphan(0, nullptr);
  EXPECT_EQ(orphan.AddRef(), 1);
  EXPECT_EQ(orphan.Release(), 0);
}

}  // namespace
}  // namespace qvsysbase
