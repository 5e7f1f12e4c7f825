// The two text forms of a selection: the log fragment (render) and the
// bracketed form that operator<< writes and operator>> reads back:
//
//   <Selections(L,T,R,B):2(1,2,3,4)(5,6,7,8)>
//
// The reader treats its input as untrusted: every extraction is checked, the
// first failure ends the read, and nothing is sized from the count it reads.
#include <cstdint>
#include <istream>
#include <limits>
#include <ostream>
#include <sstream>

#include "qvsysbase/GridSelections.h"

namespace qvsysbase {

namespace {

constexpr const wchar_t* kRenderHeader = L" - Grid Selections: ";
constexpr const wchar_t* kTextHeader = L"<Selections(L,T,R,B):";
constexpr wchar_t kHeaderEnd = L':';
constexpr wchar_t kRectOpen = L'(';
constexpr wchar_t kTextEnd = L'>';

// Reads "L,T,R,B)" after an opening bracket; the three separators and the
// closing bracket are taken as any one non-blank character each.
bool ReadRect(std::wistream& in, GridSelections::GridSelectionRect& rect) {
  wchar_t separator = 0;
  in >> rect.L >> separator >> rect.T >> separator >> rect.R >> separator >> rect.B >> separator;
  return !in.fail();
}

}  // namespace

void GridSelections::render(std::wostringstream& out) const {
  const std::vector<GridSelectionRect> rects = getSelections();
  if (rects.empty()) return;
  out << kRenderHeader;
  for (const GridSelectionRect& r : rects) {
    out << L"(Rows:" << r.T << L'-' << r.B << L",Cols:" << r.L << L'-' << r.R << L')';
  }
}

std::wostream& operator<<(std::wostream& out, const GridSelections& sel) {
  out << kTextHeader << sel.getNumberOfSelections();
  for (const GridSelections::GridSelectionRect& r : sel.getSelections()) {
    out << kRectOpen << r.L << L',' << r.T << L',' << r.R << L',' << r.B << L')';
  }
  return out << kTextEnd << std::endl;
}

std::wistream& operator>>(std::wistream& in, GridSelections& sel) {
  // Skipping through the ':' stands for skipping up to it and reading it as the
  // first non-blank character: the same input is consumed.
  in.ignore(std::numeric_limits<std::streamsize>::max(), kHeaderEnd);
  unsigned count = 0;
  wchar_t next = 0;
  std::uint64_t read = 0;  // cannot wrap, whatever the text holds
  if (in >> count >> next) {
    GridSelections::GridSelectionRect rect{};
    while (next == kRectOpen && ReadRect(in, rect)) {
      ++read;
      sel.addSelection(rect.L, rect.T, rect.R, rect.B);
      if (!(in >> next)) break;
    }
  }
  if (in.fail() || next != kTextEnd || read != count) sel.setIsValidSelections(false);
  return in;
}

}  // namespace qvsysbase
