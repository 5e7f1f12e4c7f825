// The family-table constants mapped to their generator units.
#include "RandomGenerator.h"

#include "qvsysbase/RandomStreams.h"

namespace qvsysbase::detail {

std::unique_ptr<RandomGenerator> NewRandomGenerator(unsigned brng, std::uint32_t seed) {
  switch (brng) {
    case kBrngMCG31: return NewMCG31m1(seed);
    case kBrngR250: return NewR250(seed);
    case kBrngMRG32K3A: return NewMRG32k3a(seed);
    case kBrngMCG59: return NewMCG59(seed);
    case kBrngWH: return NewWichmannHill(seed);
    case kBrngMT19937: return NewMT19937(seed);
    default: return nullptr;
  }
}

void MT19937StartWords(std::uint32_t seed, std::uint32_t* dst, std::size_t n) {
  NewMT19937(seed)->Generate(dst, n);
}

}  // namespace qvsysbase::detail
