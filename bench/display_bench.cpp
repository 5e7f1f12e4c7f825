// The grid data model at 1000 x 1000 cells: the clipboard text without and
// with mark-up and the comparison of two equal grids, each beside the plain
// loop over the same cells through the same virtual calls (what a caller would
// write without the library); the cost of 10 and 100 times the cells; and a
// selection of rows and columns 0 .. 4294967295 beside one of a single cell.
//
// Counters: ns_per_cell, and allocs_per_cell from a counting operator new in
// this program (each cell's text is one allocation of the grid's own). Each
// arm grows and touches its output string before timing and reuses it: the
// first touch of the 40 MB text of 1000 x 1000 cells costs a page fault per
// 4 KB, which on some machines outweighs the copy itself.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include "RatioReporter.h"
#include "qvsysbase/GenericGridObject.h"
#include "qvsysbase/QvStringUtil.h"

namespace {

std::atomic<std::size_t> g_nAllocations{0};

}  // namespace

void* operator new(std::size_t size) {
  g_nAllocations.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace {

using qvsysbase::GenericGridObject;
using qvsysbase::GridSelections;

// Texts of the kind a results table shows ("-12.3450"), longer than a wide
// string holds without an allocation, from a pool so that the grid is cheap.
constexpr unsigned kPoolSize = 997;

const std::vector<std::wstring>& Pool() {
  static const std::vector<std::wstring> pool = [] {
    std::vector<std::wstring> texts;
    for (unsigned i = 0; i < kPoolSize; ++i) {
      texts.push_back(L"-" + std::to_wstring(i) + L".34500");
    }
    return texts;
  }();
  return pool;
}

// One header row and column; some cells coloured, shaded or bold so that the
// mark-up has tokens to write.
class BenchGrid : public GenericGridObject {
 public:
  BenchGrid(unsigned height, unsigned width) : m_nHeight(height), m_nWidth(width) {}

  unsigned GetGridHeight(unsigned) const override { return m_nHeight; }
  unsigned GetGridWidth(unsigned) const override { return m_nWidth; }
  bool IsValidGridPoint(unsigned row, unsigned col, unsigned) const override {
    return row >= 1 && col >= 1 && row <= m_nHeight && col <= m_nWidth;
  }
  std::wstring GetGridElementText(unsigned row, unsigned col, unsigned, unsigned) const override {
    return Pool()[(row * 31 + col) % kPoolSize];
  }
  unsigned GetGridCellColor(unsigned row, unsigned col, unsigned, unsigned, bool) const override {
    return (row + col) % 7 == 0 ? 2 : 0;
  }
  unsigned GetGridCellBackgroundColor(unsigned row, unsigned col, unsigned,
                                      unsigned) const override {
    return (row * col) % 11 == 0 ? 5 : 68;
  }
  bool IsGridCellBoldface(unsigned row, unsigned, unsigned, unsigned) const override {
    return row % 13 == 0;
  }
  qvsysbase::QvSender* GetSender() const override { return nullptr; }

 private:
  unsigned m_nHeight, m_nWidth;
};

GridSelections All(unsigned height, unsigned width) {
  GridSelections all;
  all.addSelection(0, 0, width - 1, height - 1);
  return all;
}

// Sets ns_per_cell and allocs_per_cell for a loop over `cells` cells.
class CellCounters {
 public:
  explicit CellCounters(benchmark::State& state) : m_State(state), m_nStart(g_nAllocations) {}
  void Finish(double cells) {
    const double runs = static_cast<double>(m_State.iterations()) * cells;
    m_State.counters["ns_per_cell"] =
        benchmark::Counter(runs * 1e-9, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    m_State.counters["allocs_per_cell"] = static_cast<double>(g_nAllocations - m_nStart) / runs;
  }

 private:
  benchmark::State& m_State;
  std::size_t m_nStart;
};

void CopyText(benchmark::State& state, unsigned height, unsigned width, bool markup) {
  const BenchGrid grid(height, width);
  const GridSelections all = All(height, width);
  std::wstring text;
  grid.CopyAllTextSelections(&all, 0, text, false, markup, L"");  // grows and touches `text`
  CellCounters counters(state);
  for (auto _ : state) {
    grid.CopyAllTextSelections(&all, 0, text, false, markup, L"");
    benchmark::DoNotOptimize(text.data());
  }
  counters.Finish(1.0 * height * width);
}

std::size_t CopyLength(unsigned height, unsigned width) {
  const BenchGrid grid(height, width);
  const GridSelections all = All(height, width);
  std::wstring text;
  grid.CopyAllTextSelections(&all, 0, text, false, false, L"");
  return text.size();
}

// The same tab-separated text written by hand through the same calls.
void PlainCopyLoop(benchmark::State& state, unsigned height, unsigned width) {
  const BenchGrid grid(height, width);
  std::wstring text(CopyLength(height, width), L' '), cell;  // grown and touched
  CellCounters counters(state);
  for (auto _ : state) {
    text.clear();
    for (unsigned r = 0; r < height; ++r) {
      for (unsigned c = 0; c < width; ++c) {
        if (c > 0) text += L'\t';
        cell = grid.IsValidGridPoint(r + 1, c + 1, 0) ? grid.GetGridElementText(r + 1, c + 1, 0, 0)
                                                      : std::wstring();
        text += qvsysbase::QvStringUtil::RemoveTrailingZeroes(cell);
      }
      text += L"\r\n";
    }
    benchmark::DoNotOptimize(text.data());
  }
  counters.Finish(1.0 * height * width);
}

void Compare(benchmark::State& state, unsigned height, unsigned width) {
  const BenchGrid a(height, width), b(height, width);
  std::vector<GenericGridObject::GridDifference> differences;
  CellCounters counters(state);
  for (auto _ : state) {
    if (!GenericGridObject::CompareGridsForEqualityEx(a, 0, b, 0, differences)) {
      state.SkipWithError("equal grids compared unequal");
    }
  }
  counters.Finish(1.0 * height * width);
}

// Texts and validity of every data cell, compared by hand.
void PlainCompareLoop(benchmark::State& state, unsigned height, unsigned width) {
  const BenchGrid a(height, width), b(height, width);
  CellCounters counters(state);
  for (auto _ : state) {
    bool equal = true;
    for (unsigned r = 1; r <= height; ++r) {
      for (unsigned c = 1; c <= width; ++c) {
        equal = equal && a.IsValidGridPoint(r, c, 0) == b.IsValidGridPoint(r, c, 0) &&
                a.GetGridElementText(r, c, 0, 0) == b.GetGridElementText(r, c, 0, 0);
      }
    }
    benchmark::DoNotOptimize(equal);
  }
  counters.Finish(1.0 * height * width);
}

// Made, copied, compared and trimmed to a 1000 x 1000 grid.
void SelectionLifecycle(benchmark::State& state, unsigned last) {
  for (auto _ : state) {
    GridSelections made;
    made.addSelection(0, 0, last, last);
    GridSelections copy = made;
    benchmark::DoNotOptimize(copy.compare(made));
    benchmark::DoNotOptimize(copy.adjustSelectionsToWithinMaxGridHeightWidth(1000, 1000));
  }
}

qvbench::Body Bind(void (*arm)(benchmark::State&, unsigned, unsigned), unsigned h, unsigned w) {
  return [=](benchmark::State& s) { arm(s, h, w); };
}
qvbench::Body BindCopy(unsigned h, unsigned w, bool markup) {
  return [=](benchmark::State& s) { CopyText(s, h, w, markup); };
}

}  // namespace

int main(int argc, char** argv) {
  constexpr unsigned kMax = std::numeric_limits<unsigned>::max();
  qvbench::AddPair("Copy/1000x1000 vs plain loop",
                   BindCopy(1000, 1000, false),
                   Bind(&PlainCopyLoop, 1000, 1000));
  qvbench::AddPair(
      "Copy/1000x1000 mark-up vs none", BindCopy(1000, 1000, true), BindCopy(1000, 1000, false));
  qvbench::AddPair("Copy/1000x1000 vs 1000x100 (10x cells)",
                   BindCopy(1000, 1000, false),
                   BindCopy(1000, 100, false));
  qvbench::AddPair("Copy/1000x1000 vs 100x100 (100x cells)",
                   BindCopy(1000, 1000, false),
                   BindCopy(100, 100, false));
  qvbench::AddPair("Compare/1000x1000 vs plain loop",
                   Bind(&Compare, 1000, 1000),
                   Bind(&PlainCompareLoop, 1000, 1000));
  qvbench::AddPair("Compare/1000x1000 vs 1000x100 (10x cells)",
                   Bind(&Compare, 1000, 1000),
                   Bind(&Compare, 1000, 100));
  qvbench::AddPair(
      "Selection/0..4294967295 vs one cell",
      [](benchmark::State& s) { SelectionLifecycle(s, kMax); },
      [](benchmark::State& s) { SelectionLifecycle(s, 0); });
  return qvbench::RunPairs(argc, argv);
}
