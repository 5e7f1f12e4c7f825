#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "qvsysbase/QvStringUtil.h"
#include "text/BothTextTypes.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

template <class S>
class PathTest : public BothTextTypesTest<S> {};
TYPED_TEST_SUITE(PathTest, TextTypes);

TYPED_TEST(PathTest, PathConversionsAreTextual) {
  const std::tuple<const char*, const char*, const char*> toAbsolute[] = {
      // clang-format off
      {"/data/models/", "../shared/./b.qv", "/data/shared/b.qv"},  {"/data", "/etc//x", "/etc/x"},
      {"/a", "../..", "/"},  // clamped at the root
      {"C:\\Work\\Models", "..\\in.csv", "C:/Work/in.csv"},  {"rel/dir", "../../../x", "../x"},
      {"", "a/./b/..", "a"},
      // clang-format on
  };
  TypeParam result;  // each row overwrites the one before
  for (const auto& [base, path, absolute] : toAbsolute) {
    SCOPED_TRACE(testing::Message() << base << " + " << path);
    QvStringUtil::RelativePathToAbsolutePath(this->T(base), this->T(path), result);
    EXPECT_EQ(result, this->T(absolute));
  }
  const std::tuple<const char*, const char*, const char*> toRelative[] = {
      // clang-format off
      {"/data/models", "/data/shared/b.qv", "../shared/b.qv"},  {"/data/m", "/data/m", "."},
      {"/data/models/x/y", "/data", "../../.."},  {"c:/Work", "C:\\Work\\in.csv", "in.csv"},
      {"C:/Work", "D:/in.csv", "D:/in.csv"},  {"/data", "rel/x", "rel/x"},
      {"../up", "x", "x"},  // no relative form exists
      // clang-format on
  };
  for (const auto& [base, path, relative] : toRelative) {
    SCOPED_TRACE(testing::Message() << path << " from " << base);
    QvStringUtil::AbsolutePathToRelativePath(this->T(base), this->T(path), result);
    EXPECT_EQ(result, this->T(relative));
  }
  TypeParam path = this->T("/a/b/c");  // the result may be one of the arguments
  QvStringUtil::AbsolutePathToRelativePath(this->T("/a"), path, path);
  EXPECT_EQ(path, this->T("b/c"));
}

}  // namespace
}  // namespace qvsysbase
