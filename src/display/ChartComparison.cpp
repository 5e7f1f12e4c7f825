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

std::wstring KeyText(const VarCaseKey& k) { return Text(k.nVar) + L", " + Text(k.nCase); }
std::wstring KeyText(const std::pair<unsigned, unsigned>& k) {
  return Text(k.first) + L", " + Text(k.second);
}
std::wstring KeyText(const AxisStatusKey& k) {
  return Text(k.nType) + L", " + Text(k.nAxisPos) + L", " + KeyNumber(k.dPosn) + L", " +
         Text(k.nVar);
}
std::wstring KeyText(const CompConstraintKey& k) {
  return KeyNumber(k.dPosn) + L", " + Text(k.nVar) + L", " + Text(k.bAlphaMeansAlpha);
}
std::wstring KeyText(const VarCasesKey& k) {
  return Text(k.nVar) + L", {" + JoinList(k.vecCases) + L"}";
}
std::wstring KeyText(
    const std::pair<std::pair<unsigned, unsigned>, std::pair<unsigned, unsigned>>& k) {
  return L"(" + KeyText(k.first) + L"), (" + KeyText(k.second) + L")";
}

const wchar_t* const kDataHeader = L"Data differences found for ";

std::wstring Header(const VarCaseKey& k, const wchar_t* second) {
  return kDataHeader + (L"Var=" + Text(k.nVar)) + second + Text(k.nCase);
}

// One comparison of two snapshots into `out`.
class SnapshotComparer {
 public:
  SnapshotComparer(const ChartComparisonOptions& options, Diffs& out)
      : m_options(options), m_out(out) {}

