#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
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

// A row-major matrix with row stride ld; every element starts as padding.
struct Matrix {
  Matrix(int r, int c, int stride) : rows(r), cols(c), ld(stride), v(r * stride + 1, kPadding) {}
  double& operator()(int r, int c) { return v[r * ld + c]; }
  double operator()(int r, int c) const { return v[r * ld + c]; }
  bool PaddingIntact() const {
    for (int r = 0; r < rows; ++r)
      for (int c = cols; c < ld; ++c)
        if ((*this)(r, c) != kPadding) return false;
    return v.back() == kPadding;
  }
  bool UpperUnusedIntact() const {
    for (int r = 0; r < rows; ++r)
      for (int c = r + 1; c < cols; ++c)
        if (!std::isnan((*this)(r, c))) return false;
    return true;
  }
  int rows, cols, ld;
  std::vector<double> v;  // one more element than the rows need, to catch overruns
};

// A lower-triangular factor with a dominant diagonal, well conditioned and not
// symmetric in any sense, so a transposed or mirrored use gives another answer.
Matrix LowerFactor(int n, int ld) {
  Matrix l(n, n, ld);
  for (int r = 0; r < n; ++r) {
    for (int c = 0; c < r; ++c) l(r, c) = 0.25 * (r - 2 * c) + 0.5;
    l(r, r) = 2.0 + r;
    for (int c = r + 1; c < n; ++c) l(r, c) = kUnused;
  }
  return l;
}

// The lower triangle of the symmetric A = L·Lᵀ, exact for LowerFactor's entries.
Matrix SpdFromFactor(const Matrix& l) {
  Matrix a(l.rows, l.cols, l.ld);
  for (int r = 0; r < l.rows; ++r) {
    for (int c = 0; c <= r; ++c) {
      double s = 0.0;
      for (int j = 0; j <= c; ++j) s += l(r, j) * l(c, j);
      a(r, c) = s;
    }
    for (int c = r + 1; c < l.cols; ++c) a(r, c) = kUnused;
  }
  return a;
}

std::int64_t Binomial(int n, int k) {
  std::int64_t b = 1;
  for (int i = 1; i <= k; ++i) b = b * (n - k + i) / i;
  return b;
}

// Hilbert matrix h(i,j) = 1/(i+j+1), lower triangle only, and its exact integer inverse.
Matrix Hilbert(int n, int ld) {
  Matrix h(n, n, ld);
  for (int r = 0; r < n; ++r)
    for (int c = 0; c < n; ++c) h(r, c) = c <= r ? 1.0 / (r + c + 1) : kUnused;
  return h;
}
double HilbertInverse(int n, int r, int c) {
  const int i = r + 1, j = c + 1;
  const std::int64_t b = Binomial(i + j - 2, i - 1);
  const double v = static_cast<double>((i + j - 1) * Binomial(n + i - 1, n - j) *
                                       Binomial(n + j - 1, n - i) * b * b);
  return (i + j) % 2 == 0 ? v : -v;
}
// Condition number in the infinity norm, from the exact inverse.
double HilbertCondition(int n) {
  double norm = 0.0, invNorm = 0.0;
  for (int r = 0; r < n; ++r) {
    double s = 0.0, t = 0.0;
    for (int c = 0; c < n; ++c) s += 1.0 / (r + c + 1), t += std::abs(HilbertInverse(n, r, c));
    norm = std::max(norm, s), invNorm = std::max(invNorm, t);
  }
  return norm * invNorm;
}

