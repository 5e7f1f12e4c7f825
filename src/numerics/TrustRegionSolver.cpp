// The solver's conversation, one phase per kind of answer it waits for:
//
//   start          -> request 1 (F at x₀)
//   start residuals: stop if F is not finite or already small, else request 2
//   Jacobian       : stop if singular; compute a step; stop if it is negligible,
//                    else write the trial point into x and request 1
//   trial residuals: accept or reject, update the region; stop if a rule is
//                    met, else request 0 (one iteration done)
//   iteration done : request 2 after an accepted step, else a new trial step
//                    from the same linearisation.
//
// Bounds: the active set is the variables at a bound whose gradient component
// points out of the box; the step is computed on the others and cut back to
// stay inside the box (FitStepToBox), so every point the callback sees is
// feasible.
#include "numerics/TrustRegionSolver.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

namespace qvsysbase::detail {
namespace {

constexpr int kToleranceCount = 6;
// A step that would cross a bound goes this fraction of the way to it, so
// iterates stay strictly inside the box unless they start on its surface: a
// variable then approaches a bound geometrically and can still leave it,
// instead of being pinned at the first bound a long early step reaches.
constexpr double kStepBack = 0.9;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Norm(const std::vector<double>& v) { return Norm2(v.data(), static_cast<int>(v.size())); }

bool IsPositive(double value) { return value > 0.0 && std::isfinite(value); }

bool IsValidBox(const TrProblem& p) {
  if ((p.lower == nullptr) != (p.upper == nullptr)) return false;
  if (p.lower == nullptr) return true;
  for (int j = 0; j < p.n; ++j) {
    if (!(p.lower[j] <= p.upper[j])) return false;  // also refuses not-a-number
  }
  return true;
}

bool IsValidProblem(const TrProblem& p) {
  if (p.n < 1 || p.m < 1 || p.m < p.n) return false;
  if (static_cast<long long>(p.m) * p.n > INT_MAX) return false;
  if (p.x == nullptr || p.eps == nullptr) return false;
  if (p.maxIterations < 1 || p.maxTrialIterations < 1 || !IsPositive(p.rs)) return false;
  for (int i = 0; i < kToleranceCount; ++i) {
    if (!IsPositive(p.eps[i])) return false;
  }
  return IsValidBox(p);
}

}  // namespace

int TrustRegionSolver::Init(std::unique_ptr<TrustRegionSolver>* handle, const TrProblem& problem) {
  if (handle == nullptr || !IsValidProblem(problem)) return kTrInvalidOption;
  const double* e = problem.eps;
  const TrTolerances eps{e[0], e[1], e[2], e[3], e[4], e[5]};
  handle->reset(new TrustRegionSolver(problem, eps));
  return kTrSuccess;
}

TrustRegionSolver::TrustRegionSolver(const TrProblem& p, const TrTolerances& eps)
    : n_(p.n),
      m_(p.m),
      x_(p.x),
      eps_(eps),
      maxIterations_(p.maxIterations),
      rs_(p.rs),
      point_(p.x, p.x + p.n),
      residuals_(p.m),
      step_(p.n),
      taken_(p.n),
      trial_(p.n),
      free_(p.n, 1),
      lm_(p.m, p.n, eps.subproblem, p.maxTrialIterations) {
  if (p.lower == nullptr) return;
  lower_.assign(p.lower, p.lower + n_);
  upper_.assign(p.upper, p.upper + n_);
  for (int j = 0; j < n_; ++j) point_[j] = std::clamp(point_[j], lower_[j], upper_[j]);
}

int TrustRegionSolver::Solve(double* f, const double* jac, int* request) {
  if (request == nullptr || f == nullptr || jac == nullptr) return kTrInvalidOption;
  switch (phase_) {
    case Phase::kStart:
      std::copy(point_.begin(), point_.end(), x_);
      phase_ = Phase::kStartResiduals;
      *request = 1;
      break;
    case Phase::kStartResiduals:
      *request = ReadStartResiduals(f);
      break;
    case Phase::kJacobian:
      *request = ReadJacobian(jac, f);
      break;
    case Phase::kTrialResiduals:
      *request = ReadTrialResiduals(f);
      break;
    case Phase::kIterationDone:
      if (lastAccepted_) {
        phase_ = Phase::kJacobian;
        *request = 2;
      } else {
        *request = ProposeTrial(f);
      }
      break;
    case Phase::kStopped:
      *request = lastRequest_;
      break;
  }
  lastRequest_ = *request;
  return kTrSuccess;
}

int TrustRegionSolver::Get(int* iterations, int* stopCriterion, double* r1, double* r2) const {
  if (iterations == nullptr || stopCriterion == nullptr || r1 == nullptr || r2 == nullptr) {
    return kTrInvalidOption;
  }
  *iterations = progress_.iterations;
  *stopCriterion = stopCriterion_;
  *r1 = initialNorm_;
  *r2 = progress_.residualNorm;
  return kTrSuccess;
}

int TrustRegionSolver::ReadStartResiduals(double* f) {
  std::copy(f, f + m_, residuals_.begin());
  initialNorm_ = Norm(residuals_);
  progress_.residualNorm = initialNorm_;
  // Residuals that are not finite at the start leave no point to compare a
  // trial against: the region collapses to nothing at once (-2).
  if (!std::isfinite(initialNorm_)) {
    initialNorm_ = progress_.residualNorm = kInfinity;
    return Stop(-2, f);
  }
  if (const int stop = FirstStopMet(progress_, eps_, maxIterations_)) return Stop(stop, f);
  phase_ = Phase::kJacobian;
  return 2;
}

int TrustRegionSolver::ReadJacobian(const double* jac, double* f) {
  const std::size_t size = static_cast<std::size_t>(m_) * n_;
  progress_.jacobianFinite =
      std::all_of(jac, jac + size, [](double v) { return std::isfinite(v); });
  if (!progress_.jacobianFinite) return Stop(-4, f);
  MarkFreeVariables(jac);
  lm_.Linearise(jac, residuals_.data(), free_);
  progress_.minColumnNorm = lm_.MinColumnNorm();
  RefreshScaledSize();
  if (!regionSet_) {
    regionSet_ = true;
    radius_ = TrustRegionRadius(rs_ * progress_.scaledSize, 0.0);
  }
  progress_.region = radius_.radius();
  if (const int stop = FirstStopMet(progress_, eps_, maxIterations_)) return Stop(stop, f);
  return ProposeTrial(f);
}

int TrustRegionSolver::ProposeTrial(double* f) {
  double predicted = 0.0, directional = 0.0;
  for (;;) {
    lm_.ComputeStep(radius_.radius(), radius_.mutable_parameter(), step_.data());
    if (!anyAccepted_) radius_.ClipTo(lm_.ScaledNorm(step_.data()));
    if (FitStepToBox(predicted, directional)) break;
    // Cut back to the box, the step promises no decrease: a failed trial that
    // needs no evaluation to be known as one.
    radius_.Update(TrialOutcome{
        progress_.residualNorm, kInfinity, predicted, directional, lm_.ScaledNorm(taken_.data())});
    progress_.region = radius_.radius();
    if (const int stop = FirstStopMet(progress_, eps_, maxIterations_)) return Stop(stop, f);
  }
  outcome_ = TrialOutcome{
      progress_.residualNorm, 0.0, predicted, directional, lm_.ScaledNorm(taken_.data())};
  progress_.region = radius_.radius();
  progress_.stepNorm = outcome_.stepNorm;
  progress_.modelReduction = ModelReduction(predicted);
  if (const int stop = FirstStopMet(progress_, eps_, maxIterations_)) return Stop(stop, f);
  std::copy(trial_.begin(), trial_.end(), x_);
  phase_ = Phase::kTrialResiduals;
  return 1;
}

// The step taken from step_: the full step when the box allows it; else each
// component that would cross a bound cut back to kStepBack of the way there
// (the others keep their full length); else, when that promises no decrease,
// the whole step shortened to kStepBack of the way to the first bound it
// meets, which lies on the way to the model's minimiser and so promises a
// decrease unless it is empty. False when neither promises one.
bool TrustRegionSolver::FitStepToBox(double& predicted, double& directional) {
  bool exact = true;
  for (int j = 0; j < n_; ++j) {
    trial_[j] = point_[j] + step_[j];
    if (IsBounded() && (trial_[j] > upper_[j] || trial_[j] < lower_[j])) {
      const double bound = trial_[j] > upper_[j] ? upper_[j] : lower_[j];
      trial_[j] = point_[j] + kStepBack * (bound - point_[j]);
      exact = false;
    }
    taken_[j] = trial_[j] - point_[j];
  }
  lm_.Predict(taken_.data(), exact, radius_.parameter(), predicted, directional);
  if (exact || predicted > 0.0) return true;
  double fraction = 1.0;
  for (int j = 0; j < n_; ++j) {
    if (step_[j] > 0.0) fraction = std::min(fraction, (upper_[j] - point_[j]) / step_[j]);
    if (step_[j] < 0.0) fraction = std::min(fraction, (lower_[j] - point_[j]) / step_[j]);
  }
  fraction *= kStepBack;
  for (int j = 0; j < n_; ++j) {
    taken_[j] = fraction * step_[j];
    trial_[j] = std::clamp(point_[j] + taken_[j], lower_[j], upper_[j]);
    taken_[j] = trial_[j] - point_[j];
  }
  lm_.Predict(taken_.data(), false, radius_.parameter(), predicted, directional);
  return predicted > 0.0;
}

int TrustRegionSolver::ReadTrialResiduals(double* f) {
  outcome_.trialResidualNorm = Norm2(f, m_);
  // Not finite: a failed step, the region shrinks.
  if (!std::isfinite(outcome_.trialResidualNorm)) outcome_.trialResidualNorm = kInfinity;
  lastAccepted_ = IsStepSuccessful(outcome_);
  radius_.Update(outcome_);
  if (lastAccepted_) {
    anyAccepted_ = true;
    point_ = trial_;
    std::copy(f, f + m_, residuals_.begin());
    progress_.residualNorm = Norm(residuals_);
    RefreshScaledSize();
  }
  std::copy(point_.begin(), point_.end(), x_);
  ++progress_.iterations;
  progress_.region = radius_.radius();
  progress_.stepNorm = progress_.modelReduction = TrProgress::kUnknown;
  if (const int stop = FirstStopMet(progress_, eps_, maxIterations_)) return Stop(stop, f);
  phase_ = Phase::kIterationDone;
  return 0;
}

int TrustRegionSolver::Stop(int request, double* f) {
  std::copy(point_.begin(), point_.end(), x_);
  std::copy(residuals_.begin(), residuals_.end(), f);
  stopCriterion_ = -request;
  phase_ = Phase::kStopped;
  return request;
}

// A variable at a bound stays there while the gradient g = JᵀF would push it
// out: at its lower bound with g_j > 0, or at its upper bound with g_j < 0.
void TrustRegionSolver::MarkFreeVariables(const double* jac) {
  if (!IsBounded()) return;
  for (int j = 0; j < n_; ++j) {
    const double* column = jac + static_cast<std::size_t>(j) * m_;
    double g = 0.0;
    for (int i = 0; i < m_; ++i) g += column[i] * residuals_[i];
    const bool heldLow = point_[j] <= lower_[j] && g > 0.0;
    const bool heldHigh = point_[j] >= upper_[j] && g < 0.0;
    free_[j] = !(heldLow || heldHigh);
  }
}

void TrustRegionSolver::RefreshScaledSize() {
  const double size = lm_.ScaledNorm(point_.data());
  progress_.scaledSize = size > 0.0 ? size : 1.0;
}

}  // namespace qvsysbase::detail
