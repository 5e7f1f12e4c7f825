#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "qvsysbase/QvStringUtil.h"
#include "text/ScopedUserLocale.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

TEST(UserNumbersTest, TrailingZeroesAndReadingFollowTheUserNotation) {
  const ScopedUserLocale user("C.UTF-8");
  const std::tuple<const wchar_t*, const wchar_t*, bool, double> rows[] = {
      // clang-format off
      {L"2.500", L"2.5", true, 2.5}, {L"5.000", L"5", true, 5.0}, {L" 1.10 ", L" 1.1 ", true, 1.1},
      {L"-3.000e+05", L"-3e+05", true, -3e5},  {L"+.250", L"+.25", true, 0.25},
      {L".000", L".0", true, 0.0}, {L"100", L"100", true, 100.0}, {L"1,000", L"1,000", false, 0.0},
      {L"1.0e", L"1.0e", false, 0.0},  {L".", L".", false, 0.0},  {L"1e999", L"1e999", false, 0.0},
      // clang-format on
  };
  std::wstring s;
  for (const auto& [in, trimmed, readable, expected] : rows) {
    SCOPED_TRACE(in);
    EXPECT_EQ(QvStringUtil::RemoveTrailingZeroes(s = in), trimmed);
    double value = -42.0;
    EXPECT_EQ(QvStringUtil::ReadValueFromString(in, value), readable);
    EXPECT_EQ(value, readable ? expected : -42.0);
  }
  double value = 1.0;
  EXPECT_FALSE(QvStringUtil::ReadValueFromString(nullptr, value));
}

TEST(UserNumbersTest, GermanNotationUsesTheComma) {
  if (!IsLocaleInstalled(kGermanLocale)) GTEST_SKIP() << kGermanMissing;
  const ScopedUserLocale user(kGermanLocale);
  std::wstring s;
  EXPECT_EQ(QvStringUtil::RemoveTrailingZeroes(s = L"2,500"), L"2,5");
  EXPECT_EQ(QvStringUtil::RemoveTrailingZeroes(s = L"2.500"), L"2.500");  // a thousands grouping
  double value = 0.0;
  EXPECT_TRUE(QvStringUtil::ReadValueFromString(L"-1,25", value));
  EXPECT_EQ(value, -1.25);
}

}  // namespace
}  // namespace qvsysbase
