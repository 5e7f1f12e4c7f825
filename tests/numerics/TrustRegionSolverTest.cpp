#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "numerics/TrustRegionSolver.h"
#include "numerics/TrustRegionStopping.h"

namespace qvsysbase::detail {
namespace {

TEST(TrustRegionStoppingTest, FirstRuleMetInTheOrderOfTheTolerances) {
  const TrTolerances eps{1e-8, 1e-6, 1e-10, 1e-8, 1e-12, 0.1};
  struct Case {
    const char* what;
    TrProgress progress;
    int request;
  };
  auto at =
      [](int iterations, double region, double residual, double column, double step, double model) {
        TrProgress p;
        p.iterations = iterations;
        p.scaledSize = 2.0;
        p.region = region;
        p.residualNorm = residual;
        p.minColumnNorm = column;
        p.stepNorm = step;
        p.modelReduction = model;
        return p;
      };
  const double u = TrProgress::kUnknown;
  TrProgress nonFinite = at(0, u, u, u, u, u);
  nonFinite.jacobianFinite = false;
  const Case cases[] = {
      {"nothing known", at(0, u, u, u, u, u), 0},
      {"nothing met", at(9, 1.0, 1.0, 1.0, 1.0, 1.0), 0},
      {"iterations", at(10, 1e-20, 0.0, 0.0, 0.0, 0.0), -1},
      {"region relative to ‖Dx‖", at(0, 1.9e-8, 1.0, 1.0, 1.0, 1.0), -2},
      {"region at the limit", at(0, 2e-8, 1.0, 1.0, 1.0, 1.0), 0},
      {"residual", at(0, 1.0, 0.9e-6, 0.0, 0.0, 0.0), -3},
      {"column", at(0, 1.0, 1.0, 0.9e-10, 0.0, 0.0), -4},
      {"column not finite", nonFinite, -4},
      {"step relative to ‖Dx‖", at(0, 1.0, 1.0, 1.0, 1.9e-8, 0.0), -5},
      {"model", at(0, 1.0, 1.0, 1.0, 1.0, 0.9e-12), -6},
      {"model promises an increase", at(0, 1.0, 1.0, 1.0, 1.0, -1.0), -6},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(FirstStopMet(c.progress, eps, 10), c.request);
  }
  // (‖F‖ − ‖F + Js‖)/‖F‖ keeps its digits far below ε: ρ/2 for small ρ.
  EXPECT_DOUBLE_EQ(ModelReduction(1e-20), 0.5e-20);
  EXPECT_DOUBLE_EQ(ModelReduction(0.75), 0.5);
}

// Drives the solver on F(x) = A·x − b, recording the requests.
TEST(TrustRegionSolverTest, ConversationOnALinearProblem) {
  const int n = 2, m = 3;
  const double a[m][n] = {{1, 0}, {0, 2}, {1, 1}}, b[m] = {1, 2, 3};
  std::vector<double> x = {10.0, -10.0}, f(m), jac(m * n);
  for (int i = 0; i < m; ++i)
    for (int j = 0; j < n; ++j) jac[i + j * m] = a[i][j];
  const double eps[6] = {1e-12, 1e-20, 1e-20, 1e-12, 1e-20, 0.1};
  std::unique_ptr<TrustRegionSolver> solver;
  ASSERT_EQ(TrustRegionSolver::Init(
                &solver, TrProblem{n, m, x.data(), nullptr, nullptr, eps, 50, 10, 100.0}),
            kTrSuccess);
  std::vector<int> requests;
  int request = 0;
  while (requests.size() < 100) {
    ASSERT_EQ(solver->Solve(f.data(), jac.data(), &request), kTrSuccess);
    requests.push_back(request);
    if (request < 0) break;
    if (request == 1)
      for (int i = 0; i < m; ++i) f[i] = a[i][0] * x[0] + a[i][1] * x[1] - b[i];
  }
  // Residuals, Jacobian, then trial / iteration-done pairs until a rule stops it.
  ASSERT_GE(requests.size(), 5u);
  EXPECT_EQ(std::vector<int>(requests.begin(), requests.begin() + 4),
            (std::vector<int>{1, 2, 1, 0}));
  EXPECT_LT(requests.back(), 0);
  // Least squares solution of the normal equations [2 1; 1 5]·x = [4 7]: x = (13, 10)/9.
  EXPECT_NEAR(x[0], 13.0 / 9, 1e-12);
  EXPECT_NEAR(x[1], 10.0 / 9, 1e-12);
  int iterations = 0, stop = 0;
  double r1 = 0, r2 = 0;
  ASSERT_EQ(solver->Get(&iterations, &stop, &r1, &r2), kTrSuccess);
  EXPECT_EQ(stop, -requests.back());
  EXPECT_NEAR(r2, 2.0 / 3, 1e-12);  // ‖(4, 2, −4)/9‖, the residual at the solution
  EXPECT_NEAR(r2, std::hypot(f[0], f[1], f[2]), 1e-15);  // f holds the residuals of x
  // Once stopped, the solver keeps answering with its stopping rule.
  ASSERT_EQ(solver->Solve(f.data(), jac.data(), &request), kTrSuccess);
  EXPECT_EQ(request, requests.back());
}

}  // namespace
}  // namespace qvsysbase::detail
