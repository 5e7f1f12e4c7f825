// qvsys chart-diff FILE1 FILE2 [options]: the differences between two saved
// frozen charts, under comparison options taken from the command line.
#include <charconv>
#include <cmath>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "qvsysbase/ChartComparison.h"
#include "qvsysbase/FreezableObject.h"
#include "qvsysbase/LoadStream.h"
#include "qvsysbase/QvStringUtil.h"

namespace qvsys {
namespace {

using qvsysbase::ChartComparisonOptions;
using qvsysbase::ChartDifference;
using qvsysbase::ObjectComparisonCategory;

// Exit statuses: the charts are equal, they differ, or they could not be
// compared (a bad option, a file that is not a saved frozen chart).
constexpr int kEqual = 0;
constexpr int kDifferent = 1;
constexpr int kCannotCompare = 2;

constexpr const char* kUsage =
    "usage: qvsys chart-diff FILE1 FILE2 [options]\n"
    "Compares two frozen charts saved by FreezableObject::SaveToStream. Prints each\n"
    "difference (group headers at the start of the line, the values they group\n"
    "indented), then the number of differences, headers not counted. Exit status:\n"
    "0 equal, 1 different, 2 a bad option or a file that is not a saved frozen chart.\n"
    "options:\n"
    "  --tolerance X    numbers are equal when they differ by at most X\n"
    "  --precision P    numbers are equal within P per cent of their size\n"
    "                   (default 0: exactly equal)\n"
    "  --zero-floor Z   with the relative rule, numbers closer than Z are equal\n"
    "                   (needed near zero, where P per cent of a tiny size is less)\n"
    "  --report-all     list every compared value, equal or not (the exit status\n"
    "                   still says whether any differ)\n"
    "  --no-CATEGORY    leave out one part of the chart; CATEGORY is one of\n"
    "                   scalars, variables, points, hint-labels, particular-values,\n"
    "                   var-footers, axis-status, constraints,\n"
    "                   composite-constraints, consolidated\n"
    "--tolerance excludes --precision and --zero-floor.\n";

struct CategoryName {
  const char* name;
  ObjectComparisonCategory category;
};
constexpr CategoryName kCategories[] = {
    {"scalars", qvsysbase::OBJECT_SCALARS},
    {"variables", qvsysbase::OBJECT_VAR_MAPS},
    {"points", qvsysbase::OBJECT_VAR_CASE},
    {"hint-labels", qvsysbase::OBJECT_VAR_INDEX},
    {"particular-values", qvsysbase::OBJECT_VAR_VALUE},
    {"var-footers", qvsysbase::OBJECT_VAR1_VAR2},
    {"axis-status", qvsysbase::OBJECT_AXIS_STATUS},
    {"constraints", qvsysbase::OBJECT_PARAM_CONSTRAINTS},
    {"composite-constraints", qvsysbase::OBJECT_COMP_CONSTRAINTS},
    {"consolidated", qvsysbase::OBJECT_VAR_VEC_CASES},
};

// The options that take a number, each a finite value >= 0.
struct NumberOption {
  const char* name;
  void (*apply)(ChartComparisonOptions& options, double value);
};
constexpr NumberOption kNumberOptions[] = {
    {"--tolerance",
     [](ChartComparisonOptions& o, double x) {
       o.m_bUseAbsTolerance = true;
       o.m_dAbsTolerance = x;
     }},
    {"--precision", [](ChartComparisonOptions& o, double x) { o.m_dRelPrecisionPercent = x; }},
    {"--zero-floor",
     [](ChartComparisonOptions& o, double x) {
       o.m_bUseZeroFloor = true;
       o.m_dZeroFloor = x;
     }},
};

struct Request {
  std::vector<std::string> files;
  ChartComparisonOptions options;
};

bool ParseNonNegative(const std::string& text, double& value) {
  const char* end = text.data() + text.size();
  const auto [ptr, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && ptr == end && std::isfinite(value) && value >= 0.0;
}

// Applies one option at args[i] (moving i past its value); an error text, or
// empty when the option was good.
std::string ApplyOption(const Arguments& args, std::size_t& i, ChartComparisonOptions& options) {
  const std::string& option = args[i];
  if (option == "--report-all") {
    options.m_bReportAll = true;
    return {};
  }
  for (const NumberOption& number : kNumberOptions) {
    if (option != number.name) continue;
    double value = 0.0;
    if (++i == args.size() || !ParseNonNegative(args[i], value))
      return option + " needs a finite number >= 0";
    number.apply(options, value);
    return {};
  }
  for (const CategoryName& category : kCategories) {
    if (option != std::string("--no-") + category.name) continue;
    options.setObjectCompFlag(category.category, false);
    return {};
  }
  return "unknown option " + option;
}

std::string Parse(const Arguments& args, Request& request) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (!args[i].starts_with("--")) {
      request.files.push_back(args[i]);
      continue;
    }
    std::string error = ApplyOption(args, i, request.options);
    if (!error.empty()) return error;
  }
  if (request.files.size() != 2) return "expected two files";
  const ChartComparisonOptions& o = request.options;
  if (o.m_bUseAbsTolerance && (o.m_dRelPrecisionPercent != 0.0 || o.m_bUseZeroFloor))
    return "--tolerance excludes --precision and --zero-floor";
  return {};
}

// Reads the frozen chart saved in `path`; on failure, why not.
bool ReadChart(const std::string& path, qvsysbase::FreezableObject& chart, std::string& reason) {
  // Only regular files: opening a pipe or a device may wait for ever.
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    reason = "not a regular file";
    return false;
  }
  qvsysbase::LoadStream in;
  try {
    in.InitFileStream(path.c_str());
  } catch (const std::exception& e) {
    reason = e.what();  // the stream's own words: missing, unreadable, not a stream
    return false;
  }
  chart.ReadFromStream(in);
  if (!in.good()) {
    reason = "no frozen chart record, or a damaged one";
    return false;
  }
  if (!chart.IsFrozen()) {
    reason = "the chart was saved unfrozen: there is no snapshot to compare";
    return false;
  }
  return true;
}

}  // namespace

