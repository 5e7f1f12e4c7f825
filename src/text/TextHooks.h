// The text subsystem's library start-up and unload hooks, run by the
// library-lifetime object (src/Library.cpp) in its documented order.
#ifndef QVSYSBASE_SRC_TEXT_TEXTHOOKS_H_
#define QVSYSBASE_SRC_TEXT_TEXTHOOKS_H_

namespace qvsysbase::detail {

// Creates / destroys the user's default locale (QvLocaleUtil).
void InitializeLocaleUnit();
void FinalizeLocaleUnit();

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_TEXT_TEXTHOOKS_H_
