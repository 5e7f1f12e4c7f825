#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>

#include "display/SplitTrees.h"
#include "display/TableGrid.h"
#include "text/ScopedUserLocale.h"

namespace qvsysbase {
namespace {

using namespace testing_support;

constexpr unsigned kMax = std::numeric_limits<unsigned>::max();

// Expected texts are written with '~' for a tab and '\n' for CR LF.
std::wstring Clip(const wchar_t* compact) {
  std::wstring out;
  for (const wchar_t* p = compact; *p != L'\0'; ++p) {
    if (*p == L'~') {
      out += L'\t';
    } else if (*p == L'\n') {
      out += L"\r\n";
    } else {
      out += *p;
    }
  }
  return out;
}

struct Options {
  bool headers = false;
  bool markup = false;
};
constexpr Options kPlain{}, kHeaders{true, false}, kMarkup{false, true}, kBoth{true, true};

struct CopyCase {
  const char* name;
  std::function<void(TableGrid&, GridSelections&)> setUp;
  Options options;
  const wchar_t* expected;
};

// A 2 x 3 grid under one header row, right of one header column, unless the
// case changes it. Data cell (r, c) is whole-grid (r + 1, c + 1).
class GridClipboardTest : public ::testing::Test {
 protected:
  void Run(const CopyCase& c) {
    SCOPED_TRACE(c.name);
    TableGrid grid;
    GridSelections selections;
    c.setUp(grid, selections);
    std::wstring text = L"old";
    grid.CopyAllTextSelections(&selections, 0, text, c.options.headers, c.options.markup, L"T");
    EXPECT_EQ(text, Clip(c.expected));
  }

