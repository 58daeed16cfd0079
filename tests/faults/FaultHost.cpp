#include "FaultHost.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "FaultNew.h"
#include "TaviHost.h"

namespace tavi::faults {
namespace {

// One process, one thread under test. Plain numbers, since the allocation functions look at them.
struct State {
  bool armed = false;
  Fault fault{};
  uint64_t seen = 0;
  bool happened = false;
  bool watching = false;
  Demand demand;
  int depth = 0;                      // host operations that are running
  int outside = 0;                    // callbacks of the test that are running
  std::array<const char*, 64> met{};  // operations that the library has called and that can fail
};

State state;

// A host operation is running: what it calls is not the library's call.
class HostScope {
 public:
  HostScope() { ++state.depth; }
  ~HostScope() { --state.depth; }
  HostScope(const HostScope&) = delete;
  HostScope& operator=(const HostScope&) = delete;
};

bool CountAndDecide(Kind kind) {
  if (!state.armed || state.fault.kind != kind) {
    return false;
  }
  ++state.seen;
  const bool fails = state.fault.lasting ? state.seen >= state.fault.nth : state.seen == state.fault.nth;
  state.happened = state.happened || fails;
  return fails;
}

// Whether the library under test itself is running.
bool InLibrary() {
  return state.depth == 0 && state.outside == 0;
}

void NoteMet(const char* operation) {
  const char** const end = state.met.data() + state.met.size();
  const char** place = std::find_if(state.met.data(), end,
                                    [=](const char* name) { return name == nullptr || name == operation; });
  if (place != end) *place = operation;
}

// `operation` lasts and is the same for each call of the same operation.
bool Fails(Kind kind, const char* operation) {
  if (!InLibrary()) return false;
  NoteMet(operation);
  return CountAndDecide(kind);
}

int32_t FaultStatus() {
  return state.fault.status;
}

void NoteRequest(uint64_t bytes) {
  if (state.watching && InLibrary()) {
    state.demand.largest_block = std::max(state.demand.largest_block, bytes);
    state.demand.total += bytes;
  }
}

void NoteClose() {
  if (state.watching && InLibrary()) {
    ++state.demand.files_closed;
  }
}

void NoteWrite() {
  if (state.watching && InLibrary()) {
    ++state.demand.writes;
  }
}

uint64_t Product(uint64_t count, uint64_t size) {
  uint64_t bytes = 0;
  return __builtin_mul_overflow(count, size, &bytes) ? UINT64_MAX : bytes;
}

// The operation of that name in the library that comes after this executable.
template <class Operation>
Operation* Next(Operation*, const char* name) {
  void* const found = dlsym(RTLD_NEXT, name);
  if (found == nullptr) {
    std::fprintf(stderr, "no %s behind this executable\n", name);
    std::abort();
  }
  return reinterpret_cast<Operation*>(found);
}

}  // namespace

const char* Name(Kind kind) {
  switch (kind) {
    case Kind::kAlloc:
      return "HostAlloc";
    case Kind::kNew:
      return "New";
    case Kind::kHostNew:
      return "NewInsideHost";
    case Kind::kOpen:
      return "FileOpen";
    case Kind::kReadShort:
      return "FileReadShort";
    case Kind::kReadNothing:
      return "FileReadNothing";
    case Kind::kWriteNothing:
      return "FileWriteNothing";
    case Kind::kSeek:
      return "FileSeek";
    case Kind::kCreateBitmap:
      return "CreateBitmap";
    case Kind::kCreateDc:
      return "CreateBitmapDC";
    case Kind::kCombine:
      return "CombineBitmap";
    case Kind::kHistogram:
      return "Histogram";
    case Kind::kAdjust:
      return "AdjustBitmap";
    case Kind::kPaint:
      return "PaintBitmap";
    case Kind::kDefaultPalette:
      return "DefaultPalette";
    case Kind::kCreatePalette:
      return "CreatePalette";
    case Kind::kAccess:
      return "Access";
    case Kind::kLoadMemory:
      return "LoadMemory";
    case Kind::kIdentify:
      return "FileInfoMemory";
    case Kind::kMerge:
      return "ColorMerge";
    case Kind::kAttach:
      return "AttachBitmapData";
    case Kind::kWrite:
      return "FileWrite";
    case Kind::kSaveMemory:
      return "SaveMemory";
    case Kind::kGlobalLock:
      return "GlobalLock";
    case Kind::kVecLoad:
      return "VecLoadMemory";
    case Kind::kVecAdd:
      return "VecAdd";
    case Kind::kVecPaint:
      return "VecPaint";
    case Kind::kVecCopy:
      return "VecCopy";
    case Kind::kVecExtents:
      return "VecExtents";
    case Kind::kTextOut:
      return "TextOut";
    case Kind::kContext:
      return "ContextState";
  }
  return "unknown";
}

Injection::Injection(const Fault& fault) {
  state.fault = fault;
  state.seen = 0;
  state.happened = false;
  state.armed = true;
}

Injection::~Injection() {
  state.armed = false;
}

bool Injection::happened() const {
  return state.happened;
}

Watch::Watch() {
  state.demand = Demand();
  state.watching = true;
}

Watch::~Watch() {
  state.watching = false;
}

Demand Watch::demand() const {
  return state.demand;
}

Outside::Outside() {
  ++state.outside;
}

Outside::~Outside() {
  --state.outside;
}

bool HasMet(const std::string& operation) {
  return std::any_of(state.met.begin(), state.met.end(),
                     [&](const char* name) { return name != nullptr && operation == name; });
}

std::vector<std::string> ListedOperations(const std::string& what) {
  std::ifstream file(TAVI_FAULT_OPERATIONS);
  std::vector<std::string> operations;
  std::string line;
  while (std::getline(file, line)) {
    std::istringstream words(line);
    std::string name;
    std::string word;
    if (words >> name >> word && name != "#" && word == what) {
      operations.push_back(name);
    }
  }
  return operations;
}

Refusal RefuseRequest(uint64_t bytes) {
  if (state.outside > 0) {
    return Refusal::kNone;
  }
  if (CountAndDecide(state.depth > 0 ? Kind::kHostNew : Kind::kNew)) {
    return Refusal::kNoMemory;
  }
  NoteRequest(bytes);
  if (state.watching && InLibrary()) {
    ++state.demand.blocks_left;
  }
  return Refusal::kNone;
}

void NoteRelease() {
  if (state.watching && InLibrary()) {
    --state.demand.blocks_left;
  }
}

}  // namespace tavi::faults

