#include "numerics/NistProblems.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <numbers>
#include <sstream>
#include <stdexcept>

namespace qvsysbase::testing {
namespace {

constexpr Real kPi = std::numbers::pi_v<Real>;
constexpr double kMaxDigits = 11.0;
// The most parameters a problem of the suite has (ENSO's nine), with room.
constexpr int kMaxParameters = 16;

Real Gauss(const Real* b, Real x) {
  const Real p = (x - b[3]) / b[4], q = (x - b[6]) / b[7];
  return b[0] * std::exp(-b[1] * x) + b[2] * std::exp(-p * p) + b[5] * std::exp(-q * q);
}

Real Lanczos(const Real* b, Real x) {
  return b[0] * std::exp(-b[1] * x) + b[2] * std::exp(-b[3] * x) + b[4] * std::exp(-b[5] * x);
}

Real Chwirut(const Real* b, Real x) { return std::exp(-b[0] * x) / (b[1] + b[2] * x); }

Real Enso(const Real* b, Real x) {
  const Real annual = 2 * kPi * x / 12, w4 = 2 * kPi * x / b[3], w7 = 2 * kPi * x / b[6];
  return b[0] + b[1] * std::cos(annual) + b[2] * std::sin(annual) + b[4] * std::cos(w4) +
         b[5] * std::sin(w4) + b[7] * std::cos(w7) + b[8] * std::sin(w7);
}

// The models as each file states them, y = f(x; b) + e, with b1 as b[0].
// Roszman1's arctan[b3/(x − b4)] is taken on the branch continuous in b4,
// atan2(b3, x − b4), on which the file's certified values lie.
// clang-format off
const std::map<std::string, NistModel>& Models() {
  static const std::map<std::string, NistModel> models = {
    {"Misra1a", [](const Real* b, const NistObservation& o) { return o.y - b[0] * (1 - std::exp(-b[1] * o.x1)); }},
    {"Misra1b", [](const Real* b, const NistObservation& o) { return o.y - b[0] * (1 - std::pow(1 + b[1] * o.x1 / 2, -2)); }},
    {"Misra1c", [](const Real* b, const NistObservation& o) { return o.y - b[0] * (1 - std::pow(1 + 2 * b[1] * o.x1, -.5L)); }},
    {"Misra1d", [](const Real* b, const NistObservation& o) { return o.y - b[0] * b[1] * o.x1 * std::pow(1 + b[1] * o.x1, -1); }},
    {"Chwirut1", [](const Real* b, const NistObservation& o) { return o.y - Chwirut(b, o.x1); }},
    {"Chwirut2", [](const Real* b, const NistObservation& o) { return o.y - Chwirut(b, o.x1); }},
    {"DanWood", [](const Real* b, const NistObservation& o) { return o.y - b[0] * std::pow(o.x1, b[1]); }},
    {"Gauss1", [](const Real* b, const NistObservation& o) { return o.y - Gauss(b, o.x1); }},
    {"Gauss2", [](const Real* b, const NistObservation& o) { return o.y - Gauss(b, o.x1); }},
    {"Gauss3", [](const Real* b, const NistObservation& o) { return o.y - Gauss(b, o.x1); }},
    {"Lanczos1", [](const Real* b, const NistObservation& o) { return o.y - Lanczos(b, o.x1); }},
    {"Lanczos2", [](const Real* b, const NistObservation& o) { return o.y - Lanczos(b, o.x1); }},
    {"Lanczos3", [](const Real* b, const NistObservation& o) { return o.y - Lanczos(b, o.x1); }},
    {"ENSO", [](const Real* b, const NistObservation& o) { return o.y - Enso(b, o.x1); }},
    {"MGH17", [](const Real* b, const NistObservation& o) { return o.y - (b[0] + b[1] * std::exp(-o.x1 * b[3]) + b[2] * std::exp(-o.x1 * b[4])); }},
    {"Nelson", [](const Real* b, const NistObservation& o) { return std::log(o.y) - (b[0] - b[1] * o.x1 * std::exp(-b[2] * o.x2)); }},
    {"Roszman1", [](const Real* b, const NistObservation& o) { return o.y - (b[0] - b[1] * o.x1 - std::atan2(b[2], o.x1 - b[3]) / kPi); }},
    {"Kirby2", [](const Real* b, const NistObservation& o) {
       const Real x = o.x1;
       return o.y - (b[0] + b[1] * x + b[2] * x * x) / (1 + b[3] * x + b[4] * x * x); }},
    {"Hahn1", [](const Real* b, const NistObservation& o) {
       const Real x = o.x1;
       return o.y - (b[0] + b[1] * x + b[2] * x * x + b[3] * x * x * x) /
                    (1 + b[4] * x + b[5] * x * x + b[6] * x * x * x); }},
  };
  return models;
}
// clang-format on

std::filesystem::path NistDirectory() { return std::filesystem::path(QV_TEST_DATA_DIR) / "nist"; }

// "  b3 =   start1   start2   certified   sd"
bool ReadParameterLine(const std::string& line, NistProblem& problem) {
  std::istringstream in(line);
  std::string name, equals;
  double start1 = 0, start2 = 0, certified = 0, sd = 0;
  if (!(in >> name >> equals >> start1 >> start2 >> certified >> sd)) return false;
  if (name.size() < 2 || name[0] != 'b' || equals != "=") return false;
  problem.start1.push_back(start1);
  problem.start2.push_back(start2);
  problem.certified.push_back(certified);
  problem.certifiedSd.push_back(sd);
  return true;
}

// "Data:   y   x ..." opens the data block ("Data:   1 Response ..." does not).
bool IsDataHeader(const std::string& line) {
  std::istringstream in(line);
  std::string label, first;
  return in >> label >> first && label == "Data:" && first == "y";
}

void ReadDataLine(const std::string& line, NistProblem& problem) {
  std::istringstream in(line);
  NistObservation o{0.0L, 0.0L, 0.0L};
  if (in >> o.y >> o.x1) {
    in >> o.x2;
    problem.data.push_back(o);
  }
}

}  // namespace

NistProblem LoadNistProblem(const std::string& name) {
  NistProblem problem;
  problem.name = name;
  const auto model = Models().find(name);
  if (model == Models().end()) {
    throw std::runtime_error("no model for " + name);
  }
  problem.residual = model->second;
  std::ifstream file(NistDirectory() / (name + ".dat"));
  std::string line;
  bool inData = false;
  while (std::getline(file, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (inData) {
      ReadDataLine(line, problem);
    } else if (IsDataHeader(line)) {
      inData = true;
    } else if (line.rfind("Residual Sum of Squares:", 0) == 0) {
      problem.certifiedRss = std::stod(line.substr(line.find(':') + 1));
    } else {
      ReadParameterLine(line, problem);
    }
  }
  if (problem.Parameters() == 0 || problem.Parameters() > kMaxParameters ||
      problem.Observations() < problem.Parameters()) {
    throw std::runtime_error("cannot read " + name);
  }
  return problem;
}

void NistProblem::Residuals(const double* b, double* f) const {
  Real wide[kMaxParameters];
  std::copy(b, b + Parameters(), wide);
  for (int i = 0; i < Observations(); ++i) f[i] = static_cast<double>(residual(wide, data[i]));
}

std::vector<std::string> NistProblemNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(NistDirectory())) {
    if (entry.path().extension() == ".dat") names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

double LogRelativeError(double x, double certified) {
  if (!std::isfinite(x)) return 0.0;
  const double error =
      certified != 0.0 ? std::fabs(x - certified) / std::fabs(certified) : std::fabs(x);
  if (error == 0.0) return kMaxDigits;
  return std::clamp(-std::log10(error), 0.0, kMaxDigits);
}

double MinDigits(const std::vector<double>& values, const std::vector<double>& certified) {
  double digits = 99.0;  // above any LogRelativeError
  for (std::size_t j = 0; j < values.size(); ++j)
    digits = std::min(digits, LogRelativeError(values[j], certified[j]));
  return digits;
}

}  // namespace qvsysbase::testing
