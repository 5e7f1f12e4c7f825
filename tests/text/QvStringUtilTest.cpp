#include <gtest/gtest.h>

#include <list>
#include <locale>
#include <random>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "qvsysbase/QvStringUtil.h"
#include "text/ScopedUserLocale.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

// The case tables are built from the first locale passed, so every test uses this one.
const std::locale kCaseLocale("C.UTF-8");

// One body runs for the narrow and the wide text type; rows are written in ASCII.
template <class S>
class StringUtilTest : public ::testing::Test {
 protected:
  static S T(const std::string& ascii) { return S(ascii.begin(), ascii.end()); }
};
using TextTypes = ::testing::Types<std::string, std::wstring>;
TYPED_TEST_SUITE(StringUtilTest, TextTypes);

// Every function below edits its argument and returns it, so each check
// assigns the row's input first.
TYPED_TEST(StringUtilTest, TrimAmpersandsAndLineBreaks) {
  const std::tuple<const char*, const char*, const char*, const char*> trims[] = {
      {"  \ta b\n ", "\ta b\n", "\ta b\n ", "  \ta b\n"},  // spaces only
      {"   ", "", "", ""},
  };
  TypeParam s;
  for (const auto& [in, trim, left, right] : trims) {
    SCOPED_TRACE(in);
    EXPECT_EQ(QvStringUtil::Trim(s = this->T(in)), this->T(trim));
    EXPECT_EQ(QvStringUtil::TrimLeft(s = this->T(in)), this->T(left));
    EXPECT_EQ(QvStringUtil::TrimRight(s = this->T(in)), this->T(right));
  }
  const auto text = this->T("&Save && R&D&&&&x&");
  EXPECT_EQ(QvStringUtil::RemoveDoubleAmpersands(s = text), this->T("&Save & R&D&x&"));
  EXPECT_EQ(QvStringUtil::AddDoubleAmpersands(s = text), this->T("&&Save && R&&D&&&&x&&"));
  EXPECT_EQ(QvStringUtil::AddDoubleAmpersands(s), this->T("&&Save && R&&D&&&&x&&"));

  // Trimmed first, so only breaks at either end leave a space there.
  EXPECT_EQ(QvStringUtil::RemoveLFCR(s = this->T("  a  \r\n\r\n  b  ")), this->T("a b"));
  EXPECT_EQ(QvStringUtil::RemoveLFCR(s = this->T("\n a\r\n\tb\r")), this->T(" a \tb "));
}

TYPED_TEST(StringUtilTest, ReplacementsOnceAndRepeated) {
  const std::tuple<const char*, const char*, const char*, const char*, const char*> rows[] = {
      // clang-format off
      {"x    y", "  ", " ", "x  y", "x y"},  {"abbb", "ab", "a", "abb", "a"},
      {"aab", "ab", "b", "ab", "ab"},  // a match cannot reach back before the replacement
      {"aa", "a", "a", "aa", "aa"},  {"abc", "", "z", "abc", "abc"},
      // clang-format on
  };
  TypeParam s;
  for (const auto& [in, pat, rep, once, repeated] : rows) {
    SCOPED_TRACE(testing::Message() << in << " " << pat << " -> " << rep);
    const auto pattern = this->T(pat), replacement = this->T(rep);
    EXPECT_EQ(QvStringUtil::ReplacePattern(s = this->T(in), pattern, replacement, -1),
              this->T(once));
    EXPECT_EQ(QvStringUtil::ReplacePatternRec(s = this->T(in), pattern, replacement),
              this->T(repeated));
  }
  EXPECT_EQ(QvStringUtil::ReplacePattern(s = this->T("aaa"), this->T("a"), this->T("aa"), 2),
            this->T("aaaaa"));
  s = this->T("ab");  // pattern and text are one object
  EXPECT_EQ(QvStringUtil::ReplacePattern(s, s, this->T("xyz"), -1), this->T("xyz"));
}

// The two replacement functions against the obvious erase-and-insert model, on
// random texts over a small alphabet so that matches overlap and chain.
TYPED_TEST(StringUtilTest, ReplacementsAgreeWithTheEditInPlaceModel) {
  using S = TypeParam;
  // again: search on from the replacement itself instead of from behind it.
  auto model = [](S s, const S& pattern, const S& replacement, int count, bool again) {
    typename S::size_type p = 0;
    for (int done = 0; (count <= 0 || done < count) && (p = s.find(pattern, p)) != S::npos;
         ++done, p += again ? 0 : replacement.size())
      s.replace(p, pattern.size(), replacement);
    return s;
  };
  const char* pairs[][2] = {
      {"  ", " "}, {"ab", "b"}, {"aba", "a"}, {"ab", "bba"}, {"a", ""}, {"b ", " b"}};
  std::mt19937 random(20240611);
  for (int round = 0, count = -1; round < 300; ++round, count = round % 4 - 1) {
    S text, s;
    for (int n = random() % 41; n > 0; --n) text.push_back("ab "[random() % 3]);
    for (const auto& pair : pairs) {
      const S pattern = this->T(pair[0]), replacement = this->T(pair[1]);
      SCOPED_TRACE(testing::Message() << '"' << std::string(text.begin(), text.end()) << "\" "
                                      << pair[0] << " -> " << pair[1]);
      EXPECT_EQ(QvStringUtil::ReplacePattern(s = text, pattern, replacement, count),
                model(text, pattern, replacement, count, false));
      EXPECT_EQ(QvStringUtil::ReplacePatternRec(s = text, pattern, replacement),
                model(text, pattern, replacement, -1, true));
    }
  }
}

