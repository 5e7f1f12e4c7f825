// The foundation subsystem's library start-up and unload hooks, run by the
// library-lifetime object (src/Library.cpp) in its documented order.
#ifndef QVSYSBASE_SRC_FOUNDATION_FOUNDATIONHOOKS_H_
#define QVSYSBASE_SRC_FOUNDATION_FOUNDATIONHOOKS_H_

namespace qvsysbase::detail {

// The group-destruction unit's hooks: they do nothing and keep the unit's
// place in the start-up order.
void InitializeGroupDestructionUnit();
void FinalizeGroupDestructionUnit();

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_FOUNDATION_FOUNDATIONHOOKS_H_
