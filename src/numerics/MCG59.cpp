// MCG59: x(k+1) = a·x(k) mod 2^59 with a = 13^13. An odd state stays odd and
// runs through a cycle of 2^57 states; the word is the state's top 32 bits,
// because the low bits of a power-of-two modulus have short periods of their own
// (bit j of an odd state repeats after at most 2^(j-1) steps).
#include <cstddef>
#include <cstdint>

#include "RandomGenerator.h"

namespace qvsysbase::detail {
namespace {

constexpr std::uint64_t kMultiplier = 302875106592253u;  // 13^13
constexpr std::uint64_t kMask = (std::uint64_t{1} << 59) - 1;
constexpr int kWordShift = 59 - 32;
static_assert(kMultiplier == 13ull * 13 * 13 * 13 * 13 * 13 * 13 * 13 * 13 * 13 * 13 * 13 * 13);

class MCG59 final : public RandomGenerator {
 public:
  // 2·seed + 1: odd, so every seed starts on the long cycle, and distinct seeds
  // give distinct states.
  explicit MCG59(std::uint32_t seed)
      : RandomGenerator(kFullWordRange), m_nState(2 * std::uint64_t{seed} + 1) {}

  void Generate(std::uint32_t* dst, std::size_t n) override {
    std::uint64_t x = m_nState;
    for (std::size_t k = 0; k < n; ++k) {
      x = (kMultiplier * x) & kMask;  // the product wraps modulo 2^64, a multiple of 2^59
      dst[k] = static_cast<std::uint32_t>(x >> kWordShift);
    }
    m_nState = x;
  }

 private:
  std::uint64_t m_nState;  // odd, below 2^59
};

}  // namespace

std::unique_ptr<RandomGenerator> NewMCG59(std::uint32_t seed) {
  return std::make_unique<MCG59>(seed);
}

}  // namespace qvsysbase::detail
