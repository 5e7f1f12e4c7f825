// The residuals of the tour's regression as a live chart object, the way a
// residual plot would see them: one series, one point per observation.
#ifndef QVSYS_RESIDUALCHART_H_
#define QVSYS_RESIDUALCHART_H_

#include <qvsysbase/qvsysbase.h>

#include <string>
#include <vector>

#include "LinearRegression.h"
#include "RegressionProblem.h"

namespace qvsys {

// Variable 0 holds the residual y - fitted of every observation, labelled
// "obs 1", "obs 2", ...; a question about any other point gets the defaults.
class ResidualChart final : public qvsysbase::GenericChartObject {
 public:
  ResidualChart(const RegressionProblem& problem, const RegressionFit& fit);

  // Moves one observation's residual by `delta`, as raising its y by `delta`
  // without fitting again would. An observation out of range is ignored.
  void ShiftObservation(unsigned obs, double delta);

  bool IsFrozenSnapshot() const override;  // false: this chart is live
  unsigned GetNVarsChart() const override;
  unsigned GetNObsChart(unsigned var) const override;
  bool IsValidChart(unsigned var, unsigned cas, unsigned view) const override;
  double GetValueChart(unsigned var, unsigned cas) const override;
  std::wstring GetValueAsLabelChart(unsigned var, unsigned cas) const override;
  std::wstring GetVarHeaderChart(unsigned var) const override;
  std::wstring GetTitleChart() const override;

 private:
  bool IsPoint(unsigned var, unsigned cas) const;

  std::wstring m_wstrTitle;
  std::vector<double> m_residuals;
};

}  // namespace qvsys

#endif  // QVSYS_RESIDUALCHART_H_
