// The random streams of the kernel-library set: two lists of stream holders
// (Gaussian and uniform), one lock over both, and the clock seeds.
//
// Invariants:
//  - Holders are appended under the lock and never moved: a list is a fixed
//    table of chunks, so a holder's address stays valid until the list is
//    emptied, and its length is published (release) after the holder is in
//    place. Drawing reads the length (acquire) and the holder without the lock.
//  - A holder's stream is only replaced by its (re)initialisation, under the
//    lock; drawing uses it without the lock, so one stream index belongs to one
//    drawing thread at a time, and no thread draws while the lists are emptied.
//  - The generator constant of a holder is read and written under the lock only.
#include "RandomStreamLists.h"

#include <time.h>

#include <atomic>
#include <new>
#include <stdexcept>

#include "BoxMuller.h"
#include "NumericsHooks.h"
#include "qvsysbase/CriticalSection.h"
#include "qvsysbase/IntelSPLHandler.h"
#include "qvsysbase/KernelErrorReport.h"
#include "qvsysbase/RandomStreams.h"
#include "qvsysbase/qvExcept.h"

QV_UNIT("RandomStreamLists", "$Revision: #1 $")

namespace qvsysbase::detail {
namespace {

// The bounds check of a list, as the original container words it.
constexpr const char* kSubscriptOutOfRange = "vector subscript out of range";
constexpr const char* kGaussianKernel = "mkldbRandGaus";
constexpr const char* kUniformKernel = "mkliRandUniform";

// setBRNGFamily's family numbers 0..5, in order.
constexpr unsigned kFamilyTable[] = {kBrngMT19937, kBrngMRG32K3A, kBrngMCG31,
                                     kBrngR250,    kBrngMCG59,    kBrngWH};
constexpr unsigned kFamilyCount = sizeof(kFamilyTable) / sizeof(kFamilyTable[0]);

class HolderList {
 public:
  // Chunks of 256 holders, enough of them for kMaxRandomStreams.
  static constexpr std::size_t kChunk = 256;
  static constexpr std::size_t kChunks = kMaxRandomStreams / kChunk;

  std::size_t Length() const { return m_nLength.load(std::memory_order_acquire); }
  // REQUIRES: index < Length()
  VSLStreamStateHolder& At(std::size_t index) const {
    return *m_Chunks[index / kChunk][index % kChunk];
  }
  // Under the lock. REQUIRES: Length() < kMaxRandomStreams
  void Append(unsigned brng) {
    const std::size_t index = m_nLength.load(std::memory_order_relaxed);
    auto& chunk = m_Chunks[index / kChunk];
    if (!chunk) chunk = std::make_unique<std::unique_ptr<VSLStreamStateHolder>[]>(kChunk);
    chunk[index % kChunk] = std::make_unique<VSLStreamStateHolder>(brng);
    m_nLength.store(index + 1, std::memory_order_release);
  }
  // Under the lock, with no thread drawing: destroys every holder.
  void Clear() {
    m_nLength.store(0, std::memory_order_release);
    for (auto& chunk : m_Chunks) chunk.reset();
  }

