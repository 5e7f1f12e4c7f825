// The start-up and unload hooks that subsystems offer to the library-lifetime
// object in Library.cpp. A subsystem never calls another's hooks; only
// Library.cpp knows them all and their order.
#ifndef QVSYSBASE_SRC_LIBRARYHOOKS_H_
#define QVSYSBASE_SRC_LIBRARYHOOKS_H_

namespace qvsysbase::detail {

// Text: creates / destroys the user's default locale (QvLocaleUtil).
void InitializeLocaleUnit();
void FinalizeLocaleUnit();

// Foundation: the group-destruction unit's hook (does nothing, kept for its place).
void InitializeGroupDestructionUnit();
void FinalizeGroupDestructionUnit();

// Numerics: the kernel table, IntelSPLHandler::setIntelSPLMode(0, 1); on unload
// the kernel library's buffers are freed when the mode is 1.
void InitializeKernelUnit();
void FinalizeKernelUnit();

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_LIBRARYHOOKS_H_