// Inverse of a lower-triangular matrix by forward substitution in long double,
// the oracle and the condition estimate for the triangular kernels.
std::vector<std::vector<long double>> NaiveLowerInverse(const Matrix& l) {
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
double LowerCondition(const Matrix& l) {
  const auto inv = NaiveLowerInverse(l);
  double norm = 0.0, invNorm = 0.0;
  for (int r = 0; r < l.rows; ++r) {
    double s = 0.0, t = 0.0;
    for (int c = 0; c <= r; ++c) s += std::abs(l(r, c)), t += std::abs(double(inv[r][c]));
    norm = std::max(norm, s), invNorm = std::max(invNorm, t);
  }
  return norm * invNorm;
}

TEST(MatrixKernelsTest, MatrixMultiplyIsAByBTransposedWithStrides) {
  struct Case {
    int m, k, n, lda, ldb, ldc;
  };
  for (const Case& t : {Case{3, 4, 2, 6, 5, 3},
                        Case{1, 5, 4, 5, 7, 6},
                        Case{4, 1, 3, 2, 1, 4},
                        Case{5, 5, 5, 5, 5, 5}}) {
    SCOPED_TRACE(testing::Message() << "m=" << t.m << " k=" << t.k << " n=" << t.n);
    Matrix a(t.m, t.k, t.lda), b(t.n, t.k, t.ldb), c(t.m, t.n, t.ldc);
    for (int r = 0; r < t.m; ++r)
      for (int j = 0; j < t.k; ++j) a(r, j) = 1 + r + 10 * j;
    for (int r = 0; r < t.n; ++r)
      for (int j = 0; j < t.k; ++j) b(r, j) = 0.5 * r - j * j;
    mklMatrixMultiply(a.v.data(), t.m, t.k, t.lda, b.v.data(), t.n, t.ldb, c.v.data(), t.ldc);
    for (int r = 0; r < t.m; ++r)
      for (int p = 0; p < t.n; ++p) {
        double s = 0.0;  // small integers and halves: every sum is exact
        for (int j = 0; j < t.k; ++j) s += a(r, j) * b(p, j);
        EXPECT_EQ(c(r, p), s) << r << "," << p;
      }
    EXPECT_TRUE(c.PaddingIntact());
  }
}

TEST(MatrixKernelsTest, MatrixMultiplyByIdentityReproducesA) {
  const int m = 3, k = 4;
  Matrix a(m, k, 6), id(k, k, 5), c(m, k, 7);
  for (int r = 0; r < m; ++r)
    for (int j = 0; j < k; ++j) a(r, j) = std::sqrt(2.0 + r * k + j);
  for (int r = 0; r < k; ++r)
    for (int j = 0; j < k; ++j) id(r, j) = r == j ? 1.0 : 0.0;
  mklMatrixMultiply(a.v.data(), m, k, a.ld, id.v.data(), k, id.ld, c.v.data(), c.ld);
  for (int r = 0; r < m; ++r)
    for (int j = 0; j < k; ++j) EXPECT_EQ(c(r, j), a(r, j));
  EXPECT_TRUE(c.PaddingIntact());
}

TEST(MatrixKernelsTest, MatrixMultiplyByVectorUsesRowStride) {
  struct Case {
    int rows, cols, lda;
  };
  for (const Case& t : {Case{3, 4, 7}, Case{1, 5, 5}, Case{4, 1, 3}, Case{6, 6, 9}}) {
    SCOPED_TRACE(testing::Message() << "rows=" << t.rows << " cols=" << t.cols);
    Matrix a(t.rows, t.cols, t.lda);
    std::vector<double> x(t.cols), y(t.rows + 1, kPadding);
    for (int j = 0; j < t.cols; ++j) x[j] = 3.0 - 2 * j;
    for (int r = 0; r < t.rows; ++r)
      for (int j = 0; j < t.cols; ++j) a(r, j) = r - 0.25 * j * r + j;
    mklMatrixMultiplyByVector(a.v.data(), t.rows, t.cols, t.lda, x.data(), y.data());
    for (int r = 0; r < t.rows; ++r) {
      double s = 0.0;
      for (int j = 0; j < t.cols; ++j) s += a(r, j) * x[j];
      EXPECT_EQ(y[r], s) << r;  // also shows y was overwritten, not added to
    }
    EXPECT_EQ(y[t.rows], kPadding);
  }
}

TEST(MatrixKernelsTest, CholeskyFactorIsTheRowMajorLowerTriangle) {
  const int n = 6;
  const Matrix l = LowerFactor(n, n + 2);
  Matrix a = SpdFromFactor(l);
  int info = -99;
  ASSERT_TRUE(mklCholDcInplace(a.v.data(), n, a.ld, &info));
  EXPECT_EQ(info, 0);
  const double tolerance = kSlack * kEps * LowerCondition(l) * l(n - 1, n - 1);
  for (int r = 0; r < n; ++r)
    for (int c = 0; c <= r; ++c) EXPECT_NEAR(a(r, c), l(r, c), tolerance) << r << "," << c;
  EXPECT_TRUE(a.UpperUnusedIntact());
  EXPECT_TRUE(a.PaddingIntact());
}

TEST(MatrixKernelsTest, NotPositiveDefiniteIsAResultNotAnError) {
  struct Case {
    const char* name;
    int n;
    std::vector<double> lower;
    int info;
  };
  const Case cases[] = {
      {"leading 2x2 minor", 3, {1, 2, 1, 0, 0, 1}, 2},
      {"negative first pivot", 2, {-1, 0, 1}, 1},
      {"zero matrix", 2, {0, 0, 0}, 1},
      {"singular third minor", 3, {4, 2, 2, 2, 1, 1}, 3},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.name);
    Matrix a(t.n, t.n, t.n + 1);
    for (int r = 0, i = 0; r < t.n; ++r)
      for (int c = 0; c < t.n; ++c) a(r, c) = c <= r ? t.lower[i++] : kUnused;
    Matrix b = a;
    int info = 0;
    EXPECT_FALSE(mklCholDcInplace(a.v.data(), t.n, a.ld, &info));
    EXPECT_EQ(info, t.info);
    EXPECT_FALSE(mklCholInverseInplace(b.v.data(), t.n, b.ld));
    EXPECT_TRUE(a.UpperUnusedIntact() && b.UpperUnusedIntact());
  }
}

