#include "PublicRecords.h"

#include <algorithm>

namespace tavi {

TAVI_UNIT(L"Common/PublicRecords")

char* CopyFieldString(const char* text, uint64_t limit) {
  const uint64_t length = strnlen(text, limit);
  auto* copy = static_cast<char*>(HostAllocMem(length + 1, 1, Here().line, Here().unit));
  if (copy != nullptr) std::memcpy(copy, text, length);
  return copy;
}

int32_t FillMember(void* record, const Member& member, StoredText text) {
  constexpr uint64_t kHalfWidth = 5;
  switch (member.kind) {
    case MemberKind::kText: {
      char* copy = CopyFieldString(text.chars, text.limit);
      SetMember(record, member.offset, copy);
      return copy != nullptr ? SUCCESS : ERR_NO_MEMORY;
    }
    case MemberKind::kChars:
      std::memcpy(static_cast<char*>(record) + member.offset, text.chars,
                  std::min<uint64_t>(member.extra, text.limit));
      return SUCCESS;
    case MemberKind::kNumber:
      SetMember(record, member.offset, ParseInteger(text.chars, strnlen(text.chars, text.limit)));
      return SUCCESS;
    case MemberKind::kHalf:
      SetMember(record, member.offset, ParseInteger(text.chars + member.extra, kHalfWidth));
      return SUCCESS;
    default:
      return SUCCESS;
  }
}

void FreeMember(void* record, uint16_t offset) {
  if (auto* block = GetMember<void*>(record, offset)) HostFreeMem(block, Here().line, Here().unit);
  SetMember<void*>(record, offset, nullptr);
}

void FreeMembers(void* record, std::span<const Member> members) {
  for (const Member& member : members) {
    if (member.kind == MemberKind::kText || member.kind == MemberKind::kOwned)
      FreeMember(record, member.offset);
  }
}

}  // namespace tavi
