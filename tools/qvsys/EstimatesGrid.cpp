#include "EstimatesGrid.h"

#include <cstdio>
#include <cwchar>

namespace qvsys {

namespace {

using qvsysbase::SplittingInformation;

enum Column : unsigned { kEstimate, kStandardError, kCertified, kDigits, kColumns };
// The separator stands after this data column: fitted values left, reference right.
constexpr unsigned kSeparatorAfter = kStandardError;

// Palette codes of the view: passing and failing digits, the reference columns'
// background.
constexpr unsigned kPassColour = 2;
constexpr unsigned kFailColour = 3;
constexpr unsigned kReferenceBackground = 7;
constexpr unsigned kBottomBorder = 1;

std::wstring Number(const wchar_t* format, double value) {
  wchar_t buffer[64];
  std::swprintf(buffer, sizeof buffer / sizeof buffer[0], format, value);
  return buffer;
}

}  // namespace

EstimatesGrid::EstimatesGrid(const RegressionProblem& problem, const RegressionFit& fit,
                             double requiredDigits)
    : m_dRequiredDigits(requiredDigits), m_DigitsHeader(SplittingInformation::kHorizontalCut) {
  for (std::size_t j = 0; j < fit.coefficients.size(); ++j) {
    const std::string name = ParameterName(j);
    m_vecRows.push_back({std::wstring(name.begin(), name.end()),
                         fit.coefficients[j],
                         fit.standardErrors[j],
                         problem.certifiedCoefficients[j],
                         CorrectDigits(fit.coefficients[j], problem.certifiedCoefficients[j])});
  }
  m_DigitsHeader.InsertInSplitList(SplittingInformation(SplittingInformation::kHorizontalCut));
  m_DigitsHeader.InsertInSplitList(SplittingInformation(SplittingInformation::kHorizontalCut));
}

unsigned EstimatesGrid::GetGridHeight(unsigned) const {
  return static_cast<unsigned>(m_vecRows.size());
}
unsigned EstimatesGrid::GetGridWidth(unsigned) const { return kColumns; }

bool EstimatesGrid::DataCell(unsigned row, unsigned col, unsigned& r, unsigned& c) const {
  const unsigned fixedRows = GetGridFixedRows(0), fixedCols = GetGridFixedCols(0);
  if (row < fixedRows || col < fixedCols) return false;
  r = row - fixedRows;
  c = col - fixedCols;
  return r < m_vecRows.size() && c < kColumns;
}

bool EstimatesGrid::IsValidGridPoint(unsigned row, unsigned col, unsigned) const {
  unsigned r = 0, c = 0;
  return DataCell(row, col, r, c);
}

std::wstring EstimatesGrid::GetGridElementText(unsigned row, unsigned col, unsigned,
                                               unsigned) const {
  unsigned r = 0, c = 0;
  if (!DataCell(row, col, r, c)) return {};
  const Row& data = m_vecRows[r];
  switch (c) {
    case kEstimate:
      return Number(L"%.15g", data.estimate);
    case kStandardError:
      return Number(L"%.15g", data.standardError);
    case kCertified:
      return Number(L"%.15g", data.certified);
    default:
      return Number(L"%.1f", data.digits);
  }
}

unsigned EstimatesGrid::GetGridCellColor(unsigned row, unsigned col, unsigned, unsigned,
                                         bool) const {
  unsigned r = 0, c = 0;
  if (!DataCell(row, col, r, c) || c != kDigits) return 0;
  return m_vecRows[r].digits >= m_dRequiredDigits ? kPassColour : kFailColour;
}

unsigned EstimatesGrid::GetGridCellBackgroundColor(unsigned row, unsigned col, unsigned view,
                                                   unsigned subCell) const {
  unsigned r = 0, c = 0;
  if (DataCell(row, col, r, c) && c >= kCertified) return kReferenceBackground;
  return GenericGridObject::GetGridCellBackgroundColor(row, col, view, subCell);
}

// A rule under the last parameter.
unsigned EstimatesGrid::GetCellBorders(unsigned row, unsigned col, unsigned,
                                       unsigned defaultBorders) const {
  unsigned r = 0, c = 0;
  return DataCell(row, col, r, c) && r + 1 == m_vecRows.size() ? kBottomBorder : defaultBorders;
}

std::wstring EstimatesGrid::GetVerticalGridHeader(unsigned row, unsigned, unsigned,
                                                  unsigned) const {
  return row < m_vecRows.size() ? m_vecRows[row].name : std::wstring();
}

std::wstring EstimatesGrid::GetHorizontalGridHeader(unsigned col, unsigned, unsigned,
                                                    unsigned subCell) const {
  switch (col) {
    case kEstimate:
      return L"estimate";
    case kStandardError:
      return L"standard error";
    case kCertified:
      return L"certified value";
    case kDigits:
      return subCell == 0 ? L"correct" : L"digits";
    default:
      return {};
  }
}

std::wstring EstimatesGrid::GetCornerGridHeader(unsigned, unsigned, unsigned, unsigned) const {
  return L"parameter";
}

bool EstimatesGrid::IsSplitGridCell(unsigned row, unsigned col, unsigned, bool flag) const {
  return flag && row == 0 && col == GetGridFixedCols(0) + kDigits;
}

const SplittingInformation& EstimatesGrid::GetSplitInfo(unsigned row, unsigned col, unsigned view,
                                                        bool flag) const {
  if (IsSplitGridCell(row, col, view, flag)) return m_DigitsHeader;
  return GenericGridObject::GetSplitInfo(row, col, view, flag);
}

void EstimatesGrid::GetSeparators(std::vector<unsigned>& separators, unsigned) const {
  separators.assign(1, kSeparatorAfter);
}

qvsysbase::QvSender* EstimatesGrid::GetSender() const { return &m_Sender; }

bool ShowEstimatesGrid(const RegressionProblem& problem, const RegressionFit& fit,
                       double requiredDigits) {
  const EstimatesGrid grid(problem, fit, requiredDigits), again(problem, fit, requiredDigits);
  qvsysbase::GenericGridObject::GridDifference difference{};
  const bool same =
      qvsysbase::GenericGridObject::CompareGridsForEquality(grid, 0, again, 0, &difference);
  // Every data row, and every display column: the data columns and the separator.
  qvsysbase::GridSelections all;
  all.addSelection(0, 0, grid.GetGridWidth(0), grid.GetGridHeight(0) - 1);
  std::wstring text;
  grid.CopyAllTextSelections(&all, 0, text, true, true, L"");
  std::printf("the estimates as a grid object: %s; its clipboard text with mark-up:\n\n",
              same ? "equal to a second copy" : "DIFFERS from a second copy");
  std::printf("%ls\n", text.c_str());
  return same && !text.empty();
}

}  // namespace qvsys
