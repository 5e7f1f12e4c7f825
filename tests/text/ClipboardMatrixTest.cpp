#include <gtest/gtest.h>

#include <vector>

#include "qvsysbase/QvStringUtil.h"
#include "text/ScopedUserLocale.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

TEST(ClipboardMatrixTest, RowsOfTabSeparatedCells) {
  const ScopedUserLocale user("C.UTF-8");
  std::vector<std::vector<CellValue<double>>> matrix(3);
  QvStringUtil::BuildMatrixFromString(L"1\t 2.5 \r\nx\t\n\r-4e1\r\n", matrix);
  const std::vector<std::vector<CellValue<double>>> expected{
      // clang-format off
      {{1.0, true, L"1"}, {2.5, true, L"2.5"}},  {{0.0, false, L"x"}, {0.0, false, L""}},
      {{0.0, false, L""}},  {{-40.0, true, L"-4e1"}},
      // clang-format on
  };
  EXPECT_EQ(matrix, expected);
  QvStringUtil::BuildMatrixFromString(L"", matrix);
  EXPECT_TRUE(matrix.empty());
}

}  // namespace
}  // namespace qvsysbase
