// The kernel-library set against the plain set as an oracle, the vector-math
// statuses, and the scalar functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "numerics/KernelTestSupport.h"
#include "numerics/VectorMath.h"
#include "qvsysbase/IntelSPLHandler.h"

namespace qvsysbase {
namespace {

using H = IntelSPLHandler;
using testing_support::ReportCapture;
using testing_support::Select;
using Vec = std::vector<double>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kEps = std::numeric_limits<double>::epsilon();

// Equal within `ulps` units of the larger magnitude, and of 1.0 for results
// near zero that come from cancelling terms of order one; NaN matches NaN,
// and infinities match only themselves.
void ExpectClose(const Vec& actual, const Vec& expected, double ulps) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    const double a = actual[i], e = expected[i];
    if (std::isnan(e) || std::isinf(e)) {
      EXPECT_TRUE(std::isnan(e) ? std::isnan(a) : a == e) << "at " << i << ": " << a << " vs " << e;
    } else {
      EXPECT_NEAR(a, e, ulps * kEps * std::max({std::fabs(a), std::fabs(e), 1.0})) << "at " << i;
    }
  }
}

// 37 values: four full AVX-512 vectors and a tail, spanning signs and scales.
Vec Operand(double scale, double shift) {
  Vec v(37);
  for (std::size_t i = 0; i < v.size(); ++i) v[i] = scale * std::sin(1.0 + 0.7 * i) + shift;
  return v;
}

struct SlotRow {
  const char* name;
  double ulps;  // documented accuracy of the fast routine against the plain one
  std::function<Vec()> run;
};

// Every elementwise slot, run on the same operands in whichever set is installed.
std::vector<SlotRow> ElementwiseRows() {
  const Vec a = Operand(3.0, 0.5), b = Operand(-2.0, 0.25), pos = Operand(4.0, 5.0);
  const int n = static_cast<int>(a.size());
  auto unary = [n](Vec v, void (*fn)(double*, int)) { return fn(v.data(), n), v; };
  auto binary = [n](const Vec& s, Vec d, void (*fn)(const double*, double*, int)) {
    return fn(s.data(), d.data(), n), d;
  };
  auto ternary =
      [n](const Vec& x, const Vec& y, void (*fn)(const double*, const double*, double*, int)) {
        Vec d(x.size());
        return fn(x.data(), y.data(), d.data(), n), d;
      };
  auto scalar = [n](double val, Vec d, void (*fn)(double, double*, int)) {
    return fn(val, d.data(), n), d;
  };
  return {
      {"nspdbSet", 0, [=] { return scalar(2.5, a, H::nspdbSet); }},
      {"nspdbZero", 0, [=] { return unary(a, H::nspdbZero); }},
      {"nspwbZero",
       0,
       [=] {
         std::vector<short> w(37, 7);
         H::nspwbZero(w.data(), n);
         return Vec(w.begin(), w.end());
       }},
      {"nspdbIntToFloat",
       0,
       [=] {
         std::vector<int> ints(37);
         for (int i = 0; i < n; ++i) ints[i] = 1000 * i - 7000;
         Vec d(37);
         H::nspdbIntToFloat(ints.data(), d.data(), n);
         return d;
       }},
      {"nspdbAbs1", 0, [=] { return unary(a, H::nspdbAbs1); }},
      {"nspdbAbs2", 0, [=] { return binary(a, b, H::nspdbAbs2); }},
      {"nspdDotProd", 4 * 37, [=] { return Vec{H::nspdDotProd(a.data(), b.data(), n)}; }},
      {"nspdbSqrt1", 0, [=] { return unary(pos, H::nspdbSqrt1); }},
      {"nspdbSqrt2", 0, [=] { return binary(pos, b, H::nspdbSqrt2); }},
      {"nspdbCopy", 0, [=] { return binary(a, b, H::nspdbCopy); }},
      {"nspwbCopy",
       0,
       [=] {
         std::vector<short> s(37), d(37);
         for (int i = 0; i < n; ++i) s[i] = static_cast<short>(i * 997 - 16000);
         H::nspwbCopy(s.data(), d.data(), n);
         return Vec(d.begin(), d.end());
       }},
      {"nspdbMpy1", 0, [=] { return scalar(-1.5, a, H::nspdbMpy1); }},
      {"nspdbMpy2", 0, [=] { return binary(a, b, H::nspdbMpy2); }},
      {"nspdbMpy3", 0, [=] { return ternary(a, b, H::nspdbMpy3); }},
      {"nspdbAdd1", 0, [=] { return scalar(0.75, a, H::nspdbAdd1); }},
      {"nspdbAdd2", 0, [=] { return binary(a, b, H::nspdbAdd2); }},
      {"nspdbAddScaledVector",
       1,
       [=] {
         Vec d = b;
         H::nspdbAddScaledVector(a.data(), 0.3, d.data(), n);
         return d;
       }},
      {"nspdbSub1", 0, [=] { return scalar(0.75, a, H::nspdbSub1); }},
      {"nspdbSub2", 0, [=] { return binary(a, b, H::nspdbSub2); }},
      {"nspdbSub3", 0, [=] { return ternary(a, b, H::nspdbSub3); }},
      {"nspdbExp1", 2, [=] { return unary(Operand(300.0, 0.0), H::nspdbExp1); }},
      {"nspdbLn1", 2, [=] { return unary(Operand(0.99, 1.0), H::nspdbLn1); }},
      {"nspdMean", 0, [=] { return Vec{H::nspdMean(a.data(), n)}; }},
      {"nspdStdDev", 0, [=] { return Vec{H::nspdStdDev(a.data(), n)}; }},
  };
}

