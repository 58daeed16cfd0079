#include "Platform/GlobalMemory.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "TaviKernel/Tracking.h"

// What a HostGlobalMemory points to.
struct HostGlobalMemoryObject {
  uint64_t magic = 0;
  uint32_t locks = 0;
  std::unique_ptr<uint8_t[]> bytes;
};

namespace tavi::host {
namespace {

constexpr uint64_t kGlobalMagic = 0x4D454D4C42474C42;

bool IsGlobal(HostGlobalMemory block) {
  return block != nullptr && block->magic == kGlobalMagic;
}

}  // namespace

int32_t MakeGlobal(std::span<const uint8_t> bytes, HostGlobalMemory* block, uint64_t* size) noexcept {
  HostForgetLimitHit();  // what fails here fails for want of memory
  if (block == nullptr) return ERR_NULL_ARGUMENT;
  *block = nullptr;
  if (size != nullptr) *size = 0;
  std::unique_ptr<HostGlobalMemoryObject> made(new (std::nothrow) HostGlobalMemoryObject);
  if (made == nullptr) return ERR_NO_MEMORY;
  // A byte at least, so that locking an empty block is told from a failure.
  made->bytes.reset(new (std::nothrow) uint8_t[bytes.empty() ? 1 : bytes.size()]);
  if (made->bytes == nullptr) return ERR_NO_MEMORY;
  if (!bytes.empty()) std::memcpy(made->bytes.get(), bytes.data(), bytes.size());
  made->magic = kGlobalMagic;
  if (size != nullptr) *size = bytes.size();
  *block = made.release();
  NoteMade(LiveKind::kGlobal, *block, {});
  return SUCCESS;
}

}  // namespace tavi::host

using namespace tavi::host;

void HostGlobalFree(HostGlobalMemory block, int32_t, const wchar_t*) {
  if (!IsGlobal(block)) return;
  NoteGone(LiveKind::kGlobal, block);
  block->magic = 0;
  delete block;
}

void* GlobalLock(HostGlobalMemory block) {
  if (!IsGlobal(block)) return nullptr;
  ++block->locks;
  return block->bytes.get();
}

int32_t GlobalUnlock(HostGlobalMemory block) {
  if (!IsGlobal(block) || block->locks == 0) return 0;
  return --block->locks != 0 ? 1 : 0;
}
