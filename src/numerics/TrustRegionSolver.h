// The trust-region least-squares solver behind nspTROptimise: minimises
// ‖F(x)‖² over n variables, optionally inside a box lower ≤ x ≤ upper, by
// reverse communication. The caller owns x, the residual vector f (m values)
// and the Jacobian (m×n, column-major: jac[i + j·m] = ∂F_i/∂x_j) and loops:
//
//   request = 0;
//   do {
//     solver->Solve(f, jac, &request);
//     if (request == 1) evaluate F at x into f;
//     if (request == 2) evaluate J at x into jac;
//   } while (request >= 0);        // 0: one iteration done, go on
//
// until a negative request -1..-6 names the stopping rule met
// (TrustRegionStopping.h). The solver writes its trial points into the
// caller's x and leaves the best point found there, with its residuals in f,
// when it stops.
//
// Thread-compatible: one solver belongs to one search.
#ifndef QVSYSBASE_SRC_NUMERICS_TRUSTREGIONSOLVER_H_
#define QVSYSBASE_SRC_NUMERICS_TRUSTREGIONSOLVER_H_

#include <memory>
#include <vector>

#include "numerics/TrustRegionStep.h"
#include "numerics/TrustRegionStopping.h"

namespace qvsysbase::detail {

// Result codes of the solver's calls.
inline constexpr int kTrSuccess = 1501;
inline constexpr int kTrInvalidOption = 1502;

// What the solver is initialised with. x, lower and upper are the caller's and
// must outlive the solver; the bounds are both null or both present.
struct TrProblem {
  int n = 0;
  int m = 0;
  double* x = nullptr;            // start point; trial points and the result
  const double* lower = nullptr;  // n values or null
  const double* upper = nullptr;  // n values or null
  const double* eps = nullptr;    // the six tolerances, TrTolerances' order
  int maxIterations = 0;          // trial steps, accepted or not
  int maxTrialIterations = 0;     // iterations of λ per trial step
  // Δ₀ = rs·‖D·x₀‖ (rs when x₀ = 0): the first region relative to the start
  // point's scaled size, as the stopping rules measure regions.
  double rs = 0.0;
};

class TrustRegionSolver {
 public:
  // kTrSuccess with *handle set, or kTrInvalidOption with nothing touched for
  // n or m below 1, m < n, m·n beyond int, a null x or eps, a tolerance, rs or
  // limit that is not positive (or not finite), a single bound pointer, or a
  // lower bound above its upper bound. Starting points outside the box are
  // moved onto it.
  static int Init(std::unique_ptr<TrustRegionSolver>* handle, const TrProblem& problem);

  TrustRegionSolver(const TrustRegionSolver&) = delete;
  TrustRegionSolver& operator=(const TrustRegionSolver&) = delete;

  // One step of the conversation; *request answers with what the solver needs
  // next. f is read after a request 1, jac after a request 2.
  int Solve(double* f, const double* jac, int* request);
  // Trial steps taken, the stopping rule met (1..6, 0 while running), ‖F(x₀)‖
  // and ‖F‖ at the current point.
  int Get(int* iterations, int* stopCriterion, double* r1, double* r2) const;

 private:
  enum class Phase {
    kStart,
    kStartResiduals,
    kJacobian,
    kTrialResiduals,
    kIterationDone,
    kStopped
  };

  TrustRegionSolver(const TrProblem& problem, const TrTolerances& eps);

  int ReadStartResiduals(double* f);
  int ReadJacobian(const double* jac, double* f);
  int ProposeTrial(double* f);
  bool FitStepToBox(double& predicted, double& directional);
  int ReadTrialResiduals(double* f);
  int Stop(int request, double* f);
  void MarkFreeVariables(const double* jac);
  void RefreshScaledSize();
  bool IsBounded() const { return !lower_.empty(); }

  // Constant after construction.
  const int n_, m_;
  double* const x_;                    // the caller's
  std::vector<double> lower_, upper_;  // empty without bounds
  const TrTolerances eps_;
  const int maxIterations_;
  const double rs_;

  // The search.
  Phase phase_ = Phase::kStart;
  std::vector<double> point_, residuals_;  // current point and F there
  std::vector<double> step_, taken_;       // the model's step; the part the box allows
  std::vector<double> trial_;              // the trial point
  std::vector<char> free_;                 // variables not held at a bound
  LevenbergMarquardtStep lm_;
  TrustRegionRadius radius_{0.0, 0.0};
  TrProgress progress_;
  TrialOutcome outcome_{};
  bool regionSet_ = false;
  bool anyAccepted_ = false;
  bool lastAccepted_ = false;
  double initialNorm_ = 0.0;
  int stopCriterion_ = 0;
  int lastRequest_ = 0;
};

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_TRUSTREGIONSOLVER_H_
