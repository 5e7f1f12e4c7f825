// GenericChartObject: the abstract data source behind every chart view, and
// FrozenChartData, the snapshot of everything such an object answered.
//
// A chart view never reads the model directly: it asks the chart object how
// many variables (series) and observations there are, each point's value,
// label, hint, colour and status, the titles and footers, and reports clicks
// back. Every operation has a harmless base behaviour (a constant, an empty
// text, a no-op that leaves output arguments alone), so a derived class
// overrides only what its chart shows. The base holds no data and never
// throws. Indices are unsigned: a variable, a case within a variable, a view.
//
// Thread-safety: thread-compatible; the base's const operations may be called
// from several threads.
//
// Ownership: a chart object never owns what is passed to it; the highlight
// lists it hands out stay owned by the object.
#ifndef QVSYSBASE_GENERICCHARTOBJECT_H_
#define QVSYSBASE_GENERICCHARTOBJECT_H_

#include <algorithm>
#include <compare>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "qvsysbase/Export.h"

namespace qvsysbase {

class ChartDifference;
class ChartComparisonOptions;
// A chart view's own object; the library only passes its address along.
class ChartViewVW;

// The kinds of series a chart may draw; the application may use further values
// (the type has a fixed underlying type, so any int travels unchanged).
struct EnumTypesDO {
  enum TSeriesType : int { ST_LINE = 0, ST_BAR = 1, ST_POINT = 2, ST_AREA = 3 };
};

// The lists of highlighted indices, one list per position.
using HighlightLists = std::vector<std::vector<unsigned>>;

// The constraints drawn for one parameter type: pairs of parameter indices.
// Intentionally copyable.
class QVSYSBASE_API ParamConstraints {
 public:
  bool bLeftAlign = false;
  std::vector<std::pair<unsigned, unsigned>> vecPairs;

  bool operator==(const ParamConstraints&) const = default;
};

// The difference constraints drawn for one parameter type: pairs of pairs of
// parameter indices. Intentionally copyable.
class QVSYSBASE_API ParamDiffConstraints {
 public:
  bool bLeftAlign = false;
  std::vector<std::pair<std::pair<unsigned, unsigned>, std::pair<unsigned, unsigned>>> vecPairs;

  bool operator==(const ParamDiffConstraints&) const = default;
};

class QVSYSBASE_API GenericChartObject {
 public:
  GenericChartObject() = default;
  GenericChartObject(const GenericChartObject&) = default;
  GenericChartObject& operator=(const GenericChartObject&) = default;
  virtual ~GenericChartObject();

  // --- Views and series types (defaults in the comments) --------------------
  virtual bool IsViewModeCompatible() const;                                        // false
  virtual void GetIsDisplaySeriesChart(std::vector<bool>& display, unsigned view);  // no-op
  virtual bool isChartViewCompatibleVW() const;                                     // false
  virtual bool hasChartViews() const;                                               // false
  virtual ChartViewVW* getChartViewVW(unsigned view);                               // null

  // --- Parameter charts -----------------------------------------------------
  virtual void getParameterConstraints(std::vector<std::pair<unsigned, unsigned>>& pairs,
                                       unsigned paramType, bool& leftAlign) const;  // no-op
  virtual int convertVarIndex2ParamType(unsigned var) const;                        // -1
  virtual void constraintsLineClick(unsigned, unsigned);                            // no-op
  virtual void lineSeriesClick(unsigned, unsigned);                                 // no-op
  virtual void parameterBarClick(unsigned, unsigned);                               // no-op
  virtual void getParameterDiffConstraints(
      std::vector<std::pair<std::pair<unsigned, unsigned>, std::pair<unsigned, unsigned>>>& pairs,
      unsigned paramType, bool& leftAlign) const;                       // no-op
  virtual void diffConstraintsLineClick(unsigned, unsigned, unsigned);  // no-op