using tavi::faults::Fails;
using tavi::faults::FaultStatus;
using tavi::faults::HostScope;
using tavi::faults::Kind;
using tavi::faults::Next;
using tavi::faults::NoteClose;
using tavi::faults::NoteRequest;
using tavi::faults::NoteWrite;
using tavi::faults::Product;

// The operation behind this one, looked up once.
#define NEXT(operation)                                  \
  static const auto next = Next(&operation, #operation); \
  const HostScope scope

extern "C" {

void* HostAllocMem(uint64_t count, uint64_t size, int32_t line, const wchar_t* unit) {
  NoteRequest(Product(count, size));
  if (Fails(Kind::kAlloc, __func__)) {
    return nullptr;
  }
  NEXT(HostAllocMem);
  return next(count, size, line, unit);
}

void HostFreeMem(void* block, int32_t line, const wchar_t* unit) {
  NEXT(HostFreeMem);
  next(block, line, unit);
}

void* HostReallocMem(void* block, uint64_t size, int32_t line, const wchar_t* unit) {
  NoteRequest(size);
  if (Fails(Kind::kAlloc, __func__)) {
    return nullptr;
  }
  NEXT(HostReallocMem);
  return next(block, size, line, unit);
}

void* HostAllocTemp(uint64_t count, uint64_t size, int32_t line, const wchar_t* unit) {
  NoteRequest(Product(count, size));
  if (Fails(Kind::kAlloc, __func__)) {
    return nullptr;
  }
  NEXT(HostAllocTemp);
  return next(count, size, line, unit);
}

void HostFreeTemp(void* block, int32_t line, const wchar_t* unit) {
  NEXT(HostFreeTemp);
  next(block, line, unit);
}

void HostTrackAdd(int32_t kind, const void* object, int32_t line, const wchar_t* unit) {
  NEXT(HostTrackAdd);
  next(kind, object, line, unit);
}

void HostTrackRemove(int32_t kind, const void* object, int32_t line, const wchar_t* unit) {
  NEXT(HostTrackRemove);
  next(kind, object, line, unit);
}

int64_t HostFileOpen(const wchar_t* name, uint32_t flags, uint32_t mode) {
  if (Fails(Kind::kOpen, __func__)) {
    return -1;
  }
  NEXT(HostFileOpen);
  return next(name, flags, mode);
}

void HostFileClose(int64_t file) {
  NoteClose();
  NEXT(HostFileClose);
  next(file);
}

uint64_t HostFileRead(int64_t file, void* buffer, uint64_t bytes) {
  if (bytes > 0 && Fails(Kind::kReadNothing, __func__)) {
    return 0;
  }
  const bool falls_short = bytes > 0 && Fails(Kind::kReadShort, __func__);
  NEXT(HostFileRead);
  const uint64_t moved = next(file, buffer, bytes);
  if (!falls_short || moved == 0) {
    return moved;
  }
  // Some reads ask for more than the file has: what counts as short is a byte less than there is.
  constexpr int32_t kFromHere = 1;
  HostFileSeek(file, -1, kFromHere);
  return moved - 1;
}

uint64_t HostFileWrite(int64_t file, const void* buffer, uint64_t bytes) {
  NoteWrite();
  if (bytes > 0 && Fails(Kind::kWriteNothing, __func__)) {
    return 0;
  }
  const bool falls_short = bytes > 0 && Fails(Kind::kWrite, __func__);
  NEXT(HostFileWrite);
  return next(file, buffer, falls_short ? bytes - 1 : bytes);
}

uint64_t HostFileWriteHuge(int64_t file, const void* buffer, uint64_t bytes) {
  NoteWrite();
  if (bytes > 0 && Fails(Kind::kWriteNothing, __func__)) {
    return 0;
  }
  const bool falls_short = bytes > 0 && Fails(Kind::kWrite, __func__);
  NEXT(HostFileWriteHuge);
  return next(file, buffer, falls_short ? bytes - 1 : bytes);
}

int64_t HostFileSeek(int64_t file, int64_t offset, int32_t origin) {
  if (Fails(Kind::kSeek, __func__)) {
    return -1;
  }
  NEXT(HostFileSeek);
  return next(file, offset, origin);
}

void HostInitBitmap(HostBitmap* bitmap, uint64_t record_size, uint32_t width, uint32_t height,
                    uint32_t bits) {
  NEXT(HostInitBitmap);
  next(bitmap, record_size, width, height, bits);
}

int32_t HostCreateBitmap(HostBitmap* bitmap, uint64_t record_size, uint32_t memory_flags, uint32_t width,
                         uint32_t height, uint32_t bits, uint32_t order, const HostPaletteEntry* palette,
                         uint32_t view_perspective, void* data, uint64_t data_size) {
  if (Fails(Kind::kCreateBitmap, __func__)) {
    HostInitBitmap(bitmap, record_size, 0, 0, 0);
    return ERR_NO_MEMORY;
  }
  NEXT(HostCreateBitmap);
  return next(bitmap, record_size, memory_flags, width, height, bits, order, palette, view_perspective, data,
              data_size);
}

void HostFreeBitmap(HostBitmap* bitmap) {
  NEXT(HostFreeBitmap);
  next(bitmap);
}

void HostClearBitmap(HostBitmap* bitmap) {
  NEXT(HostClearBitmap);
  next(bitmap);
}

void HostFillBitmap(HostBitmap* bitmap, uint32_t color) {
  NEXT(HostFillBitmap);
  next(bitmap, color);
}

void HostAccessBitmap(HostBitmap* bitmap) {
  NEXT(HostAccessBitmap);
  next(bitmap);
}

void HostReleaseBitmap(HostBitmap* bitmap) {
  NEXT(HostReleaseBitmap);
  next(bitmap);
}

void HostGetBitmapRow(const HostBitmap* bitmap, void* buffer, uint32_t row, uint64_t bytes) {
  NEXT(HostGetBitmapRow);
  next(bitmap, buffer, row, bytes);
}

void HostPutBitmapRow(HostBitmap* bitmap, const void* buffer, uint32_t row, uint64_t bytes) {
  NEXT(HostPutBitmapRow);
  next(bitmap, buffer, row, bytes);
}

void HostGetBitmapColors(const HostBitmap* bitmap, uint32_t first, uint32_t count,
                         HostPaletteEntry* entries) {
  NEXT(HostGetBitmapColors);
  next(bitmap, first, count, entries);
}

void HostPutBitmapColors(HostBitmap* bitmap, uint32_t first, uint32_t count,
                         const HostPaletteEntry* entries) {
  NEXT(HostPutBitmapColors);
  next(bitmap, first, count, entries);
}

int32_t HostAttachBitmapData(HostBitmap* bitmap, void* buffer, uint64_t size) {
  if (Fails(Kind::kAttach, __func__)) {
    return ERR_NO_BITMAP;
  }
  NEXT(HostAttachBitmapData);
  return next(bitmap, buffer, size);
}

void HostLoadOptions(HostLoadFlagsRecord* record, uint64_t record_size) {
  NEXT(HostLoadOptions);
  next(record, record_size);
}

int32_t HostLoadMemory(const void* buffer, HostBitmap* bitmap, uint64_t record_size, uint32_t bits,
                       uint32_t order, uint64_t size, HostLoadFlagsRecord* options,
                       HostFileInfo* information) {
  if (Fails(Kind::kLoadMemory, __func__)) {
    HostFreeBitmap(bitmap);
    return ERR_FILE_FORMAT;
  }
  NEXT(HostLoadMemory);
  return next(buffer, bitmap, record_size, bits, order, size, options, information);
}

HostLoadHook HostSetLoadHook(HostLoadHook hook, void* user) {
  NEXT(HostSetLoadHook);
  return next(hook, user);
}

int32_t HostFileInfoMemory(const void* buffer, HostFileInfo* information, uint64_t record_size, uint64_t size,
                           uint32_t reserved1, uint32_t reserved2) {
  if (Fails(Kind::kIdentify, __func__)) {
    return ERR_NOT_SUPPORTED;
  }
  NEXT(HostFileInfoMemory);
  return next(buffer, information, record_size, size, reserved1, reserved2);
}

int32_t HostColorMerge(HostBitmap* destination, HostBitmap* const* bands, uint64_t record_size,
                       uint32_t flags) {
  if (Fails(Kind::kMerge, __func__)) {
    HostFreeBitmap(destination);
    return ERR_NO_MEMORY;
  }
  NEXT(HostColorMerge);
  return next(destination, bands, record_size, flags);
}

HostPaletteEntry* HostDefaultPalette(uint32_t bits) {
  if (Fails(Kind::kDefaultPalette, __func__)) {
    return nullptr;
  }
  NEXT(HostDefaultPalette);
  return next(bits);
}

HostPalette HostCreatePalette(const HostPaletteEntry* entries, uint32_t count) {
  if (Fails(Kind::kCreatePalette, __func__)) {
    return nullptr;
  }
  NEXT(HostCreatePalette);
  return next(entries, count);
}

void HostSetBitmapPalette(HostBitmap* bitmap, HostPalette palette) {
  NEXT(HostSetBitmapPalette);
  next(bitmap, palette);
}

void HostDeleteObject(HostPalette object, int32_t line, const wchar_t* unit) {
  NEXT(HostDeleteObject);
  next(object, line, unit);
}

HostDrawingContext HostCreateBitmapDC(HostBitmap* bitmap) {
  if (Fails(Kind::kCreateDc, __func__)) {
    return nullptr;
  }
  NEXT(HostCreateBitmapDC);
  return next(bitmap);
}

void HostDeleteBitmapDC(HostDrawingContext context) {
  NEXT(HostDeleteBitmapDC);
  next(context);
}

int32_t HostCombineBitmap(HostBitmap* destination, int32_t x, int32_t y, uint32_t width, uint32_t height,
                          const HostBitmap* source, int32_t source_x, int32_t source_y, uint32_t mode) {
  if (Fails(Kind::kCombine, __func__)) {
    return ERR_NO_BITMAP;
  }
  NEXT(HostCombineBitmap);
  return next(destination, x, y, width, height, source, source_x, source_y, mode);
}

int32_t HostHistogram(const HostBitmap* bitmap, uint32_t* counters, uint32_t count, uint32_t flags) {
  if (Fails(Kind::kHistogram, __func__)) {
    return ERR_NO_BITMAP;
  }
  NEXT(HostHistogram);
  return next(bitmap, counters, count, flags);
}

int32_t HostAdjustBitmap(HostBitmap* bitmap, int32_t amount) {
  if (Fails(Kind::kAdjust, __func__)) {
    return ERR_NO_MEMORY;
  }
  NEXT(HostAdjustBitmap);
  return next(bitmap, amount);
}

HostPalette HostCreatePaintPalette(HostDrawingContext context, const HostBitmap* bitmap) {
  if (Fails(Kind::kCreatePalette, __func__)) {
    return nullptr;
  }
  NEXT(HostCreatePaintPalette);
  return next(context, bitmap);
}

int32_t HostPaintBitmap(HostDrawingContext context, const HostBitmap* bitmap, const HostRect* source,
                        const HostRect* source_clip, const HostRect* destination,
                        const HostRect* destination_clip, uint32_t operation) {
  if (Fails(Kind::kPaint, __func__)) {
    return ERR_INVALID_PARAMETER;
  }
  NEXT(HostPaintBitmap);
  return next(context, bitmap, source, source_clip, destination, destination_clip, operation);
}

int32_t HostPaintBitmapKeyed(HostDrawingContext context, const HostBitmap* bitmap, const HostRect* source,
                             const HostRect* source_clip, const HostRect* destination,
                             const HostRect* destination_clip, uint32_t opacity, uint32_t reserved1,
                             uint32_t reserved2, uint32_t reserved3, uint32_t reserved4, uint32_t reserved5,
                             uint32_t reserved6, uint32_t reserved7, uint32_t transparent, uint32_t reserved8,
                             uint32_t reserved9, uint32_t operation) {
  if (Fails(Kind::kPaint, __func__)) {
    return ERR_INVALID_PARAMETER;
  }
  NEXT(HostPaintBitmapKeyed);
  return next(context, bitmap, source, source_clip, destination, destination_clip, opacity, reserved1,
              reserved2, reserved3, reserved4, reserved5, reserved6, reserved7, transparent, reserved8,
              reserved9, operation);
}

int32_t HostSaveMemory(HostGlobalMemory* block, const HostBitmap* bitmap, uint32_t format, uint32_t bits,
                       int32_t quality_factor, uint64_t* size, const HostSaveOptionsRecord* options) {
  if (Fails(Kind::kSaveMemory, __func__)) {
    *block = nullptr;
    *size = 0;
    return FaultStatus();
  }
  NEXT(HostSaveMemory);
  return next(block, bitmap, format, bits, quality_factor, size, options);
}

int32_t HostVecSaveMemory(HostGlobalMemory* block, const HostVector* vector, uint32_t format, uint64_t* size,
                          const HostSaveOptionsRecord* options) {
  if (Fails(Kind::kSaveMemory, __func__)) {
    *block = nullptr;
    *size = 0;
    return FaultStatus();
  }
  NEXT(HostVecSaveMemory);
  return next(block, vector, format, size, options);
}

void HostGlobalFree(HostGlobalMemory block, int32_t line, const wchar_t* unit) {
  NEXT(HostGlobalFree);
  next(block, line, unit);
}

void* GlobalLock(HostGlobalMemory block) {
  if (Fails(Kind::kGlobalLock, __func__)) {
    return nullptr;
  }
  NEXT(GlobalLock);
  return next(block);
}

int32_t HostVecLoadMemory(const void* data, HostVector* vector, uint64_t size, HostLoadFlagsRecord* options,
                          uint32_t reserved) {
  if (Fails(Kind::kVecLoad, __func__)) {
    return ERR_FILE_FORMAT;
  }
  NEXT(HostVecLoadMemory);
  return next(data, vector, size, options, reserved);
}

void HostVecFree(HostVector* vector) {
  NEXT(HostVecFree);
  next(vector);
}

int32_t HostVecAddLayer(HostVector* vector, const ObjectLayerRecord* record, HostVectorLayer* layer,
                        uint32_t flags) {
  if (Fails(Kind::kVecAdd, __func__)) {
    return ERR_NO_MEMORY;
  }
  NEXT(HostVecAddLayer);
  return next(vector, record, layer, flags);
}

int32_t HostVecSetActiveLayer(HostVector* vector, const HostVectorLayer* layer) {
  if (Fails(Kind::kVecAdd, __func__)) {
    return ERR_INVALID_PARAMETER;
  }
  NEXT(HostVecSetActiveLayer);
  return next(vector, layer);
}

int32_t HostVecAddObject(HostVector* vector, uint32_t reserved1, uint32_t kind,
                         const VectorObjectRecord* object, uint32_t reserved2) {
  if (Fails(Kind::kVecAdd, __func__)) {
    return ERR_NO_MEMORY;
  }
  NEXT(HostVecAddObject);
  return next(vector, reserved1, kind, object, reserved2);
}

int32_t HostVecGetBounds(const HostVector* vector, uint32_t reserved1, HostRect* bounds, uint32_t reserved2) {
  if (Fails(Kind::kVecExtents, __func__)) {
    return ERR_NO_MEMORY;
  }
  NEXT(HostVecGetBounds);
  return next(vector, reserved1, bounds, reserved2);
}

int32_t HostVecGetExtents(const HostVector* vector, double smallest[3], double largest[3]) {
  if (Fails(Kind::kVecExtents, __func__)) {
    return ERR_NO_MEMORY;
  }
  NEXT(HostVecGetExtents);
  return next(vector, smallest, largest);
}

int32_t HostVecPaint(HostDrawingContext context, HostVector* vector, int32_t width, int32_t height,
                     uint32_t reserved1, uint32_t reserved2, const HostRect* rectangle, uint32_t reserved3,
                     uint32_t reserved4) {
  if (Fails(Kind::kVecPaint, __func__)) {
    return ERR_NO_MEMORY;
  }
  NEXT(HostVecPaint);
  return next(context, vector, width, height, reserved1, reserved2, rectangle, reserved3, reserved4);
}

void HostVecApplyTransform(HostVector* vector) {
  NEXT(HostVecApplyTransform);
  next(vector);
}

int32_t HostVecCopy(HostVector* target, const HostVector* source, uint32_t flags) {
  if (Fails(Kind::kVecCopy, __func__)) {
    return FaultStatus();
  }
  NEXT(HostVecCopy);
  return next(target, source, flags);
}

int32_t TextOutA(HostDrawingContext context, int32_t x, int32_t y, const char* text, int32_t length) {
  if (Fails(Kind::kTextOut, __func__)) {
    return 0;
  }
  NEXT(TextOutA);
  return next(context, x, y, text, length);
}

HostPalette SelectPalette(HostDrawingContext context, HostPalette palette, int32_t background) {
  if (Fails(Kind::kContext, __func__)) {
    return nullptr;
  }
  NEXT(SelectPalette);
  return next(context, palette, background);
}

uint32_t RealizePalette(HostDrawingContext context) {
  if (Fails(Kind::kContext, __func__)) {
    return UINT32_MAX;
  }
  NEXT(RealizePalette);
  return next(context);
}

int32_t SaveDC(HostDrawingContext context) {
  if (Fails(Kind::kContext, __func__)) {
    return 0;
  }
  NEXT(SaveDC);
  return next(context);
}

int32_t RestoreDC(HostDrawingContext context, int32_t saved) {
  if (Fails(Kind::kContext, __func__)) {
    return 0;
  }
  NEXT(RestoreDC);
  return next(context, saved);
}

int32_t MessageBoxA(void* owner, const char* text, const char* caption, uint32_t flags) {
  NEXT(MessageBoxA);
  return next(owner, text, caption, flags);
}

void OutputDebugStringA(const char* text) {
  NEXT(OutputDebugStringA);
  next(text);
}

int32_t _waccess(const wchar_t* path, int32_t mode) {
  if (Fails(Kind::kAccess, __func__)) {
    return -1;
  }
  NEXT(_waccess);
  return next(path, mode);
}

}  // extern "C"