  void Run(const FrozenChartData& a, const FrozenChartData& b) {
    if (Gate(OBJECT_SCALARS)) Scalars(a, b);
    if (Gate(OBJECT_VAR_MAPS)) {
      Map(a.m_mapObs, b.m_mapObs, L"m_mapObs");
      Map(a.m_mapDiscreteVar, b.m_mapDiscreteVar, L"m_mapDiscreteVar");
      Map(a.m_mapVarHeader, b.m_mapVarHeader, L"m_mapVarHeader");
      Map(a.m_mapParamType, b.m_mapParamType, L"m_mapParamType");
    }
    if (Gate(OBJECT_VAR_CASE)) VarCases(a, b);
    if (Gate(OBJECT_VAR_INDEX)) VarIndices(a, b);
    // Category 5 is compared before category 4, as the views list them.
    if (Gate(OBJECT_VAR1_VAR2)) VarFooters(a, b);
    if (Gate(OBJECT_VAR_VALUE)) ParticularValues(a, b);
    if (Gate(OBJECT_AXIS_STATUS)) AxisStatuses(a, b);
    if (Gate(OBJECT_PARAM_CONSTRAINTS)) {
      ConstraintMap(a.m_mapParamConstraints, b.m_mapParamConstraints, L"m_mapParamConstraints");
      ConstraintMap(
          a.m_mapParamDiffConstraints, b.m_mapParamDiffConstraints, L"m_mapParamDiffConstraints");
    }
    if (Gate(OBJECT_COMP_CONSTRAINTS)) CompConstraints(a, b);
    if (Gate(OBJECT_VAR_VEC_CASES)) ConsolidatedValues(a, b);
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

  template <typename V>
  void Map(const std::map<unsigned, V>& a, const std::map<unsigned, V>& b, const wchar_t* member) {
    if (!Count(a.size(), b.size(), member, m_out)) return;
    m_group.clear();
    for (const auto& [key, value] : a) {
      auto it = b.find(key);
      if (it == b.end()) {
        m_group.emplace_back(kValue, -1, L"Var=" + Text(key) + L": entry missing in second chart");
        continue;
      }
      Value(
          value, it->second, [key] { return L"Var=" + Text(key); }, m_group);
    }
    FlushGroup(
        m_group,
        [member] { return L"Differences found in " + std::wstring(member) + L" data"; },
        m_out);
  }

  template <typename C>
  void ConstraintMap(const std::map<unsigned, C>& a, const std::map<unsigned, C>& b,
                     const wchar_t* member) {
    if (!Count(a.size(), b.size(), member, m_out)) return;
    m_group.clear();
    for (const auto& [key, value] : a) {
      auto it = b.find(key);
      if (it == b.end()) {
        m_group.emplace_back(
            kValue, -1, L"ParmType=" + Text(key) + L": entry missing in second chart");
        continue;
      }
      m_entry.clear();
      ConstraintEntry(value, it->second, m_entry);
      FlushGroup(
          m_entry, [key] { return L"Differences found for ParmType=" + Text(key); }, m_group);
    }
    FlushGroup(
        m_group,
        [member] { return L"Differences found in " + std::wstring(member) + L" data"; },
        m_out);
  }

  template <typename C>
  void ConstraintEntry(const C& a, const C& b, Diffs& into) const {
    Value(a.bLeftAlign, b.bLeftAlign, L"bLeftAlign", into);
    if (!Count(a.vecPairs.size(), b.vecPairs.size(), L"vecPairs", into)) return;
    for (std::size_t i = 0; i < a.vecPairs.size(); ++i) {
      if (!m_options.m_bReportAll && a.vecPairs[i] == b.vecPairs[i]) continue;
      into.emplace_back(kValue,
                        -1,
                        L"Values differ for vecPairs[" + std::to_wstring(i) + L"]: (" +
                            KeyText(a.vecPairs[i]) + L") vs. (" + KeyText(b.vecPairs[i]) + L")");
    }
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
  template <typename K, typename V, typename Attributes, typename MakeHeader>
  void List(const KeyedList<K, V>& a, const KeyedList<K, V>& b, const wchar_t* member,
            const Attributes& attributes, const MakeHeader& header) {
    if (!Count(a.size(), b.size(), member, m_out)) return;
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (!(a[i].first == b[i].first)) {
        m_out.emplace_back(kValue,
                           -1,
                           L"Values differ for " + std::wstring(member) + L"[" +
                               std::to_wstring(i) + L"]: (" + KeyText(a[i].first) + L") vs. (" +
                               KeyText(b[i].first) + L")");
        continue;
      }
      attributes(a[i].second, b[i].second, m_entry);
      FlushGroup(
          m_entry, [&] { return header(a[i].first); }, m_out);
    }
  }

  void VarCases(const FrozenChartData& a, const FrozenChartData& b) {
    List(
        a.m_vecVarCase,
        b.m_vecVarCase,
        L"m_vecVarCase",
        [this](const PointAttributes& x, const PointAttributes& y, Diffs& into) {
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
        },
        [](const VarCaseKey& k) { return Header(k, L", Case="); });
  }

  void VarIndices(const FrozenChartData& a, const FrozenChartData& b) {
    List(
        a.m_vecVarIndex,
        b.m_vecVarIndex,
        L"m_vecVarIndex",
        [this](const HintLabel& x, const HintLabel& y, Diffs& into) {
          Value(x.bResult, y.bResult, L"HintLabel(bool)", into);
          Value(x.wstrText, y.wstrText, L"HintLabel(text)", into);
        },
        [](const VarCaseKey& k) { return Header(k, L", Index="); });
  }

  void VarFooters(const FrozenChartData& a, const FrozenChartData& b) {
    List(
        a.m_vecVar1Var2,
        b.m_vecVar1Var2,
        L"m_vecVar1Var2",
        [this](const std::wstring& x, const std::wstring& y, Diffs& into) {
          Value(x, y, L"VarFooter", into);
        },
        [](const std::pair<unsigned, unsigned>& k) {
          return kDataHeader + (L"Var1=" + Text(k.first)) + L", Var2=" + Text(k.second);
        });
  }

  void ParticularValues(const FrozenChartData& a, const FrozenChartData& b) {
    List(
        a.m_vecVarValue,
        b.m_vecVarValue,
        L"m_vecVarValue",
        [this](double x, double y, Diffs& into) { Value(x, y, L"ParticularValue", into); },
        [](const std::pair<unsigned, unsigned>& k) {
          return Header(VarCaseKey{k.first, k.second}, L", Value=");
        });
  }

  void AxisStatuses(const FrozenChartData& a, const FrozenChartData& b) {
    List(
        a.m_vecAxisStatusParms,
        b.m_vecAxisStatusParms,
        L"m_vecAxisStatusParms",
        [this](double x, double y, Diffs& into) { Value(x, y, L"AxisStatus", into); },
        [](const AxisStatusKey& k) {
          return kDataHeader + (L"Type=" + Text(k.nType)) + L", AxisPos=" + Text(k.nAxisPos) +
                 L", Posn=" + KeyNumber(k.dPosn) + L", Var=" + Text(k.nVar);
        });
  }

  void CompConstraints(const FrozenChartData& a, const FrozenChartData& b) {
    List(
        a.m_vecCompConstraintParms,
        b.m_vecCompConstraintParms,
        L"m_vecCompConstraintParms",
        [this](const CompConstraint& x, const CompConstraint& y, Diffs& into) {
          Value(x.nResult, y.nResult, L"CompConstraint(int)", into);
          Value(x.wstrText, y.wstrText, L"CompConstraint(wstr)", into);
        },
        [](const CompConstraintKey& k) {
          return kDataHeader + (L"Posn=" + KeyNumber(k.dPosn)) + L", Var=" + Text(k.nVar) +
                 L", AlphaMeansAlpha=" + Text(k.bAlphaMeansAlpha);
        });
  }

  void ConsolidatedValues(const FrozenChartData& a, const FrozenChartData& b) {
    List(
        a.m_vecVarVecCases,
        b.m_vecVarVecCases,
        L"m_vecVarVecCases",
        [this](const Consolidated& x, const Consolidated& y, Diffs& into) {
          Value(x.dValue, y.dValue, L"ConsolidatedValue", into);
          Value(x.wstrLabel, y.wstrLabel, L"ConsolidatedLabel", into);
          Value(x.wstrHint, y.wstrHint, L"ConsolidatedHint", into);
        },
        [](const VarCasesKey& k) {
          return kDataHeader + (L"Var=" + Text(k.nVar)) + L", Cases={" + JoinList(k.vecCases) +
                 L"}";
        });
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
