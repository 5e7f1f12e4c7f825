// The matrix kernels against the BLAS/LAPACK calls they wrap, side by side in one
// process: the general product at order 1000 and the Cholesky inverse at order 500.
// The adapters should cost nothing measurable; the summary prints, for each pair,
// the kernel's median time over the direct call's.
#include <benchmark/benchmark.h>
#include <cblas.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
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

void BM_mklMatrixMultiply(benchmark::State& state) {
  ProductOperands m;
  const int n = kProductOrder;
  for (auto _ : state) {
    qvsysbase::detail::mklMatrixMultiply(m.a.data(), n, n, n, m.b.data(), n, n, m.c.data(), n);
    benchmark::ClobberMemory();
  }
}

void BM_cblas_dgemm(benchmark::State& state) {
  ProductOperands m;
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

void BM_mklCholInverseInplace(benchmark::State& state) {
  InverseOperands m;
  for (auto _ : state) {
    m.Restore();
    bool ok = qvsysbase::detail::mklCholInverseInplace(m.work.data(), kInverseOrder, kInverseOrder);
    benchmark::DoNotOptimize(ok);
    benchmark::ClobberMemory();
  }
}

void BM_dpotrf_dpotri(benchmark::State& state) {
  InverseOperands m;
  const int n = kInverseOrder;
  for (auto _ : state) {
    m.Restore();
    int info = 0;
    dpotrf_("U", &n, m.work.data(), &n, &info, 1);
    if (info == 0) dpotri_("U", &n, m.work.data(), &n, &info, 1);
    benchmark::DoNotOptimize(info);
    benchmark::ClobberMemory();
  }
}

// BLAS may run several threads inside a call, so wall time is what counts.
BENCHMARK(BM_mklMatrixMultiply)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7);
BENCHMARK(BM_cblas_dgemm)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7);
BENCHMARK(BM_mklCholInverseInplace)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7);
BENCHMARK(BM_dpotrf_dpotri)->Unit(benchmark::kMillisecond)->UseRealTime()->Repetitions(7);

// Console output as usual, plus every repetition's time kept by benchmark name
// so that the ratios can be printed at the end.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      if (run.run_type == Run::RT_Iteration && !run.error_occurred)
        m_times[run.run_name.function_name].push_back(run.GetAdjustedRealTime());
    ConsoleReporter::ReportRuns(runs);
  }
  void PrintRatio(const std::string& kernel, const std::string& direct) {
    if (m_times[kernel].empty() || m_times[direct].empty()) return;
    const double k = Median(m_times[kernel]), d = Median(m_times[direct]);
    std::printf("%-26s %9.3f ms | %-18s %9.3f ms | ratio %.3f\n",
                kernel.c_str(),
                k,
                direct.c_str(),
                d,
                k / d);
  }

 private:
  static double Median(std::vector<double> v) {
    std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
    return v[v.size() / 2];
  }
  std::map<std::string, std::vector<double>> m_times;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("\nmedian times (kernel / direct call):\n");
  reporter.PrintRatio("BM_mklMatrixMultiply", "BM_cblas_dgemm");
  reporter.PrintRatio("BM_mklCholInverseInplace", "BM_dpotrf_dpotri");
  benchmark::Shutdown();
  return 0;
}
