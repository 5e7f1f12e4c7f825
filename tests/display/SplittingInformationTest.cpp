#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "display/SplitTrees.h"
#include "qvsysbase/SplittingInformation.h"
#include "qvsysbase/qvExcept.h"

namespace qvsysbase {
namespace {

using namespace testing_support;
using Numbers = std::vector<unsigned>;

TEST(SplittingInformationTest, SizesAndIndexRanges) {
  const struct {
    const char* name;
    SplittingInformation tree;
    unsigned height, width, size;
    Numbers upper, lower;
    std::vector<std::vector<int>> lines;  // GetIndexRangeEx of lines 0 .. height
  } cases[] = {
      // clang-format off
      {"leaf", Leaf(), 1, 1, 1, {}, {}, {{0}, {-1}}},
      {"side-by-side leaf", Leaf(1), 1, 1, 1, {}, {}, {{0}, {-1}}},
      {"two stacked", Stacked({Leaf(), Leaf()}), 2, 1, 2, {0}, {1}, {{0}, {1}, {}}},
      {"three side by side", SideBySide({Leaf(), Leaf(), Leaf()}), 1, 3, 3, {}, {},
       {{0, 1, 2}, {-1, -1, -1}}},
      {"leaf beside a stacked pair", SideBySide({Leaf(), Stacked({Leaf(), Leaf()})}), 2, 2, 3,
       {}, {}, {{0, 1}, {-1, 2}, {-1}}},
      // Line 1 lists the lower part's leaves only, numbered as in the whole tree.
      {"row of three over a stacked pair",
       Stacked({SideBySide({Leaf(), Leaf(), Leaf()}), Stacked({Leaf(), Leaf()})}), 3, 3, 5,
       {0, 1, 2}, {3, 4}, {{0, 1, 2}, {3}, {4}, {}}},
      {"nested side by side", SideBySide({Stacked({Leaf(), SideBySide({Leaf(), Leaf()})}), Leaf()}),
       2, 3, 4, {}, {}, {{0, 3}, {1, 2, -1}, {-1}}},
      {"one child", Stacked({Leaf()}), 1, 1, 1, {0}, {}, {{0}, {}}},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.tree.getHeight(), c.height);
    EXPECT_EQ(c.tree.getWidth(), c.width);
    EXPECT_EQ(c.tree.getSize(), c.size);
    Numbers all(c.size);
    for (unsigned k = 0; k < c.size; ++k) all[k] = k;
    EXPECT_EQ(c.tree.GetIndexRange(), all);
    EXPECT_EQ(c.tree.GetUpperIndexRange(), c.upper);
    EXPECT_EQ(c.tree.GetLowerIndexRange(), c.lower);
    for (unsigned line = 0; line < c.lines.size(); ++line) {
      EXPECT_EQ(c.tree.GetIndexRangeEx(line), c.lines[line]) << "line " << line;
    }
  }
  // The forms that start elsewhere append and return the next number.
  const SplittingInformation tree = SideBySide({Leaf(), Stacked({Leaf(), Leaf()})});
  Numbers all{7};
  std::vector<int> line{-5};
  EXPECT_EQ(tree.GetIndexRange(10, all), 13u);
  EXPECT_EQ(tree.GetIndexRangeEx(1, 10, line), 13u);
  EXPECT_EQ(all, (Numbers{7, 10, 11, 12}));
  EXPECT_EQ(line, (std::vector<int>{-5, -1, 12}));
}

TEST(SplittingInformationTest, TypeTwoOrMoreIsRefused) {
  for (unsigned type : {2u, 3u, 0xFFFFFFFFu}) {
    EXPECT_THROW(SplittingInformation{type}, ConstraintViolationException) << type;
  }
}

TEST(SplittingInformationTest, EqualityComparesShapesNotInnerTypes) {
  const struct {
    const char* name;
    SplittingInformation a, b;
    bool equal;
  } cases[] = {
      // clang-format off
      {"leaves of one type", Leaf(0), Leaf(0), true},
      {"leaves of two types", Leaf(0), Leaf(1), false},
      {"inner types differ", Stacked({Leaf(), Leaf()}), SideBySide({Leaf(), Leaf()}), true},
      {"child counts differ", Stacked({Leaf(), Leaf()}), Stacked({Leaf(), Leaf(), Leaf()}), false},
      {"leaf against a node", Leaf(), Stacked({Leaf()}), false},
      {"deep leaf types differ", Stacked({Leaf(), SideBySide({Leaf(0), Leaf(1)})}),
       Stacked({Leaf(), SideBySide({Leaf(0), Leaf(0)})}), false},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(SplittingInformation::CompareSplitInfoForEquality(c.a, c.b), c.equal);
    EXPECT_EQ(SplittingInformation::CompareSplitInfoForEquality(c.b, c.a), c.equal);
  }
}

TEST(SplittingInformationTest, SharedHorizontalCut) {
  SplittingInformation& cut = SplittingInformation::GetHorizontalCut();
  EXPECT_EQ(&cut, &SplittingInformation::GetHorizontalCut());
  EXPECT_EQ(cut.GetSplitType(), 0u);
  EXPECT_TRUE(SplittingInformation::CompareSplitInfoForEquality(cut, Stacked({Leaf(), Leaf()})));
  EXPECT_EQ(cut.GetLowerIndexRange(), Numbers{1});
  EXPECT_EQ(cut.GetIndexRangeEx(1), std::vector<int>{1});
  // Emptied by a caller, it gets its two halves back, once.
  cut = SplittingInformation(1);
  EXPECT_EQ(SplittingInformation::GetHorizontalCut().getSize(), 2u);
  EXPECT_EQ(SplittingInformation::GetHorizontalCut().getSize(), 2u);
  EXPECT_EQ(cut.GetSplitType(), 1u);
  cut = Stacked({Leaf(), Leaf()});
}

}  // namespace
}  // namespace qvsysbase
