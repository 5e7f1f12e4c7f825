// The freezable object: the snapshot's answers, its record in a stream and the
// comparison of two snapshots.
#include "qvsysbase/FreezableObject.h"

#include <string>
#include <utility>

#include "display/ChartSnapshot.h"
#include "display/FrozenChartFormat.h"
#include "qvsysbase/LoadStream.h"
#include "qvsysbase/SaveStream.h"
#include "qvsysbase/StreamObject.h"
#include "qvsysbase/qvExcept.h"

namespace qvsysbase {

namespace fmt = frozenchartformat;

namespace {

// Answers every query with the base default; stands in for a missing chart.
class DefaultChart final : public GenericChartObject {
 public:
  bool IsFrozenSnapshot() const override { return false; }
};

const GenericChartObject& Defaults() {
  static const DefaultChart chart;
  return chart;
}

template <typename V, typename R>
R MapValue(const std::map<unsigned, V>& map, unsigned key, R fallback) {
  auto it = map.find(key);
  return it == map.end() ? fallback : static_cast<R>(it->second);
}

// The snapshot's record: a frozen flag and the encoded snapshot.
class FrozenChartRecord final : public StreamObject {
 public:
  FrozenChartRecord(bool frozen, FrozenChartData* data)
      : StreamObject(fmt::kRecordMajor, fmt::kRecordMinor), m_bFrozen(frozen), m_pData(data) {}

  std::string getClassName() const override { return fmt::kClassName; }
  // Only this class's own records are read into it.
  void ProcessInvalidClassName(const char*, bool&) const override {}

  void Save(SaveStream& out) const override {
    out << m_bFrozen << (m_bFrozen ? EncodeChartSnapshot(*m_pData) : std::string());
  }

  bool Load(LoadStream& in) override {
    if (GetVersionMajor() != fmt::kRecordMajor) return false;  // a layout not known here
    std::string bytes;
    try {
      in >> m_bFrozen >> bytes;
    } catch (const AssertionException&) {
      // A damaged record whose body is shorter than its fields: the reader
      // refuses reads past the record's end, and here that is bad data.
      return false;
    }
    if (!in.good()) return false;
    if (!m_bFrozen) return bytes.empty();
    return DecodeChartSnapshot(bytes, *m_pData);
  }

  bool IsFrozen() const { return m_bFrozen; }

 private:
  bool m_bFrozen;
  FrozenChartData* m_pData;  // not owned
};

}  // namespace

FreezableObject::FreezableObject() = default;
FreezableObject::~FreezableObject() = default;

void FreezableObject::setChartObject(GenericChartObject* chart) {
  m_pChart = chart;
  m_bFrozen = false;
  m_frozen = FrozenChartData();
}

GenericChartObject* FreezableObject::getChartObject() const { return m_pChart; }

void FreezableObject::Freeze() {
  m_frozen = TakeChartSnapshot(m_pChart);
  m_bFrozen = true;
}

bool FreezableObject::IsFrozen() const { return m_bFrozen; }
bool FreezableObject::IsFrozenSnapshot() const { return m_bFrozen; }
const FrozenChartData& FreezableObject::GetFrozenData() const { return m_frozen; }

void FreezableObject::SaveToStream(SaveStream& stream) const {
  // Saving only reads through the record's pointer.
  stream << FrozenChartRecord(m_bFrozen, const_cast<FrozenChartData*>(&m_frozen));
}

void FreezableObject::ReadFromStream(LoadStream& stream) {
  m_bFrozen = false;
  m_frozen = FrozenChartData();
  FrozenChartData data;
  FrozenChartRecord record(false, &data);
  stream >> record;
  if (!stream.good() || !record.IsFrozen()) return;
  m_frozen = std::move(data);
  m_bFrozen = true;
}

bool FreezableObject::compareChartObjects(const GenericChartObject* other,
                                          std::vector<ChartDifference>& diffs,
                                          const ChartComparisonOptions& options) const {
  if (!m_bFrozen) return GenericChartObject::compareChartObjects(other, diffs, options);
  const auto* frozen = dynamic_cast<const FreezableObject*>(other);
  if (frozen == nullptr || !frozen->IsFrozen()) {
    diffs.clear();
    diffs.emplace_back(ChartDifference::DIFF_VALUE, -1, kTypeMismatchText);
    return false;
  }
  return CompareFrozenChartData(m_frozen, frozen->m_frozen, diffs, options);
}

// --- Chart queries -------------------------------------------------------------

namespace {

const GenericChartObject& LiveOr(const GenericChartObject* chart) {
  return chart != nullptr ? *chart : Defaults();
}

template <typename R, typename Field>
R PointField(const FrozenChartData& d, unsigned var, unsigned cas, Field field, R fallback) {
  const PointAttributes* p = FindEntry(d.m_vecVarCase, VarCaseKey{var, cas});
  return p != nullptr ? p->*field : fallback;
}

}  // namespace

unsigned FreezableObject::GetNVarsChart() const {
  return m_bFrozen ? static_cast<unsigned>(m_frozen.nVars) : LiveOr(m_pChart).GetNVarsChart();
}
unsigned FreezableObject::GetNObsChart(unsigned var) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetNObsChart(var);
  return MapValue(m_frozen.m_mapObs, var, Defaults().GetNObsChart(var));
}
bool FreezableObject::IsDiscreteVarChart(unsigned var) const {
  if (!m_bFrozen) return LiveOr(m_pChart).IsDiscreteVarChart(var);
  return MapValue(m_frozen.m_mapDiscreteVar, var, Defaults().IsDiscreteVarChart(var));
}
std::wstring FreezableObject::GetVarHeaderChart(unsigned var) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetVarHeaderChart(var);
  return MapValue(m_frozen.m_mapVarHeader, var, Defaults().GetVarHeaderChart(var));
}
int FreezableObject::convertVarIndex2ParamType(unsigned var) const {
  if (!m_bFrozen) return LiveOr(m_pChart).convertVarIndex2ParamType(var);
  return MapValue(m_frozen.m_mapParamType, var, Defaults().convertVarIndex2ParamType(var));
}

