#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <stdexcept>
#include <string>

#include "qvsysbase/GroupDestructor.h"

namespace qvsysbase {
namespace {

// Writes "D<name> " when torn down, then runs onDestroy, and "~<name> " when deleted.
struct Member : DestructorProt {
  Member(std::string* log, char name, void* key, std::function<void()> onDestroy = {})
      : pLog(log), cName(name), pKey(key), OnDestroy(std::move(onDestroy)) {}
  ~Member() override { *pLog += {'~', cName, ' '}; }
  void Destroy() override {
    *pLog += {'D', cName, ' '};
    if (OnDestroy) OnDestroy();
  }
  void* GetGroupKey() override { return pKey; }
  std::string* pLog;
  char cName;
  void* pKey;
  std::function<void()> OnDestroy;
};

int g_keyOne, g_keyTwo;

TEST(GroupDestructorTest, DestroyGroupSkipsTeardownOfKeyHoldersAndDeletesAllInOrder) {
  const struct {
    void* key;
    const char* log;
  } rows[] = {
      {&g_keyTwo, "Da ~a ~b Dc ~c "}, {&g_keyOne, "~a Db ~b ~c "}, {nullptr, "Da ~a Db ~b Dc ~c "}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.log);
    std::string log;
    auto* a = new Member(&log, 'a', &g_keyOne);
    auto* b = new Member(&log, 'b', &g_keyTwo);
    auto* c = new Member(&log, 'c', &g_keyOne);
    GroupDestructor group;
    // Duplicates and null are ignored, so each member is deleted exactly once.
    for (DestructorProt* p : std::initializer_list<DestructorProt*>{a, nullptr, b, a, c, b})
      group.addDestructor(p);
    group.destroyGroup(row.key);
    EXPECT_EQ(log, row.log);
  }
}

TEST(GroupDestructorTest, ReentryIsIgnoredAndOnlyDestroyGroupDeletes) {
  std::string log;
  Member kept(&log, 'k', nullptr);
  {
    GroupDestructor alone;
    alone.addDestructor(&kept);
  }
  GroupDestructor group;
  group.addDestructor(new Member(&log, 'a', nullptr, [&] { group.destroyGroup(nullptr); }));
  group.addDestructor(new Member(&log, 'b', nullptr, [&] {
    group.addDestructor(new Member(&log, 'c', nullptr));  // goes with the group, too
  }));
  group.destroyGroup(&g_keyOne);
  group.destroyGroup(nullptr);  // a group is destroyed once
  EXPECT_EQ(log, "Da ~a Db ~b Dc ~c ");
}

// A Destroy() that throws stops neither the pass nor the deletions; the first
// exception leaves destroyGroup once every member is gone.
TEST(GroupDestructorTest, ThrowingTeardownStillDeletesEveryMemberOnceAndPassesTheFirstOn) {
  const struct {
    const char* throwers;  // members whose Destroy() throws, with their name as text
    const char* passedOn;  // the text that leaves destroyGroup, "" for none
  } rows[] = {{"a", "a"}, {"b", "b"}, {"c", "c"}, {"ac", "a"}, {"abc", "a"}, {"", ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.throwers);
    std::string log;
    GroupDestructor group;
    for (const char name : {'a', 'b', 'c'}) {
      const bool bThrows = std::string(row.throwers).find(name) != std::string::npos;
      group.addDestructor(new Member(&log, name, nullptr, [name, bThrows] {
        if (bThrows) throw std::runtime_error(std::string(1, name));
      }));
    }
    std::string passedOn;
    try {
      group.destroyGroup(&g_keyOne);
    } catch (const std::runtime_error& e) {
      passedOn = e.what();
    }
    group.destroyGroup(nullptr);  // the group is gone even after a throw
    EXPECT_EQ(passedOn, row.passedOn);
    EXPECT_EQ(log, "Da ~a Db ~b Dc ~c ");
  }
}

}  // namespace
}  // namespace qvsysbase
