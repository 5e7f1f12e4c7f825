// The tour's result as persistent objects: one record for the fit, holding one
// nested record per parameter, so that a saved file shows a small record tree.
#ifndef QVSYS_REGRESSIONRECORD_H_
#define QVSYS_REGRESSIONRECORD_H_

#include <qvsysbase/qvsysbase.h>

#include <string>
#include <vector>

#include "LinearRegression.h"

namespace qvsys {

class ParameterEstimate : public qvsysbase::StreamObject {
 public:
  ParameterEstimate() = default;
  ParameterEstimate(std::string name, double value, double standardError);

  void Save(qvsysbase::SaveStream& stream) const override;
  bool Load(qvsysbase::LoadStream& stream) override;

  std::string m_strName;
  double m_dValue = 0.0;
  double m_dStdError = 0.0;
};

class RegressionRecord : public qvsysbase::StreamObject {
 public:
  RegressionRecord() = default;
  RegressionRecord(const RegressionProblem& problem, const RegressionFit& fit);

  void Save(qvsysbase::SaveStream& stream) const override;
  // Refuses a record claiming more parameters than a regression of this tool has.
  bool Load(qvsysbase::LoadStream& stream) override;

  bool operator==(const RegressionRecord& other) const;

  std::wstring m_wstrDataset;
  double m_dResidualSd = 0.0;
  double m_dRSquared = 0.0;
  std::vector<ParameterEstimate> m_vecParameters;
};

}  // namespace qvsys

#endif  // QVSYS_REGRESSIONRECORD_H_
