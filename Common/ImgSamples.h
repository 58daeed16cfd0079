// Samples as a file holds them, brought into what a bitmap expects.
#pragma once

#include <cstdint>

struct NitfFile;

namespace tavi {

// The bytes that ConvertSamples may touch of a row of `length` bytes.
uint64_t ConversionExtent(uint32_t sample_bits, uint32_t actual_bits, uint64_t length);

// Whether ConvertSamples changes anything at these depths.
bool NeedsConversion(uint32_t sample_bits, uint32_t actual_bits);

// Converts a row in place: repacks 12-bit pairs, normalises 17 to 32 bits to 8 by the range, stretches 9 to
// 16 actual bits to the full container; all else stays as it is. The buffer must have ConversionExtent bytes.
// Always SUCCESS.
int32_t ConvertSamples(uint8_t* row, uint32_t sample_bits, uint32_t actual_bits, uint64_t length,
                       int32_t minimum, int32_t maximum);

// Finds the smallest and largest signed 32-bit big-endian value of a segment's whole data, whatever its
// depth. Both enter as all ones and are then seeded with the first value. ERR_FILE_READ, ERR_NO_MEMORY.
int32_t ScanSampleRange(int32_t& minimum, int32_t& maximum, uint32_t data_length, NitfFile& document,
                        uint32_t index);

// Real-valued rows, for the reserved pixel type: big-endian integers by value, scaled to bytes by the range.
// In place.
void ConvertFloatRow(uint8_t* row, uint64_t samples, uint32_t sample_bits, float minimum, float maximum);
void ConvertDoubleRow(uint8_t* row, uint64_t samples, uint32_t sample_bits, double minimum, double maximum);

}  // namespace tavi
