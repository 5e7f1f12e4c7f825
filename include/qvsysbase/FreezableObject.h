// FreezableObject: a displayable object that holds a live chart and a frozen
// snapshot of it, answers the chart queries from them, saves and reads the
// snapshot through the streams, and compares snapshots.
//
//   FreezableObject before;
//   before.setChartObject(&liveChart);   // not owned
//   before.Freeze();                     // the chart's answers, now
//   ... the model changes ...
//   FreezableObject after;
//   after.setChartObject(&liveChart);
//   after.Freeze();
//   std::vector<ChartDifference> diffs;
//   before.compareChartObjects(&after, diffs, ChartComparisonOptions());
//
// What Freeze asks the live chart, with n = GetNVarsChart() and, per variable
// v, m = GetNObsChart(v):
//   - the scalars: GetNVarsChart, IsReassingValuesToMinMaxChart, GetTitleChart,
//     GetFooterChart, GetHighlightIndex and the lists of GetHighlightArray;
//   - per variable v < n: GetNObsChart, IsDiscreteVarChart, GetVarHeaderChart,
//     convertVarIndex2ParamType;
//   - per point (v, c), c < m: IsValidChart(v, c, 0), IsConnectedChart(v, c, 0),
//     GetValueChart, GetValueAsTextChart, GetPointStatus, GetPointColor,
//     IsPointMarked, IsLabelMajorChart, GetValueAsLabelChart,
//     GetValueAsHintChart;
//   - GetHintAsLabel(v, i) for i < m; GetParticularValueChart(v, k) for k < 4;
//     GetConsolidatedValue, GetConsolidatedLabel and GetConsolidatedHint of all
//     of v's cases {0, ..., m-1};
//   - GetVarFooterChart(v1, v2) for every v1, v2 < n;
//   - GetAxisStatus(type, axisPos, 0.0, v) for type, axisPos in {0, 1};
//   - getParameterConstraints and getParameterDiffConstraints of every
//     non-negative parameter type convertVarIndex2ParamType gave;
//   - IsCompositeConstraint(0.0, v, text, alpha) for alpha false and true.
// A null chart freezes to an empty snapshot (no variables).
//
// While frozen, the queries above are answered from the snapshot (a question
// outside it gets the base default); while not, from the live chart, or the
// defaults when there is none. Other queries always get the base default.
//
// Thread-safety: thread-compatible.
//
// Ownership: the live chart is not owned and must outlive its use here. Not
// copyable (a displayable object owns its sender).
#ifndef QVSYSBASE_FREEZABLEOBJECT_H_
#define QVSYSBASE_FREEZABLEOBJECT_H_

#include <string>
#include <vector>

#include "qvsysbase/ChartComparison.h"
#include "qvsysbase/DisplayableObject.h"
#include "qvsysbase/Export.h"
#include "qvsysbase/GenericChartObject.h"

namespace qvsysbase {

class SaveStream;
class LoadStream;

class QVSYSBASE_API FreezableObject : public DisplayableObject {
 public:
  FreezableObject();
  ~FreezableObject() override;

  // Sets the live chart (not owned; may be null) and clears the snapshot.
  void setChartObject(GenericChartObject* chart);
  GenericChartObject* getChartObject() const;

  // Takes the snapshot from the live chart now, as listed above.
  void Freeze();
  bool IsFrozen() const;
  bool IsFrozenSnapshot() const override;  // IsFrozen()
  // The snapshot; empty while not frozen.
  const FrozenChartData& GetFrozenData() const;

  // Writes the snapshot as one versioned object record.
  void SaveToStream(SaveStream& stream) const;
  // Reads a record written by SaveToStream. A truncated or damaged record
  // fails the stream and leaves this object unfrozen with an empty snapshot.
  void ReadFromStream(LoadStream& stream);

  // When this object is frozen: replaces `diffs` with the differences between
  // the two snapshots (CompareFrozenChartData), or with "Chart object type
  // mismatch" when `other` is null or not a frozen FreezableObject. When not
  // frozen: the base's "Error -- trying to compare non-frozen objects".
  bool compareChartObjects(const GenericChartObject* other, std::vector<ChartDifference>& diffs,
                           const ChartComparisonOptions& options) const override;

  // --- Chart queries, from the snapshot or the live chart ------------------
  unsigned GetNVarsChart() const override;
  unsigned GetNObsChart(unsigned var) const override;
  bool IsDiscreteVarChart(unsigned var) const override;
  std::wstring GetVarHeaderChart(unsigned var) const override;
  int convertVarIndex2ParamType(unsigned var) const override;
  bool IsValidChart(unsigned var, unsigned cas, unsigned view) const override;
  bool IsConnectedChart(unsigned var, unsigned cas, unsigned view) const override;
  double GetValueChart(unsigned var, unsigned cas) const override;
  std::wstring GetValueAsTextChart(unsigned var, unsigned cas) const override;
  int GetPointStatus(const unsigned& var, const unsigned& cas) const override;
  int GetPointColor(const unsigned& var, const unsigned& cas) const override;
  bool IsPointMarked(const unsigned& var, const unsigned& cas) const override;
  bool IsLabelMajorChart(unsigned var, unsigned cas) const override;
  std::wstring GetValueAsLabelChart(unsigned var, unsigned cas) const override;
  std::wstring GetValueAsHintChart(unsigned var, unsigned cas) const override;
  bool GetHintAsLabel(unsigned var, unsigned index, std::wstring& text) const override;
  double GetParticularValueChart(unsigned var, unsigned value) const override;
  double GetConsolidatedValue(unsigned var, std::vector<unsigned>& cases) const override;
  std::wstring GetConsolidatedLabel(unsigned var, std::vector<unsigned>& cases) const override;
  std::wstring GetConsolidatedHint(unsigned var, std::vector<unsigned>& cases) const override;
  std::wstring GetVarFooterChart(unsigned var1, unsigned var2) const override;
  double GetAxisStatus(unsigned type, unsigned axisPos, double posn, unsigned var) const override;
  void getParameterConstraints(std::vector<std::pair<unsigned, unsigned>>& pairs,
                               unsigned paramType, bool& leftAlign) const override;
  void getParameterDiffConstraints(
      std::vector<std::pair<std::pair<unsigned, unsigned>, std::pair<unsigned, unsigned>>>& pairs,
      unsigned paramType, bool& leftAlign) const override;
  int IsCompositeConstraint(double posn, unsigned var, std::wstring* text,
                            bool alphaMeansAlpha) const override;
  std::wstring GetTitleChart() const override;
  std::wstring GetFooterChart() const override;
  const HighlightLists* GetHighlightArray() const override;
  int GetHighlightIndex() const override;
  bool IsReassingValuesToMinMaxChart() const override;

 private:
  // Invariant: m_frozen is empty (default) whenever !m_bFrozen.
  GenericChartObject* m_pChart = nullptr;  // not owned
  bool m_bFrozen = false;
  FrozenChartData m_frozen;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_FREEZABLEOBJECT_H_
