// The finite-difference Jacobian of the trust-region solver: estimates the
// m×n Jacobian of the caller's residual callback by evaluating that same
// callback at displaced points. Thread-compatible: reentrant as far as the
// callback is.
#ifndef QVSYSBASE_SRC_NUMERICS_NUMERICJACOBIAN_H_
#define QVSYSBASE_SRC_NUMERICS_NUMERICJACOBIAN_H_

#include "qvsysbase/IntelSPLHandler.h"

namespace qvsysbase::detail {

// Writes ∂F_i/∂x_j into jac[i + j·m] (column-major) and returns kTrSuccess,
// or kTrInvalidOption (nothing evaluated) for n or m below 1, a null pointer
// among fcn, jac and x, a single bound pointer, or a jacEps that is not a
// positive finite number. x is not changed; the callback sees copies.
//
// Step rule, for parameter j: h_j = jacEps·|x_j|, or jacEps when x_j = 0.
// There is no absolute floor, so a parameter of 1e-9 is moved by 1e-9·jacEps
// rather than swamped by a fixed minimum. h_j is then rounded to the distance
// between the two representable points actually evaluated. Central
// differences (F(x + h·e_j) − F(x − h·e_j))/2h, unless a displaced point would
// leave the box [lower, upper]: then the one-sided difference towards the
// inside, (F(x ± h·e_j) − F(x))/±h, or, where the box is narrower than h on
// both sides, the central difference over the room there is. When a residual
// comes back not finite, h_j is divided by 8 and the column retried, up to six
// times; a column that still has no finite estimate is left not-a-number, and
// a parameter that a zero-width box pins has a zero column.
int EstimateJacobian(TRResidualFn fcn, int n, int m, double* jac, const double* x, double jacEps,
                     void* userData, const double* lower = nullptr, const double* upper = nullptr);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_NUMERICJACOBIAN_H_
