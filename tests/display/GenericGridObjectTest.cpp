#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "display/SplitTrees.h"
#include "display/TableGrid.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

// Overrides only what it must.
struct BareGrid : GenericGridObject {
  QvSender* GetSender() const override { return nullptr; }
};

// Records what the base forwards to.
struct ForwardingGrid : BareGrid {
  std::vector<std::wstring> calls;
  std::wstring GetGridElementText(unsigned r, unsigned c, unsigned v, unsigned k) const override {
    return L"text " + std::to_wstring(r) + L"," + std::to_wstring(c) + L"," + std::to_wstring(v) +
           L"," + std::to_wstring(k);
  }
  void RequestCellAction(unsigned a, unsigned b, unsigned c, unsigned d) override {
    calls.push_back(L"action " + std::to_wstring(a + 10 * b + 100 * c + 1000 * d));
  }
  void SetGridElementValue(unsigned r, unsigned c, unsigned v, const wchar_t* text,
                           unsigned how) override {
    calls.push_back(L"set " + std::to_wstring(r + 10 * c + 100 * v + 1000 * how) + L" " + text);
  }
};

TEST(GenericGridObjectTest, BareGridHasHarmlessDefaults) {
  BareGrid g;
  // One view of 1 x 1 cells under one fixed row and column, no valid point.
  EXPECT_EQ(std::make_tuple(g.GetViewNumber(),
                            g.GetView(3),
                            g.GetGridHeight(0),
                            g.GetGridWidth(0),
                            g.GetGridFixedRows(0),
                            g.GetGridFixedCols(0)),
            std::make_tuple(1u, 1u, 1u, 1u, 1u, 1u));
  EXPECT_FALSE(g.IsValidGridPoint(0, 0, 0));
  EXPECT_EQ(g.GetGridElementText(0, 0, 0, 0) + g.GetVerticalGridHeader(0, 0, 0, 0) +
                g.GetHorizontalGridHeader(0, 0, 0, 0) + g.GetCornerGridHeader(0, 0, 0, 0),
            L"");
  // Visible, plain colours on background 68, borders as the caller's default.
  EXPECT_TRUE(g.GetGridCellVisibility(0, 0, 0, 0, false) &&
              g.GetVerGridCellVisibility(0, 0, 0, 0, false) &&
              g.GetHorGridCellVisibility(0, 0, 0, 0, false) &&
              g.GetCornerGridCellVisibility(0, 0, 0, 0, false));
  EXPECT_EQ(g.GetGridCellColor(0, 0, 0, 0, false) + g.GetVerGridHeaderColor(0, 0, 0, 0, false) +
                g.GetHorGridHeaderColor(0, 0, 0, 0, false) +
                g.GetCornerGridHeaderColor(0, 0, 0, 0, false) + g.getLongCellLocation(0),
            0u);
  EXPECT_EQ(g.GetGridCellBackgroundColor(0, 0, 0, 0), 68u);
  EXPECT_EQ(g.GetCellBorders(1, 2, 0, 13), 13u);
  // No title, nothing to sort, paste or change; sums allowed.
  EXPECT_FALSE(g.CanChangeGridTitle() || g.CanChangeFooterTitle() ||
               g.IsGridCellBoldface(0, 0, 0, 0) || g.IsSplitGridCell(0, 0, 0, false) ||
               g.IsAlternativeCopying(0) || g.IsSelectionGrid(0) || g.CanGridSortRows(0) ||
               g.IsDescending(0) || g.PasteTextSelection(L"1", 0, 0, 0, 0, 0));
  EXPECT_TRUE(g.CanSumSelectedCells(0));
  // Out-parameters are left alone.
  std::vector<std::wstring> lines{L"kept"};
  std::vector<unsigned> separators{4};
  double width = 2.5;
  std::wstring text = L"kept";
  g.GetGridTitle(lines, 0), g.GetGridFooter(lines, 0), g.GetSeparators(separators, 0);
  EXPECT_FALSE(g.GetFastDefaultCellWidth(0, width));
  g.CopyTextSelectionAlt(0, 0, 0, 0, 0, text, true, true);
  EXPECT_EQ(std::make_tuple(lines.size(), separators.size(), width, text),
            std::make_tuple(1u, 1u, 2.5, std::wstring(L"kept")));
  // Unsplit cells are 1 x 1 with one sub-cell; the split tree is the shared cut.
  EXPECT_EQ(&g.GetSplitInfo(0, 0, 0, true), &SplittingInformation::GetHorizontalCut());
  EXPECT_EQ(g.CellLength(0, 0, 0, false) + g.getCellWidth(0, 0, 0, false) +
                g.getCellHeight(0, 0, 0, false) + g.getCellSize(0, 0, 0, false),
            4u);
}

