// The step strategy of the trust-region least-squares solver: a scaled
// Levenberg–Marquardt step on a pivoted QR factorisation of the Jacobian, and
// Moré's radius update. The solver's state machine sees only this surface:
// linearise at a point, compute a step, predict its effect, update the radius.
//
// Notation: F the m residuals at the current point, J their m×n Jacobian
// (column-major, J[i + j·m] = ∂F_i/∂x_j), D the diagonal scaling, Δ the radius,
// λ the Levenberg–Marquardt parameter. The step p solves
//     min ‖F + J·p‖  subject to  ‖D·p‖ ≤ Δ,
// whose solution is p(λ) = −(JᵀJ + λ·DᵀD)⁻¹·JᵀF for the λ ≥ 0 with λ = 0 and
// ‖D·p(0)‖ ≤ Δ, or ‖D·p(λ)‖ = Δ to the subproblem precision.
//
// Thread-compatible; one instance belongs to one solver.
#ifndef QVSYSBASE_SRC_NUMERICS_TRUSTREGIONSTEP_H_
#define QVSYSBASE_SRC_NUMERICS_TRUSTREGIONSTEP_H_

#include <vector>

namespace qvsysbase::detail {

// ‖v‖ over n values stride apart, scaled by the largest magnitude so that the
// squares neither overflow nor underflow; infinite or not-a-number when an
// element is.
double Norm2(const double* v, int n, int stride = 1);

// What the radius update needs to know of one evaluated trial step p.
struct TrialOutcome {
  double residualNorm;       // ‖F(x)‖
  double trialResidualNorm;  // ‖F(x + p)‖; infinite or not-a-number when not finite
  double predicted;          // (‖F‖² − ‖F + J·p‖²)/‖F‖²
  double directional;        // Fᵀ·J·p/‖F‖², the slope of ‖F‖²/2 along p, relative
  double stepNorm;           // ‖D·p‖
};

// (‖F‖² − ‖F(x + p)‖²)/‖F‖², or −1 when ‖F(x + p)‖ ≥ 10‖F‖ or is not finite
// (a value that large says nothing beyond "much worse").
double ActualReduction(const TrialOutcome& outcome);
// actual/predicted, 0 for a step the model expects nothing (or no finite
// amount) from.
double ReductionRatio(const TrialOutcome& outcome);
// A trial point becomes the new point when the ratio reaches this much.
bool IsStepSuccessful(const TrialOutcome& outcome);

// Radius Δ and parameter λ under Moré's update rule.
class TrustRegionRadius {
 public:
  TrustRegionRadius(double radius, double parameter) : radius_(radius), parameter_(parameter) {}

  // With r = actual/predicted reduction:
  //   r ≤ 1/4: Δ = μ·min(Δ, 10‖D·p‖), λ = λ/μ, where μ = 1/2, or, when the sum
  //            of squares grew, the minimiser of the quadratic through the
  //            slope and the actual change, μ = ½·d/(d + ½·a) for slope d and
  //            actual reduction a; μ is kept within [1/10, 1/2] and is 1/10
  //            when ‖F‖ grew tenfold or became non-finite;
  //   r ≥ 3/4 or λ = 0: Δ = 2‖D·p‖, λ = λ/2 (the step was trusted; let the next one grow);
  //   otherwise unchanged.
  void Update(const TrialOutcome& outcome);
  // Δ = min(Δ, ‖D·p‖): the first step decides how far the start point's
  // scaled size was worth trusting.
  void ClipTo(double stepNorm);

  double radius() const { return radius_; }
  double parameter() const { return parameter_; }
  double& mutable_parameter() { return parameter_; }

 private:
  double radius_;
  double parameter_;
};

// The scaled Levenberg–Marquardt step on the free columns of J.
class LevenbergMarquardtStep {
 public:
  // subproblemPrecision: σ, the relative precision of ‖D·p‖ = Δ (at most 1/10);
  // maxSubproblemIterations: the cap on λ's iterations.
  LevenbergMarquardtStep(int m, int n, double subproblemPrecision, int maxSubproblemIterations);

  // Linearises at a new point: column norms of J, the scaling
  // D_j = max(D_j, ‖J_j‖) (the first call takes ‖J_j‖, or 1 for a zero
  // column), and the pivoted QR of the columns with free[j] set, with Qᵀ·F.
  // REQUIRES: J and F finite.
  void Linearise(const double* jac, const double* f, const std::vector<char>& free);
  // The step for radius Δ in p (zero in fixed columns); λ is read as the
  // starting guess and left at the value found.
  void ComputeStep(double radius, double& parameter, double* p);
  // ‖D·v‖.
  double ScaledNorm(const double* v) const;
  // Smallest column norm of the last Jacobian.
  double MinColumnNorm() const;
  // (‖F‖² − ‖F + J·p‖²)/‖F‖² and Fᵀ·J·p/‖F‖² for the last linearisation's J
  // and F. For the step ComputeStep returned, with its λ, they come from the
  // normal equations (JᵀF = −(JᵀJ + λDᵀD)p), free of cancellation; for any
  // other step (one cut back to the bounds) they are formed directly.
  void Predict(const double* p, bool exactStep, double parameter, double& predicted,
               double& directional) const;

 private:
  void SolveGaussNewton(std::vector<double>& x);
  void SolveDamped(double parameter, std::vector<double>& x);
  double ScaledFreeNorm(const std::vector<double>& x) const;
  double NewtonCorrection(const std::vector<double>& x, double dxnorm, double fp,
                          double radius) const;

  int m_, n_;
  double sigma_;
  int maxSubproblemIterations_;
  std::vector<double> jac_, f_;  // the last linearisation, for Predict
  bool scaled_ = false;          // D set by a first linearisation
  std::vector<double> diag_;     // D, over all n columns
  std::vector<double> colNorm_;  // ‖J_j‖
  std::vector<int> cols_;        // the free columns, in order
  int k_ = 0;                    // their number
  std::vector<double> qr_;       // m×k: R above the diagonal, reflectors below
  std::vector<double> tau_, qtf_, work_;
  std::vector<int> perm_;          // 0-based: pivot position j holds free column perm_[j]
  std::vector<double> s_, sdiag_;  // the factor of [R; √λ·D·P] built by SolveDamped
  std::vector<double> dfree_;      // D on the free columns
};

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_TRUSTREGIONSTEP_H_
