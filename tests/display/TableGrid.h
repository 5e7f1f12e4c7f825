// Test helper: a grid object whose shape, texts and attributes are plain data,
// so that each test builds exactly the grid it needs.
//
// Texts: data cell "r<data row>c<data column>.<sub-cell>", row header
// "row<r>", column header "col<c>", corner "hdr"; a split header adds
// ".<sub-cell>". Cells outside the grid have no text and are not valid points.
// Maps are keyed by whole-grid coordinates, as the cell operations take them.
#ifndef QVSYSBASE_TESTS_DISPLAY_TABLEGRID_H_
#define QVSYSBASE_TESTS_DISPLAY_TABLEGRID_H_

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "qvsysbase/GenericGridObject.h"

namespace qvsysbase::testing_support {

class TableGrid : public GenericGridObject {
 public:
  using Cell = std::pair<unsigned, unsigned>;                // whole-grid row, column
  using SubCell = std::tuple<unsigned, unsigned, unsigned>;  // ... and sub-cell

  unsigned height = 2, width = 3, fixedRows = 1, fixedCols = 1;
  std::vector<unsigned> separators;
  std::map<Cell, SplittingInformation> dataSplits, headerSplits;
  std::map<Cell, unsigned> lengths, borders;
  std::set<Cell> invalid;
  std::map<SubCell, unsigned> colours, backgrounds;  // data cells
  std::map<SubCell, unsigned> headerColours;         // header cells, whole-grid coordinates
  std::set<SubCell> bold, hidden;
  std::map<SubCell, std::wstring> texts;  // data texts replacing the generated ones

  bool IsData(unsigned row, unsigned col) const {
    return row >= fixedRows && row < fixedRows + height && col >= fixedCols &&
           col < fixedCols + width;
  }

  unsigned GetGridHeight(unsigned) const override { return height; }
  unsigned GetGridWidth(unsigned) const override { return width; }
  unsigned GetGridFixedRows(unsigned) const override { return fixedRows; }
  unsigned GetGridFixedCols(unsigned) const override { return fixedCols; }
  void GetSeparators(std::vector<unsigned>& out, unsigned) const override { out = separators; }
  bool IsValidGridPoint(unsigned row, unsigned col, unsigned) const override {
    return IsData(row, col) && !invalid.count({row, col});
  }

  std::wstring GetGridElementText(unsigned row, unsigned col, unsigned, unsigned k) const override {
    if (!IsData(row, col)) return {};
    if (auto it = texts.find({row, col, k}); it != texts.end()) return it->second;
    return L"r" + std::to_wstring(row - fixedRows) + L"c" + std::to_wstring(col - fixedCols) +
           L"." + std::to_wstring(k);
  }
  std::wstring GetVerticalGridHeader(unsigned row, unsigned, unsigned hc,
                                     unsigned k) const override {
    return Header(L"row" + std::to_wstring(row), fixedRows + row, hc, k);
  }
  std::wstring GetHorizontalGridHeader(unsigned col, unsigned, unsigned hr,
                                       unsigned k) const override {
    return Header(L"col" + std::to_wstring(col), hr, fixedCols + col, k);
  }
  std::wstring GetCornerGridHeader(unsigned, unsigned hr, unsigned hc, unsigned k) const override {
    return Header(L"hdr", hr, hc, k);
  }

  bool IsSplitGridCell(unsigned row, unsigned col, unsigned, bool header) const override {
    return (header ? headerSplits : dataSplits).count({row, col}) == 1;
  }
  const SplittingInformation& GetSplitInfo(unsigned row, unsigned col, unsigned view,
                                           bool header) const override {
    const auto& splits = header ? headerSplits : dataSplits;
    auto it = splits.find({row, col});
    return it != splits.end() ? it->second
                              : GenericGridObject::GetSplitInfo(row, col, view, header);
  }
  unsigned CellLength(unsigned row, unsigned col, unsigned, bool) const override {
    return Find(lengths, {row, col}, 1);
  }
  unsigned GetCellBorders(unsigned row, unsigned col, unsigned, unsigned dflt) const override {
    return Find(borders, {row, col}, dflt);
  }
  unsigned GetGridCellColor(unsigned row, unsigned col, unsigned, unsigned k, bool) const override {
    return Find(colours, {row, col, k}, 0);
  }
  unsigned GetGridCellBackgroundColor(unsigned row, unsigned col, unsigned,
                                      unsigned k) const override {
    return Find(backgrounds, {row, col, k}, 68);
  }
  bool IsGridCellBoldface(unsigned row, unsigned col, unsigned, unsigned k) const override {
    return bold.count({row, col, k}) == 1;
  }
  bool GetGridCellVisibility(unsigned row, unsigned col, unsigned, unsigned k,
                             bool) const override {
    return hidden.count({row, col, k}) == 0;
  }
  unsigned GetVerGridHeaderColor(unsigned row, unsigned, unsigned hc, unsigned k,
                                 bool) const override {
    return Find(headerColours, {fixedRows + row, hc, k}, 0);
  }
  unsigned GetHorGridHeaderColor(unsigned col, unsigned, unsigned hr, unsigned k,
                                 bool) const override {
    return Find(headerColours, {hr, fixedCols + col, k}, 0);
  }
  unsigned GetCornerGridHeaderColor(unsigned, unsigned hr, unsigned hc, unsigned k,
                                    bool) const override {
    return Find(headerColours, {hr, hc, k}, 0);
  }
  QvSender* GetSender() const override { return nullptr; }

 private:
  std::wstring Header(std::wstring text, unsigned row, unsigned col, unsigned k) const {
    return headerSplits.count({row, col}) ? text + L"." + std::to_wstring(k) : text;
  }
  template <typename Map>
  static unsigned Find(const Map& map, const typename Map::key_type& key, unsigned dflt) {
    auto it = map.find(key);
    return it != map.end() ? it->second : dflt;
  }
};

}  // namespace qvsysbase::testing_support

#endif  // QVSYSBASE_TESTS_DISPLAY_TABLEGRID_H_
