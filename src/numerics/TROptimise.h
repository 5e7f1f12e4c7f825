// The trust-region least-squares kernel of the kernel-library set: the
// nspTROptimise slot's routine, driving TrustRegionSolver and the central-
// difference Jacobian through their request loop.
#ifndef QVSYSBASE_SRC_NUMERICS_TROPTIMISE_H_
#define QVSYSBASE_SRC_NUMERICS_TROPTIMISE_H_

#include "qvsysbase/IntelSPLHandler.h"

namespace qvsysbase::detail {

// Exception texts, one spelling shared with the tests. The bounded search
// reports under the same names as the unbounded one.
inline constexpr const char* kTrInitErrorText = "error in mkl - dtrnlsp_init()";
inline constexpr const char* kTrSolveErrorText = "error in mkl - dtrnlsp_solve()";
inline constexpr const char* kTrJacobianErrorText = "error in mkl - djacobi()";
inline constexpr const char* kTrGetErrorText = "error in mkl - dtrnlsp_get()";

// Minimises ‖F(x)‖ from x, inside [pLowBound, pUpperBound] when both are
// given; returns *r2 < eps[1]. See IntelSPLHandler::nspTROptimise.
// REQUIRES: (pLowBound && pUpperBound) || (!pLowBound && !pUpperBound)
bool mklTROptimise(int n, double* x, const double* pLowBound, const double* pUpperBound, int m,
                   TRResidualFn fcn, void* userData, int maxIter, int maxTrialIter,
                   const double* eps, double jacEps, double rs, int* iter, int* stopCriterion,
                   double* r1, double* r2);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_TROPTIMISE_H_
