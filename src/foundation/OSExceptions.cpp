// The fault translation table, and the POSIX bridge that brings signals to it.
//
// POSIX reports faults as signals. The bridge maps each synchronous fault signal
// (with its si_code, and its address for a stack overflow) to the fault code the
// table knows, then either jumps back to the innermost guarded call of the
// faulting thread, which throws, or throws from the signal handler itself (only
// meaningful for code compiled with -fnon-call-exceptions), or, when neither
// applies, hands the fault to the disposition that was in place before ours.
// The handlers' installation and the alternate stacks are in FaultSignals.
#include "qvsysbase/OSExceptions.h"

#include <atomic>
#include <csetjmp>
#include <csignal>
#include <cstring>
#include <optional>
#include <stdexcept>

#include "foundation/FaultSignals.h"

namespace {

// Codes the language run-times use for their own exceptions; never translated.
constexpr std::uint32_t kCppExceptionCode = 0x0EEFFACE;
constexpr std::uint32_t kUiLibraryExceptionCode = 0x0EEDFADE;
// Flags of a record that is being unwound or cannot be trusted: 0x2 unwinding,
// 0x4 exit unwind, 0x8 stack invalid, 0x20 target unwind.
constexpr std::uint32_t kDeclinedFlagsMask = 0x2E;

enum class Kind { kRuntime, kOverflow, kUnderflow };

struct Translation {
  std::uint32_t code;
  const char* text;
  Kind kind;
};

constexpr std::uint32_t kAccessViolation = 0xC0000005;
constexpr std::uint32_t kPageError = 0xC0000006;
constexpr std::uint32_t kIllegalInstruction = 0xC000001D;
constexpr std::uint32_t kArrayBoundsExceeded = 0xC000008C;
constexpr std::uint32_t kFloatDivideByZero = 0xC000008E;
constexpr std::uint32_t kFloatInexactResult = 0xC000008F;
constexpr std::uint32_t kFloatInvalidOperation = 0xC0000090;
constexpr std::uint32_t kFloatOverflow = 0xC0000091;
constexpr std::uint32_t kFloatUnderflow = 0xC0000093;
constexpr std::uint32_t kIntegerDivideByZero = 0xC0000094;
constexpr std::uint32_t kIntegerOverflow = 0xC0000095;
constexpr std::uint32_t kPrivilegedInstruction = 0xC0000096;
constexpr std::uint32_t kStackOverflow = 0xC00000FD;
// A misaligned access has a code of its own, which the table leaves to the
// catch-all text.
constexpr std::uint32_t kDatatypeMisalignment = 0x80000002;

constexpr const char* kUnrecognisedText = "unrecognised exception code";

// clang-format off
constexpr Translation kTranslations[] = {
    {kAccessViolation,       "access violation",         Kind::kRuntime},
    {kPageError,             "page error",               Kind::kRuntime},
    {0xC0000008,             "invalid handle",           Kind::kRuntime},
    {0xC0000017,             "no memory",                Kind::kRuntime},
    {kIllegalInstruction,    "illegal instruction",      Kind::kRuntime},
    {0xC0000025,             "noncontinuable exception", Kind::kRuntime},
    {0xC0000026,             "invalid disposition",      Kind::kRuntime},
    {kArrayBoundsExceeded,   "array bounds exceeded",    Kind::kRuntime},
    {0xC000008D,             "denormal operand",         Kind::kRuntime},
    {kFloatDivideByZero,     "float divide by zero",     Kind::kRuntime},
    {kFloatInexactResult,    "inexact result",           Kind::kRuntime},
    {kFloatInvalidOperation, "float invalid operation",  Kind::kRuntime},
    {kFloatOverflow,         "float overflow",           Kind::kOverflow},
    {0xC0000092,             "float stack check",        Kind::kRuntime},
    {kFloatUnderflow,        "float underflow",          Kind::kUnderflow},
    {kIntegerDivideByZero,   "integer divide by zero",   Kind::kRuntime},
    {kIntegerOverflow,       "integer overflow",         Kind::kOverflow},
    {kPrivilegedInstruction, "privileged instruction",   Kind::kRuntime},
    {kStackOverflow,         "stack overflow",           Kind::kRuntime},
    {0xC000013A,             "control C exit",           Kind::kRuntime},
    {0xC00002B4,             "float multiple faults",    Kind::kRuntime},
    {0xC00002B5,             "float multiple traps",     Kind::kRuntime},
    {0xC00002C9,             "reg nat consumption",      Kind::kRuntime},
};
// clang-format on

bool IsDeclined(std::uint32_t code, std::uint32_t flags) {
  return code == kCppExceptionCode || (flags & kDeclinedFlagsMask) != 0 ||
         code == kUiLibraryExceptionCode;
}

[[noreturn]] void ThrowTranslated(std::uint32_t code) {
  const Translation* found = nullptr;
  for (const Translation& t : kTranslations) {
    if (t.code == code) found = &t;
  }
  if (found == nullptr) throw std::runtime_error(kUnrecognisedText);
  switch (found->kind) {
    case Kind::kOverflow:
      throw std::overflow_error(found->text);
    case Kind::kUnderflow:
      throw std::underflow_error(found->text);
    case Kind::kRuntime:
      break;
  }
  throw std::runtime_error(found->text);
}

// --- Signals to fault codes -------------------------------------------------

std::uint32_t FpeCode(int siCode) {
  switch (siCode) {
    case FPE_INTDIV:
      return kIntegerDivideByZero;
    case FPE_INTOVF:
      return kIntegerOverflow;
    case FPE_FLTDIV:
      return kFloatDivideByZero;
    case FPE_FLTOVF:
      return kFloatOverflow;
    case FPE_FLTUND:
      return kFloatUnderflow;
    case FPE_FLTRES:
      return kFloatInexactResult;
    case FPE_FLTSUB:
      return kArrayBoundsExceeded;  // subscript out of range
    default:
      return kFloatInvalidOperation;
  }
}

// A bus error on a mapped object (a file truncated under its mapping) is what
// the page error code describes; a misaligned access is its own code.
std::uint32_t BusCode(int siCode) {
  return siCode == BUS_ADRALN ? kDatatypeMisalignment : kPageError;
}

std::uint32_t IllCode(int siCode) {
  return siCode == ILL_PRVOPC || siCode == ILL_PRVREG ? kPrivilegedInstruction
                                                      : kIllegalInstruction;
}

std::uint32_t FaultCode(int signo, const siginfo_t& info) {
  switch (signo) {
    case SIGFPE:
      return FpeCode(info.si_code);
    case SIGBUS:
      return BusCode(info.si_code);
    case SIGILL:
      return IllCode(info.si_code);
    default:
      return kAccessViolation;
  }
}

// --- Guarded calls ----------------------------------------------------------

// One active guarded call. The handler writes code and jumps to env.
struct Guard {
  sigjmp_buf env;
  volatile std::uint32_t code = 0;
  Guard* outer = nullptr;
};

// The innermost guarded call of this thread. constinit: no initialiser runs,
// and the handler reads it without a TLS wrapper call.
constinit thread_local Guard* t_innermostGuard = nullptr;

// The OSExceptionScope objects alive. While there is one, a fault outside any
// guarded call throws at the fault; otherwise it is not ours to translate.
// Read by the handler, hence a lock-free atomic; sequentially consistent (the
// default) because it changes twice per scope and nothing is gained by less.
constinit std::atomic<int> g_scopeCount{0};

void OnFault(int signo, siginfo_t* info, void* context) {
  if (Guard* guard = t_innermostGuard) {
    // Only a guarded thread knows its stack's limit, and only there does the
    // handler have a stack of its own to run on after an overflow.
    guard->code =
        qvsysbase::detail::IsStackOverflow(signo, *info) ? kStackOverflow : FaultCode(signo, *info);
    // Restores the signal mask saved by sigsetjmp, so the signal is deliverable
    // again even on kernels that ignore SA_NODEFER.
    siglongjmp(guard->env, 1);
  }
  if (g_scopeCount.load() > 0) {
    // Throw at the fault. SA_NODEFER left the signal unblocked, so the next
    // fault is delivered after this unwinds.
    qvsysbase::OSExceptionRecord record{FaultCode(signo, *info), 0};
    myOSExceptionsHandlerNoVCL(&record, nullptr, nullptr, nullptr);
  }
  // This thread is in no guarded call and no scope asked for throwing: the
  // handlers are installed for another thread's sake. The fault goes where it
  // would have gone without us.
  qvsysbase::detail::ChainToPreviousDisposition(signo, info, context);
}

// Links a guard as this thread's innermost for its lifetime.
class GuardLink {
 public:
  explicit GuardLink(Guard& guard) : m_guard(guard) {
    m_guard.outer = t_innermostGuard;
    t_innermostGuard = &m_guard;
  }
  ~GuardLink() { t_innermostGuard = m_guard.outer; }
  GuardLink(const GuardLink&) = delete;
  GuardLink& operator=(const GuardLink&) = delete;