TYPED_TEST(StringUtilTest, SplitAppendsNonEmptyTokens) {
  const std::tuple<const char*, const char*, std::vector<const char*>> rows[] = {
      {",,a b;;c,", " ;,", {"a", "b", "c"}}, {"abc", "", {"abc"}}, {",,,", ",", {}}};
  for (const auto& [text, delimiters, expectedTokens] : rows) {
    SCOPED_TRACE(text);
    std::list<TypeParam> tokens{this->T("kept")}, expected{this->T("kept")};
    QvStringUtil::Split(this->T(text), this->T(delimiters), tokens);
    for (const char* t : expectedTokens) expected.push_back(this->T(t));
    EXPECT_EQ(tokens, expected);
  }
}

TYPED_TEST(StringUtilTest, CaseInsensitiveOrderingAndSearch) {
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

TEST(StringUtilCaseTableTest, EveryUnitComparesThroughItsUpperCase) {
  CheckEveryUnitAgainstItsUpperCase<char>(0xFF);
  CheckEveryUnitAgainstItsUpperCase<wchar_t>(0xFFFF);
  // Beyond U+FFFF characters stand for themselves (Deseret small and capital long I).
  const std::locale& loc = kCaseLocale;
  EXPECT_TRUE(QvStringUtil::CaseInsensitiveInequality(L"\U00010428", L"\U00010400", -1, loc));
  EXPECT_TRUE(
      QvStringUtil::CaseInsensitiveEquality(L"gr\u00fc\u00dfe", L"GR\u00dc\u00dfE", -1, loc));
}

TYPED_TEST(StringUtilTest, PathConversionsAreTextual) {
  const std::tuple<const char*, const char*, const char*> toAbsolute[] = {
      // clang-format off
      {"/data/models/", "../shared/./b.qv", "/data/shared/b.qv"},  {"/data", "/etc//x", "/etc/x"},
      {"/a", "../..", "/"},  // clamped at the root
      {"C:\\Work\\Models", "..\\in.csv", "C:/Work/in.csv"},  {"rel/dir", "../../../x", "../x"},
      {"", "a/./b/..", "a"},
      // clang-format on
  };
  TypeParam result;  // each row overwrites the one before
  for (const auto& [base, path, absolute] : toAbsolute) {
    SCOPED_TRACE(testing::Message() << base << " + " << path);
    QvStringUtil::RelativePathToAbsolutePath(this->T(base), this->T(path), result);
    EXPECT_EQ(result, this->T(absolute));
  }
  const std::tuple<const char*, const char*, const char*> toRelative[] = {
      // clang-format off
      {"/data/models", "/data/shared/b.qv", "../shared/b.qv"},  {"/data/m", "/data/m", "."},
      {"/data/models/x/y", "/data", "../../.."},  {"c:/Work", "C:\\Work\\in.csv", "in.csv"},
      {"C:/Work", "D:/in.csv", "D:/in.csv"},  {"/data", "rel/x", "rel/x"},
      {"../up", "x", "x"},  // no relative form exists
      // clang-format on
  };
  for (const auto& [base, path, relative] : toRelative) {
    SCOPED_TRACE(testing::Message() << path << " from " << base);
    QvStringUtil::AbsolutePathToRelativePath(this->T(base), this->T(path), result);
    EXPECT_EQ(result, this->T(relative));
  }
  TypeParam path = this->T("/a/b/c");  // the result may be one of the arguments
  QvStringUtil::AbsolutePathToRelativePath(this->T("/a"), path, path);
  EXPECT_EQ(path, this->T("b/c"));
}

TEST(StringUtilTrimCommonTest, SharedWholeSegmentsGoFromEitherEnd) {
  using V = std::vector<std::wstring>;
  const std::tuple<V, unsigned, V, V> rows[] = {
      {{L"M.G.x", L"M.G.y"}, 2, {L"G.x", L"G.y"}, {L"M.G.x", L"M.G.y"}},
      {{L"M.Ga.x", L"M.Gb.x"}, 0, {L"Ga.x", L"Gb.x"}, {L"M.Ga", L"M.Gb"}},
      {{L"ab.x", L"a.x"}, 1, {L"ab.x", L"a.x"}, {L"ab", L"a"}},  // "a" is no segment of "ab"
                                                                 // clang-format off
      {{L"a.b.c"}, 1, {L"c"}, {L"a"}},  {{L"a.b", L"a"}, 1, {L"a.b", L"a"}, {L"a.b", L"a"}},
      {{}, 1, {}, {}},
                                                                 // clang-format on
  };
  for (const auto& [in, keep, left, right] : rows) {
    SCOPED_TRACE(testing::Message() << in.size() << " texts, keep " << keep);
    V texts;
    EXPECT_EQ(QvStringUtil::TrimCommonLeft(texts = in, L'.', keep), left);
    EXPECT_EQ(QvStringUtil::TrimCommonRight(texts = in, L'.', keep), right);
  }
}

TEST(StringUtilConversionTest, UserCodePageRoundTripsAndSubstitutes) {
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

TEST(StringUtilNumberTest, TrailingZeroesAndReadingFollowTheUserNotation) {
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

  std::vector<std::vector<CellValue<double>>> matrix(3);
  QvStringUtil::BuildMatrixFromString(L"1\t 2.5 \r\nx\t\n\r-4e1\r\n", matrix);
  const std::vector<std::vector<CellValue<double>>> expected{
      // clang-format off
      {{1.0, true, L"1"}, {2.5, true, L"2.5"}},  {{0.0, false, L"x"}, {0.0, false, L""}},
      {{0.0, false, L""}},  {{-40.0, true, L"-4e1"}},
      // clang-format on
  };
  EXPECT_EQ(matrix, expected);
  QvStringUtil::BuildMatrixFromString(L"", matrix);
  EXPECT_TRUE(matrix.empty());
}

TEST(StringUtilNumberTest, GermanNotationUsesTheComma) {
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
