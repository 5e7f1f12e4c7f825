// Rounding for display and tolerant comparison of computed numbers, and the
// hook that turns the run-time library's math errors into exceptions.
//
// Decimal scaling is done one digit at a time, multiplying by 10.0 or by 0.1 in
// extended precision (long double), never through a power function: results
// are those of that stepwise scaling, and callers that compare rounded values
// rely on it.
//
// Thread-safety: thread-safe. Every function works only on its arguments.
#ifndef QVSYSBASE_QVMATH_H_
#define QVSYSBASE_QVMATH_H_

#include "qvsysbase/Export.h"

namespace qvsysbase {

// The library's comparison epsilon. Its value is 0.0: callers that pass it ask
// for exact comparison.
QVSYSBASE_API extern const double qvEPSILON;

// The run-time library's math-error record: the kind of error (one of
// qvmath::MathErrType), the failing function's name, its arguments and the
// result it proposes. Intentionally copyable.
struct MathErrRecord {
  int type;
  const char* name;
  double arg1;
  double arg2;
  double retval;
};

// The same record for the long-double functions.
struct MathErrRecordL {
  int type;
  const char* name;
  long double arg1;
  long double arg2;
  long double retval;
};

class QVSYSBASE_API qvmath {
 public:
  // The error kinds of a MathErrRecord, numbered as the run-time library numbers them.
  enum MathErrType : int {
    DOMAIN_ERROR = 1,
    SINGULARITY_ERROR = 2,
    OVERFLOW_ERROR = 3,
    UNDERFLOW_ERROR = 4,
    TOTAL_LOSS_ERROR = 5,
  };

  // Rounds x half upward at `digits` decimals. digits above 20 returns x
  // unchanged. Values below 0.1 in magnitude are first scaled up (at most ten
  // decimal steps) until they exceed 0.1, so they keep `digits` significant
  // digits: QvRound(0.001234, 2) is 0.0012.
  static double QvRound(double x, unsigned digits);

  // Rounds x half upward to `digits` significant digits. When `decimals` is not
  // null it receives the number of decimals to display: digits when the decimal
  // exponent e of |x| (|x| = m * 10^e, 0.1 <= m < 1) is at most 0,
  // digits - e + 1 when 0 < e < digits, 0 when e >= digits. digits of 21 or
  // more, x equal to 0 or x not finite return x unchanged with decimals = digits.
  static double QvRound2(double x, unsigned digits, unsigned* decimals);

  // True when a and b agree to `digits` significant digits:
  // |a - b| <= 0.5 * 10^(e - digits), e the decimal exponent of max(|a|, |b|).
  // digits of 20 or more, both zero, or a non-finite value compare exactly.
  static bool EqualWithPrecision(double a, double b, unsigned digits);

  // True when |a - b| <= 10^-digits, the full unit of the last decimal (not
  // half of it). digits of 20 or more compare exactly. The difference is taken
  // in binary floating point: values whose decimal difference is exactly the
  // unit may miss it by an ulp.
  static bool EqualWithAbsPrecision(double a, double b, unsigned digits);

  // True when a and b are equal, or when |a - b| / max(|a|, |b|) <= rTolerance.
  // A relative difference means nothing next to zero, so when a or b is zero
  // the test is absolute instead: |a - b| <= absTolerance (callers pass a
  // small non-negative value; a negative one makes only exact zeros equal).
  // REQUIRES: rTolerance >= 0.
  static bool EqualWithRelativePrecision(double a, double b, double rTolerance,
                                         double absTolerance);

  // The common body of the math-error hooks. Domain errors throw
  // std::domain_error, singularities std::invalid_argument and overflows
  // std::overflow_error, each with what() equal to functionName; underflow and
  // total loss of significance return 1 (handled, the proposed result stands);
  // any other type returns 0 (not handled).
  static int DoHandleMathErr(int type, const char* functionName);

  // Entry points for a run-time library that reports math errors through a
  // record. They forward the record's type and name to DoHandleMathErr.
  static int handleMathErr(MathErrRecord* record);
  static int handleMathErrl(MathErrRecordL* record);
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_QVMATH_H_
