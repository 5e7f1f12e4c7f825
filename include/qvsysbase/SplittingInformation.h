// SplittingInformation: how one grid cell is split into sub-cells.
//
// A tree. A node with no children is a leaf: one sub-cell. An inner node cuts
// its area either into parts stacked top to bottom (type 0, a horizontal cut)
// or into parts side by side (type 1, a vertical cut); its children are the
// parts in that order. A grid object hands such a tree to a view for every split
// cell, and the grid's cell-size queries are computed from it.
//
// Sub-cells are numbered 0, 1, ... in depth-first order, children in list
// order (GetIndexRange). A text line of a split cell crosses some of them, left
// to right (GetIndexRangeEx), keeping those numbers:
//
//   type 1                 line 0:  0 | 1        GetIndexRangeEx(0) = {0, 1}
//   |- leaf  (0)           line 1:  ^ | 2        GetIndexRangeEx(1) = {-1, 2}
//   `- type 0
//      |- leaf (1)         -1 marks a leaf begun on an earlier line that
//      `- leaf (2)         covers this one from above.
//
// Thread-safety: thread-compatible. The shared horizontal cut is made safely by
// whichever thread asks first; after that it is read-only unless a caller
// changes it through the reference it is handed.
//
// Intentionally copyable: a copy is deep (the children are copied).
#ifndef QVSYSBASE_SPLITTINGINFORMATION_H_
#define QVSYSBASE_SPLITTINGINFORMATION_H_

#include <vector>

#include "qvsysbase/Export.h"

namespace qvsysbase {

class QVSYSBASE_API SplittingInformation {
 public:
  // The two split types.
  static constexpr unsigned kHorizontalCut = 0;  // children stacked top to bottom
  static constexpr unsigned kVerticalCut = 1;    // children side by side, left to right

  // A leaf of the given type: 0 (stacked) or 1 (side by side).
  // Throws ConstraintViolationException for a type of 2 or more.
  explicit SplittingInformation(unsigned type);

  unsigned GetSplitType() const { return m_nSplitType; }
  const std::vector<SplittingInformation>& GetSplitList() const { return m_vecSplitList; }

  // Appends a copy of `child` after the existing children.
  void InsertInSplitList(const SplittingInformation& child);

  // The one shared two-part horizontal cut (type 0 over two type-0 leaves),
  // made on first use. Its leaves are added again should its list ever be
  // found empty.
  static SplittingInformation& GetHorizontalCut();

  // Rows, columns and leaves the tree spans; a leaf counts 1 in each.
  // Height: stacked children add up, side-by-side ones take the tallest.
  // Width: side-by-side children add up, stacked ones take the widest.
  unsigned getHeight() const;
  unsigned getWidth() const;
  unsigned getSize() const;

  // Appends the leaf numbers next, next + 1, ... in depth-first order to `out`
  // and returns the first number not used.
  unsigned GetIndexRange(unsigned next, std::vector<unsigned>& out) const;
  // 0, 1, ..., getSize() - 1.
  std::vector<unsigned> GetIndexRange() const;

  // For a stacked node with children: the numbers of the first child's leaves
  // (upper) or of all the leaves below it (lower). Otherwise empty.
  std::vector<unsigned> GetUpperIndexRange() const;
  std::vector<unsigned> GetLowerIndexRange() const;

  // The leaves that text line `subRow` crosses, left to right, numbered as in
  // GetIndexRange; -1 for a leaf that began on an earlier line. The first form
  // numbers from `next`, appends to `out` and returns the next free number.
  unsigned GetIndexRangeEx(unsigned subRow, unsigned next, std::vector<int>& out) const;
  std::vector<int> GetIndexRangeEx(unsigned subRow) const;

  // True when both trees have the same shape. Two leaves must have the same
  // type; the types of inner nodes are not compared, by design, so trees whose
  // children match are equal even if one node is cut the other way.
  static bool CompareSplitInfoForEquality(const SplittingInformation& a,
                                          const SplittingInformation& b);

 private:
  bool IsLeaf() const { return m_vecSplitList.empty(); }

  unsigned m_nSplitType;
  std::vector<SplittingInformation> m_vecSplitList;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_SPLITTINGINFORMATION_H_
