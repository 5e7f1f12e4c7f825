// Taking a chart's snapshot: the walk over every variable, case, index and
// parameter type a view can ask about. Every range walked ascends, so each
// keyed list comes out sorted by key.
#include "display/ChartSnapshot.h"

#include <numeric>

namespace qvsysbase {

namespace {

// The particular values a view asks for per variable (reference lines).
constexpr unsigned kParticularValues = 4;
// Axis types and positions a view asks the status of: two each.
constexpr unsigned kAxisTypes = 2;
constexpr unsigned kAxisPositions = 2;

void TakeScalars(const GenericChartObject& c, FrozenChartData& d) {
  d.nVars = static_cast<int>(c.GetNVarsChart());
  d.bReassignValuesToMinMax = c.IsReassingValuesToMinMaxChart();
  d.wstrTitle = c.GetTitleChart();
  d.wstrFooter = c.GetFooterChart();
  d.nHighlightIndex = c.GetHighlightIndex();
  if (const HighlightLists* lists = c.GetHighlightArray()) d.m_vecvecHighlight = *lists;
}

void TakeVariable(const GenericChartObject& c, unsigned var, FrozenChartData& d) {
  const unsigned nObs = c.GetNObsChart(var);
  d.m_mapObs.emplace_hint(d.m_mapObs.end(), var, static_cast<int>(nObs));
  d.m_mapDiscreteVar.emplace_hint(d.m_mapDiscreteVar.end(), var, c.IsDiscreteVarChart(var));
  d.m_mapVarHeader.emplace_hint(d.m_mapVarHeader.end(), var, c.GetVarHeaderChart(var));
  d.m_mapParamType.emplace_hint(d.m_mapParamType.end(), var, c.convertVarIndex2ParamType(var));
  for (unsigned cas = 0; cas < nObs; ++cas) {
    PointAttributes p;
    p.bValid = c.IsValidChart(var, cas, 0);
    p.bConnected = c.IsConnectedChart(var, cas, 0);
    p.dValue = c.GetValueChart(var, cas);
    p.wstrText = c.GetValueAsTextChart(var, cas);
    p.nPointStatus = c.GetPointStatus(var, cas);
    p.nPointColor = c.GetPointColor(var, cas);
    p.bPointMarked = c.IsPointMarked(var, cas);
    p.bLabelMajor = c.IsLabelMajorChart(var, cas);
    p.wstrLabel = c.GetValueAsLabelChart(var, cas);
    p.wstrHint = c.GetValueAsHintChart(var, cas);
    d.m_vecVarCase.emplace_back(VarCaseKey{var, cas}, std::move(p));
  }
  for (unsigned index = 0; index < nObs; ++index) {
    HintLabel h;
    h.bResult = c.GetHintAsLabel(var, index, h.wstrText);
    d.m_vecVarIndex.emplace_back(VarCaseKey{var, index}, std::move(h));
  }
  for (unsigned value = 0; value < kParticularValues; ++value)
    d.m_vecVarValue.emplace_back(std::pair(var, value), c.GetParticularValueChart(var, value));
  VarCasesKey all{var, std::vector<unsigned>(nObs)};
  std::iota(all.vecCases.begin(), all.vecCases.end(), 0u);
  Consolidated k;
  std::vector<unsigned> cases = all.vecCases;  // the chart may change its argument
  k.dValue = c.GetConsolidatedValue(var, cases);
  cases = all.vecCases;
  k.wstrLabel = c.GetConsolidatedLabel(var, cases);
  cases = all.vecCases;
  k.wstrHint = c.GetConsolidatedHint(var, cases);
  d.m_vecVarVecCases.emplace_back(std::move(all), std::move(k));
}

void TakeAxes(const GenericChartObject& c, unsigned nVars, FrozenChartData& d) {
  for (unsigned type = 0; type < kAxisTypes; ++type)
    for (unsigned axis = 0; axis < kAxisPositions; ++axis)
      for (unsigned var = 0; var < nVars; ++var)
        d.m_vecAxisStatusParms.emplace_back(AxisStatusKey{type, axis, 0.0, var},
                                            c.GetAxisStatus(type, axis, 0.0, var));
}

void TakeParameters(const GenericChartObject& c, unsigned nVars, FrozenChartData& d) {
  for (const auto& [var, type] : d.m_mapParamType) {
    if (type < 0 || d.m_mapParamConstraints.count(static_cast<unsigned>(type)) != 0) continue;
    const auto t = static_cast<unsigned>(type);
    ParamConstraints pc;
    c.getParameterConstraints(pc.vecPairs, t, pc.bLeftAlign);
    d.m_mapParamConstraints.emplace(t, std::move(pc));
    ParamDiffConstraints pd;
    c.getParameterDiffConstraints(pd.vecPairs, t, pd.bLeftAlign);
    d.m_mapParamDiffConstraints.emplace(t, std::move(pd));
  }
  for (unsigned var = 0; var < nVars; ++var) {
    for (bool alpha : {false, true}) {
      CompConstraint cc;
      cc.nResult = c.IsCompositeConstraint(0.0, var, &cc.wstrText, alpha);
      d.m_vecCompConstraintParms.emplace_back(CompConstraintKey{0.0, var, alpha}, std::move(cc));
    }
  }
}

// Sizes every keyed list for the walk ahead. Growing a list of a million
// points by doubling would move it about twenty times and touch twice its
// memory.
void ReserveLists(const GenericChartObject& c, unsigned nVars, FrozenChartData& d) {
  std::size_t points = 0;
  for (unsigned var = 0; var < nVars; ++var) points += c.GetNObsChart(var);
  const std::size_t vars = nVars;
  d.m_vecVarCase.reserve(points);
  d.m_vecVarIndex.reserve(points);
  d.m_vecVarValue.reserve(vars * kParticularValues);
  d.m_vecVar1Var2.reserve(vars * vars);
  d.m_vecAxisStatusParms.reserve(vars * kAxisTypes * kAxisPositions);
  d.m_vecCompConstraintParms.reserve(vars * 2);
  d.m_vecVarVecCases.reserve(vars);
}

}  // namespace

FrozenChartData TakeChartSnapshot(const GenericChartObject* chart) {
  FrozenChartData d;
  if (chart == nullptr) {
    d.nVars = 0;
    return d;
  }
  const GenericChartObject& c = *chart;
  TakeScalars(c, d);
  const unsigned nVars = c.GetNVarsChart();
  ReserveLists(c, nVars, d);
  for (unsigned var = 0; var < nVars; ++var) TakeVariable(c, var, d);
  // Sorted by (variable, value) although taken variable by variable: the
  // variable is the key's first part.
  for (unsigned var1 = 0; var1 < nVars; ++var1)
    for (unsigned var2 = 0; var2 < nVars; ++var2)
      d.m_vecVar1Var2.emplace_back(std::pair(var1, var2), c.GetVarFooterChart(var1, var2));
  TakeAxes(c, nVars, d);
  TakeParameters(c, nVars, d);
  return d;
}

}  // namespace qvsysbase
