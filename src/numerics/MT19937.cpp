// MT19937, the 32-bit Mersenne Twister: 624 words of state, regenerated 624 at a
// time, each word tempered on its way out. Seeded as the standard engine's
// seed(value), so its words equal std::mt19937's.
#include <array>
#include <cstddef>
#include <cstdint>

#include "RandomGenerator.h"

namespace qvsysbase::detail {
namespace {

constexpr std::size_t kN = 624;  // words of state
constexpr std::size_t kM = 397;  // the middle word of the recurrence
constexpr std::uint32_t kMatrixA = 0x9908b0dfu;  // the twist's feedback polynomial
constexpr std::uint32_t kUpperBit = 0x80000000u;
constexpr std::uint32_t kInitMultiplier = 1812433253u;  // Knuth's seeding multiplier

// x(k+N) = x(k+M) xor ((upper bit of x(k) | lower 31 bits of x(k+1)) · A), the
// product by A being a shift right by one and, when the low bit was set, an
// xor with kMatrixA.
std::uint32_t Twist(std::uint32_t current, std::uint32_t next, std::uint32_t middle) {
  const std::uint32_t y = (current & kUpperBit) | (next & ~kUpperBit);
  return middle ^ (y >> 1) ^ (kMatrixA & (0u - (y & 1u)));
}

std::uint32_t Temper(std::uint32_t y) {
  y ^= y >> 11;
  y ^= (y << 7) & 0x9d2c5680u;
  y ^= (y << 15) & 0xefc60000u;
  return y ^ (y >> 18);
}

class MT19937 final : public RandomGenerator {
 public:
  explicit MT19937(std::uint32_t seed) : RandomGenerator(kFullWordRange) {
    m_State[0] = seed;
    for (std::uint32_t i = 1; i < kN; ++i) {
      const std::uint32_t previous = m_State[i - 1];
      m_State[i] = kInitMultiplier * (previous ^ (previous >> 30)) + i;
    }
  }

  void Generate(std::uint32_t* dst, std::size_t n) override {
    const auto regenerate = [this] { Regenerate(); };
    const auto temper = [](std::uint32_t w) { return Temper(w); };
    DrawFromBlocks<kN>(m_State.data(), m_nNext, dst, n, regenerate, temper);
  }

 private:
  // Three loops so that each reads words it may read whole vectors of: the
  // first only words not yet replaced, the second words replaced 227 earlier.
  void Regenerate() {
    std::uint32_t* s = m_State.data();
    std::size_t i = 0;
    for (; i < kN - kM; ++i) s[i] = Twist(s[i], s[i + 1], s[i + kM]);
    for (; i < kN - 1; ++i) s[i] = Twist(s[i], s[i + 1], s[i + kM - kN]);
    s[kN - 1] = Twist(s[kN - 1], s[0], s[kM - 1]);
    m_nNext = 0;
  }

  std::array<std::uint32_t, kN> m_State;
  std::size_t m_nNext = kN;  // next word to hand out; kN: regenerate first
};

}  // namespace

std::unique_ptr<RandomGenerator> NewMT19937(std::uint32_t seed) {
  return std::make_unique<MT19937>(seed);
}

}  // namespace qvsysbase::detail
