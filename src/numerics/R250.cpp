// R250, Kirkpatrick and Stoll's shift-register generator: x(n) = x(n-103) xor
// x(n-250) on 32-bit words, period 2^250 - 1 when the start words span all 32
// bit positions. The words are regenerated 250 at a time.
#include <array>
#include <cstddef>
#include <cstdint>

#include "RandomGenerator.h"

namespace qvsysbase::detail {
namespace {

constexpr std::size_t kLong = 250;  // the long lag: words of state
constexpr std::size_t kShort = 103;  // the short lag
// Start words 3, 10, 17, ... (every 7th, 32 of them) are made linearly
// independent over GF(2): word 3 + 7j gets bit 31 - j set and the bits above
// it cleared, a triangular matrix of full rank.
constexpr std::size_t kFirstDiagonalWord = 3;
constexpr std::size_t kDiagonalStride = 7;

class R250 final : public RandomGenerator {
 public:
  // The start words are the first 250 words of MT19937 from the seed, then the
  // diagonal above.
  explicit R250(std::uint32_t seed) : RandomGenerator(kFullWordRange) {
    MT19937StartWords(seed, m_State.data(), kLong);
    std::uint32_t mask = 0xffffffffu;
    std::uint32_t bit = 0x80000000u;
    for (std::size_t j = 0; j < 32; ++j, mask >>= 1, bit >>= 1) {
      std::uint32_t& word = m_State[kFirstDiagonalWord + kDiagonalStride * j];
      word = (word & mask) | bit;
    }
  }

  void Generate(std::uint32_t* dst, std::size_t n) override {
    const auto regenerate = [this] { Regenerate(); };
    const auto asIs = [](std::uint32_t w) { return w; };
    DrawFromBlocks<kLong>(m_State.data(), m_nNext, dst, n, regenerate, asIs);
  }

 private:
  // Word i of the new block is x(250 + i) = x(147 + i) xor x(i): from the old
  // block while 147 + i < 250, from the new one after.
  void Regenerate() {
    std::uint32_t* s = m_State.data();
    std::size_t i = 0;
    for (; i < kShort; ++i) s[i] ^= s[i + kLong - kShort];
    for (; i < kLong; ++i) s[i] ^= s[i - kShort];
    m_nNext = 0;
  }

  std::array<std::uint32_t, kLong> m_State;
  std::size_t m_nNext = kLong;  // kLong: regenerate first, the start words are not output
};

}  // namespace

std::unique_ptr<RandomGenerator> NewR250(std::uint32_t seed) {
  return std::make_unique<R250>(seed);
}

}  // namespace qvsysbase::detail
