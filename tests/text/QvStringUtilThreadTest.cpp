#include <gtest/gtest.h>

#include <atomic>
#include <locale>
#include <string>
#include <thread>
#include <vector>

#include "qvsysbase/QvStringUtil.h"

namespace qvsysbase {
namespace {

// The first case-insensitive calls build the tables, and the user's locale is
// replaced while others convert: all of it from threads started together.
TEST(StringUtilThreadTest, FirstCallsAndSettingChangesMayRace) {
  constexpr int kThreads = 4;
  const std::locale loc = std::locale::classic();
  std::atomic<int> ready{0};
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      ready.fetch_add(1);
      while (ready.load() < kThreads) {
      }
      for (int i = 0; i < 50; ++i) {
        if (!QvStringUtil::CaseInsensitiveEquality(
                std::string("Abc"), std::string("aBC"), -1, loc) ||
            !QvStringUtil::CaseInsensitiveEquality(
                std::wstring(L"Abc"), std::wstring(L"aBC"), -1, loc)) {
          failures.fetch_add(1);
        }
        std::wstring wide;
        QvStringUtil::ConvertStringToWString("plain", wide);
        if (wide != L"plain") failures.fetch_add(1);
        if (t == 0) QvStringUtil::SettingChanged();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(failures.load(), 0);
}

}  // namespace
}  // namespace qvsysbase
