// The matrix kernels against the BLAS/LAPACK calls they wrap, side by side in one
// process: the general product at order 1000 and the Cholesky inverse at order 500,
// on one BLAS thread. The adapters should cost nothing measurable: the ratio
// kernel/direct should be 1.
#include <benchmark/benchmark.h>
#include <cblas.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "RatioReporter.h"
#include "numerics/LapackDecl.h"
#include "numerics/MatrixKernels.h"
#include "qvsysbase/IntelSPLHandler.h"

namespace {

constexpr int kProductOrder = 1000;
constexpr int kInverseOrder = 500;

// Square operands filled (and so touched) before any timing.
struct ProductOperands {
  ProductOperands() : a(kCount), b(kCount), c(kCount, 0.0) {
    for (std::size_t i = 0; i < kCount; ++i) {
      a[i] = 1.0 + static_cast<double>(i % 97) / 97.0;
      b[i] = 0.5 - static_cast<double>(i % 89) / 89.0;
    }
  }
  static constexpr std::size_t kCount = std::size_t{kProductOrder} * kProductOrder;
  std::vector<double> a, b, c;
};

// A symmetric, diagonally dominant (so positive-definite) source and a work copy,
// both touched; every iteration restores the work copy with the same memcpy in
// both arms, since the inverse overwrites its input.
struct InverseOperands {
  InverseOperands() : source(kCount), work(kCount) {
    const int n = kInverseOrder;
    for (int r = 0; r < n; ++r)
      for (int c = 0; c < n; ++c)
        source[r * n + c] = 1.0 / (1 + std::abs(r - c)) + (r == c ? n : 0);
    work = source;
  }
  void Restore() { std::memcpy(work.data(), source.data(), kCount * sizeof(double)); }
  static constexpr std::size_t kCount = std::size_t{kInverseOrder} * kInverseOrder;
  std::vector<double> source, work;
};

// The operands of each order, made once for every run of both arms.
template <typename Operands>
Operands& Shared() {
  static Operands operands;
  return operands;
}

void MultiplyWithKernel(benchmark::State& state) {
  auto& m = Shared<ProductOperands>();
  const int n = kProductOrder;
  for (auto _ : state) {
    qvsysbase::detail::mklMatrixMultiply(m.a.data(), n, n, n, m.b.data(), n, n, m.c.data(), n);
    benchmark::ClobberMemory();
  }
}

void MultiplyDirectly(benchmark::State& state) {
  auto& m = Shared<ProductOperands>();
  const int n = kProductOrder;
  for (auto _ : state) {
    cblas_dgemm(CblasRowMajor,
                CblasNoTrans,
                CblasTrans,
                n,
                n,
                n,
                1.0,
                m.a.data(),
                n,
                m.b.data(),
                n,
                0.0,
                m.c.data(),
                n);
    benchmark::ClobberMemory();
  }
}

void InvertWithKernel(benchmark::State& state) {
  auto& m = Shared<InverseOperands>();
  for (auto _ : state) {
    m.Restore();
    bool ok = qvsysbase::detail::mklCholInverseInplace(m.work.data(), kInverseOrder, kInverseOrder);
    benchmark::DoNotOptimize(ok);
  }
}

void InvertDirectly(benchmark::State& state) {
  auto& m = Shared<InverseOperands>();
  const int n = kInverseOrder;
  for (auto _ : state) {
    m.Restore();
    int info = 0;
    dpotrf_("U", &n, m.work.data(), &n, &info, 1);
    if (info == 0) dpotri_("U", &n, m.work.data(), &n, &info, 1);
    benchmark::DoNotOptimize(info);
  }
}

// The restore alone, taken off both inverse arms.
void RestoreOnly(benchmark::State& state) {
  auto& m = Shared<InverseOperands>();
  for (auto _ : state) {
    m.Restore();
    benchmark::ClobberMemory();
  }
}

}  // namespace

int main(int argc, char** argv) {
  using H = qvsysbase::IntelSPLHandler;
  H::setIntelSPLMode(H::SplModeMKL, 1);
  qvbench::AddPair("mklMatrixMultiply:cblas_dgemm/1000", &MultiplyWithKernel, &MultiplyDirectly);
  qvbench::AddPair("mklCholInverseInplace:dpotrf_dpotri/500", &InvertWithKernel, &InvertDirectly)
      .Overhead(&RestoreOnly);
  return qvbench::RunPairs(argc, argv);
}
