// Internals of the kernel dispatch shared by its units and its tests: the
// vector-math status route of the kernel-library set, and the two platform
// facts the thread rules depend on, replaceable so that tests can show the
// rules on any machine.
#ifndef QVSYSBASE_SRC_NUMERICS_MKLWRAPPER_H_
#define QVSYSBASE_SRC_NUMERICS_MKLWRAPPER_H_

namespace qvsysbase::detail {

// Statuses a vector-math function raises for one element, as the vendor's
// vector-math library numbers them.
enum VectorMathStatus : int {
  kVmlDomainError = 1,  // argument outside the domain (log or sqrt of a negative)
  kVmlSingularity = 2,  // pole (log of zero)
  kVmlOverflow = 3,     // finite argument, infinite result: thrown
  kVmlUnderflow = 4,    // result too small to represent: ignored
};

// Sets the memory-exercised flag; every allocation slot of either set calls it.
void MarkMemAllocExercised();

// Hands one element's status to the handler registered on entering the kernel
// library: status 3 throws std::overflow_error(function), status 4 is ignored,
// any other status goes to ReportKernelError(function).
void RaiseVectorMathStatus(int status, const char* function);

// ---- Seams for tests. ----------------------------------------------------
using ProcessorCountFn = unsigned (*)();
using ThreadApplyFn = void (*)(int threads);

// Processors 0..31 of the process's affinity mask, at least 1.
unsigned CountAffinityProcessors();
// Replaces the processor counter and forgets the cached count; returns the
// previous counter. Null restores CountAffinityProcessors.
ProcessorCountFn SetProcessorCounter(ProcessorCountFn counter);
// Replaces what hands a thread count to the BLAS library; returns the previous
// one. Null restores the BLAS vendor's call.
ThreadApplyFn SetThreadApplier(ThreadApplyFn applier);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_MKLWRAPPER_H_
