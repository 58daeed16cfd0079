// Edits of a document, chosen by bytes of the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "TaviNitf.h"

namespace tavi_fuzz {

// Numbers and texts out of a run of bytes; zeros when it has ended.
class Choices {
 public:
  Choices(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  uint8_t Byte() {
    if (size_ == 0) return 0;
    --size_;
    return *data_++;
  }
  uint32_t Number(uint32_t below) { return Byte() % below; }
  std::string Text();

 private:
  const uint8_t* data_;
  size_t size_;
};

// One setter or append.
void EditOnce(NitfHandle handle, Choices& choose);

}  // namespace tavi_fuzz
