#include <gtest/gtest.h>

#include <list>
#include <locale>
#include <random>
#include <string>
#include <vector>

#include "qvsysbase/QvStringUtil.h"
#include "text/ScopedUserLocale.h"

namespace qvsysbase {
namespace {

using testing_support::IsLocaleInstalled;
using testing_support::kGermanLocale;
using testing_support::kGermanMissing;
using testing_support::ScopedUserLocale;

// The case tables are built from the first locale passed, so every test uses this one.
const std::locale& CaseLocale() {
  static const std::locale loc("C.UTF-8");
  return loc;
}

// One body runs for the narrow and the wide text type; rows are written in ASCII.
template <class S>
class StringUtilTest : public ::testing::Test {
 protected:
  static S T(const std::string& ascii) { return S(ascii.begin(), ascii.end()); }
};
using TextTypes = ::testing::Types<std::string, std::wstring>;
TYPED_TEST_SUITE(StringUtilTest, TextTypes);

TYPED_TEST(StringUtilTest, TrimRemovesSpacesOnly) {
  const struct {
    const char *in, *trim, *left, *right;
  } rows[] = {
      {"  a b  ", "a b", "a b  ", "  a b"},
      {"   ", "", "", ""},
      {"", "", "", ""},
      {"\ta ", "\ta", "\ta ", "\ta"},
      {" x\n", "x\n", "x\n", " x\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    auto s = this->T(row.in);
    EXPECT_EQ(QvStringUtil::Trim(s), this->T(row.trim));
    s = this->T(row.in);
    EXPECT_EQ(QvStringUtil::TrimLeft(s), this->T(row.left));
    s = this->T(row.in);
    EXPECT_EQ(QvStringUtil::TrimRight(s), this->T(row.right));
  }
}

TYPED_TEST(StringUtilTest, AmpersandRunsCollapseAndLoneOnesDouble) {
  const struct {
    const char *in, *removed, *added;
  } rows[] = {
      {"Save && Exit", "Save & Exit", "Save && Exit"},
      {"a&&&&b", "a&b", "a&&&&b"},
      {"R&D", "R&D", "R&&D"},
      {"&a&", "&a&", "&&a&&"},
      {"&", "&", "&&"},
      {"", "", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    auto s = this->T(row.in);
    EXPECT_EQ(QvStringUtil::RemoveDoubleAmpersands(s), this->T(row.removed));
    s = this->T(row.in);
    EXPECT_EQ(QvStringUtil::AddDoubleAmpersands(s), this->T(row.added));
    EXPECT_EQ(QvStringUtil::AddDoubleAmpersands(s), this->T(row.added));  // idempotent
  }
}

TYPED_TEST(StringUtilTest, RemoveLFCRMakesOneLine) {
  const struct {
    const char *in, *expected;
  } rows[] = {
      {"a\r\nb", "a b"},
      {"a\n", "a "},  // trimmed before the break became a space
      {"\n a", " a"},
      {"  a  \r\n\r\n  b  ", "a b"},
      {"a\tb", "a\tb"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    auto s = this->T(row.in);
    EXPECT_EQ(QvStringUtil::RemoveLFCR(s), this->T(row.expected));
  }
}

TYPED_TEST(StringUtilTest, ReplacePatternNeverSearchesInsertedText) {
  const struct {
    const char *in, *pattern, *replacement;
    int count;
    const char* expected;
  } rows[] = {
      {"aaa", "a", "aa", -1, "aaaaaa"},
      {"aaa", "a", "aa", 2, "aaaaa"},
      {"aaa", "a", "aa", 0, "aaaaaa"},
      {"x    y", "  ", " ", -1, "x  y"},
      {"abcabc", "bc", "", -1, "aa"},
      {"abc", "", "z", -1, "abc"},
      {"", "a", "b", -1, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    auto s = this->T(row.in);
    EXPECT_EQ(
        QvStringUtil::ReplacePattern(s, this->T(row.pattern), this->T(row.replacement), row.count),
        this->T(row.expected));
  }
  auto s = this->T("ab");
  EXPECT_EQ(QvStringUtil::ReplacePattern(s, s, this->T("xyz"), -1), this->T("xyz"));
}

TYPED_TEST(StringUtilTest, ReplacePatternRecSearchesFromEachReplacement) {
  const struct {
    const char *in, *pattern, *replacement, *expected;
  } rows[] = {
      {"x    y", "  ", " ", "x y"},
      {"aab", "ab", "b", "ab"},  // the match cannot reach back before the replacement
      {"abbb", "ab", "a", "a"},
      {"aa", "a", "a", "aa"},
      {"abc", "", "z", "abc"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    auto s = this->T(row.in);
    EXPECT_EQ(QvStringUtil::ReplacePatternRec(s, this->T(row.pattern), this->T(row.replacement)),
              this->T(row.expected));
  }
}

// The two replacement functions against the obvious erase-and-insert model, on
// random texts over a small alphabet so that matches overlap and chain.
TYPED_TEST(StringUtilTest, ReplacementsAgreeWithTheEditInPlaceModel) {
  using S = TypeParam;
  auto modelOnce = [](S s, const S& pattern, const S& replacement, int count) {
    typename S::size_type p = 0;
    for (int done = 0; (count <= 0 || done < count) && (p = s.find(pattern, p)) != S::npos;
         ++done, p += replacement.size()) {
      s.replace(p, pattern.size(), replacement);
    }
    return s;
  };
  auto modelRec = [](S s, const S& pattern, const S& replacement) {
    for (typename S::size_type p = 0; (p = s.find(pattern, p)) != S::npos;) {
      s.replace(p, pattern.size(), replacement);
    }
    return s;
  };
  const struct {
    const char *pattern, *replacement;
  } pairs[] = {{"  ", " "}, {"ab", "b"}, {"aba", "a"}, {"ab", "bba"}, {"a", ""}, {"b ", " b"}};
  const unsigned seed = 20240611;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> letter(0, 2);
  std::uniform_int_distribution<int> length(0, 40);
  for (int round = 0; round < 300; ++round) {
    S text;
    for (int n = length(random); n > 0; --n)
      text.push_back(static_cast<typename S::value_type>("ab "[letter(random)]));
    for (const auto& pair : pairs) {
      const S pattern = this->T(pair.pattern);
      const S replacement = this->T(pair.replacement);
      SCOPED_TRACE(testing::Message() << '"' << std::string(text.begin(), text.end()) << "\" "
                                      << pair.pattern << " -> " << pair.replacement);
      S s = text;
      EXPECT_EQ(QvStringUtil::ReplacePattern(s, pattern, replacement, round % 4 - 1),
                modelOnce(text, pattern, replacement, round % 4 - 1));
      s = text;
      EXPECT_EQ(QvStringUtil::ReplacePatternRec(s, pattern, replacement),
                modelRec(text, pattern, replacement));
    }
  }
}

TYPED_TEST(StringUtilTest, SplitAppendsNonEmptyTokens) {
  const struct {
    const char *text, *delimiters;
    std::vector<const char*> tokens;
  } rows[] = {
      {",,a,,b,", ",", {"a", "b"}},
      {"a b;c", " ;", {"a", "b", "c"}},
      {"abc", "", {"abc"}},
      {",,,", ",", {}},
      {"", ",", {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    std::list<TypeParam> tokens{this->T("kept")};
    QvStringUtil::Split(this->T(row.text), this->T(row.delimiters), tokens);
    std::list<TypeParam> expected{this->T("kept")};
    for (const char* t : row.tokens) expected.push_back(this->T(t));
    EXPECT_EQ(tokens, expected);
  }
}

TYPED_TEST(StringUtilTest, CaseInsensitiveOrderingAndSearch) {
  const std::locale& loc = CaseLocale();
  const struct {
    const char *a, *b;
    int n;
    bool less, equal;
  } rows[] = {
      {"Abc", "aBC", -1, false, true},
      {"Abx", "aBy", 2, false, true},
      {"Abx", "aBy", 3, true, false},
      {"abc", "ABD", -1, true, false},
      {"b", "A", -1, false, false},
      {"ab", "AB ", -1, true, false},
      {"ab", "abc", 3, true, false},
      {"", "", 0, false, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.a << " / " << row.b << " n=" << row.n);
    const auto a = this->T(row.a);
    const auto b = this->T(row.b);
    EXPECT_EQ(QvStringUtil::CaseInsensitiveCompare(a, b, row.n, loc), row.less);
    EXPECT_EQ(QvStringUtil::CaseInsensitiveEquality(a, b, row.n, loc), row.equal);
    EXPECT_EQ(QvStringUtil::CaseInsensitiveInequality(a, b, row.n, loc), !row.equal);
  }
  const auto T = [this](const char* s) { return this->T(s); };
  EXPECT_TRUE(QvStringUtil::CaseInsensitiveDualCompare(T("a"), T("B"), T("z"), T("a"), -1, loc));
  EXPECT_FALSE(QvStringUtil::CaseInsensitiveDualCompare(T("B"), T("a"), T("a"), T("z"), -1, loc));
  EXPECT_TRUE(QvStringUtil::CaseInsensitiveDualCompare(T("A"), T("a"), T("a"), T("Z"), -1, loc));
  EXPECT_FALSE(QvStringUtil::CaseInsensitiveDualCompare(T("A"), T("a"), T("Z"), T("a"), -1, loc));

  EXPECT_EQ(QvStringUtil::CaseInsensitiveFind(T("Hello World"), T("WORLD"), loc), 6U);
  EXPECT_EQ(QvStringUtil::CaseInsensitiveFind(T("Hello"), T("lo"), loc), 3U);
  EXPECT_EQ(QvStringUtil::CaseInsensitiveFind(T("Hello"), T("x"), loc), TypeParam::npos);
  EXPECT_EQ(QvStringUtil::CaseInsensitiveFind(T("Hi"), T("hi!"), loc), TypeParam::npos);
  EXPECT_EQ(QvStringUtil::CaseInsensitiveFind(T("Hi"), T(""), loc), 0U);
}

TEST(StringUtilCaseTableTest, EveryWideUnitComparesThroughItsUpperCase) {
  const std::locale& loc = CaseLocale();
  const auto& ctype = std::use_facet<std::ctype<wchar_t>>(loc);
  for (int i = 0; i <= 0xFFFF; ++i) {
    const auto c = static_cast<wchar_t>(i);
    const auto next = static_cast<wchar_t>(i + 1);
    const std::wstring one(1, c), other(1, next), upper(1, ctype.toupper(c));
    if (!QvStringUtil::CaseInsensitiveEquality(one, upper, -1, loc) ||
        (i < 0xFFFF && QvStringUtil::CaseInsensitiveCompare(one, other, -1, loc) !=
                           (ctype.toupper(c) < ctype.toupper(next)))) {
      ADD_FAILURE() << "U+" << std::hex << i;
    }
  }
  // Beyond U+FFFF characters stand for themselves (Deseret small and capital long I).
  EXPECT_TRUE(QvStringUtil::CaseInsensitiveInequality(L"\U00010428", L"\U00010400", -1, loc));
  EXPECT_TRUE(
      QvStringUtil::CaseInsensitiveEquality(L"gr\u00fc\u00dfe", L"GR\u00dc\u00dfE", -1, loc));
}

TEST(StringUtilCaseTableTest, EveryNarrowByteComparesThroughItsUpperCaseAsUnsigned) {
  const std::locale& loc = CaseLocale();
  const auto& ctype = std::use_facet<std::ctype<char>>(loc);
  auto key = [&ctype](int c) {
    return static_cast<unsigned char>(ctype.toupper(static_cast<char>(c)));
  };
  for (int c = 0; c <= 255; ++c) {
    SCOPED_TRACE(c);
    const std::string one(1, static_cast<char>(c)), upper(1, static_cast<char>(key(c)));
    EXPECT_TRUE(QvStringUtil::CaseInsensitiveEquality(one, upper, -1, loc));
    if (c < 255) {
      const std::string other(1, static_cast<char>(c + 1));
      EXPECT_EQ(QvStringUtil::CaseInsensitiveCompare(one, other, -1, loc), key(c) < key(c + 1));
    }
  }
}

TYPED_TEST(StringUtilTest, PathConversionsAreTextual) {
  const struct {
    const char *base, *path, *absolute;
  } toAbsolute[] = {
      {"/data/models", "runs/a.qv", "/data/models/runs/a.qv"},
      {"/data/models/", "../shared/./b.qv", "/data/shared/b.qv"},
      {"/data", "/etc//x", "/etc/x"},
      {"/", "../../x", "/x"},
      {"C:\\Work\\Models", "..\\in.csv", "C:/Work/in.csv"},
      {"rel/dir", "../../../x", "../x"},
      {"", "a/./b/..", "a"},
      {"/a", "..", "/"},
  };
  for (const auto& row : toAbsolute) {
    SCOPED_TRACE(testing::Message() << row.base << " + " << row.path);
    TypeParam result = this->T("junk");
    QvStringUtil::RelativePathToAbsolutePath(this->T(row.base), this->T(row.path), result);
    EXPECT_EQ(result, this->T(row.absolute));
  }
  const struct {
    const char *base, *path, *relative;
  } toRelative[] = {
      {"/data/models", "/data/models/runs/a.qv", "runs/a.qv"},
      {"/data/models", "/data/shared/b.qv", "../shared/b.qv"},
      {"/data/models", "/data/models", "."},
      {"/data/models/x/y", "/data", "../../.."},
      {"c:/Work", "C:\\Work\\in.csv", "in.csv"},
      {"C:/Work", "D:/in.csv", "D:/in.csv"},
      {"/data", "rel/x", "rel/x"},
      {"../up", "x", "x"},  // no relative form exists
  };
  for (const auto& row : toRelative) {
    SCOPED_TRACE(testing::Message() << row.path << " from " << row.base);
    TypeParam result = this->T("junk");
    QvStringUtil::AbsolutePathToRelativePath(this->T(row.base), this->T(row.path), result);
    EXPECT_EQ(result, this->T(row.relative));
  }
  // The result may be one of the arguments.
  TypeParam path = this->T("/a/b/c");
  QvStringUtil::AbsolutePathToRelativePath(this->T("/a"), path, path);
  EXPECT_EQ(path, this->T("b/c"));
}

TEST(StringUtilTrimCommonTest, SharedWholeSegmentsGoFromEitherEnd) {
  using V = std::vector<std::wstring>;
  const struct {
    V in;
    unsigned keep;
    V left, right;
  } rows[] = {
      {{L"M.G.x", L"M.G.y"}, 1, {L"x", L"y"}, {L"M.G.x", L"M.G.y"}},
      {{L"M.G.x", L"M.G.y"}, 2, {L"G.x", L"G.y"}, {L"M.G.x", L"M.G.y"}},
      {{L"M.Ga.x", L"M.Gb.x"}, 0, {L"Ga.x", L"Gb.x"}, {L"M.Ga", L"M.Gb"}},
      {{L"ab.x", L"a.x"}, 1, {L"ab.x", L"a.x"}, {L"ab", L"a"}},  // "a" is no segment of "ab"
      {{L"a.b.c"}, 1, {L"c"}, {L"a"}},
      {{L"a.b", L"a"}, 1, {L"a.b", L"a"}, {L"a.b", L"a"}},
      {{}, 1, {}, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.in.size() << " texts, keep " << row.keep);
    V texts = row.in;
    EXPECT_EQ(QvStringUtil::TrimCommonLeft(texts, L'.', row.keep), row.left);
    texts = row.in;
    EXPECT_EQ(QvStringUtil::TrimCommonRight(texts, L'.', row.keep), row.right);
  }
}

TEST(StringUtilConversionTest, UserCodePageRoundTripsAndSubstitutes) {
  const ScopedUserLocale user("C.UTF-8");
  const struct {
    std::string narrow;
    std::wstring wide;
  } rows[] = {
      {"Gr\xC3\xBC\xC3\x9F"
       "e",
       L"Gr\u00fc\u00dfe"},
      {"", L""},
      {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
      {"\xF0\x90\x90\xA8", L"\U00010428"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.narrow);
    std::wstring wide = L"old";
    QvStringUtil::ConvertStringToWString(row.narrow, wide);
    EXPECT_EQ(wide, row.wide);
    std::string narrow = "old";
    QvStringUtil::ConvertWStringToString(row.wide, narrow);
    EXPECT_EQ(narrow, row.narrow);
  }
  std::wstring wide;
  QvStringUtil::ConvertStringToWString(
      "a\xFF"
      "b\xC3",
      wide);  // a bad byte, a torn tail
  EXPECT_EQ(wide, L"a\uFFFDb\uFFFD");
}

TEST(StringUtilConversionTest, CharactersOutsideTheCodePageBecomeQuestionMarks) {
  const ScopedUserLocale user("C");
  std::string narrow;
  QvStringUtil::ConvertWStringToString(L"a\u00e4b", narrow);
  EXPECT_EQ(narrow, "a?b");
}

TEST(StringUtilNumberTest, TrailingZeroesAndReadingFollowTheUserNotation) {
  const ScopedUserLocale user("C.UTF-8");
  const struct {
    const wchar_t *in, *trimmed;
    bool readable;
    double value;
  } rows[] = {
      {L"2.500", L"2.5", true, 2.5},
      {L"5.000", L"5", true, 5.0},
      {L"-3.000e+05", L"-3e+05", true, -3e5},
      {L" 1.10 ", L" 1.1 ", true, 1.1},
      {L"+.250", L"+.25", true, 0.25},
      {L".000", L".0", true, 0.0},
      {L"7.", L"7", true, 7.0},
      {L"100", L"100", true, 100.0},
      {L"1,000", L"1,000", false, 0.0},
      {L"Model 1.0", L"Model 1.0", false, 0.0},
      {L"1.0e", L"1.0e", false, 0.0},
      {L".", L".", false, 0.0},
      {L"", L"", false, 0.0},
      {L"1e999", L"1e999", false, 0.0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    std::wstring s = row.in;
    EXPECT_EQ(QvStringUtil::RemoveTrailingZeroes(s), row.trimmed);
    double value = -42.0;
    EXPECT_EQ(QvStringUtil::ReadValueFromString(row.in, value), row.readable);
    EXPECT_EQ(value, row.readable ? row.value : -42.0);
  }
  double value = 1.0;
  EXPECT_FALSE(QvStringUtil::ReadValueFromString(nullptr, value));
}

TEST(StringUtilNumberTest, GermanNotationUsesTheComma) {
  if (!IsLocaleInstalled(kGermanLocale)) GTEST_SKIP() << kGermanMissing;
  const ScopedUserLocale user(kGermanLocale);
  std::wstring s = L"2,500";
  EXPECT_EQ(QvStringUtil::RemoveTrailingZeroes(s), L"2,5");
  s = L"2.500";  // a thousands grouping here, not a fraction
  EXPECT_EQ(QvStringUtil::RemoveTrailingZeroes(s), L"2.500");
  double value = 0.0;
  EXPECT_TRUE(QvStringUtil::ReadValueFromString(L"-1,25", value));
  EXPECT_EQ(value, -1.25);
}

TEST(StringUtilNumberTest, MatrixFromClipboardText) {
  const ScopedUserLocale user("C.UTF-8");
  std::vector<std::vector<CellValue<double>>> matrix(3);
  QvStringUtil::BuildMatrixFromString(L"1\t 2.5 \r\nx\t\n\r-4e1\r\n", matrix);
  const std::vector<std::vector<CellValue<double>>> expected{
      {{1.0, true, L"1"}, {2.5, true, L"2.5"}},
      {{0.0, false, L"x"}, {0.0, false, L""}},
      {{0.0, false, L""}},
      {{-40.0, true, L"-4e1"}},
  };
  EXPECT_EQ(matrix, expected);
  QvStringUtil::BuildMatrixFromString(L"", matrix);
  EXPECT_TRUE(matrix.empty());
}

}  // namespace
}  // namespace qvsysbase
