// The request loop of the trust-region kernel. Ownership is scoped: the solver
// and the two work arrays are released on every exit, including an exception
// thrown by the residual callback.
#include "numerics/TROptimise.h"

#include <cmath>
#include <memory>
#include <stdexcept>

#include "numerics/NumericJacobian.h"
#include "numerics/TrustRegionSolver.h"
#include "qvsysbase/nspSmartPtr.h"
#include "qvsysbase/qvExcept.h"

QV_UNIT("TROptimise", "$Revision: #1 $")

namespace qvsysbase::detail {
namespace {

using Buffer = SmartRefCountedPtr<nspSmartPtr<double>>;

// Runs the conversation until the solver names a stopping rule or reports two
// iterations in a row without asking for anything (a guard kept on purpose,
// although this solver always asks for the Jacobian or a trial in between).
void RunRequests(TrustRegionSolver& solver, int n, double* x, const double* lower,
                 const double* upper, int m, TRResidualFn fcn, void* userData, double jacEps,
                 double* f, double* jac) {
  int request = 0;
  bool lastWasZero = false;
  for (;;) {
    if (solver.Solve(f, jac, &request) != kTrSuccess) throw std::runtime_error(kTrSolveErrorText);
    if (request >= -6 && request <= -1) return;
    if (request == 0) {
      if (lastWasZero) return;
      lastWasZero = true;
    } else if (request == 1) {
      lastWasZero = false;
      fcn(&m, &n, x, f, userData);
    } else if (request == 2) {
      lastWasZero = false;
      if (EstimateJacobian(fcn, n, m, jac, x, jacEps, userData, lower, upper) != kTrSuccess) {
        throw std::runtime_error(kTrJacobianErrorText);
      }
    } else {
      QV_ASSERT(false);
    }
  }
}

}  // namespace

bool mklTROptimise(int n, double* x, const double* pLowBound, const double* pUpperBound, int m,
                   TRResidualFn fcn, void* userData, int maxIter, int maxTrialIter,
                   const double* eps, double jacEps, double rs, int* iter, int* stopCriterion,
                   double* r1, double* r2) {
  QV_ASSERT((pLowBound && pUpperBound) || (!pLowBound && !pUpperBound));
  // What never reaches the solver is checked here; the rest is the solver's
  // init's to refuse, before anything is allocated from n and m.
  QV_ASSERT(fcn != nullptr);
  QV_ASSERT(jacEps > 0.0 && std::isfinite(jacEps));
  QV_ASSERT(iter && stopCriterion && r1 && r2);

  std::unique_ptr<TrustRegionSolver> solver;
  const TrProblem problem{n, m, x, pLowBound, pUpperBound, eps, maxIter, maxTrialIter, rs};
  if (TrustRegionSolver::Init(&solver, problem) != kTrSuccess) {
    throw std::runtime_error(kTrInitErrorText);
  }
  const Buffer f = nspSmartPtr<double>::Create(m);
  const Buffer jac = nspSmartPtr<double>::Create(m * n);  // the init bounded m·n by int
  RunRequests(
      *solver, n, x, pLowBound, pUpperBound, m, fcn, userData, jacEps, f->Get(), jac->Get());
  if (solver->Get(iter, stopCriterion, r1, r2) != kTrSuccess) {
    throw std::runtime_error(kTrGetErrorText);
  }
  return *r2 < eps[1];
}

}  // namespace qvsysbase::detail
