#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "numerics/NumericJacobian.h"
#include "numerics/TrustRegionSolver.h"

namespace qvsysbase::detail {
namespace {

constexpr double kJacEps = 6e-6;

// F(x) = (x0²·x1, sin x1, exp(x2)) with every point the callback sees recorded;
// not-a-number wherever x2 > nanAbove.
struct Probe {
  double nanAbove = std::numeric_limits<double>::infinity();
  std::vector<std::vector<double>> seen;
};

void Model(int* /*m*/, int* /*n*/, const double* x, double* f, void* userData) {
  auto* probe = static_cast<Probe*>(userData);
  probe->seen.emplace_back(x, x + 3);
  f[0] = x[0] * x[0] * x[1];
  f[1] = std::sin(x[1]);
  f[2] = x[2] > probe->nanAbove ? std::numeric_limits<double>::quiet_NaN() : std::exp(x[2]);
}

std::vector<double> Exact(const double* x) {  // column-major 3×3
  return {2 * x[0] * x[1], 0, 0, x[0] * x[0], std::cos(x[1]), 0, 0, 0, std::exp(x[2])};
}

TEST(NumericJacobianTest, CentralDifferencesWithRelativeSteps) {
  struct Case {
    const char* what;
    double x[3];
    double nanAbove;
    const double *lower, *upper;
    double tolerance;  // relative
  };
  const double lower[3] = {-5, -5, -5}, upper[3] = {5, 0.7, 5};
  const Case cases[] = {
      // Central differences are good to about h² + ε/h, one-sided ones to h.
      {"ordinary point", {1.5, 0.7, -0.3}, 1e300, nullptr, nullptr, 1e-9},
      {"parameter of 1e-9 and a zero", {1e-9, 0.0, 2.0}, 1e300, nullptr, nullptr, 1e-9},
      {"x1 on its upper bound: one-sided", {1.5, 0.7, -0.3}, 1e300, lower, upper, 1e-5},
      // h shrinks by 8⁵ to 1.8e-10 before x2 + h is finite, so ε/h dominates.
      {"not finite just above x2: retried smaller",
       {1.5, 0.7, 1.0},
       1.0 + 1e-9,
       nullptr,
       nullptr,
       1e-5},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Probe probe{c.nanAbove, {}};
    std::vector<double> jac(9, -1.0);
    ASSERT_EQ(EstimateJacobian(&Model, 3, 3, jac.data(), c.x, kJacEps, &probe, c.lower, c.upper),
              kTrSuccess);
    const std::vector<double> exact = Exact(c.x);
    for (int k = 0; k < 9; ++k) {
      EXPECT_NEAR(jac[k], exact[k], c.tolerance * (1 + std::fabs(exact[k]))) << "entry " << k;
    }
    for (const auto& seen : probe.seen) {
      for (int j = 0; j < 3; ++j) {
        // Every point differs from x by the relative step at most (jacEps
        // when x_j = 0), give or take the rounding of x_j ± h.
        const double h = kJacEps * (c.x[j] != 0 ? std::fabs(c.x[j]) : 1.0);
        const double ulp = std::numeric_limits<double>::epsilon() * std::fabs(c.x[j]);
        EXPECT_LE(std::fabs(seen[j] - c.x[j]), h + ulp) << "parameter " << j;
        if (c.upper != nullptr) {
          EXPECT_LE(seen[j], c.upper[j]);
        }
      }
    }
  }
}

TEST(NumericJacobianTest, EdgeColumnsAndRefusals) {
  Probe probe{-1e300, {}};  // x2 never gives a finite residual
  const double x[3] = {1.0, 1.0, 1.0}, pinned[3] = {1.0, 0.0, 0.0}, wide[3] = {1.0, 2.0, 2.0};
  std::vector<double> jac(9);
  ASSERT_EQ(EstimateJacobian(&Model, 3, 3, jac.data(), x, kJacEps, &probe, pinned, wide),
            kTrSuccess);
  EXPECT_EQ(jac[0], 0.0);           // x0 pinned by a zero-width box
  EXPECT_TRUE(std::isnan(jac[8]));  // no finite estimate for x2
  EXPECT_EQ(EstimateJacobian(&Model, 3, 3, jac.data(), x, 0.0, &probe), kTrInvalidOption);
  EXPECT_EQ(EstimateJacobian(&Model, 3, 3, jac.data(), x, kJacEps, &probe, pinned, nullptr),
            kTrInvalidOption);
  EXPECT_EQ(EstimateJacobian(nullptr, 3, 3, jac.data(), x, kJacEps, &probe), kTrInvalidOption);
}

}  // namespace
}  // namespace qvsysbase::detail
