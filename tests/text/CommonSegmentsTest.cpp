#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "qvsysbase/QvStringUtil.h"

namespace qvsysbase {
namespace {

TEST(CommonSegmentsTest, SharedWholeSegmentsGoFromEitherEnd) {
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

}  // namespace
}  // namespace qvsysbase
