#include "AllocationFaults.h"

#include "../faults/FaultNew.h"

namespace {

struct State {
  bool armed = false;
  bool lasting = false;
  bool happened = false;
  bool too_long = false;
  uint64_t left = 0;
  int64_t alive = 0;
};

thread_local State state;

bool Refuses() {
  if (!state.armed) return false;
  if (state.left > 1) {
    --state.left;
    return false;
  }
  if (state.left == 0 && !state.lasting) return false;
  state.left = 0;
  state.happened = true;
  return true;
}

}  // namespace

namespace tavi::faults {

Refusal RefuseRequest(uint64_t) {
  if (Refuses()) return state.too_long ? Refusal::kTooLong : Refusal::kNoMemory;
  ++state.alive;
  return Refusal::kNone;
}

void NoteRelease() {
  --state.alive;
}

}  // namespace tavi::faults

namespace tavi::test {

AllocationFault::AllocationFault(uint64_t nth, bool lasting) : AllocationFault(nth, lasting, false) {}

AllocationFault::AllocationFault(uint64_t nth, bool lasting, bool too_long) {
  state.too_long = too_long;
  state.left = nth;
  state.lasting = lasting;
  state.happened = false;
  state.armed = true;
}

AllocationFault::~AllocationFault() {
  state.armed = false;
}

bool AllocationFault::happened() const {
  return state.happened;
}

int64_t BlocksAlive() {
  return state.alive;
}

}  // namespace tavi::test
