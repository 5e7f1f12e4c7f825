// Kernel dispatch: each elementwise slot in mode 1 ("fast") against the routine
// the fast slot wraps, called directly ("direct": the BLAS call, the unchecked
// SLEEF loop or the same plain loop), and the plain set ("plain") against the
// fast one, at three sizes. Pairs are named "<slot>/<n>/fast:direct" and
// "<slot>/<n>/plain:fast"; the table's ratio is then fast/direct (what the
// dispatch and the status checks cost) or plain/fast (the speed-up of the fast
// set).
//
// exp and log cannot be applied to their own results for long, so those two
// restore their input from a pristine copy before every call; the copy is the
// pair's overhead arm, taken off both arms.
#include <benchmark/benchmark.h>
#include <cblas.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "RatioReporter.h"
#include "VectorMathDirect.h"
#include "qvsysbase/IntelSPLHandler.h"

namespace {

using H = qvsysbase::IntelSPLHandler;

constexpr int kSizes[] = {1000, 100000, 10000000};

// 64-byte aligned, touched before timing starts.
template <class T>
class Array {
 public:
  explicit Array(int n)
      : m_p(static_cast<T*>(std::aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64))) {}
  ~Array() { std::free(m_p); }
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;
  T* get() const { return m_p; }

 private:
  T* m_p;
};

struct Buffers {
  explicit Buffers(int n) : a(n), minusOne(n), d(n), expIn(n), lnIn(n), ints(n), s(n), ws(n) {
    for (int i = 0; i < n; ++i) {
      const double u = (i % 1009) / 1009.0;  // in [0, 1)
      a.get()[i] = 0.5 + 1.5 * u;
      minusOne.get()[i] = -1.0;
      d.get()[i] = a.get()[i];
      expIn.get()[i] = -5.0 + 10.0 * u;
      lnIn.get()[i] = 0.5 + 1.5 * u;
      ints.get()[i] = i % 4096 - 2048;
      s.get()[i] = static_cast<short>(i % 20000 - 10000);
      ws.get()[i] = 0;
    }
  }
  Array<double> a, minusOne, d, expIn, lnIn;
  Array<int> ints;
  Array<short> s, ws;
};

using Body = void (*)(Buffers& b, int n);

struct Case {
  const char* slot;
  const double* (*restoreFrom)(const Buffers& b);  // null: stable under repetition
  Body viaSlot;
  Body direct;
};

const double* ExpInput(const Buffers& b) { return b.expIn.get(); }
const double* LnInput(const Buffers& b) { return b.lnIn.get(); }

// The unchecked SLEEF loops of the width the library picks on this processor.
void DirectExp(double* v, int n) {
  if (__builtin_cpu_supports("avx512f")) return bench::DirectExpAvx512(v, n);
  bench::DirectExpAvx(v, n);
}
void DirectLn(double* v, int n) {
  if (__builtin_cpu_supports("avx512f")) return bench::DirectLnAvx512(v, n);
  bench::DirectLnAvx(v, n);
}

constexpr int kZeroBlock = 64;
constinit const double kZeros[kZeroBlock] = {};

