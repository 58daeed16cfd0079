#include "RecordingHost.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace graphics {
namespace {

Recording* recording = nullptr;

// The operation of that name in the library behind this executable.
template <class Operation>
Operation* Next(Operation*, const char* name) {
  void* const found = dlsym(RTLD_NEXT, name);
  if (found == nullptr) {
    std::fprintf(stderr, "no %s behind this executable\n", name);
    std::abort();
  }
  return reinterpret_cast<Operation*>(found);
}

void Note(const std::string& name, const std::string& arguments = "") {
  if (recording != nullptr) recording->calls.push_back(arguments.empty() ? name : name + " " + arguments);
}

// Whether the test answers for the operation.
bool Answers(const std::string& name, int32_t& status) {
  if (recording == nullptr) return false;
  const auto found = recording->answers.find(name);
  if (found == recording->answers.end()) return false;
  status = found->second;
  return true;
}

std::string Hex(uint64_t value) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(value));
  return text;
}

std::string Text(const HostRect* r) {
  return "(" + std::to_string(r->left) + "," + std::to_string(r->top) + "," + std::to_string(r->right) + "," +
         std::to_string(r->bottom) + ")";
}

std::string Zeros(std::initializer_list<uint64_t> values) {
  return std::any_of(values.begin(), values.end(), [](uint64_t v) { return v != 0; }) ? " NOT ZERO" : "";
}

std::string ShapeOf(const HostBitmap* b) {
  return std::to_string(b->width) + "x" + std::to_string(b->height) + "x" + std::to_string(b->bits);
}

// What is about to be painted.
void KeepBitmap(const HostBitmap* bitmap) {
  if (recording == nullptr) return;
  recording->bitmap_rows.assign(bitmap->height, std::vector<uint8_t>(bitmap->bytes_per_line));
  for (uint32_t y = 0; y < bitmap->height; ++y) {
    HostGetBitmapRow(bitmap, recording->bitmap_rows[y].data(), y, bitmap->bytes_per_line);
  }
  recording->bitmap_palette.assign(bitmap->color_count, HostPaletteEntry{});
  if (bitmap->color_count != 0) {
    HostGetBitmapColors(bitmap, 0, bitmap->color_count, recording->bitmap_palette.data());
  }
}

}  // namespace

std::vector<std::string> Recording::Of(const std::string& operation) const {
  std::vector<std::string> found;
  for (const std::string& call : calls) {
    if (call == operation || call.starts_with(operation + " ")) found.push_back(call);
  }
  return found;
}

std::vector<std::string> Recording::Beginning(const std::string& prefix) const {
  std::vector<std::string> found;
  for (const std::string& call : calls) {
    if (call.starts_with(prefix)) found.push_back(call);
  }
  return found;
}

Recorder::Recorder() {
  recording = &recording_;
}
Recorder::~Recorder() {
  recording = nullptr;
}

}  // namespace graphics

using graphics::Answers;
using graphics::Hex;
using graphics::Next;
using graphics::Note;
using graphics::Text;
using graphics::Zeros;