TEST(FastKernelsTest, EveryElementwiseSlotAgreesWithThePlainSet) {
  Select(H::SplModePlain);
  std::vector<Vec> oracle;
  for (const SlotRow& row : ElementwiseRows()) oracle.push_back(row.run());
  Select(H::SplModeMKL);
  const std::vector<SlotRow> rows = ElementwiseRows();
  for (std::size_t r = 0; r < rows.size(); ++r) {
    SCOPED_TRACE(rows[r].name);
    ExpectClose(rows[r].run(), oracle[r], rows[r].ulps);
  }
}

// Known results pin the operand order the oracle comparison cannot see.
class KernelSetResultTest : public ::testing::TestWithParam<H::SplMode> {
 protected:
  void SetUp() override { Select(GetParam()); }
};

TEST_P(KernelSetResultTest, OperandOrderAndSmallCases) {
  Vec d = {10, 20, 30};
  const Vec s = {1, 2, 3};
  H::nspdbSub2(s.data(), d.data(), 3);
  EXPECT_EQ(d, (Vec{9, 18, 27}));
  H::nspdbAddScaledVector(s.data(), 2.0, d.data(), 3);
  EXPECT_EQ(d, (Vec{11, 22, 33}));
  H::nspdbSub3(s.data(), d.data(), d.data(), 3);
  EXPECT_EQ(d, (Vec{-10, -20, -30}));
  EXPECT_EQ(H::nspdMean(s.data(), 3), 2.0);
  EXPECT_EQ(H::nspdStdDev(s.data(), 3), 1.0);
  EXPECT_TRUE(std::isnan(H::nspdStdDev(s.data(), 1)));
  H::nspdbZero(d.data(), 0);  // nothing to do, nothing touched
  EXPECT_EQ(d[0], -10.0);
}

INSTANTIATE_TEST_SUITE_P(BothSets, KernelSetResultTest,
                         ::testing::Values(H::SplModePlain, H::SplModeMKL));

TEST(PlainKernelsTest, MatrixByVectorAndSort) {
  Select(H::SplModePlain);
  const Vec A = {1, 2, 99, 3, 4, 99};  // 2x2 with row stride 3
  const Vec x = {5, 6};
  Vec y(2);
  H::nspMatrixMultiplyByVector(A.data(), 2, 2, 3, x.data(), y.data());
  EXPECT_EQ(y, (Vec{17, 39}));
  const double nan = std::numeric_limits<double>::quiet_NaN();
  Vec v = {3, nan, 1, 2};
  H::nspSortVector(v.data(), 4);
  EXPECT_EQ((Vec{v[0], v[1], v[2]}), (Vec{1, 2, 3}));
  EXPECT_TRUE(std::isnan(v[3]));
}

// ---- Vector-math statuses ----------------------------------------------------

struct ExpLnImpl {
  const char* name;
  void (*exp)(double*, int);
  void (*ln)(double*, int);
};

// The installed pair and each vector width the processor can run.
std::vector<ExpLnImpl> ExpLnImpls() {
  Select(H::SplModeMKL);
  std::vector<ExpLnImpl> impls = {{"installed", H::nspdbExp1, H::nspdbLn1}};
  if (__builtin_cpu_supports("avx512f"))
    impls.push_back({"avx512", &detail::ExpInPlaceAvx512, &detail::LnInPlaceAvx512});
  if (__builtin_cpu_supports("avx"))
    impls.push_back({"avx", &detail::ExpInPlaceAvx, &detail::LnInPlaceAvx});
  return impls;
}

TEST(VectorMathStatusTest, FiniteExpOverflowThrowsWithTheFunctionName) {
  for (const ExpLnImpl& impl : ExpLnImpls()) {
    for (const int at : {0, 3, 7, 8, 12}) {  // in full vectors and in the tail
      SCOPED_TRACE(::testing::Message() << impl.name << ", overflow at " << at);
      Vec v(13, 1.0);
      v[at] = 710.0;
      try {
        impl.exp(v.data(), 13);
        ADD_FAILURE() << "no exception";
      } catch (const std::overflow_error& e) {
        EXPECT_STREQ(e.what(), "vdExp");
      }
    }
  }
}

