// Cypher::Write against OpenSSL's Blowfish in the same process.
//
// Each Cypher::Write keys a fresh engine, so the OpenSSL side keys anew in
// every iteration too (BF_set_key, then BF_ecb_encrypt block by block). Sizes:
// 64 MiB (throughput), 1 KiB (a short message, where keying dominates) and 0
// bytes (keying alone). The table's ratio is Cypher/OpenSSL (below 1: Cypher
// is faster).
#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

#include "RatioReporter.h"
#include "qvsysbase/Cypher.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <openssl/blowfish.h>

namespace {

constexpr int kKeyLength = 16;
unsigned char g_key[kKeyLength] = {
    0x0F, 0x1E, 0x2D, 0x3C, 0x4B, 0x5A, 0x69, 0x78, 0x87, 0x96, 0xA5, 0xB4, 0xC3, 0xD2, 0xE1, 0xF0};

// One buffer per size for both arms, allocated and touched once.
std::vector<unsigned char>& BufferOf(std::size_t bytes) {
  static std::map<std::size_t, std::vector<unsigned char>> buffers;
  std::vector<unsigned char>& buffer = buffers[bytes];
  if (buffer.size() != bytes) {
    buffer.resize(bytes);
    for (std::size_t i = 0; i < bytes; ++i) buffer[i] = static_cast<unsigned char>(i * 131 + 7);
  }
  return buffer;
}

void CypherWrite(benchmark::State& state, std::size_t bytes) {
  std::vector<unsigned char>& buffer = BufferOf(bytes);
  for (auto _ : state) {
    qvsysbase::Cypher::Write(
        buffer.data(), static_cast<unsigned>(buffer.size()), g_key, kKeyLength, buffer.data());
    benchmark::DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

void OpenSslWrite(benchmark::State& state, std::size_t bytes) {
  std::vector<unsigned char>& buffer = BufferOf(bytes);
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
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}
#pragma GCC diagnostic pop

constexpr std::size_t kSizes[] = {64 << 20, 1 << 10, 0};

}  // namespace

int main(int argc, char** argv) {
  for (const std::size_t size : kSizes) {
    qvbench::AddPair(
        "Write/" + std::to_string(size),
        [size](benchmark::State& state) { CypherWrite(state, size); },
        [size](benchmark::State& state) { OpenSslWrite(state, size); });
  }
  return qvbench::RunPairs(argc, argv);
}
