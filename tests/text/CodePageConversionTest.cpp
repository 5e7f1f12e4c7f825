#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
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

bool IsScalarValue(wchar_t c) {
  const auto u = static_cast<std::uint32_t>(c);
  return u <= 0x10FFFF && (u < 0xD800 || u > 0xDFFF);
}

std::wstring Substitutes(std::size_t n) { return std::wstring(n, L'\uFFFD'); }
std::wstring Unit(std::int32_t value) { return std::wstring(1, static_cast<wchar_t>(value)); }

// Only Unicode scalar values cross. The retired 4- to 6-byte forms above
// U+10FFFF, encoded surrogates and overlong forms are no characters: one U+FFFD
// per byte. A wide value outside Unicode has no narrow form.
TEST(CodePageConversionTest, OnlyUnicodeScalarValuesCross) {
  const ScopedUserLocale user("C.UTF-8");
  const std::tuple<std::string, std::wstring> toWide[] = {
      {"\xF4\x90\x80\x80", Substitutes(4)},
      {"a\xF8\x88\x80\x80\x80z", L"a" + Substitutes(5) + L"z"},
      {"\xFC\x84\x80\x80\x80\x80", Substitutes(6)},
      {"\xED\xA0\x80\xED\xBF\xBF", Substitutes(6)},
      {"\xC0\x80", Substitutes(2)},
      {"\xE0\x80\xAF\xF0\x8F\xBF\xBF", Substitutes(7)},
      {"\xF4\x8F\xBF\xBF\xED\x9F\xBF\xEE\x80\x80", L"\U0010FFFF\uD7FF\uE000"},
  };
  std::wstring wide;
  for (const auto& [bytes, text] : toWide) {
    SCOPED_TRACE(bytes);
    QvStringUtil::ConvertStringToWString(bytes, wide);
    EXPECT_EQ(wide, text);
  }
  std::string narrow;
  QvStringUtil::ConvertWStringToString(
      L"a" + Unit(0x110000) + Unit(0xD800) + Unit(0x7FFFFFFF) + Unit(-1) + L"\U0010FFFF", narrow);
  EXPECT_EQ(narrow, "a????\xF4\x8F\xBF\xBF");
}

// Random texts: bytes decode to scalar values only, and any wide text comes
// back from its narrow form with exactly its non-characters turned into '?'.
TEST(CodePageConversionTest, RandomTextsStayInsideUnicode) {
  const ScopedUserLocale user("C.UTF-8");
  std::mt19937 random(20261123);
  std::wstring wide, back;
  std::string narrow;
  for (int round = 0; round < 2000; ++round) {
    std::string bytes;
    for (int n = random() % 12; n > 0; --n) bytes.push_back(static_cast<char>(random()));
    QvStringUtil::ConvertStringToWString(bytes, wide);
    if (!std::all_of(wide.begin(), wide.end(), IsScalarValue)) ADD_FAILURE() << "bytes " << bytes;

    std::wstring text, expected;
    for (int n = random() % 6; n > 0; --n) {
      // Mostly near the edges of the planes and the surrogates.
      const std::uint32_t edges[] = {0x7F, 0xD7FF, 0xDFFF, 0xFFFF, 0x10FFFF, 0x7FFFFFFF};
      const auto value = static_cast<wchar_t>(edges[random() % 6] + random() % 5 - 2);
      text.push_back(value);
      expected.push_back(IsScalarValue(value) ? value : L'?');
    }
    QvStringUtil::ConvertWStringToString(text, narrow);
    QvStringUtil::ConvertStringToWString(narrow, back);
    if (back != expected) ADD_FAILURE() << "round " << round;
  }
}

// A megabyte of values outside Unicode converts in linear time, in a child
// under an alarm so that a quadratic pass fails instead of stalling the runner.
TEST(CodePageConversionTest, LongRunsOutsideUnicodeConvertInLinearTime) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto convert = [] {
    ::alarm(30);
    const ScopedUserLocale user("C.UTF-8");
    constexpr std::size_t kCount = 1 << 18;
    std::string bytes;
    for (std::size_t i = 0; i < kCount; ++i) bytes += "a\xF4\x90\x80\x80";
    std::wstring wide;
    QvStringUtil::ConvertStringToWString(bytes, wide);
    std::string narrow;
    QvStringUtil::ConvertWStringToString(std::wstring(4 * kCount, L'\x110000'), narrow);
    const bool ok = wide.size() == 5 * kCount && narrow == std::string(4 * kCount, '?') &&
                    std::count(wide.begin(), wide.end(), L'\uFFFD') == 4 * kCount;
    std::exit(ok ? 0 : 1);
  };
  EXPECT_EXIT(convert(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace qvsysbase
