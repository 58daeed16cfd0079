// Lets an allocation of the language fail, in this executable, on this thread.
#pragma once

#include <cstdint>

namespace tavi::test {

// The nth allocation, counted from 1, fails while this lives, and all later ones when `lasting` is set.
class AllocationFault {
 public:
  AllocationFault(uint64_t nth, bool lasting);
  // The nth allocation fails as one of containers does that are asked for more than they can ever hold.
  static AllocationFault TooLong(uint64_t nth) { return {nth, false, true}; }
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;
  bool happened() const;

 private:
  AllocationFault(uint64_t nth, bool lasting, bool too_long);
};

// Allocations less releases of this thread.
int64_t BlocksAlive();

// Runs `work` with every single allocation that it makes failing in turn: `work` gives a status, which has to be
// `failure` then, and leaves nothing behind. Returns how many allocations it makes.
template <class Work, class Check>
uint64_t FailEachAllocation(Work work, Check check) {
  for (uint64_t nth = 1;; ++nth) {
    for (const bool lasting : {false, true}) {
      const int64_t before = BlocksAlive();
      int32_t status = 0;
      bool happened = false;
      {
        const AllocationFault fault(nth, lasting);
        status = work();
        happened = fault.happened();
      }
      if (!happened) return nth - 1;
      check(status, nth, BlocksAlive() - before);
    }
  }
}

}  // namespace tavi::test
