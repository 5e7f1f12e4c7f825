#include <gtest/gtest.h>

#include "qvsysbase/ChartComparison.h"

namespace qvsysbase {
namespace {

using Diffs = std::vector<ChartDifference>;
constexpr auto kValue = ChartDifference::DIFF_VALUE;
constexpr auto kGroup = ChartDifference::DIFF_GROUP;

std::vector<std::wstring> Texts(const Diffs& diffs) {
  std::vector<std::wstring> texts;
  for (const ChartDifference& d : diffs)
    texts.push_back((d.m_nType == kGroup ? L"# " : L"") + d.m_wstrText);
  return texts;
}

TEST(ChartComparisonTest, DefaultsAndFlagOperations) {
  ChartComparisonOptions o;
  EXPECT_FALSE(o.m_bUseAbsTolerance || o.m_bReportAll || o.m_bUseZeroFloor);
  EXPECT_EQ(o.m_dAbsTolerance, 0.0);
  EXPECT_EQ(o.m_dRelPrecisionPercent, 0.0);
  EXPECT_EQ(o.m_dZeroFloor, 1e-9);
  EXPECT_EQ(o.m_nViewFlags, 0x7Fu);
  EXPECT_EQ(o.m_nObjectFlags, 0x3FFu);
  o.setObjectCompFlag(OBJECT_VAR_CASE, false);
  o.setObjectCompFlag(static_cast<ObjectComparisonCategory>(10), false);  // ignored
  o.setViewCompFlag(static_cast<ViewComparisonCategory>(-1), false);      // ignored
  EXPECT_EQ(o.m_nObjectFlags, 0x3FBu);
  EXPECT_EQ(o.m_nViewFlags, 0x7Fu);
  EXPECT_FALSE(o.getObjectCompFlag(OBJECT_VAR_CASE));
  EXPECT_FALSE(o.getObjectCompFlag(static_cast<ObjectComparisonCategory>(10)));
  EXPECT_FALSE(o.getViewCompFlag(static_cast<ViewComparisonCategory>(7)));
  o.setAllViewCompFlags(false);
  o.setViewCompFlag(VIEW_CATEGORY_6, true);
  EXPECT_EQ(o.m_nViewFlags, 0x40u);
  o.setAllObjectCompFlags(true);
  EXPECT_EQ(o.m_nObjectFlags, 0x3FFu);
  EXPECT_EQ(ChartDifference(), ChartDifference(kGroup, -1, L"Dummy"));
}

TEST(ChartComparisonTest, ValueComparisonsPrintExactTexts) {
  ChartComparisonOptions o;
  Diffs d;
  EXPECT_FALSE(ChartDifference::CompareNum(1, 2, L"Value", o, kValue, d, false));
  EXPECT_FALSE(ChartDifference::CompareNum(-0.1, 1e20, L"N", o, kGroup, d, false));
  EXPECT_FALSE(ChartDifference::CompareBool(true, false, L"B", o, kValue, d, false));
  EXPECT_FALSE(ChartDifference::CompareInt(-3, 40, L"I", o, kValue, d, false));
  EXPECT_FALSE(ChartDifference::CompareWStr(L"\u00e9t\u00e9", L"", L"S", o, kValue, d, false));
  EXPECT_TRUE(ChartDifference::CompareWStr(L"a", L"a", L"S", o, kValue, d, false));
  EXPECT_EQ(Texts(d),
            (std::vector<std::wstring>{
                L"Value: (1.000000000000000000) vs. (2.000000000000000000)",
                L"# N: (-0.100000000000000006) vs. (100000000000000000000.000000000000000000)",
                L"B: (true) vs. (false)",
                L"I: (-3) vs. (40)",
                L"S: (\u00e9t\u00e9) vs. ()"}));
  EXPECT_EQ(d[0].m_nIndex, -1);
}

TEST(ChartComparisonTest, ReportAllListsEqualValuesUnlessForced) {
  ChartComparisonOptions o;
  o.m_bReportAll = true;
  Diffs d;
  EXPECT_FALSE(ChartDifference::CompareInt(5, 5, L"I", o, kValue, d, false));
  EXPECT_TRUE(ChartDifference::CompareInt(5, 5, L"forced", o, kValue, d, true));
  EXPECT_FALSE(ChartDifference::CompareInt(5, 6, L"forced", o, kValue, d, true));
  EXPECT_EQ(Texts(d), (std::vector<std::wstring>{L"I: (5) vs. (5)", L"forced: (5) vs. (6)"}));
}

TEST(ChartComparisonTest, NumberRules) {
  struct Row {
    bool abs;
    double tolerance, percent;
    bool floor;
    double a, b;
    bool equal;
  } rows[] = {
      {false, 0, 0, false, 1.0, 1.0, true},
      {false, 0, 0, false, 1.0, 1.0 + 2.3e-16, false},
      {true, 0.5, 0, false, 1.0, 1.5, true},
      {true, 0.5, 0, false, 1.0, 1.6, false},
      {false, 0, 1, false, 100, 100.9, true},
      {false, 0, 1, false, 100, 102, false},
      {false, 0, 1, false, 0, 1e-10, false},
      {false, 0, 1, true, 0, 1e-10, true},
      {false, 0, 1, true, 0, 1e-8, false},
      {false, 0, -5, false, 1, 1.01, false},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(testing::Message() << r.a << " vs " << r.b << " abs " << r.abs << " pct "
                                    << r.percent << " floor " << r.floor);
    ChartComparisonOptions o;
    o.m_bUseAbsTolerance = r.abs;
    o.m_dAbsTolerance = r.tolerance;
    o.m_dRelPrecisionPercent = r.percent;
    o.m_bUseZeroFloor = r.floor;
    Diffs d;
    EXPECT_EQ(ChartDifference::CompareNum(r.a, r.b, L"x", o, kValue, d, false), r.equal);
    EXPECT_EQ(d.empty(), r.equal);
  }
}

// Two snapshots with one entry in every container.
FrozenChartData Sample() {
  FrozenChartData d;
  d.nVars = 2;
  d.wstrTitle = L"T";
  d.m_vecvecHighlight = {{1, 2}, {}};
  d.m_mapObs = {{0, 1}, {1, 1}};
  d.m_mapDiscreteVar = {{0, false}, {1, true}};
  d.m_mapVarHeader = {{0, L"x"}, {1, L"y"}};
  d.m_mapParamType = {{0, -1}, {1, 0}};
  d.m_vecVarCase = {{{0, 0}, {}}, {{1, 0}, {}}};
  d.m_vecVarIndex = {{{0, 0}, {}}};
  d.m_vecVar1Var2 = {{{0, 1}, L"f"}};
  d.m_vecVarValue = {{{0, 0}, 1.0}};
  d.m_vecAxisStatusParms = {{{0, 1, 0.5, 1}, -1.0}};
  d.m_mapParamConstraints = {{0, {false, {{1, 2}}}}};
  d.m_mapParamDiffConstraints = {{0, {true, {{{1, 2}, {3, 4}}}}}};
  d.m_vecCompConstraintParms = {{{0.0, 1, true}, {-1, L""}}};
  d.m_vecVarVecCases = {{{1, {0, 2}}, {0.0, L"Other", L""}}};
  return d;
}

TEST(ChartComparisonTest, EqualSnapshotsHaveNoDifferences) {
  Diffs d(3);
  EXPECT_TRUE(CompareFrozenChartData(Sample(), Sample(), d, ChartComparisonOptions()));
  EXPECT_TRUE(d.empty());
}

TEST(ChartComparisonTest, DifferencesComeInTheFixedOrderWithTheirHeaders) {
  FrozenChartData a = Sample();
  FrozenChartData b = Sample();
  b.nHighlightIndex = 3;
  b.m_vecvecHighlight[0] = {1};
  b.m_mapDiscreteVar[1] = false;
  b.m_mapVarHeader = {{0, L"x"}, {2, L"y"}};
  b.m_vecVarCase[1].second.dValue = 2;
  b.m_vecVarCase[1].second.wstrHint = L"h";
  b.m_vecVarIndex[0].first.nCase = 9;
  b.m_vecVar1Var2[0].second = L"g";
  b.m_vecVarValue[0].second = 0.5;
  b.m_vecAxisStatusParms[0].second = 1;
  b.m_mapParamConstraints[0].vecPairs = {{2, 1}};
  b.m_mapParamDiffConstraints[0].bLeftAlign = false;
  b.m_vecCompConstraintParms[0].second = {1, L"c"};
  b.m_vecVarVecCases[0].second.wstrLabel = L"L";
  Diffs d;
  EXPECT_FALSE(CompareFrozenChartData(a, b, d, ChartComparisonOptions()));
  EXPECT_EQ(Texts(d),
            (std::vector<std::wstring>{
                L"nHighlightIndex: (-1) vs. (3)",
                L"Values differ for m_vecvecHighlight[0]: {1, 2} vs. {1}",
                L"# Differences found in m_mapDiscreteVar data",
                L"Var=1: (true) vs. (false)",
                L"# Differences found in m_mapVarHeader data",
                L"Var=1: entry missing in second chart",
                L"# Data differences found for Var=1, Case=0",
                L"Value: (0.000000000000000000) vs. (2.000000000000000000)",
                L"Hint: () vs. (h)",
                L"Values differ for m_vecVarIndex[0]: (0, 0) vs. (0, 9)",
                L"# Data differences found for Var1=0, Var2=1",
                L"VarFooter: (f) vs. (g)",
                L"# Data differences found for Var=0, Value=0",
                L"ParticularValue: (1.000000000000000000) vs. (0.500000000000000000)",
                L"# Data differences found for Type=0, AxisPos=1, Posn=0.5, Var=1",
                L"AxisStatus: (-1.000000000000000000) vs. (1.000000000000000000)",
                L"# Differences found in m_mapParamConstraints data",
                L"# Differences found for ParmType=0",
                L"Values differ for vecPairs[0]: (1, 2) vs. (2, 1)",
                L"# Differences found in m_mapParamDiffConstraints data",
                L"# Differences found for ParmType=0",
                L"bLeftAlign: (true) vs. (false)",
                L"# Data differences found for Posn=0, Var=1, AlphaMeansAlpha=true",
                L"CompConstraint(int): (-1) vs. (1)",
                L"CompConstraint(wstr): () vs. (c)",
                L"# Data differences found for Var=1, Cases={0, 2}",
                L"ConsolidatedLabel: (Other) vs. (L)"}));
}

TEST(ChartComparisonTest, CountMismatchSkipsOnlyItsContainer) {
  FrozenChartData a = Sample();
  FrozenChartData b = Sample();
  b.m_vecVarCase.pop_back();
  b.m_vecVarCase[0].second.dValue = 7;  // not compared: counts differ
  b.m_mapParamDiffConstraints[0].vecPairs.clear();
  b.m_vecVar1Var2[0].second = L"g";
  Diffs d;
  EXPECT_FALSE(CompareFrozenChartData(a, b, d, ChartComparisonOptions()));
  EXPECT_EQ(Texts(d),
            (std::vector<std::wstring>{L"m_vecVarCase count mismatch: (2) vs. (1)",
                                       L"# Data differences found for Var1=0, Var2=1",
                                       L"VarFooter: (f) vs. (g)",
                                       L"# Differences found in m_mapParamDiffConstraints data",
                                       L"# Differences found for ParmType=0",
                                       L"vecPairs count mismatch: (1) vs. (0)"}));
}

TEST(ChartComparisonTest, CategoriesGateTheirMembers) {
  FrozenChartData a = Sample();
  FrozenChartData b = Sample();
  b.m_vecVarCase[0].second.bValid = true;
  b.m_mapParamConstraints.clear();
  b.m_mapParamDiffConstraints[0].bLeftAlign = false;
  ChartComparisonOptions o;
  o.setObjectCompFlag(OBJECT_VAR_CASE, false);
  o.setObjectCompFlag(OBJECT_PARAM_CONSTRAINTS, false);
  Diffs d;
  EXPECT_TRUE(CompareFrozenChartData(a, b, d, o));
  o.setAllObjectCompFlags(false);
  b = FrozenChartData();
  EXPECT_TRUE(CompareFrozenChartData(a, b, d, o));
}

TEST(ChartComparisonTest, ReportAllListsEveryValueButNoAgreeingCount) {
  FrozenChartData a;
  a.nVars = 1;
  a.m_mapObs = {{0, 1}};
  a.m_vecVarIndex = {{{0, 0}, {true, L"t"}}};
  ChartComparisonOptions o;
  o.m_bReportAll = true;
  o.setObjectCompFlag(OBJECT_SCALARS, false);
  Diffs d;
  EXPECT_FALSE(CompareFrozenChartData(a, a, d, o));
  EXPECT_EQ(Texts(d),
            (std::vector<std::wstring>{L"# Differences found in m_mapObs data",
                                       L"Var=0: (1) vs. (1)",
                                       L"# Data differences found for Var=0, Index=0",
                                       L"HintLabel(bool): (true) vs. (true)",
                                       L"HintLabel(text): (t) vs. (t)"}));
}

}  // namespace
}  // namespace qvsysbase
