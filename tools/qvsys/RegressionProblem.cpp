#include "RegressionProblem.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace qvsys {
namespace {

constexpr std::string_view kCoefficientTag = "# B";
constexpr std::string_view kResidualTag = "# Residual standard deviation ";

double ParseDouble(std::string_view field) {
  // strtod rather than from_chars: the certified values use the "0.35E-01" form.
  const std::string text(field);
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || end != text.c_str() + text.size()) {
    throw std::domain_error("malformed number '" + text + "'");
  }
  return value;
}

std::vector<std::string_view> SplitOn(std::string_view line, char separator) {
  std::vector<std::string_view> fields;
  while (true) {
    const std::size_t at = line.find(separator);
    fields.push_back(line.substr(0, at));
    if (at == std::string_view::npos) return fields;
    line.remove_prefix(at + 1);
  }
}

void ParseCertifiedCoefficient(std::string_view line, RegressionProblem& problem) {
  // "# Bj value sd"
  const std::vector<std::string_view> fields = SplitOn(line.substr(2), ' ');
  if (fields.size() != 3) throw std::domain_error("malformed certified value line");
  problem.certifiedCoefficients.push_back(ParseDouble(fields[1]));
  problem.certifiedStandardErrors.push_back(ParseDouble(fields[2]));
}

void ParseDataRow(std::string_view line, RegressionProblem& problem) {
  const std::vector<std::string_view> fields = SplitOn(line, ',');
  if (fields.size() != problem.regressors.size() + 1) {
    throw std::domain_error("data row with the wrong number of fields");
  }
  problem.y.push_back(ParseDouble(fields[0]));
  for (std::size_t j = 1; j < fields.size(); ++j) problem.x.push_back(ParseDouble(fields[j]));
  ++problem.observations;
}

void ParseLine(std::string_view line, RegressionProblem& problem) {
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  if (line.empty()) return;
  if (line.starts_with(kCoefficientTag)) return ParseCertifiedCoefficient(line, problem);
  if (line.starts_with(kResidualTag)) {
    const std::string_view rest = line.substr(kResidualTag.size());
    problem.certifiedResidualSd = ParseDouble(rest.substr(0, rest.find(';')));
    return;
  }
  if (line.front() == '#') return;
  if (problem.regressors.empty() && line.starts_with("y,")) {
    for (std::string_view field : SplitOn(line.substr(2), ',')) {
      problem.regressors.emplace_back(field);
    }
    return;
  }
  ParseDataRow(line, problem);
}

}  // namespace

std::string ParameterName(std::size_t j) {
  char name[24];
  std::snprintf(name, sizeof name, "B%zu", j);
  return name;
}

RegressionProblem ParseNistCsv(std::string_view name, std::string_view text) {
  RegressionProblem problem;
  problem.name = name;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    ParseLine(text.substr(0, end), problem);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  const std::size_t parameters = problem.regressors.size() + 1;
  if (problem.observations <= static_cast<int>(parameters) ||
      problem.certifiedCoefficients.size() != parameters) {
    throw std::domain_error("dataset " + problem.name + " is incomplete");
  }
  return problem;
}

}  // namespace qvsys
