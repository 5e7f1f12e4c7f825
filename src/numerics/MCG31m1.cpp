// MCG31m1: x(k+1) = a·x(k) mod m, a = 1132489760, m = 2^31 - 1, a prime, so
// every state in 1 .. m - 1 lies on the one cycle of length m - 1.
#include <cstddef>
#include <cstdint>

#include "RandomGenerator.h"

namespace qvsysbase::detail {
namespace {

constexpr std::uint64_t kModulus = 2147483647u;  // 2^31 - 1
constexpr std::uint64_t kMultiplier = 1132489760u;

// t mod (2^31 - 1) for t < 2^62: 2^31 is 1 modulo m, so the high part folds
// onto the low part; one fold leaves at most m + 2^31, one subtraction the rest.
std::uint64_t ModMersenne31(std::uint64_t t) {
  std::uint64_t r = (t & kModulus) + (t >> 31);
  r = (r & kModulus) + (r >> 31);
  return r >= kModulus ? r - kModulus : r;
}

class MCG31m1 final : public RandomGenerator {
 public:
  // The seed modulo m; 0 is not a state of the cycle and becomes 1.
  explicit MCG31m1(std::uint32_t seed)
      : RandomGenerator({1, static_cast<double>(kModulus - 1)}), m_nState(seed % kModulus) {
    if (m_nState == 0) m_nState = 1;
  }

  void Generate(std::uint32_t* dst, std::size_t n) override {
    std::uint64_t x = m_nState;
    for (std::size_t k = 0; k < n; ++k) {
      x = ModMersenne31(kMultiplier * x);
      dst[k] = static_cast<std::uint32_t>(x);
    }
    m_nState = x;
  }

 private:
  std::uint64_t m_nState;  // in 1 .. m - 1
};

}  // namespace

std::unique_ptr<RandomGenerator> NewMCG31m1(std::uint32_t seed) {
  return std::make_unique<MCG31m1>(seed);
}

}  // namespace qvsysbase::detail