 private:
  std::unique_ptr<std::unique_ptr<VSLStreamStateHolder>[]> m_Chunks[kChunks];
  std::atomic<std::size_t> m_nLength{0};
};

bool ReadClock(clockid_t clock, std::uint64_t* nanoseconds) {
  timespec now{};
  if (clock_gettime(clock, &now) != 0) return false;
  *nanoseconds = static_cast<std::uint64_t>(now.tv_sec) * 1000000000u +
                 static_cast<std::uint64_t>(now.tv_nsec);
  return true;
}
bool ReadMonotonic(std::uint64_t* nanoseconds) { return ReadClock(CLOCK_MONOTONIC, nanoseconds); }
bool ReadRealtime(std::uint64_t* nanoseconds) { return ReadClock(CLOCK_REALTIME, nanoseconds); }

// Created by the library-load step, deleted at unload.
constinit CriticalSection* g_pLock = nullptr;
constinit HolderList* g_pGaussian = nullptr;
constinit HolderList* g_pUniform = nullptr;
// Guarded by *g_pLock.
constinit std::uint32_t g_nClockSeeds = 0;
constinit SeedClocks g_Clocks{&ReadMonotonic, &ReadRealtime};

HolderList& ListOf(bool gaussian) { return gaussian ? *g_pGaussian : *g_pUniform; }

// Under the lock. The low 32 bits of the monotonic clock's nanoseconds (the
// real-time clock's when it cannot be read) plus the count of clock seeds
// taken so far, so that two streams seeded in the same tick differ.
std::uint32_t NextClockSeed() {
  std::uint64_t now = 0;
  if (!g_Clocks.monotonic(&now)) g_Clocks.realtime(&now);
  return static_cast<std::uint32_t>(now) + g_nClockSeeds++;
}

// Initialises holder `index` of the list, appending holders up to it.
int InitStreamOf(bool gaussian, std::uint32_t seed, bool useClock, unsigned index) {
  QV_ASSERT(index < kMaxRandomStreams);
  qvLocker lock(g_pLock);
  HolderList& list = ListOf(gaussian);
  const unsigned brng = list.Length() > 0 ? list.At(0).brng()
                        : gaussian       ? kBrngMT19937
                                         : kBrngMCG31;
  while (list.Length() <= index) list.Append(brng);
  if (useClock) seed = NextClockSeed();
  const int status = list.At(index).InitStream(seed);
  if (status != kRngOk) ReportKernelError(InitStreamStatusText(status));
  return static_cast<int>(seed);
}

// The stream a draw from holder `index` uses; null when the holder has none.
RandomGenerator* StreamToDraw(bool gaussian, unsigned index) {
  const HolderList& list = ListOf(gaussian);
  if (index >= list.Length()) throw std::out_of_range(kSubscriptOutOfRange);
  return list.At(index).stream();
}

}  // namespace

std::string InitStreamStatusText(int status) {
  const std::string prefix = "VSLStreamStateHolder::InitStream() - ";
  switch (status) {
    case kRngInvalidBrng: return prefix + "BRNG index is invalid";
    case kRngMemoryFailure: return prefix + "failed to allocate memory in vslNewStream()";
    default: return prefix + "vslNewStream() failed";
  }
}

std::string DrawStatusText(const char* kernel, int status) {
  const std::string prefix = std::string(kernel) + " - ";
  switch (status) {
    case kRngNullStream: return prefix + "stream is a NULL pointer";
    case kRngBadStream: return prefix + "stream is not a valid random stream";
    case kRngPeriodExceeded: return prefix + "Period of the generator has been exceeded";
    case kRngBadCallbackReturn: return prefix + "invalid return from BRNG callback";
    case kRngCallbackReturnsZero: return prefix + "BRNG callback returns zero";
    case kRngTooManyRetries: return prefix + "Number of retries exceeds threshold";
    // The uniform kernel names the Gaussian routine here too, deliberately.
    default: return prefix + "vdRngGaussian() failed";
  }
}

int VSLStreamStateHolder::InitStream(std::uint32_t seed) {
  m_pStream.reset();
  try {
    m_pStream = NewRandomGenerator(m_nBRNG, seed);
  } catch (const std::bad_alloc&) {
    return kRngMemoryFailure;
  }
  return m_pStream ? kRngOk : kRngInvalidBrng;
}

int mklInitRandGen(bool fixedSeed, unsigned index) {
  // The flag is inverted: true means the fixed seed 0, false a clock seed.
  return InitStreamOf(true, 0, !fixedSeed, index);
}

int mklInitRandGenWithSeed(int seed, unsigned index) {
  return InitStreamOf(true, static_cast<std::uint32_t>(seed), false, index);
}

int mklInitRandUniformGen(int seed, bool useClock, unsigned index) {
  return InitStreamOf(false, static_cast<std::uint32_t>(seed), useClock, index);
}

void mkldbRandGaus(double* dst, int n, unsigned index) {
  QV_ASSERT(dst || n <= 0);
  RandomGenerator* stream = StreamToDraw(true, index);
  if (n <= 0) return;
  if (stream == nullptr) return ReportKernelError(DrawStatusText(kGaussianKernel, kRngNullStream));
  GenerateGaussian(*stream, dst, static_cast<std::size_t>(n));
}

void mkliRandUniformBits(unsigned* dst, int n, unsigned index) {
  QV_ASSERT(dst || n <= 0);
  RandomGenerator* stream = StreamToDraw(false, index);
  if (n <= 0) return;
  if (stream == nullptr) return ReportKernelError(DrawStatusText(kUniformKernel, kRngNullStream));
  stream->Generate(dst, static_cast<std::size_t>(n));
}

void DeleteAllRandomStreams() {
  if (g_pLock == nullptr) return;
  qvLocker lock(g_pLock);
  g_pGaussian->Clear();
  g_pUniform->Clear();
}

void InitializeRandomStreamUnit() {
  g_pLock = new CriticalSection;
  g_pGaussian = new HolderList;
  g_pUniform = new HolderList;
}

void FinalizeRandomStreamUnit() {
  DeleteAllRandomStreams();
  delete g_pUniform;
  delete g_pGaussian;
  delete g_pLock;
  g_pUniform = g_pGaussian = nullptr;
  g_pLock = nullptr;
}

std::size_t RandomListLength(bool gaussian) { return ListOf(gaussian).Length(); }

const VSLStreamStateHolder& RandomHolder(bool gaussian, std::size_t index) {
  return ListOf(gaussian).At(index);
}

SeedClocks SetSeedClocks(SeedClocks clocks) {
  qvLocker lock(g_pLock);
  const SeedClocks previous = g_Clocks;
  g_Clocks.monotonic = clocks.monotonic != nullptr ? clocks.monotonic : &ReadMonotonic;
  g_Clocks.realtime = clocks.realtime != nullptr ? clocks.realtime : &ReadRealtime;
  return previous;
}

}  // namespace qvsysbase::detail

namespace qvsysbase {

void IntelSPLHandler::setBRNGFamily(unsigned family, bool gaussian) {
  // As it always stood: with the flag false only the two generator constants
  // below get through, and both then select MCG31 (as family numbers they are
  // far beyond the table).
  if (!gaussian && family != kBrngMCG31 && family != kBrngMT19937) return;
  const unsigned brng = family < detail::kFamilyCount ? detail::kFamilyTable[family]
                        : gaussian                    ? kBrngMT19937
                                                      : kBrngMCG31;
  qvLocker lock(detail::g_pLock);
  detail::HolderList& list = detail::ListOf(gaussian);
  if (list.Length() == 0) list.Append(brng);
  for (std::size_t i = 0; i < list.Length(); ++i) list.At(i).set_brng(brng);
}

}  // namespace qvsysbase
