#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <string>

#include "qvsysbase/RefCounterProt.h"

namespace qvsysbase {
namespace {

using ::testing::InSequence;
using ::testing::Return;
using ::testing::StrictMock;

constexpr const char* kHeader = "qvsysbase/RefCounterProt.h";
constexpr const char* kUnit = "RefCounterProtImp";

// "condition @ file" of the pre-condition assertion body throws, or a note.
template <class Body>
std::string FailedCheck(Body body) {
  try {
    body();
  } catch (const AssertionException& e) {
    if (e.getAssertionType() != "Pre-condition") return "wrong type " + e.getAssertionType();
    return e.getMessage() + " @ " + e.getFile();
  }
  return "no assertion";
}

// A self-counted object that reports its own destruction.
class Tracked : public RefCounterProtocolImp {
 public:
  explicit Tracked(int* destroyed) : m_pDestroyed(destroyed) {}
  ~Tracked() override { ++*m_pDestroyed; }

 private:
  int* m_pDestroyed;
};

class MockCounter : public RefCounterProtocol {
 public:
  MOCK_METHOD(std::int32_t, AddRef, (), (override));
  MOCK_METHOD(std::int32_t, Release, (), (override));
};

// A counter that only counts, for checking what others forward to it.
class PlainCounter : public RefCounterProtocol {
 public:
  std::int32_t AddRef() override { return ++count; }
  std::int32_t Release() override { return --count; }
  std::int32_t count = 0;
};

// Rewrites a pointer's two fields: only a corrupted pointer can be half set.
template <class T>
void Corrupt(SmartRefCountedPtr<T>& p, T* object, RefCounterProtocol* counter) {
  static_assert(sizeof p == sizeof object + sizeof counter);
  std::memcpy(static_cast<void*>(&p), &object, sizeof object);
  std::memcpy(reinterpret_cast<char*>(&p) + sizeof object, &counter, sizeof counter);
}

TEST(RefCounterProtImpTest, LastPointerDeletesTheObject) {
  int destroyed = 0;
  auto* object = new Tracked(&destroyed);
  {
    SmartRefCountedPtr<Tracked> p(object, object);
    EXPECT_EQ(object->GetCount(), 1);
    {
      const SmartRefCountedPtr<Tracked> copy(p);
      SmartRefCountedConstPtr<Tracked> constCopy(p);
      EXPECT_EQ(object->GetCount(), 3);
      EXPECT_EQ(constCopy.operator->(), object);
    }
    EXPECT_EQ(object->GetCount(), 1);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 1);
}

TEST(RefCounterProtImpTest, FailedChecksReportTheirConditions) {
  int destroyed = 0;
  PlainCounter counter;
  auto* object = new Tracked(&destroyed);
  const struct {
    const char* name;
    std::function<void()> body;
    std::string expected;
  } rows[] = {
      {"object without counter",
       [&] { SmartRefCountedPtr<Tracked> p(object, nullptr); },
       std::string("pObject && pRefCounter @ ") + kHeader},
      {"counter without object",
       [&] { SmartRefCountedPtr<Tracked> p(nullptr, &counter); },
       std::string("pObject && pRefCounter @ ") + kHeader},
      {"arrow on empty",
       [] { SmartRefCountedPtr<Tracked>()->GetCount(); },
       std::string("m_pObject != 0 @ ") + kHeader},
      {"dereference on empty",
       [] { (*SmartRefCountedConstPtr<Tracked>()).GetCount(); },
       std::string("m_pObject != 0 @ ") + kHeader},
      {"release at zero", [&] { object->Release(); }, std::string("m_nCount > 0 @ ") + kUnit},
      {"safe release at zero",
       [&] { object->SafeRelease(); },
       std::string("m_nCount > 0 @ ") + kUnit},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(FailedCheck(row.body), row.expected);
  }
  EXPECT_EQ(counter.count, 0);
  EXPECT_EQ(object->GetCount(), 0);

  // Deleting a referenced object is caught; the memory is freed all the same.
  object->AddRef();
  EXPECT_EQ(FailedCheck([&] { delete object; }), std::string("m_nCount == 0 @ ") + kUnit);
  EXPECT_EQ(destroyed, 1);
}

TEST(RefCounterProtImpTest, FailedAssignmentChangesNeitherPointer) {
  PlainCounter a, b;
  int object = 0, other = 0;
  SmartRefCountedPtr<int> p(&object, &a);
  const SmartRefCountedPtr<int> sameObjectOtherCounter(&object, &b);
  EXPECT_EQ(FailedCheck([&] { p = sameObjectOtherCounter; }),
            std::string("other.m_pRefCounter == m_pRefCounter @ ") + kHeader);

  SmartRefCountedPtr<int> halfSet;
  Corrupt<int>(halfSet, nullptr, &b);
  EXPECT_EQ(FailedCheck([&] { p = halfSet; }),
            std::string("other.m_pObject && other.m_pRefCounter @ ") + kHeader);
  Corrupt<int>(halfSet, &other, nullptr);
  EXPECT_EQ(FailedCheck([&] { p = halfSet; }),
            std::string("other.m_pObject && other.m_pRefCounter @ ") + kHeader);
  Corrupt<int>(halfSet, nullptr, nullptr);

  EXPECT_EQ(p.GetObject(), &object);
  EXPECT_EQ(p.GetRefCounter(), &a);
  EXPECT_EQ(a.count, 1);
  EXPECT_EQ(b.count, 1);
}

TEST(RefCounterProtImpTest, AssigningTheSameObjectCallsNoCounter) {
  StrictMock<MockCounter> counter;
  int object = 0;
  SmartRefCountedPtr<int> empty, otherEmpty;
  empty = otherEmpty;  // a StrictMock fails on any call
  EXPECT_CALL(counter, AddRef()).Times(2).WillRepeatedly(Return(1));
  SmartRefCountedPtr<int> p(&object, &counter);
  SmartRefCountedPtr<int> q(&object, &counter);
  ::testing::Mock::VerifyAndClearExpectations(&counter);

  SmartRefCountedPtr<int>& alias = p;
  p = alias;  // self-assignment
  p = q;
  EXPECT_CALL(counter, Release()).Times(2).WillRepeatedly(Return(0));
}

TEST(RefCounterProtImpTest, AssignmentReleasesTheOldCounterBeforeTakingTheNew) {
  StrictMock<MockCounter> oldCounter, newCounter;
  int oldObject = 0, newObject = 0;
  EXPECT_CALL(oldCounter, AddRef()).WillOnce(Return(1));
  EXPECT_CALL(newCounter, AddRef()).WillOnce(Return(1));
  SmartRefCountedPtr<int> p(&oldObject, &oldCounter);
  const SmartRefCountedPtr<int> q(&newObject, &newCounter);
  {
    InSequence order;
    EXPECT_CALL(oldCounter, Release()).WillOnce(Return(0));
    EXPECT_CALL(newCounter, AddRef()).WillOnce(Return(2));
  }
  p = q;
  EXPECT_EQ(p.GetObject(), &newObject);
  EXPECT_CALL(newCounter, Release()).Times(2).WillRepeatedly(Return(0));
}

TEST(RefCounterProtImpTest, SafeReleaseKeepsTheObjectAlive) {
  int destroyed = 0;
  auto* object = new Tracked(&destroyed);
  object->AddRef();
  object->SafeRelease();
  EXPECT_EQ(object->GetCount(), 0);
  EXPECT_EQ(destroyed, 0);
  delete object;  // count 0: the destructor's check passes
  EXPECT_EQ(destroyed, 1);
}

TEST(RefCounterProtImpTest, PointerDestructorLetsAStolenReferenceThrough) {
  int destroyed = 0;
  auto* object = new Tracked(&destroyed);
  EXPECT_EQ(FailedCheck([&] {
              SmartRefCountedPtr<Tracked> p(object, object);
              object->SafeRelease();  // someone dropped the pointer's reference
            }),
            std::string("m_nCount > 0 @ ") + kUnit);
  EXPECT_EQ(destroyed, 0);
  delete object;
}

TEST(RefCounterProtImpTest, CopiesOfSelfCountedObjectsStartUnreferenced) {
  int destroyed = 0;
  Tracked original(&destroyed);
  original.AddRef();
  Tracked copy(original);
  EXPECT_EQ(copy.GetCount(), 0);
  copy = original;
  EXPECT_EQ(copy.GetCount(), 0);
  original.SafeRelease();
}

// The owner holds exactly the references beyond the threshold, at every step
// of a climb to 5 references and the descent back to 0.
TEST(InternalRefCounterTest, OwnerHoldsTheReferencesBeyondTheThreshold) {
  constexpr int kTop = 5;
  for (int threshold = 0; threshold <= kTop; ++threshold) {
    SCOPED_TRACE(threshold);
    PlainCounter owner;
    InternalRefCounter counter(threshold, &owner);
    for (int k = 1; k <= kTop; ++k) {
      EXPECT_EQ(counter.AddRef(), k);
      EXPECT_EQ(owner.count, std::max(0, k - threshold)) << "up to " << k;
    }
    for (int k = kTop - 1; k >= 0; --k) {
      EXPECT_EQ(counter.Release(), k);
      EXPECT_EQ(owner.count, std::max(0, k - threshold)) << "down to " << k;
    }
  }
  InternalRefCounter orphan(0, nullptr);
  EXPECT_EQ(orphan.AddRef(), 1);
  EXPECT_EQ(orphan.Release(), 0);
}

TEST(ExtRefCounterTest, DeletesItselfAndTheObjectAtZero) {
  struct Plain {
    int* destroyed;
    ~Plain() { ++*destroyed; }
  };
  int destroyed = 0;
  auto* object = new Plain{&destroyed};
  {
    SmartRefCountedPtr<Plain> p(object, new ExtRefCounter<Plain>(object));
    SmartRefCountedPtr<Plain> q = p;
    EXPECT_EQ(q->destroyed, &destroyed);
    EXPECT_EQ(p.GetRefCounter()->AddRef(), 3);
    EXPECT_EQ(p.GetRefCounter()->Release(), 2);
  }
  EXPECT_EQ(destroyed, 1);
  delete new ExtRefCounter<Plain>(nullptr);  // owning nothing is allowed
}

TEST(AtomicHelpersTest, InterlockedPairReturnsTheNewValue) {
  std::int32_t value = 0;
  EXPECT_EQ(qvInterlockedIncrement(&value), 1);
  EXPECT_EQ(qvInterlockedDecrement(&value), 0);
  EXPECT_EQ(qvInterlockedDecrement(&value), -1);
  value = std::numeric_limits<std::int32_t>::max() - 1;
  EXPECT_EQ(qvInterlockedIncrement(&value), std::numeric_limits<std::int32_t>::max());
}

TEST(AtomicHelpersTest, SafeIncrementVersionRule) {
  const struct {
    unsigned platform, major, minor;
    bool supported;
  } rows[] = {
      {2, 5, 2, true},
      {2, 6, 0, true},
      {2, 6, 1, true},
      {2, 10, 0, true},
      {2, 5, 0, false},
      {2, 5, 1, false},
      {2, 4, 90, false},
      {2, 0, 0, false},
      {1, 6, 0, false},
      {0, 10, 0, false},
      {3, 6, 0, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(::testing::Message() << row.platform << " " << row.major << "." << row.minor);
    EXPECT_EQ(qvSafeIncrement::IsSafeIncrementSupported(row.platform, row.major, row.minor),
              row.supported);
  }
  EXPECT_TRUE(qvSafeIncrement::IsSafeIncrementSupported());  // 64-bit atomics are lock-free here
}

TEST(AtomicHelpersTest, SafeIncrementRoundsLikeTheSequentialSum) {
  double shared = 0.0;
  double expected = 0.0;
  for (int i = 0; i < 10; ++i) {
    qvSafeIncrement::SafeIncrement(&shared, 0.1);
    expected += 0.1;
  }
  EXPECT_EQ(shared, expected);
  // The compare-exchange compares bit patterns: a NaN does not make it spin.
  shared = std::numeric_limits<double>::quiet_NaN();
  qvSafeIncrement::SafeIncrement(&shared, 1.0);
  EXPECT_TRUE(shared != shared);
}

}  // namespace
}  // namespace qvsysbase
