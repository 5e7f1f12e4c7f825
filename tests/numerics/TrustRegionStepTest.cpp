#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "numerics/TrustRegionStep.h"

namespace qvsysbase::detail {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// An accept/reject sequence replayed through Moré's rule, radii checked exactly.
TEST(TrustRegionRadiusTest, ReplaysMoresUpdate) {
  struct Step {
    const char* what;
    double trial, predicted, directional, stepNorm;
    bool accepted;
    double radius, parameter;
  };
  // ‖F‖ = 1 throughout; start Δ = 1, λ = 0.5.
  const double mu = 0.5 * -0.5 / (-0.5 + 0.5 * (1 - 1.2 * 1.2));  // the quadratic's minimiser
  const Step steps[] = {
      {"good: grows to 2‖Dp‖", 0.5, 0.8, -0.6, 0.8, true, 1.6, 0.25},
      {"fair: unchanged", 0.8, 0.6, -0.4, 0.7, true, 1.6, 0.25},
      {"poor decrease: halves", 0.95, 0.5, -0.3, 0.3, true, 0.8, 0.5},
      {"worse: the quadratic's factor", 1.2, 0.6, -0.5, 0.05, false, mu * 0.5, 0.5 / mu},
      {"not finite: a tenth", kInf, 0.6, -0.5, 0.1, false, 0.1 * mu * 0.5, 5 / mu},
      {"grew tenfold: a tenth", 10.0, 0.6, -0.5, 1.0, false, 0.01 * mu * 0.5, 50 / mu},
  };
  TrustRegionRadius region(1.0, 0.5);
  for (const Step& s : steps) {
    SCOPED_TRACE(s.what);
    const TrialOutcome o{1.0, s.trial, s.predicted, s.directional, s.stepNorm};
    EXPECT_EQ(IsStepSuccessful(o), s.accepted);
    region.Update(o);
    EXPECT_DOUBLE_EQ(region.radius(), s.radius);
    EXPECT_DOUBLE_EQ(region.parameter(), s.parameter);
  }
  TrustRegionRadius gaussNewton(1.0, 0.0);  // λ = 0: a fair step still lets the region grow
  gaussNewton.Update(TrialOutcome{1.0, 0.8, 0.6, -0.4, 0.7});
  EXPECT_DOUBLE_EQ(gaussNewton.radius(), 1.4);
  gaussNewton.ClipTo(0.3);
  EXPECT_DOUBLE_EQ(gaussNewton.radius(), 0.3);
}

// J (column-major, badly scaled columns) and F with a fixed seed.
struct LinearModel {
  int m = 9, n = 4;
  std::vector<double> jac, f;
  explicit LinearModel(bool duplicateColumn = false) : jac(m * n), f(m) {
    std::mt19937 rng(20261123);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < m; ++i) jac[i + j * m] = u(rng) * std::pow(10.0, 2 * j - 3);
    if (duplicateColumn)
      for (int i = 0; i < m; ++i) jac[i + 3 * m] = 2 * jac[i + 1 * m];
    for (double& e : f) e = u(rng);
  }
  // ‖(JᵀJ + λDᵀD)·p + JᵀF‖ / ‖JᵀF‖: zero for the exact step of λ.
  double NormalEquationError(const LevenbergMarquardtStep& lm, const double* p,
                             double lambda) const {
    std::vector<double> jp(m, 0.0), err(n), g(n);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < m; ++i) jp[i] += jac[i + j * m] * p[j];
    for (int j = 0; j < n; ++j) {
      std::vector<double> unit(n, 0.0);
      unit[j] = 1.0;
      const double d = lm.ScaledNorm(unit.data());
      g[j] = err[j] = 0.0;
      for (int i = 0; i < m; ++i) {
        g[j] += jac[i + j * m] * f[i];
        err[j] += jac[i + j * m] * (jp[i] + f[i]);
      }
      err[j] += lambda * d * d * p[j];
    }
    return Norm2(err.data(), n) / Norm2(g.data(), n);
  }
};

TEST(LevenbergMarquardtStepTest, SolvesTheDampedNormalEquationsOnTheRegionBoundary) {
  for (const bool duplicate : {false, true}) {
    SCOPED_TRACE(duplicate ? "rank-deficient J" : "full-rank J");
    LinearModel model(duplicate);
    const std::vector<char> allFree(model.n, 1);
    LevenbergMarquardtStep lm(model.m, model.n, 0.1, 100);
    lm.Linearise(model.jac.data(), model.f.data(), allFree);
    std::vector<double> p(model.n);
    double lambda = 0.0;
    if (!duplicate) {
      lm.ComputeStep(1e12, lambda, p.data());  // Gauss–Newton: the region is no constraint
      EXPECT_EQ(lambda, 0.0);
      EXPECT_LT(model.NormalEquationError(lm, p.data(), 0.0), 1e-10);
    }
    // A region well inside the Gauss–Newton step (‖D·p‖ is of the order of ‖F‖ here).
    const double radius = 0.01 * Norm2(model.f.data(), model.m);
    lm.ComputeStep(radius, lambda, p.data());
    EXPECT_GT(lambda, 0.0);
    EXPECT_NEAR(lm.ScaledNorm(p.data()), radius, 0.1 * radius);
    EXPECT_LT(model.NormalEquationError(lm, p.data(), lambda), 1e-10);
    // The cancellation-free prediction agrees with the one formed from J·p.
    double exact = 0, direct = 0, slopeExact = 0, slopeDirect = 0;
    lm.Predict(p.data(), true, lambda, exact, slopeExact);
    lm.Predict(p.data(), false, lambda, direct, slopeDirect);
    EXPECT_NEAR(exact, direct, 1e-12);
    EXPECT_NEAR(slopeExact, slopeDirect, 1e-12);
  }
}

TEST(LevenbergMarquardtStepTest, FixedColumnsDoNotMove) {
  LinearModel model;
  LevenbergMarquardtStep lm(model.m, model.n, 0.1, 100);
  lm.Linearise(model.jac.data(), model.f.data(), {1, 0, 1, 0});
  std::vector<double> p(model.n, 7.0);
  double lambda = 0.0;
  lm.ComputeStep(1.0, lambda, p.data());
  EXPECT_EQ(p[1], 0.0);
  EXPECT_EQ(p[3], 0.0);
  EXPECT_NE(p[0], 0.0);
  lm.Linearise(model.jac.data(), model.f.data(), {0, 0, 0, 0});
  lm.ComputeStep(1.0, lambda, p.data());
  EXPECT_EQ(lm.ScaledNorm(p.data()), 0.0);
}

}  // namespace
}  // namespace qvsysbase::detail
