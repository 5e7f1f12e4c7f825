// The base behaviours of the chart object: constants, empty texts and no-ops,
// so that a derived class overrides only what its chart shows. Nothing here
// throws.
#include "qvsysbase/GenericChartObject.h"

#include "qvsysbase/ChartComparison.h"

namespace qvsysbase {

namespace {
// The step code the application's date-time axes use when a chart says nothing.
constexpr int kDefaultDateTimeStep = 22;
constexpr const wchar_t* kDefaultConsolidatedLabel = L"Other";
}  // namespace

GenericChartObject::~GenericChartObject() = default;

bool GenericChartObject::IsViewModeCompatible() const { return false; }
void GenericChartObject::GetIsDisplaySeriesChart(std::vector<bool>&, unsigned) {}
bool GenericChartObject::isChartViewCompatibleVW() const { return false; }
bool GenericChartObject::hasChartViews() const { return false; }
ChartViewVW* GenericChartObject::getChartViewVW(unsigned) { return nullptr; }

void GenericChartObject::getParameterConstraints(std::vector<std::pair<unsigned, unsigned>>&,
                                                 unsigned, bool&) const {}
int GenericChartObject::convertVarIndex2ParamType(unsigned) const { return -1; }
void GenericChartObject::constraintsLineClick(unsigned, unsigned) {}
void GenericChartObject::lineSeriesClick(unsigned, unsigned) {}
void GenericChartObject::parameterBarClick(unsigned, unsigned) {}
void GenericChartObject::getParameterDiffConstraints(
    std::vector<std::pair<std::pair<unsigned, unsigned>, std::pair<unsigned, unsigned>>>&, unsigned,
    bool&) const {}
void GenericChartObject::diffConstraintsLineClick(unsigned, unsigned, unsigned) {}

bool GenericChartObject::IsSeriesTypeAvailableChart(EnumTypesDO::TSeriesType, unsigned) const {
  return false;
}
unsigned GenericChartObject::GetNSeriesTypesChart(unsigned) const { return 1; }
double GenericChartObject::GetParticularValueChart(unsigned, unsigned) const { return 1.0; }
bool GenericChartObject::IsDateTimeChart(unsigned) const { return false; }
int GenericChartObject::GetDateTimeStepChart(unsigned) const { return kDefaultDateTimeStep; }
int GenericChartObject::GetDateChart(unsigned, unsigned, unsigned) const { return 1; }
unsigned GenericChartObject::GetNSeriesChart() const { return 1; }
unsigned GenericChartObject::GetNObsChart(unsigned) const { return 1; }
unsigned GenericChartObject::GetNVarsChart() const { return 1; }
bool GenericChartObject::Is3DChart() const { return false; }
bool GenericChartObject::IsDiscreteVarChart(unsigned) const { return false; }

bool GenericChartObject::IsValidChart(unsigned, unsigned, unsigned) const { return false; }
bool GenericChartObject::IsConnectedChart(unsigned, unsigned, unsigned) const { return false; }
double GenericChartObject::GetValueChart(unsigned, unsigned) const { return 0.0; }
double GenericChartObject::GetConsolidatedValue(unsigned, std::vector<unsigned>&) const {
  return 0.0;
}
std::wstring GenericChartObject::GetValueAsTextChart(unsigned, unsigned) const { return {}; }
bool GenericChartObject::GetHintAsLabel(unsigned, unsigned, std::wstring&) const { return false; }
bool GenericChartObject::IsLabelMajorChart(unsigned, unsigned) const { return true; }
std::wstring GenericChartObject::GetValueAsLabelChart(unsigned, unsigned) const { return {}; }
std::wstring GenericChartObject::GetConsolidatedLabel(unsigned, std::vector<unsigned>&) const {
  return kDefaultConsolidatedLabel;
}
std::wstring GenericChartObject::GetValueAsHintChart(unsigned, unsigned) const { return {}; }
std::wstring GenericChartObject::GetConsolidatedHint(unsigned, std::vector<unsigned>&) const {
  return {};
}
std::wstring GenericChartObject::GetIndexChart(unsigned, unsigned) const { return {}; }

std::wstring GenericChartObject::GetTitleChart() const { return {}; }
std::wstring GenericChartObject::GetVarHeaderChart(unsigned) const { return {}; }
std::wstring GenericChartObject::GetFooterChart() const { return {}; }
std::wstring GenericChartObject::GetVarFooterChart(unsigned, unsigned) const { return {}; }

void GenericChartObject::OnPointClick(unsigned, const unsigned&, const unsigned&) {}
void GenericChartObject::OnMultiPointsClick(unsigned, const unsigned&,
                                            const std::vector<unsigned>&) {}
int GenericChartObject::GetPointStatus(const unsigned&, const unsigned&) const { return -1; }
int GenericChartObject::GetPointColor(const unsigned&, const unsigned&) const { return -1; }
bool GenericChartObject::IsPointMarked(const unsigned&, const unsigned&) const { return false; }
void GenericChartObject::OnAxisClick(unsigned, unsigned, unsigned, double, unsigned) {}
void GenericChartObject::propagatedAxisClick(unsigned, unsigned, unsigned, double, unsigned,
                                             GenericChartObject*) {}
double GenericChartObject::GetAxisStatus(unsigned, unsigned, double, unsigned) const {
  return -1.0;
}
int GenericChartObject::IsCompositeConstraint(double, unsigned, std::wstring*, bool) const {
  return -1;
}

const HighlightLists* GenericChartObject::GetHighlightArray() const { return nullptr; }
int GenericChartObject::GetHighlightIndex() const { return -1; }
bool GenericChartObject::IsReassingValuesToMinMaxChart() const { return false; }

bool GenericChartObject::compareChartObjects(const GenericChartObject*,
                                             std::vector<ChartDifference>& diffs,
                                             const ChartComparisonOptions&) const {
  diffs.emplace_back(ChartDifference::DIFF_VALUE, -1, kNonFrozenComparisonText);
  return false;
}

}  // namespace qvsysbase
