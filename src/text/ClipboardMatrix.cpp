// The matrix of cells read from tab-separated clipboard text.
#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "text/UserNumbers.h"

QV_UNIT("ClipboardMatrix", "$Revision: #1 $")

namespace qvsysbase {
namespace {

std::vector<CellValue<double>> ReadRow(std::wstring_view row, wchar_t separator) {
  std::vector<CellValue<double>> cells;
  std::size_t begin = 0;
  for (;;) {
    const std::size_t tab = std::min(row.find(L'\t', begin), row.size());
    CellValue<double> cell;
    cell.m_strText.assign(row.substr(begin, tab - begin));
    QvStringUtil::Trim(cell.m_strText);
    cell.m_bValid = detail::ReadUserNumber(cell.m_strText, separator, cell.m_Value);
    cells.push_back(std::move(cell));
    if (tab == row.size()) {
      return cells;
    }
    begin = tab + 1;
  }
}

}  // namespace

void QvStringUtil::BuildMatrixFromString(const std::wstring& text,
                                         std::vector<std::vector<CellValue<double>>>& matrix) {
  const wchar_t separator = detail::UserDecimalSeparator();
  matrix.clear();
  const std::wstring_view all(text);
  std::size_t begin = 0;
  while (begin < all.size()) {
    const std::size_t end = std::min(all.find_first_of(L"\r\n", begin), all.size());
    matrix.push_back(ReadRow(all.substr(begin, end - begin), separator));
    begin = end + 1;
    if (end + 1 < all.size() && all[end] == L'\r' && all[end + 1] == L'\n') {
      ++begin;
    }
  }
}

}  // namespace qvsysbase