TEST(MatrixKernelsTest, CholeskyInverseOfOneByOne) {
  double a = 4.0;
  EXPECT_TRUE(mklCholInverseInplace(&a, 1, 1));
  EXPECT_EQ(a, 0.25);
}

TEST(MatrixKernelsTest, CholeskyInverseOfHilbertMatchesExactInverse) {
  for (int n : {4, 8, 10}) {
    SCOPED_TRACE(testing::Message() << "n=" << n);
    Matrix h = Hilbert(n, n + 3);
    ASSERT_TRUE(mklCholInverseInplace(h.v.data(), n, h.ld));
    double largest = 0.0;
    for (int r = 0; r < n; ++r)
      for (int c = 0; c < n; ++c) largest = std::max(largest, std::abs(HilbertInverse(n, r, c)));
    const double tolerance = kSlack * kEps * HilbertCondition(n) * largest;
    for (int r = 0; r < n; ++r)
      for (int c = 0; c <= r; ++c) EXPECT_NEAR(h(r, c), HilbertInverse(n, r, c), tolerance);
    EXPECT_TRUE(h.UpperUnusedIntact());  // the inverse is not mirrored
    EXPECT_TRUE(h.PaddingIntact());
  }
}

TEST(MatrixKernelsTest, SymmetricSolveOfHilbertRecoversChosenSolution) {
  for (int n : {4, 8, 10}) {
    SCOPED_TRACE(testing::Message() << "n=" << n);
    const int nrhs = 2;
    const Matrix h = Hilbert(n, n + 1);
    Matrix x(nrhs, n, n), b(nrhs, n, n + 2);  // one right-hand side per row
    for (int j = 0; j < nrhs; ++j)
      for (int i = 0; i < n; ++i) x(j, i) = 1.0 + i * (j + 1) - 0.5 * j;
    for (int j = 0; j < nrhs; ++j)
      for (int i = 0; i < n; ++i) {
        long double s = 0.0L;
        for (int c = 0; c < n; ++c) s += (long double)x(j, c) / (i + c + 1);
        b(j, i) = double(s);
      }
    Matrix factor = h;
    int info = 0;
    ASSERT_TRUE(mklCholDcInplace(factor.v.data(), n, factor.ld, &info));
    mklSolveLinEquatSymmetr(factor.v.data(), n, factor.ld, b.v.data(), nrhs, b.ld);
    for (int j = 0; j < nrhs; ++j) {
      const double norm = std::abs(x(j, n - 1));  // x grows with i
      for (int i = 0; i < n; ++i)
        EXPECT_NEAR(b(j, i), x(j, i), kSlack * kEps * HilbertCondition(n) * norm) << j << "," << i;
    }
    EXPECT_TRUE(b.PaddingIntact());
  }
}

