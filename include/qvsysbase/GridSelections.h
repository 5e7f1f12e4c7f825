// Grid selections: the rectangular cell ranges a user has selected in one grid
// view, with, for fast queries, their bounding rectangle and the sets of rows
// and of columns that any rectangle touches.
//
//   GridSelections sel;
//   sel.addSelection(2, 3, 4, 5);          // columns 2..4, rows 3..5
//   sel.inSelections(3, 2);                // true: row 3, column 2
//   std::wcout << sel;                     // <Selections(L,T,R,B):1(2,3,4,5)>
//
// The text form (operator<< and operator>>) is meant to travel: operator>> reads
// outside text and never trusts it. A malformed or failed number ends the read
// and marks the selection invalid; memory grows only with the rectangles the
// text actually holds.
//
// Thread-safety: thread-compatible.
//
// Copying: GridSelections is a handle that owns its implementation outright.
// Intentionally copyable: a copy is a new, independent selection (never shared).
#ifndef QVSYSBASE_GRIDSELECTIONS_H_
#define QVSYSBASE_GRIDSELECTIONS_H_

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <iterator>
#include <map>
#include <vector>

#include "qvsysbase/Export.h"

namespace qvsysbase {

// GridIndexSet: an ordered set of unsigned 32-bit row or column numbers, kept as
// maximal runs of consecutive numbers. It reads like std::set<unsigned> (ordered
// iteration over every member, contains, size) but costs memory and time per
// run, not per member: the rows of a rectangle 0 .. 4294967295 are one run.
//
// Invariants: runs are disjoint and never adjacent (first of a run > last of
// the one before + 1), so equal sets have equal runs; size() counts members and
// may reach 2^32, hence its 64-bit type.
//
// Intentionally copyable.
class QVSYSBASE_API GridIndexSet {
 public:
  // Runs by first member; the mapped value is the run's last member.
  using RunMap = std::map<unsigned, unsigned>;
  class const_iterator;

  GridIndexSet() = default;

  // Adds `first` .. `last` inclusive; nothing when last < first.
  void insert(unsigned first, unsigned last);
  void insert(unsigned value) { insert(value, value); }
  // Removes `first` .. `last` inclusive; nothing when last < first.
  void erase(unsigned first, unsigned last);
  void erase(unsigned value) { erase(value, value); }
  void clear();

  bool contains(unsigned value) const;
  bool empty() const { return m_mapRuns.empty(); }
  std::uint64_t size() const { return m_nSize; }
  const RunMap& runs() const { return m_mapRuns; }

  const_iterator begin() const;
  const_iterator end() const;

  bool operator==(const GridIndexSet& other) const { return m_mapRuns == other.m_mapRuns; }

 private:
  RunMap m_mapRuns;
  std::uint64_t m_nSize = 0;
};

// Visits every member in ascending order, one run after another.
class GridIndexSet::const_iterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = unsigned;
  using difference_type = std::ptrdiff_t;
  using pointer = const unsigned*;
  using reference = const unsigned&;

  const_iterator() = default;
  reference operator*() const { return m_nValue; }
  pointer operator->() const { return &m_nValue; }
  const_iterator& operator++() {
    if (m_nValue == m_itRun->second) {
      ++m_itRun;
      m_nValue = m_itRun == m_itEnd ? 0 : m_itRun->first;
    } else {
      ++m_nValue;
    }
    return *this;
  }
  const_iterator operator++(int) {
    const_iterator before = *this;
    ++*this;
    return before;
  }
  bool operator==(const const_iterator& o) const {
    return m_itRun == o.m_itRun && m_nValue == o.m_nValue;
  }

 private:
  friend class GridIndexSet;
  const_iterator(RunMap::const_iterator run, RunMap::const_iterator end)
      : m_itRun(run), m_itEnd(end), m_nValue(run == end ? 0 : run->first) {}

  RunMap::const_iterator m_itRun;
  RunMap::const_iterator m_itEnd;
  unsigned m_nValue = 0;
};

inline GridIndexSet::const_iterator GridIndexSet::begin() const {
  return const_iterator(m_mapRuns.begin(), m_mapRuns.end());
}
inline GridIndexSet::const_iterator GridIndexSet::end() const {
  return const_iterator(m_mapRuns.end(), m_mapRuns.end());
}

