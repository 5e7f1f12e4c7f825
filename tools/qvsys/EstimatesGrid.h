// The tour's estimates as a grid object, the way a results view would see them:
// one row per parameter, the fitted estimate and its standard error, then, past
// a separator, the certified value and the digits the estimate gets right.
#ifndef QVSYS_ESTIMATESGRID_H_
#define QVSYS_ESTIMATESGRID_H_

#include <qvsysbase/qvsysbase.h>

#include <string>
#include <vector>

#include "LinearRegression.h"
#include "RegressionProblem.h"

namespace qvsys {

// One view; one header row (its last cell split into "correct" over "digits"),
// one header column of parameter names; data columns estimate, standard error,
// certified value, correct digits, with a separator after the standard error.
// The digits are coloured by whether they reach `requiredDigits`.
class EstimatesGrid : public qvsysbase::GenericGridObject {
 public:
  EstimatesGrid(const RegressionProblem& problem, const RegressionFit& fit, double requiredDigits);

  unsigned GetGridHeight(unsigned view) const override;
  unsigned GetGridWidth(unsigned view) const override;
  bool IsValidGridPoint(unsigned row, unsigned col, unsigned view) const override;
  std::wstring GetGridElementText(unsigned row, unsigned col, unsigned view,
                                  unsigned subCell) const override;
  unsigned GetGridCellColor(unsigned row, unsigned col, unsigned view, unsigned subCell,
                            bool flag) const override;
  unsigned GetGridCellBackgroundColor(unsigned row, unsigned col, unsigned view,
                                      unsigned subCell) const override;
  unsigned GetCellBorders(unsigned row, unsigned col, unsigned view,
                          unsigned defaultBorders) const override;
  std::wstring GetVerticalGridHeader(unsigned row, unsigned view, unsigned headerCol,
                                     unsigned subCell) const override;
  std::wstring GetHorizontalGridHeader(unsigned col, unsigned view, unsigned headerRow,
                                       unsigned subCell) const override;
  std::wstring GetCornerGridHeader(unsigned view, unsigned headerRow, unsigned headerCol,
                                   unsigned subCell) const override;
  bool IsSplitGridCell(unsigned row, unsigned col, unsigned view, bool flag) const override;
  const qvsysbase::SplittingInformation& GetSplitInfo(unsigned row, unsigned col, unsigned view,
                                                      bool flag) const override;
  void GetSeparators(std::vector<unsigned>& separators, unsigned view) const override;
  qvsysbase::QvSender* GetSender() const override;

 private:
  struct Row {
    std::wstring name;
    double estimate, standardError, certified, digits;
  };
  // The data row and column of a whole-grid cell, when it is one.
  bool DataCell(unsigned row, unsigned col, unsigned& r, unsigned& c) const;

  std::vector<Row> m_vecRows;
  double m_dRequiredDigits;
  qvsysbase::SplittingInformation m_DigitsHeader;
  mutable qvsysbase::QvSender m_Sender;
};

// Builds the grid, checks that it compares equal to a second copy of itself,
// and prints its clipboard text with headers and mark-up. Returns false when
// the check or the copy fails.
bool ShowEstimatesGrid(const RegressionProblem& problem, const RegressionFit& fit,
                       double requiredDigits);

}  // namespace qvsys

#endif  // QVSYS_ESTIMATESGRID_H_
