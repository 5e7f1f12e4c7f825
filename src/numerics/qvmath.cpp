#include "qvsysbase/qvmath.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "qvsysbase/qvExcept.h"

QV_UNIT("qvmath", "$Revision: #1 $")

namespace qvsysbase {

const double qvEPSILON = 0.0;

namespace {

// The scaling factors, in extended precision: one decimal step down is a
// multiplication by the long double nearest to 0.1, not a division by ten. The
// double 0.1 is too coarse for that: its relative error of 5.6e-17 survives
// the steps, so 0.12 scaled down twice would miss the double nearest to 0.0012
// by one unit.
constexpr long double kTen = 10.0L;
constexpr long double kTenth = 0.1L;

// Above this many digits a double has nothing left to round.
constexpr unsigned kMaxRoundDigits = 20;
// Small magnitudes are scaled up at most this many decimal steps by QvRound.
constexpr int kMaxSmallValueSteps = 10;

// value * 10^steps, one multiplication by 10.0 (steps > 0) or 0.1 (steps < 0) per step.
long double ScaleByDecimalSteps(long double value, int steps) {
  for (; steps > 0; --steps) {
    value *= kTen;
  }
  for (; steps < 0; ++steps) {
    value *= kTenth;
  }
  return value;
}

// The decimal exponent e of a positive finite m, so that m = f * 10^e with
// 0.1 <= f < 1, found by stepwise scaling.
int DecimalExponent(long double m) {
  int e = 0;
  for (; m >= 1.0L; ++e) {
    m *= kTenth;
  }
  for (; m < kTenth; --e) {
    m *= kTen;
  }
  return e;
}

}  // namespace

double qvmath::QvRound(double x, unsigned digits) {
  if (digits > kMaxRoundDigits) {
    return x;
  }
  if (digits == 0) {
    return std::floor(x + 0.5);
  }
  const long double s = ScaleByDecimalSteps(1.0L, static_cast<int>(digits));
  if (!(std::fabs(x) < kTenth)) {
    return static_cast<double>(std::floor(x * s + 0.5L) / s);
  }

  // Small values keep `digits` significant digits rather than decimals: scale
  // them above 0.1 first and back afterwards.
  long double y = x;
  int k = 0;
  for (; k < kMaxSmallValueSteps && std::fabs(y) <= kTenth; ++k) {
    y *= kTen;
  }
  y = std::floor(y * s + 0.5L) / s;
  return static_cast<double>(ScaleByDecimalSteps(y, -k));
}

double qvmath::QvRound2(double x, unsigned digits, unsigned* decimals) {
  if (digits > kMaxRoundDigits || x == 0.0 || !std::isfinite(x)) {
    if (decimals != nullptr) {
      *decimals = digits;
    }
    return x;
  }
  const int e = DecimalExponent(std::fabs(x));
  const int p = static_cast<int>(digits) - e;
  const long double rounded =
      ScaleByDecimalSteps(std::floor(ScaleByDecimalSteps(std::fabs(x), p) + 0.5L), -p);
  if (decimals != nullptr) {
    const int d = static_cast<int>(digits);
    // The + 1 for mid-range exponents is what the display code has always used.
    *decimals = e <= 0 ? digits : (e < d ? static_cast<unsigned>(d - e + 1) : 0U);
  }
  const double magnitude = static_cast<double>(rounded);
  return x < 0.0 ? -magnitude : magnitude;
}

bool qvmath::EqualWithPrecision(double a, double b, unsigned digits) {
  const double m = std::max(std::fabs(a), std::fabs(b));
  if (digits >= kMaxRoundDigits || m == 0.0 || !std::isfinite(m)) {
    return a == b;
  }
  const int e = DecimalExponent(m);
  const long double tolerance = ScaleByDecimalSteps(0.5L, e - static_cast<int>(digits));
  return std::fabs(static_cast<long double>(a) - b) <= tolerance;
}

bool qvmath::EqualWithAbsPrecision(double a, double b, unsigned digits) {
  if (digits >= kMaxRoundDigits) {
    return a == b;
  }
  const long double tolerance = ScaleByDecimalSteps(1.0L, -static_cast<int>(digits));
  return std::fabs(a - b) <= tolerance;
}

bool qvmath::EqualWithRelativePrecision(double a, double b, double rTolerance,
                                        double absTolerance) {
  QV_ASSERT(rTolerance >= 0.);
  if (a == b) {
    return true;
  }
  const double difference = std::fabs(a - b);
  if (a == 0.0 || b == 0.0) {
    return difference <= absTolerance;
  }
  return difference / std::max(std::fabs(a), std::fabs(b)) <= rTolerance;
}

int qvmath::DoHandleMathErr(int type, const char* functionName) {
  const std::string name = functionName != nullptr ? functionName : "";
  switch (type) {
    case DOMAIN_ERROR:
      throw std::domain_error(name);
    case SINGULARITY_ERROR:
      throw std::invalid_argument(name);
    case OVERFLOW_ERROR:
      throw std::overflow_error(name);
    case UNDERFLOW_ERROR:
    case TOTAL_LOSS_ERROR:
      return 1;
    default:
      return 0;
  }
}

int qvmath::handleMathErr(MathErrRecord* record) {
  return DoHandleMathErr(record->type, record->name);
}

int qvmath::handleMathErrl(MathErrRecordL* record) {
  return DoHandleMathErr(record->type, record->name);
}

}  // namespace qvsysbase