TEST(GenericGridObjectTest, BaseForwardsThroughTheVirtualTable) {
  ForwardingGrid g;
  EXPECT_EQ(g.GetGridEditText(1, 2, 3), L"text 1,2,3,0");
  g.RequestCellActionEx(GridSelections(), 1, 2, 3, 4);
  std::wstring message = L"untouched";
  EXPECT_FALSE(g.SetGridElementValueEx(1, 2, 3, L"x", 4, message));
  EXPECT_EQ(message, L"untouched");
  EXPECT_EQ(g.calls, (std::vector<std::wstring>{L"action 4321", L"set 4321 x"}));
  for (unsigned third : {0u, 1u, 2u}) {
    int dRow = 9, dCol = 9;
    g.GetActiveCellDelta(5, 5, third, 5, dRow, dCol);
    EXPECT_EQ(dRow, third == 1 ? 1 : 0);
    EXPECT_EQ(dCol, 0);
  }
}

TEST(GenericGridObjectTest, SplitGeometryFollowsTheTree) {
  TableGrid g;
  g.dataSplits.insert_or_assign({1, 2}, SideBySide({Leaf(), Stacked({Leaf(), Leaf()})}));
  g.headerSplits.insert_or_assign({1, 2}, Stacked({Leaf(), Leaf(), Leaf()}));
  EXPECT_EQ(g.getCellWidth(1, 2, 0, false), 2u);
  EXPECT_EQ(g.getCellHeight(1, 2, 0, false), 2u);
  EXPECT_EQ(g.getCellSize(1, 2, 0, false), 3u);
  EXPECT_EQ(g.getCellWidth(1, 2, 0, true), 1u);
  EXPECT_EQ(g.getCellHeight(1, 2, 0, true), 3u);
  EXPECT_EQ(g.getCellSize(1, 1, 0, false), 1u);
}

// A split cell of width 20 starts at data column 2 (whole-grid column 3): the
// search looks at most 15 columns to its left.
TEST(GenericGridObjectTest, PartOfSplitCellLooksFifteenColumnsLeft) {
  TableGrid g;
  g.width = 40;
  g.dataSplits.insert_or_assign(
      {1, 3},
      SideBySide({Leaf(), Leaf(), Leaf(), Leaf(), Leaf(), Leaf(), Leaf(), Leaf(), Leaf(), Leaf(),
                  Leaf(), Leaf(), Leaf(), Leaf(), Leaf(), Leaf(), Leaf(), Leaf(), Leaf(), Leaf()}));
  const struct {
    unsigned col;
    bool part;
    unsigned startCol, offset;
  } cases[] = {
      {2, true, 2, 0},
      {3, true, 2, 1},
      {17, true, 2, 15},
      {18, false, 3, 15},  // within the split's width, but 16 columns away
      {1, false, 0, 1},
      {0, false, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.col);
    unsigned startCol = 99, offset = 99;
    EXPECT_EQ(g.IsPartOfSplitGridCell(1, c.col, 0, false, startCol, offset), c.part);
    EXPECT_EQ(startCol, c.startCol);
    EXPECT_EQ(offset, c.offset);
  }
  g.dataSplits.insert_or_assign({1, 3}, SideBySide({Leaf(), Leaf()}));
  unsigned startCol = 0, offset = 0;
  EXPECT_FALSE(g.IsPartOfSplitGridCell(1, 4, 0, false, startCol, offset));  // past its width
  EXPECT_EQ(offset, 2u);
}

