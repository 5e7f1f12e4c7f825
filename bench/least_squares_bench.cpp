// The trust-region least-squares slot (nspTROptimise, mode 1) against
// MINPACK's lmdif and Ceres Solver's Levenberg–Marquardt with central numeric
// differences, on the NIST StRD nonlinear regression problems in data/nist
// from both of their starting points.
//
// Pairs "<problem>/start<k>/ours:lmdif" and "<problem>/start<k>/ours:ceres"
// time one whole solve per iteration; the table's ratio below 1 means ours is
// faster. After the timing table an accuracy table gives per run the correct
// digits (the least log relative error over the parameters) and the residual
// evaluations (every call of the residual function, the Jacobian's included)
// of each solver, then the runs at 6 or more digits and the median evaluations
// per solver.
//
// Every solver gets the tolerances a careful caller gives ours (kNistEps in
// NistProblems.h), each at the value of its counterpart there: the relative
// step at 1e-15, the relative reduction of the sum of squares and the
// gradient test at 1e-30 (off: the searches end when no representable
// progress is left), 2000 iterations. Each keeps its own initial step:
// lmdif's factor 100 of its scaled start, Ceres's initial radius 1e4, our
// region 100.
#include <benchmark/benchmark.h>
#include <ceres/ceres.h>
#include <cminpack.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <deque>
#include <string>
#include <vector>

#include "RatioReporter.h"
#include "numerics/NistProblems.h"
#include "qvsysbase/IntelSPLHandler.h"

namespace {

using H = qvsysbase::IntelSPLHandler;
using qvsysbase::testing::NistProblem;
namespace nist = qvsysbase::testing;

constexpr double kGoodDigits = 6.0;

// The residual function of one problem with a count of its calls.
struct Counted {
  const NistProblem* problem;
  int evaluations = 0;

  void operator()(const double* b, double* f) {
    ++evaluations;
    problem->Residuals(b, f);
  }
};

// One solve: the estimates and the residual evaluations it took.
struct Run {
  std::vector<double> x;
  int evaluations = 0;
};

using Solver = Run (*)(const NistProblem& p, const std::vector<double>& start);

void OurResiduals(int*, int*, const double* x, double* f, void* userData) {
  (*static_cast<Counted*>(userData))(x, f);
}

Run SolveOurs(const NistProblem& p, const std::vector<double>& start) {
  Counted counted{&p};
  Run run{start};
  int iterations = 0, stop = 0;
  double r1 = 0.0, r2 = 0.0;
  H::nspTROptimise(p.Parameters(),
                   run.x.data(),
                   nullptr,
                   nullptr,
                   p.Observations(),
                   &OurResiduals,
                   &counted,
                   nist::kNistMaxIter,
                   nist::kNistMaxTrialIter,
                   nist::kNistEps,
                   nist::kNistJacEps,
                   nist::kNistInitialRegion,
                   &iterations,
                   &stop,
                   &r1,
                   &r2);
  run.evaluations = counted.evaluations;
  return run;
}

int LmdifResiduals(void* p, int, int, const double* x, double* f, int) {
  (*static_cast<Counted*>(p))(x, f);
  return 0;
}

// lmdif: ftol (relative reduction) at kNistEps[4], xtol (relative step) at
// kNistEps[3], gtol (cosine between residuals and Jacobian columns) at
// kNistEps[2];
// maxfev gives the same 2000 iterations at n + 1 evaluations each; epsfcn 0
// makes its forward-difference step √ε·|x|, the forward-difference
// counterpart of our central ∛ε; mode 1 scales the variables itself.
Run SolveLmdif(const NistProblem& p, const std::vector<double>& start) {
  const int n = p.Parameters(), m = p.Observations();
  Counted counted{&p};
  Run run{start};
  std::vector<double> f(m), jacobian(static_cast<std::size_t>(m) * n), diag(n), qtf(n), wa1(n),
      wa2(n), wa3(n), wa4(m);
  std::vector<int> pivots(n);
  int nfev = 0;
  lmdif(&LmdifResiduals, &counted, m, n, run.x.data(), f.data(), nist::kNistEps[4],
        nist::kNistEps[3], nist::kNistEps[2], nist::kNistMaxIter * (n + 1), 0.0, diag.data(), 1,
        100.0, 0, &nfev, jacobian.data(), m, pivots.data(), qtf.data(), wa1.data(), wa2.data(),
        wa3.data(), wa4.data());
  run.evaluations = counted.evaluations;
  return run;
}

// Residuals Ceres cannot use (not finite) are reported as a failed evaluation.
struct CeresResiduals {
  Counted* counted;

