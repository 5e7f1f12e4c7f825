#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

#include "qvsysbase/LbVector.h"

namespace qvsysbase {
namespace {

constexpr unsigned kMax = std::numeric_limits<unsigned>::max();

// Which indices are accepted, and the exact text of each refusal.
TEST(LbVectorTest, IndexesFromItsBoundOnly) {
  const struct {
    unsigned bound;
    std::size_t count;
    unsigned index;
    const char* refusal;  // null when accepted
  } cases[] = {
      {5, 3, 4, kLbVectorBelowText},
      {5, 3, 5, nullptr},
      {5, 3, 7, nullptr},
      {5, 3, 8, kLbVectorAboveText},
      {0, 0, 0, kLbVectorAboveText},
      {0, 1, kMax, kLbVectorAboveText},
      {kMax, 1, kMax, nullptr},
      {kMax - 1, 1, kMax, kLbVectorAboveText},
      {kMax, 1, 0, kLbVectorBelowText},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.bound) + "+" + std::to_string(c.count) + " at " +
                 std::to_string(c.index));
    LbVector<int> v(c.bound, c.count, 7);
    const LbVector<int>& constant = v;
    if (c.refusal == nullptr) {
      EXPECT_EQ(v[c.index], 7);
      EXPECT_EQ(constant[c.index], 7);
      continue;
    }
    for (auto access : {+[](LbVector<int>&w, unsigned i) { return w[i]; },
                        +[](LbVector<int>&w, unsigned i) { return std::as_const(w)[i]; }}) {
      try {
        access(v, c.index);
        ADD_FAILURE() << "no exception";
      } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), c.refusal);
      }
    }
  }
}

TEST(LbVectorTest, ElementsKeepTheirIndexes) {
  LbVector<std::string> v(10, 2);
  v[10] = "a";
  v[11] = "b";
  v.push_back("c");
  EXPECT_EQ(v[12], "c");
  EXPECT_EQ(*v.begin(), "a");
  v.assign(3, 1, "x");
  EXPECT_EQ(v.GetLowBound(), 3u);
  EXPECT_EQ(v.size(), 1u);
  EXPECT_EQ(v[3], "x");
  EXPECT_THROW(v[10], std::out_of_range);
}

}  // namespace
}  // namespace qvsysbase
