// The numerics subsystem's library start-up and unload hooks, run by the
// library-lifetime object (src/Library.cpp) in its documented order.
#ifndef QVSYSBASE_SRC_NUMERICS_NUMERICSHOOKS_H_
#define QVSYSBASE_SRC_NUMERICS_NUMERICSHOOKS_H_

namespace qvsysbase::detail {

// The random streams' lock and the two empty stream lists; on unload the
// streams are deleted, then the lists and the lock.
void InitializeRandomStreamUnit();
void FinalizeRandomStreamUnit();

// The kernel table, IntelSPLHandler::setIntelSPLMode(0, 1); on unload the
// kernel library's buffers are freed when the mode is 1.
void InitializeKernelUnit();
void FinalizeKernelUnit();

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_NUMERICSHOOKS_H_