bool FreezableObject::IsValidChart(unsigned var, unsigned cas, unsigned view) const {
  if (!m_bFrozen) return LiveOr(m_pChart).IsValidChart(var, cas, view);
  return PointField(m_frozen, var, cas, &PointAttributes::bValid, false);
}
bool FreezableObject::IsConnectedChart(unsigned var, unsigned cas, unsigned view) const {
  if (!m_bFrozen) return LiveOr(m_pChart).IsConnectedChart(var, cas, view);
  return PointField(m_frozen, var, cas, &PointAttributes::bConnected, false);
}
double FreezableObject::GetValueChart(unsigned var, unsigned cas) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetValueChart(var, cas);
  return PointField(m_frozen, var, cas, &PointAttributes::dValue, 0.0);
}
std::wstring FreezableObject::GetValueAsTextChart(unsigned var, unsigned cas) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetValueAsTextChart(var, cas);
  return PointField(m_frozen, var, cas, &PointAttributes::wstrText, std::wstring());
}
int FreezableObject::GetPointStatus(const unsigned& var, const unsigned& cas) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetPointStatus(var, cas);
  return PointField(m_frozen, var, cas, &PointAttributes::nPointStatus, -1);
}
int FreezableObject::GetPointColor(const unsigned& var, const unsigned& cas) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetPointColor(var, cas);
  return PointField(m_frozen, var, cas, &PointAttributes::nPointColor, -1);
}
bool FreezableObject::IsPointMarked(const unsigned& var, const unsigned& cas) const {
  if (!m_bFrozen) return LiveOr(m_pChart).IsPointMarked(var, cas);
  return PointField(m_frozen, var, cas, &PointAttributes::bPointMarked, false);
}
bool FreezableObject::IsLabelMajorChart(unsigned var, unsigned cas) const {
  if (!m_bFrozen) return LiveOr(m_pChart).IsLabelMajorChart(var, cas);
  return PointField(m_frozen, var, cas, &PointAttributes::bLabelMajor, true);
}
std::wstring FreezableObject::GetValueAsLabelChart(unsigned var, unsigned cas) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetValueAsLabelChart(var, cas);
  return PointField(m_frozen, var, cas, &PointAttributes::wstrLabel, std::wstring());
}
std::wstring FreezableObject::GetValueAsHintChart(unsigned var, unsigned cas) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetValueAsHintChart(var, cas);
  return PointField(m_frozen, var, cas, &PointAttributes::wstrHint, std::wstring());
}

bool FreezableObject::GetHintAsLabel(unsigned var, unsigned index, std::wstring& text) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetHintAsLabel(var, index, text);
  const HintLabel* h = FindEntry(m_frozen.m_vecVarIndex, VarCaseKey{var, index});
  if (h == nullptr) return false;
  text = h->wstrText;
  return h->bResult;
}
double FreezableObject::GetParticularValueChart(unsigned var, unsigned value) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetParticularValueChart(var, value);
  const double* v = FindEntry(m_frozen.m_vecVarValue, std::pair(var, value));
  return v != nullptr ? *v : Defaults().GetParticularValueChart(var, value);
}

