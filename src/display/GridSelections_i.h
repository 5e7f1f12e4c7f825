// The implementation behind the GridSelections handle.
#ifndef QVSYSBASE_SRC_DISPLAY_GRIDSELECTIONS_I_H_
#define QVSYSBASE_SRC_DISPLAY_GRIDSELECTIONS_I_H_

#include <vector>

#include "qvsysbase/GridSelections.h"

namespace qvsysbase {

// Invariant, until a trim: the combined rectangle bounds every rectangle in the
// list (it is (0, 0, 0, 0) when the list is empty), and the used sets hold
// exactly the rows and columns of the rectangles. Trimming may break the
// invariant on purpose (see adjustSelectionsToWithinMaxGridHeightWidth).
class GridSelections_i {
 public:
  using Rect = GridSelections::GridSelectionRect;

  void Add(const Rect& rect);
  void Reset();
  bool Contains(unsigned row, unsigned col) const;
  bool Trim(unsigned maxHeight, unsigned maxWidth);
  int Compare(const GridSelections_i& other) const;

  Rect m_Combined{0, 0, 0, 0};
  std::vector<Rect> m_vecSelections;
  GridIndexSet m_setUsedCols;
  GridIndexSet m_setUsedRows;
  bool m_bValid = true;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_SRC_DISPLAY_GRIDSELECTIONS_I_H_