  // --- Shape of the data ----------------------------------------------------
  virtual bool IsSeriesTypeAvailableChart(EnumTypesDO::TSeriesType type,
                                          unsigned var) const;                 // false
  virtual unsigned GetNSeriesTypesChart(unsigned var) const;                   // 1
  virtual double GetParticularValueChart(unsigned var, unsigned value) const;  // 1.0
  virtual bool IsDateTimeChart(unsigned var) const;                            // false
  // A date-time step code of the application's views; 22 by default.
  virtual int GetDateTimeStepChart(unsigned var) const;
  virtual int GetDateChart(unsigned, unsigned, unsigned) const;  // 1
  virtual unsigned GetNSeriesChart() const;                      // 1
  virtual unsigned GetNObsChart(unsigned var) const;             // 1
  virtual unsigned GetNVarsChart() const;                        // 1
  virtual bool Is3DChart() const;                                // false
  virtual bool IsDiscreteVarChart(unsigned var) const;           // false

  // --- Points ---------------------------------------------------------------
  virtual bool IsValidChart(unsigned, unsigned, unsigned) const;                          // false
  virtual bool IsConnectedChart(unsigned, unsigned, unsigned) const;                      // false
  virtual double GetValueChart(unsigned var, unsigned cas) const;                         // 0.0
  virtual double GetConsolidatedValue(unsigned var, std::vector<unsigned>& cases) const;  // 0.0
  virtual std::wstring GetValueAsTextChart(unsigned var, unsigned cas) const;             // empty
  // The base returns false and leaves `text` alone.
  virtual bool GetHintAsLabel(unsigned var, unsigned index, std::wstring& text) const;
  virtual bool IsLabelMajorChart(unsigned var, unsigned cas) const;             // true
  virtual std::wstring GetValueAsLabelChart(unsigned var, unsigned cas) const;  // empty
  virtual std::wstring GetConsolidatedLabel(unsigned var,
                                            std::vector<unsigned>& cases) const;  // "Other"
  virtual std::wstring GetValueAsHintChart(unsigned var, unsigned cas) const;     // empty
  virtual std::wstring GetConsolidatedHint(unsigned var,
                                           std::vector<unsigned>& cases) const;  // empty
  virtual std::wstring GetIndexChart(unsigned, unsigned) const;                  // empty

  // --- Titles and footers ---------------------------------------------------
  virtual std::wstring GetTitleChart() const;                                  // empty
  virtual std::wstring GetVarHeaderChart(unsigned var) const;                  // empty
  virtual std::wstring GetFooterChart() const;                                 // empty
  virtual std::wstring GetVarFooterChart(unsigned var1, unsigned var2) const;  // empty

  // --- Clicks and point attributes ------------------------------------------
  virtual void OnPointClick(unsigned, const unsigned& var, const unsigned& cas);  // no-op
  virtual void OnMultiPointsClick(unsigned, const unsigned& var,
                                  const std::vector<unsigned>& cases);         // no-op
  virtual int GetPointStatus(const unsigned& var, const unsigned& cas) const;  // -1
  virtual int GetPointColor(const unsigned& var, const unsigned& cas) const;   // -1
  virtual bool IsPointMarked(const unsigned& var, const unsigned& cas) const;  // false
  virtual void OnAxisClick(unsigned, unsigned, unsigned, double, unsigned);    // no-op
  virtual void propagatedAxisClick(unsigned, unsigned, unsigned, double, unsigned,
                                   GenericChartObject* source);  // no-op; source not owned
  virtual double GetAxisStatus(unsigned, unsigned, double, unsigned) const;  // -1.0
  // The base returns -1 and leaves `text` alone (it may be null).
  virtual int IsCompositeConstraint(double posn, unsigned var, std::wstring* text,
                                    bool alphaMeansAlpha) const;

  // Whether this object answers from a frozen snapshot, so that a comparison
  // can tell a frozen chart by asking. No default: every concrete chart says.
  virtual bool IsFrozenSnapshot() const = 0;

  // --- Highlights -----------------------------------------------------------
  // The highlight lists, owned by this object; null by default.
  virtual const HighlightLists* GetHighlightArray() const;
  virtual int GetHighlightIndex() const;               // -1
  virtual bool IsReassingValuesToMinMaxChart() const;  // false

