// Translation of processor and system faults into standard exceptions.
//
// A fault (an invalid memory access, an integer division by zero, an illegal
// instruction, a floating-point trap) normally ends the process. Translated, it
// arrives as a std::runtime_error (std::overflow_error, std::underflow_error for
// the overflows and the underflow) with a short English text, so the
// application's ordinary handlers catch it like any other error:
//
//   try {
//     qvsysbase::CallTranslatingOSExceptions([&] { RunUserModel(model); });
//   } catch (const std::exception& e) {
//     ReportError(e.what());  // "access violation", "integer divide by zero", ...
//   }
//
// The translation table is myOSExceptionsHandlerNoVCL, which reads a fault
// record (code and flags) and throws or declines. Faults reach it in one of two
// ways; an application turns on either or both.
//
// 1. Guarded calls, with every compiler. CallTranslatingOSExceptions(body) runs
//    body; when body faults on the calling thread, control returns to the call,
//    which throws the translated exception. The fault handlers are installed
//    for the duration of the call (and restored afterwards), the signal mask is
//    restored. While its outermost guarded call runs, a thread also has an
//    alternate signal stack of the library's (64 KiB, allocated at the thread's
//    first guarded call and freed when the thread ends; the thread's previous
//    alternate stack is back when the call ends), so a stack overflow in body
//    arrives as "stack overflow", as often as it happens, and the thread goes
//    on working: the guard page below the stack stays in place and catches the
//    next overflow the same way. Limit: the frames between the fault and the
//    call are abandoned, not unwound, so destructors of objects living in them
//    do not run (memory they own leaks, locks they hold stay held). Keep
//    guarded bodies to code whose state the caller can afford to lose after a
//    fault, e.g. a computation over buffers the caller owns.
//
// 2. Throwing at the fault, with g++ only. While an OSExceptionScope is alive,
//    a fault outside any guarded call throws the translated exception from the
//    fault itself; it unwinds through the faulting frame like an ordinary throw
//    and runs every destructor. This needs every translation unit whose code can
//    fault or is unwound through to be compiled with -fnon-call-exceptions,
//    which only g++ honours; where it is missing (clang), the throw reaches a
//    frame that cannot be unwound and the process ends in std::terminate.
//
// A fault that neither way takes, on a thread inside no guarded call while no
// OSExceptionScope is alive (the handlers are installed for another thread's
// guarded call), goes to the disposition that was in place before the
// handlers: the previous handler runs (with its own mask and flags), or the
// default action ends the process with the signal. An ignored fault signal
// gets the default action too, as the system gives it to a fault it cannot
// deliver; a fault signal merely sent (kill, raise) and ignored stays ignored.
//
// Limits of both: faults are translated on the thread that raised them only
// while the handlers are installed. A stack overflow is recognised by its
// address, a memory fault within 1 MiB of the lowest address of the thread's
// stack, and only inside a guarded call. Outside one it is not recognised:
// where the thread has no alternate signal stack of its own no handler can run
// and the process ends as before; where it has one, the overflow is handled as
// any other memory fault. A fault inside the C library's allocator or another
// non-reentrant routine leaves that routine's state broken. Floating-point
// traps arrive only where the application has unmasked them; by default IEEE
// arithmetic does not trap. Under AddressSanitizer the handlers replace the
// sanitizer's fault report for their lifetime (its default
// allow_user_segv_handler=1 permits it), and faults they do not take still
// reach that report.
//
// Thread-safety: myOSExceptionsHandlerNoVCL and CallTranslatingOSExceptions
// are thread-safe; each thread's faults go to that thread's innermost guarded
// call. The handlers are process-wide: create and destroy OSExceptionScope
// objects in last-in, first-out order (typically one around the application's
// run on its main thread).
#ifndef QVSYSBASE_OSEXCEPTIONS_H_
#define QVSYSBASE_OSEXCEPTIONS_H_

#include <cstdint>
#include <optional>
#include <type_traits>
#include <utility>

#include "qvsysbase/Export.h"

// Translates the fault described by exceptionRecord, whose first two 32-bit
// fields are the fault code and the fault flags (qvsysbase::OSExceptionRecord).
// Returns 1 (continue the search: declined) for the run-time's own exception
// codes 0x0EEFFACE and 0x0EEDFADE and when any flag of 0x2E is set (unwinding,
// exit unwind, stack invalid, target unwind); otherwise it throws the exception
// its table gives for the code and does not return. The other three arguments
// belong to the platform's handler signature and are not read.
// REQUIRES: exceptionRecord points to at least two 32-bit fields.
QVSYSBASE_API int myOSExceptionsHandlerNoVCL(void* exceptionRecord, void* establisherFrame,
                                             void* contextRecord, void* dispatcherContext);

namespace qvsysbase {

// The leading fields of a fault record. Intentionally copyable.
struct OSExceptionRecord {
  std::uint32_t ExceptionCode;
  std::uint32_t ExceptionFlags;
};

// The handler's answer when it declines a fault.
inline constexpr int kOSExceptionContinueSearch = 1;

// Installs the fault handlers while alive; a fault outside any guarded call
// then throws at the fault (see 2. above). Restores the handlers that were in
// place before on destruction. Not copyable.
class QVSYSBASE_API OSExceptionScope {
 public:
  OSExceptionScope();
  ~OSExceptionScope();
  OSExceptionScope(const OSExceptionScope&) = delete;
  OSExceptionScope& operator=(const OSExceptionScope&) = delete;
};

// Runs body() and returns its result. A fault raised by body on this thread
// ends body and is thrown from here as its translated exception; exceptions
// body throws itself pass through unchanged. body's result must not be a
// reference.
template <class Body>
auto CallTranslatingOSExceptions(Body&& body);

// ---------------------------------------------------------------------------
// Implementation details; not part of the interface.

namespace detail {
// Runs body(context) as a guarded call. Thread-safe.
QVSYSBASE_API void CallGuarded(void (*body)(void*), void* context);
}  // namespace detail

template <class Body>
auto CallTranslatingOSExceptions(Body&& body) {
  using Result = std::invoke_result_t<Body&>;
  static_assert(!std::is_reference_v<Result>, "a guarded body returns a value");
  // call is a non-const local whatever body's qualification, so its address
  // passes through void* and the thunk restores its type.
  if constexpr (std::is_void_v<Result>) {
    auto call = [&body] { body(); };
    detail::CallGuarded([](void* context) { (*static_cast<decltype(call)*>(context))(); }, &call);
  } else {
    // Filled only when body returns normally; a fault or an exception skips it.
    std::optional<Result> result;
    auto call = [&] { result.emplace(body()); };
    detail::CallGuarded([](void* context) { (*static_cast<decltype(call)*>(context))(); }, &call);
    return std::move(*result);
  }
}

}  // namespace qvsysbase

#endif  // QVSYSBASE_OSEXCEPTIONS_H_
