// The library-lifetime object: runs every unit's start-up step when the library
// is loaded and the unload steps, in reverse, when it is unloaded.
//
// Start-up order:
//   1. per-unit revision strings: constant-initialised (QV_UNIT), so they are in
//      place before any dynamic initialiser of the process runs;
//   2. the locale unit creates the user's default locale;
//   3. the group-destruction unit's hook (does nothing);
//   4. the random-stream lock and the two empty random-stream lists;
//   5. the kernel table, set by IntelSPLHandler::setIntelSPLMode(0, 1) with every
//      slot empty.
// Unload runs the matching finalisers in reverse order.
//
// Units keep no dynamically initialised statics of their own: everything that
// needs construction at load is built here, so the order above is the only one.
//
// This unit stands above the subsystems' layers: it alone includes every
// subsystem's hooks, each declared in a private header of its own subsystem.
#include "foundation/FoundationHooks.h"
#include "numerics/NumericsHooks.h"
#include "text/TextHooks.h"

namespace qvsysbase::detail {
namespace {

class LibraryLifetime {
 public:
  LibraryLifetime() {
    InitializeLocaleUnit();            // step 2
    InitializeGroupDestructionUnit();  // step 3
    InitializeRandomStreamUnit();      // step 4
    InitializeKernelUnit();            // step 5
  }
  ~LibraryLifetime() {
    FinalizeKernelUnit();            // step 5
    FinalizeRandomStreamUnit();      // step 4
    FinalizeGroupDestructionUnit();  // step 3
    FinalizeLocaleUnit();            // step 2
  }
  LibraryLifetime(const LibraryLifetime&) = delete;
  LibraryLifetime& operator=(const LibraryLifetime&) = delete;
};

// The one instance. Its constructor runs at library load.
const LibraryLifetime g_lifetime;

}  // namespace
}  // namespace qvsysbase::detail
