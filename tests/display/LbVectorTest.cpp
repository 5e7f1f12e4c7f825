#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

#include "qvsysbase/LbVector.h"

namespace qvsysbase {
namespace {

constexpr unsigned kMax = std::numeric_limits<unsigned>::max();

// Which indices are accepted, through both forms of indexing, and the exact
// text of each refusal; bounds near the top of the range must not wrap.
TEST(LbVectorTest, IndexesFromItsBoundOnly) {
  const struct {
    unsigned bound;
    std::size_t count;
    unsigned index;
    const char* refusal;  // null when accepted
  } cases[] = {
      // clang-format off
      {5, 3, 4, kLbVectorBelowText}, {5, 3, 5, nullptr}, {5, 3, 7, nullptr},
      {5, 3, 8, kLbVectorAboveText}, {0, 0, 0, kLbVectorAboveText},
      {0, 1, kMax, kLbVectorAboveText}, {kMax, 1, kMax, nullptr},
      {kMax - 1, 1, kMax, kLbVectorAboveText}, {kMax, 1, 0, kLbVectorBelowText},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.bound) + "+" + std::to_string(c.count) + " at " +
                 std::to_string(c.index));
    LbVector<std::string> v(c.bound, c.count, "x");
    for (bool constant : {false, true}) {
      try {
        EXPECT_EQ(constant ? std::as_const(v)[c.index] : v[c.index], "x");
        EXPECT_EQ(c.refusal, nullptr);
      } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), c.refusal);
      }
    }
  }
  LbVector<std::string> v(10, 1);
  v.push_back("b");
  v[10] = "a";
  EXPECT_EQ(std::string(*v.begin()) + v[11], "ab");
}

}  // namespace
}  // namespace qvsysbase
