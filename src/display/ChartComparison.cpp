// Chart comparison: the options, the four public value comparisons and the
// comparison of two snapshots.
//
// The snapshot comparison judges every value itself first and calls the public
// comparison (which takes its name and texts by value) only for a value that
// differs or in report-all mode, so two equal snapshots are compared without
// building a single string; the records it appends are exactly those the public
// comparisons make.
#include "qvsysbase/ChartComparison.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <iterator>
#include <map>
#include <type_traits>
#include <utility>

#include "qvsysbase/qvmath.h"

namespace qvsysbase {

namespace {

using Diffs = std::vector<ChartDifference>;
constexpr ChartDifference::DiffType kValue = ChartDifference::DIFF_VALUE;
constexpr ChartDifference::DiffType kGroup = ChartDifference::DIFF_GROUP;

// Numbers print in fixed notation with this many decimals, enough to show any
// difference a double can hold between values of ordinary size.
constexpr int kNumberDecimals = 18;

std::wstring Widen(const char* first, const char* last) { return std::wstring(first, last); }

std::wstring Text(bool value) { return value ? L"true" : L"false"; }
std::wstring Text(int value) { return std::to_wstring(value); }
std::wstring Text(unsigned value) { return std::to_wstring(value); }
std::wstring Text(const std::wstring& value) { return value; }
std::wstring Text(double value) {
  // 309 integer digits, sign, point and decimals fit.
  char buffer[400];
  auto result = std::to_chars(
      buffer, buffer + sizeof buffer, value, std::chars_format::fixed, kNumberDecimals);
  return Widen(buffer, result.ptr);
}
// Positions inside keys print in their shortest exact form.
std::wstring KeyNumber(double value) {
  char buffer[64];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return Widen(buffer, result.ptr);
}

template <typename T>
std::wstring JoinList(const std::vector<T>& values) {
  std::wstring text;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i != 0) text += L", ";
    text += Text(values[i]);
  }
  return text;
}

template <typename T, typename Equal>
bool CompareValues(const T& a, const T& b, std::wstring& name,
                   const ChartComparisonOptions& options, ChartDifference::DiffType type,
                   Diffs& diffs, bool bForce, Equal equal) {
  const bool reportAll = !bForce && options.m_bReportAll;
  const bool same = !reportAll && equal(a, b);
  if (!same) {
    name += L": (";
    name += Text(a);
    name += L") vs. (";
    name += Text(b);
    name += L")";
    diffs.emplace_back(type, -1, std::move(name));
  }
  return same;
}

}  // namespace

// --- Options -----------------------------------------------------------------

ChartComparisonOptions::ChartComparisonOptions() {
  setAllViewCompFlags(true);
  setAllObjectCompFlags(true);
}

void ChartComparisonOptions::setAllViewCompFlags(bool on) {
  m_nViewFlags = on ? (1u << kViewCategoryCount) - 1 : 0;
}
void ChartComparisonOptions::setAllObjectCompFlags(bool on) {
  m_nObjectFlags = on ? (1u << kObjectCategoryCount) - 1 : 0;
}

namespace {
void SetFlag(unsigned& flags, int category, int count, bool on) {
  if (category < 0 || category >= count) return;
  const unsigned bit = 1u << category;
  flags = on ? (flags | bit) : (flags & ~bit);
}
bool GetFlag(unsigned flags, int category, int count) {
  return category >= 0 && category < count && (flags & (1u << category)) != 0;
}
}  // namespace

void ChartComparisonOptions::setViewCompFlag(ViewComparisonCategory category, bool on) {
  SetFlag(m_nViewFlags, category, kViewCategoryCount, on);
}
void ChartComparisonOptions::setObjectCompFlag(ObjectComparisonCategory category, bool on) {
  SetFlag(m_nObjectFlags, category, kObjectCategoryCount, on);
}
bool ChartComparisonOptions::getViewCompFlag(ViewComparisonCategory category) const {
  return GetFlag(m_nViewFlags, category, kViewCategoryCount);
}
bool ChartComparisonOptions::getObjectCompFlag(ObjectComparisonCategory category) const {
  return GetFlag(m_nObjectFlags, category, kObjectCategoryCount);
}

// --- ChartDifference ---------------------------------------------------------

ChartDifference::ChartDifference(DiffType type, int index, std::wstring text)
    : m_nType(type), m_nIndex(index), m_wstrText(std::move(text)) {}