namespace {
const Consolidated* FindConsolidated(const FrozenChartData& d, unsigned var,
                                     const std::vector<unsigned>& cases) {
  return FindEntry(d.m_vecVarVecCases, VarCasesKey{var, cases});
}
}  // namespace

double FreezableObject::GetConsolidatedValue(unsigned var, std::vector<unsigned>& cases) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetConsolidatedValue(var, cases);
  const Consolidated* c = FindConsolidated(m_frozen, var, cases);
  return c != nullptr ? c->dValue : Defaults().GetConsolidatedValue(var, cases);
}
std::wstring FreezableObject::GetConsolidatedLabel(unsigned var,
                                                   std::vector<unsigned>& cases) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetConsolidatedLabel(var, cases);
  const Consolidated* c = FindConsolidated(m_frozen, var, cases);
  return c != nullptr ? c->wstrLabel : Defaults().GetConsolidatedLabel(var, cases);
}
std::wstring FreezableObject::GetConsolidatedHint(unsigned var,
                                                  std::vector<unsigned>& cases) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetConsolidatedHint(var, cases);
  const Consolidated* c = FindConsolidated(m_frozen, var, cases);
  return c != nullptr ? c->wstrHint : Defaults().GetConsolidatedHint(var, cases);
}

std::wstring FreezableObject::GetVarFooterChart(unsigned var1, unsigned var2) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetVarFooterChart(var1, var2);
  const std::wstring* f = FindEntry(m_frozen.m_vecVar1Var2, std::pair(var1, var2));
  return f != nullptr ? *f : std::wstring();
}
double FreezableObject::GetAxisStatus(unsigned type, unsigned axisPos, double posn,
                                      unsigned var) const {
  if (!m_bFrozen) return LiveOr(m_pChart).GetAxisStatus(type, axisPos, posn, var);
  const double* s =
      FindEntry(m_frozen.m_vecAxisStatusParms, AxisStatusKey{type, axisPos, posn, var});
  return s != nullptr ? *s : Defaults().GetAxisStatus(type, axisPos, posn, var);
}

void FreezableObject::getParameterConstraints(std::vector<std::pair<unsigned, unsigned>>& pairs,
                                              unsigned paramType, bool& leftAlign) const {
  if (!m_bFrozen) return LiveOr(m_pChart).getParameterConstraints(pairs, paramType, leftAlign);
  auto it = m_frozen.m_mapParamConstraints.find(paramType);
  if (it == m_frozen.m_mapParamConstraints.end()) return;
  pairs = it->second.vecPairs;
  leftAlign = it->second.bLeftAlign;
}
void FreezableObject::getParameterDiffConstraints(
    std::vector<std::pair<std::pair<unsigned, unsigned>, std::pair<unsigned, unsigned>>>& pairs,
    unsigned paramType, bool& leftAlign) const {
  if (!m_bFrozen) {
    return LiveOr(m_pChart).getParameterDiffConstraints(pairs, paramType, leftAlign);
  }
  auto it = m_frozen.m_mapParamDiffConstraints.find(paramType);
  if (it == m_frozen.m_mapParamDiffConstraints.end()) return;
  pairs = it->second.vecPairs;
  leftAlign = it->second.bLeftAlign;
}
int FreezableObject::IsCompositeConstraint(double posn, unsigned var, std::wstring* text,
                                           bool alphaMeansAlpha) const {
  if (!m_bFrozen) return LiveOr(m_pChart).IsCompositeConstraint(posn, var, text, alphaMeansAlpha);
  const CompConstraint* c =
      FindEntry(m_frozen.m_vecCompConstraintParms, CompConstraintKey{posn, var, alphaMeansAlpha});
  if (c == nullptr) return -1;
  if (text != nullptr) *text = c->wstrText;
  return c->nResult;
}

std::wstring FreezableObject::GetTitleChart() const {
  return m_bFrozen ? m_frozen.wstrTitle : LiveOr(m_pChart).GetTitleChart();
}
std::wstring FreezableObject::GetFooterChart() const {
  return m_bFrozen ? m_frozen.wstrFooter : LiveOr(m_pChart).GetFooterChart();
}
const HighlightLists* FreezableObject::GetHighlightArray() const {
  return m_bFrozen ? &m_frozen.m_vecvecHighlight : LiveOr(m_pChart).GetHighlightArray();
}
int FreezableObject::GetHighlightIndex() const {
  return m_bFrozen ? m_frozen.nHighlightIndex : LiveOr(m_pChart).GetHighlightIndex();
}
bool FreezableObject::IsReassingValuesToMinMaxChart() const {
  return m_bFrozen ? m_frozen.bReassignValuesToMinMax
                   : LiveOr(m_pChart).IsReassingValuesToMinMaxChart();
}

}  // namespace qvsysbase
