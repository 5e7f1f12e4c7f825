#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <tuple>

#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "text/BothTextTypes.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

template <class S>
class ReplacementTest : public BothTextTypesTest<S> {};
TYPED_TEST_SUITE(ReplacementTest, TextTypes);

TYPED_TEST(ReplacementTest, ReplacementsOnceAndRepeated) {
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

// A replacement holding the pattern would match again for ever. It is a broken
// contract, refused before the text changes, whether or not the text holds the
// pattern. Each row runs in a child under an alarm, so that an endless loop
// fails the row instead of hanging the runner.
TYPED_TEST(ReplacementTest, RecursiveReplacementRefusesAReplacementHoldingThePattern) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  using S = TypeParam;
  const auto refused = [](const S& text, const S& pattern, const S& replacement) {
    ::alarm(10);
    S s = text;
    try {
      QvStringUtil::ReplacePatternRec(s, pattern, replacement);
    } catch (const AssertionException& e) {
      std::fprintf(stderr,
                   "refused: %s in %s%s",
                   e.getMessage().c_str(),
                   e.getFile().c_str(),
                   s == text ? ", text kept" : ", text changed");
    }
    std::exit(0);
  };
  const char* rows[][3] = {
      {"xaay", "a", "ab"}, {"aa", "a", "ba"}, {"xy", "a", "aa"}, {"ab ab", "ab", "aab"}};
  for (const auto& [text, pattern, replacement] : rows) {
    SCOPED_TRACE(testing::Message() << text << " " << pattern << " -> " << replacement);
    EXPECT_EXIT(refused(this->T(text), this->T(pattern), this->T(replacement)),
                ::testing::ExitedWithCode(0),
                "refused: replacement\\.find\\(pattern\\) == npos in PatternReplacement, "
                "text kept");
  }
}

// The two replacement functions against the obvious erase-and-insert model, on
// random texts over a small alphabet so that matches overlap and chain.
TYPED_TEST(ReplacementTest, ReplacementsAgreeWithTheEditInPlaceModel) {
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

}  // namespace
}  // namespace qvsysbase
