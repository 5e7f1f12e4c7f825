#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

#include "qvsysbase/OSExceptions.h"

namespace qvsysbase {
namespace {

// How many faults each child process provokes in a row: enough to show that
// the handlers, the signal mask and the unwinding are back in order every time.
constexpr int kRepetitions = 200;

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
                       : typeid(e) == typeid(std::runtime_error)   ? "runtime: "
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
      {0xC0000005, 0, "runtime: access violation"},  {0xC0000006, 0, "runtime: page error"},
      {0xC0000008, 0, "runtime: invalid handle"},    {0xC0000017, 0, "runtime: no memory"},
      {0xC000001D, 0, "runtime: illegal instruction"},
      {0xC0000025, 0, "runtime: noncontinuable exception"},
      {0xC0000026, 0, "runtime: invalid disposition"},
      {0xC000008C, 0, "runtime: array bounds exceeded"},
      {0xC000008D, 0, "runtime: denormal operand"},
      {0xC000008E, 0, "runtime: float divide by zero"},
      {0xC000008F, 0, "runtime: inexact result"},
      {0xC0000090, 0, "runtime: float invalid operation"},
      {0xC0000091, 0, "overflow: float overflow"},   {0xC0000092, 0, "runtime: float stack check"},
      {0xC0000093, 0, "underflow: float underflow"},
      {0xC0000094, 0, "runtime: integer divide by zero"},
      {0xC0000095, 0, "overflow: integer overflow"},
      {0xC0000096, 0, "runtime: privileged instruction"},
      {0xC00000FD, 0, "runtime: stack overflow"},    {0xC000013A, 0, "runtime: control C exit"},
      {0xC00002B4, 0, "runtime: float multiple faults"},
      {0xC00002B5, 0, "runtime: float multiple traps"},
      {0xC00002C9, 0, "runtime: reg nat consumption"},
      {0xC0000001, 0, "runtime: unrecognised exception code"},
      {0x80000002, 0, "runtime: unrecognised exception code"},
      // Declined: the run-times' own codes whatever the flags, and any flag of 0x2E.
      {0x0EEFFACE, 0, "declined 1"},   {0x0EEFFACE, 0xFFFFFFFF, "declined 1"},
      {0x0EEDFADE, 0, "declined 1"},   {0xC0000094, 0x2, "declined 1"},
      {0xC0000094, 0x4, "declined 1"}, {0xC0000094, 0x8, "declined 1"},
      {0xC0000094, 0x20, "declined 1"},
      // Flags outside the mask (0x1 non-continuable, 0x10 nested) do not decline.
      {0xC0000094, 0xFFFFFFD1, "runtime: integer divide by zero"},
      // clang-format on
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(::testing::Message() << std::hex << row.code << " flags " << row.flags);
    EXPECT_EQ(Translate(row.code, row.flags), row.expected);
  }
}

// --- Real faults, each run in a child process so that a failure cannot take the
// runner with it. A child exits 0 only when every repetition arrived as the
// expected exception and the process kept working afterwards.

// The operands are volatile so that neither compiler folds the division away,
// and the sanitizers are told to let the processor see it.
__attribute__((noinline, no_sanitize("integer-divide-by-zero"))) int Divide(int numerator,
                                                                            int denominator) {
  volatile int n = numerator;
  volatile int d = denominator;
  return n / d;
}

// An address in the never-mapped first page: a non-null, aligned, invalid write.
__attribute__((noinline)) void WriteInvalid(int value) {
  volatile int* volatile target = reinterpret_cast<int*>(std::uintptr_t{64});
  *target = value;
}

// Runs fault kRepetitions times through run(fault), which must throw; exits the
// child with 0 when every repetition gave a std::runtime_error with text.
template <class Run, class Fault>
[[noreturn]] void ExpectFaultsArrive(Run run, Fault fault, const char* text) {
  int failures = 0;
  for (int i = 0; i < kRepetitions; ++i) {
    try {
      run(fault);
      ++failures;
    } catch (const std::runtime_error& e) {
      if (typeid(e) != typeid(std::runtime_error) || std::string(e.what()) != text) ++failures;
    }
  }
  // The process still works: ordinary arithmetic, allocation and output.
  const std::string after = std::to_string(Divide(84, 2));
  std::fprintf(stderr, "failures=%d after=%s\n", failures, after.c_str());
  std::exit(failures == 0 && after == "42" ? 0 : 1);
}

void DivideByZero() { static_cast<void>(Divide(1, 0)); }
void WriteToInvalidAddress() { WriteInvalid(7); }

void Guarded(void (*fault)()) { CallTranslatingOSExceptions(fault); }

class OSExceptionsDeathTest : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(OSExceptionsDeathTest, GuardedCallTranslatesIntegerDivisionByZero) {
  EXPECT_EXIT(ExpectFaultsArrive(&Guarded, &DivideByZero, "integer divide by zero"),
              ::testing::ExitedWithCode(0),
              "failures=0 after=42");
}

