// They take no memory for themselves.
#include "FaultNew.h"

#include <cstdlib>
#include <new>
#include <stdexcept>

namespace {

using tavi::faults::Refusal;

void* Take(std::size_t bytes) noexcept {
  return std::malloc(bytes == 0 ? 1 : bytes);
}

void* TakeAligned(std::size_t bytes, std::align_val_t alignment) noexcept {
  const auto step = static_cast<std::size_t>(alignment);
  return std::aligned_alloc(step, (bytes + step - 1) / step * step + (bytes == 0 ? step : 0));
}

// A block of `take`, or what the refusal says in its place.
template <class Taker>
void* OrThrow(std::size_t bytes, Taker take) {
  const Refusal refusal = tavi::faults::RefuseRequest(bytes);
  if (refusal == Refusal::kTooLong) throw std::length_error("too long");
  void* const block = refusal == Refusal::kNone ? take() : nullptr;
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

template <class Taker>
void* OrNull(std::size_t bytes, Taker take) noexcept {
  return tavi::faults::RefuseRequest(bytes) == Refusal::kNone ? take() : nullptr;
}

void Release(void* block) noexcept {
  if (block != nullptr) {
    tavi::faults::NoteRelease();
    std::free(block);
  }
}

}  // namespace

void* operator new(std::size_t bytes) {
  return OrThrow(bytes, [=] { return Take(bytes); });
}
void* operator new[](std::size_t bytes) {
  return OrThrow(bytes, [=] { return Take(bytes); });
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return OrNull(bytes, [=] { return Take(bytes); });
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return OrNull(bytes, [=] { return Take(bytes); });
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
  return OrThrow(bytes, [=] { return TakeAligned(bytes, alignment); });
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
  return OrThrow(bytes, [=] { return TakeAligned(bytes, alignment); });
}
void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return OrNull(bytes, [=] { return TakeAligned(bytes, alignment); });
}
void* operator new[](std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return OrNull(bytes, [=] { return TakeAligned(bytes, alignment); });
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
void operator delete(void* block, std::align_val_t) noexcept {
  Release(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
  Release(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
  Release(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
  Release(block);
}
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  Release(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  Release(block);
}
