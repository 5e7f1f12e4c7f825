#include "qvsysbase/GridSelections.h"

#include <algorithm>
#include <compare>
#include <memory>
#include <tuple>

#include "display/GridSelections_i.h"

namespace qvsysbase {

namespace {

using Rect = GridSelections_i::Rect;

// Rectangles and values are ordered top before left, then bottom before right.
auto OrderKey(const Rect& r) { return std::tie(r.T, r.L, r.B, r.R); }

template <typename T>
int Sign(const T& a, const T& b) {
  const auto order = a <=> b;
  return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

// A copy is rebuilt from the source's rectangles, not copied member by member,
// so its combined rectangle and used sets follow from its list again (a trimmed
// source's may not).
GridSelections_i* Rebuilt(const GridSelections_i& source) {
  auto copy = std::make_unique<GridSelections_i>();
  for (const Rect& rect : source.m_vecSelections) copy->Add(rect);
  copy->m_bValid = source.m_bValid;
  return copy.release();
}

}  // namespace

void GridSelections_i::Add(const Rect& rect) {
  if (m_vecSelections.empty()) {
    m_Combined = rect;
  } else {
    m_Combined.L = std::min(m_Combined.L, rect.L);
    m_Combined.T = std::min(m_Combined.T, rect.T);
    m_Combined.R = std::max(m_Combined.R, rect.R);
    m_Combined.B = std::max(m_Combined.B, rect.B);
  }
  m_vecSelections.push_back(rect);
  m_setUsedRows.insert(rect.T, rect.B);
  m_setUsedCols.insert(rect.L, rect.R);
}

void GridSelections_i::Reset() { *this = GridSelections_i(); }

bool GridSelections_i::Contains(unsigned row, unsigned col) const {
  return std::any_of(m_vecSelections.begin(), m_vecSelections.end(), [=](const Rect& r) {
    return r.L <= col && col <= r.R && r.T <= row && row <= r.B;
  });
}

bool GridSelections_i::Trim(unsigned maxHeight, unsigned maxWidth) {
  // Only up to the combined rectangle's end: used entries beyond it (there are
  // none unless an earlier trim left them) stay.
  m_setUsedCols.erase(maxWidth, m_Combined.R);
  m_setUsedRows.erase(maxHeight, m_Combined.B);
  const unsigned lastRow = maxHeight - 1;  // wraps to 4294967295 for 0
  const unsigned lastCol = maxWidth - 1;
  if (lastRow < m_Combined.T || lastCol < m_Combined.L) {
    Reset();
    return true;
  }
  if (lastRow >= m_Combined.B && lastCol >= m_Combined.R) return false;
  m_Combined.B = std::min(m_Combined.B, lastRow);
  m_Combined.R = std::min(m_Combined.R, lastCol);
  std::erase_if(m_vecSelections, [=](const Rect& r) { return r.L > lastCol && r.T > lastRow; });
  // Clamping only the far ends keeps a rectangle that lies wholly to one side
  // with its end before its start; readers of a trimmed selection expect that.
  for (Rect& r : m_vecSelections) {
    r.R = std::min(r.R, lastCol);
    r.B = std::min(r.B, lastRow);
  }
  return true;
}

int GridSelections_i::Compare(const GridSelections_i& other) const {
  if (m_bValid != other.m_bValid) return m_bValid ? 1 : -1;
  if (const int c = Sign(OrderKey(m_Combined), OrderKey(other.m_Combined))) return c;
  if (const int c = Sign(m_vecSelections.size(), other.m_vecSelections.size())) return c;
  for (std::size_t i = 0; i < m_vecSelections.size(); ++i) {
    if (const int c = Sign(OrderKey(m_vecSelections[i]), OrderKey(other.m_vecSelections[i]))) {
      return c;
    }
  }
  return 0;
}

GridSelections::GridSelections() : m_pImpl(new GridSelections_i) {}

GridSelections::GridSelections(const GridSelections& other) : m_pImpl(Rebuilt(*other.m_pImpl)) {}

// The copy is complete before the old implementation goes, so self-assignment
// is harmless and a failed allocation leaves the target as it was.
GridSelections& GridSelections::operator=(const GridSelections& other) {
  GridSelections_i* pOld = m_pImpl;
  m_pImpl = Rebuilt(*other.m_pImpl);
  delete pOld;
  return *this;
}

GridSelections::~GridSelections() { delete m_pImpl; }

GridSelections* GridSelections::clone() const { return new GridSelections(*this); }

void GridSelections::addSelection(unsigned L, unsigned T, unsigned R, unsigned B) {
  m_pImpl->Add({L, T, R, B});
}

unsigned GridSelections::getNumberOfSelections() const {
  return static_cast<unsigned>(m_pImpl->m_vecSelections.size());
}

void GridSelections::getCombinedSelectionRectCoord(unsigned& L, unsigned& T, unsigned& R,
                                                   unsigned& B) const {
  const Rect& combined = m_pImpl->m_Combined;
  L = combined.L;
  T = combined.T;
  R = combined.R;
  B = combined.B;
}

bool GridSelections::inSelections(unsigned row, unsigned col) const {
  return m_pImpl->Contains(row, col);
}

bool GridSelections::rowUsedInSelections(unsigned row) const {
  return m_pImpl->m_setUsedRows.contains(row);
}

bool GridSelections::colUsedInSelections(unsigned col) const {
  return m_pImpl->m_setUsedCols.contains(col);
}

bool GridSelections::adjustSelectionsToWithinMaxGridHeightWidth(unsigned maxHeight,
                                                                unsigned maxWidth) {
  return m_pImpl->Trim(maxHeight, maxWidth);
}

void GridSelections::clear() { m_pImpl->Reset(); }

void GridSelections::setIsValidSelections(bool valid) { m_pImpl->m_bValid = valid; }

bool GridSelections::getIsValidSelections() const { return m_pImpl->m_bValid; }

std::vector<GridSelections::GridSelectionRect> GridSelections::getSelections() const {
  return m_pImpl->m_vecSelections;
}

GridIndexSet GridSelections::getUsedRows() const { return m_pImpl->m_setUsedRows; }

GridIndexSet GridSelections::getUsedCols() const { return m_pImpl->m_setUsedCols; }

int GridSelections::compare(const GridSelections& other) const {
  return m_pImpl->Compare(*other.m_pImpl);
}

}  // namespace qvsysbase
