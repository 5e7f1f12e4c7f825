#include "RatioReporter.h"

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <string_view>
#include <utility>
#include <vector>

#include "PairStatistics.h"

namespace qvbench {
namespace {

constexpr std::string_view kRepetitionsFlag = "--repetitions=";
constexpr std::string_view kMinTimeFlag = "--benchmark_min_time=";

// A deque keeps the references AddPair hands out valid.
std::deque<Pair>& Pairs() {
  static std::deque<Pair> pairs;
  return pairs;
}

void Register(const std::string& pair, Arm arm, const Body& body, benchmark::IterationCount n) {
  auto* b = benchmark::RegisterBenchmark(ArmRunName(pair, arm).c_str(), body);
  b->MeasureProcessCPUTime();
  if (n > 0) b->Iterations(n);
}

// The console output as usual; every run's CPU seconds per iteration go to the
// pair table.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.iterations == 0 || run.error_occurred) continue;
      m_table.Add(run.run_name.function_name,
                  run.cpu_accumulated_time / static_cast<double>(run.iterations));
    }
  }
  const PairTable& Table() const { return m_table; }

 private:
  PairTable m_table;
};

// Takes --repetitions=N out of argv; adds the default minimum time unless given.
int TakeRepetitions(int& argc, char** argv, int repetitions) {
  int kept = 0;
  for (int i = 0; i < argc; ++i) {
    const std::string_view arg = argv[i];
    if (arg.starts_with(kRepetitionsFlag)) {
      repetitions = std::atoi(argv[i] + kRepetitionsFlag.size());
    } else {
      argv[kept++] = argv[i];
    }
  }
  argc = kept;
  return repetitions < 1 ? 1 : repetitions;
}

bool HasFlag(int argc, char** argv, std::string_view flag) {
  for (int i = 1; i < argc; ++i) {
    if (std::string_view(argv[i]).starts_with(flag)) return true;
  }
  return false;
}

}  // namespace

Pair::Pair(std::string name, Body library, Body baseline)
    : m_name(std::move(name)), m_library(std::move(library)), m_baseline(std::move(baseline)) {}

Pair& Pair::Overhead(Body overhead) {
  m_overhead = std::move(overhead);
  return *this;
}

Pair& Pair::Iterations(benchmark::IterationCount library, benchmark::IterationCount baseline) {
  m_libraryIterations = library;
  m_baselineIterations = baseline;
  return *this;
}

void Pair::RegisterRound() const {
  Register(m_name, Arm::kLibrary, m_library, m_libraryIterations);
  Register(m_name, Arm::kBaseline, m_baseline, m_baselineIterations);
  if (m_overhead) Register(m_name, Arm::kOverhead, m_overhead, m_libraryIterations);
}

Pair& AddPair(std::string name, Body library, Body baseline) {
  return Pairs().emplace_back(std::move(name), std::move(library), std::move(baseline));
}

int RunPairs(int argc, char** argv, const RunOptions& options) {
  const int repetitions = TakeRepetitions(argc, argv, options.repetitions);
  std::vector<char*> args(argv, argv + argc);
  std::string minTime = std::string(kMinTimeFlag) + std::to_string(options.minTimeSeconds);
  if (!HasFlag(argc, argv, kMinTimeFlag)) args.push_back(minTime.data());
  int count = static_cast<int>(args.size());
  args.push_back(nullptr);

  // Round by round within a pair, so that its arms alternate closely in time.
  for (const Pair& pair : Pairs()) {
    for (int round = 0; round < repetitions; ++round) pair.RegisterRound();
  }
  benchmark::Initialize(&count, args.data());
  if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("\nCPU time per iteration over %d rounds, library and baseline alternating;\n"
              "overhead arms taken off. Ratio: library median / baseline median.\n%s",
              repetitions,
              FormatPairTable(reporter.Table().Rows()).c_str());
  benchmark::Shutdown();
  return 0;
}

}  // namespace qvbench
