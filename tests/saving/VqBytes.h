// A vector quantised stream, put together from its parts.
#ifndef TAVI_TESTS_SAVING_VQ_BYTES_H
#define TAVI_TESTS_SAVING_VQ_BYTES_H

#include <cstdint>

#include "NtfBuilder.h"

namespace saving {

struct VqBytes {
  uint32_t image_rows = 1;     // code rows in a block
  uint32_t codes_per_row = 1;  // codes across a block
  uint8_t code_bits = 8;
  uint16_t tables = 0;
  uint32_t entries = 0;  // of each table
  size_t line = 0;       // bytes of an entry
  tavi_test::Bytes codes = {};
  tavi_test::Bytes tail = {};

  [[nodiscard]] tavi_test::Bytes Build() const {
    tavi_test::Bytes bytes;
    const auto put = [&bytes](uint64_t value, int width) {
      for (int i = width - 1; i >= 0; --i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
    };
    put(image_rows, 4);
    put(codes_per_row, 4);
    put(code_bits, 1);
    put(0x0102, 2);  // algorithm
    put(tables, 2);
    put(0x0304, 2);  // parameter records
    put(0x05060708, 4);
    put(14, 2);
    for (uint32_t t = 0; t < tables; ++t) {
      put(t + 1, 2);
      put(entries + t, 4);  // only the first record's count matters
      put(0x090A, 2);
      put(0x0B0C, 2);
      put(0x0D0E0F10 + t, 4);
    }
    for (size_t i = 0; i < size_t{tables} * entries * line; ++i)
      bytes.push_back(static_cast<uint8_t>(i * 7 + 1));
    bytes.insert(bytes.end(), codes.begin(), codes.end());
    bytes.insert(bytes.end(), tail.begin(), tail.end());
    return bytes;
  }
};

}  // namespace saving

#endif  // TAVI_TESTS_SAVING_VQ_BYTES_H
