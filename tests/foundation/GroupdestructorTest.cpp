#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "qvsysbase/GroupDestructor.h"
#include "qvsysbase/qvExcept.h"

namespace qvsysbase {
namespace {

// A member that writes "D<name> " when torn down and "~<name> " when deleted,
// and runs an optional action inside Destroy().
class Member : public DestructorProt {
 public:
  Member(std::string* log, char name, void* key, std::function<void()> onDestroy = {})
      : m_pLog(log), m_Name(name), m_pKey(key), m_OnDestroy(std::move(onDestroy)) {}
  ~Member() override { *m_pLog += std::string("~") + m_Name + ' '; }
  void Destroy() override {
    *m_pLog += std::string("D") + m_Name + ' ';
    if (m_OnDestroy) m_OnDestroy();
  }
  void* GetGroupKey() override { return m_pKey; }

 private:
  std::string* m_pLog;
  char m_Name;
  void* m_pKey;
  std::function<void()> m_OnDestroy;
};

int g_keyOne, g_keyTwo;

TEST(GroupDestructorTest, DestroyGroupSkipsTeardownOfKeyHoldersAndDeletesAllInOrder) {
  const struct {
    void* key;
    const char* log;
  } rows[] = {
      {&g_keyTwo, "Da ~a ~b Dc ~c "},
      {&g_keyOne, "~a Db ~b ~c "},
      {nullptr, "Da ~a Db ~b Dc ~c "},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.log);
    std::string log;
    auto* a = new Member(&log, 'a', &g_keyOne);
    auto* b = new Member(&log, 'b', &g_keyTwo);
    auto* c = new Member(&log, 'c', &g_keyOne);
    GroupDestructor group;
    // Duplicates and null are ignored, so each member is deleted exactly once.
    for (DestructorProt* p : {static_cast<DestructorProt*>(a),
                              static_cast<DestructorProt*>(nullptr),
                              static_cast<DestructorProt*>(b),
                              static_cast<DestructorProt*>(a),
                              static_cast<DestructorProt*>(c),
                              static_cast<DestructorProt*>(b)}) {
      group.addDestructor(p);
    }
    group.destroyGroup(row.key);
    EXPECT_EQ(log, row.log);
  }
}

TEST(GroupDestructorTest, DestroyingTheGroupAloneDeletesNothing) {
  std::string log;
  auto a = std::make_unique<Member>(&log, 'a', nullptr);
  {
    GroupDestructor group;
    group.addDestructor(a.get());
  }
  EXPECT_EQ(log, "");
}

TEST(GroupDestructorTest, TeardownReachingDestroyGroupAgainIsIgnored) {
  std::string log;
  GroupDestructor group;
  group.addDestructor(new Member(&log, 'a', nullptr, [&] { group.destroyGroup(nullptr); }));
  group.addDestructor(new Member(&log, 'b', nullptr, [&] {
    // Registered while the group goes: it goes with it.
    group.addDestructor(new Member(&log, 'c', nullptr));
  }));
  group.destroyGroup(&g_keyOne);
  EXPECT_EQ(log, "Da ~a Db ~b Dc ~c ");

  group.destroyGroup(nullptr);  // a group is destroyed once
  EXPECT_EQ(log, "Da ~a Db ~b Dc ~c ");
  Member d(&log, 'd', nullptr);
  try {
    group.addDestructor(&d);
    FAIL() << "no assertion";
  } catch (const AssertionException& e) {
    EXPECT_EQ(e.getMessage(), "m_pImpl");
    EXPECT_EQ(e.getFile(), "Groupdestructor");
  }
}

}  // namespace
}  // namespace qvsysbase
