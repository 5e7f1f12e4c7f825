// Counts the allocations of the global operator new made on this thread while a
// counter is alive (the display test program replaces operator new).
#ifndef QVSYSBASE_TESTS_DISPLAY_ALLOCATIONCOUNTER_H_
#define QVSYSBASE_TESTS_DISPLAY_ALLOCATIONCOUNTER_H_

namespace qvtest {

class AllocationCounter {
 public:
  AllocationCounter();
  ~AllocationCounter();
  AllocationCounter(const AllocationCounter&) = delete;
  AllocationCounter& operator=(const AllocationCounter&) = delete;
  long Count() const;
};

}  // namespace qvtest

#endif  // QVSYSBASE_TESTS_DISPLAY_ALLOCATIONCOUNTER_H_
