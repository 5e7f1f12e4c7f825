// CopyAllTextSelections: the clipboard text of a grid selection. The format,
// its tokens and the order of the walk are described in GridClipboardFormat.h.
#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "display/GridCellAccess.h"
#include "display/GridClipboardFormat.h"
#include "qvsysbase/GenericGridObject.h"
#include "qvsysbase/LbVector.h"
#include "qvsysbase/QvStringUtil.h"

namespace qvsysbase {

namespace {

namespace fmt = clipboard_format;
using Rect = GridSelections::GridSelectionRect;

// A display column of the data area and the positions reserved for it.
struct DisplayColumn {
  unsigned dataCol = 0;
  bool separator = false;
  unsigned width = 1;
};

// The combined rectangle with any end before its start swapped back.
Rect Normalised(const GridSelections& selections) {
  Rect r{};
  selections.getCombinedSelectionRectCoord(r.L, r.T, r.R, r.B);
  if (r.R < r.L) std::swap(r.L, r.R);
  if (r.B < r.T) std::swap(r.T, r.B);
  return r;
}

// Writes the text in two passes: the first measures every row's lines and
// every column's positions, the second writes line by line. All storage is
// sized once per call; a cell costs no allocation beyond its own text.
class ClipboardWriter {
 public:
  ClipboardWriter(const GridCellAccess& cells, const GridSelections& selections, const Rect& rect,
                  bool withHeaders, bool withMarkup, std::wstring& out)
      : m_Cells(cells),
        m_Selections(selections),
        m_Rect(rect),
        m_bHeaders(withHeaders),
        m_bMarkup(withMarkup),
        m_bAllSelected(selections.getNumberOfSelections() == 1),
        m_Out(out) {}

  void Write() {
    Measure();
    for (unsigned hr = 0; hr < m_vecHeaderRowLines.size(); ++hr) {
      for (unsigned line = 0; line < m_vecHeaderRowLines[hr]; ++line) WriteLine(true, hr, line);
    }
    for (std::size_t ri = 0; ri < m_RowLines.size(); ++ri) {
      const unsigned r = static_cast<unsigned>(m_Rect.T + ri);
      for (unsigned line = 0; line < m_RowLines[r]; ++line) WriteLine(false, r, line);
    }
  }

 private:
  // --- First pass: lines per row, positions per column ---------------------
  void Measure();
  void MeasureColumns();
  void MeasureRow(bool headerRow, unsigned i, unsigned& lines);
  void MeasureCell(GridArea area, unsigned i, unsigned j, unsigned& lines, unsigned& width) const;

  // --- Second pass ----------------------------------------------------------
  void WriteLine(bool headerRow, unsigned i, unsigned line);
  void WriteCell(GridArea area, unsigned i, unsigned j, unsigned line, unsigned width,
                 bool selected);
  void WriteSubCell(GridArea area, unsigned i, unsigned j, int subCell, std::size_t position,
                    unsigned line, unsigned cellLines);
  void WriteDataTokens(unsigned i, unsigned j, unsigned subCell, std::size_t position,
                       unsigned line, unsigned cellLines);
  void WriteSeparatorColumn(bool headerRow, unsigned line);
  void NextPosition();
  void Token(wchar_t kind, unsigned value);
  void Token(const wchar_t* token);

  const GridCellAccess m_Cells;
  const GridSelections& m_Selections;
  const Rect m_Rect;
  const bool m_bHeaders;
  const bool m_bMarkup;
  const bool m_bAllSelected;  // one rectangle: every cell of the rectangle is in it
  std::wstring& m_Out;

  std::vector<unsigned> m_vecHeaderRowLines;   // per header row
  std::vector<unsigned> m_vecHeaderColWidths;  // per header column
  LbVector<unsigned> m_RowLines;               // per data row T .. B
  LbVector<DisplayColumn> m_Columns;           // per display column L .. R

