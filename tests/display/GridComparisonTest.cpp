#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "display/SplitTrees.h"
#include "display/TableGrid.h"

namespace qvsysbase {
namespace {

using namespace testing_support;
using D = GenericGridObject::GridDifference;
using Differences = std::vector<D>;

D View(unsigned property) { return {D::kScopeGrid, property, 0, 0, 0, 0, 0}; }
D Cell(unsigned area, unsigned property, unsigned row, unsigned col, unsigned subCell = 0) {
  return {D::kScopeCell, 0, area, property, row, col, subCell};
}

// 3 x 4 data cells under one fixed row, right of two fixed columns (so data
// cell (r, c) is whole-grid (1 + r, 2 + c)), a separator, a split data cell and
// a split column header.
TableGrid BaseGrid() {
  TableGrid g;
  g.height = 3, g.width = 4, g.fixedRows = 1, g.fixedCols = 2;
  g.separators = {1};
  g.dataSplits.insert_or_assign({2, 3}, SideBySide({Leaf(), Stacked({Leaf(), Leaf()})}));
  g.headerSplits.insert_or_assign({0, 3}, SideBySide({Leaf(), Leaf()}));
  return g;
}

Differences AllDifferences(const TableGrid& a, const TableGrid& b) {
  Differences out{View(9)};  // must be cleared
  const bool equal = GenericGridObject::CompareGridsForEqualityEx(a, 0, b, 0, out);
  EXPECT_EQ(equal, out.empty());
  return out;
}

TEST(GridComparisonTest, EqualGridsHaveNoDifference) {
  const TableGrid a = BaseGrid(), b = BaseGrid();
  EXPECT_EQ(AllDifferences(a, b), Differences{});
  D first = View(7);
  EXPECT_TRUE(GenericGridObject::CompareGridsForEquality(a, 0, b, 1, &first));
  EXPECT_EQ(first, View(7));
}

// One change to the second grid each; every difference it causes, in order.
TEST(GridComparisonTest, ListsEachDifferenceOnce) {
  const struct {
    const char* name;
    std::function<void(TableGrid& a, TableGrid& b)> change;
    Differences expected;
  } cases[] = {
      // clang-format off
      {"height", [](TableGrid&, TableGrid& b) { b.height = 5; }, {View(D::kHeight)}},
      {"width and separators in order", [](TableGrid&, TableGrid& b) {
         b.width = 2, b.separators = {};
       }, {View(D::kWidth), View(D::kSeparators)}},
      // The smaller fixed counts bound the header walks, and each grid's own
      // place its data cells, whose texts match (the splits, kept in
      // whole-grid places, would move).
      {"fixed rows and columns", [](TableGrid& a, TableGrid& b) {
         for (TableGrid* g : {&a, &b}) g->dataSplits.clear(), g->headerSplits.clear();
         b.fixedRows = 2, b.fixedCols = 1;
       }, {View(D::kFixedRows), View(D::kFixedCols)}},
      {"text before colour", [](TableGrid&, TableGrid& b) {
         b.texts[{3, 5, 0}] = L"x", b.colours[{3, 5, 0}] = 2, b.colours[{3, 4, 0}] = 2;
       }, {Cell(D::kDataCell, D::kColour, 3, 4), Cell(D::kDataCell, D::kText, 3, 5)}},
      {"visibility of a sub-cell", [](TableGrid&, TableGrid& b) { b.hidden.insert({2, 3, 2}); },
       {Cell(D::kDataCell, D::kVisibility, 2, 3, 2)}},
      {"valid only in the first, then compared", [](TableGrid&, TableGrid& b) {
         b.invalid.insert({1, 2}), b.texts[{1, 2, 0}] = L"x";
       }, {Cell(D::kDataCell, D::kValidity, 1, 2), Cell(D::kDataCell, D::kText, 1, 2)}},
      {"valid only in the second, not compared further", [](TableGrid& a, TableGrid& b) {
         a.invalid.insert({1, 2}), b.texts[{1, 2, 0}] = L"x";
       }, {Cell(D::kDataCell, D::kValidity, 1, 2)}},
      {"invalid in both", [](TableGrid& a, TableGrid& b) {
         a.invalid.insert({1, 2}), b.invalid.insert({1, 2}), b.texts[{1, 2, 0}] = L"x";
       }, {}},
      {"borders", [](TableGrid&, TableGrid& b) { b.borders[{3, 3}] = 4; },
       {Cell(D::kDataCell, D::kShape, 3, 3)}},
      {"split tree, then the sub-cells both have", [](TableGrid&, TableGrid& b) {
         b.dataSplits.insert_or_assign({2, 3}, Stacked({Leaf(), Leaf()}));
         b.texts[{2, 3, 1}] = L"x", b.texts[{2, 3, 2}] = L"y";
       }, {Cell(D::kDataCell, D::kShape, 2, 3), Cell(D::kDataCell, D::kText, 2, 3, 1)}},
      {"inner node cut the other way", [](TableGrid&, TableGrid& b) {
         b.dataSplits.insert_or_assign({2, 3}, SideBySide({Leaf(), SideBySide({Leaf(), Leaf()})}));
       }, {}},
      {"long cell compared once", [](TableGrid& a, TableGrid& b) {
         a.lengths[{2, 2}] = b.lengths[{2, 2}] = 2, b.texts[{2, 3, 0}] = L"covered";
       }, {}},
      {"long cell in one grid only", [](TableGrid& a, TableGrid&) { a.lengths[{2, 4}] = 9; },
       {Cell(D::kDataCell, D::kShape, 2, 4)}},
      {"areas in order", [](TableGrid&, TableGrid& b) {
         b.headerColours[{2, 1, 0}] = 3;  // row header of data row 1, header column 1
         b.headerColours[{0, 5, 0}] = 3;  // column header of data column 3
         b.headerColours[{0, 0, 0}] = 3;  // corner
         b.headerSplits.erase({0, 3}), b.colours[{1, 2, 0}] = 3;
       }, {Cell(D::kCorner, D::kColour, 0, 0), Cell(D::kRowHeader, D::kColour, 2, 1),
           Cell(D::kColumnHeader, D::kShape, 0, 3), Cell(D::kColumnHeader, D::kText, 0, 3),
           Cell(D::kColumnHeader, D::kColour, 0, 5), Cell(D::kDataCell, D::kColour, 1, 2)}},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TableGrid a = BaseGrid(), b = BaseGrid();
    c.change(a, b);
    EXPECT_EQ(AllDifferences(a, b), c.expected);
  }
}

TEST(GridComparisonTest, StopsAtTheFirstDifference) {
  TableGrid a = BaseGrid(), b = BaseGrid();
  b.height = 1, b.texts[{1, 2, 0}] = L"x";
  D first{};
  EXPECT_FALSE(GenericGridObject::CompareGridsForEquality(a, 0, b, 0, &first));
  EXPECT_EQ(first, View(D::kHeight));
  EXPECT_FALSE(GenericGridObject::CompareGridsForEquality(a, 0, b, 0, nullptr));
  Differences out;
  EXPECT_FALSE(GenericGridObject::CompareGridsForEqualityImp(a, 0, b, 0, out, true));
  EXPECT_EQ(out, Differences{View(D::kHeight)});
  EXPECT_EQ(AllDifferences(a, b),
            (Differences{View(D::kHeight), Cell(D::kDataCell, D::kText, 1, 2)}));
}

}  // namespace
}  // namespace qvsysbase
