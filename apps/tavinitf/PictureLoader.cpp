#include "PictureLoader.h"

#include "HostEntries.h"
#include "TaviNitf.h"

namespace tavinitf {
namespace {

constexpr int32_t kGoOn = 1;
constexpr int32_t kStop = 0;

HostLoadFlagsRecord MakeFlags(const LoadOptions& options) {
  HostLoadFlagsRecord record{};
  if (options.fixed_canvas) record.flags |= TAVI_LOAD_FIXED_CANVAS;
  if (options.stretch_dark) record.flags |= TAVI_LOAD_STRETCH_DARK;
  if (options.paint_each) record.flags |= TAVI_LOAD_PAINT_EACH_OBJECT;
  return record;
}

// No exception may pass through the library, whatever the sink does.
int32_t HandRowOver(uint64_t, HostBitmap*, uint8_t* row, uint32_t, int32_t, int32_t, void* user) {
  try {
    return (*static_cast<const RowSink*>(user))(row) ? kGoOn : kStop;
  } catch (...) {
    return kStop;
  }
}

}  // namespace

int32_t QueryPictureSize(const std::wstring& path, const LoadOptions& options, PictureSize& size) {
  HostLoadFlagsRecord flags = MakeFlags(options);
  HostFileInfo info{};
  FilterInfoContext context{};
  context.file_name = path.c_str();
  context.file = -1;  // we hold no handle of our own on the file; the host takes -1 for none
  context.info = &info;
  context.load_flags = &flags;
  const int32_t status = fltInfo(&context);
  size = {info.width, info.height};
  return status;
}

int32_t LoadPicture(const std::wstring& path, const LoadOptions& options, const RowSink& sink) {
  HostLoadFlagsRecord flags = MakeFlags(options);
  HostBitmap bitmap{};
  HostInitBitmap(&bitmap, sizeof(bitmap), 0, 0, options.bits);
  FilterLoadContext context{};
  context.file_name = path.c_str();
  context.bitmap = &bitmap;
  context.row_callback = HandRowOver;
  context.user =
      const_cast<RowSink*>(&sink);  // NOLINT(cppcoreguidelines-pro-type-const-cast): given back as const
  context.load_flags = &flags;
  SetHostEntries(context);
  return fltLoad(&context);
}

}  // namespace tavinitf
