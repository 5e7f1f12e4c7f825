#include "qvsysbase/SplittingInformation.h"

#include <algorithm>

#include "qvsysbase/qvExcept.h"

namespace qvsysbase {

namespace {

// The line a leaf's text sits on: leaves cover every later line of their part.
constexpr unsigned kLeafTextLine = 0;
// Written for a leaf that a line crosses below the line its text sits on.
constexpr int kCoveredFromAbove = -1;

// A leaf spans 1 in each direction. Along the cut the parts' spans add up;
// across it the node is as wide (or tall) as its largest part.
unsigned Span(const std::vector<SplittingInformation>& parts, bool partsAddUp,
              unsigned (SplittingInformation::*partSpan)() const) {
  if (parts.empty()) return 1;
  unsigned span = 0;
  for (const SplittingInformation& part : parts) {
    const unsigned s = (part.*partSpan)();
    span = partsAddUp ? span + s : std::max(span, s);
  }
  return span;
}

// Gives a node the two stacked halves of the shared cut.
void AddHalves(SplittingInformation& cut) {
  cut.InsertInSplitList(SplittingInformation(SplittingInformation::kHorizontalCut));
  cut.InsertInSplitList(SplittingInformation(SplittingInformation::kHorizontalCut));
}

}  // namespace

SplittingInformation::SplittingInformation(unsigned type) : m_nSplitType(type) {
  if (type > kVerticalCut) throw ConstraintViolationException();
}

void SplittingInformation::InsertInSplitList(const SplittingInformation& child) {
  m_vecSplitList.push_back(child);
}

SplittingInformation& SplittingInformation::GetHorizontalCut() {
  // A function-local static is initialised exactly once even when several
  // threads arrive first together.
  static SplittingInformation cut = [] {
    SplittingInformation made(kHorizontalCut);
    AddHalves(made);
    return made;
  }();
  if (cut.IsLeaf()) AddHalves(cut);
  return cut;
}

unsigned SplittingInformation::getHeight() const {
  return Span(m_vecSplitList, m_nSplitType == kHorizontalCut, &SplittingInformation::getHeight);
}

unsigned SplittingInformation::getWidth() const {
  return Span(m_vecSplitList, m_nSplitType == kVerticalCut, &SplittingInformation::getWidth);
}

unsigned SplittingInformation::getSize() const {
  if (IsLeaf()) return 1;
  unsigned size = 0;
  for (const SplittingInformation& child : m_vecSplitList) size += child.getSize();
  return size;
}

unsigned SplittingInformation::GetIndexRange(unsigned next, std::vector<unsigned>& out) const {
  if (IsLeaf()) {
    out.push_back(next);
    return next + 1;
  }
  for (const SplittingInformation& child : m_vecSplitList) next = child.GetIndexRange(next, out);
  return next;
}

std::vector<unsigned> SplittingInformation::GetIndexRange() const {
  std::vector<unsigned> out;
  GetIndexRange(0, out);
  return out;
}

std::vector<unsigned> SplittingInformation::GetUpperIndexRange() const {
  if (m_nSplitType != kHorizontalCut || IsLeaf()) return {};
  return m_vecSplitList.front().GetIndexRange();
}

std::vector<unsigned> SplittingInformation::GetLowerIndexRange() const {
  std::vector<unsigned> out;
  if (m_nSplitType != kHorizontalCut || IsLeaf()) return out;
  // The first child's leaves take the first numbers; numbering the rest goes on
  // from there.
  unsigned next = m_vecSplitList.front().getSize();
  for (auto child = m_vecSplitList.begin() + 1; child != m_vecSplitList.end(); ++child) {
    next = child->GetIndexRange(next, out);
  }
  return out;
}

// Numbering a subtree "silently" (its leaves take numbers, nothing is listed)
// only advances `next` by its number of leaves, so no scratch list is built.
unsigned SplittingInformation::GetIndexRangeEx(unsigned subRow, unsigned next,
                                               std::vector<int>& out) const {
  if (IsLeaf()) {
    out.push_back(subRow == kLeafTextLine ? static_cast<int>(next) : kCoveredFromAbove);
    return next + 1;
  }
  if (m_nSplitType == kVerticalCut) {
    for (const SplittingInformation& child : m_vecSplitList) {
      next = child.GetIndexRangeEx(subRow, next, out);
    }
    return next;
  }
  bool found = false;
  for (const SplittingInformation& child : m_vecSplitList) {
    const unsigned height = found ? 0 : child.getHeight();
    if (!found && subRow < height) {
      next = child.GetIndexRangeEx(subRow, next, out);
      found = true;
      continue;
    }
    subRow -= height;
    next += child.getSize();
  }
  return next;
}

std::vector<int> SplittingInformation::GetIndexRangeEx(unsigned subRow) const {
  std::vector<int> out;
  GetIndexRangeEx(subRow, 0, out);
  return out;
}

bool SplittingInformation::CompareSplitInfoForEquality(const SplittingInformation& a,
                                                       const SplittingInformation& b) {
  if (a.m_vecSplitList.size() != b.m_vecSplitList.size()) return false;
  if (a.IsLeaf()) return a.m_nSplitType == b.m_nSplitType;
  return std::equal(a.m_vecSplitList.begin(),
                    a.m_vecSplitList.end(),
                    b.m_vecSplitList.begin(),
                    &CompareSplitInfoForEquality);
}

}  // namespace qvsysbase
