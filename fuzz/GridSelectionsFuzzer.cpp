// Fuzz target: arbitrary bytes read as the text form of grid selections, one
// byte per wide character. Beyond not crashing, whatever was read must survive
// a round trip through the writer unchanged, and a copy must compare equal.
// Seeds: fuzz/corpus/grid_selections/.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "qvsysbase/GridSelections.h"

namespace {

std::wstring Written(const qvsysbase::GridSelections& sel) {
  std::wostringstream out;
  out << sel;
  return out.str();
}

void Check(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::wistringstream in(std::wstring(data, data + size));
  qvsysbase::GridSelections sel;
  in >> sel;

  const std::wstring text = Written(sel);
  std::wistringstream again(text);
  qvsysbase::GridSelections back;
  again >> back;
  Check(back.getIsValidSelections());
  Check(back.getSelections() == sel.getSelections());
  Check(Written(back) == text);

  qvsysbase::GridSelections copy = sel;
  Check(copy == sel);
  std::wostringstream log;
  sel.render(log);

  // Trim to the size the first rectangle names, the way a view trims a pasted
  // selection to its grid.
  unsigned L = 0, T = 0, R = 0, B = 0;
  sel.getCombinedSelectionRectCoord(L, T, R, B);
  const bool trimmed = copy.adjustSelectionsToWithinMaxGridHeightWidth(B / 2, R / 2);
  Check(trimmed || copy.getSelections() == sel.getSelections());
  return 0;
}