class GridSelections_i;

// Rectangles in the order they were added (duplicates allowed); their bounding
// ("combined") rectangle; the used rows and columns; and a validity flag that
// the code filling a selection clears to mark one that must not be acted on.
// No operation checks or throws for coordinates.
class QVSYSBASE_API GridSelections {
 public:
  // One selected range; both ends inclusive. Normally L <= R and T <= B, but
  // nothing checks it, and trimming may leave an end before its start.
  struct GridSelectionRect {
    unsigned L;  // first column
    unsigned T;  // first row
    unsigned R;  // last column
    unsigned B;  // last row
    bool operator==(const GridSelectionRect&) const = default;
  };

  // Empty and valid; combined rectangle (0, 0, 0, 0).
  GridSelections();
  // The target is rebuilt by adding the source's rectangles in order, then
  // takes the source's validity flag.
  GridSelections(const GridSelections& other);
  GridSelections& operator=(const GridSelections& other);
  ~GridSelections();

  // A new copy; the caller owns it.
  GridSelections* clone() const;

  // Appends the rectangle, widens the combined rectangle to cover it (the
  // first rectangle sets it) and adds its rows and columns to the used sets.
  void addSelection(unsigned L, unsigned T, unsigned R, unsigned B);
  unsigned getNumberOfSelections() const;
  void getCombinedSelectionRectCoord(unsigned& L, unsigned& T, unsigned& R, unsigned& B) const;

  // True when some rectangle holds the cell.
  bool inSelections(unsigned row, unsigned col) const;
  bool rowUsedInSelections(unsigned row) const;
  bool colUsedInSelections(unsigned col) const;

  // Trims the selection to a grid of `maxHeight` rows and `maxWidth` columns
  // and returns true when anything had to be trimmed. Used rows and columns at
  // or beyond the limits (up to the combined rectangle's end) are dropped; a
  // selection wholly outside is cleared; otherwise the combined rectangle and
  // each rectangle have their right and bottom ends clamped, and a rectangle
  // lying both right of and below the limits is removed. A rectangle wholly to
  // the right but not below (or below but not to the right) is kept with its
  // end clamped before its start. The limits are taken minus one in unsigned
  // arithmetic, so 0 means "no limit" once the used sets have been emptied.
  bool adjustSelectionsToWithinMaxGridHeightWidth(unsigned maxHeight, unsigned maxWidth);

  // Back to the empty, valid state.
  void clear();
  void setIsValidSelections(bool valid);
  bool getIsValidSelections() const;

  std::vector<GridSelectionRect> getSelections() const;
  GridIndexSet getUsedRows() const;
  GridIndexSet getUsedCols() const;

  // A total order: validity (valid above invalid), then the combined rectangle
  // by T, L, B, R, then the number of rectangles, then the rectangles in order
  // by T, L, B, R. Returns -1, 0 or 1.
  int compare(const GridSelections& other) const;
  bool operator==(const GridSelections& other) const { return compare(other) == 0; }

  // Appends " - Grid Selections: " and "(Rows:T-B,Cols:L-R)" per rectangle;
  // nothing for an empty selection. Numbers use the stream's format.
  void render(std::wostringstream& out) const;

 private:
  GridSelections_i* m_pImpl;  // owned; never null
};

// Writes "<Selections(L,T,R,B):" count, "(L,T,R,B)" per rectangle, ">" and an
// end of line (which flushes). The validity flag is not written.
QVSYSBASE_API std::wostream& operator<<(std::wostream& out, const GridSelections& sel);

// Reads the form operator<< writes and appends its rectangles to `sel` (which
// is not cleared first). The text before the first ':' is skipped unchecked, as
// are the separators between numbers. When the text does not end with '>', its
// count disagrees with the rectangles read, or a number cannot be read, `sel`
// is marked invalid; a failed read ends the input. The stream's own failure
// state is left for the caller to inspect.
QVSYSBASE_API std::wistream& operator>>(std::wistream& in, GridSelections& sel);

}  // namespace qvsysbase

#endif  // QVSYSBASE_GRIDSELECTIONS_H_
