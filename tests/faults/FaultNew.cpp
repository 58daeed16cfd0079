// The global allocation functions, replaced in every form, so that each request of the library under test can
// be counted and refused. They take no memory for themselves.
#include <cstdlib>
#include <new>

#include "FaultHost.h"

namespace {

void* Obtain(std::size_t bytes) noexcept {
  if (tavi::faults::RequestFails(bytes)) {
    return nullptr;
  }
  return std::malloc(bytes == 0 ? 1 : bytes);
}

void* ObtainAligned(std::size_t bytes, std::align_val_t alignment) noexcept {
  if (tavi::faults::RequestFails(bytes)) {
    return nullptr;
  }
  const auto step = static_cast<std::size_t>(alignment);
  return std::aligned_alloc(step, (bytes + step - 1) / step * step + (bytes == 0 ? step : 0));
}

void Release(void* block) noexcept {
  if (block != nullptr) {
    tavi::faults::NoteRelease();
    std::free(block);
  }
}

void* OrThrow(void* block) {
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
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
void* operator new(std::size_t bytes, std::align_val_t alignment) {
  return OrThrow(ObtainAligned(bytes, alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
  return OrThrow(ObtainAligned(bytes, alignment));
}
void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return ObtainAligned(bytes, alignment);
}
void* operator new[](std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return ObtainAligned(bytes, alignment);
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
