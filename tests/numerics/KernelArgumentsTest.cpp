// Arguments that BLAS or LAPACK would reject: each kernel refuses them itself,
// before the library sees them, with an exception and the output left as it was.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "numerics/KernelTestSupport.h"
#include "qvsysbase/IntelSPLHandler.h"

namespace qvsysbase {
namespace {

using H = IntelSPLHandler;
using testing_support::Select;

// Marks every output element so that a kernel that wrote anything shows it.
constexpr double kUntouched = -12345.5;
// Operands with room for every shape below, so that no call can overrun them
// even if it got through.
const std::vector<double> kIn(64, 1.0);

// The call throws std::runtime_error with `text`, writes nothing to its output
// and lets the library print nothing of its own.
void ExpectRefused(const std::function<void(double* out)>& call, const std::string& text) {
  std::vector<double> out(64, kUntouched);
  ::testing::internal::CaptureStderr();
  try {
    call(out.data());
    ADD_FAILURE() << "no exception";
  } catch (const std::runtime_error& e) {
    EXPECT_EQ(e.what(), text);
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(out, std::vector<double>(64, kUntouched));
}

std::string BlasText(int position, const char* routine) {
  return "Parameter " + std::to_string(position) + " was incorrect on entry to " + routine + ".";
}

// The position named is the argument's place in cblas_dgemv(order, trans, M,
// N, alpha, A, lda, ...), and the first illegal one wins.
TEST(KernelArgumentsTest, MatrixByVectorRefusesIllegalShapesInBothSets) {
  const struct {
    int rows, cols, lda, position;
  } rows[] = {
      {-1, 2, 2, 3}, {2, -1, 2, 4}, {3, 4, 3, 7}, {3, 0, 0, 7}, {2, 2, -2, 7}, {-1, -1, 0, 3}};
  for (const H::SplMode mode : {H::SplModePlain, H::SplModeMKL}) {
    Select(mode);
    for (const auto& row : rows) {
      SCOPED_TRACE(::testing::Message()
                   << "mode " << mode << ": " << row.rows << "x" << row.cols << " lda " << row.lda);
      ExpectRefused(
          [&](double* y) {
            H::nspMatrixMultiplyByVector(kIn.data(), row.rows, row.cols, row.lda, kIn.data(), y);
          },
          BlasText(row.position, "cblas_dgemv"));
    }
  }
  Select(H::SplModePlain);
}

// Positions in cblas_dgemm(order, transA, transB, M, N, K, alpha, A, lda, B,
// ldb, beta, C, ldc); LAPACK's illegal arguments give the kernels' own texts.
TEST(KernelArgumentsTest, MatrixKernelsRefuseIllegalArguments) {
  Select(H::SplModeMKL);
  const double* a = kIn.data();
  const struct {
    int m, k, lda, n, ldb, ldc, position;
  } products[] = {{-1, 2, 2, 2, 2, 2, 4},
                  {2, 2, 2, -1, 2, 2, 5},
                  {2, -1, 2, 2, 2, 2, 6},
                  {2, 3, 2, 2, 3, 2, 9},
                  {2, 3, 3, 2, 2, 2, 11},
                  {2, 3, 3, 4, 3, 3, 14},
                  {2, 3, 1, 4, 1, 1, 9}};
  for (const auto& p : products) {
    SCOPED_TRACE(p.position);
    ExpectRefused(
        [&](double* c) { H::nspMatrixMultiply(a, p.m, p.k, p.lda, a, p.n, p.ldb, c, p.ldc); },
        BlasText(p.position, "cblas_dgemm"));
  }
  int info = 0;
  const std::pair<std::function<void(double*)>, const char*> lapack[] = {
      {[&](double* m) { H::nspCholDcInplace(m, 3, 2, &info); },
       "illegal parameter in mklCholDcInplace()/dpotrf()"},
      {[](double* m) { H::nspCholInverseInplace(m, -1, 1); },
       "illegal parameter in mklCholInverseInplace()/dpotrf()"},
      {[](double* m) { H::nspInverseTriangularInplace(m, 3, 1); },
       "mklInverseTriangularInplace()/dtrtri() - source matrix is singular"},
      {[&](double* b) { H::nspSolveLinEquatTriangular(a, 2, 2, b, -1, 2); },
       "mklSolveLinEquatTriangular()/dtrtrs() - source matrix is singular"},
      {[&](double* b) { H::nspSolveLinEquatTriangular(a, 3, 3, b, 2, 2); },
       "mklSolveLinEquatTriangular()/dtrtrs() - source matrix is singular"},
      {[&](double* b) { H::nspSolveLinEquatSymmetr(a, 3, 2, b, 1, 3); },
       "mklSolveLinEquatSymmetr()/dpotrs() - source matrix is singular"},
      {[](double* m) { H::nspProductTrMatrTranspByTrMatrInplace(m, -2, 1); },
       "illegal parameter in mklProductTrMatrTranspByTrMatrInplace()/dlauum()"},
  };
  for (const auto& [call, text] : lapack) {
    SCOPED_TRACE(text);
    ExpectRefused(call, text);
  }
  EXPECT_EQ(info, -4);  // minus the position of lda, as LAPACK would set it
  Select(H::SplModePlain);
}

// Empty shapes are legal. A product over no columns is zero and is written,
// though dgemv would return early and leave y as it was.
TEST(KernelArgumentsTest, EmptyShapesAreNotErrors) {
  for (const H::SplMode mode : {H::SplModePlain, H::SplModeMKL}) {
    SCOPED_TRACE(mode);
    Select(mode);
    std::vector<double> y(3, kUntouched);
    H::nspMatrixMultiplyByVector(kIn.data(), 0, 3, 3, kIn.data(), y.data());
    EXPECT_EQ(y[0], kUntouched);
    H::nspMatrixMultiplyByVector(kIn.data(), 2, 0, 1, kIn.data(), y.data());
    EXPECT_EQ(y, (std::vector<double>{0.0, 0.0, kUntouched}));
  }
  int info = -1;
  EXPECT_TRUE(H::nspCholDcInplace(nullptr, 0, 1, &info));
  EXPECT_EQ(info, 0);
  Select(H::SplModePlain);
}

}  // namespace
}  // namespace qvsysbase
