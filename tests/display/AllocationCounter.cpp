// The replaced global allocation functions behind AllocationCounter. They live
// in a unit of their own so that no caller sees (and inlines) their bodies.
#include "display/AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {
thread_local int t_nCounters = 0;
thread_local long t_nAllocations = 0;
}  // namespace

void* operator new(std::size_t size) {
  if (t_nCounters > 0) ++t_nAllocations;
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}
// The library allocates some objects with the nothrow form; it must come from
// the same malloc as the deletes below, or a sanitizer's own nothrow new would
// be paired with free.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (t_nCounters > 0) ++t_nAllocations;
  return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace qvtest {

AllocationCounter::AllocationCounter() {
  if (t_nCounters++ == 0) t_nAllocations = 0;
}
AllocationCounter::~AllocationCounter() { --t_nCounters; }
long AllocationCounter::Count() const { return t_nAllocations; }

}  // namespace qvtest
