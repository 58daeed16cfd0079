#include "TaviKernel/Memory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "TaviHost.h"
#include "TaviKernel/LargeBlocks.h"

namespace tavi::host {
namespace {

// Stands in front of every block. A pointer whose header does not carry one of the marks is no live block of
// ours and is left alone.
struct BlockHeader {
  uint32_t mark;
  uint32_t kind;
  uint64_t bytes;  // as asked for
};

// In front of the header of a large block.
struct LargeHeader {
  LargeBlock block;
  uint8_t spare[64 - sizeof(LargeBlock) - sizeof(BlockHeader)];
  BlockHeader header{};
};

static_assert(sizeof(BlockHeader) == 16);
static_assert(sizeof(LargeHeader) == 64);

constexpr uint32_t kSmallMark = 0x5EA7B10C;
constexpr uint32_t kLargeMark = 0x5EA7B16C;
constexpr uint64_t kMaximumBytes = uint64_t{1} << 62;

BlockHeader* HeaderOf(void* block) {
  return static_cast<BlockHeader*>(block) - 1;
}

bool IsLive(const BlockHeader& header) {
  return header.mark == kSmallMark || header.mark == kLargeMark;
}

LargeHeader* LargeHeaderOf(BlockHeader* header) {
  return reinterpret_cast<LargeHeader*>(reinterpret_cast<uint8_t*>(header + 1) - sizeof(LargeHeader));
}

// NOLINTBEGIN(cppcoreguidelines-no-malloc): these are the host's allocation operations themselves.

void* MakeSmall(uint64_t bytes, LiveKind kind) {
  auto* const header = static_cast<BlockHeader*>(std::calloc(1, sizeof(BlockHeader) + bytes));
  if (header == nullptr) return nullptr;
  *header = {kSmallMark, static_cast<uint32_t>(kind), bytes};
  return header + 1;
}

void* MakeLarge(uint64_t bytes, LiveKind kind) {
  const LargeBlock block = AcquireLargeBlock(bytes + sizeof(LargeHeader));
  if (block.bytes == nullptr) return nullptr;
  auto* const header = reinterpret_cast<LargeHeader*>(block.bytes);
  header->block = block;
  header->header = {kLargeMark, static_cast<uint32_t>(kind), bytes};
  uint8_t* const start = block.bytes + sizeof(LargeHeader);
  if (!block.zeroed) std::memset(start, 0, bytes);
  return start;
}

void* MakeBlock(uint64_t bytes, LiveKind kind) {
  if (bytes > kMaximumBytes) return nullptr;
  return bytes >= kLargeBlockBytes && UseLargeBlocks() ? MakeLarge(bytes, kind) : MakeSmall(bytes, kind);
}

void ReturnBlock(BlockHeader* header) {
  const uint32_t mark = header->mark;
  header->mark = 0;
  if (mark == kLargeMark) {
    const LargeBlock block = LargeHeaderOf(header)->block;
    ReleaseLargeBlock(block);
  } else {
    std::free(header);
  }
}

void FreeBlock(void* block) {
  if (block == nullptr) return;
  BlockHeader* const header = HeaderOf(block);
  if (!IsLive(*header)) return;
  NoteGone(static_cast<LiveKind>(header->kind), block);
  ReturnBlock(header);
}

// A block of the new size with the contents of the old one, or null, and then the old one is untouched.
void* ResizeBlock(void* block, uint64_t bytes, LiveKind kind) {
  BlockHeader* const header = HeaderOf(block);
  const bool stays_small = header->mark == kSmallMark && (bytes < kLargeBlockBytes || !UseLargeBlocks());
  if (bytes > kMaximumBytes) return nullptr;
  if (stays_small) {
    auto* const moved = static_cast<BlockHeader*>(std::realloc(header, sizeof(BlockHeader) + bytes));
    if (moved == nullptr) return nullptr;
    moved->bytes = bytes;
    return moved + 1;
  }
  if (header->mark == kLargeMark && bytes >= kLargeBlockBytes &&
      bytes + sizeof(LargeHeader) <= LargeHeaderOf(header)->block.size) {
    header->bytes = bytes;
    return block;
  }
  void* const made = MakeBlock(bytes, kind);
  if (made == nullptr) return nullptr;
  std::memcpy(made, block, std::min(bytes, header->bytes));
  ReturnBlock(header);
  return made;
}

// NOLINTEND(cppcoreguidelines-no-malloc)

}  // namespace

void* AllocateBlock(uint64_t count, uint64_t size, LiveKind kind, Origin origin) noexcept {
  const bool countable = size == 0 || count <= kMaximumBytes / size;
  void* const block = countable ? MakeBlock(count * size, kind) : nullptr;
  if (block == nullptr) {
    HostForgetLimitHit();  // what fails now fails for want of memory
    return nullptr;
  }
  NoteMade(kind, block, origin);
  return block;
}

}  // namespace tavi::host

using namespace tavi::host;

void* HostAllocMem(uint64_t count, uint64_t size, int32_t line, const wchar_t* unit) {
  return AllocateBlock(count, size, LiveKind::kMemory, {line, unit});
}

void HostFreeMem(void* block, int32_t, const wchar_t*) {
  FreeBlock(block);
}

void* HostReallocMem(void* block, uint64_t size, int32_t line, const wchar_t* unit) {
  if (block == nullptr) return AllocateBlock(1, size, LiveKind::kMemory, {line, unit});
  const BlockHeader* const header = HeaderOf(block);
  if (!IsLive(*header)) return nullptr;
  const auto kind = static_cast<LiveKind>(header->kind);
  // Forgotten first: once it is freed, another thread may be given the same address.
  NoteGone(kind, block);
  void* const resized = ResizeBlock(block, size, kind);
  NoteMade(kind, resized != nullptr ? resized : block, {line, unit});
  if (resized == nullptr) HostForgetLimitHit();
  return resized;
}

void* HostAllocTemp(uint64_t count, uint64_t size, int32_t line, const wchar_t* unit) {
  return AllocateBlock(count, size, LiveKind::kTemp, {line, unit});
}

void HostFreeTemp(void* block, int32_t, const wchar_t*) {
  FreeBlock(block);
}

void HostMemCopy(void* destination, const void* source, uint64_t bytes) {
  if (destination == nullptr || source == nullptr || bytes == 0) return;
  std::memcpy(destination, source, bytes);
}

void HostMemSet(void* destination, int32_t value, uint64_t bytes) {
  if (destination == nullptr || bytes == 0) return;
  std::memset(destination, value & 0xFF, bytes);
}
