// The arithmetic behind every benchmark table: which arm of which pair a run
// belongs to, the median and spread of an arm's repetitions, and the ratio of
// the library arm to the baseline arm. Free of Google Benchmark, so it is
// tested with the library's tests.
//
// A pair is a name and two arms measured in one process: the library arm and
// the baseline arm. A pair may add an overhead arm: work both arms repeat but
// that is not what is compared (restoring an input that the arms overwrite). It
// runs alone in the same rounds, and its median is taken off every sample of
// the other two arms.
#ifndef QVSYSBASE_BENCH_PAIRSTATISTICS_H_
#define QVSYSBASE_BENCH_PAIRSTATISTICS_H_

#include <string>
#include <string_view>
#include <vector>

namespace qvbench {

enum class Arm { kLibrary, kBaseline, kOverhead };

// The name one arm of a pair runs under: "<pair>/library", "<pair>/baseline"
// or "<pair>/overhead".
std::string ArmRunName(std::string_view pair, Arm arm);
// The reverse: splits a run name at its last '/' into the pair and the arm.
// false when the last component names no arm (the run is not part of a pair).
bool SplitArmRunName(std::string_view runName, std::string* pair, Arm* arm);

// Median (the mean of the middle two for an even count), least and greatest
// sample. All three are NaN for no samples.
struct Spread {
  double median;
  double low;
  double high;
};
Spread Summarise(std::vector<double> samples);

struct PairRow {
  std::string pair;
  Spread library;   // seconds per iteration, net of the overhead median
  Spread baseline;  // likewise
  double ratio;     // library.median / baseline.median
  int repetitions;  // the fewer samples of the two arms
};

// Collects seconds per iteration by run name and builds one row per pair, in
// the order in which the pairs were first seen. Pairs missing an arm (filtered
// out) give no row.
class PairTable {
 public:
  void Add(std::string_view runName, double secondsPerIteration);
  std::vector<PairRow> Rows() const;

 private:
  struct Samples {
    std::string pair;
    std::vector<double> byArm[3];
  };
  std::vector<Samples> m_pairs;
};

// The rows as a text table: median time of each arm with its [least, greatest]
// repetition, then library/baseline. Times carry their own unit (ns, us, ms, s).
std::string FormatPairTable(const std::vector<PairRow>& rows);

}  // namespace qvbench

#endif  // QVSYSBASE_BENCH_PAIRSTATISTICS_H_
