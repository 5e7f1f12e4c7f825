// The kernel-library set against the plain set as an oracle, the vector-math
// statuses, and the scalar functions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "ExpectThrow.h"
#include "numerics/KernelTestSupport.h"
#include "numerics/VectorMath.h"
#include "qvsysbase/IntelSPLHandler.h"

namespace qvsysbase {
namespace {

using H = IntelSPLHandler;
using ::testing::Pointwise;
using testing_support::ExpectThrowText;
using testing_support::ReportCapture;
using testing_support::Select;
using Vec = std::vector<double>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();

// Equal within `ulps` units of the larger magnitude, and of 1.0 for results
// near zero that come from cancelling terms of order one; NaN matches NaN,
// and infinities match only themselves.
MATCHER_P(WithinUlps, ulps, "") {
  const auto [a, e] = arg;
  if (std::isnan(e) || std::isinf(e)) return std::isnan(e) ? std::isnan(a) : a == e;
  return std::fabs(a - e) <= ulps * kEps * std::max({std::fabs(a), std::fabs(e), 1.0});
}

// n values spanning signs and scales.
Vec Operand(int n, double scale, double shift) {
  Vec v(n);
  for (int i = 0; i < n; ++i) v[i] = scale * std::sin(1.0 + 0.7 * i) + shift;
  return v;
}

// What run() hands a slot for an input: a vector by its data, a value as it is.
template <class T>
const T* In(const std::vector<T>& v) {
  return v.data();
}
double In(double value) { return value; }

struct SlotResult {
  const char* name;
  double ulps;  // documented accuracy of the fast routine against the plain one
  Vec result;
};

// The operands of every elementwise slot, all of length n, and the scalar
// argument of the slots that take one.
struct Operands {
  int n;
  Vec a, b, pos, expArg, lnArg, large;
  double scalar;
};

// n values spanning signs and scales.
Operands Ordinary(int n) {
  return {n,
          Operand(n, 3.0, 0.5),
          Operand(n, -2.0, 0.25),
          Operand(n, 4.0, 5.0),
          Operand(n, 300.0, 0.0),
          Operand(n, 0.99, 1.0),
          Operand(n, 16000.0, 0.0),
          -1.5};
}

// Every elementwise slot, in whichever set is installed.
std::vector<SlotResult> ElementwiseResults(const Operands& op) {
  const int n = op.n;
  const Vec &a = op.a, &b = op.b;
  const std::vector<short> shorts(op.large.begin(), op.large.end());
  const std::vector<int> ints(op.large.begin(), op.large.end());
  // fn(inputs..., destination, n) on a copy of `dst`, returned as doubles.
  auto run = [n](auto dst, auto fn, const auto&... inputs) {
    fn(In(inputs)..., dst.data(), n);
    return Vec(dst.begin(), dst.end());
  };
  const double scalar = op.scalar;
  auto addScaled = [scalar](const double* s, double* d, int k) {
    H::nspdbAddScaledVector(s, scalar, d, k);
  };
  // a as a (n / 4) x 3 matrix with row stride 4, times the start of b; and a
  // as one column times the scalar.
  auto matrixByVector = [n](const double* A, const double* x, double* y, int) {
    H::nspMatrixMultiplyByVector(A, n / 4, 3, 4, x, y);
  };
  auto columnByScalar = [scalar](const double* A, double* y, int k) {
    H::nspMatrixMultiplyByVector(A, k, 1, 1, &scalar, y);
  };
  // One product at a time, so that a NaN in one pair does not hide the others.
  auto pairDots = [](const double* x, const double* y, double* d, int k) {
    for (int i = 0; i < k; ++i) d[i] = H::nspdDotProd(x + i, y + i, 1);
  };
  return {
      {"nspdbSet", 0, run(a, H::nspdbSet, scalar)},
      {"nspdbZero", 0, run(a, H::nspdbZero)},
      {"nspwbZero", 0, run(shorts, H::nspwbZero)},
      {"nspdbIntToFloat", 0, run(Vec(n), H::nspdbIntToFloat, ints)},
      {"nspdbAbs1", 0, run(a, H::nspdbAbs1)},
      {"nspdbAbs2", 0, run(b, H::nspdbAbs2, a)},
      {"nspdDotProd", 4.0 * n, {H::nspdDotProd(a.data(), b.data(), n)}},
      {"nspdDotProd pairs", 0, run(Vec(n), pairDots, a, b)},
      {"nspMatrixMultiplyByVector", 4, run(Vec(n / 4), matrixByVector, a, b)},
      {"nspMatrixMultiplyByVector column", 0, run(Vec(n), columnByScalar, a)},
      {"nspdbSqrt1", 0, run(op.pos, H::nspdbSqrt1)},
      {"nspdbSqrt2", 0, run(b, H::nspdbSqrt2, op.pos)},
      {"nspdbCopy", 0, run(b, H::nspdbCopy, a)},
      {"nspwbCopy", 0, run(std::vector<short>(n), H::nspwbCopy, shorts)},
      {"nspdbMpy1", 0, run(a, H::nspdbMpy1, scalar)},
      {"nspdbMpy2", 0, run(b, H::nspdbMpy2, a)},
      {"nspdbMpy3", 0, run(Vec(n), H::nspdbMpy3, a, b)},
      {"nspdbAdd1", 0, run(a, H::nspdbAdd1, scalar)},
      {"nspdbAdd2", 0, run(b, H::nspdbAdd2, a)},
      {"nspdbAddScaledVector", 1, run(b, addScaled, a)},
      {"nspdbSub1", 0, run(a, H::nspdbSub1, scalar)},
      {"nspdbSub2", 0, run(b, H::nspdbSub2, a)},
      {"nspdbSub3", 0, run(Vec(n), H::nspdbSub3, a, b)},
      {"nspdbExp1", 2, run(op.expArg, H::nspdbExp1)},
      {"nspdbLn1", 2, run(op.lnArg, H::nspdbLn1)},
      {"nspSortVector", 0, run(a, H::nspSortVector)},
      {"nspdMean", 0, {H::nspdMean(a.data(), n)}},
      {"nspdStdDev", 0, {H::nspdStdDev(a.data(), n)}},
  };
}

// 37 is four full AVX-512 vectors (nine AVX ones) and a tail; 3 is a tail alone.
TEST(FastKernelsTest, EveryElementwiseSlotAgreesWithThePlainSet) {
  for (const int n : {3, 37}) {
    Select(H::SplModePlain);
    const std::vector<SlotResult> oracle = ElementwiseResults(Ordinary(n));
    Select(H::SplModeMKL);
    const std::vector<SlotResult> fast = ElementwiseResults(Ordinary(n));
    for (std::size_t r = 0; r < fast.size(); ++r) {
      SCOPED_TRACE(::testing::Message() << fast[r].name << ", n " << n);
      EXPECT_THAT(fast[r].result, Pointwise(WithinUlps(fast[r].ulps), oracle[r].result));
    }
  }
}

// The same value bit for bit, any NaN matching any NaN; or, where the order of
// equal elements is free (the sort), equal as numbers.
MATCHER_P(SameIeeeValue, zeroSignFree, "") {
  const auto [a, e] = arg;
  if (std::isnan(a) || std::isnan(e)) return std::isnan(a) && std::isnan(e);
  return zeroSignFree ? a == e : std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(e);
}

// Every pair of the special values, a[i] and b[i] running through all of them;
// exp and log get the arguments whose results are exact, so that the two sets
// must agree bit for bit. Every product of two of these values is exact, so a
// fused multiply-add inside BLAS rounds as the plain loop does.
Operands Specials(double scalar) {
  const Vec special = {kNaN, -kNaN, kInf, -kInf, -0.0, 0.0, 1.0, -1.5, 0.25};
  const Vec expExact = {kNaN, -kNaN, kInf, -kInf, -0.0, 0.0, -800.0};
  const Vec lnExact = {kNaN, -kNaN, kInf, -kInf, -0.0, 0.0, 1.0, -1.5};
  const std::size_t size = special.size();
  Operands op{int(size * size), {}, {}, {}, {}, {}, Operand(int(size * size), 100.0, 0.0), scalar};
  for (std::size_t i = 0; i < size * size; ++i) {
    op.a.push_back(special[i / size]);
    op.b.push_back(special[i % size]);
    op.expArg.push_back(expExact[i % expExact.size()]);
    op.lnArg.push_back(lnExact[i % lnExact.size()]);
  }
  op.pos = op.b;
  return op;
}

// NaN, infinities and signed zeros come out of both sets as IEEE arithmetic
// gives them: no shortcut of the kernel library may drop a NaN or a sign.
TEST(FastKernelsTest, SpecialValuesAgreeBitForBitWithThePlainSet) {
  for (const double scalar : {0.0, -0.0, 1.0, -1.5, kNaN, kInf, -kInf}) {
    ReportCapture capture;  // the fast log reports its domain errors
    Select(H::SplModePlain);
    const std::vector<SlotResult> oracle = ElementwiseResults(Specials(scalar));
    Select(H::SplModeMKL);
    const std::vector<SlotResult> fast = ElementwiseResults(Specials(scalar));
    for (std::size_t r = 0; r < fast.size(); ++r) {
      SCOPED_TRACE(::testing::Message() << fast[r].name << ", scalar " << scalar);
      const bool zeroSignFree = std::string(fast[r].name) == "nspSortVector";
      EXPECT_THAT(fast[r].result, Pointwise(SameIeeeValue(zeroSignFree), oracle[r].result));
    }
  }
}

// Ascending with every NaN last, in both sets; a NaN in the input never breaks
// the order of the numbers (the plain "<" is no ordering once NaN is present).
TEST(FastKernelsTest, SortPutsEveryNaNLast) {
  std::mt19937 random(20261123);  // past 20 elements the sorts switch to quicksort
  Vec big(1000);
  for (double& v : big) v = std::uniform_real_distribution<double>(-1e3, 1e3)(random);
  for (std::size_t i = 0; i < big.size(); i += 7) big[i] = i % 2 ? kNaN : -kNaN;
  big[3] = kInf, big[5] = -kInf;
  for (const H::SplMode mode : {H::SplModePlain, H::SplModeMKL}) {
    Select(mode);
    for (Vec v : {Vec{3, kNaN, 1, 2, -kInf}, Vec{kNaN}, Vec{kNaN, kNaN, 1}, Vec{}, big}) {
      SCOPED_TRACE(::testing::Message() << "mode " << mode << ", size " << v.size());
      Vec numbers;
      std::copy_if(
          v.begin(), v.end(), std::back_inserter(numbers), [](double x) { return !std::isnan(x); });
      std::sort(numbers.begin(), numbers.end());
      H::nspSortVector(v.data(), static_cast<int>(v.size()));
      EXPECT_EQ(Vec(v.begin(), v.begin() + numbers.size()), numbers);
      EXPECT_TRUE(
          std::all_of(v.begin() + numbers.size(), v.end(), [](double x) { return std::isnan(x); }));
    }
  }
}

// Known results pin the operand order that the comparison of the sets cannot see.
TEST(FastKernelsTest, PlainSetOperandOrder) {
  Select(H::SplModePlain);
  Vec d = {10, 20, 30};
  const Vec s = {1, 2, 3};
  H::nspdbSub2(s.data(), d.data(), 3);
  EXPECT_EQ(d, (Vec{9, 18, 27}));
  H::nspdbAddScaledVector(s.data(), 2.0, d.data(), 3);
  EXPECT_EQ(d, (Vec{11, 22, 33}));
  H::nspdbSub3(s.data(), d.data(), d.data(), 3);
  EXPECT_EQ(d, (Vec{-10, -20, -30}));
  EXPECT_EQ(H::nspdStdDev(s.data(), 3), 1.0);
}

// ---- Vector-math statuses ----------------------------------------------------

struct VectorMathImpl {
  const char* name;
  void (*exp)(double*, int);
  void (*ln)(double*, int);
  void (*sqrt)(const double*, double*, int);
};

// The installed set and each vector width the processor can run.
std::vector<VectorMathImpl> VectorMathImpls() {
  Select(H::SplModeMKL);
  std::vector<VectorMathImpl> impls = {
      {"installed", H::nspdbExp1, H::nspdbLn1, [](const double* s, double* d, int n) {
         H::nspdbSqrt2(s, d, n);
       }}};
  if (__builtin_cpu_supports("avx512f"))
    impls.push_back(
        {"avx512", &detail::ExpInPlaceAvx512, &detail::LnInPlaceAvx512, &detail::SqrtAvx512});
  if (__builtin_cpu_supports("avx"))
    impls.push_back({"avx", &detail::ExpInPlaceAvx, &detail::LnInPlaceAvx, &detail::SqrtAvx});
  return impls;
}

TEST(VectorMathStatusTest, FiniteExpOverflowThrowsWithTheFunctionName) {
  for (const VectorMathImpl& impl : VectorMathImpls()) {
    for (const int at : {0, 3, 7, 8, 12}) {  // in full vectors and in the tail
      SCOPED_TRACE(::testing::Message() << impl.name << ", overflow at " << at);
      Vec v(13, 1.0);
      v[at] = 710.0;
      ExpectThrowText<std::overflow_error>([&] { impl.exp(v.data(), 13); }, "vdExp");
    }
  }
}

// Underflow, infinities and NaN raise nothing; a log of zero or a negative is
// reported, not thrown.
TEST(VectorMathStatusTest, OnlyLogDomainErrorsAreReported) {
  for (const VectorMathImpl& impl : VectorMathImpls()) {
    SCOPED_TRACE(impl.name);
    ReportCapture capture;
    Vec e = {-1000.0, kInf, -kInf, kNaN, 709.0};
    impl.exp(e.data(), 5);
    EXPECT_THAT(e, Pointwise(WithinUlps(2), Vec{0.0, kInf, 0.0, kNaN, std::exp(709.0)}));
    Vec l = {kInf, kNaN, 1.0};
    impl.ln(l.data(), 3);
    EXPECT_THAT(l, Pointwise(WithinUlps(0), Vec{kInf, kNaN, 0.0}));
    EXPECT_TRUE(capture.reports().empty());
    Vec v = {2.0, -1.0, 0.0, 1.0, 1.0, 1.0, 1.0, 1.0, -0.0, -kInf};
    impl.ln(v.data(), 10);
    EXPECT_THAT(
        v, Pointwise(WithinUlps(2), Vec{std::log(2.0), kNaN, -kInf, 0, 0, 0, 0, 0, -kInf, kNaN}));
    EXPECT_EQ(capture.reports(), std::vector<std::string>(4, "vdLn"));
  }
}

// A negative argument of sqrt is reported once, in or out of place, in full
// vectors and in the tail; -0.0 and NaN are not errors.
TEST(VectorMathStatusTest, SqrtReportsEachNegativeArgument) {
  for (const VectorMathImpl& impl : VectorMathImpls()) {
    SCOPED_TRACE(impl.name);
    ReportCapture capture;
    Vec v = {4.0, -1.0, -0.0, kNaN, 9.0, 1.0, 1.0, 1.0, 16.0, 2.25, -kInf};
    Vec out(v.size());
    impl.sqrt(v.data(), out.data(), 11);
    impl.sqrt(v.data(), v.data(), 11);
    const Vec expected = {2.0, kNaN, -0.0, kNaN, 3.0, 1, 1, 1, 4.0, 1.5, kNaN};
    EXPECT_THAT(out, Pointwise(WithinUlps(0), expected));
    EXPECT_THAT(v, Pointwise(WithinUlps(0), expected));
    EXPECT_EQ(capture.reports(), std::vector<std::string>(4, "vdSqrt"));
  }
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
}

}  // namespace
}  // namespace qvsysbase
