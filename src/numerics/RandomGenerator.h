// The basic random generators behind the random streams: each turns one 32-bit
// seed into its state and then yields raw 32-bit words. How each one is seeded
// and what its word is are written down with the constants in
// qvsysbase/RandomStreams.h; this header is the units' common shape.
//
// Thread-safety: thread-compatible; a generator belongs to one thread at a time.
#ifndef QVSYSBASE_SRC_NUMERICS_RANDOMGENERATOR_H_
#define QVSYSBASE_SRC_NUMERICS_RANDOMGENERATOR_H_

#include <cstddef>
#include <cstdint>
#include <memory>

namespace qvsysbase::detail {

// The raw words of a generator lie in [lowest, lowest + span - 1]; the uniform
// number of a word w is (w - lowest + 0.5) / span, strictly inside (0, 1).
struct WordRange {
  std::uint32_t lowest;
  double span;
};

// Every 32-bit value is a word: (w + 0.5) / 2^32.
inline constexpr WordRange kFullWordRange{0, 4294967296.0};

class RandomGenerator {
 public:
  explicit RandomGenerator(WordRange range) : m_Range(range) {}
  virtual ~RandomGenerator() = default;
  RandomGenerator(const RandomGenerator&) = delete;
  RandomGenerator& operator=(const RandomGenerator&) = delete;

  // Writes the next n raw words to dst.
  virtual void Generate(std::uint32_t* dst, std::size_t n) = 0;
  WordRange Range() const { return m_Range; }

 private:
  const WordRange m_Range;
};

// Writes output(word) for the next n words of a generator whose state is a
// block of kWords words handed out in order: the words from `next` on, the
// block renewed by regenerate() (which sets next to 0) each time it is used
// up. Each stretch is one loop over contiguous words, written to be vectorised.
template <std::size_t kWords, class Regenerate, class Output>
void DrawFromBlocks(const std::uint32_t* block, std::size_t& next, std::uint32_t* dst,
                    std::size_t n, Regenerate regenerate, Output output) {
  while (n > 0) {
    if (next == kWords) regenerate();
    const std::size_t take = n < kWords - next ? n : kWords - next;
    const std::uint32_t* src = block + next;
    for (std::size_t k = 0; k < take; ++k) dst[k] = output(src[k]);
    next += take;
    dst += take;
    n -= take;
  }
}

// One factory per generator unit.
std::unique_ptr<RandomGenerator> NewMT19937(std::uint32_t seed);
std::unique_ptr<RandomGenerator> NewMCG31m1(std::uint32_t seed);
std::unique_ptr<RandomGenerator> NewMRG32k3a(std::uint32_t seed);
std::unique_ptr<RandomGenerator> NewR250(std::uint32_t seed);
std::unique_ptr<RandomGenerator> NewMCG59(std::uint32_t seed);
std::unique_ptr<RandomGenerator> NewWichmannHill(std::uint32_t seed);

// The generator of the family-table constant `brng` from `seed`; null for a
// constant that names no generator. Throws std::bad_alloc when memory runs out.
std::unique_ptr<RandomGenerator> NewRandomGenerator(unsigned brng, std::uint32_t seed);

// The first n raw words of MT19937 from `seed`: the start words of the
// generators whose state is wider than one seed.
void MT19937StartWords(std::uint32_t seed, std::uint32_t* dst, std::size_t n);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_RANDOMGENERATOR_H_
