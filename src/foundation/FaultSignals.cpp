#include "foundation/FaultSignals.h"

#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <mutex>

namespace qvsysbase::detail {
namespace {

// The synchronous fault signals. Asynchronous ones (SIGINT and the like) are
// requests, not faults, and keep their dispositions.
constexpr int kFaultSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};
constexpr std::size_t kFaultSignalCount = std::size(kFaultSignals);

// --- Installation ------------------------------------------------------------

// Installations are counted so that overlapping scopes and guarded calls on
// several threads share one set of handlers; the first installs and saves the
// previous dispositions, the last restores them.
constinit std::mutex g_installMutex;
constinit int g_installCount = 0;  // guarded by g_installMutex
// Written by the first installation under g_installMutex, and read without it
// by the handler, which runs only while an installation is alive and so after
// the write.
constinit struct sigaction g_previousActions[kFaultSignalCount] = {};

const struct sigaction* PreviousAction(int signo) {
  for (std::size_t i = 0; i < kFaultSignalCount; ++i) {
    if (kFaultSignals[i] == signo) return &g_previousActions[i];
  }
  return nullptr;
}

// --- Chaining ----------------------------------------------------------------

// A fault raised by an instruction, as opposed to a signal sent by kill, raise
// or sigqueue (whose codes are zero or negative).
bool IsRaisedByAnInstruction(const siginfo_t& info) { return info.si_code > 0; }

// SIG_DFL and SIG_IGN read the same through either member of the handler
// union, whether or not SA_SIGINFO is set.
bool IsDefault(const struct sigaction& action) { return action.sa_handler == SIG_DFL; }
bool IsIgnored(const struct sigaction& action) { return action.sa_handler == SIG_IGN; }

void SetDefaultAction(int signo) {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigemptyset(&action.sa_mask);
  sigaction(signo, &action, nullptr);
}

void CallPreviousHandler(const struct sigaction& previous, int signo, siginfo_t* info,
                         void* context) {
  // The previous handler runs as the kernel would have run it: with its own
  // mask, its signal blocked unless it asked otherwise, reset if it asked so.
  sigset_t mask = previous.sa_mask;
  if ((previous.sa_flags & SA_NODEFER) == 0) sigaddset(&mask, signo);
  if ((previous.sa_flags & SA_RESETHAND) != 0) SetDefaultAction(signo);
  sigset_t saved;
  pthread_sigmask(SIG_BLOCK, &mask, &saved);
  if ((previous.sa_flags & SA_SIGINFO) != 0) {
    previous.sa_sigaction(signo, info, context);
  } else {
    previous.sa_handler(signo);
  }
  pthread_sigmask(SIG_SETMASK, &saved, nullptr);
}

// Our handler runs with its signal unblocked (SA_NODEFER), so the raise takes
// effect at once. Should it return all the same, the faulting instruction
// runs again on return and meets the default action itself.
void RaiseWithDefaultAction(int signo) {
  SetDefaultAction(signo);
  raise(signo);
}

// --- Stacks ------------------------------------------------------------------

// Room for the translation, which only records a code and jumps, and for a
// chained handler such as a sanitizer's fault report.
constexpr std::size_t kAltStackSize = 64 * 1024;

// How far from the stack's lowest address a fault still counts as the stack
// running into its limit. A frame's first access can land below the guard
// page by up to the frame's size, and the main thread's limit is only known to
// within the kernel's gap below the stack; no frame is larger than this, and a
// wild access this close to the limit is reported as an overflow, which it
// almost certainly is anyway.
constexpr std::uintptr_t kOverflowReach = 1024 * 1024;

// The alternate stack of this thread, made at its first guarded call and kept
// for the thread's life (it is installed only during guarded calls).
thread_local std::unique_ptr<std::byte[]> t_altStack;
// The lowest address of this thread's stack, 0 until its first guarded call.
// constinit: the handler reads it without running an initialiser.
constinit thread_local std::uintptr_t t_stackLow = 0;

std::size_t AltStackSize() { return std::max<std::size_t>(kAltStackSize, SIGSTKSZ); }

std::uintptr_t QueryStackLow() {
  pthread_attr_t attr;
  if (pthread_getattr_np(pthread_self(), &attr) != 0) return 0;
  void* pLow = nullptr;
  std::size_t size = 0;
  const bool bKnown = pthread_attr_getstack(&attr, &pLow, &size) == 0;
  pthread_attr_destroy(&attr);
  return bKnown ? reinterpret_cast<std::uintptr_t>(pLow) : 0;
}

}  // namespace

void InstallFaultHandlers(FaultHandler handler) {
  std::lock_guard<std::mutex> lock(g_installMutex);
  if (g_installCount++ > 0) return;
  struct sigaction action = {};
  action.sa_sigaction = handler;
  // SA_NODEFER: a handler that throws or jumps never returns through sigreturn,
  // which would otherwise be what unblocks the signal for the next fault.
  // SA_ONSTACK: on a guarded thread the handler runs on the alternate stack,
  // so that it can run when the fault is the stack's own overflow.
  action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_ONSTACK;
  sigemptyset(&action.sa_mask);
  for (std::size_t i = 0; i < kFaultSignalCount; ++i) {
    sigaction(kFaultSignals[i], &action, &g_previousActions[i]);
  }
}

void RestoreFaultHandlers() {
  std::lock_guard<std::mutex> lock(g_installMutex);
  if (--g_installCount > 0) return;
  for (std::size_t i = 0; i < kFaultSignalCount; ++i) {
    sigaction(kFaultSignals[i], &g_previousActions[i], nullptr);
  }
}

void ChainToPreviousDisposition(int signo, siginfo_t* info, void* context) {
  const struct sigaction* previous = PreviousAction(signo);
  if (previous == nullptr) return;
  if (!IsDefault(*previous) && !IsIgnored(*previous)) {
    CallPreviousHandler(*previous, signo, info, context);
  } else if (IsDefault(*previous) || IsRaisedByAnInstruction(*info)) {
    RaiseWithDefaultAction(signo);
  }
}

GuardedThreadStack::GuardedThreadStack() {
  if (t_stackLow == 0) t_stackLow = QueryStackLow();
  if (!t_altStack) t_altStack = std::make_unique<std::byte[]>(AltStackSize());
  stack_t ours = {};
  ours.ss_sp = t_altStack.get();
  ours.ss_size = AltStackSize();
  // Fails only when the thread runs on its alternate stack now (a guarded call
  // made from a signal handler); the handler then has that stack.
  m_bInstalled = sigaltstack(&ours, &m_Previous) == 0;
}

GuardedThreadStack::~GuardedThreadStack() {
  if (m_bInstalled) sigaltstack(&m_Previous, nullptr);
}

bool IsStackOverflow(int signo, const siginfo_t& info) {
  if ((signo != SIGSEGV && signo != SIGBUS) || t_stackLow == 0) return false;
  const auto address = reinterpret_cast<std::uintptr_t>(info.si_addr);
  const std::uintptr_t distance =
      address > t_stackLow ? address - t_stackLow : t_stackLow - address;
  return distance < kOverflowReach;
}

}  // namespace qvsysbase::detail
