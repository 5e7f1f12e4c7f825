#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <typeinfo>

#include "qvsysbase/OSExceptions.h"

namespace qvsysbase {
namespace {

// What the handler does with a record: "declined <result>" or the thrown
// exception's exact type and text.
std::string Translate(std::uint32_t code, std::uint32_t flags) {
  OSExceptionRecord record{code, flags};
  try {
    return "declined " +
           std::to_string(myOSExceptionsHandlerNoVCL(&record, nullptr, nullptr, nullptr));
  } catch (const std::exception& e) {
    const char* type = typeid(e) == typeid(std::overflow_error)    ? "overflow: "
                       : typeid(e) == typeid(std::underflow_error) ? "underflow: "
                       : typeid(e) == typeid(std::runtime_error)   ? ""
                                                                   : "other: ";
    return type + std::string(e.what());
  }
}

TEST(OSExceptionsTest, TranslatesCodesAndDeclinesRunTimeCodesAndUnwindingRecords) {
  const struct {
    std::uint32_t code, flags;
    const char* expected;
  } rows[] = {
      // clang-format off
      {0xC0000005, 0, "access violation"}, {0xC0000006, 0, "page error"}, {0xC0000008, 0, "invalid handle"},
      {0xC0000017, 0, "no memory"}, {0xC000001D, 0, "illegal instruction"},
      {0xC0000025, 0, "noncontinuable exception"}, {0xC0000026, 0, "invalid disposition"},
      {0xC000008C, 0, "array bounds exceeded"}, {0xC000008D, 0, "denormal operand"},
      {0xC000008E, 0, "float divide by zero"}, {0xC000008F, 0, "inexact result"},
      {0xC0000090, 0, "float invalid operation"}, {0xC0000091, 0, "overflow: float overflow"},
      {0xC0000092, 0, "float stack check"}, {0xC0000093, 0, "underflow: float underflow"},
      {0xC0000094, 0, "integer divide by zero"}, {0xC0000095, 0, "overflow: integer overflow"},
      {0xC0000096, 0, "privileged instruction"}, {0xC00000FD, 0, "stack overflow"},
      {0xC000013A, 0, "control C exit"}, {0xC00002B4, 0, "float multiple faults"},
      {0xC00002B5, 0, "float multiple traps"}, {0xC00002C9, 0, "reg nat consumption"},
      {0xC0000001, 0, "unrecognised exception code"}, {0x80000002, 0, "unrecognised exception code"},
      // Declined: the run-times' own codes whatever the flags, and any flag of 0x2E.
      {0x0EEFFACE, 0, "declined 1"}, {0x0EEFFACE, 0xFFFFFFFF, "declined 1"}, {0x0EEDFADE, 0, "declined 1"},
      {0xC0000094, 0x2, "declined 1"}, {0xC0000094, 0x4, "declined 1"}, {0xC0000094, 0x8, "declined 1"},
      {0xC0000094, 0x20, "declined 1"},
      // Flags outside the mask (0x1 non-continuable, 0x10 nested) do not decline.
      {0xC0000094, 0xFFFFFFD1, "integer divide by zero"},
      // clang-format on
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(::testing::Message() << std::hex << row.code << " flags " << row.flags);
    EXPECT_EQ(Translate(row.code, row.flags), row.expected);
  }
}

// --- Real faults, each run in a child process so that a failure cannot take the
// runner with it. Each fault function holds a local whose destructor counts, so
// that unwinding from the faulting instruction itself shows. The operands are
// volatile so that neither compiler folds the fault away.
int g_nUnwound = 0;
struct CountsUnwinding {
  ~CountsUnwinding() { ++g_nUnwound; }
};

__attribute__((noinline, no_sanitize("integer-divide-by-zero"))) int Divide(int n, int d) {
  const CountsUnwinding local;
  volatile int vn = n, vd = d;
  return vn / vd;
}
void DivideByZero() { static_cast<void>(Divide(1, 0)); }

// An address in the never-mapped first page: a non-null, aligned, invalid write.
__attribute__((noinline)) void WriteInvalid() {
  const CountsUnwinding local;
  volatile int* volatile target = reinterpret_cast<int*>(std::uintptr_t{64});
  *target = 7;
}

// Recurses until the stack is gone. The frame is read after the call returns,
// so no compiler can turn the recursion into a loop, and the end test on a
// volatile keeps it from being seen as endless.
volatile int g_nNeverReached = -1;
__attribute__((noinline)) int Recurse(int depth) {
  volatile char frame[256];
  frame[depth % 256] = 1;
  const int below = depth == g_nNeverReached ? 0 : Recurse(depth + 1);
  return below + frame[(depth * 7) % 256];
}
void OverflowStack() { static_cast<void>(Recurse(0)); }

void Guarded(void (*fault)()) { CallTranslatingOSExceptions(fault); }

// An inner guarded call takes the fault; the outer one goes on afterwards.
void GuardedTwice(void (*fault)()) {
  CallTranslatingOSExceptions([fault] {
    try {
      Guarded(fault);
    } catch (const std::runtime_error&) {
      throw;  // leaves the outer call as an ordinary exception
    }
  });
}

// The same on a thread of its own, as a second thread meets it.
void GuardedOnAThread(void (*fault)()) {
  std::exception_ptr failure;
  std::thread([&] {
    try {
      Guarded(fault);
    } catch (...) {
      failure = std::current_exception();
    }
  }).join();
  if (failure) std::rethrow_exception(failure);
}

#if defined(QV_TEST_NON_CALL_EXCEPTIONS)
// Compiled with -fnon-call-exceptions (g++ only): the fault itself throws.
// Rethrows it provided the faulting frame was unwound.
void InScope(void (*fault)()) {
  const OSExceptionScope scope;
  const int before = g_nUnwound;
  try {
    fault();
  } catch (const std::runtime_error&) {
    if (g_nUnwound == before + 1) throw;
  }
}
#endif

// A child that hangs is ended by the alarm, and fails its expectation.
constexpr unsigned kChildSeconds = 20;

// The alternate signal stack this thread has now.
stack_t CurrentAltStack() {
  stack_t current = {};
  sigaltstack(nullptr, &current);
  return current;
}

// In the child: the fault `times` times through run, each time the exact
// std::runtime_error; then the process still works and the thread has the
// alternate signal stack it had before. Exits 0 when all held.
[[noreturn]] void ExpectFaultsArrive(void (*run)(void (*)()), void (*fault)(), const char* text,
                                     int times) {
  alarm(kChildSeconds);
  const stack_t before = CurrentAltStack();
  int failures = 0;
  for (int i = 0; i < times; ++i) {
    try {
      run(fault);
      ++failures;
    } catch (const std::runtime_error& e) {
      failures += typeid(e) != typeid(std::runtime_error) || std::string(e.what()) != text;
    }
  }
  const stack_t after = CurrentAltStack();
  failures += after.ss_sp != before.ss_sp || after.ss_flags != before.ss_flags;
  const std::string result = std::to_string(Divide(84, 2));  // arithmetic, allocation, output
  std::fprintf(stderr, "failures=%d after=%s\n", failures, result.c_str());
  std::exit(failures == 0 && result == "42" ? 0 : 1);
}

TEST(OSExceptionsDeathTest, RepeatedFaultsArriveAsTheirExceptionsAndTheProcessGoesOn) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // An overflow fills the whole stack first, so it repeats fewer times.
  const struct {
    void (*run)(void (*)());
    void (*fault)();
    const char* text;
    int times;
  } rows[] = {
    {&Guarded, &DivideByZero, "integer divide by zero", 200},
    {&Guarded, &WriteInvalid, "access violation", 200},
    {&Guarded, &OverflowStack, "stack overflow", 20},
    {&GuardedTwice, &OverflowStack, "stack overflow", 20},
    {&GuardedOnAThread, &OverflowStack, "stack overflow", 10},
    {&GuardedOnAThread, &WriteInvalid, "access violation", 10},
#if defined(QV_TEST_NON_CALL_EXCEPTIONS)
    {&InScope, &DivideByZero, "integer divide by zero", 200},
    {&InScope, &WriteInvalid, "access violation", 200},
#endif
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EXIT(ExpectFaultsArrive(row.run, row.fault, row.text, row.times),
                ::testing::ExitedWithCode(0),
                "failures=0 after=42");
  }
}

// --- Faults outside any guarded call go where they went before ours.

// Dispositions installed for SIGSEGV before the guarded call starts.
void ExitWhenGivenTheFault(int signo, siginfo_t* info, void*) {
  const bool bSame = signo == SIGSEGV && info->si_addr == reinterpret_cast<void*>(64);
  _exit(bSame ? 42 : 1);
}
void ExitWhenGivenTheSignal(int signo) { _exit(signo == SIGSEGV ? 43 : 1); }

struct sigaction Disposition(void (*handler)(int), void (*action)(int, siginfo_t*, void*)) {
  struct sigaction previous = {};
  sigemptyset(&previous.sa_mask);
  if (action != nullptr) {
    previous.sa_sigaction = action;
    previous.sa_flags = SA_SIGINFO;
  } else {
    previous.sa_handler = handler;
  }
  return previous;
}

// In the child: with `previous` installed for SIGSEGV, a second thread sits in
// a guarded call while this one, guarded by nothing, faults (or is sent the
// signal). What happens is up to `previous`; a return from `fault` exits 0.
[[noreturn]] void UnguardedFaultBesideAGuardedCall(const struct sigaction& previous,
                                                   void (*fault)()) {
  alarm(kChildSeconds);
  sigaction(SIGSEGV, &previous, nullptr);
  std::promise<void> inside, release;
  std::thread guarded([&] {
    CallTranslatingOSExceptions([&] {
      inside.set_value();
      release.get_future().wait();
    });
  });
  inside.get_future().wait();
  fault();
  std::fprintf(stderr, "went on\n");
  release.set_value();
  guarded.join();
  std::exit(0);
}

void SendSegv() { std::raise(SIGSEGV); }

TEST(OSExceptionsDeathTest, UnguardedFaultsReachThePreviousDisposition) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const struct {
    const char* name;
    struct sigaction previous;
    void (*fault)();
    std::function<bool(int)> expected;
    const char* output;
  } rows[] = {
      // clang-format off
      {"handler with info", Disposition(nullptr, &ExitWhenGivenTheFault),  &WriteInvalid,
       ::testing::ExitedWithCode(42), ""},
      {"plain handler",     Disposition(&ExitWhenGivenTheSignal, nullptr), &WriteInvalid,
       ::testing::ExitedWithCode(43), ""},
      {"default",           Disposition(SIG_DFL, nullptr),                 &WriteInvalid,
       ::testing::KilledBySignal(SIGSEGV), ""},
      // A fault cannot be ignored: it gets the default action, as the kernel
      // gives it where no handler runs; a signal merely sent stays ignored.
      {"ignored fault",     Disposition(SIG_IGN, nullptr),                 &WriteInvalid,
       ::testing::KilledBySignal(SIGSEGV), ""},
      {"ignored signal",    Disposition(SIG_IGN, nullptr),                 &SendSegv,
       ::testing::ExitedWithCode(0), "went on"},
      {"default, signal",   Disposition(SIG_DFL, nullptr),                 &SendSegv,
       ::testing::KilledBySignal(SIGSEGV), ""},
      // clang-format on
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EXIT(
        UnguardedFaultBesideAGuardedCall(row.previous, row.fault), row.expected, row.output);
  }
}

}  // namespace
}  // namespace qvsysbase
