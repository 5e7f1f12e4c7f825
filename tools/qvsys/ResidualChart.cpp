#include "ResidualChart.h"

namespace qvsys {

ResidualChart::ResidualChart(const RegressionProblem& problem, const RegressionFit& fit)
    : m_wstrTitle(problem.name.begin(), problem.name.end()) {
  m_wstrTitle += L" residuals";
  const std::size_t k = problem.regressors.size();
  if (fit.coefficients.size() != k + 1) return;  // no fit: no points
  for (int i = 0; i < problem.observations; ++i) {
    const std::size_t row = static_cast<std::size_t>(i);
    double fitted = fit.coefficients[0];
    for (std::size_t j = 0; j < k; ++j) fitted += fit.coefficients[j + 1] * problem.x[row * k + j];
    m_residuals.push_back(problem.y[row] - fitted);
  }
}

void ResidualChart::ShiftObservation(unsigned obs, double delta) {
  if (obs < m_residuals.size()) m_residuals[obs] += delta;
}

bool ResidualChart::IsPoint(unsigned var, unsigned cas) const {
  return var == 0 && cas < m_residuals.size();
}

bool ResidualChart::IsFrozenSnapshot() const { return false; }
unsigned ResidualChart::GetNVarsChart() const { return 1; }
unsigned ResidualChart::GetNObsChart(unsigned var) const {
  return var == 0 ? static_cast<unsigned>(m_residuals.size()) : 0;
}
bool ResidualChart::IsValidChart(unsigned var, unsigned cas, unsigned) const {
  return IsPoint(var, cas);
}
double ResidualChart::GetValueChart(unsigned var, unsigned cas) const {
  return IsPoint(var, cas) ? m_residuals[cas] : 0.0;
}
std::wstring ResidualChart::GetValueAsLabelChart(unsigned var, unsigned cas) const {
  return IsPoint(var, cas) ? L"obs " + std::to_wstring(cas + 1) : std::wstring();
}
std::wstring ResidualChart::GetVarHeaderChart(unsigned var) const {
  return var == 0 ? L"residual" : std::wstring();
}
std::wstring ResidualChart::GetTitleChart() const { return m_wstrTitle; }

}  // namespace qvsys