// clang-format off
const Case kCases[] = {
  {"nspdbSet", nullptr,
   [](Buffers& b, int n) { H::nspdbSet(0.25, b.d.get(), n); },
   [](Buffers& b, int n) { std::fill_n(b.d.get(), n, 0.25); }},
  {"nspdbZero", nullptr,
   [](Buffers& b, int n) { H::nspdbZero(b.d.get(), n); },
   [](Buffers& b, int n) {
     int i = 0;
     for (; i + kZeroBlock <= n; i += kZeroBlock) cblas_dcopy(kZeroBlock, kZeros, 1, b.d.get() + i, 1);
     if (i < n) cblas_dcopy(n - i, kZeros, 1, b.d.get() + i, 1);
   }},
  {"nspwbZero", nullptr,
   [](Buffers& b, int n) { H::nspwbZero(b.ws.get(), n); },
   [](Buffers& b, int n) { std::fill_n(b.ws.get(), n, static_cast<short>(0)); }},
  {"nspdbIntToFloat", nullptr,
   [](Buffers& b, int n) { H::nspdbIntToFloat(b.ints.get(), b.d.get(), n); },
   [](Buffers& b, int n) { for (int i = 0; i < n; ++i) b.d.get()[i] = b.ints.get()[i]; }},
  {"nspdbAbs1", nullptr,
   [](Buffers& b, int n) { H::nspdbAbs1(b.d.get(), n); },
   [](Buffers& b, int n) { double* v = b.d.get(); for (int i = 0; i < n; ++i) v[i] = std::fabs(v[i]); }},
  {"nspdbAbs2", nullptr,
   [](Buffers& b, int n) { H::nspdbAbs2(b.minusOne.get(), b.d.get(), n); },
   [](Buffers& b, int n) {
     const double* s = b.minusOne.get(); double* d = b.d.get();
     for (int i = 0; i < n; ++i) d[i] = std::fabs(s[i]);
   }},
  {"nspdDotProd", nullptr,
   [](Buffers& b, int n) { benchmark::DoNotOptimize(H::nspdDotProd(b.a.get(), b.d.get(), n)); },
   [](Buffers& b, int n) { benchmark::DoNotOptimize(cblas_ddot(n, b.a.get(), 1, b.d.get(), 1)); }},
  {"nspdbSqrt1", nullptr,
   [](Buffers& b, int n) { H::nspdbSqrt1(b.d.get(), n); },
   [](Buffers& b, int n) { double* v = b.d.get(); for (int i = 0; i < n; ++i) v[i] = std::sqrt(v[i]); }},
  {"nspdbSqrt2", nullptr,
   [](Buffers& b, int n) { H::nspdbSqrt2(b.a.get(), b.d.get(), n); },
   [](Buffers& b, int n) {
     const double* s = b.a.get(); double* d = b.d.get();
     for (int i = 0; i < n; ++i) d[i] = std::sqrt(s[i]);
   }},
  {"nspdbCopy", nullptr,
   [](Buffers& b, int n) { H::nspdbCopy(b.a.get(), b.d.get(), n); },
   [](Buffers& b, int n) { cblas_dcopy(n, b.a.get(), 1, b.d.get(), 1); }},
  {"nspwbCopy", nullptr,
   [](Buffers& b, int n) { H::nspwbCopy(b.s.get(), b.ws.get(), n); },
   [](Buffers& b, int n) { std::copy_n(b.s.get(), n, b.ws.get()); }},
  {"nspdbMpy1", nullptr,
   [](Buffers& b, int n) { H::nspdbMpy1(-1.0, b.d.get(), n); },
   [](Buffers& b, int n) { cblas_dscal(n, -1.0, b.d.get(), 1); }},
  {"nspdbMpy2", nullptr,
   [](Buffers& b, int n) { H::nspdbMpy2(b.minusOne.get(), b.d.get(), n); },
   [](Buffers& b, int n) {
     const double* s = b.minusOne.get(); double* d = b.d.get();
     for (int i = 0; i < n; ++i) d[i] = s[i] * d[i];
   }},
  {"nspdbMpy3", nullptr,
   [](Buffers& b, int n) { H::nspdbMpy3(b.a.get(), b.minusOne.get(), b.d.get(), n); },
   [](Buffers& b, int n) {
     const double* x = b.a.get(); const double* y = b.minusOne.get(); double* d = b.d.get();
     for (int i = 0; i < n; ++i) d[i] = x[i] * y[i];
   }},
  {"nspdbAdd1", nullptr,
   [](Buffers& b, int n) { H::nspdbAdd1(0.5, b.d.get(), n); },
   [](Buffers& b, int n) { double* v = b.d.get(); for (int i = 0; i < n; ++i) v[i] += 0.5; }},
  {"nspdbAdd2", nullptr,
   [](Buffers& b, int n) { H::nspdbAdd2(b.a.get(), b.d.get(), n); },
   [](Buffers& b, int n) {
     const double* s = b.a.get(); double* d = b.d.get();
     for (int i = 0; i < n; ++i) d[i] = s[i] + d[i];
   }},
  {"nspdbAddScaledVector", nullptr,
   [](Buffers& b, int n) { H::nspdbAddScaledVector(b.a.get(), 0.5, b.d.get(), n); },
   [](Buffers& b, int n) { cblas_daxpy(n, 0.5, b.a.get(), 1, b.d.get(), 1); }},
  {"nspdbSub1", nullptr,
   [](Buffers& b, int n) { H::nspdbSub1(0.5, b.d.get(), n); },
   [](Buffers& b, int n) { double* v = b.d.get(); for (int i = 0; i < n; ++i) v[i] -= 0.5; }},
  {"nspdbSub2", nullptr,
   [](Buffers& b, int n) { H::nspdbSub2(b.a.get(), b.d.get(), n); },
   [](Buffers& b, int n) {
     const double* s = b.a.get(); double* d = b.d.get();
     for (int i = 0; i < n; ++i) d[i] = d[i] - s[i];
   }},
  {"nspdbSub3", nullptr,
   [](Buffers& b, int n) { H::nspdbSub3(b.a.get(), b.minusOne.get(), b.d.get(), n); },
   [](Buffers& b, int n) {
     const double* x = b.a.get(); const double* y = b.minusOne.get(); double* d = b.d.get();
     for (int i = 0; i < n; ++i) d[i] = x[i] - y[i];
   }},
  {"nspdbExp1", &ExpInput,
   [](Buffers& b, int n) { H::nspdbExp1(b.d.get(), n); },
   [](Buffers& b, int n) { DirectExp(b.d.get(), n); }},
  {"nspdbLn1", &LnInput,
   [](Buffers& b, int n) { H::nspdbLn1(b.d.get(), n); },
   [](Buffers& b, int n) { DirectLn(b.d.get(), n); }},
};
// clang-format on

