// Cypher::Write against OpenSSL's Blowfish in the same process.
//
// Each Cypher::Write keys a fresh engine, so the OpenSSL side keys anew in
// every iteration too (BF_set_key, then BF_ecb_encrypt block by block). Sizes:
// 64 MiB (throughput), 1 KiB (a short message, where keying dominates) and 0
// bytes (keying alone). After the runs, a table gives time per call and MB/s
// of both and the ratio OpenSSL time / Cypher time (above 1: Cypher is faster).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "qvsysbase/Cypher.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <openssl/blowfish.h>

namespace {

constexpr int kKeyLength = 16;
unsigned char g_key[kKeyLength] = {
    0x0F, 0x1E, 0x2D, 0x3C, 0x4B, 0x5A, 0x69, 0x78, 0x87, 0x96, 0xA5, 0xB4, 0xC3, 0xD2, 0xE1, 0xF0};

// Buffers are allocated and touched before timing starts.
std::vector<unsigned char> MakeBuffer(std::size_t bytes) {
  std::vector<unsigned char> buffer(bytes);
  for (std::size_t i = 0; i < bytes; ++i) buffer[i] = static_cast<unsigned char>(i * 131 + 7);
  return buffer;
}

void CypherWrite(benchmark::State& state) {
  std::vector<unsigned char> buffer = MakeBuffer(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    qvsysbase::Cypher::Write(
        buffer.data(), static_cast<unsigned>(buffer.size()), g_key, kKeyLength, buffer.data());
    benchmark::DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void OpenSslWrite(benchmark::State& state) {
  std::vector<unsigned char> buffer = MakeBuffer(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    BF_KEY key;
    BF_set_key(&key, kKeyLength, g_key);
    for (std::size_t offset = 0; offset < buffer.size(); offset += BF_BLOCK) {
      BF_ecb_encrypt(buffer.data() + offset, buffer.data() + offset, &key, BF_ENCRYPT);
    }
    benchmark::DoNotOptimize(buffer.data());
    benchmark::DoNotOptimize(key);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}
#pragma GCC diagnostic pop

constexpr std::int64_t kSizes[] = {64 << 20, 1 << 10, 0};

std::string RunName(const char* function, std::int64_t size) {
  std::string name(function);
  name += '/';
  name += std::to_string(size);
  return name;
}

// Keeps the console output and remembers the CPU seconds per iteration of each
// benchmark, the least over repetitions (the machine is shared; noise only adds).
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
      const double seconds = run.cpu_accumulated_time / static_cast<double>(run.iterations);
      const auto [it, inserted] = m_seconds.emplace(run.run_name.str(), seconds);
      if (!inserted && seconds < it->second) it->second = seconds;
    }
  }

  void PrintRatios() const {
    std::printf("\n%-10s %14s %14s %12s %12s %16s\n",
                "bytes",
                "Cypher us",
                "OpenSSL us",
                "Cypher MB/s",
                "OpenSSL MB/s",
                "OpenSSL/Cypher");
    for (std::int64_t size : kSizes) {
      const auto ours = m_seconds.find(RunName("CypherWrite", size));
      const auto theirs = m_seconds.find(RunName("OpenSslWrite", size));
      if (ours == m_seconds.end() || theirs == m_seconds.end()) continue;
      std::printf("%-10lld %14.3f %14.3f %12.1f %12.1f %16.3f\n",
                  static_cast<long long>(size),
                  ours->second * 1e6,
                  theirs->second * 1e6,
                  static_cast<double>(size) / ours->second / 1e6,
                  static_cast<double>(size) / theirs->second / 1e6,
                  theirs->second / ours->second);
    }
  }

 private:
  std::map<std::string, double> m_seconds;
};

}  // namespace

int main(int argc, char** argv) {
  for (std::int64_t size : kSizes) {
    benchmark::RegisterBenchmark("CypherWrite", CypherWrite)->Arg(size);
    benchmark::RegisterBenchmark("OpenSslWrite", OpenSslWrite)->Arg(size);
  }
  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
