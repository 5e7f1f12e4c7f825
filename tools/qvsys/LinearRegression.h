// Ordinary least squares through the library's kernel dispatch: the regression of
// the tour. Requires a mode whose matrix slots are set (IntelSPLHandler mode 1).
#ifndef QVSYS_LINEARREGRESSION_H_
#define QVSYS_LINEARREGRESSION_H_

#include <vector>

#include "RegressionProblem.h"

namespace qvsysbase {
class Aborter;
}

namespace qvsys {

struct RegressionFit {
  std::vector<double> coefficients;    // B0 (intercept), B1..Bk
  std::vector<double> standardErrors;  // in the same order
  double residualSd = 0.0;
  double rSquared = 0.0;
  bool aborted = false;  // the computation saw an abort and stopped early
};

// Fits y = B0 + sum Bj xj by least squares. Progress (0..100) and the current
// step's name go to `aborter`; an abort seen between steps stops the fit.
// Throws qvsysbase::CannotEstimateException when the design is singular.
RegressionFit FitLeastSquares(const RegressionProblem& problem, qvsysbase::Aborter& aborter);

// The number of significant digits on which `value` agrees with `certified`
// (the log relative error, capped at 15; 0 when they agree on none).
double CorrectDigits(double value, double certified);

}  // namespace qvsys

#endif  // QVSYS_LINEARREGRESSION_H_
