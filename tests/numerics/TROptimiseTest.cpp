// The trust-region kernel end to end: the NIST StRD nonlinear regression
// problems from both starting points and inside a box, graded by the log
// relative error of every parameter and of the standard errors; then the
// contract of the request loop on small problems.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <stdexcept>
#include <vector>

#include "ExpectThrow.h"
#include "numerics/KernelTestSupport.h"
#include "numerics/NistProblems.h"
#include "numerics/NumericJacobian.h"
#include "numerics/TROptimise.h"
#include "qvsysbase/qvExcept.h"

namespace qvsysbase::testing {
namespace {

using testing_support::ExpectThrowText;
using testing_support::Select;

constexpr double kRequiredDigits = 6.0;
constexpr double kRequiredSeDigits = 4.0;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// A residual function with an evaluation count, handed to the kernel as userData.
struct Fit {
  std::function<void(const double* x, double* f)> residuals;
  int evaluations = 0;
};

void Residuals(int* /*m*/, int* /*n*/, const double* x, double* f, void* userData) {
  auto* fit = static_cast<Fit*>(userData);
  ++fit->evaluations;
  fit->residuals(x, f);
}

Fit NistFit(const NistProblem& p) {
  return Fit{[&p](const double* b, double* f) { p.Residuals(b, f); }};
}

struct Outcome {
  std::vector<double> x;
  bool result = false;
  int evaluations = 0, iterations = 0, stop = 0;
  double r1 = 0.0, r2 = 0.0;
};

// The arguments of one call: the settings of the NIST runs unless a test
// changes them.
struct Call {
  int n = 1, m = 1;
  double* x = nullptr;
  const double *lower = nullptr, *upper = nullptr;
  TRResidualFn fcn = &Residuals;
  const double* eps = kNistEps;
  int maxIter = kNistMaxIter, maxTrialIter = kNistMaxTrialIter;
  double jacEps = kNistJacEps, rs = kNistInitialRegion;

