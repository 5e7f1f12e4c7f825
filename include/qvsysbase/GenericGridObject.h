// GenericGridObject: the abstract data source behind every grid view.
//
// A view holds no cell data. It asks the grid object for its views, their
// sizes, each cell's text, colours, visibility, borders and split shape, the
// headers, titles and footers, and reports edits, pastes, sorts and cell
// actions back. Every operation has a harmless base behaviour (a constant, an
// empty text, a no-op), so a derived class overrides only what differs; the
// base class holds no data and never throws.
//
// Coordinates. A view (numbered from 0) shows GetGridFixedRows header rows
// above and GetGridFixedCols header columns left of a data area of
// GetGridHeight rows and GetGridWidth columns:
//
//            fixed cols   data columns 0 .. W-1
//           +-----------+--------------------------+
//   fixed   |  corner   |  column headers          |   corner cell (hr, hc)
//   rows    |           |                          |   column header (hr, Fc + c)
//           +-----------+--------------------------+
//   data    |  row      |  data cells              |   row header (Fr + r, hc)
//   rows    |  headers  |                          |   data cell (Fr + r, Fc + c)
//           +-----------+--------------------------+
//
//  - Cell operations (row, col, view, ...) take the cell's row and column in
//    this whole grid, fixed rows and columns included (right-hand column
//    above); the shape queries (IsSplitGridCell, CellLength, GetSplitInfo,
//    getCellWidth/Height/Size, IsPartOfSplitGridCell) address header cells the
//    same way, with `flag` true for a header cell and false for a data cell.
//  - Header texts, colours and visibility take their own orders: a row header
//    (data row, view, header column), a column header (data column, view,
//    header row), a corner cell (view, header row, header column).
//  - Separators are data-column indices after which the view draws an extra,
//    empty column. Selections count the data area's display columns, those
//    separator columns included (GetDataIndex maps them back), and data rows.
//  - `subCell` numbers a split cell's leaves as SplittingInformation does;
//    0 for an unsplit cell.
//  - Colours are palette codes: 0 lets the view choose; the base background
//    is 68. Borders are a bit set: 8 left, 4 top, 2 right, 1 bottom.
//
// Thread-safety: thread-compatible; const operations of the base may be called
// from several threads.
//
// Ownership: the grid object never owns the selections or texts passed to it.
#ifndef QVSYSBASE_GENERICGRIDOBJECT_H_
#define QVSYSBASE_GENERICGRIDOBJECT_H_

#include <string>
#include <vector>

#include "qvsysbase/Export.h"
#include "qvsysbase/GridSelections.h"
#include "qvsysbase/SplittingInformation.h"

namespace qvsysbase {

class QvSender;

class QVSYSBASE_API GenericGridObject {
 public:
  // One difference found by the comparisons: a plain record of seven unsigned
  // fields, copied whole. Fields that do not apply to its scope mean nothing.
  struct GridDifference {
    static constexpr unsigned kScopeGrid = 0;  // a property of the whole view
    static constexpr unsigned kScopeCell = 1;  // one cell

    // gridProperty values (scope 0)
    static constexpr unsigned kWidth = 0;
    static constexpr unsigned kFixedCols = 1;
    static constexpr unsigned kHeight = 2;
    static constexpr unsigned kFixedRows = 3;
    static constexpr unsigned kSeparators = 4;

    // area values (scope 1)
    static constexpr unsigned kCorner = 0;
    static constexpr unsigned kRowHeader = 1;     // the vertical header
    static constexpr unsigned kColumnHeader = 2;  // the horizontal header
    static constexpr unsigned kDataCell = 3;

    // cellProperty values (scope 1); 1 is not used
    static constexpr unsigned kShape = 0;  // length, split flag, split tree or borders
    static constexpr unsigned kValidity = 2;
    static constexpr unsigned kText = 3;
    static constexpr unsigned kColour = 4;
    static constexpr unsigned kVisibility = 5;

    unsigned scope;
    unsigned gridProperty;
    unsigned area;
    unsigned cellProperty;
    unsigned row;      // the cell's whole-grid row in the first grid
    unsigned col;      // the cell's whole-grid column in the first grid
    unsigned subCell;  // for text, colour and visibility

    bool operator==(const GridDifference&) const = default;
  };

  GenericGridObject() = default;
  GenericGridObject(const GenericGridObject&) = default;
  GenericGridObject& operator=(const GenericGridObject&) = default;
  virtual ~GenericGridObject();

  // --- Shape of the views ---------------------------------------------------
  virtual unsigned GetViewNumber() const;                                          // 1
  virtual unsigned GetView(unsigned view) const;                                   // 1
  virtual unsigned GetGridHeight(unsigned view) const;                             // 1 data row
  virtual unsigned GetGridWidth(unsigned view) const;                              // 1 data column
  virtual bool IsValidGridPoint(unsigned row, unsigned col, unsigned view) const;  // false

