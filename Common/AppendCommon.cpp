#include <algorithm>
#include <cstring>

#include "Append.h"
#include "DisplayList.h"

namespace tavi {

GlobalBlock::~GlobalBlock() {
  if (block_ == nullptr) return;
  if (locked_) GlobalUnlock(block_);
  HostTrackRemove(kTrackedBlock, block_, place_.line, place_.unit);
  HostGlobalFree(block_, place_.line, place_.unit);
}

const void* GlobalBlock::Lock() {
  const void* bytes = block_ != nullptr ? GlobalLock(block_) : nullptr;
  locked_ = locked_ || bytes != nullptr;
  return bytes;
}

void DeriveDate(char* date, const NtfHdr& header, DateFrom from) {
  constexpr uint32_t kFieldWidth = 2;
  constexpr uint32_t kWidth = 14;
  const char* const file_date = header.Text.FDT;
  if (file_date[0] == '\0') {
    HostMemCopy(date, "50020530010101", kWidth + 1);
    return;
  }
  HostMemCopy(date, file_date, kWidth);
  date[kWidth] = '\0';
  const uint32_t fields = kWidth / kFieldWidth - (from == DateFrom::kMinutes ? 1 : 0);
  for (uint32_t field = fields; field-- > 0;) {
    const int32_t value = ParseInteger(date + size_t{field} * kFieldWidth, kFieldWidth);
    if (value < 2) continue;
    char digits[kFieldWidth + 1];
    FormatNumericField(digits, kFieldWidth, value - 1);
    HostMemCopy(date + size_t{field} * kFieldWidth, digits, kFieldWidth);
    return;
  }
}

bool LowestDisplayLevel(NitfFile& document, uint32_t& level) {
  HostArray<DisplayEntry> list;
  BuildDisplayList(list, document);
  if (list.size() == 0) return false;
  level = list[0].DisplayLevel;
  return true;
}

void AddToTotals(NtfHdr& header, uint32_t table_entry, uint32_t subheader, uint64_t data) {
  header.HlWork += table_entry;
  const uint32_t added = static_cast<uint32_t>(data) + subheader + table_entry;
  const int32_t length = WrapAdd(NumberOf(header.Text.FL), static_cast<int32_t>(added));
  header.FlValue = header.FlMirror = static_cast<uint32_t>(length);
  FormatNumericField(header.Text.FL, sizeof header.Text.FL - 1, length);
}

}  // namespace tavi
