// What a metafile may ask for. The totals of a picture are limits of the host (HOST_LIMIT_CELLS and so on); all grow with
// the bytes of the metafile, so that a small hostile file stays cheap and a large honest one is read whole, and a picture
// beyond one of them ends in ERR_NO_MEMORY. Here stand what a byte earns, and the bounds of the reader itself.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::host::cgm {

// Cells of all cell arrays, patterns and tiles together: four times what packed bits need.
inline constexpr uint64_t kCellsPerByte = 32;
// Bytes of elements read again because segments are copied.
inline constexpr uint64_t kCopiesPerByte = 16;
// Steps of work for all splines together. The highest order takes 56 for each byte: only copies of segments take more.
inline constexpr uint64_t kSplineStepsPerByte = 64;
// What the drawing holds, in bytes. Metafiles without copies stay below by far.
inline constexpr uint64_t kDrawingBytesPerByte = 96;

// Copies within copies: deeper than any drawing nests its symbols.
inline constexpr int kCopyDepth = 8;

// Coordinates beyond what 32-bit integers hold, with room for their sums, lose their element: only real numbers reach
// further, and products of larger ones could run out of the range of a double.
inline constexpr double kLargestCoordinate = 4.3e9;

// Entries of the colour table: indices of 16 bits. Higher ones are accepted in the data and show the foreground.
inline constexpr uint32_t kColorTableEntries = 65536;

// Order of a B-spline: the work for a point grows with its square, and curves above the fifth are never met.
inline constexpr int64_t kLargestSplineOrder = 8;
// Straight pieces for each span of a spline, and for an arc of a hyperbola.
inline constexpr int kPiecesPerSpan = 16;
inline constexpr int kHyperbolaPieces = 64;

// Lengths of a line type that the metafile defines: as many as the painter draws. Every stroke of the type has them all.
inline constexpr size_t kDashLengths = 64;

// Saved contexts of attributes, each some hundred bytes for an element of four.
inline constexpr size_t kSavedContexts = 1024;

}  // namespace tavi::host::cgm
