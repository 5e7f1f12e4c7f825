// The frozen chart at scale: freezing, saving, reading and comparing a chart of
// 100 series x 10,000 points.
//
// Two kinds of pair:
//   - "10x points": each operation at 100 x 10,000 against itself at
//     100 x 1,000. A cost linear in the points gives a ratio of 10.
//   - raw data movement: each operation against the least work that moves the
//     same data. Freezing and reading build a snapshot, so their baseline
//     copies one (the same allocations, no questions asked, no bytes parsed);
//     saving writes bytes, so its baseline copies as many bytes; comparing
//     walks two snapshots, so its baseline is their member-wise operator==.
//
// The chart answers from a table of values and a pool of labels, as a chart
// over a model's results does; every point has a label too long for a short
// string, so a snapshot makes one text allocation per point. Snapshots, stream
// bytes and output buffers are made and touched once outside the timed loops
// and shared by every run; each run also reports ns_per_point.
#include <benchmark/benchmark.h>

#include <malloc.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "RatioReporter.h"
#include "qvsysbase/FreezableObject.h"
#include "qvsysbase/LoadStream.h"
#include "qvsysbase/SaveStream.h"

namespace {

using namespace qvsysbase;

constexpr unsigned kSeries = 100;
constexpr unsigned kLargePoints = 10'000;
constexpr unsigned kSmallPoints = 1'000;
// Distinct labels, prime so that neighbouring series get different ones.
constexpr unsigned kLabelPool = 997;

const std::vector<std::wstring>& Labels() {
  static const std::vector<std::wstring> labels = [] {
    std::vector<std::wstring> texts;
    for (unsigned i = 0; i < kLabelPool; ++i) texts.push_back(L"obs " + std::to_wstring(1900 + i));
    return texts;
  }();
  return labels;
}

// A line chart of `series` series of `points` points each.
class SeriesChart final : public GenericChartObject {
 public:
  SeriesChart(unsigned series, unsigned points)
      : m_nSeries(series), m_nPoints(points), m_values(std::size_t{series} * points) {
    for (std::size_t i = 0; i < m_values.size(); ++i) m_values[i] = std::sin(0.001 * i);
  }

  bool IsFrozenSnapshot() const override { return false; }
  unsigned GetNVarsChart() const override { return m_nSeries; }
  unsigned GetNObsChart(unsigned) const override { return m_nPoints; }
  bool IsValidChart(unsigned, unsigned, unsigned) const override { return true; }
  bool IsConnectedChart(unsigned, unsigned, unsigned) const override { return true; }
  double GetValueChart(unsigned var, unsigned cas) const override {
    return m_values[std::size_t{var} * m_nPoints + cas];
  }
  std::wstring GetValueAsLabelChart(unsigned var, unsigned cas) const override {
    return Labels()[(var * 31 + cas) % kLabelPool];
  }
  std::wstring GetVarHeaderChart(unsigned var) const override {
    return L"series " + std::to_wstring(var);
  }
  std::wstring GetTitleChart() const override { return L"Residuals"; }

