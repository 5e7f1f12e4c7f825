// Test helper: one test body runs for the narrow and the wide text type, with
// its rows written in ASCII and widened by T().
#ifndef QVSYSBASE_TESTS_TEXT_BOTHTEXTTYPES_H_
#define QVSYSBASE_TESTS_TEXT_BOTHTEXTTYPES_H_

#include <gtest/gtest.h>

#include <string>

namespace qvsysbase::testing_support {

template <class S>
class BothTextTypesTest : public ::testing::Test {
 protected:
  static S T(const std::string& ascii) { return S(ascii.begin(), ascii.end()); }
};

using TextTypes = ::testing::Types<std::string, std::wstring>;

}  // namespace qvsysbase::testing_support

#endif  // QVSYSBASE_TESTS_TEXT_BOTHTEXTTYPES_H_
