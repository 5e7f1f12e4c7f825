#include <algorithm>
#include <cstdint>
#include <iterator>

#include "qvsysbase/GridSelections.h"

namespace qvsysbase {

namespace {
// Members in first .. last inclusive; 64 bits because a run may hold all 2^32.
std::uint64_t Members(unsigned first, unsigned last) { return std::uint64_t{last} - first + 1; }
}  // namespace

// Every run that overlaps or touches first .. last is absorbed into one new
// run, which keeps the runs disjoint and non-adjacent.
void GridIndexSet::insert(unsigned first, unsigned last) {
  if (last < first) return;
  auto run = m_mapRuns.upper_bound(first);
  if (run != m_mapRuns.begin() && std::uint64_t{std::prev(run)->second} + 1 >= first) --run;
  unsigned newFirst = first, newLast = last;
  while (run != m_mapRuns.end() && run->first <= std::uint64_t{last} + 1) {
    newFirst = std::min(newFirst, run->first);
    newLast = std::max(newLast, run->second);
    m_nSize -= Members(run->first, run->second);
    run = m_mapRuns.erase(run);
  }
  m_mapRuns.emplace_hint(run, newFirst, newLast);
  m_nSize += Members(newFirst, newLast);
}

// Runs that overlap first .. last are removed; the parts of them that stick out
// on either side are put back.
void GridIndexSet::erase(unsigned first, unsigned last) {
  if (last < first) return;
  auto run = m_mapRuns.upper_bound(first);
  if (run != m_mapRuns.begin() && std::prev(run)->second >= first) --run;
  while (run != m_mapRuns.end() && run->first <= last) {
    const unsigned runFirst = run->first, runLast = run->second;
    m_nSize -= Members(runFirst, runLast);
    run = m_mapRuns.erase(run);
    if (runFirst < first) {
      m_mapRuns.emplace_hint(run, runFirst, first - 1);
      m_nSize += Members(runFirst, first - 1);
    }
    if (runLast > last) {
      m_mapRuns.emplace_hint(run, last + 1, runLast);
      m_nSize += Members(last + 1, runLast);
    }
  }
}

void GridIndexSet::clear() {
  m_mapRuns.clear();
  m_nSize = 0;
}

bool GridIndexSet::contains(unsigned value) const {
  auto run = m_mapRuns.upper_bound(value);
  return run != m_mapRuns.begin() && std::prev(run)->second >= value;
}

}  // namespace qvsysbase
