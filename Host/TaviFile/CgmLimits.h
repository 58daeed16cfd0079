// What a metafile may ask for. All limits grow with the bytes of the metafile, so that a small hostile file stays cheap
// and a large honest one is read whole. A picture beyond one of the totals ends in ERR_NO_MEMORY.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::host::cgm {

// Cells of all cell arrays, patterns and tiles together. Run lengths can name far more cells than their bytes: a million
// (4 MB) are granted to any file, and 32 for each byte, four times what packed bits need.
inline constexpr uint64_t kFreeCells = 1'048'576;
inline constexpr uint64_t kCellsPerByte = 32;

// Bytes of elements read again because segments are copied. A segment that copies others twice each would double at
// every level.
inline constexpr uint64_t kFreeCopiedBytes = 65'536;
inline constexpr uint64_t kCopiesPerByte = 16;
// Copies within copies: deeper than any drawing nests its symbols.
inline constexpr int kCopyDepth = 8;

// Coordinates beyond what 32-bit integers hold, with room for their sums, lose their element: only real numbers reach
// further, and products of larger ones could run out of the range of a double.
inline constexpr double kLargestCoordinate = 4.3e9;

// Entries of the colour table: indices of 16 bits. Higher ones are accepted in the data and show the foreground.
inline constexpr uint32_t kColorTableEntries = 65536;

// Order of a B-spline: the work for a point grows with its square, and curves above the fifth are never met.
inline constexpr int64_t kLargestSplineOrder = 16;
// Straight pieces for each span of a spline, and for an arc of a hyperbola.
inline constexpr int kPiecesPerSpan = 16;
inline constexpr int kHyperbolaPieces = 64;

// Saved contexts of attributes, each some hundred bytes for an element of four.
inline constexpr size_t kSavedContexts = 1024;

}  // namespace tavi::host::cgm