  // --- Data cells, titles and footers ---------------------------------------
  virtual std::wstring GetGridElementText(unsigned row, unsigned col, unsigned view,
                                          unsigned subCell) const;  // empty
  // Title and footer lines, one element a line; the base leaves `lines` alone.
  virtual void GetGridTitle(std::vector<std::wstring>& lines, unsigned view) const;
  virtual void SetGridTitle(const std::vector<std::wstring>& lines, unsigned view);
  virtual bool CanChangeGridTitle() const;  // false
  virtual void GetGridFooter(std::vector<std::wstring>& lines, unsigned view) const;
  virtual void SetGridFooter(const std::vector<std::wstring>& lines, unsigned view);
  virtual bool CanChangeFooterTitle() const;  // false
  virtual bool GetGridCellVisibility(unsigned row, unsigned col, unsigned view, unsigned subCell,
                                     bool flag) const;  // true

  // --- Split and long cells -------------------------------------------------
  // A split cell starts at the column where IsSplitGridCell is true and spans
  // as many columns as its tree is wide.
  virtual bool IsSplitGridCell(unsigned row, unsigned col, unsigned view,
                               bool flag) const;  // false
  virtual unsigned CellLength(unsigned row, unsigned col, unsigned view,
                              bool flag) const;               // 1 column
  virtual unsigned getLongCellLocation(unsigned view) const;  // 0
  // The base hands out the shared horizontal cut.
  virtual const SplittingInformation& GetSplitInfo(unsigned row, unsigned col, unsigned view,
                                                   bool flag) const;

  // --- Cell appearance ------------------------------------------------------
  virtual unsigned GetGridCellColor(unsigned row, unsigned col, unsigned view, unsigned subCell,
                                    bool flag) const;  // 0
  virtual unsigned GetGridCellBackgroundColor(unsigned row, unsigned col, unsigned view,
                                              unsigned subCell) const;  // 68
  virtual bool IsGridCellBoldface(unsigned row, unsigned col, unsigned view,
                                  unsigned subCell) const;  // false
  // The text an editor starts from: the base asks GetGridElementText for
  // sub-cell 0.
  virtual std::wstring GetGridEditText(unsigned row, unsigned col, unsigned view) const;

  // --- Headers --------------------------------------------------------------
  virtual std::wstring GetVerticalGridHeader(unsigned row, unsigned view, unsigned headerCol,
                                             unsigned subCell) const;  // empty
  virtual unsigned GetVerGridHeaderColor(unsigned row, unsigned view, unsigned headerCol,
                                         unsigned subCell, bool flag) const;  // 0
  virtual bool GetVerGridCellVisibility(unsigned row, unsigned view, unsigned headerCol,
                                        unsigned subCell, bool flag) const;  // true
  virtual std::wstring GetHorizontalGridHeader(unsigned col, unsigned view, unsigned headerRow,
                                               unsigned subCell) const;  // empty
  virtual unsigned GetHorGridHeaderColor(unsigned col, unsigned view, unsigned headerRow,
                                         unsigned subCell, bool flag) const;  // 0
  virtual bool GetHorGridCellVisibility(unsigned col, unsigned view, unsigned headerRow,
                                        unsigned subCell, bool flag) const;  // true
  virtual std::wstring GetCornerGridHeader(unsigned view, unsigned headerRow, unsigned headerCol,
                                           unsigned subCell) const;  // empty
  virtual unsigned GetCornerGridHeaderColor(unsigned view, unsigned headerRow, unsigned headerCol,
                                            unsigned subCell, bool flag) const;  // 0
  virtual bool GetCornerGridCellVisibility(unsigned view, unsigned headerRow, unsigned headerCol,
                                           unsigned subCell, bool flag) const;  // true
  // The view's separators, a sorted vector of data-column indices; the base
  // leaves `separators` alone.
  virtual void GetSeparators(std::vector<unsigned>& separators, unsigned view) const;

  // --- Actions and edits (argument meanings are the derived class's) -------
  virtual void RequestCellAction(unsigned, unsigned, unsigned, unsigned);
  // The base passes the four numbers on to RequestCellAction.
  virtual void RequestCellActionEx(const GridSelections& selections, unsigned, unsigned, unsigned,
                                   unsigned);
  // The base sets dRow to 1 when the third argument is 1 (else 0) and dCol to 0.
  virtual void GetActiveCellDelta(unsigned, unsigned, unsigned, unsigned, int& dRow, int& dCol);
  virtual void SetGridElementValue(unsigned row, unsigned col, unsigned view, const wchar_t* text,
                                   unsigned);
  // The base calls SetGridElementValue and returns false; `message` is untouched.
  virtual bool SetGridElementValueEx(unsigned row, unsigned col, unsigned view, const wchar_t* text,
                                     unsigned, std::wstring& message);
  virtual void SetGridElementMultiValues(unsigned, const std::vector<unsigned>&, const wchar_t*,
                                         unsigned);

