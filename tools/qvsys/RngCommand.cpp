// qvsys rng GENERATOR [--gauss] [--seed S] [--count N]: raw 32-bit words of one
// generator on standard output, in the machine's byte order, for an outside
// battery of tests (dieharder -g 200 reads them). With --gauss the stream's
// standard normals are mapped back through the normal distribution function,
// floor(2^32·Phi(z)), so the same battery judges the Gaussian stream. Without
// --count the words go on until the reader closes the pipe.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "Commands.h"
#include "qvsysbase/RandomStreams.h"

namespace qvsys {
namespace {

constexpr std::size_t kBlockWords = 4096;
constexpr double kTwoTo32 = 4294967296.0;

struct GeneratorName {
  const char* name;
  unsigned brng;
};
constexpr GeneratorName kGenerators[] = {
    {"MT19937", qvsysbase::kBrngMT19937}, {"MCG31", qvsysbase::kBrngMCG31},
    {"MRG32K3A", qvsysbase::kBrngMRG32K3A}, {"R250", qvsysbase::kBrngR250},
    {"MCG59", qvsysbase::kBrngMCG59},       {"WH", qvsysbase::kBrngWH}};

struct RngOptions {
  unsigned brng = 0;
  bool gauss = false;
  std::uint32_t seed = 1;
  std::optional<std::uint64_t> count;  // none: without end
};

std::optional<std::uint64_t> ParseUnsigned(const std::string& text, std::uint64_t most) {
  if (text.empty() || text.size() > 20 || text.find_first_not_of("0123456789") != std::string::npos)
    return std::nullopt;
  const unsigned long long value = std::stoull(text);
  if (value > most) return std::nullopt;
  return value;
}

std::optional<unsigned> FindGenerator(const std::string& name) {
  for (const GeneratorName& g : kGenerators) {
    if (name == g.name) return g.brng;
  }
  return std::nullopt;
}

// Fills `options` from the arguments; false (with a message) on a bad one.
bool ParseOptions(const Arguments& args, RngOptions& options) {
  if (args.empty()) return false;
  const std::optional<unsigned> brng = FindGenerator(args[0]);
  if (!brng) return false;
  options.brng = *brng;
  for (std::size_t i = 1; i < args.size(); ++i) {
    if (args[i] == "--gauss") {
      options.gauss = true;
      continue;
    }
    if (i + 1 == args.size()) return false;
    const std::string& value = args[++i];
    if (args[i - 1] == "--seed") {
      const auto seed = ParseUnsigned(value, std::numeric_limits<std::uint32_t>::max());
      if (!seed) return false;
      options.seed = static_cast<std::uint32_t>(*seed);
    } else if (args[i - 1] == "--count") {
      options.count = ParseUnsigned(value, std::numeric_limits<std::uint64_t>::max());
      if (!options.count) return false;
    } else {
      return false;
    }
  }
  return true;
}

// floor(2^32·Phi(z)), Phi(z) = erfc(-z/sqrt 2)/2, kept below 2^32.
std::uint32_t NormalToWord(double z) {
  const double scaled = std::floor(0.5 * std::erfc(-z / std::sqrt(2.0)) * kTwoTo32);
  return scaled >= kTwoTo32 ? 0xffffffffu : static_cast<std::uint32_t>(scaled);
}

void NextBlock(qvsysbase::StandaloneRandomStream& stream, bool gauss, unsigned* words, int n) {
  if (!gauss) return stream.UniformBits(words, n);
  std::vector<double> normals(static_cast<std::size_t>(n));
  stream.Gaussian(normals.data(), n);
  for (int k = 0; k < n; ++k) words[k] = NormalToWord(normals[static_cast<std::size_t>(k)]);
}

}  // namespace

int RunRng(const Arguments& args) {
  RngOptions options;
  if (!ParseOptions(args, options)) {
    std::cerr << "qvsys rng: expected GENERATOR (MT19937, MCG31, MRG32K3A, R250, MCG59, WH)"
                 " [--gauss] [--seed 0..4294967295] [--count N]\n";
    return 1;
  }
  qvsysbase::StandaloneRandomStream stream(options.brng, options.seed);
  std::vector<unsigned> words(kBlockWords);
  std::uint64_t left = options.count.value_or(std::numeric_limits<std::uint64_t>::max());
  while (left > 0) {
    const std::size_t n = left < kBlockWords ? static_cast<std::size_t>(left) : kBlockWords;
    NextBlock(stream, options.gauss, words.data(), static_cast<int>(n));
    if (std::fwrite(words.data(), sizeof(unsigned), n, stdout) != n) {
      // The reader has gone: the normal end of a stream without --count.
      return options.count ? 1 : 0;
    }
    if (options.count) left -= n;
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace qvsys