TEST(MatrixKernelsTest, TriangularInverseOfRowMajorLower) {
  const int n = 7;
  const Matrix l = LowerFactor(n, n + 1);
  Matrix inv = l;
  mklInverseTriangularInplace(inv.v.data(), n, inv.ld);
  const auto oracle = NaiveLowerInverse(l);
  for (int r = 0; r < n; ++r)
    for (int c = 0; c <= r; ++c)
      EXPECT_NEAR(inv(r, c), double(oracle[r][c]), kSlack * kEps * LowerCondition(l)) << r << c;
  EXPECT_TRUE(inv.UpperUnusedIntact());
  EXPECT_TRUE(inv.PaddingIntact());
}

TEST(MatrixKernelsTest, TriangularSolveIsLowerTimesXForEachRow) {
  const int n = 6, nrhs = 3;
  const Matrix l = LowerFactor(n, n + 2);
  Matrix x(nrhs, n, n), b(nrhs, n, n + 3);
  for (int j = 0; j < nrhs; ++j)
    for (int i = 0; i < n; ++i) x(j, i) = (i % 3) - 1.5 * j + 0.25 * i;
  for (int j = 0; j < nrhs; ++j)
    for (int i = 0; i < n; ++i) {
      long double s = 0.0L;
      for (int c = 0; c <= i; ++c) s += (long double)l(i, c) * x(j, c);
      b(j, i) = double(s);
    }
  mklSolveLinEquatTriangular(l.v.data(), n, l.ld, b.v.data(), nrhs, b.ld);
  const double tolerance = kSlack * kEps * LowerCondition(l) * 4.0;  // |x| < 4
  for (int j = 0; j < nrhs; ++j)
    for (int i = 0; i < n; ++i) EXPECT_NEAR(b(j, i), x(j, i), tolerance) << j << "," << i;
  EXPECT_TRUE(b.PaddingIntact());
}

TEST(MatrixKernelsTest, ProductOfFactorIsLowerTransposedTimesLower) {
  const int n = 5;
  const Matrix l = LowerFactor(n, n + 1);
  Matrix p = l;
  mklProductTrMatrTranspByTrMatrInplace(p.v.data(), n, p.ld);
  for (int r = 0; r < n; ++r)
    for (int c = 0; c <= r; ++c) {
      double s = 0.0;  // (Lᵀ·L)(r,c) = sum over j >= r of L(j,r)·L(j,c); quarters, exact
      for (int j = r; j < n; ++j) s += l(j, r) * l(j, c);
      EXPECT_EQ(p(r, c), s) << r << "," << c;
    }
  EXPECT_TRUE(p.UpperUnusedIntact());
  EXPECT_TRUE(p.PaddingIntact());
}

