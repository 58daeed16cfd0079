#include <algorithm>

#include "TaviHost.h"
#include "TaviKernel/BitCopy.h"
#include "TaviKernel/PixelView.h"
#include "TaviKernel/RowPipe.h"

namespace tavi::host {
namespace {

constexpr uint32_t kReplace = 800;

// A rectangle that lies inside both pictures.
struct Area {
  uint32_t x;
  uint32_t y;
  uint32_t source_x;
  uint32_t source_y;
  uint32_t width;
  uint32_t height;
};

// One axis of the rectangle, cut to both sides; false when nothing is left.
bool Clip(int64_t to, int64_t from, uint32_t length, uint32_t to_side, uint32_t from_side, uint32_t* out_to,
          uint32_t* out_from, uint32_t* out_length) {
  const int64_t skipped = std::max({int64_t{0}, -to, -from});
  const int64_t rest = std::min({length - skipped, to_side - (to + skipped), from_side - (from + skipped)});
  if (rest <= 0) return false;
  *out_to = static_cast<uint32_t>(to + skipped);
  *out_from = static_cast<uint32_t>(from + skipped);
  *out_length = static_cast<uint32_t>(rest);
  return true;
}

// Whether pixels are taken over byte for byte. Pixels of up to 16 bits are indices or greys in every order;
// where the orders of two indexed pictures differ, their colours decide.
bool CopiesBytes(const HostBitmap& a_record, const PixelView& a, const HostBitmap& b_record,
                 const PixelView& b) {
  if (a.bits != b.bits) return false;
  if (a_record.order == b_record.order || a.bits == 12 || a.bits == 16) return true;
  return a.bits > 16 && a.red_first == b.red_first;
}

void CopyRow(const PixelView& view, const uint8_t* source, uint8_t* destination, const Area& area) {
  const uint64_t bits = view.bits;
  const BitOrder order = bits == 12 ? BitOrder::kLeastFirst : BitOrder::kMostFirst;
  CopyBits(order, destination, area.x * bits, source, area.source_x * bits, area.width * bits);
}

template <typename MoveRow>
void ForEachRow(const PixelView& to, const PixelView& from, const Area& area, MoveRow&& move_row) {
  const bool whole = area.x == 0 && area.width == to.width;
  for (uint32_t i = 0; i < area.height; ++i) {
    const uint8_t* const source = from.ReadRow(from.StorageRow(area.source_y + i));
    const uint32_t row = to.StorageRow(area.y + i);
    move_row(source, whole ? to.ReplaceRow(row) : to.ChangeRow(row));
  }
}

}  // namespace
}  // namespace tavi::host

using namespace tavi::host;

int32_t HostCombineBitmap(HostBitmap* destination, int32_t x, int32_t y, uint32_t width, uint32_t height,
                          const HostBitmap* source, int32_t source_x, int32_t source_y, uint32_t mode) {
  if (IsVoid(destination) || IsVoid(source)) return SUCCESS;
  PixelView to;
  PixelView from;
  if (!ViewOf(destination, &to) || !ViewOf(source, &from)) return ERR_NO_BITMAP;
  if (mode != kReplace) return ERR_NOT_SUPPORTED;
  Area area{};
  if (!Clip(x, source_x, width, to.width, from.width, &area.x, &area.source_x, &area.width) ||
      !Clip(y, source_y, height, to.height, from.height, &area.y, &area.source_y, &area.height)) {
    return SUCCESS;
  }
  if (CopiesBytes(*destination, to, *source, from)) {
    ForEachRow(to, from, area, [&](const uint8_t* in, uint8_t* out) { CopyRow(to, in, out, area); });
    if (IsDeep(to.layout)) CopySampleForm(destination, *source, from);
    return SUCCESS;
  }
  RowPipe pipe(from, to, nullptr);
  const Columns columns{area.x, area.width, area.source_x, nullptr};
  ForEachRow(to, from, area, [&](const uint8_t* in, uint8_t* out) { pipe.Move(in, out, columns); });
  if (to.sample_order == SampleOrder::kUnknown) SetSampleOrder(destination, SampleOrder::kNative);
  return SUCCESS;
}