  // RemoveTrailingZeroes reads numbers in the user's notation.
  ScopedUserLocale m_Locale{"C"};
};

void Select(GridSelections& s, unsigned L, unsigned T, unsigned R, unsigned B) {
  s.addSelection(L, T, R, B);
}

TEST_F(GridClipboardTest, LaysOutRowsColumnsAndHeaders) {
  // clang-format off
  const CopyCase cases[] = {
      {"one rectangle", [](TableGrid&, GridSelections& s) { Select(s, 0, 0, 2, 1); }, kPlain,
       L"r0c0.0~r0c1.0~r0c2.0\nr1c0.0~r1c1.0~r1c2.0\n"},
      {"ends reversed by a trim", [](TableGrid&, GridSelections& s) { Select(s, 2, 1, 0, 0); },
       kPlain, L"r0c0.0~r0c1.0~r0c2.0\nr1c0.0~r1c1.0~r1c2.0\n"},
      {"with headers", [](TableGrid&, GridSelections& s) { Select(s, 1, 0, 2, 0); }, kHeaders,
       L"hdr~col1~col2\nrow0~r0c1.0~r0c2.0\n"},
      {"two header rows and columns", [](TableGrid& g, GridSelections& s) {
         g.fixedRows = 2, g.fixedCols = 2, Select(s, 2, 1, 2, 1);
       }, kHeaders, L"hdr~hdr~col2\nhdr~hdr~col2\nrow1~row1~r1c2.0\n"},
      {"cells outside the rectangles stay empty", [](TableGrid& g, GridSelections& s) {
         g.colours[{1, 2, 0}] = 2, Select(s, 0, 0, 0, 0), Select(s, 2, 1, 2, 1);
       }, kBoth, L"hdr~col0~col1~col2\nrow0~r0c0.0~~\nrow1~~~r1c2.0\n"},
      {"separator columns", [](TableGrid& g, GridSelections& s) {
         g.separators = {0, 1}, Select(s, 0, 0, 4, 0);
       }, kBoth, L"hdr~col0~[[||]]~col1~[[||]]~col2\nrow0~r0c0.0~~r0c1.0~~r0c2.0\n"},
      {"invalid point", [](TableGrid& g, GridSelections& s) {
         g.invalid.insert({2, 2}), Select(s, 0, 1, 2, 1);
       }, kPlain, L"r1c0.0~~r1c2.0\n"},
      {"numbers lose trailing zeroes", [](TableGrid& g, GridSelections& s) {
         g.texts[{1, 1, 0}] = L"2.500", g.texts[{1, 2, 0}] = L"Model 1.0";
         g.texts[{1, 3, 0}] = L"-3.000e+05", Select(s, 0, 0, 2, 0);
       }, kPlain, L"2.5~Model 1.0~-3e+05\n"},
  };
  // clang-format on
  for (const CopyCase& c : cases) Run(c);
}

TEST_F(GridClipboardTest, SplitCellsWidenColumnsAndRows) {
  // clang-format off
  const CopyCase cases[] = {
      // Leaves 0 | 1 side by side: the column is two positions wide everywhere.
      {"side by side", [](TableGrid& g, GridSelections& s) {
         g.dataSplits.insert_or_assign({1, 2}, SideBySide({Leaf(), Leaf()}));
         Select(s, 0, 0, 2, 1);
       }, kHeaders,
       L"hdr~col0~col1~~col2\nrow0~r0c0.0~r0c1.0~r0c1.1~r0c2.0\nrow1~r1c0.0~r1c1.0~~r1c2.0\n"},
      // Leaves 0 over 1: the row is two lines tall; the other cells cover the
      // second line from above.
      {"stacked, plain", [](TableGrid& g, GridSelections& s) {
         g.dataSplits.insert_or_assign({1, 2}, Stacked({Leaf(), Leaf()}));
         Select(s, 0, 0, 2, 0);
       }, kPlain, L"r0c0.0~r0c1.0~r0c2.0\n~r0c1.1~\n"},
      {"stacked, mark-up", [](TableGrid& g, GridSelections& s) {
         g.dataSplits.insert_or_assign({1, 2}, Stacked({Leaf(), Leaf()}));
         g.borders[{1, 2}] = 15, Select(s, 0, 0, 2, 0);
       }, kBoth, L"hdr~col0~col1~col2\nrow0~r0c0.0~[[B>]]r0c1.0~r0c2.0\n"
                 L"[[S1]][[^^]]~[[^^]]~[[B;]]r0c1.1~[[^^]]\n"},
      // Column headers are header-row cells: the filler is "[[<<]]" and a
      // covered leaf an empty position.
      {"split column header", [](TableGrid& g, GridSelections& s) {
         g.headerSplits.insert_or_assign({0, 1}, Stacked({SideBySide({Leaf(), Leaf()}), Leaf()}));
         g.headerColours[{0, 1, 2}] = 10, Select(s, 0, 0, 1, 0);
       }, kBoth, L"hdr~[[+3]]col0.0~[[+3]]col0.1~col1\n[[S1]]~[[+3]][[C:]]col0.2~[[<<]]~\n"
                 L"row0~r0c0.0~~r0c1.0\n"},
      {"split row header", [](TableGrid& g, GridSelections& s) {
         g.headerSplits.insert_or_assign({1, 0}, Stacked({Leaf(), Leaf()}));
         g.headerColours[{1, 0, 0}] = 16, Select(s, 0, 0, 0, 0);
       }, kBoth, L"hdr~col0\n[[+2]]row0.0~r0c0.0\n[[S1]][[+2]]row0.1~[[^^]]\n"},
      {"invalid split cell is copied unsplit", [](TableGrid& g, GridSelections& s) {
         g.dataSplits.insert_or_assign({1, 1}, Stacked({Leaf(), Leaf()}));
         g.invalid.insert({1, 1}), Select(s, 0, 0, 0, 0);
       }, kMarkup, L"[[XX]]\n[[S1]][[^^]]\n"},
  };
  // clang-format on
  for (const CopyCase& c : cases) Run(c);
}

// The data tokens in their order, and the colours that need none.
TEST_F(GridClipboardTest, DataCellTokens) {
  // clang-format off
  const CopyCase cases[] = {
      {"plain colours", [](TableGrid& g, GridSelections& s) {
         g.colours[{1, 1, 0}] = 1, g.colours[{1, 2, 0}] = 16, g.backgrounds[{1, 2, 0}] = 68;
         Select(s, 0, 0, 1, 0);
       }, kMarkup, L"r0c0.0~r0c1.0\n"},
      {"one character per value", [](TableGrid& g, GridSelections& s) {
         g.colours[{1, 1, 0}] = 10, Select(s, 0, 0, 0, 0);
       }, kMarkup, L"[[C:]]r0c0.0\n"},
      {"all in order", [](TableGrid& g, GridSelections& s) {
         g.borders[{1, 1}] = 5, g.colours[{1, 1, 0}] = 4, g.backgrounds[{1, 1, 0}] = 0;
         g.bold.insert({1, 1, 0}), Select(s, 0, 0, 0, 0);
       }, kMarkup, L"[[B5]][[C4]][[I0]][[EE]]r0c0.0\n"},
      {"no tokens without mark-up", [](TableGrid& g, GridSelections& s) {
         g.borders[{1, 1}] = 5, g.colours[{1, 1, 0}] = 4, g.invalid.insert({1, 2});
         g.separators = {1}, Select(s, 0, 0, 2, 0);
       }, kHeaders, L"hdr~col0~col1~\nrow0~r0c0.0~~\n"},
  };
  // clang-format on
  for (const CopyCase& c : cases) Run(c);
}

// The example written out in the clipboard format notes.
TEST_F(GridClipboardTest, DocumentedExample) {
  Run({"example",
       [](TableGrid& g, GridSelections& s) {
         g.separators = {0};
         g.dataSplits.insert_or_assign({1, 3}, SideBySide({Leaf(), Stacked({Leaf(), Leaf()})}));
         g.headerSplits.insert_or_assign({0, 2}, SideBySide({Leaf(), Leaf()}));
         g.borders[{1, 1}] = 15, g.colours[{1, 1, 0}] = 2, g.borders[{1, 3}] = 15;
         g.bold.insert({2, 2, 0}), g.backgrounds[{2, 2, 0}] = 3, g.invalid.insert({2, 3});
         Select(s, 0, 0, 3, 1);
       },
       kBoth,
       L"hdr~col0~[[||]]~[[+2]]col1.0~[[+2]]col1.1~col2~[[<<]]\n"
       L"row0~[[B?]][[C2]]r0c0.0~~r0c1.0~~[[B<]]r0c2.0~[[B6]]r0c2.1\n"
       L"[[S1]][[^^]]~[[^^]]~~[[^^]]~~[[^^]]~[[B3]]r0c2.2\n"
       L"row1~r1c0.0~~[[I3]][[EE]]r1c1.0~~[[XX]]~\n"});
}

TEST_F(GridClipboardTest, NothingToCopyGivesAnEmptyText) {
  const auto select = [](unsigned R, unsigned B) {
    return [=](TableGrid&, GridSelections& s) { Select(s, 0, 0, R, B); };
  };
  // clang-format off
  const CopyCase cases[] = {
      {"no rectangle", [](TableGrid&, GridSelections&) {}, kBoth, L""},
      {"below the last row", select(0, 2), kBoth, L""},
      {"right of the last column", select(3, 0), kBoth, L""},
      {"the whole coordinate range", select(kMax, kMax), kBoth, L""},
      {"an empty view", [](TableGrid& g, GridSelections& s) { g.width = 0, Select(s, 0, 0, 0, 0); },
       kBoth, L""},
  };
  // clang-format on
  for (const CopyCase& c : cases) Run(c);
  TableGrid grid;
  std::wstring text = L"old";
  grid.CopyAllTextSelections(nullptr, 0, text, true, true, L"T");
  EXPECT_EQ(text, L"");
}

// A grid that formats its own text.
struct AlternativeGrid : TableGrid {
  bool IsAlternativeCopying(unsigned) const override { return true; }
  void CopyTextSelectionAlt(unsigned L, unsigned T, unsigned R, unsigned B, unsigned,
                            std::wstring& text, bool headers, bool markup) const override {
    text = std::to_wstring(L) + std::to_wstring(T) + std::to_wstring(R) + std::to_wstring(B) +
           (headers ? L"h" : L"") + (markup ? L"m" : L"");
  }
};

TEST_F(GridClipboardTest, AlternativeCopyingFormatsItself) {
  AlternativeGrid grid;
  GridSelections selections;
  selections.addSelection(2, 1, 0, 0);
  std::wstring text;
  grid.CopyAllTextSelections(&selections, 0, text, false, true, L"Title ");
  EXPECT_EQ(text, L"0021m");
  grid.CopyAllTextSelections(&selections, 0, text, true, false, L"Title ");
  EXPECT_EQ(text, L"Title 0021h\r\n");
  selections.addSelection(0, 0, 0, 5);
  grid.CopyAllTextSelections(&selections, 0, text, true, false, L"Title ");
  EXPECT_EQ(text, L"");
}

}  // namespace
}  // namespace qvsysbase
