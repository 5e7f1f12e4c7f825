// The NIST StRD nonlinear regression problems for the trust-region test and
// benchmark: a reader of the dataset files in data/nist, the model of each
// problem, and the log relative error the results are graded by. Free of the
// test framework, so that the benchmark links it too.
#ifndef QVSYSBASE_TESTS_NUMERICS_NISTPROBLEMS_H_
#define QVSYSBASE_TESTS_NUMERICS_NISTPROBLEMS_H_

#include <string>
#include <vector>

namespace qvsysbase::testing {

// The models are evaluated in extended precision: at problems fitted almost
// exactly (Lanczos1's residuals are near 1e-13 against responses near 1) a
// double evaluation of y − f would keep only two or three digits of the
// residuals and so of the residual variance behind the standard errors.
using Real = long double;

// The settings a careful caller gives the trust-region slot on these problems:
// parameter-space sizes relative to the scaled point (region and step, 1e-15,
// near the rounding level, so the search ends when no representable progress
// is left), the ‖F‖ and column-norm tolerances far below anything these
// problems reach and the model's relative promise at 1e-30 (the search should
// not stop on them), Moré's 10 % for the step subproblem; a relative Jacobian
// step of 6e-6 ≈ ∛ε, which balances truncation (h²) against rounding (ε/h) in
// a central difference.
inline constexpr double kNistEps[6] = {1e-15, 1e-30, 1e-30, 1e-15, 1e-30, 0.1};
inline constexpr double kNistJacEps = 6e-6;
inline constexpr int kNistMaxIter = 2000;
inline constexpr int kNistMaxTrialIter = 100;
inline constexpr double kNistInitialRegion = 100.0;

// One observation: the response and its one or two predictors.
struct NistObservation {
  Real y;
  Real x1;
  Real x2;
};

using NistModel = Real (*)(const Real* b, const NistObservation& o);

struct NistProblem {
  std::string name;  // the file name without ".dat"
  std::vector<double> start1, start2, certified, certifiedSd;
  double certifiedRss = 0.0;
  std::vector<NistObservation> data;
  // The residual of one observation at b: y − f(x; b), or log y − f for a
  // problem stated for log y.
  NistModel residual = nullptr;

  // The m residuals at the n values b.
  void Residuals(const double* b, double* f) const;

  int Parameters() const { return static_cast<int>(certified.size()); }
  int Observations() const { return static_cast<int>(data.size()); }
};

// Reads data/nist/<name>.dat as it is: the starting values, certified values
// and standard deviations, the residual sum of squares and the data block.
// Throws std::runtime_error when the file is missing, has no model here or
// does not parse.
NistProblem LoadNistProblem(const std::string& name);
// Names of every data/nist/*.dat, sorted.
std::vector<std::string> NistProblemNames();

// −log10(|x − c|/|c|) (−log10|x| when c = 0), capped at 11, the digits the
// certified values carry; 0 for a value that is not finite.
double LogRelativeError(double x, double certified);
// The least LogRelativeError of values against certified, element by element.
double MinDigits(const std::vector<double>& values, const std::vector<double>& certified);

}  // namespace qvsysbase::testing

#endif  // QVSYSBASE_TESTS_NUMERICS_NISTPROBLEMS_H_
