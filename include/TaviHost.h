/*
 * TaviHost.h: what the TaviNitf library needs of a host.
 *
 * The library stores no bitmaps, opens no files and paints nothing itself: it calls the operations below,
 * and nothing else from outside the language's standard library. libTaviHost provides all of them; any other
 * library that does may be put in its place.
 *
 * Conventions
 *   - Status: int32_t, SUCCESS (1) or a negative code of TaviStatus.h. Operations without a status return
 *     nothing and cannot be observed to fail; they accept null and invalid records and then do nothing.
 *   - Sizes in bytes are uint64_t, file handles and positions int64_t; widths, heights, bits, rows and flags
 *     are 32-bit. `line` and `unit` name the caller's source line and unit for the leak report; unit names
 * are static texts and may be null.
 *   - Colours are 0x00BBGGRR. Palette entries are blue, green, red, reserved.
 *   - Paths are wide text (UTF-16 on Windows, UTF-32 elsewhere; names go to the file system as UTF-8 there).
 *   - All operations run on the caller's thread. Different records, files and contexts may be used from
 *     different threads at the same time; one and the same object may not.
 *
 * Compiles as C11 and as C++20.
 */
#ifndef TAVI_HOST_H
#define TAVI_HOST_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#include "TaviStatus.h"

#if defined(_WIN32)
#if defined(TAVI_HOST_BUILD)
#define TAVI_HOST_API __declspec(dllexport)
#else
#define TAVI_HOST_API __declspec(dllimport)
#endif
#else
#define TAVI_HOST_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define TAVI_STATIC_ASSERT(condition) static_assert(condition, #condition)
extern "C" {
#else
#define TAVI_STATIC_ASSERT(condition) _Static_assert(condition, #condition)
#endif

/* ---- Records ------------------------------------------------------------------------------------------ */

/* One palette entry. An array of entries is what the palette operations exchange. */
typedef struct HostPaletteEntry {
  uint8_t blue;
  uint8_t green;
  uint8_t red;
  uint8_t reserved;
} HostPaletteEntry;

/* A rectangle in pixels: left and top inside, right and bottom just outside. Right below left mirrors. */
typedef struct HostRect {
  int32_t left;
  int32_t top;
  int32_t right;
  int32_t bottom;
} HostRect;

/*
 * The host's bitmap record, 212 bytes. Callers read and set the named fields; the bytes named `host…` belong
 * to the host. A record is made valid by HostInitBitmap or HostCreateBitmap, may be moved by plain copy (the
 * copy then owns the pixels), and is freed with HostFreeBitmap when bit 0 of `flags` is set.
 *
 * Pixels: bytes_per_line = ((bits x width + 31) >> 5) x 4. Pixels of fewer than 8 bits are packed, the most
 * significant first; 12-bit pixels are packed low nibble first; 16-bit samples may be big-endian (as a file
 * holds them) or native.
 */
typedef struct HostBitmap {
  uint8_t host0[20];
  uint32_t width;          /* pixels */
  uint32_t height;         /* pixels */
  uint32_t bits;           /* bits per pixel: 1 to 8, 12, 16, 24, 32, 48 or 64 */
  uint32_t bytes_per_line; /* bytes from one row to the next */
  uint8_t host36[12];
  uint8_t flags; /* bit 0: the record holds memory to free: pixels, or a palette of its own */
  uint8_t host49[3];
  uint32_t color_count; /* palette entries in use; 0 without a palette */
  uint8_t host56[8];
  uint32_t view_perspective; /* 1: row 0 is the top of the picture; 4: row 0 is the bottom row */
  uint32_t order;            /* 0: palette index, or red first; 1: blue, green, red; 2: grey */
  uint8_t host72[140];
} HostBitmap;

TAVI_STATIC_ASSERT(sizeof(HostPaletteEntry) == 4);
TAVI_STATIC_ASSERT(sizeof(HostRect) == 16);
TAVI_STATIC_ASSERT(sizeof(HostBitmap) == 212);
TAVI_STATIC_ASSERT(offsetof(HostBitmap, width) == 20);
TAVI_STATIC_ASSERT(offsetof(HostBitmap, height) == 24);
TAVI_STATIC_ASSERT(offsetof(HostBitmap, bits) == 28);
TAVI_STATIC_ASSERT(offsetof(HostBitmap, bytes_per_line) == 32);
TAVI_STATIC_ASSERT(offsetof(HostBitmap, flags) == 48);
TAVI_STATIC_ASSERT(offsetof(HostBitmap, color_count) == 52);
TAVI_STATIC_ASSERT(offsetof(HostBitmap, view_perspective) == 64);
TAVI_STATIC_ASSERT(offsetof(HostBitmap, order) == 68);

/* Load options, 48 bytes, filled by HostLoadOptions. The filter entry points take the same record and read
   its flags word only. */
typedef struct HostLoadFlagsRecord {
  uint8_t host0[12];
  uint32_t flags; /* see TaviNitf.h for the bits that the filter entry points read; 0x4000 and 0x8000: see
                     HostLoadMemory */
  uint8_t host16[20];
  uint32_t red_band; /* component, from 0, that becomes the red channel under 0x8000; the others likewise */
  uint32_t green_band;
  uint32_t blue_band;
} HostLoadFlagsRecord;

TAVI_STATIC_ASSERT(sizeof(HostLoadFlagsRecord) == 48);
TAVI_STATIC_ASSERT(offsetof(HostLoadFlagsRecord, flags) == 12);
TAVI_STATIC_ASSERT(offsetof(HostLoadFlagsRecord, red_band) == 36);
TAVI_STATIC_ASSERT(offsetof(HostLoadFlagsRecord, green_band) == 40);
TAVI_STATIC_ASSERT(offsetof(HostLoadFlagsRecord, blue_band) == 44);

/* What is known of a picture file, 2184 bytes. Byte-packed: `memory_size` stands unaligned. */
#pragma pack(push, 1)
typedef struct HostFileInfo {
  uint8_t host0[4];
  uint32_t format; /* the host's number of the file format; 248 is this one */
  uint8_t host8[1024];
  uint32_t width;  /* pixels */
  uint32_t height; /* pixels */
  uint32_t bits;   /* bits per pixel */
  uint8_t host1044[8];
  uint64_t memory_size; /* bytes of the picture in memory, rows padded to four bytes */
  uint8_t host1060[40];
  uint32_t host1100; /* 1 */
  uint32_t host1104; /* 1 */
  uint8_t host1108[1076];
} HostFileInfo;
#pragma pack(pop)

TAVI_STATIC_ASSERT(sizeof(HostFileInfo) == 2184);
TAVI_STATIC_ASSERT(offsetof(HostFileInfo, format) == 4);
TAVI_STATIC_ASSERT(offsetof(HostFileInfo, width) == 1032);
TAVI_STATIC_ASSERT(offsetof(HostFileInfo, height) == 1036);
TAVI_STATIC_ASSERT(offsetof(HostFileInfo, bits) == 1040);
TAVI_STATIC_ASSERT(offsetof(HostFileInfo, memory_size) == 1052);
TAVI_STATIC_ASSERT(offsetof(HostFileInfo, host1100) == 1100);
TAVI_STATIC_ASSERT(offsetof(HostFileInfo, host1104) == 1104);

/* Save options, 1909 bytes, byte-packed, filled by HostSaveOptions. */
#pragma pack(push, 1)
typedef struct HostSaveOptionsRecord {
  uint32_t size; /* 1909 */
  uint8_t host4[1901];
  uint8_t flags1905; /* bit 0 is set by callers for every save; this host has no use for it */
  uint8_t host1906[3];
} HostSaveOptionsRecord;
#pragma pack(pop)

TAVI_STATIC_ASSERT(sizeof(HostSaveOptionsRecord) == 1909);
TAVI_STATIC_ASSERT(offsetof(HostSaveOptionsRecord, flags1905) == 1905);

/*
 * The host's vector drawing record, 1024 bytes. Zeroed bytes are a valid empty record. The two words are set by
 * hand around HostVecInit; this host carries them along without use. A drawing belongs to one record: records are
 * duplicated with HostVecCopy, and freed with HostVecFree when HostVecIsEmpty returns 0.
 */
typedef struct HostVector {
  uint8_t host0[844];
  uint32_t word844; /* 32768, set behind HostVecInit */
  uint8_t host848[128];
  uint64_t word976; /* 8194, set before HostVecInit */
  uint8_t host984[40];
} HostVector;

TAVI_STATIC_ASSERT(sizeof(HostVector) == 1024);
TAVI_STATIC_ASSERT(offsetof(HostVector, word844) == 844);
TAVI_STATIC_ASSERT(offsetof(HostVector, word976) == 976);

/* A layer to add: 144 bytes. */
typedef struct ObjectLayerRecord {
  uint32_t size;     /* 144 */
  uint16_t name[64]; /* UTF-16 units, terminated */
  uint32_t word132;  /* 1 */
  uint32_t word136;  /* 0 */
  uint32_t word140;  /* 0 */
} ObjectLayerRecord;

TAVI_STATIC_ASSERT(sizeof(ObjectLayerRecord) == 144);
TAVI_STATIC_ASSERT(offsetof(ObjectLayerRecord, name) == 4);
TAVI_STATIC_ASSERT(offsetof(ObjectLayerRecord, word132) == 132);

/* Names a layer of one vector. */
typedef struct HostVectorLayer {
  uint32_t index;
  uint32_t reserved;
} HostVectorLayer;

/* The objects that HostVecAddObject takes. 64-bit members stand on 4-byte places. */
#pragma pack(push, 4)
typedef struct VectorPoint {
  double x;
  double y;
  double z;
  uint32_t word24; /* 0 */
} VectorPoint;

typedef struct PenRecord {
  uint32_t size;   /* 68 */
  uint32_t style;  /* 0 solid, 1 dashed, 2 dotted, 3 dash-dot, 4 dash-dot-dot, 5 none */
  uint32_t width;  /* units; 0 is the thinnest line there is */
  uint32_t word12; /* 0 */
  uint32_t color;  /* 0x00BBGGRR */
  uint8_t host20[48];
} PenRecord;

typedef struct BrushRecord {
  uint32_t size;  /* 220 */
  uint32_t style; /* 0 none: the area stays open (the default), 1 solid, 2 hatched */
  uint32_t color; /* 0x00BBGGRR */
  uint32_t hatch; /* 1 horizontal, 2 vertical, 3 rising, 4 falling, 5 cross, 6 diagonal cross */
  uint8_t host16[12];
  uint8_t zero28[16]; /* zero */
  uint8_t host44[176];
} BrushRecord;

enum VectorObjectKind { VECTOR_LINE = 2, VECTOR_RECTANGLE = 3, VECTOR_POLYGON = 6, VECTOR_ELLIPSE = 7 };

#define VECTOR_OBJECT_HEAD                  \
  uint32_t size; /* of the kind's record */ \
  uint32_t kind;                            \
  uint8_t host8[24]

typedef struct VectorLineRecord { /* 156 bytes */
  VECTOR_OBJECT_HEAD;
  VectorPoint first;
  VectorPoint second;
  PenRecord pen;
} VectorLineRecord;

typedef struct VectorRectangleRecord { /* 376 bytes */
  VECTOR_OBJECT_HEAD;
  VectorPoint corner;
  VectorPoint opposite;
  PenRecord pen;
  BrushRecord brush;
} VectorRectangleRecord;

typedef struct VectorPolygonRecord { /* 336 bytes */
  VECTOR_OBJECT_HEAD;
  const VectorPoint* points; /* the caller's; copied */
  uint32_t count;
  PenRecord pen;
  BrushRecord brush;
  uint32_t word332;
} VectorPolygonRecord;

typedef struct VectorEllipseRecord { /* 364 bytes */
  VECTOR_OBJECT_HEAD;
  VectorPoint centre;
  PenRecord pen;
  BrushRecord brush;
  double radius_x;
  double radius_y;
} VectorEllipseRecord;

/* Any of them; HostVecInitObject fills all of its bytes. */
typedef union VectorObjectRecord {
  struct {
    VECTOR_OBJECT_HEAD;
  } head;
  VectorLineRecord line;
  VectorRectangleRecord rectangle;
  VectorPolygonRecord polygon;
  VectorEllipseRecord ellipse;
} VectorObjectRecord;
#pragma pack(pop)

TAVI_STATIC_ASSERT(sizeof(VectorPoint) == 28);
TAVI_STATIC_ASSERT(sizeof(PenRecord) == 68);
TAVI_STATIC_ASSERT(sizeof(BrushRecord) == 220);
TAVI_STATIC_ASSERT(offsetof(BrushRecord, zero28) == 28);
TAVI_STATIC_ASSERT(sizeof(VectorLineRecord) == 156);
TAVI_STATIC_ASSERT(offsetof(VectorLineRecord, first) == 32);
TAVI_STATIC_ASSERT(offsetof(VectorLineRecord, second) == 60);
TAVI_STATIC_ASSERT(offsetof(VectorLineRecord, pen) == 88);
TAVI_STATIC_ASSERT(sizeof(VectorRectangleRecord) == 376);
TAVI_STATIC_ASSERT(offsetof(VectorRectangleRecord, pen) == 88);
TAVI_STATIC_ASSERT(offsetof(VectorRectangleRecord, brush) == 156);
TAVI_STATIC_ASSERT(sizeof(VectorPolygonRecord) == 336);
TAVI_STATIC_ASSERT(offsetof(VectorPolygonRecord, points) == 32);
TAVI_STATIC_ASSERT(offsetof(VectorPolygonRecord, count) == 40);
TAVI_STATIC_ASSERT(offsetof(VectorPolygonRecord, pen) == 44);
TAVI_STATIC_ASSERT(offsetof(VectorPolygonRecord, brush) == 112);
TAVI_STATIC_ASSERT(sizeof(VectorEllipseRecord) == 364);
TAVI_STATIC_ASSERT(offsetof(VectorEllipseRecord, pen) == 60);
TAVI_STATIC_ASSERT(offsetof(VectorEllipseRecord, brush) == 128);
TAVI_STATIC_ASSERT(offsetof(VectorEllipseRecord, radius_x) == 348);
TAVI_STATIC_ASSERT(offsetof(VectorEllipseRecord, radius_y) == 356);

/* A block of memory as HostSaveMemory and HostVecSaveMemory return it; GlobalLock yields its bytes. */
typedef struct HostGlobalMemoryObject* HostGlobalMemory;

/* A surface that painting goes to, and a palette object. Both opaque, owned by whoever asked for them. */
typedef struct HostDrawingContextObject* HostDrawingContext;
typedef struct HostPaletteObject* HostPalette;

/* The host's entry that decodes a compressed picture in memory (arguments as HostLoadMemory would take them:
   buffer, bitmap record, its size 212, bits or 0, order, bytes, load options, file information or null). */
typedef int32_t (*HostLoadMemoryEntry)(const void* buffer, HostBitmap* bitmap, uint64_t record_size,
                                       uint32_t bits, uint32_t order, uint64_t size,
                                       HostLoadFlagsRecord* options, HostFileInfo* information);

/* A hook that a load calls to learn the layout of a raw stream; `information` is an array of 64 zeroed 32-bit
   places that the hook fills: see HostSetLoadHook. The entry that installs one returns the hook that was in
   force. */
typedef int32_t (*HostLoadHook)(void* information, void* user);
typedef HostLoadHook (*HostSetLoadHookEntry)(HostLoadHook hook, void* user);

/* ---- Memory (TaviKernel) ------------------------------------------------------------------------------ */

/* A zero-filled block of count x size bytes, or null. Zero elements give a valid block. */
TAVI_HOST_API void* HostAllocMem(uint64_t count, uint64_t size, int32_t line, const wchar_t* unit);
/* Frees a block of HostAllocMem or HostReallocMem; null does nothing. */
TAVI_HOST_API void HostFreeMem(void* block, int32_t line, const wchar_t* unit);
/* Resizes a block, keeping its contents (new bytes are not defined); null makes one. Returns the block, or
   null when memory is short, and then the old block stays as it was. */
TAVI_HOST_API void* HostReallocMem(void* block, uint64_t size, int32_t line, const wchar_t* unit);
/* As HostAllocMem and HostFreeMem, for short-lived text buffers. */
TAVI_HOST_API void* HostAllocTemp(uint64_t count, uint64_t size, int32_t line, const wchar_t* unit);
TAVI_HOST_API void HostFreeTemp(void* block, int32_t line, const wchar_t* unit);
/* Copies between blocks that do not overlap; fills a block with one byte value. */
TAVI_HOST_API void HostMemCopy(void* destination, const void* source, uint64_t bytes);
TAVI_HOST_API void HostMemSet(void* destination, int32_t value, uint64_t bytes);
/* Announces an object to the leak report, and forgets it. Kinds: 3 global memory block, 4 object made with
   the language's own allocation, 5 raw block so made. No effect on results. */
TAVI_HOST_API void HostTrackAdd(int32_t kind, const void* object, int32_t line, const wchar_t* unit);
TAVI_HOST_API void HostTrackRemove(int32_t kind, const void* object, int32_t line, const wchar_t* unit);

/* ---- Limits (TaviKernel) ------------------------------------------------------------------------------ */

/*
 * What a file may ask for. Each limit keeps a small file from costing minutes or all memory; HostDescribeLimit tells
 * its name, its unit and its reason. Most grow with the data: what these earn comes on top of the limit's value. Values
 * hold for the whole process; they may be read and set by any thread at any time and count for what is asked from then
 * on.
 */
enum HostLimit {
  HOST_LIMIT_NONE = 0,
  HOST_LIMIT_PICTURE = 1,  /* bytes of one bitmap's pixels, and of what a decoder holds for it */
  HOST_LIMIT_DRAWINGS = 2, /* bytes of all drawings that were read from metafiles or copied and are alive */
  HOST_LIMIT_PAINT =
      3, /* pixels that the drawings painted into one context cover, as often as they do; 16 layers of
                              a larger bitmap, and 4096 for each object */
  HOST_LIMIT_CELLS = 4,  /* cells of one metafile's arrays, patterns and tiles; 32 for each byte */
  HOST_LIMIT_COPIES = 5, /* bytes of one metafile's copied segments; 16 for each byte */
  HOST_LIMIT_CURVES = 6, /* steps of work for one metafile's splines; 64 for each byte */
  HOST_LIMIT_SHAPES = 7, /* bytes of what one metafile draws; 96 for each byte */
  HOST_LIMIT_JPEG = 8,   /* samples of one JPEG stream; 1024 for each byte */
  HOST_LIMIT_SCANS =
      9, /* samples that the scans of one JPEG stream behind the first go over; 4096 for each byte */
  HOST_LIMIT_JPEG2000 =
      10, /* bytes of memory for one JPEG 2000 stream; 288 for each byte of the first MiB, 2560 for
                               each further one */
  HOST_LIMIT_FAX = 11, /* rows of one fax picture; 8 for each byte */
  HOST_LIMIT_STREAMS =
      12, /* pixels of the streams of one image; 8 for each pixel of the image, 1 for each byte */
  HOST_LIMIT_IMAGES = 13, /* pixels of the images of one file; 64 for each byte */
  HOST_LIMIT_COUNT = 13   /* limits are numbered from 1 to this */
};

/* All texts are static. */
typedef struct HostLimitRecord {
  const char* name;   /* one lower-case word, digits at most behind it: "picture" */
  const char* unit;   /* what the value counts: "bytes" */
  const char* reason; /* what is limited and why, in a line without a full stop */
  uint64_t preset;    /* the value until HostSetLimit changes it */
  int32_t status;     /* what a refusal ends in: ERR_NO_MEMORY or ERR_FILE_FORMAT */
} HostLimitRecord;

/* What is known of a limit; null for a number outside 1 to HOST_LIMIT_COUNT. */
TAVI_HOST_API const HostLimitRecord* HostDescribeLimit(uint32_t limit);
/* The value of a limit. Unknown numbers have the value 0 and cannot be set. A larger value lets more pass and takes no
   memory by itself; the largest number switches the limit off. */
TAVI_HOST_API void HostSetLimit(uint32_t limit, uint64_t value);
TAVI_HOST_API uint64_t HostGetLimit(uint32_t limit);
/* 1 when `asked` is no more than the value of the limit and `earned` together. Otherwise 0, and HostLimitHit of this
   thread yields the limit: whoever refuses asks here. */
TAVI_HOST_API int32_t HostWithinLimit(uint32_t limit, uint64_t asked, uint64_t earned);
/*
 * The limit that refused something last on this thread; HOST_LIMIT_NONE when none did since that was forgotten: by
 * HostForgetLimitHit; when an operation begins that limits bear on (HostCreateBitmap, HostLoadMemory, HostColorMerge,
 * and those that load, copy, paint or add to a vector); and when a block of HostAllocMem and its kind, or of global
 * memory, cannot be had. So behind a failure of one of these with the limit's own status (HostDescribeLimit) it was
 * the limit, and behind want of memory there is none.
 */
TAVI_HOST_API uint32_t HostLimitHit(void);
TAVI_HOST_API void HostForgetLimitHit(void);

/* ---- Files (TaviKernel) ------------------------------------------------------------------------------- */

/* Opens a file as raw bytes: flags 0x8000 with mode 0x100 for reading, flags 33538 (0x8302) with mode 128 to
   create or truncate for reading and writing. Returns a handle, or -1 when that fails; every operation
   accepts -1 and comes back short. Directories and other things that are no regular file fail to open. */
TAVI_HOST_API int64_t HostFileOpen(const wchar_t* name, uint32_t flags, uint32_t mode);
TAVI_HOST_API void HostFileClose(int64_t file);
/* Bytes moved; fewer than asked is how a caller detects the end of the file or a failure. */
TAVI_HOST_API uint64_t HostFileRead(int64_t file, void* buffer, uint64_t bytes);
TAVI_HOST_API uint64_t HostFileWrite(int64_t file, const void* buffer, uint64_t bytes);
TAVI_HOST_API uint64_t HostFileWriteHuge(int64_t file, const void* buffer, uint64_t bytes);
/* Moves to `offset` from the start (origin 0), the current position (1) or the end (2) and returns the new
   position. A position before the start is refused: the position stays, and the result is -1. */
TAVI_HOST_API int64_t HostFileSeek(int64_t file, int64_t offset, int32_t origin);

/* ---- Bitmaps (TaviKernel) ----------------------------------------------------------------------------- */

/* Makes the record valid and empty, with no pixel memory. `record_size` is 212, here and below. */
TAVI_HOST_API void HostInitBitmap(HostBitmap* bitmap, uint64_t record_size, uint32_t width, uint32_t height,
                                  uint32_t bits);
/*
 * Makes a zeroed bitmap. Memory flags 1 allocate its pixels; flags 2 make a bitmap whose pixels a caller
 * attaches with HostAttachBitmapData, and then the sides may be 0. `palette` is null for the default (a
 * linear grey ramp up to 8 bits) or a table that is read up to 2^bits entries, 256 at most. `data` and
 * `data_size` attach pixels at once with flags 2, and are otherwise null and 0.
 * Status: ERR_INVALID_BPP for another depth than those of HostBitmap; ERR_INVALID_PARAMETER for a null
 * record, another record size, unknown flags, or a side that is 0 or above 2^31 - 1; ERR_NO_MEMORY when the
 * pixels exceed the limit of HostSetBitmapLimit or cannot be had. After a failure the record is empty.
 */
TAVI_HOST_API int32_t HostCreateBitmap(HostBitmap* bitmap, uint64_t record_size, uint32_t memory_flags,
                                       uint32_t width, uint32_t height, uint32_t bits, uint32_t order,
                                       const HostPaletteEntry* palette, uint32_t view_perspective, void* data,
                                       uint64_t data_size);
/* Frees the pixels and the palette and leaves the record empty. Attached pixels stay with their owner. */
TAVI_HOST_API void HostFreeBitmap(HostBitmap* bitmap);
/* Sets all pixels to zero. */
TAVI_HOST_API void HostClearBitmap(HostBitmap* bitmap);
/* Fills all pixels with the colour: its nearest palette entry up to 8 bits, its luminance in grey depths. */
TAVI_HOST_API void HostFillBitmap(HostBitmap* bitmap, uint32_t color);
/* Bracket a run of HostGetBitmapRow calls. */
TAVI_HOST_API void HostAccessBitmap(HostBitmap* bitmap);
TAVI_HOST_API void HostReleaseBitmap(HostBitmap* bitmap);
/* Copy one row, in storage order, out of or into the bitmap: `bytes` of it, never more than bytes_per_line. A
   row outside the bitmap copies nothing. */
TAVI_HOST_API void HostGetBitmapRow(const HostBitmap* bitmap, void* buffer, uint32_t row, uint64_t bytes);
TAVI_HOST_API void HostPutBitmapRow(HostBitmap* bitmap, const void* buffer, uint32_t row, uint64_t bytes);
/* Read or write palette entries `first` to `first + count - 1`; entries beyond the palette are left out. */
TAVI_HOST_API void HostGetBitmapColors(const HostBitmap* bitmap, uint32_t first, uint32_t count,
                                       HostPaletteEntry* entries);
TAVI_HOST_API void HostPutBitmapColors(HostBitmap* bitmap, uint32_t first, uint32_t count,
                                       const HostPaletteEntry* entries);
/* The fixed palette of a depth of 1 to 8 bits: always 256 entries, the first 2^bits a linear grey ramp, the
   rest white. To be freed with HostFreeMem. Null for any other depth, or without memory. */
TAVI_HOST_API HostPaletteEntry* HostDefaultPalette(uint32_t bits);
/* A palette object of copies of `count` entries (256 at most), or null. */
TAVI_HOST_API HostPalette HostCreatePalette(const HostPaletteEntry* entries, uint32_t count);
/* Gives the bitmap a copy of the palette. */
TAVI_HOST_API void HostSetBitmapPalette(HostBitmap* bitmap, HostPalette palette);
/* Releases a palette object. */
TAVI_HOST_API void HostDeleteObject(HostPalette object, int32_t line, const wchar_t* unit);
/* Attaches a caller's pixels, which stay the caller's and must outlive their use. Status: ERR_NO_BITMAP for
   an invalid record or one that allocates its own, ERR_INVALID_PARAMETER when `size` is below the rows'
   bytes. */
TAVI_HOST_API int32_t HostAttachBitmapData(HostBitmap* bitmap, void* buffer, uint64_t size);
/* A drawing context that draws into the bitmap, or null. The bitmap must outlive it. */
TAVI_HOST_API HostDrawingContext HostCreateBitmapDC(HostBitmap* bitmap);
TAVI_HOST_API void HostDeleteBitmapDC(HostDrawingContext context);

/* ---- Coded data (TaviFile) ---------------------------------------------------------------------------- */

/* Fills a load options record (record_size is 48) with the defaults: no flags, bands 0, 1 and 2. */
TAVI_HOST_API void HostLoadOptions(HostLoadFlagsRecord* record, uint64_t record_size);
/*
 * Decodes a complete compressed picture of `size` bytes in memory into the record (record_size is 212),
 * which must be valid or zeroed; it is given a new bitmap, and pixels that it holds are freed first. JPEG of
 * 8 and 12 bits, lossless JPEG of 2 to 16 bits, and JPEG 2000 (codestream or JP2) of 1 to 16 bits are told
 * apart by their first bytes; raw fax data by the hook of HostSetLoadHook.
 *
 * The bitmap: one channel for a picture of one or two components, else three. Samples of up to 8 bits take a
 * byte (a grey picture of fewer bits keeps its values and has a grey ramp over them as its palette; colours
 * are stretched to 8 bits), deeper ones 16 native bits with their values as they are coded; signed samples
 * are moved up by half their range. View perspective 1. `bits` is 0 for the coded depth, or a depth of
 * HostBitmap to convert the picture to. `order` is 0, 1 or 2 as in HostBitmap, or 4 for 2 with one channel
 * and 1 with three.
 *
 * Colour: YCbCr and inks are converted to RGB where the stream says so or, failing that, where its kind has
 * them by custom. Option 0x4000: three components are red, green and blue unless the stream itself says otherwise.
 * Option 0x8000: red_band, green_band and blue_band (limited to the last component) are taken as they are,
 * after a codestream's own component transform. `options` may be null for the defaults. `information`,
 * unless null, is filled as by HostFileInfoMemory.
 *
 * Status: ERR_NULL_ARGUMENT for a null buffer or record; ERR_INVALID_PARAMETER for another record size or
 * order, ERR_INVALID_BPP for another depth; ERR_NOT_SUPPORTED for a stream of unknown kind or a variety that
 * the decoders do not have; ERR_FILE_READ for one that ends within its header, or ends early where its
 * decoder cannot do without the rest; ERR_FILE_FORMAT for damage, or a size that the bytes cannot hold;
 * ERR_NO_MEMORY for one above the limit of HostSetBitmapLimit; what the hook returned. A stream that is
 * damaged or cut short in a way that its decoder only warns of loads. When a load fails the record is
 * empty; arguments that are refused leave it alone.
 */
TAVI_HOST_API int32_t HostLoadMemory(const void* buffer, HostBitmap* bitmap, uint64_t record_size,
                                     uint32_t bits, uint32_t order, uint64_t size,
                                     HostLoadFlagsRecord* options, HostFileInfo* information);
/*
 * Installs the hook that the loads of this thread call first, with `user`, and returns the one that was in
 * force; null installs none. The hook answers in the 32-bit places of its information: the second the format,
 * 66 for fax group 3 of one dimension, 67 of two, 68 for group 4; the third the width and the fourth the
 * height in pixels; the fifth 1, the eighth 0, the tenth 1. The data then are decoded as one picture of 1
 * bit: a white element becomes 1, and so does what lies behind the end of the data. Both bit orders and data
 * with and without end-of-line codes are found out. A bitmap of the record that has this very shape keeps its
 * palette. The hook's own failure is handed on as the load's status.
 */
TAVI_HOST_API HostLoadHook HostSetLoadHook(HostLoadHook hook, void* user);
/*
 * Identifies a stream and fills the record (record_size is 2184; all else in it is zeroed): format 10 for
 * 8-bit JPEG, 26 for 12-bit JPEG, 11 for lossless JPEG, 5 for JPEG 2000, 62 for a binary CGM; width, height
 * and bits of the bitmap that it decodes to, 0 for a CGM; and memory_size. Both reserved arguments are 0.
 * Status: ERR_NULL_ARGUMENT for a null pointer; ERR_INVALID_PARAMETER for another record size;
 * ERR_NOT_SUPPORTED for an unknown stream, also one of size 0; ERR_FILE_READ and ERR_FILE_FORMAT for one
 * whose header is cut short or makes no sense.
 */
TAVI_HOST_API int32_t HostFileInfoMemory(const void* buffer, HostFileInfo* information, uint64_t record_size,
                                         uint64_t size, uint32_t reserved1, uint32_t reserved2);
/* Fills a save options record (record_size is 1909) with the defaults. */
TAVI_HOST_API void HostSaveOptions(HostSaveOptionsRecord* record, uint64_t record_size);
/*
 * Encodes a bitmap as a JPEG stream into a new global memory block, which the caller releases with HostGlobalFree.
 * `format` 10: YCbCr, chroma subsampled; 182: RGB as it is (Adobe marker, transform 0). `bits` 8 is a grey picture,
 * 24 a colour one, whatever depth the bitmap has. `quality_factor` 2 is the best, 255 the coarsest. The picture's
 * sense is kept: the stream begins with its top row. `options` may be null.
 * Status: ERR_NULL_ARGUMENT for a null pointer; ERR_NO_BITMAP for a record without pixels; ERR_NOT_SUPPORTED for
 * another format, or sides above 65,500 pixels; ERR_INVALID_BPP; ERR_INVALID_QFACTOR; ERR_NO_MEMORY. A failure leaves
 * `block` null and `size` 0.
 */
TAVI_HOST_API int32_t HostSaveMemory(HostGlobalMemory* block, const HostBitmap* bitmap, uint32_t format,
                                     uint32_t bits, int32_t quality_factor, uint64_t* size,
                                     const HostSaveOptionsRecord* options);
/* Releases a block of HostSaveMemory or HostVecSaveMemory; null does nothing. */
TAVI_HOST_API void HostGlobalFree(HostGlobalMemory block, int32_t line, const wchar_t* unit);
/*
 * Reads a binary CGM of `size` bytes into the vector, which must be initialised or zeroed and empty. `options` may be
 * null and is not looked at; the last argument is 0. Elements that make no sense lose themselves only.
 * Status: ERR_NULL_ARGUMENT for a null vector; ERR_FILE_FORMAT for null or empty data, data that are no CGM, or a
 * broken structure; ERR_NO_MEMORY when memory is short or a picture asks for more than its bytes justify. When a load
 * fails the vector stays empty.
 */
TAVI_HOST_API int32_t HostVecLoadMemory(const void* data, HostVector* vector, uint64_t size,
                                        HostLoadFlagsRecord* options, uint32_t reserved);
/*
 * Writes the drawing as a binary CGM of version 1 (format 62) into a new global memory block, which the caller releases
 * with HostGlobalFree. Coordinates are whole pixels, y downward; the drawing's bounds are mapped to the viewport when
 * one was set. Without one a drawing read from a real-valued metafile becomes a real-valued one again. Dashes, ends and
 * joins of lines that version 1 has no word for are told in elements of version 3, which readers of version 1 skip.
 * `options` may be null. Status: ERR_NULL_ARGUMENT; ERR_INVALID_VECTOR for an empty vector; ERR_NOT_SUPPORTED for
 * another format; ERR_NO_MEMORY. A failure leaves `block` null and `size` 0.
 */
TAVI_HOST_API int32_t HostVecSaveMemory(HostGlobalMemory* block, const HostVector* vector, uint32_t format,
                                        uint64_t* size, const HostSaveOptionsRecord* options);
/* The codec libraries in use, such as "libtiff 4.5.0": static texts, null past the last. */
TAVI_HOST_API const char* HostCodecVersion(uint32_t index);

/* ---- Colour (TaviColor) ------------------------------------------------------------------------------- */

/*
 * Merges single-band bitmaps into one colour bitmap of order 1, which the destination record (record_size is
 * 212, flags 0) is given; pixels that it holds are freed first. `bands` holds three pointers, or fewer with a
 * null behind them; further ones are not looked at. The first becomes the first channel in storage, blue, the
 * second green, the third red; a channel without a band stays 0. 24 bits, or 48 when a band is of 12 or 16
 * bits. A band counts with its grey levels. Bands of unequal size give what they have in common. Status:
 * ERR_NULL_ARGUMENT for a null pointer or no band at all, ERR_INVALID_PARAMETER for another record size,
 * ERR_NOT_SUPPORTED for flags, ERR_NO_BITMAP for a band without pixels, ERR_NO_MEMORY. When a merge fails
 * the destination is empty; arguments that are refused leave it alone.
 */
TAVI_HOST_API int32_t HostColorMerge(HostBitmap* destination, HostBitmap* const* bands, uint64_t record_size,
                                     uint32_t flags);

/* ---- Pixel processing (TaviImageFx) ------------------------------------------------------------------- */

/*
 * Combines a source rectangle into a destination rectangle of the same size; `mode` 800: the source replaces
 * the destination. Parts outside either bitmap are left out. Bitmaps of one depth and order are combined
 * byte for byte (palettes are not looked at); others by colour.
 * Status: ERR_NO_BITMAP, ERR_NOT_SUPPORTED (other mode).
 */
TAVI_HOST_API int32_t HostCombineBitmap(HostBitmap* destination, int32_t x, int32_t y, uint32_t width,
                                        uint32_t height, const HostBitmap* source, int32_t source_x,
                                        int32_t source_y, uint32_t mode);
/* Counts the pixels of each level into 256 counters (count is 256, flags 0): palette indices up to 8 bits as
   grey levels of their entries, deeper pixels by luminance. Counters are added to. Status: ERR_NO_BITMAP,
   ERR_INVALID_PARAMETER. */
TAVI_HOST_API int32_t HostHistogram(const HostBitmap* bitmap, uint32_t* counters, uint32_t count,
                                    uint32_t flags);
/* Brightens the picture by `amount` thousandths of the full scale; 350 is the only amount used. */
TAVI_HOST_API int32_t HostAdjustBitmap(HostBitmap* bitmap, int32_t amount);

/* ---- Painting (TaviDisplay, TaviEffects) -------------------------------------------------------------- */

/* A palette that suits painting the bitmap, or null when none is needed. To be released by HostDeleteObject.
 */
TAVI_HOST_API HostPalette HostCreatePaintPalette(HostDrawingContext context, const HostBitmap* bitmap);
/* Paints the whole bitmap into the rectangle, scaled to it when the sizes differ. `source` and `clip` are
   null, `operation` is 0xCC0020, source copy. Status: ERR_NO_BITMAP, ERR_INVALID_PARAMETER,
   ERR_NOT_SUPPORTED. */
TAVI_HOST_API int32_t HostPaintBitmap(HostDrawingContext context, const HostBitmap* bitmap,
                                      const HostRect* source, const HostRect* source_clip,
                                      const HostRect* destination, const HostRect* destination_clip,
                                      uint32_t operation);
/* The same, leaving out the pixels whose colour is `transparent`. The values between are 1000 and seven ones.
 */
TAVI_HOST_API int32_t HostPaintBitmapKeyed(HostDrawingContext context, const HostBitmap* bitmap,
                                           const HostRect* source, const HostRect* source_clip,
                                           const HostRect* destination, const HostRect* destination_clip,
                                           uint32_t opacity, uint32_t reserved1, uint32_t reserved2,
                                           uint32_t reserved3, uint32_t reserved4, uint32_t reserved5,
                                           uint32_t reserved6, uint32_t reserved7, uint32_t transparent,
                                           uint32_t reserved8, uint32_t reserved9, uint32_t operation);

/* ---- Vector drawings (TaviVector) --------------------------------------------------------------------- */

/*
 * A drawing lives in a space with x to the right and y upward; a raster row is -y. Objects are painted in the order in
 * which they were added.
 */

/* Makes the record an empty vector: white back colour, no viewport. Does not look at what it holds: free that first. */
TAVI_HOST_API void HostVecInit(HostVector* vector);
/* 0 when the vector holds a drawing (a layer, an object or a loaded picture), else 1. */
TAVI_HOST_API int32_t HostVecIsEmpty(const HostVector* vector);
/* Releases the drawing; the record is empty then and can be initialised or filled again. */
TAVI_HOST_API void HostVecFree(HostVector* vector);
/* Fills all bytes of the record with defaults: a solid black pen one unit wide, no brush. */
TAVI_HOST_API void HostVecInitObject(VectorObjectRecord* object);
/* Adds a layer and yields its handle; `flags` is 4. Status: ERR_NULL_ARGUMENT, ERR_INVALID_PARAMETER for another
   record size, ERR_NO_MEMORY. */
TAVI_HOST_API int32_t HostVecAddLayer(HostVector* vector, const ObjectLayerRecord* record,
                                      HostVectorLayer* layer, uint32_t flags);
/* New objects go to this layer. Status: ERR_NULL_ARGUMENT, ERR_INVALID_PARAMETER for a layer that is not there. */
TAVI_HOST_API int32_t HostVecSetActiveLayer(HostVector* vector, const HostVectorLayer* layer);
/* Adds a copy of the object, which is of the kind given (VectorObjectKind); the record's own size and kind must agree.
   The reserved arguments are 0. Status: ERR_NULL_ARGUMENT; ERR_INVALID_PARAMETER for another kind or size, or a
   coordinate that is no number; ERR_NO_MEMORY. */
TAVI_HOST_API int32_t HostVecAddObject(HostVector* vector, uint32_t reserved1, uint32_t kind,
                                       const VectorObjectRecord* object, uint32_t reserved2);
/* The drawing's rectangle in raster rows, outwards to whole pixels, empty for an empty vector. Status:
   ERR_NULL_ARGUMENT. */
TAVI_HOST_API int32_t HostVecGetBounds(const HostVector* vector, uint32_t reserved1, HostRect* bounds,
                                       uint32_t reserved2);
/* The smallest and the largest x, y, z that the drawing covers: half the widths of its strokes, markers and text boxes
   counted. All 0 for an empty drawing. Status: ERR_NULL_ARGUMENT. */
TAVI_HOST_API int32_t HostVecGetExtents(const HostVector* vector, double smallest[3], double largest[3]);
/* The colour used where the drawing asks for its background. */
TAVI_HOST_API void HostVecSetBackColor(HostVector* vector, uint32_t color);
/* Called once before a loaded picture is painted; `flags` is 1. This host needs no preparation. */
TAVI_HOST_API void HostVecPrepare(HostVector* vector, uint32_t flags);
/*
 * Paints the drawing into the context's bitmap: its bounds (HostVecGetExtents) mapped to the rectangle, mirrored where
 * that runs backwards. A rectangle with an empty side paints one unit to a pixel, the origin at left and top. Only
 * what the drawing draws is touched. `width` and `height` and the reserved arguments are not looked at.
 * Status: ERR_NULL_ARGUMENT; ERR_INVALID_PARAMETER for a dead context; ERR_NO_BITMAP; ERR_NO_MEMORY, also for a
 * drawing that covers the same pixels over and over beyond all measure. An empty vector paints nothing and succeeds.
 */
TAVI_HOST_API int32_t HostVecPaint(HostDrawingContext context, HostVector* vector, int32_t width,
                                   int32_t height, uint32_t reserved1, uint32_t reserved2,
                                   const HostRect* rectangle, uint32_t reserved3, uint32_t reserved4);
/* Notes a translation, which HostVecApplyTransform carries out on the drawing and forgets. */
TAVI_HOST_API void HostVecTranslate(HostVector* vector, const VectorPoint* by, uint32_t reserved1,
                                    uint32_t reserved2);
TAVI_HOST_API void HostVecApplyTransform(HostVector* vector);
/* The rectangle, in raster rows, that the drawing's bounds map to when it is written as CGM. */
TAVI_HOST_API void HostVecSetViewport(HostVector* vector, const HostRect* rectangle);
/* Views are computed when they are asked for: these two have nothing to do here. */
TAVI_HOST_API void HostVecRefreshView(HostVector* vector);
TAVI_HOST_API void HostVecResetView(HostVector* vector);
/* Copies the drawing and its settings into an initialised empty vector; nothing is shared. `flags` is 0. Status:
   ERR_NULL_ARGUMENT, ERR_INVALID_VECTOR for an empty source, ERR_NO_MEMORY. */
TAVI_HOST_API int32_t HostVecCopy(HostVector* target, const HostVector* source, uint32_t flags);

/* ---- Platform ------------------------------------------------------------------------------------------ */

#if !defined(_WIN32)
/* What Windows provides elsewhere, under its names. */
TAVI_HOST_API int32_t SetRect(HostRect* rect, int32_t left, int32_t top, int32_t right, int32_t bottom);
/* Selects a palette into a context and returns the one that was selected, null when none was or when it has been deleted
   since; `background` is 0. */
TAVI_HOST_API HostPalette SelectPalette(HostDrawingContext context, HostPalette palette, int32_t background);
TAVI_HOST_API uint32_t RealizePalette(HostDrawingContext context);
/* Saves the context's text state (colours and mode) and returns its number, from 1 on; puts the state of that number
   back and forgets it and later ones. 0: no such context or state. */
TAVI_HOST_API int32_t SaveDC(HostDrawingContext context);
TAVI_HOST_API int32_t RestoreDC(HostDrawingContext context, int32_t state);
/* Colour of texts (black at first), colour of the boxes behind them (white), and whether those are painted: mode 1
   transparent, 2 opaque (at first). Each returns the former value. */
TAVI_HOST_API uint32_t SetTextColor(HostDrawingContext context, uint32_t color);
TAVI_HOST_API uint32_t SetBkColor(HostDrawingContext context, uint32_t color);
TAVI_HOST_API int32_t SetBkMode(HostDrawingContext context, int32_t mode);
/* Writes `length` characters (Latin-1) in a sans-serif font of 16 pixels, the upper left corner of the first cell at x,
   y. Returns 1, or 0 when it could not. */
TAVI_HOST_API int32_t TextOutA(HostDrawingContext context, int32_t x, int32_t y, const char* text,
                               int32_t length);
/* The bytes of a global memory block, valid until GlobalUnlock; null for a block that is not there. */
TAVI_HOST_API void* GlobalLock(HostGlobalMemory block);
TAVI_HOST_API int32_t GlobalUnlock(HostGlobalMemory block);
/* Shows a message: goes to the sink of HostSetMessageSink, or as "caption: text" to standard error.
 * Returns 1. */
TAVI_HOST_API int32_t MessageBoxA(void* owner, const char* text, const char* caption, uint32_t flags);
/* A debug string; goes to the sink of HostSetDebugSink, or nowhere. */
TAVI_HOST_API void OutputDebugStringA(const char* text);
/* 0 when the file exists (mode 0), else -1. */
TAVI_HOST_API int32_t _waccess(const wchar_t* path, int32_t mode);
#endif

/* ---- The open host's own controls (the library calls none of these) ------------------------------------ */

typedef void (*HostMessageSink)(const char* text, const char* caption, void* user);
typedef void (*HostDebugSink)(const char* text, void* user);
/* Where messages and debug strings go, for the whole process; null puts the default back. A sink is called on the thread
   that has something to say, and so by several at once. */
TAVI_HOST_API void HostSetMessageSink(HostMessageSink sink, void* user);
TAVI_HOST_API void HostSetDebugSink(HostDebugSink sink, void* user);

/*
 * Writes the drawing as a picture file into a new global memory block: kind 1 SVG, 2 PNG, 3 PDF, one unit to a pixel (or
 * 1/72 inch), the size that of its bounds; a PNG is transparent where nothing is drawn, and scaled down when a side
 * would exceed 8192 pixels. Released with HostGlobalFree. Status as HostVecSaveMemory.
 */
TAVI_HOST_API int32_t HostVecExport(HostGlobalMemory* block, const HostVector* vector, uint32_t kind,
                                    uint64_t* size);

/* HOST_LIMIT_PICTURE: the largest pixel memory, in bytes, that one bitmap may take; larger ones are refused with
   ERR_NO_MEMORY. The default is 2 GiB, a 24-bit picture of 26,000 x 26,000. */
TAVI_HOST_API void HostSetBitmapLimit(uint64_t bytes);
TAVI_HOST_API uint64_t HostGetBitmapLimit(void);

/* HOST_LIMIT_DRAWINGS: the bytes that all drawings of the process may hold together; a load or a copy beyond ends in
   ERR_NO_MEMORY. The default is 256 MiB, some thousand times what annotations take. */
TAVI_HOST_API void HostSetVectorLimit(uint64_t bytes);
TAVI_HOST_API uint64_t HostGetVectorLimit(void);

/* What is alive: blocks of HostAllocMem, HostReallocMem and HostAllocTemp, tracked objects, palettes,
   contexts, bitmap pixels and open files. Counted in every build; where a live one was made is known in debug
   builds only, and HostReportLeaks prints it to `sink` (null: standard error), one line each. Returns the
   number alive. */
TAVI_HOST_API uint64_t HostLiveObjects(void);
TAVI_HOST_API uint64_t HostReportLeaks(HostDebugSink sink, void* user);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TAVI_HOST_H */
