#include "SaveFields.h"

#include <cstdio>

namespace tavi {

int32_t FieldWriter::Write(const char* text, uint32_t width, Fill fill) {
  uint32_t length = 0;
  while (length < width && text[length] != '\0') ++length;
  if (fill == Fill::kZero) output_.WriteRepeated('0', width - length);
  output_.Write(text, length);
  return output_.WriteRepeated(' ', fill == Fill::kBlank ? width - length : 0);
}

int32_t FieldWriter::WriteBlock(const HostArray<uint8_t>& block, int64_t length) {
  if (length <= 0) return SUCCESS;
  const auto wanted = static_cast<uint64_t>(length);
  const uint64_t stored = block.exists() ? std::min(wanted, block.size() - 1) : 0;
  output_.Write(block.data(), stored);
  return output_.WriteRepeated('\0', wanted - stored);
}

const char* FieldWriter::Print(int32_t number) {
  std::snprintf(scratch_, sizeof scratch_, "%d", number);
  return scratch_;
}

const char* FieldWriter::Keep(const char* text) {
  if (text != nullptr) std::snprintf(scratch_, sizeof scratch_, "%s", text);
  return scratch_;
}

}  // namespace tavi