  bool operator()(double const* const* b, double* f) const {
    (*counted)(b[0], f);
    const int m = counted->problem->Observations();
    return std::all_of(f, f + m, [](double r) { return std::isfinite(r); });
  }
};

// Ceres: the dense QR Levenberg–Marquardt, function_tolerance (relative cost
// change) and parameter_tolerance (relative step) at kNistEps[4] and [3],
// gradient_tolerance at kNistEps[2], central differences with our relative
// step ∛ε, one thread.
ceres::Solver::Options CeresOptions() {
  ceres::Solver::Options options;
  options.trust_region_strategy_type = ceres::LEVENBERG_MARQUARDT;
  options.linear_solver_type = ceres::DENSE_QR;
  options.max_num_iterations = nist::kNistMaxIter;
  options.function_tolerance = nist::kNistEps[4];
  options.parameter_tolerance = nist::kNistEps[3];
  options.gradient_tolerance = nist::kNistEps[2];
  options.num_threads = 1;
  options.logging_type = ceres::SILENT;
  return options;
}

Run SolveCeres(const NistProblem& p, const std::vector<double>& start) {
  Counted counted{&p};
  Run run{start};
  ceres::NumericDiffOptions difference;
  difference.relative_step_size = nist::kNistJacEps;
  auto* cost = new ceres::DynamicNumericDiffCostFunction<CeresResiduals, ceres::CENTRAL>(
      new CeresResiduals{&counted}, ceres::TAKE_OWNERSHIP, difference);
  cost->AddParameterBlock(p.Parameters());
  cost->SetNumResiduals(p.Observations());
  ceres::Problem problem;  // owns cost
  problem.AddResidualBlock(cost, nullptr, run.x.data());
  ceres::Solver::Summary summary;
  ceres::Solve(CeresOptions(), &problem, &summary);
  run.evaluations = counted.evaluations;
  return run;
}

struct Peer {
  const char* name;
  Solver solve;
};
constexpr Peer kSolvers[] = {{"ours", &SolveOurs}, {"lmdif", &SolveLmdif}, {"ceres", &SolveCeres}};
constexpr int kSolverCount = 3;

// One problem from one start, as every solver ends it.
struct Row {
  const NistProblem* problem;
  int start;
  double digits[kSolverCount];
  int evaluations[kSolverCount];
};

const std::vector<double>& StartOf(const NistProblem& p, int start) {
  return start == 1 ? p.start1 : p.start2;
}

Row Grade(const NistProblem& p, int start) {
  Row row{&p, start, {}, {}};
  for (int s = 0; s < kSolverCount; ++s) {
    const Run run = kSolvers[s].solve(p, StartOf(p, start));
    row.digits[s] = nist::MinDigits(run.x, p.certified);
    row.evaluations[s] = run.evaluations;
  }
  return row;
}

qvbench::Body Timed(Solver solve, const NistProblem& p, int start) {
  return [solve, &p, start](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(solve(p, StartOf(p, start)).x.front());
  };
}

void AddPairs(const NistProblem& p, int start) {
  const std::string name = p.name + "/start" + std::to_string(start) + "/ours:";
  for (int s = 1; s < kSolverCount; ++s)
    qvbench::AddPair(name + kSolvers[s].name,
                     Timed(&SolveOurs, p, start),
                     Timed(kSolvers[s].solve, p, start));
}

double Median(std::vector<int> values) {
  std::sort(values.begin(), values.end());
  const std::size_t k = values.size() / 2;
  return values.size() % 2 ? values[k] : (values[k - 1] + values[k]) / 2.0;
}

void PrintAccuracy(const std::vector<Row>& rows) {
  std::printf("\nCorrect digits (least over the parameters) and residual evaluations per run\n");
  std::printf("%-9s %5s", "problem", "start");
  for (const Peer& solver : kSolvers) std::printf(" | %-6s digits evals", solver.name);
  std::printf("\n");
  for (const Row& row : rows) {
    std::printf("%-9s %5d", row.problem->name.c_str(), row.start);
    for (int s = 0; s < kSolverCount; ++s)
      std::printf(" | %-6s %6.1f %5d", "", row.digits[s], row.evaluations[s]);
    std::printf("\n");
  }
  std::printf("\n%-7s %18s %18s\n", "solver", "runs >= 6 digits", "median evaluations");
  for (int s = 0; s < kSolverCount; ++s) {
    const auto good = std::count_if(
        rows.begin(), rows.end(), [s](const Row& r) { return r.digits[s] >= kGoodDigits; });
    std::vector<int> evaluations;
    for (const Row& row : rows) evaluations.push_back(row.evaluations[s]);
    std::printf("%-7s %12ld of %3zu %18.1f\n", kSolvers[s].name, static_cast<long>(good),
                rows.size(), Median(evaluations));
  }
}

}  // namespace

int main(int argc, char** argv) {
  // Mode 1, one thread, whatever the table held before.
  H::setIntelSPLMode(H::SplModePlain, 1);
  H::setIntelSPLMode(H::SplModeMKL, 1);
  static std::deque<NistProblem> problems;  // the pairs refer to them
  std::vector<Row> rows;
  for (const std::string& name : nist::NistProblemNames()) {
    const NistProblem& p = problems.emplace_back(nist::LoadNistProblem(name));
    for (int start = 1; start <= 2; ++start) {
      rows.push_back(Grade(p, start));
      AddPairs(p, start);
    }
  }
  // A solve takes milliseconds: short runs keep the whole program at a minute or so.
  const int status = qvbench::RunPairs(argc, argv, {.repetitions = 5, .minTimeSeconds = 0.02});
  PrintAccuracy(rows);
  return status;
}