 private:
  Guard& m_guard;
};

class Installation {
 public:
  Installation() { qvsysbase::detail::InstallFaultHandlers(&OnFault); }
  ~Installation() { qvsysbase::detail::RestoreFaultHandlers(); }
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;
};

}  // namespace

int myOSExceptionsHandlerNoVCL(void* exceptionRecord, void* /*establisherFrame*/,
                               void* /*contextRecord*/, void* /*dispatcherContext*/) {
  // Copied out rather than cast: the record is raw memory from the platform.
  std::uint32_t fields[2];
  std::memcpy(fields, exceptionRecord, sizeof fields);
  if (IsDeclined(fields[0], fields[1])) return qvsysbase::kOSExceptionContinueSearch;
  ThrowTranslated(fields[0]);
}

namespace qvsysbase {

OSExceptionScope::OSExceptionScope() {
  ++g_scopeCount;
  detail::InstallFaultHandlers(&OnFault);
}
OSExceptionScope::~OSExceptionScope() {
  detail::RestoreFaultHandlers();
  --g_scopeCount;
}

namespace detail {

void CallGuarded(void (*body)(void*), void* context) {
  const Installation installation;
  // The outermost guarded call of the thread gives it the alternate stack on
  // which the handler can run after a stack overflow; nested calls share it.
  std::optional<GuardedThreadStack> stack;
  if (t_innermostGuard == nullptr) stack.emplace();
  Guard guard;
  const GuardLink link(guard);
  // savemask 1: the jump back restores the mask as it is here, whatever the
  // kernel blocked while delivering the fault.
  if (sigsetjmp(guard.env, 1) == 0) {
    body(context);
    return;
  }
  const std::uint32_t code = guard.code;
  OSExceptionRecord record{code, 0};
  // The link, the stack and the installation are undone by the unwinding of
  // this throw.
  myOSExceptionsHandlerNoVCL(&record, nullptr, nullptr, nullptr);
}

}  // namespace detail
}  // namespace qvsysbase
