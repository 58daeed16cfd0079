// Which byte order the 16-bit samples of a picture have.
#pragma once

#include "TaviKernel/PixelView.h"

namespace tavi::host {

/*
 * Rows that a caller puts hold 16-bit samples in one of two forms, and nothing in the record says which:
 * big-endian as the file has them, or native and stretched from 9 to 15 significant bits to the full 16-bit
 * range. The picture itself is asked, on some 64 of its rows:
 *
 *   - Samples whose two bytes are equal say nothing; a picture of nothing else reads alike in both orders.
 *   - A stretch from n bits leaves only every 2^(16-n)th value or so: floor(w x 65535 / (2^n - 1)). When one
 * n fits (nearly) all values, and so many different low bytes occur that this is no chance, the samples are
 * native.
 *   - When one of the two bytes is zero throughout, the picture has 8 bits and both orders are equally
 * smooth: it is big-endian.
 *   - When one n fits but the evidence is thin, the order decides whose high bytes lie twice as close
 * together as the other's; then the order in which the picture is smoother: the sum of differences between
 * neighbours, related to the range of the values. Equally smooth (a constant picture): native if a stretch
 * from at most 12 bits fits the native values and none the big-endian ones.
 *   - When none fits, the samples are big-endian, unless many different values are more than twice as smooth
 * read the other way.
 *
 * Pictures whose order the host knows (HostFillBitmap, painting) are not tested.
 */
SampleOrder DetectSampleOrder(const PixelView& view) noexcept;

}  // namespace tavi::host