bool ChartDifference::NumbersEqual(double a, double b, const ChartComparisonOptions& options) {
  if (options.m_bUseAbsTolerance) return std::fabs(a - b) <= options.m_dAbsTolerance;
  // A negative precision means nothing; it is taken as exact comparison.
  const double relative = std::max(0.0, 0.01 * options.m_dRelPrecisionPercent);
  const double floor = options.m_bUseZeroFloor ? options.m_dZeroFloor : 0.0;
  return qvmath::EqualWithRelativePrecision(a, b, relative, floor);
}

bool ChartDifference::CompareBool(bool a, bool b, std::wstring name,
                                  const ChartComparisonOptions& options, DiffType type,
                                  std::vector<ChartDifference>& diffs, bool bForce) {
  return CompareValues(a, b, name, options, type, diffs, bForce, std::equal_to<>());
}
bool ChartDifference::CompareInt(int a, int b, std::wstring name,
                                 const ChartComparisonOptions& options, DiffType type,
                                 std::vector<ChartDifference>& diffs, bool bForce) {
  return CompareValues(a, b, name, options, type, diffs, bForce, std::equal_to<>());
}
bool ChartDifference::CompareNum(double a, double b, std::wstring name,
                                 const ChartComparisonOptions& options, DiffType type,
                                 std::vector<ChartDifference>& diffs, bool bForce) {
  return CompareValues(a, b, name, options, type, diffs, bForce, [&options](double x, double y) {
    return NumbersEqual(x, y, options);
  });
}
bool ChartDifference::CompareWStr(std::wstring a, std::wstring b, std::wstring name,
                                  const ChartComparisonOptions& options, DiffType type,
                                  std::vector<ChartDifference>& diffs, bool bForce) {
  return CompareValues(a, b, name, options, type, diffs, bForce, std::equal_to<>());
}

// --- Snapshot comparison -----------------------------------------------------

namespace {

// The parts of a key as they print, in order.
std::vector<std::wstring> KeyParts(const VarCaseKey& k) { return {Text(k.nVar), Text(k.nCase)}; }
std::vector<std::wstring> KeyParts(const std::pair<unsigned, unsigned>& k) {
  return {Text(k.first), Text(k.second)};
}
std::vector<std::wstring> KeyParts(const AxisStatusKey& k) {
  return {Text(k.nType), Text(k.nAxisPos), KeyNumber(k.dPosn), Text(k.nVar)};
}
std::vector<std::wstring> KeyParts(const CompConstraintKey& k) {
  return {KeyNumber(k.dPosn), Text(k.nVar), Text(k.bAlphaMeansAlpha)};
}
std::vector<std::wstring> KeyParts(const VarCasesKey& k) {
  return {Text(k.nVar), L"{" + JoinList(k.vecCases) + L"}"};
}

// A key inside "Values differ for" lines: its parts joined by ", ".
template <typename K>
std::wstring KeyText(const K& k) {
  return JoinList(KeyParts(k));
}
std::wstring KeyText(
    const std::pair<std::pair<unsigned, unsigned>, std::pair<unsigned, unsigned>>& k) {
  return L"(" + KeyText(k.first) + L"), (" + KeyText(k.second) + L")";
}

// How one keyed list is reported: its member name, the name of each part of
// its key in group headers ("Var=", "Case="), and, for a list of plain values,
// the value's name.
struct ListNames {
  static constexpr int kMaxKeyParts = 4;
  const wchar_t* member;
  const wchar_t* keyParts[kMaxKeyParts];  // unused trailing entries are null
  const wchar_t* value;                   // null for lists of attribute records
};

constexpr ListNames kVarCaseNames{L"m_vecVarCase", {L"Var=", L"Case="}, nullptr};
constexpr ListNames kVarIndexNames{L"m_vecVarIndex", {L"Var=", L"Index="}, nullptr};
constexpr ListNames kVar1Var2Names{L"m_vecVar1Var2", {L"Var1=", L"Var2="}, L"VarFooter"};
constexpr ListNames kVarValueNames{L"m_vecVarValue", {L"Var=", L"Value="}, L"ParticularValue"};
constexpr ListNames kAxisStatusNames{
    L"m_vecAxisStatusParms", {L"Type=", L"AxisPos=", L"Posn=", L"Var="}, L"AxisStatus"};
constexpr ListNames kCompConstraintNames{
    L"m_vecCompConstraintParms", {L"Posn=", L"Var=", L"AlphaMeansAlpha="}, nullptr};
constexpr ListNames kVarVecCasesNames{L"m_vecVarVecCases", {L"Var=", L"Cases="}, nullptr};

// "Data differences found for Var=1, Case=2": the header of one entry's group.
template <typename K>
std::wstring GroupHeader(const K& key, const ListNames& names) {
  std::wstring text = L"Data differences found for ";
  const std::vector<std::wstring> parts = KeyParts(key);
  for (std::size_t i = 0; i < parts.size() && i < ListNames::kMaxKeyParts; ++i) {
    if (i != 0) text += L", ";
    text += names.keyParts[i];
    text += parts[i];
  }
  return text;
}

std::wstring MapHeader(const wchar_t* member) {
  return L"Differences found in " + std::wstring(member) + L" data";
}

// One comparison of two snapshots into `out`.
class SnapshotComparer {
 public:
  SnapshotComparer(const ChartComparisonOptions& options, Diffs& out)
      : m_options(options), m_out(out) {}

