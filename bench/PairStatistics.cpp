#include "PairStatistics.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <limits>

namespace qvbench {
namespace {

constexpr std::string_view kArmWords[] = {"library", "baseline", "overhead"};
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<double> LessOverhead(std::vector<double> samples, double overhead) {
  for (double& s : samples) s -= overhead;
  return samples;
}

// "12.3 us": three significant figures in the largest unit that keeps the
// value at least 1.
std::string FormatSeconds(double seconds) {
  static constexpr struct {
    double scale;
    const char* unit;
  } kUnits[] = {{1.0, "s"}, {1e-3, "ms"}, {1e-6, "us"}, {1e-9, "ns"}};
  const auto* unit = std::find_if(std::begin(kUnits), std::end(kUnits) - 1, [&](const auto& u) {
    return std::fabs(seconds) >= u.scale;
  });
  char text[32];
  std::snprintf(text, sizeof text, "%.3g %s", seconds / unit->scale, unit->unit);
  return text;
}

std::string FormatArm(const Spread& s) {
  return FormatSeconds(s.median) + " [" + FormatSeconds(s.low) + ", " + FormatSeconds(s.high) +
         "]";
}

}  // namespace

std::string ArmRunName(std::string_view pair, Arm arm) {
  std::string name(pair);
  name += '/';
  name += kArmWords[static_cast<int>(arm)];
  return name;
}

bool SplitArmRunName(std::string_view runName, std::string* pair, Arm* arm) {
  const auto slash = runName.rfind('/');
  if (slash == std::string_view::npos) return false;
  const std::string_view word = runName.substr(slash + 1);
  const auto* found = std::find(std::begin(kArmWords), std::end(kArmWords), word);
  if (found == std::end(kArmWords)) return false;
  pair->assign(runName.substr(0, slash));
  *arm = static_cast<Arm>(found - std::begin(kArmWords));
  return true;
}

Spread Summarise(std::vector<double> samples) {
  if (samples.empty()) return {kNaN, kNaN, kNaN};
  std::sort(samples.begin(), samples.end());
  const std::size_t n = samples.size();
  const double median = n % 2 == 1 ? samples[n / 2] : (samples[n / 2 - 1] + samples[n / 2]) / 2;
  return {median, samples.front(), samples.back()};
}

void PairTable::Add(std::string_view runName, double secondsPerIteration) {
  std::string pair;
  Arm arm;
  if (!SplitArmRunName(runName, &pair, &arm)) return;
  auto it = std::find_if(
      m_pairs.begin(), m_pairs.end(), [&](const Samples& s) { return s.pair == pair; });
  if (it == m_pairs.end()) it = m_pairs.insert(m_pairs.end(), Samples{pair, {}});
  it->byArm[static_cast<int>(arm)].push_back(secondsPerIteration);
}

std::vector<PairRow> PairTable::Rows() const {
  std::vector<PairRow> rows;
  for (const Samples& s : m_pairs) {
    const auto& library = s.byArm[static_cast<int>(Arm::kLibrary)];
    const auto& baseline = s.byArm[static_cast<int>(Arm::kBaseline)];
    const auto& overheadSamples = s.byArm[static_cast<int>(Arm::kOverhead)];
    if (library.empty() || baseline.empty()) continue;
    const double overhead = overheadSamples.empty() ? 0.0 : Summarise(overheadSamples).median;
    PairRow row{s.pair,
                Summarise(LessOverhead(library, overhead)),
                Summarise(LessOverhead(baseline, overhead)),
                0.0,
                static_cast<int>(std::min(library.size(), baseline.size()))};
    row.ratio = row.library.median / row.baseline.median;
    rows.push_back(row);
  }
  return rows;
}

std::string FormatPairTable(const std::vector<PairRow>& rows) {
  std::size_t width = 4;
  for (const PairRow& r : rows) width = std::max(width, r.pair.size());
  const int w = static_cast<int>(width);
  std::string out;
  char line[512];
  std::snprintf(line,
                sizeof line,
                "%-*s %4s %34s %34s %9s\n",
                w,
                "pair",
                "reps",
                "library median [min, max]",
                "baseline median [min, max]",
                "lib/base");
  out += line;
  for (const PairRow& r : rows) {
    std::snprintf(line,
                  sizeof line,
                  "%-*s %4d %34s %34s %9.3f\n",
                  w,
                  r.pair.c_str(),
                  r.repetitions,
                  FormatArm(r.library).c_str(),
                  FormatArm(r.baseline).c_str(),
                  r.ratio);
    out += line;
  }
  return out;
}

}  // namespace qvbench
