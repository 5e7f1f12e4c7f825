// How the library's own walks over a view (the comparison, the clipboard
// writer) address a cell of each of the view's four areas.
#ifndef QVSYSBASE_SRC_DISPLAY_GRIDCELLACCESS_H_
#define QVSYSBASE_SRC_DISPLAY_GRIDCELLACCESS_H_

#include <string>

#include "qvsysbase/GenericGridObject.h"

namespace qvsysbase {

// The areas, numbered as GridDifference numbers them.
enum GridArea : unsigned {
  kCornerArea = GenericGridObject::GridDifference::kCorner,
  kRowHeaderArea = GenericGridObject::GridDifference::kRowHeader,
  kColumnHeaderArea = GenericGridObject::GridDifference::kColumnHeader,
  kDataArea = GenericGridObject::GridDifference::kDataCell,
};

inline bool IsHeaderArea(GridArea area) { return area != kDataArea; }
// The corner and the column headers make up the header rows.
inline bool IsHeaderRowArea(GridArea area) {
  return area == kCornerArea || area == kColumnHeaderArea;
}

// One view of a grid object. A cell is (area, i, j): `i` counts header rows in
// the corner and column headers and data rows elsewhere; `j` counts header
// columns in the corner and row headers and data columns elsewhere. Header
// texts, colours and visibility go to the header operations in their own
// argument orders; everything else takes whole-grid coordinates.
struct GridCellAccess {
  const GenericGridObject& grid;
  unsigned view;
  unsigned fixedRows;
  unsigned fixedCols;

  GridCellAccess(const GenericGridObject& g, unsigned v)
      : grid(g), view(v), fixedRows(g.GetGridFixedRows(v)), fixedCols(g.GetGridFixedCols(v)) {}

  unsigned Row(GridArea area, unsigned i) const {
    return area == kRowHeaderArea || area == kDataArea ? fixedRows + i : i;
  }
  unsigned Col(GridArea area, unsigned j) const {
    return area == kColumnHeaderArea || area == kDataArea ? fixedCols + j : j;
  }

  bool IsValid(GridArea area, unsigned i, unsigned j) const {
    return grid.IsValidGridPoint(Row(area, i), Col(area, j), view);
  }
  bool IsSplit(GridArea area, unsigned i, unsigned j) const {
    return grid.IsSplitGridCell(Row(area, i), Col(area, j), view, IsHeaderArea(area));
  }
  const SplittingInformation& Split(GridArea area, unsigned i, unsigned j) const {
    return grid.GetSplitInfo(Row(area, i), Col(area, j), view, IsHeaderArea(area));
  }
  unsigned Length(GridArea area, unsigned i, unsigned j) const {
    return grid.CellLength(Row(area, i), Col(area, j), view, IsHeaderArea(area));
  }
  unsigned SubCells(GridArea area, unsigned i, unsigned j) const {
    return grid.getCellSize(Row(area, i), Col(area, j), view, IsHeaderArea(area));
  }
  unsigned Borders(GridArea area, unsigned i, unsigned j) const {
    return grid.GetCellBorders(Row(area, i), Col(area, j), view, 0);
  }

  std::wstring Text(GridArea area, unsigned i, unsigned j, unsigned k) const {
    switch (area) {
      case kCornerArea:
        return grid.GetCornerGridHeader(view, i, j, k);
      case kRowHeaderArea:
        return grid.GetVerticalGridHeader(i, view, j, k);
      case kColumnHeaderArea:
        return grid.GetHorizontalGridHeader(j, view, i, k);
      default:
        return grid.GetGridElementText(Row(area, i), Col(area, j), view, k);
    }
  }
  // The library's own callers pass false as the colour and visibility flag.
  unsigned Colour(GridArea area, unsigned i, unsigned j, unsigned k) const {
    switch (area) {
      case kCornerArea:
        return grid.GetCornerGridHeaderColor(view, i, j, k, false);
      case kRowHeaderArea:
        return grid.GetVerGridHeaderColor(i, view, j, k, false);
      case kColumnHeaderArea:
        return grid.GetHorGridHeaderColor(j, view, i, k, false);
      default:
        return grid.GetGridCellColor(Row(area, i), Col(area, j), view, k, false);
    }
  }
  bool Visible(GridArea area, unsigned i, unsigned j, unsigned k) const {
    switch (area) {
      case kCornerArea:
        return grid.GetCornerGridCellVisibility(view, i, j, k, false);
      case kRowHeaderArea:
        return grid.GetVerGridCellVisibility(i, view, j, k, false);
      case kColumnHeaderArea:
        return grid.GetHorGridCellVisibility(j, view, i, k, false);
      default:
        return grid.GetGridCellVisibility(Row(area, i), Col(area, j), view, k, false);
    }
  }
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_SRC_DISPLAY_GRIDCELLACCESS_H_
