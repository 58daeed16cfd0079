#include "HeaderReader.h"

#include <algorithm>

#include "NitfFile.h"

namespace tavi {

TAVI_UNIT(L"Common/HeaderReader")

FieldReader::FieldReader(NitfFile& document, SegmentKind kind, uint32_t segment_index, uint64_t limit)
    : document_(document),
      kind_(kind),
      segment_index_(segment_index),
      layout_(LayoutOf(document)),
      limit_(limit),
      position_(HostFileSeek(document.File, 0, kFromHere)) {}

bool FieldReader::CanHold(uint64_t size) const {
  const int64_t left = document_.SourceSize - position_;
  return left >= 0 && size <= static_cast<uint64_t>(left);
}

bool FieldReader::CanHoldGroup(uint32_t count, uint64_t entry_size) const {
  // Five digits bound every count; a negative one comes out far above them.
  constexpr uint32_t kLargestCount = 99999;
  if (count > kLargestCount) return false;
  // Replacement data may end inside a group, whose other entries then keep their values.
  return limit_ != kNoLimit || CanHold(count * entry_size);
}

int32_t FieldReader::Read(const char* name, int32_t index, int32_t sub_index, void* to, uint64_t size) {
  if (consumed_ + size > limit_) return kBudgetSpent;
  consumed_ += size;
  const uint64_t read = HostFileRead(document_.File, to, size);
  if (document_.Observe != nullptr && position_ >= 0) {
    document_.Observe(document_.Observer,
                      {kind_, segment_index_, name, index, sub_index, static_cast<uint64_t>(position_),
                       static_cast<const uint8_t*>(to), std::min(read, size)});
  }
  position_ += static_cast<int64_t>(size);
  return read == size ? SUCCESS : ERR_FILE_READ;
}

int32_t FieldReader::ReadBlock(const char* name, HostArray<uint8_t>& block, int64_t size) {
  if (size < 0) return ERR_FILE_READ;
  const auto bytes = static_cast<uint64_t>(size);
  if (consumed_ + bytes > limit_) return kBudgetSpent;
  if (!CanHold(bytes)) return ERR_FILE_READ;
  HostArray<uint8_t> read;
  if (!read.Allocate(bytes + 1, Here())) return ERR_NO_MEMORY;
  const int32_t status = Read(name, read.data(), bytes);
  block = std::move(read);
  return status;
}

int32_t Refuse(int32_t status, const char* message) {
  if (message != nullptr) MessageBoxA(nullptr, message, "Error", 0);
  return status;
}

bool IsOneOf(const char* chars, uint32_t width, const char* texts) {
  while (true) {
    const char* end = texts + std::strcspn(texts, "|");
    if (static_cast<size_t>(end - texts) == width && std::memcmp(chars, texts, width) == 0) return true;
    if (*end == '\0') return false;
    texts = end + 1;
  }
}

const CodeText* FindCode(std::span<const CodeText> table, const char* chars, uint32_t width) {
  for (const CodeText& entry : table) {
    if (entry.compared <= width && std::memcmp(chars, entry.text, entry.compared) == 0) return &entry;
  }
  return nullptr;
}

}  // namespace tavi
