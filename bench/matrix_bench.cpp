// The matrix kernels against the BLAS/LAPACK calls they wrap, side by side in one
// process: the general product at order 1000 and the Cholesky inverse at order 500.
// The adapters should cost nothing measurable; each pair reports the kernel's
// time over the direct call's as the counter "ratio".
#include <benchmark/benchmark.h>
#include <cblas.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "numerics/LapackDecl.h"
#include "numerics/MatrixKernels.h"

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

void MultiplyWithKernel(ProductOperands& m) {
  const int n = kProductOrder;
  qvsysbase::detail::mklMatrixMultiply(m.a.data(), n, n, n, m.b.data(), n, n, m.c.data(), n);
}

void MultiplyDirectly(ProductOperands& m) {
  const int n = kProductOrder;
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
}

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

void InvertWithKernel(InverseOperands& m) {
  m.Restore();
  bool ok = qvsysbase::detail::mklCholInverseInplace(m.work.data(), kInverseOrder, kInverseOrder);
  benchmark::DoNotOptimize(ok);
}

void InvertDirectly(InverseOperands& m) {
  const int n = kInverseOrder;
  m.Restore();
  int info = 0;
  dpotrf_("U", &n, m.work.data(), &n, &info, 1);
  if (info == 0) dpotri_("U", &n, m.work.data(), &n, &info, 1);
  benchmark::DoNotOptimize(info);
}

// Seconds one call of `arm` takes on `operands`.
template <typename Operands>
double TimeOnce(void (*arm)(Operands&), Operands& operands) {
  const auto start = std::chrono::steady_clock::now();
  arm(operands);
  benchmark::ClobberMemory();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Runs the kernel and the direct call in every iteration, alternating which goes
// first, so that load from other processes falls on both arms alike. The
// reported time is the kernel's; the counters give both arms' mean times in
// milliseconds and their ratio.
template <typename Operands>
void Pair(benchmark::State& state, void (*kernel)(Operands&), void (*direct)(Operands&)) {
  Operands operands;
  double kernelTotal = 0.0, directTotal = 0.0;
  bool kernelFirst = true;
  for (auto _ : state) {
    double k = 0.0, d = 0.0;
    if (kernelFirst) {
      k = TimeOnce(kernel, operands);
      d = TimeOnce(direct, operands);
    } else {
      d = TimeOnce(direct, operands);
      k = TimeOnce(kernel, operands);
    }
    kernelFirst = !kernelFirst;
    kernelTotal += k, directTotal += d;
    state.SetIterationTime(k);
  }
  const double iterations = static_cast<double>(state.iterations());
  state.counters["kernel_ms"] = 1e3 * kernelTotal / iterations;
  state.counters["direct_ms"] = 1e3 * directTotal / iterations;
  state.counters["ratio"] = kernelTotal / directTotal;
}

void BM_mklMatrixMultiply_vs_cblas_dgemm(benchmark::State& state) {
  Pair<ProductOperands>(state, &MultiplyWithKernel, &MultiplyDirectly);
}
void BM_mklCholInverseInplace_vs_dpotrf_dpotri(benchmark::State& state) {
  Pair<InverseOperands>(state, &InvertWithKernel, &InvertDirectly);
}

// Manual time: only the timed calls count, not the other arm. Repetitions show
// how much the shared machine moves the figures.
BENCHMARK(BM_mklMatrixMultiply_vs_cblas_dgemm)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Repetitions(5);
BENCHMARK(BM_mklCholInverseInplace_vs_dpotrf_dpotri)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Repetitions(5);

}  // namespace
