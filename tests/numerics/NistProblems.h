// The NIST StRD nonlinear regression problems for the trust-region tests: a
// reader of the dataset files in data/nist, the model of each problem, and
// the log relative error the results are graded by.
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
// Fails the calling test (and returns an empty problem) when the file is
// missing, has no model here or does not parse.
NistProblem LoadNistProblem(const std::string& name);
// Names of every data/nist/*.dat, sorted.
std::vector<std::string> NistProblemNames();

// −log10(|x − c|/|c|) (−log10|x| when c = 0), capped at 11, the digits the
// certified values carry; 0 for a value that is not finite.
double LogRelativeError(double x, double certified);

}  // namespace qvsysbase::testing

#endif  // QVSYSBASE_TESTS_NUMERICS_NISTPROBLEMS_H_
