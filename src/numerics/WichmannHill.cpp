// Wichmann and Hill's 1982 generator: three multiplicative congruential
// generators
//   x = 171·x mod 30269,  y = 172·y mod 30307,  z = 170·z mod 30323
// whose fractions are summed, u = frac(x/30269 + y/30307 + z/30323); period
// about 6.95e12. The word is floor(2^32·u), computed exactly in integers:
// u = N / P with P = 30269·30307·30323 and
// N = (x·30307·30323 + y·30269·30323 + z·30269·30307) mod P.
#include <cstddef>
#include <cstdint>

#include "RandomGenerator.h"

namespace qvsysbase::detail {
namespace {

constexpr std::uint64_t kMX = 30269, kMY = 30307, kMZ = 30323;
constexpr std::uint64_t kAX = 171, kAY = 172, kAZ = 170;
constexpr std::uint64_t kProduct = kMX * kMY * kMZ;  // below 2^45

class WichmannHill final : public RandomGenerator {
 public:
  // Start words w0..w2 of MT19937 from the seed: x = 1 + w0 mod 30268,
  // y = 1 + w1 mod 30306, z = 1 + w2 mod 30322 (never 0, the fixed point).
  explicit WichmannHill(std::uint32_t seed) : RandomGenerator(kFullWordRange) {
    std::uint32_t w[3];
    MT19937StartWords(seed, w, 3);
    m_nX = 1 + w[0] % (kMX - 1);
    m_nY = 1 + w[1] % (kMY - 1);
    m_nZ = 1 + w[2] % (kMZ - 1);
  }

  void Generate(std::uint32_t* dst, std::size_t n) override {
    for (std::size_t k = 0; k < n; ++k) dst[k] = Next();
  }

 private:
  std::uint32_t Next() {
    m_nX = kAX * m_nX % kMX;
    m_nY = kAY * m_nY % kMY;
    m_nZ = kAZ * m_nZ % kMZ;
    const std::uint64_t numerator =
        (m_nX * (kMY * kMZ) + m_nY * (kMX * kMZ) + m_nZ * (kMX * kMY)) % kProduct;
    // floor(numerator·2^32 / P) in two 16-bit steps of long division, each
    // dividend below 2^61 (numerator and remainder are below P < 2^45).
    const std::uint64_t high = (numerator << 16) / kProduct;
    const std::uint64_t remainder = (numerator << 16) % kProduct;
    return static_cast<std::uint32_t>((high << 16) + (remainder << 16) / kProduct);
  }

  std::uint64_t m_nX, m_nY, m_nZ;
};

}  // namespace

std::unique_ptr<RandomGenerator> NewWichmannHill(std::uint32_t seed) {
  return std::make_unique<WichmannHill>(seed);
}

}  // namespace qvsysbase::detail
