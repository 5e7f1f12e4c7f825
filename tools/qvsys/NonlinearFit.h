// A nonlinear least-squares fit through the kernel dispatch's trust-region
// slot, with the standard errors of the estimates, on NIST StRD Misra1a
// (embedded): y = b1·(1 − exp(−b2·x)).
#ifndef QVSYS_NONLINEARFIT_H_
#define QVSYS_NONLINEARFIT_H_

#include <qvsysbase/Aborter.h>

#include <string>
#include <vector>

namespace qvsys {

struct NonlinearProblem {
  std::string name;
  std::vector<double> x, y;  // predictor and response
  std::vector<double> start, certified, certifiedSd;
};

struct NonlinearFit {
  bool aborted = false;
  bool converged = false;  // the search ended on a convergence rule
  std::vector<double> estimates;
  std::vector<double> standardErrors;  // empty when JᵀJ is numerically singular
  int iterations = 0, stopCriterion = 0, evaluations = 0;
};

NonlinearProblem LoadMisra1a();

// Fits from the problem's start. The residual callback reports progress and
// text through aborter and polls it; an abort ends the search (aborted set,
// nothing else filled). REQUIRES: the kernel-library set is selected.
NonlinearFit FitNonlinear(const NonlinearProblem& problem, qvsysbase::Aborter& aborter);

}  // namespace qvsys

#endif  // QVSYS_NONLINEARFIT_H_
