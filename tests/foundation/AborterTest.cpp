#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "qvsysbase/Aborter.h"

namespace qvsysbase {
namespace {

// A callback of interface `Prot` that forwards to a test's lambda.
template <typename Prot, typename... A>
struct Fn : Prot {
  explicit Fn(std::function<void(A...)> fn) : m_Fn(std::move(fn)) {}
  void operator()(A... a) override { m_Fn(a...); }
  std::function<void(A...)> m_Fn;
};
using UserAbortFn = Fn<QvCallbackProt<void>>;
using ProgressFn = Fn<QvCallbackProt_1<void, int>, int>;

// Both channels; each callback logs a tag naming it, the progress callbacks
// also the flag as they see it ('!' when aborted), and the user-abort callbacks
// abort their own channel.
struct Channels {
  Aborter single;
  DualAborter dual;
  std::vector<std::wstring> log;
  UserAbortFn abortSingle{[this] { log.push_back(L"U"), single.Abort(); }};
  UserAbortFn abortDual{[this] { log.push_back(L"u"), dual.Abort(); }};
  ProgressFn progress{[this](int v) { Log(L"P", v, single.IsAborted()); }};
  ProgressFn progress1{[this](int v) { Log(L"p", v, dual.IsAborted()); }};
  ProgressFn progress2{[this](int v) { Log(L"q", v, dual.IsAborted()); }};

  void Log(const wchar_t* tag, int v, bool b) {
    log.push_back(tag + std::to_wstring(v) + (b ? L"!" : L""));
  }

  // 'A' Abort, 'P' progress (both bars of the dual channel), 'U' a user-abort
  // check, 'T' a text change (no text callback is ever set), '1' set every
  // callback, '0' set every callback to null.
  void Run(const char* ops) {
    for (; *ops != '\0'; ++ops) {
      const bool bOn = *ops == '1';
      // clang-format off
      switch (*ops) {
        case 'A': single.Abort(), dual.Abort(); break;
        case 'P': single.ReportProgress(50), dual.ReportProgress1(1), dual.ReportProgress2(2); break;
        case 'U': single.CheckForUserAbort(), dual.CheckForUserAbort(); break;
        case 'T': single.ChangeText(L"x"), dual.ChangeText1(L"y"), dual.ChangeText2(L"z"); break;
        default:
          single.SetUserAbortCallback(bOn ? &abortSingle : nullptr);
          single.SetProgressCallback(bOn ? &progress : nullptr);
          dual.SetUserAbortCallback(bOn ? &abortDual : nullptr);
          dual.SetProgressCallback1(bOn ? &progress1 : nullptr);
          dual.SetProgressCallback2(bOn ? &progress2 : nullptr);
      }
      // clang-format on
    }
  }
};

// Only Aborter's progress report lowers the flag, with or without a callback;
// a missing callback does nothing.
TEST(AborterTest, FlagRulesAndSilentChannels) {
  const struct {
    const char* ops;
    bool bAborted, bDualAborted;
    std::vector<std::wstring> log;
  } rows[] = {
      // clang-format off
      {"PUT",   false, false, {}},  // new channels have no callbacks
      {"1A",    true,  true,  {}},
      {"1APA",  true,  true,  {L"P50", L"p1!", L"q2!"}},
      {"1UP",   false, true,  {L"U", L"u", L"P50", L"p1!", L"q2!"}},
      {"1UT",   true,  true,  {L"U", L"u"}},
      {"1AT0P", false, true,  {}},
      {"1P0U",  false, false, {L"P50", L"p1", L"q2"}},
      {"1U0PT", false, true,  {L"U", L"u"}},
      // clang-format on
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.ops);
    Channels channels;
    channels.Run(row.ops);
    EXPECT_EQ(channels.single.IsAborted(), row.bAborted);
    EXPECT_EQ(channels.dual.IsAborted(), row.bDualAborted);
    EXPECT_EQ(channels.log, row.log);
  }
}

// A copy shares the callbacks and starts with the flag as it was; afterwards
// the two flags are independent.
TEST(AborterTest, CopiesShareCallbacksAndTakeTheFlag) {
  Channels channels;
  channels.Run("1A");
  Aborter single = channels.single;
  const DualAborter dual = channels.dual;
  single.ReportProgress(7);  // logs the original's flag, still raised
  EXPECT_EQ(channels.log, std::vector<std::wstring>{L"P7!"});
  EXPECT_TRUE(dual.IsAborted());
  EXPECT_FALSE(single.IsAborted());
  channels.single = single;
  EXPECT_FALSE(channels.single.IsAborted());
}

}  // namespace
}  // namespace qvsysbase
