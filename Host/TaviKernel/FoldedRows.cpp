#include "TaviKernel/FoldedRows.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace tavi::host {

// NOLINTBEGIN(cppcoreguidelines-no-malloc): calloc gives memory whose pages nobody has touched yet.

FoldedRows* FoldedRows::Make(uint32_t rows, uint32_t width, const BitExpansion& expansion) noexcept {
  auto* const folded = new (std::nothrow) FoldedRows;
  if (folded == nullptr) return nullptr;
  folded->expansion_ = expansion;
  folded->rows_ = rows;
  folded->width_ = width;
  folded->row_bytes_ = (uint64_t{width} + 7) / 8;
  const uint64_t flags = folded->flag_bytes();
  const uint64_t size = flags + rows * folded->row_bytes_;
  uint8_t* memory = nullptr;
  if (size >= kLargeBlockBytes && UseLargeBlocks()) {
    folded->block_ = AcquireLargeBlock(size);
    memory = folded->block_.bytes;
  } else {
    memory = static_cast<uint8_t*>(std::calloc(size, 1));
  }
  if (memory == nullptr) {
    delete folded;
    return nullptr;
  }
  folded->flags_ = reinterpret_cast<uint64_t*>(memory);
  folded->bits_ = memory + flags;
  folded->DropAll();
  return folded;
}

void FoldedRows::Free(FoldedRows* folded) noexcept {
  if (folded == nullptr) return;
  if (folded->block_.bytes != nullptr) {
    ReleaseLargeBlock(folded->block_);
  } else {
    std::free(folded->flags_);
  }
  delete folded;
}

// NOLINTEND(cppcoreguidelines-no-malloc)

void FoldedRows::Put(uint32_t row, const uint8_t* bits) noexcept {
  std::memcpy(bits_ + row * row_bytes_, bits, row_bytes_);
  flags_[row / 64] |= uint64_t{1} << (row % 64);
}

void FoldedRows::DropAll() noexcept {
  std::memset(flags_, 0, flag_bytes());
}

void FoldedRows::Expand(uint32_t row, uint8_t* to) const noexcept {
  expansion_.Apply(bits_ + row * row_bytes_, 0, width_, to);
}

}  // namespace tavi::host
