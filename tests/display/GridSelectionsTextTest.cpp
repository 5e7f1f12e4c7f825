#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "qvsysbase/GridSelections.h"

namespace qvsysbase {
namespace {

using Rect = GridSelections::GridSelectionRect;
using Rects = std::vector<Rect>;
constexpr unsigned kMax = std::numeric_limits<unsigned>::max();
constexpr unsigned kReadSeconds = 10;  // generous: the reads take microseconds

std::wstring Written(const GridSelections& sel) {
  std::wostringstream out;
  out << sel;
  return out.str();
}

TEST(GridSelectionsTextTest, WritesTheBracketedForm) {
  GridSelections sel;
  EXPECT_EQ(Written(sel), L"<Selections(L,T,R,B):0>\n");
  sel.addSelection(1, 2, 3, 4);
  sel.addSelection(5, 6, 7, 8);
  EXPECT_EQ(Written(sel), L"<Selections(L,T,R,B):2(1,2,3,4)(5,6,7,8)>\n");
}

TEST(GridSelectionsTextTest, RendersRowsThenColumns) {
  GridSelections sel;
  std::wostringstream empty;
  sel.render(empty);
  EXPECT_EQ(empty.str(), L"");
  sel.addSelection(1, 2, 3, 4);
  sel.addSelection(5, 6, 7, kMax);
  std::wostringstream out;
  out << L"x";
  sel.render(out);
  EXPECT_EQ(out.str(), L"x - Grid Selections: (Rows:2-4,Cols:1-3)(Rows:6-4294967295,Cols:5-7)");
}

// Outside text: what is read, whether the result is still valid, and whether
// the stream is left failed. A reader that kept looping on a failed stream
// would hang and grow without bound, so the texts are first read in a child
// process under an alarm.
TEST(GridSelectionsTextDeathTest, ReaderAcceptsOnlyWhatTheWriterWrites) {
  const struct {
    const char* name;
    const wchar_t* text;
    Rects rects;
    bool valid, streamFailed;
  } cases[] = {
      // clang-format off
      {"two rectangles", L"<Selections(L,T,R,B):2(1,2,3,4)(5,6,7,8)>\n",
       {{1, 2, 3, 4}, {5, 6, 7, 8}}, true, false},
      {"none", L"<Selections(L,T,R,B):0>", {}, true, false},
      {"header not checked", L"anything:1(1,2,3,4)>", {{1, 2, 3, 4}}, true, false},
      {"blanks skipped", L"  <x> :\n 1 ( 1 , 2 ,\t3 , 4 ) > ", {{1, 2, 3, 4}}, true, false},
      {"separators not checked", L":1(1;2]3|4}>", {{1, 2, 3, 4}}, true, false},
      {"full range", L":1(0,0,4294967295,4294967295)>", {{0, 0, kMax, kMax}}, true, false},
      {"count too large", L"<Selections(L,T,R,B):2(1,2,3,4)>", {{1, 2, 3, 4}}, false, false},
      {"count too small", L":0(1,2,3,4)>", {{1, 2, 3, 4}}, false, false},
      {"huge count", L":4294967295(1,2,3,4)>", {{1, 2, 3, 4}}, false, false},
      {"no end mark", L":1(1,2,3,4)", {{1, 2, 3, 4}}, false, true},
      {"wrong end mark", L":1(1,2,3,4)]", {{1, 2, 3, 4}}, false, false},
      {"wrong open mark", L":1[1,2,3,4]>", {}, false, false},
      {"empty", L"", {}, false, true},
      {"no colon", L"<Selections(L,T,R,B)1(1,2,3,4)>", {}, false, true},
      {"count missing", L":(1,2,3,4)>", {}, false, true},
      {"letter for a number", L":2(1,2,3,4)(5,x,7,8)>", {{1, 2, 3, 4}}, false, true},
      {"number too large", L":1(4294967296,0,0,0)>", {}, false, true},
      {"cut inside a rectangle", L":1(1,2,3", {}, false, true},
      {"cut before the close", L":1(1,2,3,4", {}, false, true},
      // clang-format on
  };
  ASSERT_EXIT(
      {
        ::alarm(kReadSeconds);
        for (const auto& c : cases) {
          std::wistringstream in(c.text);
          GridSelections sel;
          in >> sel;
        }
        std::exit(0);
      },
      ::testing::ExitedWithCode(0),
      "");
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::wistringstream in(c.text);
    GridSelections sel;
    in >> sel;
    EXPECT_EQ(sel.getSelections(), c.rects);
    EXPECT_EQ(sel.getIsValidSelections(), c.valid);
    EXPECT_EQ(in.fail(), c.streamFailed);
  }
}

TEST(GridSelectionsTextTest, ReadingAppendsAndStopsAfterTheEndMark) {
  std::wistringstream in(L"<Selections(L,T,R,B):1(1,2,3,4)>\n<Selections(L,T,R,B):1(5,6,7,8)>\n");
  GridSelections sel;
  in >> sel;
  EXPECT_EQ(sel.getSelections(), (Rects{{1, 2, 3, 4}}));
  in >> sel;
  EXPECT_EQ(sel.getSelections(), (Rects{{1, 2, 3, 4}, {5, 6, 7, 8}}));
  EXPECT_TRUE(sel.getIsValidSelections());
}

// The flag is not written (the round trips of GridSelectionsTest read invalid
// selections back valid), and reading never makes an invalid target valid.
TEST(GridSelectionsTextTest, ReadingKeepsAnInvalidTargetInvalid) {
  GridSelections written, target;
  written.addSelection(1, 2, 3, 4);
  target.setIsValidSelections(false);
  std::wistringstream in(Written(written));
  in >> target;
  EXPECT_EQ(target.getSelections(), written.getSelections());
  EXPECT_FALSE(target.getIsValidSelections());
}

}  // namespace
}  // namespace qvsysbase