enum Variant { kFast, kPlain, kDirect, kRestoreOnly };

// One set of buffers per size, filled (so touched) once and shared by every run.
Buffers& BuffersFor(int n) {
  static std::map<int, std::unique_ptr<Buffers>> buffers;
  auto& b = buffers[n];
  if (!b) b = std::make_unique<Buffers>(n);
  return *b;
}

void RunArm(benchmark::State& state, const Case& c, Variant variant, int n) {
  Buffers& b = BuffersFor(n);
  // Every run starts from the same operand, whatever the previous run left.
  std::memcpy(b.d.get(), b.a.get(), sizeof(double) * n);
  // One BLAS thread for every variant, so that all of them run alike.
  H::setIntelSPLMode(variant == kPlain ? H::SplModeMKL : H::SplModePlain, 1);
  H::setIntelSPLMode(variant == kPlain ? H::SplModePlain : H::SplModeMKL, 1);
  const Body body = variant == kDirect ? c.direct : c.viaSlot;
  const double* pristine = c.restoreFrom != nullptr ? c.restoreFrom(b) : nullptr;
  for (auto _ : state) {
    if (pristine != nullptr) std::memcpy(b.d.get(), pristine, sizeof(double) * n);
    if (variant != kRestoreOnly) body(b, n);
    benchmark::ClobberMemory();
  }
}

qvbench::Body Arm(const Case& c, Variant variant, int n) {
  return [&c, variant, n](benchmark::State& state) { RunArm(state, c, variant, n); };
}

void AddPair(const Case& c, int n, Variant library, Variant baseline, const char* suffix) {
  auto& pair = qvbench::AddPair(std::string(c.slot) + "/" + std::to_string(n) + "/" + suffix,
                                Arm(c, library, n),
                                Arm(c, baseline, n));
  if (c.restoreFrom != nullptr) pair.Overhead(Arm(c, kRestoreOnly, n));
}

}  // namespace

int main(int argc, char** argv) {
  for (const Case& c : kCases) {
    for (const int n : kSizes) {
      AddPair(c, n, kFast, kDirect, "fast:direct");
      AddPair(c, n, kPlain, kFast, "plain:fast");
    }
  }
  // 132 pairs: short runs keep the whole program to a few minutes.
  return qvbench::RunPairs(argc, argv, {.minTimeSeconds = 0.05});
}
