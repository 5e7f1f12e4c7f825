#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "qvsysbase/QvStringUtil.h"
#include "text/ScopedUserLocale.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

TEST(CodePageConversionTest, UserCodePageRoundTripsAndSubstitutes) {
  std::wstring wide;
  std::string narrow;
  {
    const ScopedUserLocale user("C.UTF-8");
    const std::tuple<std::string, std::wstring> rows[] = {
        // clang-format off
        {"Gr\xC3\xBC\xC3\x9F\x65", L"Gr\u00fc\u00dfe"},  {"\xF0\x90\x90\xA8", L"\U00010428"},
        {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
        // clang-format on

    };
    for (const auto& [bytes, text] : rows) {
      SCOPED_TRACE(bytes);
      QvStringUtil::ConvertStringToWString(bytes, wide = L"old");
      EXPECT_EQ(wide, text);
      QvStringUtil::ConvertWStringToString(text, narrow = "old");
      EXPECT_EQ(narrow, bytes);
    }
    QvStringUtil::ConvertStringToWString("a\xFF\x62\xC3", wide);  // a bad byte, a torn tail
    EXPECT_EQ(wide, L"a\uFFFDb\uFFFD");
  }
  const ScopedUserLocale user("C");
  QvStringUtil::ConvertWStringToString(L"a\u00e4b", narrow);
  EXPECT_EQ(narrow, "a?b");
}

}  // namespace
}  // namespace qvsysbase
