#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <locale>
#include <string>

#include "qvsysbase/QvLocaleUtil.h"
#include "text/ScopedUserLocale.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

// Names follow the user's locale as the library was last told it, and reading
// them leaves the process's global locale as it was.
TEST(LocaleUtilTest, MonthNamesComeInTheUsersLanguage) {
  {
    const ScopedUserLocale user("C.UTF-8");
    EXPECT_EQ(QvLocaleUtil::GetMonthName(0, QvLocaleUtil::FULL), L"January");
  }
  if (!IsLocaleInstalled(kGermanLocale)) GTEST_SKIP() << kGermanMissing;
  const ScopedUserLocale user(kGermanLocale);
  // clang-format off
  const wchar_t* names[][2] = {
      {L"Januar", L"Jan"},  {L"Februar", L"Feb"},   {L"M\u00e4rz", L"M\u00e4r"},  {L"April", L"Apr"},
      {L"Mai", L"Mai"},     {L"Juni", L"Jun"},      {L"Juli", L"Jul"},            {L"August", L"Aug"},
      {L"September", L"Sep"},  {L"Oktober", L"Okt"},  {L"November", L"Nov"},     {L"Dezember", L"Dez"}};
  // clang-format on
  for (unsigned month = 0; month < 12; ++month) {
    SCOPED_TRACE(month);
    EXPECT_EQ(QvLocaleUtil::GetMonthName(month, QvLocaleUtil::FULL), names[month][0]);
    EXPECT_EQ(QvLocaleUtil::GetMonthName(month, QvLocaleUtil::ABBREVIATED), names[month][1]);
  }
  // Any non-zero style asks for the full name.
  EXPECT_EQ(QvLocaleUtil::GetMonthName(0, static_cast<QvLocaleUtil::MONTH_STYLE>(7)), L"Januar");
  // glibc formats a month outside 0..11 as a question mark.
  EXPECT_EQ(QvLocaleUtil::GetMonthName(12, QvLocaleUtil::FULL), L"?");
  EXPECT_EQ(QvLocaleUtil::GetMonthName(4000000000U, QvLocaleUtil::ABBREVIATED), L"?");

  const std::locale previous = std::locale::global(std::locale::classic());
  QvLocaleUtil::GetMonthName(2, QvLocaleUtil::FULL);
  EXPECT_EQ(std::locale().name(), "C");
  std::locale::global(previous);
}

// An application that set its C library locale itself keeps it, and with it its
// notation of numbers, across a month name.
TEST(LocaleUtilTest, MonthNamesLeaveTheCLibraryLocaleAsItWas) {
  if (!IsLocaleInstalled(kGermanLocale)) GTEST_SKIP() << kGermanMissing;
  const ScopedUserLocale user("C.UTF-8");
  const std::string previous = std::setlocale(LC_ALL, nullptr);
  std::setlocale(LC_ALL, kGermanLocale);
  const std::wstring name = QvLocaleUtil::GetMonthName(0, QvLocaleUtil::FULL);
  const std::string after = std::setlocale(LC_ALL, nullptr);
  char printed[8];
  std::snprintf(printed, sizeof printed, "%.1f", 1.5);
  std::setlocale(LC_ALL, previous.c_str());
  EXPECT_EQ(name, L"January");
  EXPECT_EQ(after, kGermanLocale);
  EXPECT_STREQ(printed, "1,5");
  EXPECT_EQ(std::locale().name(), "C");
}

}  // namespace
}  // namespace qvsysbase