void PrintChartDifferences(const std::vector<ChartDifference>& diffs) {
  std::string line;
  std::size_t values = 0;
  for (const ChartDifference& d : diffs) {
    const bool header = d.m_nType == ChartDifference::DIFF_GROUP;
    values += header ? 0 : 1;
    qvsysbase::QvStringUtil::ConvertWStringToString(d.m_wstrText, line);
    std::cout << (header ? "" : "  ") << line << '\n';
  }
  std::cout << values << (values == 1 ? " difference" : " differences") << '\n';
}

int RunChartDiff(const Arguments& args) {
  if (args.size() == 1 && args[0] == "--help") {
    std::cout << kUsage;
    return 0;
  }
  Request request;
  const std::string error = Parse(args, request);
  if (!error.empty()) {
    std::cerr << "qvsys chart-diff: " << error << '\n' << kUsage;
    return kCannotCompare;
  }
  qvsysbase::FreezableObject charts[2];
  for (int k = 0; k < 2; ++k) {
    std::string reason;
    if (!ReadChart(request.files[k], charts[k], reason)) {
      std::cerr << "qvsys chart-diff: " << request.files[k] << ": " << reason << '\n';
      return kCannotCompare;
    }
  }
  std::vector<ChartDifference> diffs;
  bool equal = charts[0].compareChartObjects(&charts[1], diffs, request.options);
  PrintChartDifferences(diffs);
  if (request.options.m_bReportAll) {
    // A listing of everything compares unequal by design; the verdict is
    // whether anything differs.
    ChartComparisonOptions verdict = request.options;
    verdict.m_bReportAll = false;
    equal = charts[0].compareChartObjects(&charts[1], diffs, verdict);
  }
  return equal ? kEqual : kDifferent;
}

}  // namespace qvsys
