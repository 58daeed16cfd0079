// The filter entry points and the drawing exports.
#include "TaviNitf.h"

#include "DisplayList.h"
#include "NitfFile.h"

namespace tavi {

TAVI_UNIT(L"Common/Ntf")

namespace {

constexpr uint32_t kCompositeBits = 24;

// Both bits are set in the host's own record, on every call.
void TakeLoadFlags(NitfFile& document, HostLoadFlagsRecord* record) {
  record->flags |= static_cast<uint32_t>(TAVI_LOAD_ALWAYS_SET);
  document.FixedCanvas = (record->flags & TAVI_LOAD_FIXED_CANVAS) != 0;
  document.StretchDarkImages = (record->flags & TAVI_LOAD_STRETCH_DARK) != 0;
  document.PaintEachObject = (record->flags & TAVI_LOAD_PAINT_EACH_OBJECT) != 0;
}

// Opens the file and finds the composite's size. Any status but 1 is a failure.
int32_t OpenAndMeasure(NitfFile& document, const wchar_t* file_name, uint32_t& width, uint32_t& height) {
  const int32_t status = OpenNitfFile(document, file_name);
  return status < SUCCESS ? status : CompositeSize(document, width, height);
}

// The composite: a plain bitmap whose row 0 is the bottom row, in the background colour.
int32_t MakeCanvas(HostBitmap* bitmap, uint32_t width, uint32_t height, uint32_t bits, uint32_t background) {
  constexpr uint32_t kPlainBitmap = 1;
  constexpr uint32_t kBgr = 1;
  constexpr uint32_t kBottomUp = 4;
  const int32_t status = HostCreateBitmap(bitmap, sizeof *bitmap, kPlainBitmap, width, height, bits, kBgr,
                                          nullptr, kBottomUp, nullptr, 0);
  if (status == SUCCESS) HostFillBitmap(bitmap, background);
  return status;
}

int32_t DrawOnCanvas(FilterLoadContext* context, HostBitmap* canvas, NitfFile& document) {
  const BitmapContext dc(canvas);
  return dc.get() != nullptr ? DrawObjects(context, dc.get(), document) : ERR_NO_MEMORY;
}

// Hands the rows to the callback, the bitmap's last row first.
int32_t FeedRowsToHost(uint64_t first, HostBitmap* destination, HostBitmap* composite,
                       HostRowCallback callback, void* user) {
  HostArray<uint8_t> row;
  if (!row.Allocate(composite->bytes_per_line, Here())) return ERR_NO_MEMORY;
  HostAccessBitmap(composite);
  int32_t status = SUCCESS;
  const uint32_t height = composite->height;
  for (uint32_t i = 0; i < height && status == SUCCESS; ++i) {
    HostGetBitmapRow(composite, row.data(), height - i - 1, composite->bytes_per_line);
    uint32_t flags = TAVI_ROW;
    if (i == 0) flags |= TAVI_ROW_FIRST;
    if (i == height - 1) flags |= TAVI_ROW_LAST;
    status = callback(first, destination, row.data(), flags, static_cast<int32_t>(i), 1, user);
  }
  HostReleaseBitmap(composite);
  return status;
}

void FillInfo(HostFileInfo* info, uint32_t width, uint32_t height) {
  const uint32_t line = (kCompositeBits * width + 31) >> 3 & ~3U;
  info->format = TAVI_FORMAT_NITF;
  info->width = width;
  info->height = height;
  info->bits = kCompositeBits;
  info->memory_size = static_cast<uint64_t>(line) * height;
  info->host1100 = 1;
  info->host1104 = 1;
}

}  // namespace

}  // namespace tavi

int32_t fltInfo(FilterInfoContext* context) {
  if (context == nullptr || context->file_name == nullptr || context->info == nullptr ||
      context->load_flags == nullptr) {
    return ERR_NULL_ARGUMENT;
  }
  NitfFile document;
  HostFileSeek(context->file, 0, tavi::kFromStart);
  tavi::TakeLoadFlags(document, context->load_flags);
  uint32_t width = 0;
  uint32_t height = 0;
  const int32_t status = tavi::OpenAndMeasure(document, context->file_name, width, height);
  if (status == SUCCESS) tavi::FillInfo(context->info, width, height);
  return status;
}

int32_t fltLoad(FilterLoadContext* context) {
  if (context == nullptr) return ERR_NULL_ARGUMENT;
  NitfFile document;
  if (context->load_memory == nullptr || context->set_load_hook == nullptr ||
      context->third_entry == nullptr) {
    return ERR_FILE_FORMAT;
  }
  if (context->file_name == nullptr || context->bitmap == nullptr || context->row_callback == nullptr ||
      context->load_flags == nullptr) {
    return ERR_NULL_ARGUMENT;
  }
  tavi::TakeLoadFlags(document, context->load_flags);
  uint32_t width = 0;
  uint32_t height = 0;
  int32_t status = tavi::OpenAndMeasure(document, context->file_name, width, height);
  if (status != SUCCESS) return status;
  tavi::OwnedBitmap canvas;
  status = tavi::MakeCanvas(canvas.get(), width, height, context->bitmap->bits, document.Background);
  if (status != SUCCESS) return status;
  status = tavi::DrawOnCanvas(context, canvas.get(), document);
  if (status < SUCCESS) return status;
  return tavi::FeedRowsToHost(context->callback_word, context->bitmap, canvas.get(), context->row_callback,
                              context->user);
}

int32_t fltSave(void*) {
  const NitfFile document;
  return ERR_NOT_SUPPORTED;
}

int32_t GetActual_Width_Height(NitfFile* document, uint32_t* width, uint32_t* height) {
  if (document == nullptr || width == nullptr || height == nullptr) return ERR_NULL_ARGUMENT;
  return tavi::CompositeSize(*document, *width, *height);
}

int32_t Tavi_NitfDrawObjects(FilterLoadContext* context, HostDrawingContext drawing_context, HostBitmap*,
                             NitfFile* document) {
  if (document == nullptr || drawing_context == nullptr) return ERR_NULL_ARGUMENT;
  return tavi::DrawObjects(context, drawing_context, *document);
}

int32_t Tavi_NtfRenderBitmap(HostBitmap* bitmap, NitfFile* document) {
  if (bitmap == nullptr) return ERR_INVALID_PARAMETER;
  if ((bitmap->flags & 1) != 0) HostFreeBitmap(bitmap);
  if (document == nullptr) return ERR_NULL_HANDLE;
  uint32_t width = 0;
  uint32_t height = 0;
  int32_t status = tavi::CompositeSize(*document, width, height);
  if (status != SUCCESS) return status;
  status = tavi::MakeCanvas(bitmap, width, height, tavi::kCompositeBits, document->Background);
  if (status != SUCCESS) return status;
  status = tavi::DrawOnCanvas(nullptr, bitmap, *document);
  if (status < SUCCESS) HostFreeBitmap(bitmap);
  return status;
}
