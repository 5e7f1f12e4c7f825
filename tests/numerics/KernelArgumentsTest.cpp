// Arguments that BLAS or LAPACK would reject: each kernel refuses them itself,
// before the library sees them, with an exception (or, for the sort, a report)
// and the output left as it was.
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
using testing_support::ReportCapture;
using testing_support::Select;

// Marks every output element so that a kernel that wrote anything shows it.
constexpr double kUntouched = -12345.5;

struct BadCall {
  const char* what;
  bool inPlainSet;  // the plain set fills the slot too
  std::function<void(std::vector<double>& out)> call;
  const char* text;
};

// Operands with room for every shape below, so that no call can overrun them
// even if it got through.
const std::vector<double> kIn(64, 1.0);

std::vector<BadCall> BadCalls() {
  const double* a = kIn.data();
  int info = 0;
  return {
      // y = A·x with A rows×cols: cblas_dgemv(order, trans, M, N, alpha, A, lda, ...)
      {"gemv rows < 0",
       true,
       [=](auto& y) { H::nspMatrixMultiplyByVector(a, -1, 2, 2, a, y.data()); },
       "Parameter 3 was incorrect on entry to cblas_dgemv."},
      {"gemv cols < 0",
       true,
       [=](auto& y) { H::nspMatrixMultiplyByVector(a, 2, -1, 2, a, y.data()); },
       "Parameter 4 was incorrect on entry to cblas_dgemv."},
      {"gemv lda < cols",
       true,
       [=](auto& y) { H::nspMatrixMultiplyByVector(a, 3, 4, 3, a, y.data()); },
       "Parameter 7 was incorrect on entry to cblas_dgemv."},
      {"gemv lda 0 for no columns",
       true,
       [=](auto& y) { H::nspMatrixMultiplyByVector(a, 3, 0, 0, a, y.data()); },
       "Parameter 7 was incorrect on entry to cblas_dgemv."},
      {"gemv negative stride",
       true,
       [=](auto& y) { H::nspMatrixMultiplyByVector(a, 2, 2, -2, a, y.data()); },
       "Parameter 7 was incorrect on entry to cblas_dgemv."},
      // C = A·Bᵀ: cblas_dgemm(order, transA, transB, M, N, K, alpha, A, lda, B, ldb, beta, C, ldc)
      {"gemm m < 0",
       false,
       [=](auto& c) { H::nspMatrixMultiply(a, -1, 2, 2, a, 2, 2, c.data(), 2); },
       "Parameter 4 was incorrect on entry to cblas_dgemm."},
      {"gemm n < 0",
       false,
       [=](auto& c) { H::nspMatrixMultiply(a, 2, 2, 2, a, -1, 2, c.data(), 2); },
       "Parameter 5 was incorrect on entry to cblas_dgemm."},
      {"gemm k < 0",
       false,
       [=](auto& c) { H::nspMatrixMultiply(a, 2, -1, 2, a, 2, 2, c.data(), 2); },
       "Parameter 6 was incorrect on entry to cblas_dgemm."},
      {"gemm lda < k",
       false,
       [=](auto& c) { H::nspMatrixMultiply(a, 2, 3, 2, a, 2, 3, c.data(), 2); },
       "Parameter 9 was incorrect on entry to cblas_dgemm."},
      {"gemm ldb < k",
       false,
       [=](auto& c) { H::nspMatrixMultiply(a, 2, 3, 3, a, 2, 2, c.data(), 2); },
       "Parameter 11 was incorrect on entry to cblas_dgemm."},
      {"gemm ldc < n",
       false,
       [=](auto& c) { H::nspMatrixMultiply(a, 2, 3, 3, a, 4, 3, c.data(), 3); },
       "Parameter 14 was incorrect on entry to cblas_dgemm."},
      {"gemm first illegal argument wins",
       false,
       [=](auto& c) { H::nspMatrixMultiply(a, 2, 3, 1, a, 4, 1, c.data(), 1); },
       "Parameter 9 was incorrect on entry to cblas_dgemm."},
      // LAPACK: the kernels' own texts for an illegal argument.
      {"potrf lda < n",
       false,
       [=](auto& m) mutable { H::nspCholDcInplace(m.data(), 3, 2, &info); },
       "illegal parameter in mklCholDcInplace()/dpotrf()"},
      {"potri n < 0",
       false,
       [](auto& m) { H::nspCholInverseInplace(m.data(), -1, 1); },
       "illegal parameter in mklCholInverseInplace()/dpotrf()"},
      {"trtri lda < n",
       false,
       [](auto& m) { H::nspInverseTriangularInplace(m.data(), 3, 1); },
       "mklInverseTriangularInplace()/dtrtri() - source matrix is singular"},
      {"trtrs nrhs < 0",
       false,
       [=](auto& b) { H::nspSolveLinEquatTriangular(a, 2, 2, b.data(), -1, 2); },
       "mklSolveLinEquatTriangular()/dtrtrs() - source matrix is singular"},
      {"trtrs ldb < n",
       false,
       [=](auto& b) { H::nspSolveLinEquatTriangular(a, 3, 3, b.data(), 2, 2); },
       "mklSolveLinEquatTriangular()/dtrtrs() - source matrix is singular"},
      {"potrs lda < n",
       false,
       [=](auto& b) { H::nspSolveLinEquatSymmetr(a, 3, 2, b.data(), 1, 3); },
       "mklSolveLinEquatSymmetr()/dpotrs() - source matrix is singular"},
      {"lauum n < 0",
       false,
       [](auto& m) { H::nspProductTrMatrTranspByTrMatrInplace(m.data(), -2, 1); },
       "illegal parameter in mklProductTrMatrTranspByTrMatrInplace()/dlauum()"},
  };
}

