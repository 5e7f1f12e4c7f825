// A kernel set: one value for every slot of IntelSPLHandler, built from the
// slot list, so that a set names only the slots it fills and the others stay
// null. The dispatch installs a set by copying every slot into the table.
#ifndef QVSYSBASE_SRC_NUMERICS_KERNELSET_H_
#define QVSYSBASE_SRC_NUMERICS_KERNELSET_H_

#include "qvsysbase/IntelSPLHandler.h"

namespace qvsysbase::detail {

struct KernelSet {
#define QVSYSBASE_SPL_SLOT(result, name, parameters) result(*name) parameters = nullptr;
#include "qvsysbase/IntelSPLSlots.def"
#undef QVSYSBASE_SPL_SLOT
};

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_KERNELSET_H_
