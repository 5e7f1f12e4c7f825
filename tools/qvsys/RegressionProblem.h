// A linear regression problem with certified answers, as the NIST StRD linear
// datasets give them: the data, the certified coefficients with their standard
// errors, and the certified residual standard deviation.
#ifndef QVSYS_REGRESSIONPROBLEM_H_
#define QVSYS_REGRESSIONPROBLEM_H_

#include <string>
#include <string_view>
#include <vector>

namespace qvsys {

struct RegressionProblem {
  std::string name;
  std::vector<std::string> regressors;  // x1..xk, without the intercept
  int observations = 0;                 // n
  std::vector<double> y;                // n values
  std::vector<double> x;                // n rows of k values, row-major
  // Certified values for the intercept B0 then B1..Bk.
  std::vector<double> certifiedCoefficients;
  std::vector<double> certifiedStandardErrors;
  double certifiedResidualSd = 0.0;

  int Regressors() const { return static_cast<int>(regressors.size()); }
};

// Parses the dataset format of data/nist/*.csv: comment lines "# Bj value sd" and
// "# Residual standard deviation v; ...", a header row "y,x1,...", then the rows.
// Throws std::domain_error on malformed text.
RegressionProblem ParseNistCsv(std::string_view name, std::string_view text);

// "B0" for the intercept, "Bj" for the coefficient of xj.
std::string ParameterName(std::size_t j);

// The Longley dataset embedded in the program.
RegressionProblem LoadLongley();

}  // namespace qvsys

#endif  // QVSYS_REGRESSIONPROBLEM_H_
