#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "display/SplitTrees.h"
#include "qvsysbase/SplittingInformation.h"
#include "qvsysbase/qvExcept.h"

namespace qvsysbase {
namespace {

using testing_support::Leaf;
using testing_support::SideBySide;
using testing_support::Stacked;
using Numbers = std::vector<unsigned>;
using Lines = std::vector<std::vector<int>>;

struct ShapeCase {
  const char* name;
  SplittingInformation tree;
  unsigned height, width, size;
  Numbers upper, lower;
  Lines lines;  // GetIndexRangeEx of every line 0 .. height (one past the last)
};

std::vector<ShapeCase> ShapeCases() {
  return {
      {"leaf", Leaf(), 1, 1, 1, {}, {}, {{0}, {-1}}},
      {"side-by-side leaf", Leaf(1), 1, 1, 1, {}, {}, {{0}, {-1}}},
      {"two stacked", Stacked({Leaf(), Leaf()}), 2, 1, 2, {0}, {1}, {{0}, {1}, {}}},
      {"three side by side",
       SideBySide({Leaf(), Leaf(), Leaf()}),
       1,
       3,
       3,
       {},
       {},
       {{0, 1, 2}, {-1, -1, -1}}},
      {"leaf beside a stacked pair",
       SideBySide({Leaf(), Stacked({Leaf(), Leaf()})}),
       2,
       2,
       3,
       {},
       {},
       {{0, 1}, {-1, 2}, {-1}}},
      // A wide row over a tall one: line 1 lists the second row's leaves only,
      // with the numbers they have in the whole tree.
      {"row of three over a stacked pair",
       Stacked({SideBySide({Leaf(), Leaf(), Leaf()}), Stacked({Leaf(), Leaf()})}),
       3,
       3,
       5,
       {0, 1, 2},
       {3, 4},
       {{0, 1, 2}, {3}, {4}, {}}},
      {"stacked over one leaf",
       Stacked({Stacked({Leaf(), Leaf()}), Leaf()}),
       3,
       1,
       3,
       {0, 1},
       {2},
       {{0}, {1}, {2}, {}}},
      {"nested side by side",
       SideBySide({Stacked({Leaf(), SideBySide({Leaf(), Leaf()})}), Leaf()}),
       2,
       3,
       4,
       {},
       {},
       {{0, 3}, {1, 2, -1}, {-1}}},
      {"one child", Stacked({Leaf()}), 1, 1, 1, {0}, {}, {{0}, {}}},
  };
}

TEST(SplittingInformationTest, SizesAndIndexRanges) {
  for (const ShapeCase& c : ShapeCases()) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.tree.getHeight(), c.height);
    EXPECT_EQ(c.tree.getWidth(), c.width);
    EXPECT_EQ(c.tree.getSize(), c.size);
    Numbers all;
    for (unsigned k = 0; k < c.size; ++k) all.push_back(k);
    EXPECT_EQ(c.tree.GetIndexRange(), all);
    EXPECT_EQ(c.tree.GetUpperIndexRange(), c.upper);
    EXPECT_EQ(c.tree.GetLowerIndexRange(), c.lower);
    for (unsigned line = 0; line < c.lines.size(); ++line) {
      SCOPED_TRACE("line " + std::to_string(line));
      EXPECT_EQ(c.tree.GetIndexRangeEx(line), c.lines[line]);
    }
  }
}

// The numbering forms that start elsewhere continue an existing list.
TEST(SplittingInformationTest, NumberingContinuesFromNext) {
  const SplittingInformation tree = SideBySide({Leaf(), Stacked({Leaf(), Leaf()})});
  Numbers all{7};
  EXPECT_EQ(tree.GetIndexRange(10, all), 13u);
  EXPECT_EQ(all, (Numbers{7, 10, 11, 12}));
  std::vector<int> line{-5};
  EXPECT_EQ(tree.GetIndexRangeEx(1, 10, line), 13u);
  EXPECT_EQ(line, (std::vector<int>{-5, -1, 12}));
}

TEST(SplittingInformationTest, TypeTwoOrMoreIsRefused) {
  for (unsigned type : {2u, 3u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(type);
    EXPECT_THROW(SplittingInformation{type}, ConstraintViolationException);
  }
}

TEST(SplittingInformationTest, EqualityComparesShapesNotInnerTypes) {
  const struct {
    const char* name;
    SplittingInformation a, b;
    bool equal;
  } cases[] = {
      {"equal leaves", Leaf(0), Leaf(0), true},
      {"leaves of different types", Leaf(0), Leaf(1), false},
      {"inner types differ", Stacked({Leaf(), Leaf()}), SideBySide({Leaf(), Leaf()}), true},
      {"child counts differ", Stacked({Leaf(), Leaf()}), Stacked({Leaf(), Leaf(), Leaf()}), false},
      {"leaf against a node", Leaf(), Stacked({Leaf()}), false},
      {"deep leaf types differ",
       Stacked({Leaf(), SideBySide({Leaf(0), Leaf(1)})}),
       Stacked({Leaf(), SideBySide({Leaf(0), Leaf(0)})}),
       false},
      {"deep inner types differ",
       Stacked({Leaf(), Stacked({Leaf(), Leaf()})}),
       SideBySide({Leaf(), SideBySide({Leaf(), Leaf()})}),
       true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(SplittingInformation::CompareSplitInfoForEquality(c.a, c.b), c.equal);
    EXPECT_EQ(SplittingInformation::CompareSplitInfoForEquality(c.b, c.a), c.equal);
  }
}

TEST(SplittingInformationTest, CopiesAreDeep) {
  SplittingInformation original = Stacked({Leaf(), Leaf()});
  const SplittingInformation copy = original;
  original.InsertInSplitList(Leaf());
  EXPECT_EQ(copy.getSize(), 2u);
  EXPECT_EQ(original.getSize(), 3u);
}

TEST(SplittingInformationTest, SharedHorizontalCut) {
  SplittingInformation& cut = SplittingInformation::GetHorizontalCut();
  EXPECT_EQ(&cut, &SplittingInformation::GetHorizontalCut());
  EXPECT_EQ(cut.GetSplitType(), 0u);
  EXPECT_TRUE(SplittingInformation::CompareSplitInfoForEquality(cut, Stacked({Leaf(), Leaf()})));
  EXPECT_EQ(cut.GetLowerIndexRange(), Numbers{1});
  EXPECT_EQ(cut.GetIndexRangeEx(1), std::vector<int>{1});

  // A caller that empties it gets the two halves back on the next call, and
  // only while the list is empty.
  cut = SplittingInformation(1);
  EXPECT_EQ(SplittingInformation::GetHorizontalCut().getSize(), 2u);
  EXPECT_EQ(SplittingInformation::GetHorizontalCut().getSize(), 2u);
  EXPECT_EQ(cut.GetSplitType(), 1u);
  cut = Stacked({Leaf(), Leaf()});
}

}  // namespace
}  // namespace qvsysbase
