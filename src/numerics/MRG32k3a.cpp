// MRG32k3a, L'Ecuyer's combined multiple recursive generator of two order-3
// components:
//   x1(n) = (1403580·x1(n-2) - 810728·x1(n-3))  mod m1,  m1 = 2^32 - 209
//   x2(n) = (527612·x2(n-1) - 1370589·x2(n-3))  mod m2,  m2 = 2^32 - 22853
//   z(n)  = x1(n) - x2(n) when positive, else x1(n) - x2(n) + m1: 1 .. m1.
// Period about 2^191.
#include <cstddef>
#include <cstdint>

#include "RandomGenerator.h"

namespace qvsysbase::detail {
namespace {

constexpr std::int64_t kM1 = 4294967087;
constexpr std::int64_t kM2 = 4294944443;
constexpr std::int64_t kA12 = 1403580;
constexpr std::int64_t kA13n = 810728;
constexpr std::int64_t kA21 = 527612;
constexpr std::int64_t kA23n = 1370589;

// a mod m in 0 .. m - 1 for |a| < 2^63 (the products stay below 2^53).
std::int64_t Mod(std::int64_t a, std::int64_t m) {
  const std::int64_t r = a % m;
  return r < 0 ? r + m : r;
}

class MRG32k3a final : public RandomGenerator {
 public:
  // Start words w0..w5 of MT19937 from the seed: x1 = (w0, w1, w2) mod m1 and
  // x2 = (w3, w4, w5) mod m2, oldest first. A component that came out all zero
  // (the one state it must not have) gets 1 as its oldest word.
  explicit MRG32k3a(std::uint32_t seed) : RandomGenerator({1, static_cast<double>(kM1)}) {
    std::uint32_t w[6];
    MT19937StartWords(seed, w, 6);
    for (int k = 0; k < 3; ++k) {
      m_X1[k] = Mod(w[k], kM1);
      m_X2[k] = Mod(w[3 + k], kM2);
    }
    if (m_X1[0] == 0 && m_X1[1] == 0 && m_X1[2] == 0) m_X1[0] = 1;
    if (m_X2[0] == 0 && m_X2[1] == 0 && m_X2[2] == 0) m_X2[0] = 1;
  }

  void Generate(std::uint32_t* dst, std::size_t n) override {
    for (std::size_t k = 0; k < n; ++k) dst[k] = Next();
  }

 private:
  std::uint32_t Next() {
    const std::int64_t p1 = Mod(kA12 * m_X1[1] - kA13n * m_X1[0], kM1);
    const std::int64_t p2 = Mod(kA21 * m_X2[2] - kA23n * m_X2[0], kM2);
    m_X1[0] = m_X1[1];
    m_X1[1] = m_X1[2];
    m_X1[2] = p1;
    m_X2[0] = m_X2[1];
    m_X2[1] = m_X2[2];
    m_X2[2] = p2;
    return static_cast<std::uint32_t>(p1 > p2 ? p1 - p2 : p1 - p2 + kM1);
  }

  std::int64_t m_X1[3];  // x1(n-3), x1(n-2), x1(n-1)
  std::int64_t m_X2[3];  // x2(n-3), x2(n-2), x2(n-1)
};

}  // namespace

std::unique_ptr<RandomGenerator> NewMRG32k3a(std::uint32_t seed) {
  return std::make_unique<MRG32k3a>(seed);
}

}  // namespace qvsysbase::detail
