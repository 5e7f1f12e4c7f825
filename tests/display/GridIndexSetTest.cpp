#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <set>
#include <vector>

#include "qvsysbase/GridSelections.h"

namespace qvsysbase {
namespace {

constexpr unsigned kMax = std::numeric_limits<unsigned>::max();

std::vector<unsigned> Members(const GridIndexSet& set) { return {set.begin(), set.end()}; }

// Against std::set under random inserts and erases of short ranges in a small
// domain, where runs meet, overlap, split and touch both ends.
TEST(GridIndexSetTest, BehavesAsAnOrderedSetOfEveryMember) {
  constexpr unsigned kSeed = 20261123;
  SCOPED_TRACE(::testing::Message() << "seed " << kSeed);
  std::mt19937 random(kSeed);
  std::uniform_int_distribution<unsigned> value(0, 40), length(0, 6), op(0, 9);
  GridIndexSet set;
  std::set<unsigned> model;
  for (int step = 0; step < 4000; ++step) {
    const unsigned first = value(random), len = length(random), kind = op(random);
    // An empty range (last before first) now and then.
    const unsigned last = len == 0 && first > 0 ? first - 1 : first + std::max(len, 1u) - 1;
    for (unsigned v = first; v <= last; ++v) {
      kind < 6 ? (void)model.insert(v) : (void)model.erase(v);
    }
    if (kind < 6) {
      set.insert(first, last);
    } else if (kind < 9) {
      set.erase(first, last);
    } else {
      set.clear(), model.clear();
    }
    ASSERT_EQ(Members(set), std::vector<unsigned>(model.begin(), model.end())) << "step " << step;
    ASSERT_EQ(set.size(), model.size());
    for (const auto& [runFirst, runLast] : set.runs()) {
      ASSERT_FALSE(model.count(runFirst - 1)) << "runs not maximal";
      ASSERT_FALSE(model.count(runLast + 1)) << "runs not maximal";
    }
    for (unsigned v = 0; v < 50; ++v) ASSERT_EQ(set.contains(v), model.count(v) == 1) << v;
  }
}

TEST(GridIndexSetTest, WholeRangeIsOneRun) {
  GridIndexSet set;
  set.insert(0, kMax);
  EXPECT_EQ(set.size(), std::uint64_t{1} << 32);
  EXPECT_EQ(set.runs().size(), 1u);
  EXPECT_TRUE(set.contains(kMax));
  set.erase(1, kMax - 1);
  EXPECT_EQ(Members(set), (std::vector<unsigned>{0, kMax}));
  set.insert(kMax - 1);
  set.erase(0);
  EXPECT_EQ(Members(set), (std::vector<unsigned>{kMax - 1, kMax}));
  set.erase(0, kMax);
  EXPECT_TRUE(set.empty());
  EXPECT_EQ(set.size(), 0u);
  EXPECT_EQ(set.begin(), set.end());
}

}  // namespace
}  // namespace qvsysbase
