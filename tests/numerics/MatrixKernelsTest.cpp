#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "numerics/MatrixKernels.h"
#include "qvsysbase/KernelErrorReport.h"

namespace qvsysbase::detail {
namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();
// Forward errors are checked against kSlack·eps·κ (κ in the infinity norm):
// the size a backward-stable kernel can produce, far below what a wrong
// triangle or a missing transpose gives.
constexpr double kSlack = 4.0;
// Fills the triangle a kernel must neither read (it would poison the result)
// nor write (the NaN would be gone).
constexpr double kUnused = std::numeric_limits<double>::quiet_NaN();
// Fills the gap between a row's width and its stride: large enough to show up
// in any result that reads it, and checked for being left alone.
constexpr double kPadding = 1.0e6 + 0.125;

// A row-major matrix with row stride ld, one element longer than its rows need
// to catch overruns; every element starts as padding.
struct Matrix {
  Matrix(int r, int c, int stride) : rows(r), cols(c), ld(stride), v(r * stride + 1, kPadding) {}
  template <class F>
  Matrix(int r, int c, int stride, F entry) : Matrix(r, c, stride) {
    for (int i = 0; i < r; ++i)
      for (int j = 0; j < c; ++j) (*this)(i, j) = entry(i, j);
  }
  double& operator()(int r, int c) { return v[r * ld + c]; }
  double operator()(int r, int c) const { return v[r * ld + c]; }
  // Padding untouched and, if upperUnused, the strict upper triangle still NaN.
  bool Intact(bool upperUnused) const {
    for (int r = 0; r < rows; ++r)
      for (int c = 0; c < ld; ++c)
        if (c >= cols ? (*this)(r, c) != kPadding
                      : upperUnused && c > r && !std::isnan((*this)(r, c)))
          return false;
    return v.back() == kPadding;
  }
  int rows, cols, ld;
  std::vector<double> v;
};

long long Binomial(int n, int k) {
  long long b = 1;
  for (int i = 1; i <= k; ++i) b = b * (n - k + i) / i;
  return b;
}
// The exact integer inverse of the Hilbert matrix h(r,c) = 1/(r+c+1).
double HilbertInverse(int n, int r, int c) {
  const long long b = Binomial(r + c, r);
  const double v =
      double((r + c + 1) * Binomial(n + r, n - c - 1) * Binomial(n + c, n - r - 1) * b * b);
  return (r + c) % 2 == 0 ? v : -v;
}

// κ∞ = ‖A‖∞·‖A⁻¹‖∞ from entry functions of the full matrix and its inverse.
template <class A, class Inv>
double Condition(int n, A a, Inv inv) {
  double norm = 0.0, invNorm = 0.0;
  for (int r = 0; r < n; ++r) {
    double s = 0.0, t = 0.0;
    for (int c = 0; c < n; ++c) s += std::abs(a(r, c)), t += std::abs(inv(r, c));
    norm = std::max(norm, s), invNorm = std::max(invNorm, t);
  }
  return norm * invNorm;
}

// Inverse of a lower-triangular matrix by forward substitution in long double:
// the oracle for the triangular kernels and their condition number.
std::vector<std::vector<long double>> LowerInverse(const Matrix& l) {
  const int n = l.rows;
  std::vector<std::vector<long double>> x(n, std::vector<long double>(n, 0.0L));
  for (int col = 0; col < n; ++col)
    for (int r = col; r < n; ++r) {
      long double s = r == col ? 1.0L : 0.0L;
      for (int j = col; j < r; ++j) s -= l(r, j) * x[j][col];
      x[r][col] = s / l(r, r);
    }
  return x;
}

// C = A·Bᵀ, and y = A·x with x the first row of B; small integers and halves
// keep every sum exact.
TEST(MatrixKernelsTest, MultipliesUseEveryRowStride) {
  for (const auto& [m, k, n, lda, ldb, ldc] :
       {std::array{3, 4, 2, 6, 5, 3}, {1, 5, 4, 5, 7, 6}, {4, 1, 3, 2, 1, 4}}) {
    SCOPED_TRACE(testing::Message() << "m=" << m << " k=" << k << " n=" << n);
    const Matrix a(m, k, lda, [](int r, int j) { return 1 + r + 10 * j; });
    const Matrix b(n, k, ldb, [](int r, int j) { return 0.5 * r - j * j + 3; });
    Matrix c(m, n, ldc);
    std::vector<double> y(m + 1, kPadding);
    mklMatrixMultiply(a.v.data(), m, k, lda, b.v.data(), n, ldb, c.v.data(), ldc);
    mklMatrixMultiplyByVector(a.v.data(), m, k, lda, b.v.data(), y.data());
    for (int r = 0; r < m; ++r)
      for (int p = 0; p < n; ++p) {
        double s = 0.0;
        for (int j = 0; j < k; ++j) s += a(r, j) * b(p, j);
        EXPECT_EQ(c(r, p), s) << r << "," << p;
      }
    for (int r = 0; r < m; ++r) EXPECT_EQ(y[r], c(r, 0)) << r;  // overwritten, not added to
    EXPECT_TRUE(c.Intact(false));
    EXPECT_EQ(y[m], kPadding);
  }
}

TEST(MatrixKernelsTest, NotPositiveDefiniteIsAResultNotAnError) {
  // The lower triangle row by row, and the order of the first minor that is not.
  const std::tuple<int, std::vector<double>, int> cases[] = {
      // clang-format off
      {3, {1, 2, 1, 0, 0, 1}, 2},  {2, {-1, 0, 1}, 1},
      {3, {4, 2, 2, 2, 1, 1}, 3},  // singular
      // clang-format on
  };
  for (const auto& [n, entries, expectedInfo] : cases) {
    SCOPED_TRACE(testing::Message() << "n=" << n << " info " << expectedInfo);
    int i = 0, info = 0;
    const auto& lower = entries;
    Matrix a(n, n, n + 1, [&](int r, int c) { return c <= r ? lower[i++] : kUnused; });
    Matrix b = a;
    EXPECT_FALSE(mklCholDcInplace(a.v.data(), n, a.ld, &info));
    EXPECT_EQ(info, expectedInfo);
    EXPECT_FALSE(mklCholInverseInplace(b.v.data(), n, b.ld));
    EXPECT_TRUE(a.Intact(true) && b.Intact(true));
  }
}

// The inverse and a solve with a chosen solution, x growing with i.
TEST(MatrixKernelsTest, HilbertInverseAndSolveStayWithinTheConditionBound) {
  for (int n : {1, 4, 8, 10}) {
    SCOPED_TRACE(testing::Message() << "n=" << n);
    const auto hilbert = [](int r, int c) { return 1.0 / (r + c + 1); };
    const auto exact = [n](int r, int c) { return HilbertInverse(n, r, c); };
    const double kappa = Condition(n, hilbert, exact);
    const Matrix h(n, n, n + 3, [&](int r, int c) { return c <= r ? hilbert(r, c) : kUnused; });
    Matrix inv = h;
    ASSERT_TRUE(mklCholInverseInplace(inv.v.data(), n, inv.ld));
    double largest = 0.0;
    for (int r = 0; r < n; ++r)
      largest = std::max(largest, std::abs(exact(r, r)));  // SPD: the largest is diagonal
    for (int r = 0; r < n; ++r)
      for (int c = 0; c <= r; ++c)
        EXPECT_NEAR(inv(r, c), exact(r, c), kSlack * kEps * kappa * largest);
    EXPECT_TRUE(inv.Intact(true));  // the inverse is not mirrored

    const int nrhs = 2;  // one right-hand side per row
    const Matrix x(nrhs, n, n, [](int j, int i) { return 1.0 + i * (j + 1) - 0.5 * j; });
    Matrix b(nrhs, n, n + 2, [&](int j, int i) {
      long double s = 0.0L;
      for (int c = 0; c < n; ++c) s += (long double)x(j, c) * hilbert(i, c);
      return double(s);
    });
    Matrix factor = h;
    int info = 0;
    ASSERT_TRUE(mklCholDcInplace(factor.v.data(), n, factor.ld, &info));
    mklSolveLinEquatSymmetr(factor.v.data(), n, factor.ld, b.v.data(), nrhs, b.ld);
    for (int j = 0; j < nrhs; ++j)
      for (int i = 0; i < n; ++i)
        EXPECT_NEAR(b(j, i), x(j, i), kSlack * kEps * kappa * std::abs(x(j, n - 1)))
            << j << "," << i;
    EXPECT_TRUE(b.Intact(false));
  }
}

// The Cholesky factor, and the inverse, solve (one right-hand side per row) and
// Lᵀ·L of a factor: all on the row-major lower triangle.
TEST(MatrixKernelsTest, FactorAndTriangularKernelsUseTheRowMajorLowerTriangle) {
  const int n = 7, nrhs = 3;
  // A dominant diagonal: well conditioned, and not symmetric in any sense, so a
  // transposed or mirrored use gives another answer.
  const Matrix l(n, n, n + 1, [](int r, int c) {
    return c < r ? 0.25 * (r - 2 * c) + 0.5 : c == r ? 2.0 + r : kUnused;
  });
  const auto oracle = LowerInverse(l);
  const auto full = [&](int r, int c) { return c <= r ? l(r, c) : 0.0; };
  const double kappa = Condition(n, full, [&](int r, int c) { return double(oracle[r][c]); });
  Matrix a(n, n, n + 2, [&](int r, int c) {  // the lower triangle of A = L·Lᵀ, exact
    double s = c > r ? kUnused : 0.0;
    for (int j = 0; j <= c && c <= r; ++j) s += l(r, j) * l(c, j);
    return s;
  });
  int info = -99;
  ASSERT_TRUE(mklCholDcInplace(a.v.data(), n, a.ld, &info));
  EXPECT_EQ(info, 0);
  for (int r = 0; r < n; ++r)
    for (int c = 0; c <= r; ++c)
      EXPECT_NEAR(a(r, c), l(r, c), kSlack * kEps * kappa * l(n - 1, n - 1)) << r << "," << c;
  EXPECT_TRUE(a.Intact(true));

  Matrix inv = l;
  mklInverseTriangularInplace(inv.v.data(), n, inv.ld);
  for (int r = 0; r < n; ++r)
    for (int c = 0; c <= r; ++c)
      EXPECT_NEAR(inv(r, c), double(oracle[r][c]), kSlack * kEps * kappa) << r << c;
  EXPECT_TRUE(inv.Intact(true));

  Matrix b(nrhs, n, n + 3, [](int j, int i) { return (i % 3) - 1.5 * j + 0.25 * i; });
  const Matrix rhs = b;
  mklSolveLinEquatTriangular(l.v.data(), n, l.ld, b.v.data(), nrhs, b.ld);
  for (int j = 0; j < nrhs; ++j)
    for (int i = 0; i < n; ++i) {
      long double x = 0.0L;
      for (int c = 0; c <= i; ++c) x += oracle[i][c] * rhs(j, c);
      EXPECT_NEAR(b(j, i), double(x), kSlack * kEps * kappa * 4.0) << j << "," << i;  // |b| < 4
    }
  EXPECT_TRUE(b.Intact(false));

  Matrix p = l;
  mklProductTrMatrTranspByTrMatrInplace(p.v.data(), n, p.ld);
  for (int r = 0; r < n; ++r)
    for (int c = 0; c <= r; ++c) {
      double s = 0.0;  // (Lᵀ·L)(r,c) = sum over j >= r of L(j,r)·L(j,c); quarters, exact
      for (int j = r; j < n; ++j) s += l(j, r) * l(j, c);
      EXPECT_EQ(p(r, c), s) << r << "," << c;
    }
  EXPECT_TRUE(p.Intact(true));
}

TEST(MatrixKernelsTest, FailuresThrowTheirFixedTexts) {
  double m[4] = {1.0, kUnused, 0.0, 0.0};  // 2x2 lower triangle with a zero pivot
  double b[2] = {1.0, 1.0};
  // Illegal arguments of every kernel are refused through the slots too
  // (KernelArgumentsTest); here the singular matrices and what only this
  // level reaches.
  const std::pair<std::function<void()>, const char*> cases[] = {
      // A singular matrix and an illegal argument give one text.
      {[&] { mklInverseTriangularInplace(m, 2, 2); },
       "mklInverseTriangularInplace()/dtrtri() - source matrix is singular"},
      {[&] { mklInverseTriangularInplace(m, -1, 1); },
       "mklInverseTriangularInplace()/dtrtri() - source matrix is singular"},
      {[&] { mklSolveLinEquatTriangular(m, 2, 2, b, 1, 2); },
       "mklSolveLinEquatTriangular()/dtrtrs() - source matrix is singular"},
      {[&] { mklSolveLinEquatSymmetr(m, 2, 2, b, 1, 1); },
       "mklSolveLinEquatSymmetr()/dpotrs() - source matrix is singular"},
  };
  for (const auto& [call, text] : cases) {
    SCOPED_TRACE(text);
    try {
      call();
      ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
      EXPECT_STREQ(e.what(), text);
    }
  }
}

TEST(MatrixKernelsTest, SortAscendsAndReportsIllegalLength) {
  static std::vector<std::string> reports;
  ScopedKernelErrorReport capture(+[](const std::string& message) { reports.push_back(message); });

  std::mt19937 random(20240501);  // past 20 elements dlasrt switches to quicksort
  std::vector<double> big(1000);
  for (double& v : big) v = std::uniform_real_distribution<double>(-1e3, 1e3)(random);
  for (std::vector<double> v :
       {std::vector<double>{}, {2, 3, 2, 1, 2}, {-0.5, 3, -7, 1e300, -1e-300}, big}) {
    SCOPED_TRACE(testing::Message() << "size " << v.size());
    std::vector<double> expected = v;
    std::sort(expected.begin(), expected.end());
    mklSortVector(v.data(), static_cast<int>(v.size()));
    EXPECT_EQ(v, expected);
  }
  EXPECT_TRUE(reports.empty());

  double untouched[2] = {2.0, 1.0};
  testing::internal::CaptureStderr();
  mklSortVector(untouched, -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");  // LAPACK was not asked
  EXPECT_EQ(reports, std::vector<std::string>{"dlasrt - illegal element at-2"});
  EXPECT_EQ(untouched[0], 2.0);
}

}  // namespace
}  // namespace qvsysbase::detail
