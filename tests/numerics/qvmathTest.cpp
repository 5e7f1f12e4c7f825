#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>

#include "qvsysbase/qvExcept.h"
#include "qvsysbase/qvmath.h"

namespace qvsysbase {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(qvmathTest, RoundingAtDecimalsAndAtSignificantDigits) {
  const std::tuple<double, unsigned, double> atDecimals[] = {
      // clang-format off
      {2.5, 0, 3.0},  {-2.5, 0, -2.0},  // half upward, not away from zero
      {1.235, 2, 1.24},                  // 1.235 is stored slightly above, and rounds up
      {0.1, 2, 0.1},                     // 0.1 itself is not a small value
      {0.0, 3, 0.0},  {1.234567, 20, 1.234567},  {kInf, 2, kInf},
      {1e-12, 1, 0.0},  // small values are scaled up ten steps at most: to 0.01 only
      // Small values keep significant digits; scaled back down in extended
      // precision they land on the double nearest to the decimal result.
      {0.001234, 2, 0.0012},  {-0.001234, 2, -0.0012},  {0.00987, 2, 0.0099},
      {0.000555, 2, 0.00056},  {0.0314159, 3, 0.0314},  {0.0314159, 4, 0.03142},
      // clang-format on
  };
  for (const auto& [x, digits, expected] : atDecimals) {
    SCOPED_TRACE(testing::Message() << x << " at " << digits << " decimals");
    EXPECT_EQ(qvmath::QvRound(x, digits), expected);
  }
  EXPECT_EQ(qvmath::QvRound(1.0 / 3.0, 21), 1.0 / 3.0);  // above 20 digits: untouched, bit for bit
  EXPECT_TRUE(std::isnan(qvmath::QvRound(std::nan(""), 2)));

  const std::tuple<double, unsigned, double, unsigned> atDigits[] = {
      // clang-format off
      {1234.5678, 3, 1230.0, 0},  {0.012345, 3, 0.0123, 3},  {9.96, 2, 10.0, 2},
      {-0.012345, 3, -0.0123, 3},  {0.00987654, 2, 0.0099, 2},  {0.000123456, 4, 0.0001235, 4},
      {12.345, 3, 12.3, 2},  // digits - e + 1 for 0 < e < digits
      {0.0, 4, 0.0, 4},  {5.5, 21, 5.5, 21},  {kInf, 3, kInf, 3},
      // clang-format on
  };
  for (const auto& [x, digits, expected, expectedDecimals] : atDigits) {
    SCOPED_TRACE(testing::Message() << x << " to " << digits << " digits");
    unsigned decimals = 99;
    EXPECT_EQ(qvmath::QvRound2(x, digits, &decimals), expected);
    EXPECT_EQ(decimals, expectedDecimals);
    EXPECT_EQ(qvmath::QvRound2(x, digits, nullptr), expected);
  }
}

// Significant digits allow half a unit of the last one; decimals the full unit.
TEST(qvmathTest, EqualityAtDigitsDecimalsAndRelativeTolerance) {
  const std::tuple<double, double, unsigned, bool> significant[] = {
      // clang-format off
      {1.004, 1.0, 3, true},  {1.006, 1.0, 3, false},  // tolerance 0.005
      {1234.0, 1234.4, 4, true},                        // tolerance 0.5
      {1.0, 1.0 + 1e-15, 15, true},  {1.0, 1.0 + 1e-15, 20, false},  // exact from 20 digits on
      {kInf, kInf, 3, true},
      // clang-format on
  };
  for (const auto& [a, b, digits, expected] : significant) {
    SCOPED_TRACE(testing::Message() << a << " vs " << b << " at " << digits);
    EXPECT_EQ(qvmath::EqualWithPrecision(a, b, digits), expected);
  }
  const std::tuple<double, double, unsigned, bool> decimals[] = {
      // 0.4 - 0.3 is 0.10000000000000003 in binary floating point, so it lies
      // just outside the tolerance 0.1 although the decimal difference is 0.1.
      {0.3, 0.4, 1, false},
      // 0.5 - 0.4 is 0.09999999999999998: inside.
      {0.4, 0.5, 1, true},
      // clang-format off
      {1.0, 1.005, 2, true},  {2.0, 2.0, 25, true},  {1.0, 1.0 + 1e-15, 20, false},
      // clang-format on
  };
  for (const auto& [a, b, digits, expected] : decimals) {
    SCOPED_TRACE(testing::Message() << a << " vs " << b << " at " << digits << " decimals");
    EXPECT_EQ(qvmath::EqualWithAbsPrecision(a, b, digits), expected);
  }

  // A relative tolerance; the absolute one takes over at zero.
  const std::tuple<double, double, double, double, bool> rows[] = {
      // clang-format off
      {100.0, 101.0, 0.01, 0.0, true},  {100.0, 102.0, 0.01, 0.0, false},  // 1/101, 2/102
      {-1.0, 1.0, 1.0, 0.0, false},  {5.0, 5.0, 0.0, -1.0, true},  // 2/1; equal needs no tolerance
      {0.0, 1e-12, 0.01, 1e-10, true},  {1e-9, 0.0, 0.5, 1e-10, false},
      // clang-format on
  };
  for (const auto& [a, b, rTolerance, absTolerance, expected] : rows) {
    SCOPED_TRACE(testing::Message() << a << " vs " << b);
    EXPECT_EQ(qvmath::EqualWithRelativePrecision(a, b, rTolerance, absTolerance), expected);
  }
  try {
    qvmath::EqualWithRelativePrecision(1.0, 1.0, -1.0, 0.0);
    ADD_FAILURE() << "no assertion";
  } catch (const AssertionException& e) {
    EXPECT_EQ(e.getMessage(), "rTolerance >= 0.");
    EXPECT_EQ(e.getFile(), "qvmath");
    EXPECT_EQ(e.getAssertionType(), "Pre-condition");
  }
}

// What DoHandleMathErr did: the exception's kind and text, or the value returned.
template <class F>
std::string Outcome(F call) {
  try {
    return "returned " + std::to_string(call());
  } catch (const std::domain_error& e) {
    return std::string("domain_error ") + e.what();
  } catch (const std::invalid_argument& e) {
    return std::string("invalid_argument ") + e.what();
  } catch (const std::overflow_error& e) {
    return std::string("overflow_error ") + e.what();
  }
}

TEST(qvmathTest, MathErrorsBecomeExceptionsOrAreHandled) {
  const std::tuple<int, const char*> rows[] = {
      // clang-format off
      {1, "domain_error log"},  {2, "invalid_argument log"},  {3, "overflow_error log"},
      {4, "returned 1"},  {5, "returned 1"},  {6, "returned 0"},
      // clang-format on
  };
  for (const auto& [type, expected] : rows) {
    SCOPED_TRACE(type);
    EXPECT_EQ(Outcome([t = type] { return qvmath::DoHandleMathErr(t, "log"); }), expected);
  }
  MathErrRecord record{qvmath::OVERFLOW_ERROR, "exp", 1000.0, 0.0, kInf};
  EXPECT_EQ(Outcome([&] { return qvmath::handleMathErr(&record); }), "overflow_error exp");
  MathErrRecordL recordL{qvmath::UNDERFLOW_ERROR, "expl", -1e5L, 0.0L, 0.0L};
  EXPECT_EQ(Outcome([&] { return qvmath::handleMathErrl(&recordL); }), "returned 1");
}

}  // namespace
}  // namespace qvsysbase
