// Vector quantised images: a header, look-up tables of pixel kernels, and bit-packed codes.
#pragma once

#include "ImgBlocks.h"

namespace tavi {

// The stream's head. All numbers are big-endian in the file.
struct VqHeader {
  static constexpr uint32_t kSize = 21;
  uint32_t image_rows = 0;     // code rows in a block
  uint32_t codes_per_row = 0;  // codes across a block
  uint32_t code_bits = 0;
  uint32_t lookup_records = 0;
};
VqHeader ParseVqHeader(const uint8_t* bytes);

// One look-up record, of 14 bytes in the file. Only the first one's count is used.
struct VqLookupRecord {
  static constexpr uint32_t kSize = 14;
  uint32_t table_id = 0;
  uint32_t record_count = 0;
  uint32_t values_per_record = 0;
  uint32_t value_bits = 0;
  uint32_t table_offset = 0;
};

// Moves the file over the mask table, from the start of the data. The table's size follows NBANDS here,
// XBANDS is not looked at. ERR_FILE_READ.
int32_t SkipMaskTable(NitfFile& document, const ImSubHdr& image);

// Reads the look-up records from where the file stands. ERR_FILE_READ at the first that is short; those read
// so far stay.
int32_t ReadCompressionLookupRecords(NitfFile& document, const VqHeader& header, VqLookupRecord* records);

// Decodes the segment. The segment bitmap is made anew, as large as the present blocks reach. One decode at a
// time in the process: the bits left over of one are the first bits of the next.
int32_t DecodeVectorQuantised(SegmentJob& job);

}  // namespace tavi
