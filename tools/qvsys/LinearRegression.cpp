// Least squares by the normal equations on centred and scaled columns, with
// iterative refinement.
//
// Centring removes the intercept from the system and scaling each column to unit
// length brings the cross-product matrix C = Z'Z to a correlation matrix, whose
// condition number for nearly collinear data such as Longley's is about the
// square of Z's. Solving C b = Z'y loses that many digits once; each refinement
// step (r = y - Z b, solve C d = Z'r, b += d) wins them back, because the
// residual is formed against the data itself. Standard errors come from the
// diagonal of C^-1 (the Cholesky inverse) scaled back to the original units; the
// intercept's variance is s^2/n + m' Cov m, with m the column means.
#include "LinearRegression.h"

#include <algorithm>
#include <cmath>
#include <qvsysbase/qvsysbase.h>

namespace qvsys {
namespace {

using qvsysbase::IntelSPLHandler;

// Two refinement steps take the Longley solution from about eight correct digits
// to the limit of double precision; a third changes nothing measurable.
constexpr int kRefinementSteps = 3;

struct ScaledDesign {
  int n = 0;                   // observations
  int k = 0;                   // regressors
  std::vector<double> zt;      // Z transposed: k rows of n, centred and scaled
  std::vector<double> yc;      // centred y
  std::vector<double> means;   // column means of x
  std::vector<double> scales;  // column lengths after centring
  double yMean = 0.0;
};

double Mean(const double* values, int count) { return IntelSPLHandler::nspdMean(values, count); }

ScaledDesign CentreAndScale(const RegressionProblem& problem) {
  ScaledDesign d;
  d.n = problem.observations;
  d.k = problem.Regressors();
  d.zt.resize(static_cast<std::size_t>(d.k) * d.n);
  for (int j = 0; j < d.k; ++j) {
    double* row = &d.zt[static_cast<std::size_t>(j) * d.n];
    for (int i = 0; i < d.n; ++i) row[i] = problem.x[static_cast<std::size_t>(i) * d.k + j];
    const double mean = Mean(row, d.n);
    IntelSPLHandler::nspdbSub1(mean, row, d.n);
    const double scale = std::sqrt(IntelSPLHandler::nspdDotProd(row, row, d.n));
    if (scale == 0.0) throw qvsysbase::CannotEstimateException();
    IntelSPLHandler::nspdbMpy1(1.0 / scale, row, d.n);
    d.means.push_back(mean);
    d.scales.push_back(scale);
  }
  d.yc = problem.y;
  d.yMean = Mean(d.yc.data(), d.n);
  IntelSPLHandler::nspdbSub1(d.yMean, d.yc.data(), d.n);
  return d;
}

// C = Z'Z: the product of Z' with the transpose of Z'.
std::vector<double> CrossProduct(const ScaledDesign& d) {
  std::vector<double> c(static_cast<std::size_t>(d.k) * d.k);
  IntelSPLHandler::nspMatrixMultiply(d.zt.data(), d.k, d.n, d.n, d.zt.data(), d.k, d.n, c.data(),
                                     d.k);
  return c;
}

// Residuals r = yc - Z b.
std::vector<double> Residuals(const ScaledDesign& d, const std::vector<double>& b) {
  std::vector<double> fitted(d.n, 0.0);
  for (int j = 0; j < d.k; ++j) {
    IntelSPLHandler::nspdbAddScaledVector(&d.zt[static_cast<std::size_t>(j) * d.n], b[j],
                                          fitted.data(), d.n);
  }
  std::vector<double> r(d.n);
  IntelSPLHandler::nspdbSub3(d.yc.data(), fitted.data(), r.data(), d.n);
  return r;
}

// Solves C b = Z'v with the Cholesky factor of C.
std::vector<double> SolveNormal(const ScaledDesign& d, const std::vector<double>& factor,
                                const std::vector<double>& v) {
  std::vector<double> rhs(d.k);
  IntelSPLHandler::nspMatrixMultiplyByVector(d.zt.data(), d.k, d.n, d.n, v.data(), rhs.data());
  IntelSPLHandler::nspSolveLinEquatSymmetr(factor.data(), d.k, d.k, rhs.data(), 1, d.k);
  return rhs;
}

std::vector<double> Factor(const std::vector<double>& c, int k) {
  std::vector<double> factor = c;
  int info = 0;
  if (!IntelSPLHandler::nspCholDcInplace(factor.data(), k, k, &info)) {
    throw qvsysbase::CannotEstimateException();
  }
  return factor;
}

// The full symmetric inverse of C from the Cholesky kernels, which fill only
// the row-major lower triangle.
std::vector<double> Inverse(const std::vector<double>& c, int k) {
  std::vector<double> inverse = c;
  if (!IntelSPLHandler::nspCholInverseInplace(inverse.data(), k, k)) {
    throw qvsysbase::CannotEstimateException();
  }
  for (int i = 0; i < k; ++i) {
    for (int j = i + 1; j < k; ++j) inverse[i * k + j] = inverse[j * k + i];
  }
  return inverse;
}

bool Step(qvsysbase::Aborter& aborter, int percent, const wchar_t* text) {
  aborter.CheckForUserAbort();
  if (aborter.IsAborted()) return false;
  aborter.ChangeText(text);
  aborter.ReportProgress(percent);
  return true;
}

void Unscale(const ScaledDesign& d, const std::vector<double>& b, const std::vector<double>& inv,
             double s2, RegressionFit& fit) {
  fit.coefficients.assign(d.k + 1, 0.0);
  fit.standardErrors.assign(d.k + 1, 0.0);
  std::vector<double> w(d.k);  // m_j / scale_j
  double intercept = d.yMean;
  for (int j = 0; j < d.k; ++j) {
    fit.coefficients[j + 1] = b[j] / d.scales[j];
    fit.standardErrors[j + 1] = std::sqrt(s2 * inv[j * d.k + j]) / d.scales[j];
    intercept -= fit.coefficients[j + 1] * d.means[j];
    w[j] = d.means[j] / d.scales[j];
  }
  std::vector<double> invW(d.k);
  IntelSPLHandler::nspMatrixMultiplyByVector(inv.data(), d.k, d.k, d.k, w.data(), invW.data());
  const double quadratic = IntelSPLHandler::nspdDotProd(w.data(), invW.data(), d.k);
  fit.coefficients[0] = intercept;
  fit.standardErrors[0] = std::sqrt(s2 * (1.0 / d.n + quadratic));
}

}  // namespace

RegressionFit FitLeastSquares(const RegressionProblem& problem, qvsysbase::Aborter& aborter) {
  RegressionFit fit;
  fit.aborted = true;
  if (!Step(aborter, 0, L"centring and scaling the columns")) return fit;
  const ScaledDesign d = CentreAndScale(problem);
  if (!Step(aborter, 20, L"forming X'X")) return fit;
  const std::vector<double> c = CrossProduct(d);
  if (!Step(aborter, 40, L"Cholesky factorisation")) return fit;
  const std::vector<double> factor = Factor(c, d.k);
  if (!Step(aborter, 55, L"solving and refining")) return fit;
  std::vector<double> b = SolveNormal(d, factor, d.yc);
  for (int step = 0; step < kRefinementSteps; ++step) {
    const std::vector<double> delta = SolveNormal(d, factor, Residuals(d, b));
    IntelSPLHandler::nspdbAdd2(delta.data(), b.data(), d.k);
  }
  if (!Step(aborter, 75, L"inverting X'X")) return fit;
  const std::vector<double> inverse = Inverse(c, d.k);
  if (!Step(aborter, 90, L"standard errors")) return fit;
  const std::vector<double> r = Residuals(d, b);
  const double rss = IntelSPLHandler::nspdDotProd(r.data(), r.data(), d.n);
  const double tss = IntelSPLHandler::nspdDotProd(d.yc.data(), d.yc.data(), d.n);
  const double s2 = rss / (d.n - d.k - 1);
  Unscale(d, b, inverse, s2, fit);
  fit.residualSd = std::sqrt(s2);
  fit.rSquared = 1.0 - rss / tss;
  fit.aborted = false;
  aborter.ChangeText(L"done");
  aborter.ReportProgress(100);
  return fit;
}

double CorrectDigits(double value, double certified) {
  constexpr double kMaxDigits = 15.0;
  if (value == certified) return kMaxDigits;
  const double relative = certified != 0.0 ? std::fabs((value - certified) / certified)
                                           : std::fabs(value);
  return std::clamp(-std::log10(relative), 0.0, kMaxDigits);
}

}  // namespace qvsys
