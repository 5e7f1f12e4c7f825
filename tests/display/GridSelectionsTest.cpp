#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <vector>

#include "qvsysbase/GridSelections.h"

namespace qvsysbase {
namespace {

using Rect = GridSelections::GridSelectionRect;
using Rects = std::vector<Rect>;
using Values = std::vector<unsigned>;
constexpr unsigned kMax = std::numeric_limits<unsigned>::max();

Rect Combined(const GridSelections& sel) {
  Rect r{};
  sel.getCombinedSelectionRectCoord(r.L, r.T, r.R, r.B);
  return r;
}

Values Members(const GridIndexSet& set) { return {set.begin(), set.end()}; }

GridSelections Make(const Rects& rects) {
  GridSelections sel;
  for (const Rect& r : rects) sel.addSelection(r.L, r.T, r.R, r.B);
  return sel;
}

// The plain reading of a selection, one cell, row or column at a time.
struct NaiveSelection {
  Rects rects;
  Rect combined{0, 0, 0, 0};
  std::set<unsigned> rows, cols;
  bool valid = true;

  void Add(const Rect& r) {
    if (rects.empty()) combined = r;
    combined = {std::min(combined.L, r.L),
                std::min(combined.T, r.T),
                std::max(combined.R, r.R),
                std::max(combined.B, r.B)};
    rects.push_back(r);
    for (unsigned row = r.T; row <= r.B; ++row) rows.insert(row);
    for (unsigned col = r.L; col <= r.R; ++col) cols.insert(col);
  }
  bool In(unsigned row, unsigned col) const {
    return std::any_of(rects.begin(), rects.end(), [&](const Rect& r) {
      return r.L <= col && col <= r.R && r.T <= row && row <= r.B;
    });
  }
  bool Trim(unsigned maxHeight, unsigned maxWidth) {
    for (unsigned c = maxWidth; c <= combined.R; ++c) cols.erase(c);
    for (unsigned r = maxHeight; r <= combined.B; ++r) rows.erase(r);
    const unsigned lastRow = maxHeight - 1, lastCol = maxWidth - 1;
    if (lastRow < combined.T || lastCol < combined.L) return *this = {}, true;
    if (lastRow >= combined.B && lastCol >= combined.R) return false;
    combined.B = std::min(combined.B, lastRow), combined.R = std::min(combined.R, lastCol);
    std::erase_if(rects, [&](const Rect& r) { return r.L > lastCol && r.T > lastRow; });
    for (Rect& r : rects) r.R = std::min(r.R, lastCol), r.B = std::min(r.B, lastRow);
    return true;
  }
};

void ExpectSame(const GridSelections& sel, const NaiveSelection& model) {
  ASSERT_EQ(sel.getSelections(), model.rects);
  ASSERT_EQ(Combined(sel), model.combined);
  ASSERT_EQ(sel.getIsValidSelections(), model.valid);
  ASSERT_EQ(Members(sel.getUsedRows()), Values(model.rows.begin(), model.rows.end()));
  ASSERT_EQ(Members(sel.getUsedCols()), Values(model.cols.begin(), model.cols.end()));
  for (unsigned row = 0; row < 16; ++row) {
    ASSERT_EQ(sel.rowUsedInSelections(row), model.rows.count(row) == 1) << row;
    ASSERT_EQ(sel.colUsedInSelections(row), model.cols.count(row) == 1) << row;
    for (unsigned col = 0; col < 16; ++col)
      ASSERT_EQ(sel.inSelections(row, col), model.In(row, col)) << row << ',' << col;
  }
}

// Random adds (some with ends reversed), trims, clears, copies and text round
// trips on a 14 x 14 area, checked against the naive reading after each.
TEST(GridSelectionsTest, AgreesWithTheNaiveSelection) {
  constexpr unsigned kSeed = 4417;
  SCOPED_TRACE(::testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);
  std::uniform_int_distribution<unsigned> coord(0, 13), op(0, 19);
  GridSelections sel;
  NaiveSelection model;
  for (int step = 0; step < 3000; ++step) {
    SCOPED_TRACE(::testing::Message() << "step " << step);
    const unsigned kind = op(random), a = coord(random), b = coord(random);
    if (kind < 12) {
      const Rect r{a, b, std::max(a, coord(random)), std::max(b, coord(random))};
      const Rect add = kind == 0 ? Rect{r.R, r.B, r.L, r.T} : r;
      sel.addSelection(add.L, add.T, add.R, add.B), model.Add(add);
    } else if (kind < 15) {
      ASSERT_EQ(sel.adjustSelectionsToWithinMaxGridHeightWidth(a, b), model.Trim(a, b));
    } else if (kind == 15) {
      sel.clear(), model = {};
    } else if (kind == 16) {
      sel.setIsValidSelections(false), model.valid = false;
    } else if (kind == 17) {
      // A copy is rebuilt from the list: after a trim its sets follow the list.
      const std::unique_ptr<GridSelections> clone(sel.clone());
      sel = *clone;
      NaiveSelection rebuilt;
      for (const Rect& r : model.rects) rebuilt.Add(r);
      rebuilt.valid = model.valid, model = rebuilt;
    } else {
      std::wstringstream text;
      text << sel;
      GridSelections back;
      text >> back;
      ASSERT_EQ(back.getSelections(), model.rects);
      ASSERT_TRUE(back.getIsValidSelections());
    }
    ExpectSame(sel, model);
  }
}

TEST(GridSelectionsTest, TrimmingKeepsTheRuleAsItStands) {
  const struct {
    const char* name;
    Rects before;
    unsigned height, width;
    bool trimmed;
    Rects after;
    Rect combined;
    Values rows, cols;
  } cases[] = {
      // clang-format off
      {"to 5 x 5", {{0, 0, 9, 9}}, 5, 5, true, {{0, 0, 4, 4}}, {0, 0, 4, 4}, {0, 1, 2, 3, 4},
       {0, 1, 2, 3, 4}},
      {"already inside", {{0, 0, 2, 1}}, 20, 20, false, {{0, 0, 2, 1}}, {0, 0, 2, 1}, {0, 1},
       {0, 1, 2}},
      {"right of the limit kept reversed", {{0, 0, 1, 1}, {8, 1, 9, 2}}, 5, 5, true,
       {{0, 0, 1, 1}, {8, 1, 4, 2}}, {0, 0, 4, 2}, {0, 1, 2}, {0, 1}},
      {"wholly outside", {{8, 1, 9, 2}}, 5, 5, true, {}, {0, 0, 0, 0}, {}, {}},
      {"right and below removed", {{0, 0, 1, 1}, {8, 8, 9, 9}}, 5, 5, true, {{0, 0, 1, 1}},
       {0, 0, 4, 4}, {0, 1}, {0, 1}},
      // The limits wrap to 4294967295: nothing is trimmed, but the used rows
      // and columns up to the combined end are gone.
      {"to 0 x 0", {{1, 2, 3, 4}}, 0, 0, false, {{1, 2, 3, 4}}, {1, 2, 3, 4}, {}, {}},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    GridSelections sel = Make(c.before);
    EXPECT_EQ(sel.adjustSelectionsToWithinMaxGridHeightWidth(c.height, c.width), c.trimmed);
    EXPECT_EQ(sel.getSelections(), c.after);
    EXPECT_EQ(Combined(sel), c.combined);
    EXPECT_EQ(Members(sel.getUsedRows()), c.rows);
    EXPECT_EQ(Members(sel.getUsedCols()), c.cols);
  }
}

TEST(GridSelectionsTest, CompareIsATotalOrder) {
  const struct {
    const char* name;
    Rects a, b;
    bool aValid;
    int expected;
  } cases[] = {
      // clang-format off
      {"equal", {{1, 2, 3, 4}}, {{1, 2, 3, 4}}, true, 0},
      {"invalid below valid", {{1, 2, 3, 4}}, {{1, 2, 3, 4}}, false, -1},
      {"validity before the rectangles", {{0, 0, 0, 0}}, {{9, 9, 9, 9}}, false, -1},
      {"top before left", {{0, 5, 9, 9}}, {{5, 4, 9, 9}}, true, 1},
      {"left before bottom", {{1, 0, 5, 1}}, {{2, 0, 5, 0}}, true, -1},
      {"bottom before right", {{0, 0, 9, 1}}, {{0, 0, 1, 2}}, true, -1},
      {"combined before count", {{0, 0, 5, 5}}, {{0, 0, 1, 1}, {1, 1, 4, 4}}, true, 1},
      {"count before rectangles", {{0, 0, 5, 5}, {0, 0, 5, 5}}, {{0, 0, 5, 5}}, true, 1},
      {"rectangles in order", {{0, 0, 5, 5}, {1, 1, 1, 1}}, {{0, 0, 5, 5}, {1, 1, 2, 1}}, true, -1},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    GridSelections a = Make(c.a);
    const GridSelections b = Make(c.b);
    a.setIsValidSelections(c.aValid);
    EXPECT_EQ(a.compare(b), c.expected);
    EXPECT_EQ(b.compare(a), -c.expected);
    EXPECT_EQ(a == b, c.expected == 0);
  }
}

// On the full coordinate range the used sets hold one run each, and a trim
// erases runs instead of walking four billion numbers.
TEST(GridSelectionsTest, FullCoordinateRangeIsCheap) {
  GridSelections sel = Make({{0, 0, kMax, kMax}, {5, 5, 6, 6}});
  GridSelections copy;
  copy = sel;
  const GridSelections& self = copy;
  copy = self;
  EXPECT_EQ(copy, sel);
  EXPECT_EQ(sel.getUsedRows().size(), std::uint64_t{1} << 32);
  EXPECT_EQ(sel.getUsedCols().runs().size(), 1u);
  EXPECT_TRUE(sel.inSelections(kMax, kMax));
  EXPECT_TRUE(sel.adjustSelectionsToWithinMaxGridHeightWidth(1000, 1000));
  EXPECT_EQ(Combined(sel), (Rect{0, 0, 999, 999}));
  EXPECT_EQ(sel.getUsedRows().size(), 1000u);
  EXPECT_FALSE(copy == sel);
}

}  // namespace
}  // namespace qvsysbase