  void Run(const FrozenChartData& a, const FrozenChartData& b) {
    if (Gate(OBJECT_SCALARS)) Scalars(a, b);
    if (Gate(OBJECT_VAR_MAPS)) {
      Map(a.m_mapObs, b.m_mapObs, L"m_mapObs", L"Var=");
      Map(a.m_mapDiscreteVar, b.m_mapDiscreteVar, L"m_mapDiscreteVar", L"Var=");
      Map(a.m_mapVarHeader, b.m_mapVarHeader, L"m_mapVarHeader", L"Var=");
      Map(a.m_mapParamType, b.m_mapParamType, L"m_mapParamType", L"Var=");
    }
    if (Gate(OBJECT_VAR_CASE)) List(a.m_vecVarCase, b.m_vecVarCase, kVarCaseNames);
    if (Gate(OBJECT_VAR_INDEX)) List(a.m_vecVarIndex, b.m_vecVarIndex, kVarIndexNames);
    // Category 5 is compared before category 4, as the views list them.
    if (Gate(OBJECT_VAR1_VAR2)) List(a.m_vecVar1Var2, b.m_vecVar1Var2, kVar1Var2Names);
    if (Gate(OBJECT_VAR_VALUE)) List(a.m_vecVarValue, b.m_vecVarValue, kVarValueNames);
    if (Gate(OBJECT_AXIS_STATUS))
      List(a.m_vecAxisStatusParms, b.m_vecAxisStatusParms, kAxisStatusNames);
    if (Gate(OBJECT_PARAM_CONSTRAINTS)) {
      Map(a.m_mapParamConstraints, b.m_mapParamConstraints, L"m_mapParamConstraints", L"ParmType=");
      Map(a.m_mapParamDiffConstraints,
          b.m_mapParamDiffConstraints,
          L"m_mapParamDiffConstraints",
          L"ParmType=");
    }
    if (Gate(OBJECT_COMP_CONSTRAINTS))
      List(a.m_vecCompConstraintParms, b.m_vecCompConstraintParms, kCompConstraintNames);
    if (Gate(OBJECT_VAR_VEC_CASES)) List(a.m_vecVarVecCases, b.m_vecVarVecCases, kVarVecCasesNames);
  }

 private:
  bool Gate(ObjectComparisonCategory category) const {
    return m_options.getObjectCompFlag(category);
  }

  static bool Same(double a, double b, const ChartComparisonOptions& o) {
    return ChartDifference::NumbersEqual(a, b, o);
  }
  template <typename T>
  static bool Same(const T& a, const T& b, const ChartComparisonOptions&) {
    return a == b;
  }

  static bool Public(bool a, bool b, std::wstring name, const ChartComparisonOptions& o,
                     Diffs& into) {
    return ChartDifference::CompareBool(a, b, std::move(name), o, kValue, into, false);
  }
  static bool Public(int a, int b, std::wstring name, const ChartComparisonOptions& o,
                     Diffs& into) {
    return ChartDifference::CompareInt(a, b, std::move(name), o, kValue, into, false);
  }
  static bool Public(double a, double b, std::wstring name, const ChartComparisonOptions& o,
                     Diffs& into) {
    return ChartDifference::CompareNum(a, b, std::move(name), o, kValue, into, false);
  }
  static bool Public(const std::wstring& a, const std::wstring& b, std::wstring name,
                     const ChartComparisonOptions& o, Diffs& into) {
    return ChartDifference::CompareWStr(a, b, std::move(name), o, kValue, into, false);
  }

