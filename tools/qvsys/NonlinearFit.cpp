// The fit runs through IntelSPLHandler::nspTROptimise with a careful caller's
// tolerances; the standard errors come from the kernels as for a linear model,
// with the Jacobian at the estimates in place of the design:
//   se_j = s·√((JᵀJ)⁻¹)_jj,  s² = RSS/(m − n).
#include "NonlinearFit.h"

#include <qvsysbase/IntelSPLHandler.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qvsys {
namespace {

using qvsysbase::IntelSPLHandler;

// Region and step relative to the scaled point near the rounding level; the
// ‖F‖, column and model tolerances far below what the fit reaches, so they
// never end it early; Moré's 10 % for the step subproblem; a relative
// Jacobian step of ∛ε, the balance of truncation and rounding.
constexpr double kEps[6] = {1e-15, 1e-30, 1e-30, 1e-15, 1e-30, 0.1};
constexpr double kJacEps = 6e-6;
constexpr int kMaxIter = 1000;
constexpr int kMaxTrialIter = 100;
constexpr double kInitialRegion = 100.0;
// Rules 2 (region) and 5 (step) mean the search found nowhere better to go.
constexpr int kRegionCollapsed = 2;
constexpr int kStepNegligible = 5;
// Progress counts residual evaluations, one percent each, shown every tenth
// and never reaching 100 before the search ends.
constexpr int kProgressCeiling = 99;
constexpr int kProgressEvery = 10;

// Thrown from the residual callback when the user aborts; the kernel releases
// everything on its way out.
struct FitAborted {};

struct Context {
  const NonlinearProblem* problem;
  qvsysbase::Aborter* aborter;
  int evaluations = 0;
};

double Model(const double* b, double x) { return b[0] * (1 - std::exp(-b[1] * x)); }

void Residuals(int* m, int* /*n*/, const double* b, double* f, void* userData) {
  auto* context = static_cast<Context*>(userData);
  context->aborter->CheckForUserAbort();
  if (context->aborter->IsAborted()) throw FitAborted{};
  if (++context->evaluations % kProgressEvery == 0)
    context->aborter->ReportProgress(std::min(context->evaluations, kProgressCeiling));
  for (int i = 0; i < *m; ++i) f[i] = context->problem->y[i] - Model(b, context->problem->x[i]);
}

// Jᵀ (n×m, row-major) of the model at b: ∂f/∂b1 = 1 − e^(−b2·x), ∂f/∂b2 = b1·x·e^(−b2·x).
std::vector<double> JacobianTransposed(const NonlinearProblem& p, const std::vector<double>& b) {
  const int m = static_cast<int>(p.x.size());
  std::vector<double> jt(2 * m);
  for (int i = 0; i < m; ++i) {
    const double e = std::exp(-b[1] * p.x[i]);
    jt[i] = 1 - e;
    jt[m + i] = b[0] * p.x[i] * e;
  }
  return jt;
}

// Empty when JᵀJ is not positive definite or (JᵀJ)_jj·((JᵀJ)⁻¹)_jj, a lower
// bound of its condition number, passes 1/ε: no digit of the result would hold.
std::vector<double> StandardErrors(const NonlinearProblem& p, const std::vector<double>& b) {
  const int m = static_cast<int>(p.x.size()), n = static_cast<int>(b.size());
  const std::vector<double> jt = JacobianTransposed(p, b);
  std::vector<double> jtj(n * n);
  IntelSPLHandler::nspMatrixMultiply(jt.data(), n, m, m, jt.data(), n, m, jtj.data(), n);
  std::vector<double> inverse = jtj;
  if (!IntelSPLHandler::nspCholInverseInplace(inverse.data(), n, n)) return {};
  double rss = 0.0;
  for (int i = 0; i < m; ++i) rss += std::pow(p.y[i] - Model(b.data(), p.x[i]), 2);
  std::vector<double> se(n);
  for (int j = 0; j < n; ++j) {
    const double inv = inverse[j * n + j];
    if (!(inv > 0) || jtj[j * n + j] * inv * std::numeric_limits<double>::epsilon() > 1) return {};
    se[j] = std::sqrt(rss / (m - n) * inv);
  }
  return se;
}

}  // namespace

NonlinearProblem LoadMisra1a() {
  return NonlinearProblem{"Misra1a",
                          {77.6,
                           114.9,
                           141.1,
                           190.8,
                           239.9,
                           289.0,
                           332.8,
                           378.4,
                           434.8,
                           477.3,
                           536.8,
                           593.1,
                           689.1,
                           760.0},
                          {10.07,
                           14.73,
                           17.94,
                           23.93,
                           29.61,
                           35.18,
                           40.02,
                           44.82,
                           50.76,
                           55.05,
                           61.01,
                           66.40,
                           75.47,
                           81.78},
                          {500, 0.0001},
                          {2.3894212918E+02, 5.5015643181E-04},
                          {2.7070075241E+00, 7.2668688436E-06}};
}

NonlinearFit FitNonlinear(const NonlinearProblem& problem, qvsysbase::Aborter& aborter) {
  NonlinearFit fit;
  Context context{&problem, &aborter};
  std::vector<double> b = problem.start;
  double r1 = 0.0, r2 = 0.0;
  aborter.ChangeText(L"fitting " + std::wstring(problem.name.begin(), problem.name.end()));
  try {
    IntelSPLHandler::nspTROptimise(static_cast<int>(b.size()),
                                   b.data(),
                                   nullptr,
                                   nullptr,
                                   static_cast<int>(problem.x.size()),
                                   &Residuals,
                                   &context,
                                   kMaxIter,
                                   kMaxTrialIter,
                                   kEps,
                                   kJacEps,
                                   kInitialRegion,
                                   &fit.iterations,
                                   &fit.stopCriterion,
                                   &r1,
                                   &r2);
  } catch (const FitAborted&) {
    fit.aborted = true;
    return fit;
  }
  aborter.ReportProgress(100);
  fit.evaluations = context.evaluations;
  fit.converged = fit.stopCriterion == kRegionCollapsed || fit.stopCriterion == kStepNegligible;
  fit.estimates = b;
  fit.standardErrors = StandardErrors(problem, b);
  return fit;
}

}  // namespace qvsys