  // Compares this chart with `other` under `options`, appending what differs to
  // `diffs`; true when equal. A live chart cannot be compared: the base appends
  // the one difference "Error -- trying to compare non-frozen objects" (type 1)
  // and returns false. `other` is not owned and may be null.
  virtual bool compareChartObjects(const GenericChartObject* other,
                                   std::vector<ChartDifference>& diffs,
                                   const ChartComparisonOptions& options) const;
};

// Keys of the snapshot's keyed lists.
struct VarCaseKey {  // a point, or a (variable, index) pair
  unsigned nVar = 0;
  unsigned nCase = 0;
  auto operator<=>(const VarCaseKey&) const = default;
};
struct AxisStatusKey {
  unsigned nType = 0;
  unsigned nAxisPos = 0;
  double dPosn = 0.0;
  unsigned nVar = 0;
  auto operator<=>(const AxisStatusKey&) const = default;
};
struct CompConstraintKey {
  double dPosn = 0.0;
  unsigned nVar = 0;
  bool bAlphaMeansAlpha = false;
  auto operator<=>(const CompConstraintKey&) const = default;
};
struct VarCasesKey {
  unsigned nVar = 0;
  std::vector<unsigned> vecCases;
  auto operator<=>(const VarCasesKey&) const = default;
};

// What a chart answered about one point.
struct PointAttributes {
  bool bValid = false;
  bool bConnected = false;
  double dValue = 0.0;
  std::wstring wstrText;
  int nPointStatus = -1;
  int nPointColor = -1;
  bool bPointMarked = false;
  bool bLabelMajor = true;
  std::wstring wstrLabel;
  std::wstring wstrHint;
  bool operator==(const PointAttributes&) const = default;
};
struct HintLabel {
  bool bResult = false;
  std::wstring wstrText;
  bool operator==(const HintLabel&) const = default;
};
struct CompConstraint {
  int nResult = -1;
  std::wstring wstrText;
  bool operator==(const CompConstraint&) const = default;
};
struct Consolidated {
  double dValue = 0.0;
  std::wstring wstrLabel;
  std::wstring wstrHint;
  bool operator==(const Consolidated&) const = default;
};

// A keyed list: (key, value) entries in the order the snapshot was taken, which
// is ascending key order, so a lookup is a binary search (FindEntry) and the
// list is written to a stream as a count and its entries in order.
template <typename Key, typename Value>
using KeyedList = std::vector<std::pair<Key, Value>>;

// The value stored under `key`, or null. REQUIRES: `list` sorted by key.
template <typename Key, typename Value>
const Value* FindEntry(const KeyedList<Key, Value>& list, const Key& key) {
  auto it = std::lower_bound(
      list.begin(), list.end(), key, [](const std::pair<Key, Value>& e, const Key& k) {
        return e.first < k;
      });
  return it != list.end() && it->first == key ? &it->second : nullptr;
}

// A frozen chart: the values a chart object gave, kept per kind of question.
// The per-variable and per-parameter-type members are ordered maps (ascending
// keys, which is also the order they were asked in); the rest are keyed lists.
// Intentionally copyable.
struct QVSYSBASE_API FrozenChartData {
  int nVars = 0;
  bool bReassignValuesToMinMax = false;
  std::wstring wstrTitle;
  std::wstring wstrFooter;
  int nHighlightIndex = -1;
  HighlightLists m_vecvecHighlight;
  std::map<unsigned, int> m_mapObs;
  std::map<unsigned, bool> m_mapDiscreteVar;
  std::map<unsigned, std::wstring> m_mapVarHeader;
  std::map<unsigned, int> m_mapParamType;
  KeyedList<VarCaseKey, PointAttributes> m_vecVarCase;
  KeyedList<VarCaseKey, HintLabel> m_vecVarIndex;  // key: (variable, index)
  KeyedList<std::pair<unsigned, unsigned>, std::wstring> m_vecVar1Var2;
  KeyedList<std::pair<unsigned, unsigned>, double> m_vecVarValue;
  KeyedList<AxisStatusKey, double> m_vecAxisStatusParms;
  std::map<unsigned, ParamConstraints> m_mapParamConstraints;
  std::map<unsigned, ParamDiffConstraints> m_mapParamDiffConstraints;
  KeyedList<CompConstraintKey, CompConstraint> m_vecCompConstraintParms;
  KeyedList<VarCasesKey, Consolidated> m_vecVarVecCases;

  bool operator==(const FrozenChartData&) const = default;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_GENERICCHARTOBJECT_H_
