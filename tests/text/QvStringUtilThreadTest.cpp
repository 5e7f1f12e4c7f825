#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <locale>
#include <string>
#include <thread>
#include <vector>

#include "qvsysbase/QvLocaleUtil.h"
#include "qvsysbase/QvStringUtil.h"

namespace qvsysbase {
namespace {

// The first case-insensitive calls build the tables, and the user's locale is
// replaced while others convert and ask for month names: all of it from
// threads started together.
TEST(StringUtilThreadTest, FirstCallsAndSettingChangesMayRace) {
  constexpr int kThreads = 4;
  const std::string plain("plain"), upper("PLAIN");
  std::latch start(kThreads);
  std::atomic<int> failures{0};
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < kThreads; ++t)
      threads.emplace_back([&, t] {
        start.arrive_and_wait();
        for (int i = 0; i < 50; ++i) {
          std::wstring wide, wideUpper;
          QvStringUtil::ConvertStringToWString(plain, wide);
          QvStringUtil::ConvertStringToWString(upper, wideUpper);
          if (!QvStringUtil::CaseInsensitiveEquality(plain, upper, -1, std::locale::classic()) ||
              !QvStringUtil::CaseInsensitiveEquality(wide, wideUpper, -1, std::locale::classic()))
            failures.fetch_add(1);
          if (QvLocaleUtil::GetMonthName(static_cast<unsigned>(i % 12), QvLocaleUtil::FULL).empty())
            failures.fetch_add(1);
          if (t == 0) QvStringUtil::SettingChanged();
        }
      });
  }  // the threads join here
  EXPECT_EQ(failures.load(), 0);
}

}  // namespace
}  // namespace qvsysbase
