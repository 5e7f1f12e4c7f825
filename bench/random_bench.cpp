// The random streams against the standard library, side by side in one process:
// nspdbRandGaus against std::normal_distribution<double> over std::mt19937, and
// nspiRandUniformBits against std::mt19937's raw words, at n = 1e3 and 1e6 into
// a buffer reused across iterations. The uniform stream runs its default
// generator (MCG31; the family filter lets no other through); an extra pair
// shows MT19937's words against the standard engine's.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "RatioReporter.h"
#include "qvsysbase/IntelSPLHandler.h"
#include "qvsysbase/RandomStreams.h"

namespace {

using H = qvsysbase::IntelSPLHandler;

constexpr int kSizes[] = {1000, 1000000};

template <class T>
std::vector<T>& Buffer(int n) {
  static std::vector<T> buffer;
  buffer.assign(static_cast<std::size_t>(n), T{});  // touched before timing
  return buffer;
}

void AddGaussianPair(int n) {
  qvbench::AddPair(
      "gauss/n=" + std::to_string(n),
      [n](benchmark::State& state) {
        auto& dst = Buffer<double>(n);
        H::InitRandGenWithSeed(1, 0);
        for (auto _ : state) {
          H::nspdbRandGaus(dst.data(), n, 0);
          benchmark::DoNotOptimize(dst.data());
        }
      },
      [n](benchmark::State& state) {
        auto& dst = Buffer<double>(n);
        std::mt19937 engine(1);
        std::normal_distribution<double> normal;
        for (auto _ : state) {
          for (double& v : dst) v = normal(engine);
          benchmark::DoNotOptimize(dst.data());
        }
      });
}

void StandardWords(benchmark::State& state, int n) {
  auto& dst = Buffer<unsigned>(n);
  std::mt19937 engine(1);
  for (auto _ : state) {
    for (unsigned& w : dst) w = static_cast<unsigned>(engine());
    benchmark::DoNotOptimize(dst.data());
  }
}

void AddUniformPairs(int n) {
  qvbench::AddPair(
      "bits/n=" + std::to_string(n),
      [n](benchmark::State& state) {
        auto& dst = Buffer<unsigned>(n);
        H::InitRandUniformGen(1, false, 0);
        for (auto _ : state) {
          H::nspiRandUniformBits(dst.data(), n, 0);
          benchmark::DoNotOptimize(dst.data());
        }
      },
      [n](benchmark::State& state) { StandardWords(state, n); });
  qvbench::AddPair(
      "bits-mt19937/n=" + std::to_string(n),
      [n](benchmark::State& state) {
        auto& dst = Buffer<unsigned>(n);
        qvsysbase::StandaloneRandomStream stream(qvsysbase::kBrngMT19937, 1);
        for (auto _ : state) {
          stream.UniformBits(dst.data(), n);
          benchmark::DoNotOptimize(dst.data());
        }
      },
      [n](benchmark::State& state) { StandardWords(state, n); });
}

}  // namespace

int main(int argc, char** argv) {
  H::setIntelSPLMode(H::SplModeMKL, 1);
  for (int n : kSizes) {
    AddGaussianPair(n);
    AddUniformPairs(n);
  }
  return qvbench::RunPairs(argc, argv);
}