// Nothing is written, and the library prints nothing of its own.
TEST(KernelArgumentsTest, IllegalArgumentsThrowNamingTheArgumentAndLeaveTheOutput) {
  for (const H::SplMode mode : {H::SplModePlain, H::SplModeMKL}) {
    Select(mode);
    for (const BadCall& bad : BadCalls()) {
      if (!bad.inPlainSet && !H::isIntelSPLActive()) continue;
      SCOPED_TRACE(::testing::Message() << "mode " << mode << ": " << bad.what);
      std::vector<double> out(64, kUntouched);
      ::testing::internal::CaptureStderr();
      try {
        bad.call(out);
        ADD_FAILURE() << "no exception";
      } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), bad.text);
      }
      EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
      EXPECT_EQ(out, std::vector<double>(64, kUntouched));
    }
  }
  Select(H::SplModePlain);
}

// Empty shapes are legal. A product over no columns is zero and is written,
// though BLAS would return early and leave the output as it was.
TEST(KernelArgumentsTest, EmptyShapesAreNotErrors) {
  for (const H::SplMode mode : {H::SplModePlain, H::SplModeMKL}) {
    SCOPED_TRACE(mode);
    Select(mode);
    std::vector<double> out(8, kUntouched);
    H::nspMatrixMultiplyByVector(kIn.data(), 0, 3, 3, kIn.data(), out.data());
    EXPECT_EQ(out[0], kUntouched);
    H::nspMatrixMultiplyByVector(kIn.data(), 2, 0, 1, kIn.data(), out.data());
    EXPECT_EQ(
        out,
        (std::vector<double>{
            0.0, 0.0, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched}));
    if (!H::isIntelSPLActive()) continue;
    H::nspMatrixMultiply(kIn.data(), 0, 2, 2, kIn.data(), 2, 2, out.data() + 2, 2);
    EXPECT_EQ(out[2], kUntouched);
    H::nspMatrixMultiply(kIn.data(), 2, 0, 1, kIn.data(), 2, 1, out.data() + 2, 2);
    EXPECT_EQ(out, (std::vector<double>{0.0, 0.0, 0.0, 0.0, 0.0, 0.0, kUntouched, kUntouched}));
    int info = -1;
    EXPECT_TRUE(H::nspCholDcInplace(out.data() + 6, 0, 1, &info));
    EXPECT_EQ(info, 0);
    EXPECT_EQ(out[6], kUntouched);
  }
  Select(H::SplModePlain);
}

// The sort reports a negative count through the error report, in its own words,
// and leaves the vector alone.
TEST(KernelArgumentsTest, SortReportsANegativeCount) {
  Select(H::SplModeMKL);
  ReportCapture capture;
  double v[2] = {2.0, 1.0};
  ::testing::internal::CaptureStderr();
  H::nspSortVector(v, -1);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(capture.reports(), std::vector<std::string>{"dlasrt - illegal element at-2"});
  EXPECT_EQ(v[0], 2.0);
  Select(H::SplModePlain);
}

}  // namespace
}  // namespace qvsysbase
