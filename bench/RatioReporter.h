// The one way every benchmark program here measures: pairs of a library arm
// and its baseline arm, run side by side in one process.
//
// Declare the pairs, then hand main over:
//
//   qvbench::AddPair("Copy/1MB",
//                    [](benchmark::State& s) { for (auto _ : s) LibraryCopy(); },
//                    [](benchmark::State& s) { for (auto _ : s) std::memcpy(...); });
//   int main(int argc, char** argv) { return qvbench::RunPairs(argc, argv); }
//
// Each arm is an ordinary Google Benchmark body. Allocate and touch its buffers
// before the timed loop (the first touch of a fresh page costs about 10 us), or
// once for all runs of the pair. RunPairs registers every pair's arms in
// alternation, library, baseline (, overhead), library, baseline ..., five
// rounds unless --repetitions=N says otherwise, so that load from other
// processes falls on both arms alike. Each run measures the process's CPU time
// per iteration; after the usual console output a table gives per pair the
// median of each arm with its least and greatest round and the ratio
// library/baseline of the medians. --benchmark_filter selects pairs by name.
#ifndef QVSYSBASE_BENCH_RATIOREPORTER_H_
#define QVSYSBASE_BENCH_RATIOREPORTER_H_

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace qvbench {

using Body = std::function<void(benchmark::State&)>;

// One comparison. Names are unique; '/' may structure them ("exp/n=1000").
class Pair {
 public:
  Pair(std::string name, Body library, Body baseline);

  // Work inside both arms' timed loops that is not compared (restoring an input
  // the arms overwrite): timed alone in the same rounds, its median is taken off
  // both arms.
  Pair& Overhead(Body overhead);
  // Fixed iteration counts per run instead of calibrating to the minimum time,
  // for arms that prepare one input per iteration in advance.
  Pair& Iterations(benchmark::IterationCount library, benchmark::IterationCount baseline);

  // Registers the arms of one round with Google Benchmark.
  void RegisterRound() const;

 private:
  std::string m_name;
  Body m_library, m_baseline, m_overhead;
  benchmark::IterationCount m_libraryIterations = 0, m_baselineIterations = 0;
};

// Adds a pair to those RunPairs runs.
Pair& AddPair(std::string name, Body library, Body baseline);

struct RunOptions {
  int repetitions = 5;          // rounds; --repetitions=N overrides
  double minTimeSeconds = 0.1;  // per run; --benchmark_min_time overrides
};

// Parses the command line, runs every pair added so far and prints the console
// output and the table. Returns main's exit status.
int RunPairs(int argc, char** argv, const RunOptions& options = {});

}  // namespace qvbench

#endif  // QVSYSBASE_BENCH_RATIOREPORTER_H_