#define NEXT(operation) static const auto next = Next(&operation, #operation)
#define ANSWER(operation) \
  if (int32_t status = 0; Answers(#operation, status)) return status

extern "C" {

// ---- Vectors ----

void HostVecInit(HostVector* vector) {
  Note("HostVecInit", std::to_string(vector->word976));
  NEXT(HostVecInit);
  next(vector);
}

int32_t HostVecIsEmpty(const HostVector* vector) {
  NEXT(HostVecIsEmpty);
  return next(vector);
}

void HostVecFree(HostVector* vector) {
  Note("HostVecFree");
  NEXT(HostVecFree);
  next(vector);
}

int32_t HostVecAddLayer(HostVector* vector, const ObjectLayerRecord* record, HostVectorLayer* layer,
                        uint32_t flags) {
  std::string name;
  for (const uint16_t unit : record->name) {
    if (unit == 0) break;
    name += static_cast<char>(unit);
  }
  Note("HostVecAddLayer", std::to_string(record->size) + " '" + name + "' " +
                              std::to_string(record->word132) + " " + std::to_string(record->word136) + " " +
                              std::to_string(record->word140) + " " + std::to_string(flags) +
                              " word844=" + std::to_string(vector->word844));
  ANSWER(HostVecAddLayer);
  NEXT(HostVecAddLayer);
  return next(vector, record, layer, flags);
}

int32_t HostVecSetActiveLayer(HostVector* vector, const HostVectorLayer* layer) {
  Note("HostVecSetActiveLayer");
  ANSWER(HostVecSetActiveLayer);
  NEXT(HostVecSetActiveLayer);
  return next(vector, layer);
}

int32_t HostVecAddObject(HostVector* vector, uint32_t reserved1, uint32_t kind,
                         const VectorObjectRecord* object, uint32_t reserved2) {
  Note("HostVecAddObject", std::to_string(kind) + Zeros({reserved1, reserved2}));
  if (graphics::recording != nullptr) {
    graphics::AddedObject added;
    added.kind = kind;
    added.record.resize(std::min<size_t>(object->head.size, sizeof *object));
    std::memcpy(added.record.data(), object, added.record.size());
    if (kind == VECTOR_POLYGON) {
      added.points.assign(object->polygon.points, object->polygon.points + object->polygon.count);
    }
    graphics::recording->objects.push_back(added);
  }
  ANSWER(HostVecAddObject);
  NEXT(HostVecAddObject);
  return next(vector, reserved1, kind, object, reserved2);
}

int32_t HostVecGetBounds(const HostVector* vector, uint32_t reserved1, HostRect* bounds, uint32_t reserved2) {
  Note("HostVecGetBounds", Zeros({reserved1, reserved2}));
  ANSWER(HostVecGetBounds);
  NEXT(HostVecGetBounds);
  return next(vector, reserved1, bounds, reserved2);
}

void HostVecSetBackColor(HostVector* vector, uint32_t color) {
  Note("HostVecSetBackColor", Hex(color));
  NEXT(HostVecSetBackColor);
  next(vector, color);
}

void HostVecPrepare(HostVector* vector, uint32_t flags) {
  Note("HostVecPrepare", std::to_string(flags));
  NEXT(HostVecPrepare);
  next(vector, flags);
}

void HostVecResetView(HostVector* vector) {
  Note("HostVecResetView");
  NEXT(HostVecResetView);
  next(vector);
}

void HostVecRefreshView(HostVector* vector) {
  Note("HostVecRefreshView");
  NEXT(HostVecRefreshView);
  next(vector);
}

int32_t HostVecPaint(HostDrawingContext context, HostVector* vector, int32_t width, int32_t height,
                     uint32_t reserved1, uint32_t reserved2, const HostRect* rectangle, uint32_t reserved3,
                     uint32_t reserved4) {
  Note("HostVecPaint", std::to_string(width) + "x" + std::to_string(height) + " " + Text(rectangle) +
                           Zeros({reserved1, reserved2, reserved3, reserved4}));
  ANSWER(HostVecPaint);
  NEXT(HostVecPaint);
  return next(context, vector, width, height, reserved1, reserved2, rectangle, reserved3, reserved4);
}

int32_t HostVecLoadMemory(const void* data, HostVector* vector, uint64_t size, HostLoadFlagsRecord* options,
                          uint32_t reserved) {
  Note("HostVecLoadMemory", (data == nullptr ? "null " : "") + std::to_string(size) + " " +
                                Hex(options->flags) + " word844=" + std::to_string(vector->word844) +
                                Zeros({reserved}));
  if (graphics::recording != nullptr) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    graphics::recording->loaded.assign(bytes, bytes + size);
    if (graphics::recording->load) return graphics::recording->load(vector);
  }
  ANSWER(HostVecLoadMemory);
  NEXT(HostVecLoadMemory);
  return next(data, vector, size, options, reserved);
}

// ---- Bitmaps ----

int32_t HostCreateBitmap(HostBitmap* bitmap, uint64_t record_size, uint32_t memory_flags, uint32_t width,
                         uint32_t height, uint32_t bits, uint32_t order, const HostPaletteEntry* palette,
                         uint32_t view_perspective, void* data, uint64_t data_size) {
  Note("HostCreateBitmap",
       std::to_string(record_size) + " " + std::to_string(memory_flags) + " " + std::to_string(width) + "x" +
           std::to_string(height) + "x" + std::to_string(bits) + " order " + std::to_string(order) +
           (palette != nullptr ? " palette" : "") + " view " + std::to_string(view_perspective) + " data " +
           std::to_string(data_size) + (data != nullptr ? "" : " null"));
  ANSWER(HostCreateBitmap);
  NEXT(HostCreateBitmap);
  return next(bitmap, record_size, memory_flags, width, height, bits, order, palette, view_perspective, data,
              data_size);
}

void HostFreeBitmap(HostBitmap* bitmap) {
  Note("HostFreeBitmap");
  NEXT(HostFreeBitmap);
  next(bitmap);
}

int32_t HostPaintBitmap(HostDrawingContext context, const HostBitmap* bitmap, const HostRect* source,
                        const HostRect* source_clip, const HostRect* destination,
                        const HostRect* destination_clip, uint32_t operation) {
  Note("HostPaintBitmap",
       graphics::ShapeOf(bitmap) + " " + Text(destination) + " " + Hex(operation) +
           Zeros({source != nullptr, source_clip != nullptr, destination_clip != nullptr}));
  graphics::KeepBitmap(bitmap);
  ANSWER(HostPaintBitmap);
  NEXT(HostPaintBitmap);
  return next(context, bitmap, source, source_clip, destination, destination_clip, operation);
}

int32_t HostPaintBitmapKeyed(HostDrawingContext context, const HostBitmap* bitmap, const HostRect* source,
                             const HostRect* source_clip, const HostRect* destination,
                             const HostRect* destination_clip, uint32_t opacity, uint32_t one1, uint32_t one2,
                             uint32_t one3, uint32_t one4, uint32_t one5, uint32_t one6, uint32_t one7,
                             uint32_t transparent, uint32_t reserved8, uint32_t reserved9,
                             uint32_t operation) {
  Note("HostPaintBitmapKeyed",
       graphics::ShapeOf(bitmap) + " " + Text(destination) + " " + Hex(operation) + " " +
           std::to_string(opacity) + " without " + Hex(transparent) +
           Zeros({source != nullptr, source_clip != nullptr, destination_clip != nullptr, one1 - 1, one2 - 1,
                  one3 - 1, one4 - 1, one5 - 1, one6 - 1, one7 - 1, reserved8, reserved9}));
  graphics::KeepBitmap(bitmap);
  ANSWER(HostPaintBitmapKeyed);
  NEXT(HostPaintBitmapKeyed);
  return next(context, bitmap, source, source_clip, destination, destination_clip, opacity, one1, one2, one3,
              one4, one5, one6, one7, transparent, reserved8, reserved9, operation);
}

HostPalette SelectPalette(HostDrawingContext context, HostPalette palette, int32_t background) {
  Note("SelectPalette", std::to_string(background));
  NEXT(SelectPalette);
  return next(context, palette, background);
}

uint32_t RealizePalette(HostDrawingContext context) {
  Note("RealizePalette");
  NEXT(RealizePalette);
  return next(context);
}

void HostDeleteObject(HostPalette object, int32_t line, const wchar_t* unit) {
  Note("HostDeleteObject");
  NEXT(HostDeleteObject);
  next(object, line, unit);
}

// ---- Texts ----

int32_t SaveDC(HostDrawingContext context) {
  Note("SaveDC");
  NEXT(SaveDC);
  return next(context);
}

int32_t RestoreDC(HostDrawingContext context, int32_t state) {
  Note("RestoreDC", std::to_string(state));
  NEXT(RestoreDC);
  return next(context, state);
}

uint32_t SetTextColor(HostDrawingContext context, uint32_t color) {
  Note("SetTextColor", Hex(color));
  NEXT(SetTextColor);
  return next(context, color);
}

uint32_t SetBkColor(HostDrawingContext context, uint32_t color) {
  Note("SetBkColor", Hex(color));
  NEXT(SetBkColor);
  return next(context, color);
}

int32_t SetBkMode(HostDrawingContext context, int32_t mode) {
  Note("SetBkMode", std::to_string(mode));
  NEXT(SetBkMode);
  return next(context, mode);
}

int32_t TextOutA(HostDrawingContext context, int32_t x, int32_t y, const char* text, int32_t length) {
  Note("TextOutA", "x=" + std::to_string(x) + " y=" + std::to_string(y) + " '" +
                       std::string(text, static_cast<size_t>(length)) + "'");
  ANSWER(TextOutA);
  NEXT(TextOutA);
  return next(context, x, y, text, length);
}

}  // extern "C"
