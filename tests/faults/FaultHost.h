// A host that fails on demand. The test executable defines the host's operations and the global allocation
// functions itself; they come before those of libTaviHost and of the language's library, count what the
// library under test asks for, let the chosen call fail, and hand all others on.
//
// Only calls that the library under test makes are counted and failed: what the host does inside one of its
// own operations is not, except for Kind::kHostNew.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "TaviStatus.h"

namespace tavi::faults {

enum class Kind : uint8_t {
  kAlloc,           // HostAllocMem, HostAllocTemp, HostReallocMem give null
  kNew,             // operator new of the library: throws, or gives null in its non-throwing forms
  kHostNew,         // operator new inside a host operation
  kOpen,            // HostFileOpen gives -1
  kReadShort,       // HostFileRead moves one byte less than it could
  kReadNothing,     // HostFileRead moves nothing
  kWriteNothing,    // HostFileWrite and HostFileWriteHuge move nothing
  kSeek,            // HostFileSeek leaves the position and gives -1
  kCreateBitmap,    // HostCreateBitmap gives ERR_NO_MEMORY and an empty record
  kCreateDc,        // HostCreateBitmapDC gives null
  kCombine,         // HostCombineBitmap gives ERR_NO_BITMAP
  kHistogram,       // HostHistogram gives ERR_NO_BITMAP
  kAdjust,          // HostAdjustBitmap gives ERR_NO_MEMORY
  kPaint,           // HostPaintBitmap and HostPaintBitmapKeyed give ERR_INVALID_PARAMETER
  kDefaultPalette,  // HostDefaultPalette gives null
  kCreatePalette,   // HostCreatePalette and HostCreatePaintPalette give null
  kAccess,          // _waccess does not find the file
  kLoadMemory,      // HostLoadMemory gives ERR_FILE_FORMAT and an empty record
  kIdentify,        // HostFileInfoMemory gives ERR_NOT_SUPPORTED
  kMerge,           // HostColorMerge gives ERR_NO_MEMORY and an empty record
  kAttach,          // HostAttachBitmapData gives ERR_NO_BITMAP
  kWrite,           // HostFileWrite and HostFileWriteHuge move one byte less than they could
  kSaveMemory,      // HostSaveMemory and HostVecSaveMemory give the fault's status and no block
  kGlobalLock,      // GlobalLock gives null
  kVecLoad,         // HostVecLoadMemory gives ERR_FILE_FORMAT and leaves the vector empty
  kVecAdd,  // HostVecAddLayer and HostVecAddObject give ERR_NO_MEMORY, HostVecSetActiveLayer ERR_INVALID_PARAMETER
  kVecPaint,    // HostVecPaint gives ERR_NO_MEMORY
  kVecCopy,     // HostVecCopy gives the fault's status
  kVecExtents,  // HostVecGetBounds and HostVecGetExtents give ERR_NO_MEMORY
  kTextOut,     // TextOutA gives 0 and writes nothing
  kContext,  // SaveDC and RestoreDC give 0, SelectPalette null, RealizePalette its failure; nothing is changed
};

inline constexpr Kind kAllKinds[] = {
    Kind::kAlloc,         Kind::kNew,          Kind::kHostNew,    Kind::kOpen,         Kind::kReadShort,
    Kind::kReadNothing,   Kind::kWriteNothing, Kind::kSeek,       Kind::kCreateBitmap, Kind::kCreateDc,
    Kind::kCombine,       Kind::kHistogram,    Kind::kAdjust,     Kind::kPaint,        Kind::kDefaultPalette,
    Kind::kCreatePalette, Kind::kAccess,       Kind::kLoadMemory, Kind::kIdentify,     Kind::kMerge,
    Kind::kAttach,        Kind::kWrite,        Kind::kSaveMemory, Kind::kGlobalLock,   Kind::kVecLoad,
    Kind::kVecAdd,        Kind::kVecPaint,     Kind::kVecCopy,    Kind::kVecExtents,   Kind::kTextOut,
    Kind::kContext};

const char* Name(Kind kind);

// Whether the library has called that operation of the host so far, which can be made to fail.
bool HasMet(const std::string& operation);

// The operations that operations.txt says that of.
std::vector<std::string> ListedOperations(const std::string& what);

// Which call fails: the nth of its kind, counted from 1, and every later one when `lasting` is set.
struct Fault {
  Kind kind;
  uint64_t nth;
  bool lasting;
  int32_t status = ERR_NO_MEMORY;  // what the operations of kSaveMemory and kVecCopy give
};

// What the library asked for while a Watch was alive.
struct Demand {
  uint64_t largest_block = 0;  // bytes, of one request to the host or to operator new
  uint64_t total = 0;          // bytes of all requests
  int64_t blocks_left = 0;     // operator new less operator delete
  uint64_t files_closed = 0;   // calls of HostFileClose
  uint64_t writes = 0;         // calls of HostFileWrite and HostFileWriteHuge
};

// Lets one fault happen during its life. Not to be nested.
class Injection {
 public:
  explicit Injection(const Fault& fault);
  ~Injection();
  Injection(const Injection&) = delete;
  Injection& operator=(const Injection&) = delete;
  // Whether the fault has happened.
  bool happened() const;
};

// Records the demand for memory during its life. Not to be nested.
class Watch {
 public:
  Watch();
  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  Demand demand() const;
};

// Marks code of the test that the library calls back: nothing in it is counted or failed.
class Outside {
 public:
  Outside();
  ~Outside();
  Outside(const Outside&) = delete;
  Outside& operator=(const Outside&) = delete;
};

}  // namespace tavi::faults
