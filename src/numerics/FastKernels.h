// The kernel-library set (mode 1): BLAS for the BLAS routines, SLEEF for exp
// and log, vectorised loops for the other elementwise slots, Boost.Math for
// erf, the normal quantile and lgamma, the matrix kernels of MatrixKernels.h,
// and 64-byte aligned buffers.
#ifndef QVSYSBASE_SRC_NUMERICS_FASTKERNELS_H_
#define QVSYSBASE_SRC_NUMERICS_FASTKERNELS_H_

#include "KernelSet.h"

namespace qvsysbase::detail {

// The kernel-library set. exp, log and sqrt get the widest routines the
// processor runs, chosen on each call.
KernelSet FastKernelSet();

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_FASTKERNELS_H_
