// The six stopping rules of the trust-region least-squares solver, in the order
// of its six tolerances, and the one place that maps them to the negative
// request codes -1..-6 the reverse-communication loop hands back.
//
// Sizes in parameter space (the region and the step) are measured in the
// scaled norm ‖D·v‖ of the solver and compared relative to the scaled size of
// the current point, ‖D·x‖ (1 when x is 0), and the model's promise relative
// to ‖F‖, so one tolerance serves problems and parameters of every magnitude.
// ‖F‖ itself and the column norms are absolute: the caller's ‖F‖ tolerance is
// also what decides success.
#ifndef QVSYSBASE_SRC_NUMERICS_TRUSTREGIONSTOPPING_H_
#define QVSYSBASE_SRC_NUMERICS_TRUSTREGIONSTOPPING_H_

#include <limits>

namespace qvsysbase::detail {

// The caller's six tolerances, in the order of its eps array.
struct TrTolerances {
  double region;      // eps[0]: trust region, relative to ‖D·x‖
  double residual;    // eps[1]: ‖F‖
  double column;      // eps[2]: smallest Jacobian column norm
  double step;        // eps[3]: trial step, relative to ‖D·x‖
  double model;       // eps[4]: reduction the linear model predicts, relative to ‖F‖
  double subproblem;  // eps[5]: relative precision of the trial-step subproblem
};

// What is known of the search at a checkpoint. A quantity not yet known stays
// not-a-number, and a rule over an unknown quantity is never met.
struct TrProgress {
  static constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();
  int iterations = 0;
  double region = kUnknown;          // Δ
  double scaledSize = kUnknown;      // ‖D·x‖, or 1 when that is 0
  double residualNorm = kUnknown;    // ‖F(x)‖
  double minColumnNorm = kUnknown;   // min_j ‖J_j‖ (not-a-number for a non-finite column)
  double stepNorm = kUnknown;        // ‖D·s‖ of the trial step s
  double modelReduction = kUnknown;  // (‖F‖ − ‖F + J·s‖)/‖F‖
  bool jacobianFinite = true;
};

// The request code of the first rule met, in the order -1..-6, or 0 when none is.
int FirstStopMet(const TrProgress& progress, const TrTolerances& eps, int maxIterations);

// (‖F‖ − ‖F + J·s‖)/‖F‖ from the predicted reduction of the sum of squares,
// ρ = (‖F‖² − ‖F + J·s‖²)/‖F‖². Written as ρ/(1 + √(1 − ρ)) so that a reduction
// far below ‖F‖ keeps its digits instead of vanishing in the difference of two
// nearly equal norms.
double ModelReduction(double relativePredictedReduction);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_TRUSTREGIONSTOPPING_H_
