// The kernel dispatch: the slot table, the mode and thread rules, and the
// library-load step. The two kernel sets live in PlainKernels.cpp and
// FastKernels.cpp; this unit only decides which one fills the table.
#include "MKLWrapper.h"

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>

#include "FastKernels.h"
#include "NumericsHooks.h"
#include "PlainKernels.h"
#include "RandomStreamLists.h"
#include "qvsysbase/IntelSPLHandler.h"
#include "qvsysbase/KernelErrorReport.h"
#include "qvsysbase/qvExcept.h"

QV_UNIT("MKLWrapper", "$Revision: #1 $")

#if defined(QV_BLAS_SET_NUM_THREADS)
// The BLAS vendor's thread call, chosen at configure time.
extern "C" void QV_BLAS_SET_NUM_THREADS(int threads);
#endif

namespace qvsysbase {

// ---- The slots: all null until a mode other than the initial one is selected.
#define QVSYSBASE_SPL_SLOT(result, name, parameters) \
  result(*IntelSPLHandler::name) parameters = nullptr;
#include "qvsysbase/IntelSPLSlots.def"
#undef QVSYSBASE_SPL_SLOT

namespace {

using detail::ProcessorCountFn;
using detail::ThreadApplyFn;

// Only the affinity bits of processors 0..31 count, as on the platform the
// rule was written for, where the mask is one 32-bit word.
constexpr int kCountedProcessors = 32;

void ApplyBlasThreads([[maybe_unused]] int threads) {
#if defined(QV_BLAS_SET_NUM_THREADS)
  QV_BLAS_SET_NUM_THREADS(threads);
#endif
}

// The vector-math status handler registered on entering the kernel library; it
// returns 0 to let the computation go on.
using VectorMathHandler = int (*)(int status, const char* function);

int HandleVectorMathStatus(int status, const char* function) {
  if (status == detail::kVmlUnderflow) return 0;
  if (status == detail::kVmlOverflow) throw std::overflow_error(function);
  ReportKernelError(function);
  return 0;
}

// Process-wide dispatch state, constant-initialised. Set-up code changes it
// while no kernel runs; the two flags that kernels touch (the allocation flag
// and the processor cache) are atomics so that concurrent kernels stay defined.
constinit IntelSPLHandler::SplMode g_mode = IntelSPLHandler::SplModePlain;
constinit int g_threads = 1;
constinit std::atomic<unsigned> g_processors{0};  // 0: not counted yet
constinit std::atomic<bool> g_memAllocExercised{false};
constinit ProcessorCountFn g_processorCounter = &detail::CountAffinityProcessors;
constinit ThreadApplyFn g_threadApplier = &ApplyBlasThreads;
constinit VectorMathHandler g_vectorMathHandler = nullptr;

void ApplyThreadCount(int threads) {
  if (threads < 1) return;
  const unsigned usable =
      std::min(static_cast<unsigned>(threads), IntelSPLHandler::getMaxThreads());
  g_threadApplier(static_cast<int>(usable));
}

// Entering the kernel library. The vendor library had three hooks; here:
//  - the vector-math status handler is registered (the fast exp, log and sqrt
//    check their results in the same pass and raise statuses through it;
//    they always run at their one, high, accuracy, so there is no mode word);
//  - BLAS and LAPACK never see an illegal argument: throwing through their
//    frames from their own report is not safe, so the kernels check the
//    arguments before the call and throw themselves.
void EnterKernelLibrary() { g_vectorMathHandler = &HandleVectorMathStatus; }

// Copies every slot of `set` into the table.
void InstallKernelSet(const detail::KernelSet& set) {
#define QVSYSBASE_SPL_SLOT(result, name, parameters) IntelSPLHandler::name = set.name;
#include "qvsysbase/IntelSPLSlots.def"
#undef QVSYSBASE_SPL_SLOT
}

// Leaving the kernel library deletes the random streams of both lists. The
// fast set holds no buffers of its own to release: SLEEF and the loops
// allocate nothing, and OpenBLAS keeps its pool for the life of the process
// with no call to give it back early.
void LeaveKernelLibrary() {
  detail::DeleteAllRandomStreams();
  g_vectorMathHandler = nullptr;
}

}  // namespace

void IntelSPLHandler::setIntelSPLMode(SplMode mode, int threads) {
  if (mode == g_mode) {
    if (threads != g_threads) {
      g_threads = threads;
      if (isIntelSPLActive()) ApplyThreadCount(threads);
    }
    return;
  }
  g_threads = threads;
  if (isIntelSPLActive()) LeaveKernelLibrary();
  g_mode = mode;
  if (isIntelSPLActive()) {
    InstallKernelSet(detail::FastKernelSet());
    EnterKernelLibrary();
    ApplyThreadCount(threads);
  } else {
    InstallKernelSet(detail::PlainKernelSet());
  }
}

IntelSPLHandler::SplMode IntelSPLHandler::getIntelSPLMode() { return g_mode; }

bool IntelSPLHandler::isIntelSPLActive() { return g_mode == SplModeMKL; }

bool IntelSPLHandler::isMemAllocExercised() {
  return g_memAllocExercised.load(std::memory_order_relaxed);
}

unsigned IntelSPLHandler::getMaxThreads() {
  // Relaxed: the count is a plain value, and two threads racing on the first
  // call both count the same mask.
  unsigned count = g_processors.load(std::memory_order_relaxed);
  if (count == 0) {
    count = std::max(g_processorCounter(), 1u);
    g_processors.store(count, std::memory_order_relaxed);
  }
  return count;
}

unsigned IntelSPLHandler::getDefaultThreads() {
  const unsigned processors = getMaxThreads();
  return processors < 2 ? 1 : processors / 2;
}

unsigned IntelSPLHandler::getCurrentThreads() { return static_cast<unsigned>(g_threads); }

int IntelSPLHandler::CeilNspdbSize(int n) {
  // n + (8 - (n & 7)) when n & 7 is non-zero, else n; in unsigned arithmetic so
  // that n near the top of the range wraps instead of overflowing.
  return static_cast<int>((static_cast<unsigned>(n) + 7u) & ~7u);
}

double* IntelSPLHandler::AllocateZeroedBuffer(int n) {
  QV_ASSERT(nspdMalloc && nspdbZero);
  const int size = CeilNspdbSize(n);
  double* buffer = nspdMalloc(size);
  nspdbZero(buffer, size);
  return buffer;
}

namespace detail {

void MarkMemAllocExercised() { g_memAllocExercised.store(true, std::memory_order_relaxed); }

void RaiseVectorMathStatus(int status, const char* function) {
  if (g_vectorMathHandler != nullptr) g_vectorMathHandler(status, function);
}

unsigned CountAffinityProcessors() {
  cpu_set_t set;
  CPU_ZERO(&set);
  if (sched_getaffinity(0, sizeof(set), &set) != 0) return 1;
  unsigned count = 0;
  for (int cpu = 0; cpu < kCountedProcessors; ++cpu) count += CPU_ISSET(cpu, &set) ? 1 : 0;
  return std::max(count, 1u);
}

ProcessorCountFn SetProcessorCounter(ProcessorCountFn counter) {
  const ProcessorCountFn previous = g_processorCounter;
  g_processorCounter = counter != nullptr ? counter : &CountAffinityProcessors;
  g_processors.store(0, std::memory_order_relaxed);
  return previous;
}

ThreadApplyFn SetThreadApplier(ThreadApplyFn applier) {
  const ThreadApplyFn previous = g_threadApplier;
  g_threadApplier = applier != nullptr ? applier : &ApplyBlasThreads;
  return previous;
}

// The library-load step: on the initial state (mode 0, one thread) this
// changes nothing, so the table stays empty until the host picks a mode.
void InitializeKernelUnit() { IntelSPLHandler::setIntelSPLMode(IntelSPLHandler::SplModePlain, 1); }

void FinalizeKernelUnit() {
  if (IntelSPLHandler::isIntelSPLActive()) LeaveKernelLibrary();
}

}  // namespace detail
}  // namespace qvsysbase
