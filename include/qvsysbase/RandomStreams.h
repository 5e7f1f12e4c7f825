// Random number streams: the basic generators of the kernel-library set, how
// each is seeded, what its raw word is, and how standard normal numbers are
// made from the words.
//
// The application draws through the random slots of IntelSPLHandler (mode 1):
// InitRandGen, InitRandGenWithSeed and nspdbRandGaus serve the Gaussian list of
// streams, InitRandUniformGen and nspiRandUniformBits the uniform list, and
// IntelSPLHandler::setBRNGFamily chooses the generator of one list. Each list
// holds any number of streams, addressed by a zero-based index, so that
// independent computations draw from streams of their own. StandaloneRandomStream
// below draws from one generator outside the lists (for tools that judge them).
//
// Generators, by their constant. A seed is taken as its 32-bit pattern (an int
// seed s as the unsigned value s mod 2^32). "MT19937 start words" are the first
// raw words of MT19937 seeded with the same seed.
//   kBrngMT19937  Mersenne Twister, period 2^19937 - 1. Seeded as the standard
//                 engine's seed(value): x(0) = seed, x(i) = 1812433253·(x(i-1)
//                 xor (x(i-1) >> 30)) + i for i < 624. Word: the tempered
//                 output, equal to std::mt19937's.
//   kBrngMCG31    x(k+1) = 1132489760·x(k) mod (2^31 - 1). x(0) = seed mod
//                 (2^31 - 1), and 1 when that is 0. Word: the state x(k), k >= 1,
//                 in 1 .. 2^31 - 2: bit 31 is always 0.
//   kBrngMRG32K3A L'Ecuyer's MRG32k3a, period about 2^191. x1 = start words 0..2
//                 mod (2^32 - 209), x2 = start words 3..5 mod (2^32 - 22853),
//                 oldest first. Word: the combined output z in 1 .. 2^32 - 209.
//   kBrngR250     x(n) = x(n-103) xor x(n-250). The 250 start words, with word
//                 3 + 7j given bit 31 - j and the bits above it cleared
//                 (j = 0..31). Word: x(250), x(251), ...
//   kBrngMCG59    x(k+1) = 13^13·x(k) mod 2^59. x(0) = 2·seed + 1 (odd: the
//                 cycle of 2^57). Word: bits 27..58 of x(k), k >= 1.
//   kBrngWH       Wichmann–Hill 1982: x = 171x mod 30269, y = 172y mod 30307,
//                 z = 170z mod 30323, from 1 + start words 0, 1, 2 modulo
//                 30268, 30306 and 30322. Word: floor(2^32·frac(x/30269 +
//                 y/30307 + z/30323)), computed exactly.
//
// Uniform numbers and Box–Muller. A word w of a generator whose words lie in
// [lo, lo + span - 1] gives u = (w - lo + 0.5)·(1/span): (w + 0.5)·2^-32 for the
// full-word generators, (w - 0.5)·(1/(2^31 - 2)) for MCG31, (w - 0.5)·(1/m1) for
// MRG32K3A. u lies strictly inside (0, 1), so log(0) never occurs and nothing is
// rejected. Each pair of consecutive words (w1, w2) gives two normals, both used,
// in this order:
//   z1 = sqrt(-2·ln u1) · cos(2π·u2),   z2 = sqrt(-2·ln u1) · sin(2π·u2),
// with ln within 1 ulp and sin, cos of 2π·u2 within 0.506 ulp (evaluated as
// sinpi, cospi of 2·u2). A request for an odd count uses the first number of its
// last pair and drops the second, so n numbers always take 2·ceil(n/2) words.
// The numbers are bit-identical on every run, thread count and instruction set:
// every vector width computes each lane with the same operations (no fused
// multiply-add), and the scalar path is the reference.
//
// Known weaknesses, kept because the generators are what they are:
//   - MCG31's period is 2^31 - 2: a long simulation goes round it, and its words
//     carry 31 random bits, not 32 (bit 31 is 0), which word-level tests see.
//   - Streams of a multiplicative generator (MCG31, MCG59) from nearby seeds are
//     strongly correlated: state k of seed s + d is state k of seed s plus
//     d·a^k (mod m), so for small d the two streams' words keep a fixed offset
//     pattern. Seed independent streams far apart, or use MT19937.
//   - R250 fails published batteries: its words obey an exact linear relation
//     over GF(2) (x(n) xor x(n-103) xor x(n-250) = 0), which matrix-rank and
//     random-walk tests detect.
//   - Wichmann–Hill fails published batteries: its period (about 6.95e12) is
//     small by current standards and its fractions are a sum of three small
//     lattices.
//   Both pass dieharder's default battery, whose matrices and samples are too
//   small to reach these flaws: passing it is no clean bill for either.
//
// Thread-safety: the stream lists are thread-safe under their lock (set-up,
// setBRNGFamily, emptying); drawing takes no lock, so a stream index must be
// drawn from by one thread at a time. StandaloneRandomStream is
// thread-compatible.
#ifndef QVSYSBASE_RANDOMSTREAMS_H_
#define QVSYSBASE_RANDOMSTREAMS_H_

#include <cstdint>

#include "qvsysbase/Export.h"

namespace qvsysbase {

namespace detail {
class RandomGenerator;
}

// Basic random generators, by the constants of the family table.
inline constexpr unsigned kBrngMCG31 = 0x100000;
inline constexpr unsigned kBrngR250 = 0x200000;
inline constexpr unsigned kBrngMRG32K3A = 0x300000;
inline constexpr unsigned kBrngMCG59 = 0x400000;
inline constexpr unsigned kBrngWH = 0x500000;
inline constexpr unsigned kBrngMT19937 = 0x800000;

// The most streams one list holds: an index at or above it is refused before
// anything is allocated.
inline constexpr unsigned kMaxRandomStreams = 65536;

// One generator drawn from directly, outside the stream lists, with the same
// words and normals as a stream of the same generator and seed. Not copyable.
class QVSYSBASE_API StandaloneRandomStream {
 public:
  // Throws std::domain_error "unknown random generator" for a constant that
  // names no generator.
  StandaloneRandomStream(unsigned brng, std::uint32_t seed);
  ~StandaloneRandomStream();
  StandaloneRandomStream(const StandaloneRandomStream&) = delete;
  StandaloneRandomStream& operator=(const StandaloneRandomStream&) = delete;

  // The next n raw words. n <= 0 draws nothing. REQUIRES: dst || n <= 0
  void UniformBits(unsigned* dst, int n);
  // The next n standard normal numbers. n <= 0 draws nothing.
  // REQUIRES: dst || n <= 0
  void Gaussian(double* dst, int n);

 private:
  detail::RandomGenerator* m_pGenerator;  // owned
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_RANDOMSTREAMS_H_
