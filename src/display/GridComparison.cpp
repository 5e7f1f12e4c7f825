// Comparing two views of two grid objects cell by cell, through nothing but
// their public operations, so that any two derived classes can be compared.
#include <algorithm>
#include <vector>

#include "display/GridCellAccess.h"
#include "qvsysbase/GenericGridObject.h"

namespace qvsysbase {

namespace {

using Difference = GenericGridObject::GridDifference;

static_assert(sizeof(Difference) == 7 * sizeof(unsigned) && sizeof(unsigned) == 4,
              "a grid difference is seven unsigned 32-bit fields");

// A cell of one area, addressed the same way in both grids.
struct Cell {
  GridArea area;
  unsigned i, j;
};

class GridComparer {
 public:
  GridComparer(const GridCellAccess& a, const GridCellAccess& b, std::vector<Difference>& out,
               bool stopAtFirst)
      : m_A(a), m_B(b), m_vecOut(out), m_bStopAtFirst(stopAtFirst) {}

  // Loop bounds are the smaller of the two grids' counts, so that the walk
  // never leaves either grid.
  void Run() {
    if (CompareViewProperties()) return;
    const unsigned rows =
        std::min(m_A.grid.GetGridHeight(m_A.view), m_B.grid.GetGridHeight(m_B.view));
    const unsigned cols =
        std::min(m_A.grid.GetGridWidth(m_A.view), m_B.grid.GetGridWidth(m_B.view));
    const unsigned fixedRows = std::min(m_A.fixedRows, m_B.fixedRows);
    const unsigned fixedCols = std::min(m_A.fixedCols, m_B.fixedCols);
    (void)(CompareArea(kCornerArea, fixedRows, fixedCols) ||
           CompareArea(kRowHeaderArea, rows, fixedCols) ||
           CompareArea(kColumnHeaderArea, fixedRows, cols) || CompareArea(kDataArea, rows, cols));
  }

 private:
  // Record... and Compare... return true when the comparison must stop.
  bool Record(const Difference& d) {
    m_vecOut.push_back(d);
    return m_bStopAtFirst;
  }
  bool RecordView(unsigned property) {
    return Record({Difference::kScopeGrid, property, 0, 0, 0, 0, 0});
  }
  bool RecordCell(const Cell& c, unsigned property, unsigned subCell) {
    return Record({Difference::kScopeCell,
                   0,
                   c.area,
                   property,
                   m_A.Row(c.area, c.i),
                   m_A.Col(c.area, c.j),
                   subCell});
  }

  bool CompareViewProperties() {
    const GenericGridObject &a = m_A.grid, &b = m_B.grid;
    const unsigned va = m_A.view, vb = m_B.view;
    std::vector<unsigned> separatorsA, separatorsB;
    a.GetSeparators(separatorsA, va);
    b.GetSeparators(separatorsB, vb);
    return (a.GetGridHeight(va) != b.GetGridHeight(vb) && RecordView(Difference::kHeight)) ||
           (a.GetGridWidth(va) != b.GetGridWidth(vb) && RecordView(Difference::kWidth)) ||
           (m_A.fixedRows != m_B.fixedRows && RecordView(Difference::kFixedRows)) ||
           (m_A.fixedCols != m_B.fixedCols && RecordView(Difference::kFixedCols)) ||
           (separatorsA != separatorsB && RecordView(Difference::kSeparators));
  }

  // Row by row. A cell longer than one column is compared once: the walk skips
  // the columns it covers, by its length in the first grid.
  bool CompareArea(GridArea area, unsigned rows, unsigned cols) {
    for (unsigned i = 0; i < rows; ++i) {
      for (unsigned j = 0; j < cols;) {
        unsigned length = 1;
        if (CompareCell({area, i, j}, length)) return true;
        j = length >= cols - j ? cols : j + std::max(length, 1u);
      }
    }
    return false;
  }

  bool CompareCell(const Cell& c, unsigned& length) {
    if (c.area == kDataArea) {
      const bool validA = m_A.IsValid(c.area, c.i, c.j);
      if (validA != m_B.IsValid(c.area, c.i, c.j) && RecordCell(c, Difference::kValidity, 0))
        return true;
      if (!validA) return false;
    }
    length = m_A.Length(c.area, c.i, c.j);
    if (!SameShape(c, length) && RecordCell(c, Difference::kShape, 0)) return true;
    const unsigned subCells =
        std::min(m_A.SubCells(c.area, c.i, c.j), m_B.SubCells(c.area, c.i, c.j));
    for (unsigned k = 0; k < subCells; ++k) {
      const unsigned property = SubCellDifference(c, k);
      if (property != 0 && RecordCell(c, property, k)) return true;
    }
    return false;
  }

  // Length, split flag, split tree and, for data cells, borders.
  bool SameShape(const Cell& c, unsigned lengthA) const {
    if (lengthA != m_B.Length(c.area, c.i, c.j)) return false;
    const bool split = m_A.IsSplit(c.area, c.i, c.j);
    if (split != m_B.IsSplit(c.area, c.i, c.j)) return false;
    if (split && !SplittingInformation::CompareSplitInfoForEquality(m_A.Split(c.area, c.i, c.j),
                                                                    m_B.Split(c.area, c.i, c.j)))
      return false;
    return c.area != kDataArea || m_A.Borders(c.area, c.i, c.j) == m_B.Borders(c.area, c.i, c.j);
  }

  // Only the first of text, colour and visibility that differs counts; 0 when
  // none does.
  unsigned SubCellDifference(const Cell& c, unsigned k) const {
    if (m_A.Text(c.area, c.i, c.j, k) != m_B.Text(c.area, c.i, c.j, k)) return Difference::kText;
    if (m_A.Colour(c.area, c.i, c.j, k) != m_B.Colour(c.area, c.i, c.j, k))
      return Difference::kColour;
    if (m_A.Visible(c.area, c.i, c.j, k) != m_B.Visible(c.area, c.i, c.j, k))
      return Difference::kVisibility;
    return 0;
  }

  const GridCellAccess m_A;
  const GridCellAccess m_B;
  std::vector<Difference>& m_vecOut;
  const bool m_bStopAtFirst;
};

}  // namespace

bool GenericGridObject::CompareGridsForEqualityImp(const GenericGridObject& a, unsigned viewA,
                                                   const GenericGridObject& b, unsigned viewB,
                                                   std::vector<GridDifference>& differences,
                                                   bool stopAtFirst) {
  differences.clear();
  GridComparer(GridCellAccess(a, viewA), GridCellAccess(b, viewB), differences, stopAtFirst).Run();
  return differences.empty();
}

bool GenericGridObject::CompareGridsForEquality(const GenericGridObject& a, unsigned viewA,
                                                const GenericGridObject& b, unsigned viewB,
                                                GridDifference* firstDifference) {
  std::vector<GridDifference> differences;
  const bool equal = CompareGridsForEqualityImp(a, viewA, b, viewB, differences, true);
  if (!equal && firstDifference != nullptr) *firstDifference = differences.front();
  return equal;
}

bool GenericGridObject::CompareGridsForEqualityEx(const GenericGridObject& a, unsigned viewA,
                                                  const GenericGridObject& b, unsigned viewB,
                                                  std::vector<GridDifference>& differences) {
  return CompareGridsForEqualityImp(a, viewA, b, viewB, differences, false);
}

}  // namespace qvsysbase
