// qvsys tour: the library end to end on embedded data. Selects the fast kernel
// set, fits the Longley regression through the kernels with progress on an
// Aborter, compares every estimate with its certified value, shows the estimates
// as a grid object with its clipboard text, saves the result as
// a record tree into a stream file, reads it back, checks it, and shows the
// file's structure; freezes a chart of the residuals before and after one
// observation changes, saves both snapshots and shows their differences, in
// memory and through chart-diff on the saved files; then fits a nonlinear model
// through the trust-region slot and compares its estimates and standard errors
// with the certified ones.
#include <qvsysbase/qvsysbase.h>

#include <cstdio>
#include <filesystem>

#include "Commands.h"
#include "EstimatesGrid.h"
#include "LinearRegression.h"
#include "NonlinearFit.h"
#include "ProgressDisplay.h"
#include "RegressionRecord.h"
#include "ResidualChart.h"

namespace qvsys {
namespace {

using qvsysbase::IntelSPLHandler;

// Longley is hard for a reason: its columns are nearly collinear. A fit through
// sound kernels keeps at least this many digits of every certified value.
constexpr double kRequiredDigits = 11.0;
// The nonlinear fit: the estimates to six digits, their standard errors to four.
constexpr double kRequiredNonlinearDigits = 6.0;
constexpr double kRequiredStandardErrorDigits = 4.0;
// The chart step raises one observation's y by this much, without fitting
// again: a change a comparison must find at that point and nowhere else.
constexpr unsigned kChangedObservation = 7;
constexpr double kChange = 500.0;

void SelectFastKernels() {
  const unsigned threads = IntelSPLHandler::getDefaultThreads();
  IntelSPLHandler::setIntelSPLMode(IntelSPLHandler::SplModeMKL, static_cast<int>(threads));
  std::printf("kernel set: mode %d (BLAS/LAPACK/SLEEF), %u of %u processors\n\n",
              static_cast<int>(IntelSPLHandler::getIntelSPLMode()),
              threads,
              IntelSPLHandler::getMaxThreads());
}

double PrintRow(const char* name, double value, double certified) {
  const double digits = CorrectDigits(value, certified);
  std::printf("  %-4s %24.15e %24.15e %6.1f\n", name, value, certified, digits);
  return digits;
}

// Prints estimates beside certified values; returns the fewest correct digits.
double PrintComparison(const RegressionProblem& problem, const RegressionFit& fit) {
  double fewest = 99.0;
  std::printf("\n  %-4s %24s %24s %6s\n", "", "estimate", "certified", "digits");
  std::printf("  coefficients\n");
  for (std::size_t j = 0; j < fit.coefficients.size(); ++j) {
    fewest = std::min(
        fewest,
        PrintRow(ParameterName(j).c_str(), fit.coefficients[j], problem.certifiedCoefficients[j]));
  }
  std::printf("  standard errors\n");
  for (std::size_t j = 0; j < fit.standardErrors.size(); ++j) {
    fewest = std::min(
        fewest,
        PrintRow(
            ParameterName(j).c_str(), fit.standardErrors[j], problem.certifiedStandardErrors[j]));
  }
  std::printf("  residual standard deviation\n");
  fewest = std::min(fewest, PrintRow("s", fit.residualSd, problem.certifiedResidualSd));
  return fewest;
}

void SaveRecord(const RegressionRecord& record, const std::string& path) {
  qvsysbase::SaveStream stream;
  stream.InitFileStream(path.c_str());
  stream << record;
  stream.CloseStream();
}

bool ReadBack(const RegressionRecord& saved, const std::string& path) {
  qvsysbase::LoadStream stream;
  stream.InitFileStream(path.c_str());
  RegressionRecord loaded;
  stream >> loaded;
  const bool same = stream.good() && loaded == saved;
  std::printf("read back: %s\n", same ? "identical to what was saved" : "DIFFERENT");
  return same;
}

bool SaveChart(const qvsysbase::FreezableObject& chart, const std::string& path) {
  qvsysbase::SaveStream stream;
  stream.InitFileStream(path.c_str());
  chart.SaveToStream(stream);
  stream.CloseStream();
  if (!stream.good()) std::fprintf(stderr, "qvsys tour: could not write %s\n", path.c_str());
  return stream.good();
}

// Freezes the residual chart, changes one observation, freezes it again and
// compares: in memory, then through chart-diff on the two saved snapshots. True
// when both find the one changed point (a header and its value) and nothing else.
bool ChartSection(const RegressionProblem& problem, const RegressionFit& fit,
                  const std::string& path) {
  const std::string before = path + ".chart1", after = path + ".chart2";
  ResidualChart chart(problem, fit);
  qvsysbase::FreezableObject first, second;
  first.setChartObject(&chart);
  first.Freeze();
  std::printf("\nthe residuals as a live chart, frozen (%u points) and saved: %s\n",
              first.GetNObsChart(0),
              before.c_str());
  chart.ShiftObservation(kChangedObservation, kChange);
  second.setChartObject(&chart);
  second.Freeze();
  std::printf("observation %u (case %u): y raised by %.0f, no refit; frozen again and saved: %s\n",
              kChangedObservation + 1,
              kChangedObservation,
              kChange,
              after.c_str());
  const bool saved = SaveChart(first, before) && SaveChart(second, after);
  std::vector<qvsysbase::ChartDifference> diffs;
  const bool equal = first.compareChartObjects(&second, diffs, qvsysbase::ChartComparisonOptions());
  std::printf("\nthe two snapshots compared:\n");
  std::fflush(stdout);
  PrintChartDifferences(diffs);
  std::printf("\nqvsys chart-diff on the saved files:\n");
  std::fflush(stdout);
  const int status = RunChartDiff({before, after});
  std::fflush(stdout);
  return saved && !equal && diffs.size() == 2 && status == 1;
}

// Fits the nonlinear problem and prints it beside the certified values; true
// when every estimate and standard error has its required digits.
bool NonlinearSection(qvsysbase::Aborter& aborter) {
  const NonlinearProblem problem = LoadMisra1a();
  std::printf("\nnonlinear least squares on NIST StRD %s through nspTROptimise\n",
              problem.name.c_str());
  std::printf("model y = b1*(1 - exp(-b2*x)), %zu observations, from NIST's first start\n",
              problem.x.size());
  const NonlinearFit fit = FitNonlinear(problem, aborter);
  if (fit.aborted) {
    std::fprintf(stderr, "qvsys tour: aborted\n");
    return false;
  }
  std::printf("\nstopped by rule %d after %d iterations, %d residual evaluations\n",
              fit.stopCriterion,
              fit.iterations,
              fit.evaluations);
  double estimates = 99.0, errors = 99.0;
  std::printf("\n  %-4s %24s %24s %6s\n  estimates\n", "", "estimate", "certified", "digits");
  for (std::size_t j = 0; j < fit.estimates.size(); ++j) {
    const std::string name = "b" + std::to_string(j + 1);
    estimates = std::min(estimates, PrintRow(name.c_str(), fit.estimates[j], problem.certified[j]));
  }
  std::printf("  standard errors\n");
  if (fit.standardErrors.empty()) {
    std::printf("  J'J is numerically singular: no standard errors\n");
    errors = 0.0;
  }
  for (std::size_t j = 0; j < fit.standardErrors.size(); ++j) {
    const std::string name = "b" + std::to_string(j + 1);
    errors =
        std::min(errors, PrintRow(name.c_str(), fit.standardErrors[j], problem.certifiedSd[j]));
  }
  std::printf(
      "\nfewest correct digits: %.1f in the estimates (required: %.0f), %.1f in the "
      "standard errors (required: %.0f)\n",
      estimates,
      kRequiredNonlinearDigits,
      errors,
      kRequiredStandardErrorDigits);
  return fit.converged && estimates >= kRequiredNonlinearDigits &&
         errors >= kRequiredStandardErrorDigits;
}

int RunTour(const Arguments& args) {
  const std::string path =
      args.empty() ? (std::filesystem::temp_directory_path() / "qvsys-tour.qvs").string() : args[0];
  std::printf("qvsys tour: least squares on NIST StRD Longley\n\n");
  SelectFastKernels();
  const RegressionProblem problem = LoadLongley();
  std::printf("dataset %s: %d observations, %d regressors and an intercept\n",
              problem.name.c_str(),
              problem.observations,
              problem.Regressors());

  qvsysbase::Aborter aborter;
  ProgressDisplay display(stdout);
  display.Attach(aborter);
  const RegressionFit fit = FitLeastSquares(problem, aborter);
  if (fit.aborted) {
    std::fprintf(stderr, "qvsys tour: aborted\n");
    return 1;
  }
  const double fewest = PrintComparison(problem, fit);
  std::printf("\nfewest correct digits: %.1f (required: %.0f)\n\n", fewest, kRequiredDigits);
  const bool gridShown = ShowEstimatesGrid(problem, fit, kRequiredDigits);

  const RegressionRecord record(problem, fit);
  SaveRecord(record, path);
  std::printf("saved: %s (%ju bytes)\n",
              path.c_str(),
              static_cast<std::uintmax_t>(std::filesystem::file_size(path)));
  const bool same = ReadBack(record, path);
  std::printf("\nstructure of %s:\n", path.c_str());
  std::fflush(stdout);
  const int dumpStatus = RunDump({path});
  std::fflush(stdout);
  const bool charted = ChartSection(problem, fit, path);
  const bool nonlinear = NonlinearSection(aborter);
  return fewest >= kRequiredDigits && gridShown && same && dumpStatus == 0 && charted && nonlinear
             ? 0
             : 1;
}

}  // namespace

int RunTourCommand(const Arguments& args) { return RunTour(args); }

}  // namespace qvsys
