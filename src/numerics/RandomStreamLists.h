// The two lists of random streams behind the random slots of the kernel-library
// set, their lock and the clock seeds; the slot routines that FastKernels.cpp
// installs; and seams for tests.
#ifndef QVSYSBASE_SRC_NUMERICS_RANDOMSTREAMLISTS_H_
#define QVSYSBASE_SRC_NUMERICS_RANDOMSTREAMLISTS_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "RandomGenerator.h"

namespace qvsysbase::detail {

// Statuses of stream creation and drawing, as the vendor's statistical library
// numbers them.
enum RandomStatus : int {
  kRngOk = 0,
  kRngNullStream = -5,
  kRngMemoryFailure = -4,
  kRngInvalidBrng = -1000,
  kRngBadStream = -1006,
  kRngPeriodExceeded = -1012,
  kRngBadCallbackReturn = -1120,
  kRngCallbackReturnsZero = -1121,
  kRngTooManyRetries = -1131,
};

// The text reported for a failed stream creation (status != 0).
std::string InitStreamStatusText(int status);
// The text reported for a failed draw; `kernel` is "mkldbRandGaus" or
// "mkliRandUniform".
std::string DrawStatusText(const char* kernel, int status);

// One stream of a list: its generator (null while no stream exists) and the
// constant of the generator its next (re)initialisation creates.
class VSLStreamStateHolder {
 public:
  explicit VSLStreamStateHolder(unsigned brng) : m_nBRNG(brng) {}
  VSLStreamStateHolder(const VSLStreamStateHolder&) = delete;
  VSLStreamStateHolder& operator=(const VSLStreamStateHolder&) = delete;

  // Deletes the stream, then creates one of the holder's generator from seed.
  // Returns the status (kRngOk, kRngInvalidBrng, kRngMemoryFailure).
  int InitStream(std::uint32_t seed);

  RandomGenerator* stream() const { return m_pStream.get(); }
  unsigned brng() const { return m_nBRNG; }
  void set_brng(unsigned brng) { m_nBRNG = brng; }

 private:
  std::unique_ptr<RandomGenerator> m_pStream;
  unsigned m_nBRNG;
};

// ---- The slot routines of the kernel-library set -----------------------------
int mklInitRandGen(bool fixedSeed, unsigned index);
int mklInitRandGenWithSeed(int seed, unsigned index);
void mkldbRandGaus(double* dst, int n, unsigned index);
int mklInitRandUniformGen(int seed, bool useClock, unsigned index);
void mkliRandUniformBits(unsigned* dst, int n, unsigned index);

// Deletes every stream and empties both lists (leaving mode 1, and unload).
void DeleteAllRandomStreams();

// ---- Seams for tests. ----------------------------------------------------------
// Number of holders of a list, and the generator constant of one (REQUIRES:
// index below the length).
std::size_t RandomListLength(bool gaussian);
const VSLStreamStateHolder& RandomHolder(bool gaussian, std::size_t index);

// Reads a clock in nanoseconds; false when it cannot be read.
using ClockReadFn = bool (*)(std::uint64_t* nanoseconds);
struct SeedClocks {
  ClockReadFn monotonic;
  ClockReadFn realtime;
};
// Replaces the clocks of clock seeds; returns the previous ones. A null member
// restores that system clock.
SeedClocks SetSeedClocks(SeedClocks clocks);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_RANDOMSTREAMLISTS_H_
