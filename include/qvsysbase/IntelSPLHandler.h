// The numeric kernel switchboard. Every vector, matrix, scalar-function,
// random-number and optimisation kernel of the application is reached through one
// of the 45 function pointers below, so the implementation behind them can be
// switched at run time without relinking.
//
// Two sets fill the table:
//   - mode 1 (SplModeMKL), the kernel-library set: BLAS and LAPACK for the
//     routines they offer, vectorised exp and log with the vector-math error
//     statuses (an overflow throws std::overflow_error naming the function, a
//     domain or singularity error goes to ReportKernelError), 64-byte aligned
//     buffers;
//     the random streams of qvsysbase/RandomStreams.h;
//   - every other mode, the plain set: straightforward loops in double
//     precision. It leaves ERF, PhiInverse and LnGamma, the random streams,
//     the matrix kernels other than the matrix-vector product and the
//     trust-region optimiser null.
//
// The table is empty until the host selects a mode other than 0 (normally 1):
// the library's start-up step calls setIntelSPLMode(0, 1), which changes nothing
// on the initial state. A host that wants the plain set selects 1 and then 0.
// Calling a null slot is the caller's error and is not guarded; check
// isIntelSPLActive() before using a slot that only the kernel-library set fills.
// Each slot's contract (what it computes, its REQUIRES, the triangle a matrix
// slot uses, and what each failure throws or reports) stands beside it in
// qvsysbase/IntelSPLSlots.def.
//
// The random-stream slots (InitRandGen .. nspiRandUniformBits) serve two lists
// of streams with the generators of qvsysbase/RandomStreams.h, and
// nspTROptimise runs the library's trust-region solver; both in mode 1 only.
//
// Example:
//   IntelSPLHandler::setIntelSPLMode(IntelSPLHandler::SplModeMKL,
//                                    IntelSPLHandler::getDefaultThreads());
//   double dot = IntelSPLHandler::nspdDotProd(a, b, n);
//
// Thread-safety: thread-compatible. The mode, the thread count and the slots are
// unlocked process-wide state: select the mode from set-up code while no kernel
// runs. The kernels themselves may run on any thread at once.
#ifndef QVSYSBASE_INTELSPLHANDLER_H_
#define QVSYSBASE_INTELSPLHANDLER_H_

#include <cstdint>

#include "qvsysbase/Export.h"

namespace qvsysbase {

// Residual callback of the trust-region solver: writes the *m residuals at the
// *n values x into f. userData is the caller's, passed through unchanged.
using TRResidualFn = void (*)(int* m, int* n, const double* x, double* f, void* userData);

class QVSYSBASE_API IntelSPLHandler {
 public:
  // Held as a 32-bit integer; every value other than SplModeMKL selects the
  // plain set, so any int32 value is a valid mode.
  enum SplMode : std::int32_t { SplModePlain = 0, SplModeMKL = 1 };

  IntelSPLHandler() = delete;  // static members only

  // Selects the implementation set and the worker-thread count. With the
  // current mode, only the thread count changes (applied when the mode is 1)
  // and the table is left as it is. A count below 1 is stored but not applied;
  // a count above getMaxThreads() is applied as getMaxThreads().
  static void setIntelSPLMode(SplMode mode, int threads);
  static SplMode getIntelSPLMode();
  // True exactly when the current mode is 1.
  static bool isIntelSPLActive();
  // True once either allocation slot of either set has been called; never cleared.
  static bool isMemAllocExercised();
  // Processors 0..31 of the process's affinity mask (at least 1), counted on the
  // first call and cached.
  static unsigned getMaxThreads();
  // 1 below 2 processors, otherwise half of getMaxThreads() rounded down.
  static unsigned getDefaultThreads();
  // The count last given to setIntelSPLMode (1 before any call).
  static unsigned getCurrentThreads();
  // n rounded up to a multiple of 8 doubles (one 64-byte cache line).
  static int CeilNspdbSize(int n);
  // Allocates CeilNspdbSize(n) doubles through nspdMalloc and clears all of them
  // through nspdbZero: the storage of the counted numeric buffer. The caller
  // owns the result and gives it back through nspFree of the same mode.
  // REQUIRES: nspdMalloc && nspdbZero
  static double* AllocateZeroedBuffer(int n);

  // Chooses the generator of every stream of one list (the Gaussian list when
  // `gaussian`, else the uniform list) for its next initialisation, giving an
  // empty list one holder without a stream. Family 0..5: MT19937, MRG32K3A,
  // MCG31, R250, MCG59, WH; 6 and above: MT19937 for the Gaussian list, MCG31
  // for the uniform one. With `gaussian` false only kBrngMCG31 and
  // kBrngMT19937 are taken (both select MCG31); any other number is ignored.
  // Works in every mode; thread-safe (takes the streams' lock).
  static void setBRNGFamily(unsigned family, bool gaussian);

  // ---- The slot table -------------------------------------------------------
  // The 45 slots, read and called as data members, are declared from the list
  // in qvsysbase/IntelSPLSlots.def, which gives each one's contract.
#define QVSYSBASE_SPL_SLOT(result, name, parameters) static result(*name) parameters;
#include "qvsysbase/IntelSPLSlots.def"
#undef QVSYSBASE_SPL_SLOT
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_INTELSPLHANDLER_H_
