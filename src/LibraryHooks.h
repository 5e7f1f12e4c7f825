// The start-up and unload hooks that subsystems offer to the library-lifetime
// object in Library.cpp. A subsystem never calls another's hooks; only
// Library.cpp knows them all and their order.
#ifndef QVSYSBASE_SRC_LIBRARYHOOKS_H_
#define QVSYSBASE_SRC_LIBRARYHOOKS_H_

namespace qvsysbase::detail {

// Add one pair per unit that has start-up work, in the order Library.cpp runs them.

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_LIBRARYHOOKS_H_
