#include <gtest/gtest.h>

#include <locale>
#include <string>
#include <tuple>
#include <type_traits>

#include "qvsysbase/QvStringUtil.h"
#include "text/BothTextTypes.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

// The case tables are built from the first locale passed, so every test uses this one.
const std::locale kCaseLocale("C.UTF-8");

template <class S>
class CaseTest : public BothTextTypesTest<S> {};
TYPED_TEST_SUITE(CaseTest, TextTypes);

TYPED_TEST(CaseTest, CaseInsensitiveOrderingAndSearch) {
  const std::locale& loc = kCaseLocale;
  const std::tuple<const char*, const char*, int, bool, bool> rows[] = {
      // clang-format off
      {"Abc", "aBC", -1, false, true}, {"Abx", "aBy", 2, false, true}, {"b", "A", -1, false, false},
      {"Abx", "aBy", 3, true, false}, {"ab", "AB ", -1, true, false}, {"ab", "abc", 3, true, false},
      {"", "", 0, false, true},
      // clang-format on
  };
  for (const auto& [x, y, n, less, equal] : rows) {
    SCOPED_TRACE(testing::Message() << x << " / " << y << " n=" << n);
    const auto a = this->T(x), b = this->T(y);
    EXPECT_EQ(QvStringUtil::CaseInsensitiveCompare(a, b, n, loc), less);
    EXPECT_EQ(QvStringUtil::CaseInsensitiveEquality(a, b, n, loc), equal);
    EXPECT_EQ(QvStringUtil::CaseInsensitiveInequality(a, b, n, loc), !equal);
  }
  const auto T = [this](const char* s) { return this->T(s); };
  EXPECT_TRUE(QvStringUtil::CaseInsensitiveDualCompare(T("a"), T("B"), T("z"), T("a"), -1, loc));
  EXPECT_FALSE(QvStringUtil::CaseInsensitiveDualCompare(T("B"), T("a"), T("a"), T("z"), -1, loc));
  EXPECT_TRUE(QvStringUtil::CaseInsensitiveDualCompare(T("A"), T("a"), T("a"), T("Z"), -1, loc));
  EXPECT_FALSE(QvStringUtil::CaseInsensitiveDualCompare(T("A"), T("a"), T("Z"), T("a"), -1, loc));

  EXPECT_EQ(QvStringUtil::CaseInsensitiveFind(T("Hello World"), T("WORLD"), loc), 6U);
  EXPECT_EQ(QvStringUtil::CaseInsensitiveFind(T("Hello"), T("x"), loc), TypeParam::npos);
  EXPECT_EQ(QvStringUtil::CaseInsensitiveFind(T("Hi"), T("hi!"), loc), TypeParam::npos);
  EXPECT_EQ(QvStringUtil::CaseInsensitiveFind(T("Hi"), T(""), loc), 0U);
}

// Every code unit up to `last` equals its upper case and orders by it, as unsigned.
template <class C>
void CheckEveryUnitAgainstItsUpperCase(int last) {
  const auto& ctype = std::use_facet<std::ctype<C>>(kCaseLocale);
  auto key = [&ctype](int c) {
    return static_cast<std::make_unsigned_t<C>>(ctype.toupper(static_cast<C>(c)));
  };
  for (int c = 0; c <= last; ++c) {
    const std::basic_string<C> one(1, C(c)), upper(1, C(key(c))), next(1, C(c + 1));
    if (!QvStringUtil::CaseInsensitiveEquality(one, upper, -1, kCaseLocale) ||
        (c < last &&
         QvStringUtil::CaseInsensitiveCompare(one, next, -1, kCaseLocale) != (key(c) < key(c + 1))))
      ADD_FAILURE() << "unit " << c;
  }
}

TEST(CaseTableTest, EveryUnitComparesThroughItsUpperCase) {
  CheckEveryUnitAgainstItsUpperCase<char>(0xFF);
  CheckEveryUnitAgainstItsUpperCase<wchar_t>(0xFFFF);
  // Beyond U+FFFF characters stand for themselves (Deseret small and capital long I).
  const std::locale& loc = kCaseLocale;
  EXPECT_TRUE(QvStringUtil::CaseInsensitiveInequality(L"\U00010428", L"\U00010400", -1, loc));
  EXPECT_TRUE(
      QvStringUtil::CaseInsensitiveEquality(L"gr\u00fc\u00dfe", L"GR\u00dc\u00dfE", -1, loc));
}

}  // namespace
}  // namespace qvsysbase
