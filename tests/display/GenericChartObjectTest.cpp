#include <gtest/gtest.h>

#include "qvsysbase/ChartComparison.h"
#include "qvsysbase/GenericChartObject.h"

namespace qvsysbase {
namespace {

class BareChart : public GenericChartObject {
 public:
  bool IsFrozenSnapshot() const override { return false; }
};

TEST(GenericChartObjectTest, BaseAnswersOneVariableWithOneDefaultPoint) {
  BareChart c;
  std::vector<unsigned> cases{0, 1};
  EXPECT_EQ(c.GetNVarsChart(), 1u);
  EXPECT_EQ(c.GetNObsChart(0), 1u);
  EXPECT_EQ(c.GetNSeriesChart(), 1u);
  EXPECT_EQ(c.GetNSeriesTypesChart(0), 1u);
  EXPECT_EQ(c.GetValueChart(0, 0), 0.0);
  EXPECT_EQ(c.GetParticularValueChart(0, 0), 1.0);
  EXPECT_EQ(c.GetAxisStatus(0, 0, 0.0, 0), -1.0);
  EXPECT_EQ(c.GetDateTimeStepChart(0), 22);
  EXPECT_EQ(c.GetDateChart(0, 0, 0), 1);
  EXPECT_EQ(c.convertVarIndex2ParamType(0), -1);
  EXPECT_EQ(c.GetPointStatus(0, 0), -1);
  EXPECT_EQ(c.GetPointColor(0, 0), -1);
  EXPECT_EQ(c.GetHighlightIndex(), -1);
  EXPECT_EQ(c.GetHighlightArray(), nullptr);
  EXPECT_EQ(c.getChartViewVW(0), nullptr);
  EXPECT_TRUE(c.IsLabelMajorChart(0, 0));
  EXPECT_FALSE(c.IsValidChart(0, 0, 0) || c.IsConnectedChart(0, 0, 0) || c.IsPointMarked(0, 0) ||
               c.IsDiscreteVarChart(0) || c.IsDateTimeChart(0) || c.Is3DChart() ||
               c.IsReassingValuesToMinMaxChart() || c.IsViewModeCompatible() || c.hasChartViews() ||
               c.isChartViewCompatibleVW() ||
               c.IsSeriesTypeAvailableChart(EnumTypesDO::ST_LINE, 0));
  EXPECT_EQ(c.GetConsolidatedLabel(0, cases), L"Other");
  EXPECT_EQ(c.GetConsolidatedValue(0, cases), 0.0);
  EXPECT_EQ(c.GetTitleChart() + c.GetFooterChart() + c.GetVarHeaderChart(0) +
                c.GetVarFooterChart(0, 1) + c.GetValueAsTextChart(0, 0) +
                c.GetValueAsLabelChart(0, 0) + c.GetValueAsHintChart(0, 0) +
                c.GetConsolidatedHint(0, cases) + c.GetIndexChart(0, 0),
            L"");
}

TEST(GenericChartObjectTest, BaseLeavesOutputArgumentsAlone) {
  BareChart c;
  std::wstring text = L"kept";
  EXPECT_FALSE(c.GetHintAsLabel(0, 0, text));
  EXPECT_EQ(c.IsCompositeConstraint(0.0, 0, &text, true), -1);
  EXPECT_EQ(c.IsCompositeConstraint(0.0, 0, nullptr, true), -1);
  std::vector<std::pair<unsigned, unsigned>> pairs{{1, 2}};
  bool left = true;
  c.getParameterConstraints(pairs, 0, left);
  EXPECT_EQ(text, L"kept");
  EXPECT_EQ(pairs.size(), 1u);
  EXPECT_TRUE(left);
}

TEST(GenericChartObjectTest, LiveChartsRefuseToCompare) {
  BareChart a;
  BareChart b;
  std::vector<ChartDifference> diffs(1);  // appended to, not replaced
  EXPECT_FALSE(a.compareChartObjects(&b, diffs, ChartComparisonOptions()));
  ASSERT_EQ(diffs.size(), 2u);
  EXPECT_EQ(diffs[0], ChartDifference());
  EXPECT_EQ(diffs[1],
            ChartDifference(
                ChartDifference::DIFF_VALUE, -1, L"Error -- trying to compare non-frozen objects"));
}

TEST(GenericChartObjectTest, FindEntryIsABinarySearchOverSortedKeys) {
  KeyedList<VarCaseKey, int> list{{{0, 0}, 1}, {{0, 5}, 2}, {{1, 0}, 3}};
  ASSERT_NE(FindEntry(list, VarCaseKey{0, 5}), nullptr);
  EXPECT_EQ(*FindEntry(list, VarCaseKey{1, 0}), 3);
  EXPECT_EQ(FindEntry(list, VarCaseKey{0, 1}), nullptr);
  EXPECT_EQ(FindEntry(list, VarCaseKey{2, 0}), nullptr);
}

}  // namespace
}  // namespace qvsysbase
