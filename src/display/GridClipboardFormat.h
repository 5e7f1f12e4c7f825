// The clipboard text of a grid selection (GenericGridObject::CopyAllTextSelections).
//
// Lines and positions. The text is a table of positions: positions on a line
// are separated by one tab (none after the last), and every line ends with CR
// LF. A cell's text is written through QvStringUtil::RemoveTrailingZeroes.
//
// What is copied. The combined rectangle of the selection (ends swapped back
// where a trim left them reversed): data rows T .. B and display columns
// L .. R of the data area, separator columns included. With headers, the
// header rows come first (corner cells, then the column headers above the
// copied columns), and every line starts with the row-header columns. Cells
// of the rectangle that no rectangle of a multi-rectangle selection holds keep
// their positions, empty. An empty or missing selection, or a rectangle that
// reaches past the last row or past the data and separator columns, gives an
// empty text.
//
// Layout. Every row is as many lines tall, and every column as many positions
// wide, as the largest split cell in it (unsplit cells count 1 x 1); the
// measure takes in every cell of the rectangle, selected or not, and with
// headers the header cells. A separator column is one position wide.
//
// Walk order, as written:
//   1. Header rows 0 .. fixed rows - 1 (with headers only), then data rows
//      T .. B. Each row gives its lines 0 .. height - 1 in turn.
//   2. On one line: header columns 0 .. fixed columns - 1 (with headers only),
//      then display columns L .. R.
//   3. Within a cell on line n: the leaves of its split tree that line n
//      crosses, left to right, as SplittingInformation::GetIndexRangeEx(n)
//      lists them (so sub-cell numbers are depth-first leaf numbers); a leaf
//      begun on an earlier line takes its position too. Then one filler per
//      position the column reserves beyond them. An unsplit cell is one leaf.
//
// Mark-up (with withMarkup only). A token is "[[", a kind, a value and "]]";
// a value is one character, '0' + value ("2" for 2, ":" for 10), never checked
// for range. In front of a data cell's text, in this order:
//   [[Bv]]  border sides lying on this position's edge of the cell, from the
//           cell's border set (8 left on its first position of the line, 4 top
//           on its first line, 2 right on its last position of the line, 1
//           bottom on its last line); only when not empty
//   [[Cv]]  text colour, unless 0, 1 or 16 (plain text)
//   [[Iv]]  background colour, unless 68 (the base background)
//   [[EE]]  bold
// In front of a header cell's text (corner, column or row header):
//   [[+v]]  for a split header cell: its number of sub-cells
//   [[Cv]]  text colour, unless 0, 1 or 16
// As a position of its own:
//   [[Sv]]  starts line v (1 or more) of a row taller than one line; it
//           precedes the line's first position, without a tab
//   [[<<]]  a filler in a header row: covered by the header cell to its left
//           (fillers in data rows are empty)
//   [[^^]]  a leaf begun on an earlier line, in a row header or data cell
//           (empty in a header row)
//   [[XX]]  a data cell that is not a valid grid point; it is copied as an
//           unsplit cell and no other token or text is written for it
//   [[||]]  a separator column, on the first line of a header row only
// Unselected cells and fillers carry no token but [[<<]].
//
// Example. Two data rows and three data columns with a separator after column
// 0, one fixed row and one fixed column. Data cell (row 0, column 2) is split
// into a leaf beside a stacked pair (leaf 0 | leaves 1 over 2), column header 1
// into two halves side by side. Data texts are "r<row>c<column>.<leaf>";
// (0, 0) has borders 15 and colour 2, (0, 2) borders 15, (1, 1) is bold on
// background 3, and (1, 2) is not a valid point.
// Copying rows 0 .. 1, display columns 0 .. 3, with headers and mark-up gives
// (tabs shown as "|", each line ending in CR LF):
//
//   hdr|col0|[[||]]|[[+2]]col1.0|[[+2]]col1.1|col2|[[<<]]
//   row0|[[B?]][[C2]]r0c0.0||r0c1.0||[[B<]]r0c2.0|[[B6]]r0c2.1
//   [[S1]][[^^]]|[[^^]]||[[^^]]||[[^^]]|[[B3]]r0c2.2
//   row1|r1c0.0||[[I3]][[EE]]r1c1.0||[[XX]]|
//
// Data row 0 is two lines tall because of its split cell; column 1 is two
// positions wide because of its split header, column 2 because of its split
// data cell. Unsplit (0, 0) has all four sides on its one line (15, "?"). The
// split cell's leaf 0 has left and top (12, "<"), leaf 1 top and right (6),
// leaf 2 right and bottom (3); on line 1 leaf 0 covers its position from above.
#ifndef QVSYSBASE_SRC_DISPLAY_GRIDCLIPBOARDFORMAT_H_
#define QVSYSBASE_SRC_DISPLAY_GRIDCLIPBOARDFORMAT_H_

namespace qvsysbase::clipboard_format {

inline constexpr wchar_t kPositionSeparator = L'\t';
inline constexpr const wchar_t* kLineEnd = L"\r\n";

inline constexpr const wchar_t* kTokenOpen = L"[[";
inline constexpr const wchar_t* kTokenClose = L"]]";

// Kinds of the tokens that carry a value.
inline constexpr wchar_t kBorder = L'B';
inline constexpr wchar_t kColour = L'C';
inline constexpr wchar_t kBackground = L'I';
inline constexpr wchar_t kSubRow = L'S';
inline constexpr wchar_t kSubCells = L'+';

// Tokens without a value.
inline constexpr const wchar_t* kBold = L"[[EE]]";
inline constexpr const wchar_t* kCoveredLeft = L"[[<<]]";
inline constexpr const wchar_t* kCoveredAbove = L"[[^^]]";
inline constexpr const wchar_t* kInvalidPoint = L"[[XX]]";
inline constexpr const wchar_t* kSeparatorColumn = L"[[||]]";

// Border sides of a cell's border set.
inline constexpr unsigned kBorderLeft = 8;
inline constexpr unsigned kBorderTop = 4;
inline constexpr unsigned kBorderRight = 2;
inline constexpr unsigned kBorderBottom = 1;

// The background a grid object reports by default; it needs no token.
inline constexpr unsigned kPlainBackground = 68;

// Text colours written without a token: 0 (the view's own) and the palette's
// two plain-text codes, 1 and 16.
inline bool IsPlainTextColour(unsigned colour) {
  return colour == 0 || colour == 1 || colour == 16;
}

// One character per value, '0' + value, wrapping as unsigned arithmetic does.
inline wchar_t ValueChar(unsigned value) { return static_cast<wchar_t>(L'0' + value); }

}  // namespace qvsysbase::clipboard_format

#endif  // QVSYSBASE_SRC_DISPLAY_GRIDCLIPBOARDFORMAT_H_