  bool Run(Fit& fit, Outcome& o) const {
    return IntelSPLHandler::nspTROptimise(n,
                                          x,
                                          lower,
                                          upper,
                                          m,
                                          fcn,
                                          &fit,
                                          maxIter,
                                          maxTrialIter,
                                          eps,
                                          jacEps,
                                          rs,
                                          &o.iterations,
                                          &o.stop,
                                          &o.r1,
                                          &o.r2);
  }
};

Outcome Optimise(Fit fit, int m, std::vector<double> x, const double* lower = nullptr,
                 const double* upper = nullptr, int maxIter = kNistMaxIter) {
  Outcome o;
  o.x = std::move(x);
  const Call call{.n = static_cast<int>(o.x.size()),
                  .m = m,
                  .x = o.x.data(),
                  .lower = lower,
                  .upper = upper,
                  .maxIter = maxIter};
  o.result = call.Run(fit, o);
  o.evaluations = fit.evaluations;
  return o;
}

// Standard errors of the estimates b: s·√((JᵀJ)⁻¹)_jj with s² = RSS/(m − n) and
// J the central-difference Jacobian at b, through the library's kernels. Empty
// when JᵀJ is numerically singular: not positive definite, or with
// (JᵀJ)_jj·((JᵀJ)⁻¹)_jj, a lower bound of its condition number, beyond 1/ε.
std::vector<double> StandardErrors(const NistProblem& p, const std::vector<double>& b) {
  const int n = p.Parameters(), m = p.Observations();
  std::vector<double> jac(static_cast<std::size_t>(m) * n), f(m), jtj(n * n);
  Fit fit = NistFit(p);
  detail::EstimateJacobian(&Residuals, n, m, jac.data(), b.data(), kNistJacEps, &fit);
  p.Residuals(b.data(), f.data());
  double rss = 0.0;
  for (double r : f) rss += r * r;
  // The column-major m×n J is the row-major n×m Jᵀ, so A·Bᵀ with A = B = Jᵀ is JᵀJ.
  IntelSPLHandler::nspMatrixMultiply(jac.data(), n, m, m, jac.data(), n, m, jtj.data(), n);
  std::vector<double> inverse = jtj;
  if (!IntelSPLHandler::nspCholInverseInplace(inverse.data(), n, n)) return {};
  std::vector<double> se(n);
  for (int j = 0; j < n; ++j) {
    const double diag = jtj[j * n + j], inv = inverse[j * n + j];
    if (!(inv > 0.0) || diag * inv * std::numeric_limits<double>::epsilon() > 1.0) return {};
    se[j] = std::sqrt(rss / (m - n) * inv);
  }
  return se;
}

class TROptimiseTest : public ::testing::Test {
 protected:
  void SetUp() override { Select(IntelSPLHandler::SplModeMKL); }
};

// Every problem from both NIST starts, and inside the box certified ±
// (10·|certified| + 1) from start 1 moved into it. QV_NIST_TABLE=1 prints
// the digits and evaluation counts.
TEST_F(TROptimiseTest, NistProblemsToSixDigitsWithStandardErrorsToFour) {
  const bool print = std::getenv("QV_NIST_TABLE") != nullptr;
  for (const std::string& name : NistProblemNames()) {
    SCOPED_TRACE(name);
    const NistProblem p = LoadNistProblem(name);
    ASSERT_GT(p.Parameters(), 0);
    const int n = p.Parameters(), m = p.Observations();
    std::vector<double> lower(n), upper(n), inside(n);
    for (int j = 0; j < n; ++j) {
      const double c = p.certified[j], half = 10 * std::fabs(c) + 1;
      lower[j] = c - half;
      upper[j] = c + half;
      inside[j] = std::clamp(p.start1[j], lower[j], upper[j]);
    }
    const Outcome runs[3] = {Optimise(NistFit(p), m, p.start1),
                             Optimise(NistFit(p), m, p.start2),
                             Optimise(NistFit(p), m, inside, lower.data(), upper.data())};
    const std::vector<double> se = StandardErrors(p, runs[0].x);
    if (print) {
      std::printf("%-9s", name.c_str());
      for (const Outcome& o : runs)
        std::printf(" | %4.1f %5d", MinDigits(o.x, p.certified), o.evaluations);
      std::printf(" | se %4.1f\n", se.empty() ? 0.0 : MinDigits(se, p.certifiedSd));
    }
    for (int run = 0; run < 3; ++run) {
      SCOPED_TRACE(run < 2 ? "start " + std::to_string(run + 1) : std::string("bounded"));
      for (int j = 0; j < n; ++j)
        EXPECT_GE(LogRelativeError(runs[run].x[j], p.certified[j]), kRequiredDigits)
            << "b" << j + 1;
    }
    for (int j = 0; j < n; ++j) {
      EXPECT_GE(runs[2].x[j], lower[j]);
      EXPECT_LE(runs[2].x[j], upper[j]);
    }
    ASSERT_FALSE(se.empty()) << "JᵀJ numerically singular";
    EXPECT_GE(MinDigits(se, p.certifiedSd), kRequiredSeDigits);
  }
}

// r = x² − 4 from x = 0.5: the first Gauss–Newton step overshoots to 4.25.
Fit SquareRoot(double nanAbove = kInf) {
  return Fit{
      [nanAbove](const double* x, double* f) { f[0] = x[0] > nanAbove ? kNaN : x[0] * x[0] - 4; }};
}

TEST_F(TROptimiseTest, NonFiniteTrialResidualsShrinkTheRegionAndTheSearchGoesOn) {
  const Outcome o = Optimise(SquareRoot(3.0), 1, {0.5});
  EXPECT_NEAR(o.x[0], 2.0, 1e-12);
  EXPECT_TRUE(o.result || o.r2 < 1e-12);
  EXPECT_TRUE(std::isfinite(o.r2));
}

TEST_F(TROptimiseTest, NonFiniteStartResidualsEndTheSearchAtOnce) {
  const Outcome o = Optimise(SquareRoot(0.0), 1, {0.5});
  EXPECT_EQ(o.stop, 2);
  EXPECT_EQ(o.evaluations, 1);
  EXPECT_EQ(o.r1, kInf);
  EXPECT_EQ(o.r2, kInf);
  EXPECT_FALSE(o.result);
  EXPECT_EQ(o.x[0], 0.5);
}

TEST_F(TROptimiseTest, StopsOnTheRuleItMeetsAndKeepsTheLimits) {
  struct Case {
    const char* what;
    Fit fit;
    std::vector<double> x;
    int maxIter, stop;
    bool result;
  };
  const Fit alreadyOptimal{[](const double* x, double* f) { f[0] = x[0] - 1, f[1] = 0; }};
  const Fit neverChanges{[](const double*, double* f) { f[0] = 1, f[1] = 2; }};
  const Case cases[] = {
      {"already optimal", alreadyOptimal, {1.0}, kNistMaxIter, 3, false},
      {"residuals never change", neverChanges, {1.0}, kNistMaxIter, 4, false},
      {"iteration limit", SquareRoot(), {0.5}, 2, 1, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const Outcome o = Optimise(c.fit, c.what[0] == 'i' ? 1 : 2, c.x, nullptr, nullptr, c.maxIter);
    EXPECT_EQ(o.stop, c.stop);
    EXPECT_EQ(o.result, o.r2 < kNistEps[1]);
    EXPECT_LE(o.iterations, c.maxIter);
  }
}

TEST_F(TROptimiseTest, BoundedSearchOnlyEvaluatesInsideTheBoxAndReachesABoundMinimum) {
  const double lower[2] = {0.0, -1.0}, upper[2] = {2.0, 1.0};
  bool outside = false;
  // min (x0 − 5)² + (x1 − 0.5)²: x0 ends on its upper bound, x1 inside.
  Fit fit{[&](const double* x, double* f) {
    outside = outside || x[0] < lower[0] || x[0] > upper[0] || x[1] < lower[1] || x[1] > upper[1];
    f[0] = x[0] - 5;
    f[1] = x[1] - 0.5;
  }};
  const Outcome o = Optimise(fit, 2, {1.0, 0.0}, lower, upper);
  EXPECT_FALSE(outside);
  EXPECT_NEAR(o.x[0], 2.0, 1e-12);
  EXPECT_NEAR(o.x[1], 0.5, 1e-12);
}

TEST_F(TROptimiseTest, CallbackExceptionPassesThroughWithNothingLeaked) {
  Fit fit{[](const double* x, double* f) {
    if (x[0] != 0.5) throw std::out_of_range("callback");
    f[0] = 1;
  }};
  EXPECT_THROW(Optimise(fit, 1, {0.5}), std::out_of_range);  // the sanitizer build checks for leaks
}

TEST_F(TROptimiseTest, BadInputIsRefusedBeforeAnyWork) {
  const double zeroTol[6] = {1e-10, 0.0, 1e-10, 1e-10, 1e-10, 0.1};
  const double lo[2] = {0.0, 0.0}, hi[2] = {1.0, -1.0};
  const struct {
    const char* what;
    Call call;
    bool nullX = false;
  } cases[] = {
      {"n below 1", {.n = 0, .m = 2}},
      {"m below n", {.n = 2, .m = 1}},
      {"null x", {.n = 2, .m = 2}, true},
      {"null eps", {.n = 2, .m = 2, .eps = nullptr}},
      {"zero tolerance", {.n = 2, .m = 2, .eps = zeroTol}},
      {"no iterations", {.n = 2, .m = 2, .maxIter = 0}},
      {"no trial iterations", {.n = 2, .m = 2, .maxTrialIter = 0}},
      {"zero region", {.n = 2, .m = 2, .rs = 0}},
      {"lower above upper", {.n = 2, .m = 2, .lower = lo, .upper = hi}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    double x[2] = {0.25, 0.75};
    Fit fit{[](const double*, double* f) { f[0] = f[1] = 0; }};
    Outcome o;
    Call call = c.call;
    call.x = c.nullX ? nullptr : x;
    ExpectThrowText<std::runtime_error>([&] { call.Run(fit, o); }, detail::kTrInitErrorText);
    EXPECT_EQ(fit.evaluations, 0);
    EXPECT_EQ(x[0], 0.25);
    EXPECT_EQ(x[1], 0.75);
  }
}

TEST_F(TROptimiseTest, ArgumentsTheSolverNeverSeesAreAsserted) {
  const double bound[1] = {0.0};
  const char* kBothOrNeither = "(pLowBound && pUpperBound) || (!pLowBound && !pUpperBound)";
  const struct {
    const char* condition;
    Call call;
  } cases[] = {
      {kBothOrNeither, {.lower = bound}},
      {kBothOrNeither, {.upper = bound}},
      {"fcn != nullptr", {.fcn = nullptr}},
      {"jacEps > 0.0 && std::isfinite(jacEps)", {.jacEps = 0.0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.condition);
    double x[1] = {0.5};
    Fit fit = SquareRoot();
    Outcome o;
    Call call = c.call;
    call.x = x;
    try {
      call.Run(fit, o);
      ADD_FAILURE() << "accepted";
    } catch (const AssertionException& e) {
      EXPECT_EQ(e.getMessage(), c.condition);
      EXPECT_EQ(e.getAssertionType(), "Pre-condition");
    }
    EXPECT_EQ(fit.evaluations, 0);
    EXPECT_EQ(x[0], 0.5);
  }
}

}  // namespace
}  // namespace qvsysbase::testing