TEST_F(OSExceptionsDeathTest, GuardedCallTranslatesInvalidWrite) {
  EXPECT_EXIT(ExpectFaultsArrive(&Guarded, &WriteToInvalidAddress, "access violation"),
              ::testing::ExitedWithCode(0),
              "failures=0 after=42");
}

TEST_F(OSExceptionsDeathTest, NestedGuardedCallsEachCatchTheirOwnFault) {
  auto nested = [](void (*fault)()) {
    CallTranslatingOSExceptions([fault] {
      try {
        CallTranslatingOSExceptions(fault);
      } catch (const std::runtime_error&) {
        WriteInvalid(1);  // a second fault, now in the outer guarded call
      }
    });
  };
  EXPECT_EXIT(ExpectFaultsArrive(nested, &DivideByZero, "access violation"),
              ::testing::ExitedWithCode(0),
              "failures=0 after=42");
}

// Threads fault at the same time, half dividing and half writing: each fault
// goes back to the guarded call of its own thread with its own text.
[[noreturn]] void FaultOnSeveralThreads() {
  constexpr int kThreads = 4;
  std::atomic<int> translated{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&translated, divide = t % 2 == 0] {
      const std::string expected = divide ? "integer divide by zero" : "access violation";
      for (int i = 0; i < kRepetitions; ++i) {
        try {
          CallTranslatingOSExceptions(divide ? &DivideByZero : &WriteToInvalidAddress);
        } catch (const std::runtime_error& e) {
          if (e.what() == expected) ++translated;
        }
      }
    });
  }
  for (auto& thread : threads) thread.join();
  std::fprintf(stderr, "translated=%d\n", translated.load());
  std::exit(translated == kThreads * kRepetitions ? 0 : 1);
}

TEST_F(OSExceptionsDeathTest, GuardedCallsOnSeveralThreadsKeepTheirOwnFaults) {
  EXPECT_EXIT(FaultOnSeveralThreads(), ::testing::ExitedWithCode(0), "translated=800");
}

TEST(OSExceptionsTest, GuardedCallReturnsTheResultAndPassesExceptionsThrough) {
  EXPECT_EQ(CallTranslatingOSExceptions([] { return Divide(84, 2); }), 42);
  EXPECT_EQ(CallTranslatingOSExceptions([] { return std::string("x"); }), "x");
  EXPECT_THROW(CallTranslatingOSExceptions([] { throw std::domain_error("d"); }),
               std::domain_error);
}

TEST_F(OSExceptionsDeathTest, FaultsAreNotTranslatedOutsideAnyScope) {
  // The previous handlers are back after guarded calls and scopes end, so a
  // fault ends the process as it would without the library.
  EXPECT_DEATH(
      {
        CallTranslatingOSExceptions([] {});
        { const OSExceptionScope scope; }
        DivideByZero();
      },
      "");
  EXPECT_DEATH(
      {
        CallTranslatingOSExceptions([] {});
        WriteToInvalidAddress();
      },
      "");
}

#if defined(QV_TEST_NON_CALL_EXCEPTIONS)
// This file is compiled with -fnon-call-exceptions: the fault itself throws.
int g_destroyed = 0;

struct DestructionCounter {
  ~DestructionCounter() { ++g_destroyed; }
};

// Each faults in a frame holding a local with a destructor, so unwinding must
// start at the faulting instruction itself, not at a call.
__attribute__((noinline, no_sanitize("integer-divide-by-zero"))) void DivideByZeroWithLocal() {
  const DestructionCounter counter;
  volatile int zero = 0;
  volatile int result = 1 / zero;
  static_cast<void>(result);
}

__attribute__((noinline)) void WriteInvalidWithLocal() {
  const DestructionCounter counter;
  volatile int* volatile target = reinterpret_cast<int*>(std::uintptr_t{64});
  *target = 7;
}

// Rethrows what the fault threw, provided the faulting frame was unwound.
void InScope(void (*fault)()) {
  const OSExceptionScope scope;
  const int before = g_destroyed;
  try {
    fault();
  } catch (const std::runtime_error& e) {
    if (g_destroyed == before + 1) throw;
  }
}

TEST_F(OSExceptionsDeathTest, ScopeThrowsIntegerDivisionByZeroAtTheFault) {
  EXPECT_EXIT(ExpectFaultsArrive(&InScope, &DivideByZeroWithLocal, "integer divide by zero"),
              ::testing::ExitedWithCode(0),
              "failures=0 after=42");
}

TEST_F(OSExceptionsDeathTest, ScopeThrowsInvalidWriteAtTheFault) {
  EXPECT_EXIT(ExpectFaultsArrive(&InScope, &WriteInvalidWithLocal, "access violation"),
              ::testing::ExitedWithCode(0),
              "failures=0 after=42");
}
#else
TEST(OSExceptionsTest, ScopeThrowingAtTheFault) {
  GTEST_SKIP() << "this compiler cannot unwind from a faulting instruction "
                  "(-fnon-call-exceptions); guarded calls cover it";
}
#endif

}  // namespace
}  // namespace qvsysbase