TEST(MatrixKernelsTest, FailuresThrowTheirFixedTexts) {
  double m[4] = {1.0, kUnused, 0.0, 0.0};  // 2x2 lower triangle with a zero pivot
  double b[2] = {1.0, 1.0};
  int info = 0;
  struct Case {
    const char* name;
    std::function<void()> call;
    const char* text;
  };
  const Case cases[] = {
      {"dpotrf bad n",
       [&] { mklCholDcInplace(m, -1, 1, &info); },
       "illegal parameter in mklCholDcInplace()/dpotrf()"},
      {"dpotrf bad lda",
       [&] { mklCholDcInplace(m, 2, 1, &info); },
       "illegal parameter in mklCholDcInplace()/dpotrf()"},
      {"inverse dpotrf bad n",
       [&] { mklCholInverseInplace(m, -1, 1); },
       "illegal parameter in mklCholInverseInplace()/dpotrf()"},
      {"dtrtri zero diagonal",
       [&] { mklInverseTriangularInplace(m, 2, 2); },
       "mklInverseTriangularInplace()/dtrtri() - source matrix is singular"},
      {"dtrtri bad n",
       [&] { mklInverseTriangularInplace(m, -1, 1); },
       "mklInverseTriangularInplace()/dtrtri() - source matrix is singular"},
      {"dtrtrs zero diagonal",
       [&] { mklSolveLinEquatTriangular(m, 2, 2, b, 1, 2); },
       "mklSolveLinEquatTriangular()/dtrtrs() - source matrix is singular"},
      {"dtrtrs bad nrhs",
       [&] { mklSolveLinEquatTriangular(m, 2, 2, b, -1, 2); },
       "mklSolveLinEquatTriangular()/dtrtrs() - source matrix is singular"},
      {"dpotrs bad ldb",
       [&] { mklSolveLinEquatSymmetr(m, 2, 2, b, 1, 1); },
       "mklSolveLinEquatSymmetr()/dpotrs() - source matrix is singular"},
      {"dlauum bad n",
       [&] { mklProductTrMatrTranspByTrMatrInplace(m, -1, 1); },
       "illegal parameter in mklProductTrMatrTranspByTrMatrInplace()/dlauum()"},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(t.name);
    try {
      t.call();
      ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
      EXPECT_STREQ(e.what(), t.text);
    }
  }
}

std::vector<std::string>* g_reports = nullptr;
void CaptureReport(const std::string& message) { g_reports->push_back(message); }

TEST(MatrixKernelsTest, SortAscendsAndReportsIllegalLength) {
  std::vector<std::string> reports;
  g_reports = &reports;
  ScopedKernelErrorReport capture(&CaptureReport);

  std::mt19937 random(20240501);  // fixed: past 20 elements dlasrt switches to quicksort
  std::vector<double> big(1000);
  for (double& v : big) v = std::uniform_real_distribution<double>(-1e3, 1e3)(random);
  std::vector<double> bigSorted = big;
  std::sort(bigSorted.begin(), bigSorted.end());

  struct Case {
    std::vector<double> in, out;
  };
  const Case cases[] = {
      {{}, {}},
      {{3, 1, 2}, {1, 2, 3}},
      {{2, 2, 1, 2}, {1, 2, 2, 2}},
      {{-0.5, 3, -7, 1e300, -1e-300}, {-7, -0.5, -1e-300, 3, 1e300}},
      {{5, 4, 3, 2, 1, 0, -1, -2, -3, -4, -5, -6, -7, -8, -9, -10, -11, -12, -13, -14, -15, -16},
       {-16, -15, -14, -13, -12, -11, -10, -9, -8, -7, -6, -5, -4, -3, -2, -1, 0, 1, 2, 3, 4, 5}},
      {big, bigSorted},
  };
  for (const Case& t : cases) {
    SCOPED_TRACE(testing::Message() << "size " << t.in.size());
    std::vector<double> v = t.in;
    mklSortVector(v.data(), static_cast<int>(v.size()));
    EXPECT_EQ(v, t.out);
  }
  EXPECT_TRUE(reports.empty());

  double untouched[2] = {2.0, 1.0};
  mklSortVector(untouched, -1);
  EXPECT_EQ(reports, std::vector<std::string>{"dlasrt - illegal element at-2"});
  EXPECT_EQ(untouched[0], 2.0);
}

}  // namespace
}  // namespace qvsysbase::detail