  virtual unsigned GetGridFixedRows(unsigned view) const;  // 1
  virtual unsigned GetGridFixedCols(unsigned view) const;  // 1
  virtual unsigned GetCellBorders(unsigned row, unsigned col, unsigned view,
                                  unsigned defaultBorders) const;  // defaultBorders

  // --- Clipboard ------------------------------------------------------------
  // Writes the selected cells of `view` into `text` (replacing it) as
  // tab-separated lines, each ended by CR LF, with the header rows and columns
  // when `withHeaders` and in-band formatting tokens when `withMarkup`. A
  // selection reaching beyond the grid, a null or empty selection give an empty
  // text. When IsAlternativeCopying(view), CopyTextSelectionAlt writes the
  // text instead (with headers: `title`, that text, CR LF). The format, the
  // tokens and the order of the walk are described in full in the library's
  // clipboard format notes (src/display/GridClipboardFormat.h).
  virtual void CopyAllTextSelections(const GridSelections* selections, unsigned view,
                                     std::wstring& text, bool withHeaders, bool withMarkup,
                                     std::wstring title) const;
  virtual bool IsAlternativeCopying(unsigned view) const;  // false
  // The derived class's own copy; the base leaves `text` alone.
  virtual void CopyTextSelectionAlt(unsigned L, unsigned T, unsigned R, unsigned B, unsigned view,
                                    std::wstring& text, bool withHeaders, bool withMarkup) const;

  // --- Split-cell geometry: 1 for an unsplit cell, else the split tree's
  // width, height and number of leaves. Overriding IsSplitGridCell and
  // GetSplitInfo is enough. ---------------------------------------------------
  virtual unsigned getCellWidth(unsigned row, unsigned col, unsigned view, bool flag) const;
  virtual unsigned getCellHeight(unsigned row, unsigned col, unsigned view, bool flag) const;
  virtual unsigned getCellSize(unsigned row, unsigned col, unsigned view, bool flag) const;

  // --- Selection, paste, sort -----------------------------------------------
  virtual bool IsSelectionGrid(unsigned view) const;  // false
  virtual bool PasteTextSelection(const std::wstring& text, unsigned, unsigned, unsigned, unsigned,
                                  unsigned);          // false: nothing pasted
  virtual bool CanGridSortRows(unsigned view) const;  // false
  virtual void SortAscending(unsigned view);
  virtual void SortDescending(unsigned view);
  virtual bool IsDescending(unsigned view) const;  // false
  // False and `width` untouched: the view measures the cells itself.
  virtual bool GetFastDefaultCellWidth(unsigned view, double& width) const;
  virtual void SetViewDefaults();
  virtual bool CanSumSelectedCells(unsigned view) const;  // true

  // The sender through which the object announces changes.
  virtual QvSender* GetSender() const = 0;

  // --- Helpers ----------------------------------------------------------------
  // Finds the split cell covering data column `col` of whole-grid row `row`:
  // looks left from `col`, at most 15 columns (a deliberate bound), for a column
  // where IsSplitGridCell is true, and answers whether `col` lies within its
  // width. `startCol` (a data column) and `offset` (col - startCol) are left
  // where the search ended.
  bool IsPartOfSplitGridCell(unsigned row, unsigned col, unsigned view, bool flag,
                             unsigned& startCol, unsigned& offset) const;
  // The data column of a display column of the data area (separators removed):
  // with separators {2}, display columns 2 and 3 both give 2, and 4 gives 3.
  unsigned GetDataIndex(unsigned index, unsigned view) const;
  // The whole-grid display column of a data column: fixed columns and the
  // separators before it added.
  unsigned GetGlobalColumn(unsigned col, unsigned view) const;

  // --- Comparison -----------------------------------------------------------
  // Compare view `viewA` of `a` with view `viewB` of `b`: first the view's
  // height, width, fixed rows, fixed columns and separators; then, within the
  // smaller of each pair of counts, the corner, the row headers, the column
  // headers and the data cells, row by row: validity (data cells; the rest is
  // compared only where `a` is valid), shape, then per sub-cell the first of
  // text, colour and visibility that differs. A cell longer than one column is
  // compared once. Differences are listed in that order.
  //
  // True when equal; on a difference, copies the first record into
  // `firstDifference` unless it is null.
  static bool CompareGridsForEquality(const GenericGridObject& a, unsigned viewA,
                                      const GenericGridObject& b, unsigned viewB,
                                      GridDifference* firstDifference);
  // True when equal; `differences` receives every difference.
  static bool CompareGridsForEqualityEx(const GenericGridObject& a, unsigned viewA,
                                        const GenericGridObject& b, unsigned viewB,
                                        std::vector<GridDifference>& differences);
  // Both of the above: clears `differences`, and stops at the first when
  // `stopAtFirst`.
  static bool CompareGridsForEqualityImp(const GenericGridObject& a, unsigned viewA,
                                         const GenericGridObject& b, unsigned viewB,
                                         std::vector<GridDifference>& differences,
                                         bool stopAtFirst);
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_GENERICGRIDOBJECT_H_
