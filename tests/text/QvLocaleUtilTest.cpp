#include <gtest/gtest.h>

#include <locale>
#include <optional>
#include <string>

#include "qvsysbase/QvLocaleUtil.h"
#include "text/ScopedUserLocale.h"

namespace qvsysbase {
namespace {

using testing_support::IsLocaleInstalled;
using testing_support::kGermanLocale;
using testing_support::kGermanMissing;
using testing_support::ScopedUserLocale;

class GermanUserTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!IsLocaleInstalled(kGermanLocale)) GTEST_SKIP() << kGermanMissing;
    m_User.emplace(kGermanLocale);
  }
  std::optional<ScopedUserLocale> m_User;
};

TEST_F(GermanUserTest, MonthNamesComeInTheUsersLanguage) {
  const wchar_t* full[] = {L"Januar",
                           L"Februar",
                           L"M\u00e4rz",
                           L"April",
                           L"Mai",
                           L"Juni",
                           L"Juli",
                           L"August",
                           L"September",
                           L"Oktober",
                           L"November",
                           L"Dezember"};
  const wchar_t* abbreviated[] = {L"Jan",
                                  L"Feb",
                                  L"M\u00e4r",
                                  L"Apr",
                                  L"Mai",
                                  L"Jun",
                                  L"Jul",
                                  L"Aug",
                                  L"Sep",
                                  L"Okt",
                                  L"Nov",
                                  L"Dez"};
  for (unsigned month = 0; month < 12; ++month) {
    SCOPED_TRACE(month);
    EXPECT_EQ(QvLocaleUtil::GetMonthName(month, QvLocaleUtil::FULL), full[month]);
    EXPECT_EQ(QvLocaleUtil::GetMonthName(month, QvLocaleUtil::ABBREVIATED), abbreviated[month]);
  }
  // Any non-zero style asks for the full name.
  EXPECT_EQ(QvLocaleUtil::GetMonthName(0, static_cast<QvLocaleUtil::MONTH_STYLE>(7)), L"Januar");
}

TEST_F(GermanUserTest, TheGlobalLocaleIsRestored) {
  const std::locale previous = std::locale::global(std::locale::classic());
  QvLocaleUtil::GetMonthName(2, QvLocaleUtil::FULL);
  EXPECT_EQ(std::locale().name(), "C");
  std::locale::global(previous);
}

TEST_F(GermanUserTest, MonthsPastDecemberAreLeftToTheFormatter) {
  // glibc formats a month outside 0..11 as a question mark.
  EXPECT_EQ(QvLocaleUtil::GetMonthName(12, QvLocaleUtil::FULL), L"?");
  EXPECT_EQ(QvLocaleUtil::GetMonthName(4000000000U, QvLocaleUtil::ABBREVIATED), L"?");
}

TEST(LocaleUtilTest, SettingChangedSwitchesTheLanguage) {
  {
    const ScopedUserLocale user("C.UTF-8");
    EXPECT_EQ(QvLocaleUtil::GetMonthName(0, QvLocaleUtil::FULL), L"January");
    EXPECT_EQ(QvLocaleUtil::GetMonthName(0, QvLocaleUtil::ABBREVIATED), L"Jan");
  }
  if (!IsLocaleInstalled(kGermanLocale)) GTEST_SKIP() << kGermanMissing;
  const ScopedUserLocale user(kGermanLocale);
  EXPECT_EQ(QvLocaleUtil::GetMonthName(0, QvLocaleUtil::FULL), L"Januar");
}

}  // namespace
}  // namespace qvsysbase
