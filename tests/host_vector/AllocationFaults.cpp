// The global allocation functions, replaced so that single requests can be refused. They take no memory themselves.
#include "AllocationFaults.h"

#include <cstdlib>
#include <new>
#include <stdexcept>

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

void* Obtain(std::size_t bytes) noexcept {
  if (Refuses()) return nullptr;
  void* const block = std::malloc(bytes == 0 ? 1 : bytes);
  if (block != nullptr) ++state.alive;
  return block;
}

void* OrThrow(void* block) {
  if (block == nullptr && state.too_long) throw std::length_error("too long");
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void Release(void* block) noexcept {
  if (block == nullptr) return;
  --state.alive;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t bytes) {
  return OrThrow(Obtain(bytes));
}
void* operator new[](std::size_t bytes) {
  return OrThrow(Obtain(bytes));
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return Obtain(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return Obtain(bytes);
}
void operator delete(void* block) noexcept {
  Release(block);
}
void operator delete[](void* block) noexcept {
  Release(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  Release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  Release(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  Release(block);
}

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
