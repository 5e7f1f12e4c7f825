// Chart comparison: the options that choose what is compared and how numbers
// are judged equal, the difference records, and the comparison of two frozen
// charts, a pure function of the two snapshots and the options.
//
//   ChartComparisonOptions options;              // exact, every category
//   options.m_bUseAbsTolerance = true;
//   options.m_dAbsTolerance = 1e-12;
//   std::vector<ChartDifference> diffs;
//   if (!frozenA.compareChartObjects(&frozenB, diffs, options))
//     for (const ChartDifference& d : diffs) Print(d.m_wstrText);
//
// Thread-safety: thread-compatible. Both classes are intentionally copyable
// values.
#ifndef QVSYSBASE_CHARTCOMPARISON_H_
#define QVSYSBASE_CHARTCOMPARISON_H_

#include <string>
#include <vector>

#include "qvsysbase/Export.h"
#include "qvsysbase/GenericChartObject.h"

namespace qvsysbase {

// What a live chart answers when asked to compare itself.
inline constexpr const wchar_t* kNonFrozenComparisonText =
    L"Error -- trying to compare non-frozen objects";
// What a frozen chart answers when the other chart is not frozen.
inline constexpr const wchar_t* kTypeMismatchText = L"Chart object type mismatch";

// The application's view-level comparisons; the library stores the flags only.
enum ViewComparisonCategory : int {
  VIEW_CATEGORY_0 = 0,
  VIEW_CATEGORY_1,
  VIEW_CATEGORY_2,
  VIEW_CATEGORY_3,
  VIEW_CATEGORY_4,
  VIEW_CATEGORY_5,
  VIEW_CATEGORY_6
};
inline constexpr int kViewCategoryCount = 7;

// The parts of a snapshot comparison; each gates the members named.
enum ObjectComparisonCategory : int {
  OBJECT_SCALARS = 0,            // scalars and the highlight lists
  OBJECT_VAR_MAPS = 1,           // m_mapObs, m_mapDiscreteVar, m_mapVarHeader, m_mapParamType
  OBJECT_VAR_CASE = 2,           // m_vecVarCase
  OBJECT_VAR_INDEX = 3,          // m_vecVarIndex
  OBJECT_VAR_VALUE = 4,          // m_vecVarValue
  OBJECT_VAR1_VAR2 = 5,          // m_vecVar1Var2
  OBJECT_AXIS_STATUS = 6,        // m_vecAxisStatusParms
  OBJECT_PARAM_CONSTRAINTS = 7,  // m_mapParamConstraints, m_mapParamDiffConstraints
  OBJECT_COMP_CONSTRAINTS = 8,   // m_vecCompConstraintParms
  OBJECT_VAR_VEC_CASES = 9       // m_vecVarVecCases
};
inline constexpr int kObjectCategoryCount = 10;

class QVSYSBASE_API ChartComparisonOptions {
 public:
  // Exact comparison of every category, nothing reported beyond differences.
  ChartComparisonOptions();

  // Clear the set; when `on`, set every category of it.
  void setAllViewCompFlags(bool on);
  void setAllObjectCompFlags(bool on);
  // Set or clear one category; a category out of range is ignored.
  void setViewCompFlag(ViewComparisonCategory category, bool on);
  void setObjectCompFlag(ObjectComparisonCategory category, bool on);
  // False for a category out of range.
  bool getViewCompFlag(ViewComparisonCategory category) const;
  bool getObjectCompFlag(ObjectComparisonCategory category) const;

  // Numbers are equal when |a - b| <= m_dAbsTolerance instead of by relative
  // precision.
  bool m_bUseAbsTolerance = false;
  double m_dAbsTolerance = 0.0;
  // Relative precision in per cent; 0 means exact equality.
  double m_dRelPrecisionPercent = 0.0;
  unsigned m_nViewFlags = 0;    // bit k: ViewComparisonCategory k
  unsigned m_nObjectFlags = 0;  // bit k: ObjectComparisonCategory k
  // Report every compared value (a listing of everything compared).
  bool m_bReportAll = false;
  // Whether the relative comparison is absolute next to zero, and its floor.
  bool m_bUseZeroFloor = false;
  double m_dZeroFloor = 1e-9;
};

// One reported difference: a human-readable line. Intentionally copyable.
class QVSYSBASE_API ChartDifference {
 public:
  enum DiffType : int {
    DIFF_VALUE = 1,  // a value, a count or a key that differs
    DIFF_GROUP = 2   // a header naming the entry whose differences follow
  };

  ChartDifference() = default;
  ChartDifference(DiffType type, int index, std::wstring text);

  // Each compares two values under `options` and returns whether they are
  // equal. When not (always, in report-all mode unless `bForce`), appends
  // (type, -1, "<name>: (<first>) vs. (<second>)") to `diffs`. Booleans print
  // as true/false, numbers in fixed notation with 18 decimals.
  static bool CompareBool(bool a, bool b, std::wstring name, const ChartComparisonOptions& options,
                          DiffType type, std::vector<ChartDifference>& diffs, bool bForce);
  static bool CompareInt(int a, int b, std::wstring name, const ChartComparisonOptions& options,
                         DiffType type, std::vector<ChartDifference>& diffs, bool bForce);
  static bool CompareNum(double a, double b, std::wstring name,
                         const ChartComparisonOptions& options, DiffType type,
                         std::vector<ChartDifference>& diffs, bool bForce);
  static bool CompareWStr(std::wstring a, std::wstring b, std::wstring name,
                          const ChartComparisonOptions& options, DiffType type,
                          std::vector<ChartDifference>& diffs, bool bForce);

  // Whether two numbers are equal under `options`: within the absolute
  // tolerance, or else within 0.01 * m_dRelPrecisionPercent relatively, with
  // the zero floor as the absolute test next to zero when enabled.
  static bool NumbersEqual(double a, double b, const ChartComparisonOptions& options);

  bool operator==(const ChartDifference&) const = default;

  DiffType m_nType = DIFF_GROUP;
  int m_nIndex = -1;
  std::wstring m_wstrText = L"Dummy";
};

// Replaces `diffs` with the differences between two snapshots, in the fixed
// order of the categories (0, 1, 2, 3, 5, 4, 6, 7, 8, 9); true when none.
// Counts are compared whatever the report-all mode, and a container's entries
// only when its counts agree.
QVSYSBASE_API bool CompareFrozenChartData(const FrozenChartData& first,
                                          const FrozenChartData& second,
                                          std::vector<ChartDifference>& diffs,
                                          const ChartComparisonOptions& options);

}  // namespace qvsysbase

#endif  // QVSYSBASE_CHARTCOMPARISON_H_
