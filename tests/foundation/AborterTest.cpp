#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "qvsysbase/Aborter.h"

namespace qvsysbase {
namespace {

// Callbacks that append what they receive to one shared log, tagged.
class Progress : public QvCallbackProt_1<void, int> {
 public:
  Progress(const char* tag, std::vector<std::wstring>* pLog) : m_Tag(tag), m_pLog(pLog) {}
  void operator()(int value) override {
    m_pLog->push_back(std::wstring(m_Tag.begin(), m_Tag.end()) + std::to_wstring(value));
  }

 private:
  std::string m_Tag;
  std::vector<std::wstring>* m_pLog;
};

class Text : public QvCallbackProt_1<void, const std::wstring&> {
 public:
  Text(const char* tag, std::vector<std::wstring>* pLog) : m_Tag(tag), m_pLog(pLog) {}
  void operator()(const std::wstring& text) override {
    m_pLog->push_back(std::wstring(m_Tag.begin(), m_Tag.end()) + text);
  }

 private:
  std::string m_Tag;
  std::vector<std::wstring>* m_pLog;
};

class UserAbort : public QvCallbackProt<void> {
 public:
  explicit UserAbort(std::function<void()> action) : m_Action(std::move(action)) {}
  void operator()() override { m_Action(); }

 private:
  std::function<void()> m_Action;
};

TEST(AborterTest, ANewChannelWithoutCallbacksDoesNothing) {
  Aborter aborter;
  EXPECT_FALSE(aborter.IsAborted());
  aborter.ReportProgress(10);
  aborter.CheckForUserAbort();
  aborter.ChangeText(L"x");
  EXPECT_FALSE(aborter.IsAborted());

  DualAborter dual;
  EXPECT_FALSE(dual.IsAborted());
  dual.ReportProgress1(10);
  dual.ReportProgress2(20);
  dual.CheckForUserAbort();
  dual.ChangeText1(L"x");
  dual.ChangeText2(L"y");
  EXPECT_FALSE(dual.IsAborted());
}

// The flag after a sequence of operations: 'A' Abort, 'P' a progress report
// ('1'/'2' on the dual channel), 'U' a user-abort check whose callback aborts,
// 'T' a text change. Only Aborter's progress report lowers the flag.
TEST(AborterTest, FlagRules) {
  const struct {
    const char* ops;
    bool bAborted;
    bool bDualAborted;
  } rows[] = {{"", false, false},
              {"A", true, true},
              {"AP", false, true},
              {"APA", true, true},
              {"U", true, true},
              {"UP", false, true},
              {"UT", true, true},
              {"AT", true, true},
              {"PU", true, true},
              {"AA", true, true},
              {"AUP", false, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.ops);
    Aborter aborter;
    DualAborter dual;
    UserAbort abortSingle([&] { aborter.Abort(); });
    UserAbort abortDual([&] { dual.Abort(); });
    aborter.SetUserAbortCallback(&abortSingle);
    dual.SetUserAbortCallback(&abortDual);
    for (const char* p = row.ops; *p; ++p) {
      switch (*p) {
        case 'A':
          aborter.Abort();
          dual.Abort();
          break;
        case 'P':
          aborter.ReportProgress(50);
          dual.ReportProgress1(50);
          dual.ReportProgress2(50);
          break;
        case 'U':
          aborter.CheckForUserAbort();
          dual.CheckForUserAbort();
          break;
        default:
          aborter.ChangeText(L"t");
          dual.ChangeText1(L"t");
          dual.ChangeText2(L"t");
      }
    }
    EXPECT_EQ(aborter.IsAborted(), row.bAborted);
    EXPECT_EQ(dual.IsAborted(), row.bDualAborted);
  }
}

TEST(AborterTest, EachOperationReachesItsOwnCallbackUntilSilenced) {
  std::vector<std::wstring> log;
  Progress progress("p", &log), progress2("q", &log);
  Text text("t", &log), text2("u", &log);

  Aborter aborter;
  aborter.SetProgressCallback(&progress);
  aborter.SetChangeTextCallback(&text);
  aborter.ReportProgress(-3);
  aborter.ChangeText(L"step");
  aborter.SetProgressCallback(nullptr);
  aborter.SetChangeTextCallback(nullptr);
  aborter.ReportProgress(4);
  aborter.ChangeText(L"gone");

  DualAborter dual;
  dual.SetProgressCallback1(&progress);
  dual.SetProgressCallback2(&progress2);
  dual.SetChangeTextCallback1(&text);
  dual.SetChangeTextCallback2(&text2);
  dual.ReportProgress1(1);
  dual.ReportProgress2(2);
  dual.ChangeText1(L"a");
  dual.ChangeText2(L"b");
  dual.SetProgressCallback2(nullptr);
  dual.SetChangeTextCallback1(nullptr);
  dual.ReportProgress1(5);
  dual.ReportProgress2(6);
  dual.ChangeText1(L"c");
  dual.ChangeText2(L"d");

  EXPECT_EQ(
      log, (std::vector<std::wstring>{L"p-3", L"tstep", L"p1", L"q2", L"ta", L"ub", L"p5", L"ud"}));

  int nChecks = 0;
  UserAbort count([&] { ++nChecks; });
  aborter.SetUserAbortCallback(&count);
  dual.SetUserAbortCallback(&count);
  aborter.CheckForUserAbort();
  dual.CheckForUserAbort();
  aborter.SetUserAbortCallback(nullptr);
  dual.SetUserAbortCallback(nullptr);
  aborter.CheckForUserAbort();
  dual.CheckForUserAbort();
  EXPECT_EQ(nChecks, 2);
}

TEST(AborterTest, CallbackExceptionsPassThrough) {
  UserAbort thrower([] { throw std::runtime_error("stop"); });
  struct ThrowingProgress : QvCallbackProt_1<void, int> {
    void operator()(int) override { throw std::domain_error("bar"); }
  } progress;

  Aborter aborter;
  aborter.SetUserAbortCallback(&thrower);
  aborter.SetProgressCallback(&progress);
  EXPECT_THROW(aborter.CheckForUserAbort(), std::runtime_error);
  aborter.Abort();
  EXPECT_THROW(aborter.ReportProgress(1), std::domain_error);
  EXPECT_FALSE(aborter.IsAborted());  // lowered before the report was made

  DualAborter dual;
  dual.SetUserAbortCallback(&thrower);
  dual.SetProgressCallback2(&progress);
  EXPECT_THROW(dual.CheckForUserAbort(), std::runtime_error);
  dual.Abort();
  EXPECT_THROW(dual.ReportProgress2(1), std::domain_error);
  EXPECT_TRUE(dual.IsAborted());
}

}  // namespace
}  // namespace qvsysbase