  bool m_bLineStart = true;
  std::vector<int> m_vecLeaves;  // the leaves one line of a cell crosses
  std::wstring m_strText;        // a cell's text, edited in place
};

void ClipboardWriter::Measure() {
  m_vecHeaderRowLines.assign(m_bHeaders ? m_Cells.fixedRows : 0, 1);
  m_vecHeaderColWidths.assign(m_bHeaders ? m_Cells.fixedCols : 0, 1);
  m_RowLines.assign(m_Rect.T, std::size_t{m_Rect.B} - m_Rect.T + 1, 1);
  MeasureColumns();
  for (unsigned hr = 0; hr < m_vecHeaderRowLines.size(); ++hr) {
    MeasureRow(true, hr, m_vecHeaderRowLines[hr]);
  }
  for (std::size_t ri = 0; ri < m_RowLines.size(); ++ri) {
    const unsigned r = static_cast<unsigned>(m_Rect.T + ri);
    MeasureRow(false, r, m_RowLines[r]);
  }
}

// Each row keeps the most lines and each column the most positions of its cells.
void ClipboardWriter::MeasureRow(bool headerRow, unsigned i, unsigned& lines) {
  for (unsigned hc = 0; hc < m_vecHeaderColWidths.size(); ++hc) {
    MeasureCell(headerRow ? kCornerArea : kRowHeaderArea, i, hc, lines, m_vecHeaderColWidths[hc]);
  }
  for (DisplayColumn& col : m_Columns) {
    if (col.separator) continue;
    MeasureCell(headerRow ? kColumnHeaderArea : kDataArea, i, col.dataCol, lines, col.width);
  }
}

// A separator column is a display column whose data column is that of the
// column before it.
void ClipboardWriter::MeasureColumns() {
  const GenericGridObject& grid = m_Cells.grid;
  const unsigned view = m_Cells.view;
  m_Columns.assign(m_Rect.L, std::size_t{m_Rect.R} - m_Rect.L + 1);
  unsigned before = m_Rect.L > 0 ? grid.GetDataIndex(m_Rect.L - 1, view) : 0;
  for (std::size_t ci = 0; ci < m_Columns.size(); ++ci) {
    const unsigned c = static_cast<unsigned>(m_Rect.L + ci);
    DisplayColumn& col = m_Columns[c];
    col.dataCol = grid.GetDataIndex(c, view);
    col.separator = c > 0 && col.dataCol == before;
    before = col.dataCol;
  }
}

void ClipboardWriter::MeasureCell(GridArea area, unsigned i, unsigned j, unsigned& lines,
                                  unsigned& width) const {
  if (!m_Cells.IsSplit(area, i, j)) return;
  const SplittingInformation& split = m_Cells.Split(area, i, j);
  lines = std::max(lines, split.getHeight());
  width = std::max(width, split.getWidth());
}

void ClipboardWriter::WriteLine(bool headerRow, unsigned i, unsigned line) {
  m_bLineStart = true;
  if (line > 0 && m_bMarkup) Token(fmt::kSubRow, line);
  for (unsigned hc = 0; hc < m_vecHeaderColWidths.size(); ++hc) {
    WriteCell(
        headerRow ? kCornerArea : kRowHeaderArea, i, hc, line, m_vecHeaderColWidths[hc], true);
  }
  for (std::size_t ci = 0; ci < m_Columns.size(); ++ci) {
    const unsigned c = static_cast<unsigned>(m_Rect.L + ci);
    const DisplayColumn& col = m_Columns[c];
    if (col.separator) {
      WriteSeparatorColumn(headerRow, line);
      continue;
    }
    const bool selected = headerRow || m_bAllSelected || m_Selections.inSelections(i, c);
    WriteCell(headerRow ? kColumnHeaderArea : kDataArea, i, col.dataCol, line, col.width, selected);
  }
  m_Out += fmt::kLineEnd;
}

// The positions of one cell on one line: the leaves the line crosses, then
// one filler per position the column reserves beyond them.
void ClipboardWriter::WriteCell(GridArea area, unsigned i, unsigned j, unsigned line,
                                unsigned width, bool selected) {
  std::size_t written = 0;
  if (selected) {
    const bool invalid = area == kDataArea && !m_Cells.IsValid(area, i, j);
    const SplittingInformation* split =
        !invalid && m_Cells.IsSplit(area, i, j) ? &m_Cells.Split(area, i, j) : nullptr;
    m_vecLeaves.clear();
    if (split != nullptr) {
      split->GetIndexRangeEx(line, 0, m_vecLeaves);
    } else {
      m_vecLeaves.push_back(line == 0 ? 0 : -1);
    }
    const unsigned cellLines = split != nullptr ? split->getHeight() : 1;
    for (; written < m_vecLeaves.size(); ++written) {
      NextPosition();
      if (invalid && m_vecLeaves[written] >= 0) {
        if (m_bMarkup) Token(fmt::kInvalidPoint);
      } else {
        WriteSubCell(area, i, j, m_vecLeaves[written], written, line, cellLines);
      }
    }
  }
  const bool headerRow = IsHeaderRowArea(area);
  for (; written < width; ++written) {
    NextPosition();
    if (selected && headerRow && m_bMarkup) Token(fmt::kCoveredLeft);
  }
}

void ClipboardWriter::WriteSubCell(GridArea area, unsigned i, unsigned j, int subCell,
                                   std::size_t position, unsigned line, unsigned cellLines) {
  if (subCell < 0) {
    if (m_bMarkup && !IsHeaderRowArea(area)) Token(fmt::kCoveredAbove);
    return;
  }
  const unsigned k = static_cast<unsigned>(subCell);
  if (m_bMarkup) {
    if (area == kDataArea) {
      WriteDataTokens(i, j, k, position, line, cellLines);
    } else {
      if (m_Cells.IsSplit(area, i, j)) Token(fmt::kSubCells, m_Cells.Split(area, i, j).getSize());
      const unsigned colour = m_Cells.Colour(area, i, j, k);
      if (!fmt::IsPlainTextColour(colour)) Token(fmt::kColour, colour);
    }
  }
  m_strText = m_Cells.Text(area, i, j, k);
  m_Out += QvStringUtil::RemoveTrailingZeroes(m_strText);
}

// Border, colour, background and bold, in that order.
void ClipboardWriter::WriteDataTokens(unsigned i, unsigned j, unsigned subCell,
                                      std::size_t position, unsigned line, unsigned cellLines) {
  unsigned edges = 0;
  if (position == 0) edges |= fmt::kBorderLeft;
  if (line == 0) edges |= fmt::kBorderTop;
  if (position + 1 == m_vecLeaves.size()) edges |= fmt::kBorderRight;
  if (line + 1 == cellLines) edges |= fmt::kBorderBottom;
  const unsigned borders = m_Cells.Borders(kDataArea, i, j) & edges;
  if (borders != 0) Token(fmt::kBorder, borders);
  const unsigned colour = m_Cells.Colour(kDataArea, i, j, subCell);
  if (!fmt::IsPlainTextColour(colour)) Token(fmt::kColour, colour);
  const unsigned row = m_Cells.Row(kDataArea, i), col = m_Cells.Col(kDataArea, j);
  const unsigned background =
      m_Cells.grid.GetGridCellBackgroundColor(row, col, m_Cells.view, subCell);
  if (background != fmt::kPlainBackground) Token(fmt::kBackground, background);
  if (m_Cells.grid.IsGridCellBoldface(row, col, m_Cells.view, subCell)) Token(fmt::kBold);
}

void ClipboardWriter::WriteSeparatorColumn(bool headerRow, unsigned line) {
  NextPosition();
  if (headerRow && line == 0 && m_bMarkup) Token(fmt::kSeparatorColumn);
}

void ClipboardWriter::NextPosition() {
  if (!m_bLineStart) m_Out += fmt::kPositionSeparator;
  m_bLineStart = false;
}

void ClipboardWriter::Token(wchar_t kind, unsigned value) {
  m_Out += fmt::kTokenOpen;
  m_Out += kind;
  m_Out += fmt::ValueChar(value);
  m_Out += fmt::kTokenClose;
}

void ClipboardWriter::Token(const wchar_t* token) { m_Out += token; }

// Whether the rectangle lies within the view: its last column within the data
// columns and separator columns, its last row within the data rows. Counted in
// 64 bits, so that an empty view cannot wrap its last index round to the top.
bool FitsTheView(const GenericGridObject& grid, unsigned view, const Rect& r) {
  std::vector<unsigned> separators;
  grid.GetSeparators(separators, view);
  const std::uint64_t columns = std::uint64_t{grid.GetGridWidth(view)} + separators.size();
  return std::uint64_t{r.R} < columns && r.B < grid.GetGridHeight(view);
}

}  // namespace

void GenericGridObject::CopyAllTextSelections(const GridSelections* selections, unsigned view,
                                              std::wstring& text, bool withHeaders, bool withMarkup,
                                              std::wstring title) const {
  if (selections == nullptr || selections->getNumberOfSelections() == 0) {
    text.clear();
    return;
  }
  const Rect rect = Normalised(*selections);
  if (!FitsTheView(*this, view, rect)) {
    text.clear();
    return;
  }
  if (IsAlternativeCopying(view)) {
    if (!withHeaders) {
      CopyTextSelectionAlt(rect.L, rect.T, rect.R, rect.B, view, text, false, withMarkup);
      return;
    }
    std::wstring body;
    CopyTextSelectionAlt(rect.L, rect.T, rect.R, rect.B, view, body, true, withMarkup);
    text = std::move(title) + body + clipboard_format::kLineEnd;
    return;
  }
  // Written straight into the caller's string: a caller that copies again and
  // again reuses its capacity instead of touching fresh pages each time.
  text.clear();
  ClipboardWriter(GridCellAccess(*this, view), *selections, rect, withHeaders, withMarkup, text)
      .Write();
}

}  // namespace qvsysbase