  // One value; `name` is a text or a callable making it, used only when a
  // record is due.
  template <typename T, typename Name>
  void Value(const T& a, const T& b, const Name& name, Diffs& into) const {
    if (!m_options.m_bReportAll && Same(a, b, m_options)) return;
    if constexpr (std::is_invocable_v<Name>) {
      Public(a, b, name(), m_options, into);
    } else {
      Public(a, b, std::wstring(name), m_options, into);
    }
  }

  // Element counts are always compared (forced), so report-all mode never
  // invents a count mismatch.
  bool Count(std::size_t a, std::size_t b, const wchar_t* member, Diffs& into) const {
    if (a == b) return true;
    return ChartDifference::CompareInt(static_cast<int>(a),
                                       static_cast<int>(b),
                                       std::wstring(member) + L" count mismatch",
                                       m_options,
                                       kValue,
                                       into,
                                       true);
  }

  void Scalars(const FrozenChartData& a, const FrozenChartData& b) {
    Value(a.nVars, b.nVars, L"nVars", m_out);
    Value(a.bReassignValuesToMinMax, b.bReassignValuesToMinMax, L"bReassignValuesToMinMax", m_out);
    Value(a.wstrTitle, b.wstrTitle, L"wstrTitle", m_out);
    Value(a.wstrFooter, b.wstrFooter, L"wstrFooter", m_out);
    Value(a.nHighlightIndex, b.nHighlightIndex, L"nHighlightIndex", m_out);
    const auto& la = a.m_vecvecHighlight;
    const auto& lb = b.m_vecvecHighlight;
    if (!Count(la.size(), lb.size(), L"m_vecvecHighlight", m_out)) return;
    for (std::size_t i = 0; i < la.size(); ++i) {
      if (!m_options.m_bReportAll && la[i] == lb[i]) continue;
      m_out.emplace_back(kValue,
                         -1,
                         L"Values differ for m_vecvecHighlight[" + std::to_wstring(i) + L"]: {" +
                             JoinList(la[i]) + L"} vs. {" + JoinList(lb[i]) + L"}");
    }
  }

  // A map, in the first chart's key order: a key missing from the second is
  // one record, a present one has its value compared; the map's records go
  // under one header. `keyName` prefixes a key ("Var=", "ParmType=").
  template <typename V>
  void Map(const std::map<unsigned, V>& a, const std::map<unsigned, V>& b, const wchar_t* member,
           const wchar_t* keyName) {
    if (!Count(a.size(), b.size(), member, m_out)) return;
    m_group.clear();
    for (const auto& [key, value] : a) {
      auto it = b.find(key);
      if (it == b.end()) {
        m_group.emplace_back(kValue, -1, keyName + Text(key) + L": entry missing in second chart");
        continue;
      }
      MapEntry(key, keyName, value, it->second);
    }
    FlushGroup(
        m_group, [member] { return MapHeader(member); }, m_out);
  }

  template <typename V>
  void MapEntry(unsigned key, const wchar_t* keyName, const V& a, const V& b) {
    Value(
        a, b, [key, keyName] { return keyName + Text(key); }, m_group);
  }
  void MapEntry(unsigned key, const wchar_t* keyName, const ParamConstraints& a,
                const ParamConstraints& b) {
    ConstraintGroup(key, keyName, a, b);
  }
  void MapEntry(unsigned key, const wchar_t* keyName, const ParamDiffConstraints& a,
                const ParamDiffConstraints& b) {
    ConstraintGroup(key, keyName, a, b);
  }

  // The constraints of one parameter type, grouped under their own header.
  template <typename C>
  void ConstraintGroup(unsigned key, const wchar_t* keyName, const C& a, const C& b) {
    m_entry.clear();
    Value(a.bLeftAlign, b.bLeftAlign, L"bLeftAlign", m_entry);
    if (Count(a.vecPairs.size(), b.vecPairs.size(), L"vecPairs", m_entry)) {
      for (std::size_t i = 0; i < a.vecPairs.size(); ++i) {
        if (!m_options.m_bReportAll && a.vecPairs[i] == b.vecPairs[i]) continue;
        m_entry.emplace_back(kValue,
                             -1,
                             L"Values differ for vecPairs[" + std::to_wstring(i) + L"]: (" +
                                 KeyText(a.vecPairs[i]) + L") vs. (" + KeyText(b.vecPairs[i]) +
                                 L")");
      }
    }
    FlushGroup(
        m_entry,
        [key, keyName] { return L"Differences found for " + (keyName + Text(key)); },
        m_group);
  }

