// Counters and the atomic helpers: the interlocked pair, qvSafeIncrement's
// compare-exchange and the self-counting and forwarding counters.
#include <atomic>
#include <cstdint>

#include "qvsysbase/RefCounterProt.h"

QV_UNIT("RefCounterProtImp", "$Revision: #1 $")

namespace qvsysbase {

namespace {

// atomic_ref needs its object suitably aligned; the counts are plain int32_t
// members and the shared doubles plain doubles, so their natural alignment must
// be enough.
static_assert(alignof(std::int32_t) >= std::atomic_ref<std::int32_t>::required_alignment);
static_assert(alignof(double) >= std::atomic_ref<double>::required_alignment);

// The counts are never defined volatile (the parameters are volatile only to
// accept any caller's counter), so dropping the qualifier to reach them through
// atomic_ref is sound.
std::atomic_ref<std::int32_t> Atomic(std::int32_t volatile* pValue) {
  return std::atomic_ref<std::int32_t>(*const_cast<std::int32_t*>(pValue));
}

}  // namespace

// Sequentially consistent, i.e. a full barrier: that is what callers of an
// interlocked primitive are entitled to rely on (for example, publishing data
// before bumping a counter that others poll). On x86-64 every locked
// read-modify-write is a full barrier anyway, so nothing is paid for it.
std::int32_t qvInterlockedIncrement(std::int32_t volatile* pValue) {
  return Atomic(pValue).fetch_add(1, std::memory_order_seq_cst) + 1;
}

std::int32_t qvInterlockedDecrement(std::int32_t volatile* pValue) {
  return Atomic(pValue).fetch_sub(1, std::memory_order_seq_cst) - 1;
}

// --- qvSafeIncrement ------------------------------------------------------

bool qvSafeIncrement::IsSafeIncrementSupported() {
  return std::atomic_ref<double>::is_always_lock_free &&
         std::atomic_ref<std::uint64_t>::is_always_lock_free;
}

bool qvSafeIncrement::IsSafeIncrementSupported(unsigned platformId, unsigned major,
                                               unsigned minor) {
  // Platform 2 is the NT family; 5.0 and 5.1 predate the 64-bit compare-exchange.
  constexpr unsigned kNtPlatform = 2;
  if (platformId != kNtPlatform || major <= 4) return false;
  return !(major == 5 && minor <= 1);
}

void qvSafeIncrement::SafeIncrement(double volatile* pValue, double dDelta) {
  // The compare-exchange of atomic_ref<double> compares the 64-bit patterns,
  // not the values, so a NaN or a signed zero cannot make it loop forever.
  // Relaxed is enough: the sum is the only thing published, and the
  // read-modify-write chain on one location is totally ordered whatever the
  // order argument; callers that publish other data with the sum synchronise
  // through their own means.
  std::atomic_ref<double> shared(*const_cast<double*>(pValue));
  double expected = shared.load(std::memory_order_relaxed);
  while (!shared.compare_exchange_weak(expected, expected + dDelta, std::memory_order_relaxed)) {
    // expected now holds the value another thread stored; add to that.
  }
}

// --- RefCounterProtocol -------------------------------------------------------

RefCounterProtocol::~RefCounterProtocol() noexcept(false) = default;

// --- Memory orders of the counts ----------------------------------------------
//
// Up: relaxed. A new reference is always made from an existing one, which keeps
// the object alive while the increment runs, and the increment publishes
// nothing; only its atomicity matters.
// Down: acquire-release. Release so that this thread's uses of the object
// happen before its deletion by whichever thread drops the last reference;
// acquire so that the thread that reaches 0 sees all those uses before it
// deletes. The contract checks are separate loads, not part of the decrement.

namespace {
constexpr std::memory_order kUp = std::memory_order_relaxed;
constexpr std::memory_order kDown = std::memory_order_acq_rel;
}  // namespace

// --- RefCounterProtocolImp ----------------------------------------------------

RefCounterProtocolImp::RefCounterProtocolImp() : m_nCount(0) {}

RefCounterProtocolImp::RefCounterProtocolImp(const RefCounterProtocolImp& /*other*/)
    : RefCounterProtocol(), m_nCount(0) {}

RefCounterProtocolImp& RefCounterProtocolImp::operator=(const RefCounterProtocolImp& /*other*/) {
  return *this;
}

RefCounterProtocolImp::~RefCounterProtocolImp() noexcept(false) { QV_ASSERT(m_nCount == 0); }

std::int32_t RefCounterProtocolImp::AddRef() { return m_nCount.fetch_add(1, kUp) + 1; }

std::int32_t RefCounterProtocolImp::Release() {
  QV_ASSERT(m_nCount > 0);
  const std::int32_t count = m_nCount.fetch_sub(1, kDown) - 1;
  // Only the thread whose decrement reached 0 gets here with 0.
  if (count == 0) delete this;
  return count;
}

void RefCounterProtocolImp::SafeRelease() {
  QV_ASSERT(m_nCount > 0);
  m_nCount.fetch_sub(1, kDown);
}

std::int32_t RefCounterProtocolImp::GetCount() const {
  return m_nCount.load(std::memory_order_relaxed);
}

// --- InternalRefCounter -------------------------------------------------------

InternalRefCounter::InternalRefCounter(int nThreshold, RefCounterProtocol* pOwner)
    : m_nCount(0), m_nThreshold(nThreshold), m_pOwner(pOwner) {}

InternalRefCounter::~InternalRefCounter() noexcept(false) = default;

// The reference that raises the count from k-1 to k holds the owner exactly
// when k > threshold; the one that lowers it from k to k-1 released the owner
// exactly when k > threshold, i.e. new count >= threshold. Hence the strict
// comparison up and the non-strict one down.
std::int32_t InternalRefCounter::AddRef() {
  const std::int32_t count = m_nCount.fetch_add(1, kUp) + 1;
  if (m_pOwner != nullptr && count > m_nThreshold) m_pOwner->AddRef();
  return count;
}

std::int32_t InternalRefCounter::Release() {
  const std::int32_t count = m_nCount.fetch_sub(1, kDown) - 1;
  if (m_pOwner != nullptr && count >= m_nThreshold) m_pOwner->Release();
  return count;
}

}  // namespace qvsysbase
