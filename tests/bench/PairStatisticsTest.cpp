#include "PairStatistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace qvbench {
namespace {

TEST(PairStatisticsTest, RunNamesSplitBackIntoPairAndArm) {
  for (const Arm arm : {Arm::kLibrary, Arm::kBaseline, Arm::kOverhead}) {
    const std::string name = ArmRunName("nspdbExp1/1000/fast:direct", arm);
    std::string pair;
    Arm parsed = Arm::kOverhead;
    ASSERT_TRUE(SplitArmRunName(name, &pair, &parsed)) << name;
    EXPECT_EQ(pair, "nspdbExp1/1000/fast:direct");
    EXPECT_EQ(parsed, arm);
  }
}

TEST(PairStatisticsTest, NamesWithoutAnArmAreNotPairs) {
  for (const char* name : {"library", "", "x/librar", "x/library/", "x/Library", "BM_Other/8"}) {
    SCOPED_TRACE(name);
    std::string pair = "untouched";
    Arm arm = Arm::kLibrary;
    EXPECT_FALSE(SplitArmRunName(name, &pair, &arm));
    EXPECT_EQ(pair, "untouched");
  }
}

TEST(PairStatisticsTest, SummariseGivesMedianAndRange) {
  struct Row {
    std::vector<double> samples;
    double median, low, high;
  };
  const Row rows[] = {
      {{7}, 7, 7, 7},
      {{5, 1, 4, 2, 3}, 3, 1, 5},
      {{4, 1, 3, 2}, 2.5, 1, 4},      // even count: mean of the middle two
      {{9, 1, 1, 1, 100}, 1, 1, 100},  // one disturbed round moves only the range
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.samples));
    const Spread s = Summarise(row.samples);
    EXPECT_EQ(s.median, row.median);
    EXPECT_EQ(s.low, row.low);
    EXPECT_EQ(s.high, row.high);
  }
  const Spread none = Summarise({});
  EXPECT_TRUE(std::isnan(none.median) && std::isnan(none.low) && std::isnan(none.high));
}

TEST(PairStatisticsTest, RowsPairArmsTakeOffOverheadAndKeepOrder) {
  PairTable table;
  // Interleaved as the runner registers them; the second pair has an overhead.
  const double rounds[][5] = {{30, 10, 12, 4, 2}, {32, 11, 14, 5, 2}, {31, 40, 13, 6, 3}};
  for (const auto& r : rounds) {
    table.Add("b/library", r[0]);
    table.Add("b/baseline", r[1]);
    table.Add("a/library", r[2]);
    table.Add("a/baseline", r[3]);
    table.Add("a/overhead", r[4]);
    table.Add("unpaired", 1e9);
  }
  table.Add("lonely/library", 1);  // no baseline: filtered out, no row

  const std::vector<PairRow> rows = table.Rows();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].pair, "b");
  EXPECT_EQ(rows[0].library.median, 31);
  EXPECT_EQ(rows[0].baseline.median, 11);
  EXPECT_EQ(rows[0].baseline.high, 40);
  EXPECT_DOUBLE_EQ(rows[0].ratio, 31.0 / 11.0);
  EXPECT_EQ(rows[0].repetitions, 3);

  EXPECT_EQ(rows[1].pair, "a");  // overhead median 2 off every sample
  EXPECT_EQ(rows[1].library.median, 11);
  EXPECT_EQ(rows[1].library.low, 10);
  EXPECT_EQ(rows[1].baseline.median, 3);
  EXPECT_EQ(rows[1].baseline.high, 4);
  EXPECT_DOUBLE_EQ(rows[1].ratio, 11.0 / 3.0);
}

TEST(PairStatisticsTest, TableShowsTimesInTheirUnitAndTheRatio) {
  const std::vector<PairRow> rows = {
      {"exp/1000", {580e-9, 572e-9, 986e-9}, {597e-9, 552e-9, 832e-9}, 0.972, 5},
      {"gemm", {1.5e-3, 1.25e-3, 2.0}, {1e-6, 1e-6, 1e-6}, 1500, 5}};
  const std::string text = FormatPairTable(rows);
  EXPECT_NE(text.find("580 ns [572 ns, 986 ns]"), std::string::npos) << text;
  EXPECT_NE(text.find("1.5 ms [1.25 ms, 2 s]"), std::string::npos) << text;
  EXPECT_NE(text.find("0.972"), std::string::npos) << text;
  EXPECT_NE(text.find("1500.000"), std::string::npos) << text;
}

}  // namespace
}  // namespace qvbench
