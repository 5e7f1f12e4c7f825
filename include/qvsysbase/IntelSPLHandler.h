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
//   - every other mode, the plain set: straightforward loops in double
//     precision. It leaves ERF, PhiInverse and LnGamma, the random streams,
//     the matrix kernels other than the matrix-vector product and the
//     optimiser null.
//
// The table is empty until the host selects a mode other than 0 (normally 1):
// the library's start-up step calls setIntelSPLMode(0, 1), which changes nothing
// on the initial state. A host that wants the plain set selects 1 and then 0.
// Calling a null slot is the caller's error and is not guarded; check
// isIntelSPLActive() before using a slot that only the kernel-library set fills.
//
// Not yet available: the random-stream slots (InitRandGen .. nspiRandUniformBits)
// and nspTROptimise are declared with their final types but stay null in both
// sets, and setBRNGFamily is not declared; they arrive with the random streams
// and the trust-region solver.
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

  // ---- The slot table, in its declared order. -----------------------------
  // Counts are signed 32-bit; "1" means a slot of one operand changed in place.
  // Buffers come from, and go back to, the allocation slots of the same mode.

  static double* (*nspdMalloc)(int n);
  static int* (*nspiMalloc)(int n);
  static void (*nspFree)(void* p);
  static void (*nspdbSet)(double val, double* dst, int n);
  static void (*nspdbZero)(double* dst, int n);
  static void (*nspwbZero)(short* dst, int n);
  static void (*nspdbIntToFloat)(const int* src, double* dst, int n);
  static void (*nspdbAbs1)(double* vec, int n);
  static void (*nspdbAbs2)(const double* src, double* dst, int n);
  static double (*nspdDotProd)(const double* a, const double* b, int n);
  // y = A·x; A is rows×cols, row-major with row stride lda.
  static void (*nspMatrixMultiplyByVector)(const double* A, int rows, int cols, int lda,
                                           const double* x, double* y);
  static void (*nspdbSqrt1)(double* vec, int n);
  static void (*nspdbSqrt2)(const double* src, double* dst, int n);
  static void (*nspdbCopy)(const double* src, double* dst, int n);
  static void (*nspwbCopy)(const short* src, short* dst, int n);
  static void (*nspdbMpy1)(double val, double* dst, int n);         // dst *= val
  static void (*nspdbMpy2)(const double* src, double* dst, int n);  // dst *= src
  static void (*nspdbMpy3)(const double* a, const double* b, double* dst, int n);
  static void (*nspdbAdd1)(double val, double* dst, int n);         // dst += val
  static void (*nspdbAdd2)(const double* src, double* dst, int n);  // dst += src
  static void (*nspdbAddScaledVector)(const double* src, double scale, double* dst, int n);
  static void (*nspdbSub1)(double val, double* dst, int n);                        // dst -= val
  static void (*nspdbSub2)(const double* src, double* dst, int n);                 // dst -= src
  static void (*nspdbSub3)(const double* a, const double* b, double* dst, int n);  // a - b
  static void (*nspdbExp1)(double* vec, int n);
  static void (*nspdbLn1)(double* vec, int n);
  static double (*ERF)(double x);
  static double (*PhiInverse)(double p);
  static double (*LnGamma)(double x);
  static void (*nspSortVector)(double* vec, int n);  // ascending
  static double (*nspdMean)(const double* vec, int n);
  // Sample (n - 1) standard deviation; one value gives not-a-number.
  static double (*nspdStdDev)(const double* vec, int n);
  // Random streams (null in both sets for now); each returns the seed used.
  static int (*InitRandGen)(bool fixedSeed, unsigned index);
  static int (*InitRandGenWithSeed)(int seed, unsigned index);
  static void (*nspdbRandGaus)(double* dst, int n, unsigned index);
  static int (*InitRandUniformGen)(int seed, bool useClock, unsigned index);
  static void (*nspiRandUniformBits)(unsigned* dst, int n, unsigned index);
  // Matrix kernels on row-major arrays (mode 1 only).
  static bool (*nspCholDcInplace)(double* a, int n, int lda, int* info);
  static bool (*nspCholInverseInplace)(double* a, int n, int lda);
  static void (*nspInverseTriangularInplace)(double* a, int n, int lda);
  static void (*nspSolveLinEquatTriangular)(const double* a, int n, int lda, double* b, int nrhs,
                                            int ldb);
  static void (*nspSolveLinEquatSymmetr)(const double* a, int n, int lda, double* b, int nrhs,
                                         int ldb);
  static void (*nspProductTrMatrTranspByTrMatrInplace)(double* a, int n, int lda);
  // C = A·Bᵀ; A is m×k, B is n×k, C is m×n.
  static void (*nspMatrixMultiply)(const double* A, int m, int k, int lda, const double* B, int n,
                                   int ldb, double* C, int ldc);
  // Trust-region least squares, optionally bounded (null in both sets for now).
  static bool (*nspTROptimise)(int n, double* x, const double* pLowBound, const double* pUpperBound,
                               int m, TRResidualFn fcn, void* userData, int maxIter,
                               int maxTrialIter, const double* eps, double jacEps, double rs,
                               int* iter, int* stopCriterion, double* r1, double* r2);
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_INTELSPLHANDLER_H_
