// What the reference decoder's files share among themselves.
#ifndef TAVI_TESTS_SUPPORT_REFERENCE_PARTS_H
#define TAVI_TESTS_SUPPORT_REFERENCE_PARTS_H

#include <cstdint>

#include "ReferenceDecoder.h"

namespace tavi_test {

struct BlockWork {
  const ImageSpec& image;
  const SegmentSource& source;
  const MaskTable& masks;
};

struct SampleRange {
  int32_t minimum;
  int32_t maximum;
};

uint32_t BigEndian32(const uint8_t* bytes);
SampleRange ScanRange(const SegmentSource& source);
SegmentBitmap CreateSegment(const ImageSpec& image);

// The four groups of paths; each sets the segment's status and pixels.
void DecodeBilevel(const BlockWork& work, SegmentBitmap& segment);
void DecodeOneBlock(const BlockWork& work, bool mono, SegmentBitmap& segment);
void DecodeManyBlocks(const BlockWork& work, SegmentBitmap& segment);
void DecodeInterleaved(const BlockWork& work, SegmentBitmap& segment);

// Puts a decoded block at its place.
void PlaceBlock(const ImageSpec& image, uint32_t index, const PackedRows& tile, SegmentBitmap& segment);

}  // namespace tavi_test

#endif  // TAVI_TESTS_SUPPORT_REFERENCE_PARTS_H
