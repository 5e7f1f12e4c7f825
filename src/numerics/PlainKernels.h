// The plain kernel set: straightforward loops in double precision, with no
// dependency on a vendor library. It covers the elementwise vector slots, the
// matrix-vector product and the sort; the others stay null.
#ifndef QVSYSBASE_SRC_NUMERICS_PLAINKERNELS_H_
#define QVSYSBASE_SRC_NUMERICS_PLAINKERNELS_H_

#include "KernelSet.h"

namespace qvsysbase::detail {

KernelSet PlainKernelSet();

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_PLAINKERNELS_H_
