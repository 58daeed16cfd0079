// What bitmap a segment becomes, and which of its bands feed the three output channels.
#pragma once

#include <cstdint>

#include "ImSubHdr.h"

namespace tavi {

// The work record of one block.
struct BlockGeometry {
  uint32_t width = 0;   // NPPBH
  uint32_t height = 0;  // NPPBV
  uint32_t x = 0;       // place in the segment bitmap
  uint32_t y = 0;
  uint32_t bits = 0;         // bits per pixel of the segment bitmap
  uint32_t actual_bits = 0;  // ABPP
  uint64_t ordinal = 0;      // blocks decoded before this one, absent and failing ones not counted
  uint32_t red = 0;          // band indices of the output channels
  uint32_t green = 0;
  uint32_t blue = 0;
  uint32_t bands = 0;
};

// A side of the segment bitmap, block side times blocks. A product beyond 32 bits, as a negative field gives,
// is one that no host can make a bitmap of.
uint32_t SegmentSide(uint32_t block_side, uint32_t blocks);

// Makes the segment's bitmap with its depth, order and palette. The status of HostCreateBitmap.
int32_t CreateSegmentBitmap(HostBitmap* bitmap, const ImSubHdr& image);

// Each looks for the bands with its roles and sets the geometry's three indices; 1 when it found one, else 0.
// Where two of the indices agree, they are remembered in BandSelection.
int32_t SelectColourBands(ImSubHdr& image, BlockGeometry& geometry, uint32_t bands);
int32_t SelectLumaBands(ImSubHdr& image, BlockGeometry& geometry, uint32_t bands);
int32_t SelectLookupBand(ImSubHdr& image, BlockGeometry& geometry, uint32_t bands);
int32_t SelectMonoBand(ImSubHdr& image, BlockGeometry& geometry, uint32_t bands);

// The first of the above that finds something; failing all, the remembered selection, or bands 0, 1 and 2.
void ChooseBands(ImSubHdr& image, BlockGeometry& geometry, uint32_t bands);

}  // namespace tavi
