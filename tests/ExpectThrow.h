// Shared by the test directories: checks the type and the exact text of what a
// call throws.
#ifndef QVSYSBASE_TESTS_EXPECTTHROW_H_
#define QVSYSBASE_TESTS_EXPECTTHROW_H_

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "qvsysbase/qvExcept.h"

namespace qvsysbase::testing_support {

// Runs `call` and checks that it throws E with text `text`; for an assertion,
// `text` is the condition and `unit`, when given, its unit.
template <typename E = AssertionException, typename F>
void ExpectThrowText(F call, const std::string& text, const std::string& unit = "") {
  try {
    call();
    ADD_FAILURE() << "no exception, expected " << text;
  } catch (const E& e) {
    if constexpr (std::is_same_v<E, AssertionException>) {
      EXPECT_EQ(e.getMessage(), text);
      if (!unit.empty()) {
        EXPECT_EQ(e.getFile(), unit);
      }
      EXPECT_EQ(e.getOrvelVersion(), "12.00");
    } else {
      EXPECT_EQ(std::string(e.what()), text);
    }
  }
}

}  // namespace qvsysbase::testing_support

#endif  // QVSYSBASE_TESTS_EXPECTTHROW_H_
