#include "RegressionRecord.h"

#include <utility>

namespace qvsys {
namespace {
// Longley has seven parameters; the bound only keeps a corrupt count from
// driving a long loop of failed reads.
constexpr int kMaxParameters = 64;
}  // namespace

ParameterEstimate::ParameterEstimate(std::string name, double value, double standardError)
    : m_strName(std::move(name)), m_dValue(value), m_dStdError(standardError) {}

void ParameterEstimate::Save(qvsysbase::SaveStream& stream) const {
  stream << m_strName << m_dValue << m_dStdError;
}

bool ParameterEstimate::Load(qvsysbase::LoadStream& stream) {
  stream >> m_strName >> m_dValue >> m_dStdError;
  return stream.good();
}

RegressionRecord::RegressionRecord(const RegressionProblem& problem, const RegressionFit& fit)
    : m_wstrDataset(problem.name.begin(), problem.name.end()),
      m_dResidualSd(fit.residualSd),
      m_dRSquared(fit.rSquared) {
  for (std::size_t j = 0; j < fit.coefficients.size(); ++j) {
    m_vecParameters.emplace_back(ParameterName(j), fit.coefficients[j], fit.standardErrors[j]);
  }
}

void RegressionRecord::Save(qvsysbase::SaveStream& stream) const {
  stream << m_wstrDataset << m_dResidualSd << m_dRSquared
         << static_cast<int>(m_vecParameters.size());
  for (const ParameterEstimate& parameter : m_vecParameters) stream << parameter;
}

bool RegressionRecord::Load(qvsysbase::LoadStream& stream) {
  int count = 0;
  stream >> m_wstrDataset >> m_dResidualSd >> m_dRSquared >> count;
  if (!stream.good() || count < 0 || count > kMaxParameters) return false;
  m_vecParameters.assign(static_cast<std::size_t>(count), ParameterEstimate());
  for (ParameterEstimate& parameter : m_vecParameters) stream >> parameter;
  return stream.good();
}

bool RegressionRecord::operator==(const RegressionRecord& other) const {
  if (m_wstrDataset != other.m_wstrDataset || m_dResidualSd != other.m_dResidualSd ||
      m_dRSquared != other.m_dRSquared || m_vecParameters.size() != other.m_vecParameters.size()) {
    return false;
  }
  for (std::size_t j = 0; j < m_vecParameters.size(); ++j) {
    const ParameterEstimate& a = m_vecParameters[j];
    const ParameterEstimate& b = other.m_vecParameters[j];
    if (a.m_strName != b.m_strName || a.m_dValue != b.m_dValue || a.m_dStdError != b.m_dStdError) {
      return false;
    }
  }
  return true;
}

}  // namespace qvsys