TEST(GenericGridObjectTest, SeparatorsShiftDisplayColumns) {
  const struct {
    std::vector<unsigned> separators;
    unsigned fixedCols;
    std::vector<unsigned> global;  // GetGlobalColumn of data columns 0, 1, ...
    std::vector<unsigned> data;    // GetDataIndex of display columns 0, 1, ...
  } cases[] = {
      {{}, 1, {1, 2, 3}, {0, 1, 2}},
      {{2}, 0, {0, 1, 2, 4, 5}, {0, 1, 2, 2, 3, 4}},
      {{2, 7}, 1, {1, 2, 3, 5, 6, 7, 8, 9, 11}, {0, 1, 2, 2, 3, 4, 5, 6, 7, 7, 8}},
      {{0, 0}, 2, {2, 5, 6}, {0, 0, 0, 1, 2}},
  };
  for (const auto& c : cases) {
    TableGrid g;
    g.separators = c.separators;
    g.fixedCols = c.fixedCols;
    for (unsigned col = 0; col < c.global.size(); ++col) {
      SCOPED_TRACE("data column " + std::to_string(col));
      EXPECT_EQ(g.GetGlobalColumn(col, 0), c.global[col]);
    }
    for (unsigned index = 0; index < c.data.size(); ++index) {
      SCOPED_TRACE("display column " + std::to_string(index));
      EXPECT_EQ(g.GetDataIndex(index, 0), c.data[index]);
    }
  }
}

#if defined(__GNUC__) && defined(__x86_64__)
// Under the Itanium C++ ABI a pointer to a virtual member function holds its
// byte offset in the virtual table plus one; the destructor takes the first
// two slots. Application modules built against the table depend on its order.
template <typename F>
std::uintptr_t SlotOf(F member) {
  std::uintptr_t word = 0;
  std::memcpy(&word, &member, sizeof word);
  return (word - 1) / sizeof(void*);
}

TEST(GenericGridObjectTest, VirtualTableKeepsItsSlotOrder) {
  using G = GenericGridObject;
  // clang-format off
  const std::uintptr_t slots[] = {
      SlotOf(&G::GetViewNumber), SlotOf(&G::GetView), SlotOf(&G::GetGridHeight),
      SlotOf(&G::GetGridWidth), SlotOf(&G::IsValidGridPoint), SlotOf(&G::GetGridElementText),
      SlotOf(&G::GetGridTitle), SlotOf(&G::SetGridTitle), SlotOf(&G::CanChangeGridTitle),
      SlotOf(&G::GetGridFooter), SlotOf(&G::SetGridFooter), SlotOf(&G::CanChangeFooterTitle),
      SlotOf(&G::GetGridCellVisibility), SlotOf(&G::IsSplitGridCell), SlotOf(&G::CellLength),
      SlotOf(&G::getLongCellLocation), SlotOf(&G::GetSplitInfo), SlotOf(&G::GetGridCellColor),
      SlotOf(&G::GetGridCellBackgroundColor), SlotOf(&G::IsGridCellBoldface),
      SlotOf(&G::GetGridEditText), SlotOf(&G::GetVerticalGridHeader),
      SlotOf(&G::GetVerGridHeaderColor), SlotOf(&G::GetVerGridCellVisibility),
      SlotOf(&G::GetHorizontalGridHeader), SlotOf(&G::GetHorGridHeaderColor),
      SlotOf(&G::GetHorGridCellVisibility), SlotOf(&G::GetCornerGridHeader),
      SlotOf(&G::GetCornerGridHeaderColor), SlotOf(&G::GetCornerGridCellVisibility),
      SlotOf(&G::GetSeparators), SlotOf(&G::RequestCellAction), SlotOf(&G::RequestCellActionEx),
      SlotOf(&G::GetActiveCellDelta), SlotOf(&G::SetGridElementValue),
      SlotOf(&G::SetGridElementValueEx), SlotOf(&G::SetGridElementMultiValues),
      SlotOf(&G::GetGridFixedRows), SlotOf(&G::GetGridFixedCols), SlotOf(&G::GetCellBorders),
      SlotOf(&G::CopyAllTextSelections), SlotOf(&G::IsAlternativeCopying),
      SlotOf(&G::CopyTextSelectionAlt), SlotOf(&G::getCellWidth), SlotOf(&G::getCellHeight),
      SlotOf(&G::getCellSize), SlotOf(&G::IsSelectionGrid), SlotOf(&G::PasteTextSelection),
      SlotOf(&G::CanGridSortRows), SlotOf(&G::SortAscending), SlotOf(&G::SortDescending),
      SlotOf(&G::IsDescending), SlotOf(&G::GetFastDefaultCellWidth), SlotOf(&G::SetViewDefaults),
      SlotOf(&G::CanSumSelectedCells), SlotOf(&G::GetSender),
  };
  // clang-format on
  for (std::size_t i = 0; i < std::size(slots); ++i) {
    EXPECT_EQ(slots[i], i + 2) << "operation " << i + 2 << " of the table";
  }
}
#endif

}  // namespace
}  // namespace qvsysbase