  // Appends a header and the group's records when the group is not empty; the
  // header is made only then.
  template <typename MakeHeader>
  static void FlushGroup(Diffs& group, const MakeHeader& header, Diffs& into) {
    if (group.empty()) return;
    into.emplace_back(kGroup, -1, header());
    std::move(group.begin(), group.end(), std::back_inserter(into));
    group.clear();
  }

  // A keyed list, walked by position: keys that differ are one record; the
  // attributes of equal keys go under a header naming the key.
  template <typename K, typename V>
  void List(const KeyedList<K, V>& a, const KeyedList<K, V>& b, const ListNames& names) {
    if (!Count(a.size(), b.size(), names.member, m_out)) return;
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (!(a[i].first == b[i].first)) {
        m_out.emplace_back(kValue,
                           -1,
                           L"Values differ for " + std::wstring(names.member) + L"[" +
                               std::to_wstring(i) + L"]: (" + KeyText(a[i].first) + L") vs. (" +
                               KeyText(b[i].first) + L")");
        continue;
      }
      Attributes(a[i].second, b[i].second, names.value, m_entry);
      FlushGroup(
          m_entry, [&] { return GroupHeader(a[i].first, names); }, m_out);
    }
  }

  // The attributes of one entry, in their reporting order. A plain value is
  // reported under the list's value name.
  template <typename T>
  void Attributes(const T& x, const T& y, const wchar_t* name, Diffs& into) const {
    Value(x, y, name, into);
  }
  void Attributes(const PointAttributes& x, const PointAttributes& y, const wchar_t*,
                  Diffs& into) const {
    Value(x.bValid, y.bValid, L"Valid", into);
    Value(x.bConnected, y.bConnected, L"Connected", into);
    Value(x.dValue, y.dValue, L"Value", into);
    Value(x.wstrText, y.wstrText, L"Text", into);
    Value(x.nPointStatus, y.nPointStatus, L"PointStatus", into);
    Value(x.nPointColor, y.nPointColor, L"PointColor", into);
    Value(x.bPointMarked, y.bPointMarked, L"PointMarked", into);
    Value(x.bLabelMajor, y.bLabelMajor, L"LabelMajor", into);
    Value(x.wstrLabel, y.wstrLabel, L"Label", into);
    Value(x.wstrHint, y.wstrHint, L"Hint", into);
  }
  void Attributes(const HintLabel& x, const HintLabel& y, const wchar_t*, Diffs& into) const {
    Value(x.bResult, y.bResult, L"HintLabel(bool)", into);
    Value(x.wstrText, y.wstrText, L"HintLabel(text)", into);
  }
  void Attributes(const CompConstraint& x, const CompConstraint& y, const wchar_t*,
                  Diffs& into) const {
    Value(x.nResult, y.nResult, L"CompConstraint(int)", into);
    Value(x.wstrText, y.wstrText, L"CompConstraint(wstr)", into);
  }
  void Attributes(const Consolidated& x, const Consolidated& y, const wchar_t*, Diffs& into) const {
    Value(x.dValue, y.dValue, L"ConsolidatedValue", into);
    Value(x.wstrLabel, y.wstrLabel, L"ConsolidatedLabel", into);
    Value(x.wstrHint, y.wstrHint, L"ConsolidatedHint", into);
  }

  const ChartComparisonOptions& m_options;
  Diffs& m_out;
  // Reused scratch lists for the records of one map and of one entry; they stay
  // empty (and unallocated) while nothing differs.
  Diffs m_group;
  Diffs m_entry;
};

}  // namespace

bool CompareFrozenChartData(const FrozenChartData& first, const FrozenChartData& second,
                            std::vector<ChartDifference>& diffs,
                            const ChartComparisonOptions& options) {
  diffs.clear();
  SnapshotComparer(options, diffs).Run(first, second);
  return diffs.empty();
}

}  // namespace qvsysbase
