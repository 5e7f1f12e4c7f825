// The base behaviours of the grid object: constants, empty texts and no-ops,
// so that a derived class overrides only what differs, and the helpers that
// map between data, display and whole-grid columns. Nothing here throws.
#include "qvsysbase/GenericGridObject.h"

#include <cstdint>

#include "display/GridClipboardFormat.h"

namespace qvsysbase {

namespace {
// How far left IsPartOfSplitGridCell looks for the start of a split cell; a
// split cell is never wider than this in practice, and the bound keeps the
// search short.
constexpr unsigned kSplitSearchColumns = 15;
}  // namespace

GenericGridObject::~GenericGridObject() = default;

unsigned GenericGridObject::GetViewNumber() const { return 1; }
unsigned GenericGridObject::GetView(unsigned) const { return 1; }
unsigned GenericGridObject::GetGridHeight(unsigned) const { return 1; }
unsigned GenericGridObject::GetGridWidth(unsigned) const { return 1; }
bool GenericGridObject::IsValidGridPoint(unsigned, unsigned, unsigned) const { return false; }

std::wstring GenericGridObject::GetGridElementText(unsigned, unsigned, unsigned, unsigned) const {
  return {};
}
void GenericGridObject::GetGridTitle(std::vector<std::wstring>&, unsigned) const {}
void GenericGridObject::SetGridTitle(const std::vector<std::wstring>&, unsigned) {}
bool GenericGridObject::CanChangeGridTitle() const { return false; }
void GenericGridObject::GetGridFooter(std::vector<std::wstring>&, unsigned) const {}
void GenericGridObject::SetGridFooter(const std::vector<std::wstring>&, unsigned) {}
bool GenericGridObject::CanChangeFooterTitle() const { return false; }
bool GenericGridObject::GetGridCellVisibility(unsigned, unsigned, unsigned, unsigned, bool) const {
  return true;
}

bool GenericGridObject::IsSplitGridCell(unsigned, unsigned, unsigned, bool) const { return false; }
unsigned GenericGridObject::CellLength(unsigned, unsigned, unsigned, bool) const { return 1; }
unsigned GenericGridObject::getLongCellLocation(unsigned) const { return 0; }
const SplittingInformation& GenericGridObject::GetSplitInfo(unsigned, unsigned, unsigned,
                                                            bool) const {
  return SplittingInformation::GetHorizontalCut();
}

unsigned GenericGridObject::GetGridCellColor(unsigned, unsigned, unsigned, unsigned, bool) const {
  return 0;
}
unsigned GenericGridObject::GetGridCellBackgroundColor(unsigned, unsigned, unsigned,
                                                       unsigned) const {
  return clipboard_format::kPlainBackground;
}
bool GenericGridObject::IsGridCellBoldface(unsigned, unsigned, unsigned, unsigned) const {
  return false;
}
std::wstring GenericGridObject::GetGridEditText(unsigned row, unsigned col, unsigned view) const {
  return GetGridElementText(row, col, view, 0);
}

std::wstring GenericGridObject::GetVerticalGridHeader(unsigned, unsigned, unsigned,
                                                      unsigned) const {
  return {};
}
unsigned GenericGridObject::GetVerGridHeaderColor(unsigned, unsigned, unsigned, unsigned,
                                                  bool) const {
  return 0;
}
bool GenericGridObject::GetVerGridCellVisibility(unsigned, unsigned, unsigned, unsigned,
                                                 bool) const {
  return true;
}
std::wstring GenericGridObject::GetHorizontalGridHeader(unsigned, unsigned, unsigned,
                                                        unsigned) const {
  return {};
}
unsigned GenericGridObject::GetHorGridHeaderColor(unsigned, unsigned, unsigned, unsigned,
                                                  bool) const {
  return 0;
}
bool GenericGridObject::GetHorGridCellVisibility(unsigned, unsigned, unsigned, unsigned,
                                                 bool) const {
  return true;
}
std::wstring GenericGridObject::GetCornerGridHeader(unsigned, unsigned, unsigned, unsigned) const {
  return {};
}
unsigned GenericGridObject::GetCornerGridHeaderColor(unsigned, unsigned, unsigned, unsigned,
                                                     bool) const {
  return 0;
}
bool GenericGridObject::GetCornerGridCellVisibility(unsigned, unsigned, unsigned, unsigned,
                                                    bool) const {
  return true;
}
void GenericGridObject::GetSeparators(std::vector<unsigned>&, unsigned) const {}

void GenericGridObject::RequestCellAction(unsigned, unsigned, unsigned, unsigned) {}
void GenericGridObject::RequestCellActionEx(const GridSelections&, unsigned a, unsigned b,
                                            unsigned c, unsigned d) {
  RequestCellAction(a, b, c, d);
}
void GenericGridObject::GetActiveCellDelta(unsigned, unsigned, unsigned third, unsigned, int& dRow,
                                           int& dCol) {
  dRow = third == 1 ? 1 : 0;
  dCol = 0;
}
void GenericGridObject::SetGridElementValue(unsigned, unsigned, unsigned, const wchar_t*,
                                            unsigned) {}
bool GenericGridObject::SetGridElementValueEx(unsigned row, unsigned col, unsigned view,
                                              const wchar_t* text, unsigned how, std::wstring&) {
  SetGridElementValue(row, col, view, text, how);
  return false;
}
void GenericGridObject::SetGridElementMultiValues(unsigned, const std::vector<unsigned>&,
                                                  const wchar_t*, unsigned) {}

unsigned GenericGridObject::GetGridFixedRows(unsigned) const { return 1; }
unsigned GenericGridObject::GetGridFixedCols(unsigned) const { return 1; }
unsigned GenericGridObject::GetCellBorders(unsigned, unsigned, unsigned,
                                           unsigned defaultBorders) const {
  return defaultBorders;
}

bool GenericGridObject::IsAlternativeCopying(unsigned) const { return false; }
void GenericGridObject::CopyTextSelectionAlt(unsigned, unsigned, unsigned, unsigned, unsigned,
                                             std::wstring&, bool, bool) const {}

unsigned GenericGridObject::getCellWidth(unsigned row, unsigned col, unsigned view,
                                         bool flag) const {
  return IsSplitGridCell(row, col, view, flag) ? GetSplitInfo(row, col, view, flag).getWidth() : 1;
}
unsigned GenericGridObject::getCellHeight(unsigned row, unsigned col, unsigned view,
                                          bool flag) const {
  return IsSplitGridCell(row, col, view, flag) ? GetSplitInfo(row, col, view, flag).getHeight() : 1;
}
// The number of entries of the tree's index range is its number of leaves.
unsigned GenericGridObject::getCellSize(unsigned row, unsigned col, unsigned view,
                                        bool flag) const {
  return IsSplitGridCell(row, col, view, flag) ? GetSplitInfo(row, col, view, flag).getSize() : 1;
}

bool GenericGridObject::IsSelectionGrid(unsigned) const { return false; }
bool GenericGridObject::PasteTextSelection(const std::wstring&, unsigned, unsigned, unsigned,
                                           unsigned, unsigned) {
  return false;
}
bool GenericGridObject::CanGridSortRows(unsigned) const { return false; }
void GenericGridObject::SortAscending(unsigned) {}
void GenericGridObject::SortDescending(unsigned) {}
bool GenericGridObject::IsDescending(unsigned) const { return false; }
bool GenericGridObject::GetFastDefaultCellWidth(unsigned, double&) const { return false; }
void GenericGridObject::SetViewDefaults() {}
bool GenericGridObject::CanSumSelectedCells(unsigned) const { return true; }

bool GenericGridObject::IsPartOfSplitGridCell(unsigned row, unsigned col, unsigned view, bool flag,
                                              unsigned& startCol, unsigned& offset) const {
  const unsigned fixedCols = GetGridFixedCols(view);
  offset = 0;
  startCol = col;
  while (!IsSplitGridCell(row, fixedCols + startCol, view, flag)) {
    if (offset == kSplitSearchColumns || startCol == 0) return false;
    --startCol;
    ++offset;
  }
  return offset < GetSplitInfo(row, fixedCols + startCol, view, flag).getWidth();
}

unsigned GenericGridObject::GetDataIndex(unsigned index, unsigned view) const {
  std::vector<unsigned> separators;
  GetSeparators(separators, view);
  // Separator i is display column separators[i] + i + 1; each one at or left of
  // `index` shifts it one place right of its data column.
  unsigned i = 0;
  while (i < separators.size() && std::uint64_t{separators[i]} + i + 1 <= index) ++i;
  return index - i;
}

unsigned GenericGridObject::GetGlobalColumn(unsigned col, unsigned view) const {
  const unsigned fixedCols = GetGridFixedCols(view);
  std::vector<unsigned> separators;
  GetSeparators(separators, view);
  unsigned before = 0;
  while (before < separators.size() && separators[before] < col) ++before;
  return col + fixedCols + before;
}

}  // namespace qvsysbase
