#include <gtest/gtest.h>

#include <list>
#include <string>
#include <tuple>
#include <vector>

#include "qvsysbase/QvStringUtil.h"
#include "text/BothTextTypes.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

template <class S>
class EditingTest : public BothTextTypesTest<S> {};
TYPED_TEST_SUITE(EditingTest, TextTypes);

// Every function below edits its argument and returns it, so each check
// assigns the row's input first.
TYPED_TEST(EditingTest, TrimAmpersandsAndLineBreaks) {
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

TYPED_TEST(EditingTest, SplitAppendsNonEmptyTokens) {
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

}  // namespace
}  // namespace qvsysbase