 private:
  unsigned m_nSeries, m_nPoints;
  std::vector<double> m_values;
};

std::string Save(const FreezableObject& object) {
  SaveStream out;
  out.InitMemStream();
  object.SaveToStream(out);
  int length = 0;
  const char* bytes = out.GetStreamBuffer(length);
  return std::string(bytes, static_cast<std::size_t>(length));
}

// Everything one size needs, made on first use and kept for every run.
struct Fixture {
  explicit Fixture(unsigned points) : chart(kSeries, points) {
    first.setChartObject(&chart);
    first.Freeze();
    second.setChartObject(&chart);
    second.Freeze();
    bytes = Save(first);
  }
  SeriesChart chart;
  FreezableObject first, second;  // equal snapshots
  std::string bytes;              // `first` saved
};

Fixture& Get(unsigned points) {
  static std::map<unsigned, std::unique_ptr<Fixture>> fixtures;
  auto& fixture = fixtures[points];
  if (!fixture) fixture = std::make_unique<Fixture>(points);
  return *fixture;
}

void ReportPerPoint(benchmark::State& state, unsigned points) {
  state.counters["ns_per_point"] =
      benchmark::Counter(1e-9 * kSeries * points * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// --- The operations -------------------------------------------------------------

void Freeze(benchmark::State& state, unsigned points) {
  Fixture& f = Get(points);
  FreezableObject object;
  object.setChartObject(&f.chart);
  object.Freeze();  // so that every timed freeze also drops a snapshot
  for (auto _ : state) {
    object.Freeze();
    benchmark::DoNotOptimize(&object);
  }
  ReportPerPoint(state, points);
}

void SaveToMemory(benchmark::State& state, unsigned points) {
  Fixture& f = Get(points);
  for (auto _ : state) {
    SaveStream out;
    out.InitMemStream();
    f.first.SaveToStream(out);
    int length = 0;
    benchmark::DoNotOptimize(out.GetStreamBuffer(length));
  }
  ReportPerPoint(state, points);
}

void Read(benchmark::State& state, unsigned points) {
  Fixture& f = Get(points);
  FreezableObject object;
  object.Freeze();
  for (auto _ : state) {
    state.PauseTiming();
    LoadStream in;
    in.InitMemStream(f.bytes);  // the stream's own copy of the input
    state.ResumeTiming();
    object.ReadFromStream(in);
    if (!object.IsFrozen()) state.SkipWithError("the saved snapshot did not read back");
  }
  ReportPerPoint(state, points);
}

void Compare(benchmark::State& state, unsigned points) {
  Fixture& f = Get(points);
  const ChartComparisonOptions options;
  std::vector<ChartDifference> diffs;
  for (auto _ : state) {
    if (!f.first.compareChartObjects(&f.second, diffs, options))
      state.SkipWithError("equal snapshots compared unequal");
  }
  ReportPerPoint(state, points);
}

// --- Raw data movement ----------------------------------------------------------

void CopySnapshot(benchmark::State& state, unsigned points) {
  const FrozenChartData& source = Get(points).first.GetFrozenData();
  for (auto _ : state) {
    FrozenChartData copy = source;
    benchmark::DoNotOptimize(&copy);
  }
  ReportPerPoint(state, points);
}

void CopyBytes(benchmark::State& state, unsigned points) {
  const std::string& bytes = Get(points).bytes;
  std::string target(bytes.size(), '\0');  // allocated and touched once
  for (auto _ : state) {
    std::memcpy(target.data(), bytes.data(), bytes.size());
    benchmark::DoNotOptimize(target.data());
    benchmark::ClobberMemory();
  }
  ReportPerPoint(state, points);
}

void EqualSnapshots(benchmark::State& state, unsigned points) {
  Fixture& f = Get(points);
  for (auto _ : state) {
    if (!(f.first.GetFrozenData() == f.second.GetFrozenData()))
      state.SkipWithError("equal snapshots compared unequal");
  }
  ReportPerPoint(state, points);
}

using Operation = void (*)(benchmark::State&, unsigned);

qvbench::Body Bind(Operation operation, unsigned points) {
  return [=](benchmark::State& state) { operation(state, points); };
}

std::string Size(unsigned points) { return std::to_string(kSeries) + "x" + std::to_string(points); }

void AddOperation(const char* name, Operation operation, Operation rawMovement,
                  const char* rawName) {
  const std::string large = std::string(name) + "/" + Size(kLargePoints);
  qvbench::AddPair(large + " vs " + Size(kSmallPoints) + " (10x points)",
                   Bind(operation, kLargePoints),
                   Bind(operation, kSmallPoints));
  qvbench::AddPair(
      large + " vs " + rawName, Bind(operation, kLargePoints), Bind(rawMovement, kLargePoints));
}

// glibc maps every block above 32 MB afresh and returns it on free, so each run
// at 10,000 points would pay the first touch of ~250 MB of new pages (about
// 10 µs a page here) while the 1,000-point runs reuse their heap. Keeping freed
// memory in the heap puts both sizes under the same rule and leaves the cost of
// the library's own work.
void KeepFreedMemoryInTheHeap() {
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, INT_MAX);
}

}  // namespace

int main(int argc, char** argv) {
  KeepFreedMemoryInTheHeap();
  AddOperation("Freeze", &Freeze, &CopySnapshot, "copying the snapshot");
  AddOperation("Save", &SaveToMemory, &CopyBytes, "memcpy of its bytes");
  AddOperation("Read", &Read, &CopySnapshot, "copying the snapshot");
  AddOperation("Compare", &Compare, &EqualSnapshots, "operator==");
  return qvbench::RunPairs(argc, argv);
}
