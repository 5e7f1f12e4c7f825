#include "numerics/TrustRegionStopping.h"

#include <algorithm>
#include <cmath>

namespace qvsysbase::detail {
namespace {

// Every comparison below is false on not-a-number, so an unknown quantity never
// stops the search.

// -1: k ≥ maxIter, every trial step counted, accepted or not.
bool IterationsExhausted(const TrProgress& p, int maxIterations) {
  return p.iterations >= maxIterations;
}

// -2: Δ < eps[0]·‖D·x‖: no step the model trusts can still move x noticeably.
bool RegionCollapsed(const TrProgress& p, const TrTolerances& eps) {
  return p.region < eps.region * p.scaledSize;
}

// -3: ‖F(x)‖ < eps[1].
bool ResidualSmall(const TrProgress& p, const TrTolerances& eps) {
  return p.residualNorm < eps.residual;
}

// -4: min_j ‖J_j‖ < eps[2], or a column without a finite estimate: some
// parameter has no measurable effect on the residuals.
bool JacobianSingular(const TrProgress& p, const TrTolerances& eps) {
  return !p.jacobianFinite || p.minColumnNorm < eps.column;
}

// -5: ‖D·s‖ < eps[3]·‖D·x‖: the step the model asks for is negligible.
bool StepSmall(const TrProgress& p, const TrTolerances& eps) {
  return p.stepNorm < eps.step * p.scaledSize;
}

// -6: ‖F‖ − ‖F + J·s‖ < eps[4]·‖F‖: the linear model promises no further progress.
bool ModelStalled(const TrProgress& p, const TrTolerances& eps) {
  return p.modelReduction < eps.model;
}

}  // namespace

int FirstStopMet(const TrProgress& progress, const TrTolerances& eps, int maxIterations) {
  if (IterationsExhausted(progress, maxIterations)) return -1;
  if (RegionCollapsed(progress, eps)) return -2;
  if (ResidualSmall(progress, eps)) return -3;
  if (JacobianSingular(progress, eps)) return -4;
  if (StepSmall(progress, eps)) return -5;
  if (ModelStalled(progress, eps)) return -6;
  return 0;
}

double ModelReduction(double relativePredictedReduction) {
  const double rho = std::min(relativePredictedReduction, 1.0);
  return rho / (1.0 + std::sqrt(1.0 - rho));
}

}  // namespace qvsysbase::detail
