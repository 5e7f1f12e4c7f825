// The signal side of fault translation: the fault handler's installation over
// the dispositions that were in place before it, the way a fault that is not
// ours goes back to them, and the alternate stack on which a guarded thread's
// handler runs even when the fault was a stack overflow.
#ifndef QVSYSBASE_SRC_FOUNDATION_FAULTSIGNALS_H_
#define QVSYSBASE_SRC_FOUNDATION_FAULTSIGNALS_H_

#include <csignal>

namespace qvsysbase::detail {

using FaultHandler = void (*)(int signo, siginfo_t* info, void* context);

// Installs handler for the synchronous fault signals (SIGSEGV, SIGBUS, SIGFPE,
// SIGILL), to run on the thread's alternate stack where it has one. Counted:
// the first installation saves the dispositions in place, and the matching
// last RestoreFaultHandlers puts them back. Thread-safe.
void InstallFaultHandlers(FaultHandler handler);
void RestoreFaultHandlers();

// Hands a fault that no guarded call or scope takes to the disposition saved
// by the first installation: its handler (with its mask and flags), or the
// default action. A signal sent by kill or raise that was ignored stays
// ignored; a fault raised by an instruction cannot be ignored and gets the
// default action, as where no handler had been installed. Async-signal-safe.
void ChainToPreviousDisposition(int signo, siginfo_t* info, void* context);

// While alive, this thread has an alternate signal stack of the library's and
// a known stack limit for IsStackOverflow; on destruction the alternate stack
// the thread had before is back. Made by the outermost guarded call of a
// thread only: nested calls share it. Not copyable.
class GuardedThreadStack {
 public:
  GuardedThreadStack();
  ~GuardedThreadStack();
  GuardedThreadStack(const GuardedThreadStack&) = delete;
  GuardedThreadStack& operator=(const GuardedThreadStack&) = delete;

 private:
  stack_t m_Previous{};
  bool m_bInstalled = false;
};

// True when the fault is the stack running into its limit: a memory fault at
// an address near the lowest address of this thread's stack. Knows the limit
// only on a thread that has made a GuardedThreadStack. Async-signal-safe.
bool IsStackOverflow(int signo, const siginfo_t& info);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_FOUNDATION_FAULTSIGNALS_H_