TEST(VectorMathStatusTest, UnderflowInfinitiesAndNaNRaiseNothing) {
  ReportCapture capture;
  for (const ExpLnImpl& impl : ExpLnImpls()) {
    SCOPED_TRACE(impl.name);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Vec e = {-1000.0, kInf, -kInf, nan, 709.0};
    impl.exp(e.data(), 5);
    ExpectClose(e, {0.0, kInf, 0.0, nan, std::exp(709.0)}, 2);
    Vec l = {kInf, nan, 1.0};
    impl.ln(l.data(), 3);
    ExpectClose(l, {kInf, nan, 0.0}, 0);
  }
  EXPECT_TRUE(capture.reports().empty());
}

TEST(VectorMathStatusTest, LogOfZeroOrNegativeIsReportedNotThrown) {
  for (const ExpLnImpl& impl : ExpLnImpls()) {
    SCOPED_TRACE(impl.name);
    ReportCapture capture;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Vec v = {2.0, -1.0, 0.0, 1.0, 1.0, 1.0, 1.0, 1.0, -0.0, -kInf};
    impl.ln(v.data(), 10);
    ExpectClose(v, {std::log(2.0), nan, -kInf, 0, 0, 0, 0, 0, -kInf, nan}, 2);
    EXPECT_EQ(capture.reports(), std::vector<std::string>(4, "vdLn"));
  }
}

TEST(VectorMathStatusTest, SqrtOfANegativeIsReported) {
  Select(H::SplModeMKL);
  ReportCapture capture;
  Vec v = {4.0, -1.0, -0.0, -kInf};
  H::nspdbSqrt1(v.data(), 4);
  EXPECT_TRUE(std::isnan(v[1]));
  EXPECT_EQ(capture.reports(), std::vector<std::string>(2, "vdSqrt"));
  Vec many(1030, 4.0), roots(1030);  // negatives in three checking chunks
  many[0] = many[600] = many[1029] = -4.0;
  H::nspdbSqrt2(many.data(), roots.data(), 1030);
  EXPECT_EQ(capture.reports().size(), 5u);
  EXPECT_EQ(roots[1028], 2.0);
}

TEST(VectorMathStatusTest, ThePlainSetChecksNothing) {
  Select(H::SplModePlain);
  ReportCapture capture;
  Vec v = {710.0, -1.0};
  H::nspdbExp1(v.data(), 1);
  H::nspdbLn1(v.data() + 1, 1);
  EXPECT_EQ(v[0], kInf);
  EXPECT_TRUE(capture.reports().empty());
}

// ---- Scalar functions --------------------------------------------------------

TEST(ScalarFunctionTest, AgreeWithTheRunTimeLibrary) {
  Select(H::SplModeMKL);
  for (double x = -5.9; x <= 6.0; x += 0.37) {
    SCOPED_TRACE(x);
    EXPECT_NEAR(H::ERF(x), std::erf(x), 2 * kEps);
    EXPECT_NEAR(
        H::LnGamma(x), std::lgamma(x), 64 * kEps * std::max(1.0, std::fabs(std::lgamma(x))));
  }
  for (double p = 0.001; p < 1.0; p += 0.0371) {
    SCOPED_TRACE(p);
    // Phi(x) = erfc(-x / sqrt(2)) / 2 undoes the inverse.
    EXPECT_NEAR(0.5 * std::erfc(-H::PhiInverse(p) / std::sqrt(2.0)), p, 8 * kEps);
  }
  EXPECT_NEAR(H::PhiInverse(0.975), 1.959963984540054, 4 * kEps);
}

TEST(ScalarFunctionTest, PolesAndDomainErrorsAreReportedOverflowThrown) {
  Select(H::SplModeMKL);
  ReportCapture capture;
  EXPECT_EQ(H::PhiInverse(0.0), -kInf);
  EXPECT_EQ(H::PhiInverse(1.0), kInf);
  EXPECT_TRUE(std::isnan(H::PhiInverse(1.5)));
  EXPECT_EQ(H::LnGamma(0.0), kInf);
  EXPECT_EQ(H::LnGamma(-2.0), kInf);
  EXPECT_EQ(capture.reports(),
            (std::vector<std::string>{
                "vdCdfNormInv", "vdCdfNormInv", "vdCdfNormInv", "vdLGamma", "vdLGamma"}));
  try {
    H::LnGamma(1e306);
    ADD_FAILURE() << "no exception";
  } catch (const std::overflow_error& e) {
    EXPECT_STREQ(e.what(), "vdLGamma");
  }
}

}  // namespace
}  // namespace qvsysbase
