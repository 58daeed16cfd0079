/*
 * TaviNitf.h: reads and draws files of the National Imagery Transmission Format.
 *
 * A NITF file is one container of image, graphic, text and data extension segments on one coordinate system.
 * This library composes the whole file into one picture. Files with FHDR "NITF" or "NSIF", FVER "02.10" and
 * CLEVEL "03" are accepted, all others are refused.
 *
 * Two kinds of caller:
 *   - an imaging toolkit loads the library as a file filter: fltInfo, fltLoad, fltSave;
 *   - an application holds a document by a NitfHandle: Tavi_NITFCreate … Tavi_NITFDestroy.
 *
 * Conventions
 *   - Every function returns an int32_t status, SUCCESS (1) or a negative code of TaviStatus.h, unless it says
 *     otherwise. "The status of X" means that X's code is handed on unchanged.
 *   - No exception leaves the library, no function prints, and nothing is kept between calls but the document
 *     that a caller holds.
 *   - A document belongs to one thread at a time. Different documents may be used on different threads.
 *   - Paths are wide text (UTF-16 on Windows, UTF-32 elsewhere; names go to the file system as UTF-8 there).
 *
 * Compiles as C11 and as C++20.
 */
#ifndef TAVI_NITF_H
#define TAVI_NITF_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#include "TaviHost.h"
#include "TaviStatus.h"

#if defined(_WIN32)
#if defined(TAVI_NITF_BUILD)
#define TAVI_NITF_API __declspec(dllexport)
#else
#define TAVI_NITF_API __declspec(dllimport)
#endif
#else
#define TAVI_NITF_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A document. Opaque; a handle is null or comes from Tavi_NITFCreate. */
typedef struct NitfFile NitfFile;
typedef NitfFile* NitfHandle;

/* ---- Records of the filter entry points --------------------------------------------------------------- */

/* Bits of the flags word of HostLoadFlagsRecord. */
enum TaviLoadFlags {
  TAVI_LOAD_FIXED_CANVAS = 0x40000,        /* the composite is 2048 by 2048 whatever the file holds */
  TAVI_LOAD_STRETCH_DARK = 0x80000,        /* an image with nothing above grey level 19 is brightened */
  TAVI_LOAD_PAINT_EACH_OBJECT = 0x100000,  /* a graphic object is painted as soon as it has been built */
  TAVI_LOAD_ALWAYS_SET = (int)0x80000001u  /* set by fltInfo and fltLoad in the caller's record */
};

/* The host's number of this file format. */
enum { TAVI_FORMAT_NITF = 248 };

/* Flags of a delivered row: every row has 3; the first has 4 and the last 8 added. */
enum TaviRowFlags { TAVI_ROW = 3, TAVI_ROW_FIRST = 4, TAVI_ROW_LAST = 8 };

/*
 * Receives one row of the composite.
 *   first         the word at `callback_word` of the context
 *   bitmap        the destination bitmap of the context
 *   row           the pixels: bytes per line of the composite; valid during the call only
 *   row_flags     TaviRowFlags
 *   row_index     counts up from 0
 *   rows          always 1
 *   user          the context's user data
 * Returns 1 to go on. Any other value ends the delivery and becomes the result of fltLoad.
 */
typedef int32_t (*HostRowCallback)(uint64_t first, HostBitmap* bitmap, uint8_t* row, uint32_t row_flags,
                                   int32_t row_index, int32_t rows, void* user);

/* Both records are byte-packed: pointers stand at offsets that are no multiple of 8. The bytes named `host…` are
   not looked at. */
#pragma pack(push, 1)
typedef struct FilterInfoContext {
  const wchar_t* file_name;
  uint8_t host8[4];
  int64_t file;                    /* the host's own open handle: rewound to 0, and not used for reading */
  HostFileInfo* info;              /* filled on success */
  uint8_t host28[28];
  HostLoadFlagsRecord* load_flags; /* TaviLoadFlags; TAVI_LOAD_ALWAYS_SET is set in it */
} FilterInfoContext;

typedef struct FilterLoadContext {
  const wchar_t* file_name;
  HostBitmap* bitmap;              /* only its bits per pixel are read; handed to the callback */
  uint8_t host16[4];
  HostRowCallback row_callback;
  void* user;                      /* handed to the callback */
  uint8_t host36[36];
  uint64_t callback_word;          /* handed to the callback as its first argument */
  uint8_t host80[2128];
  HostLoadFlagsRecord* load_flags; /* TaviLoadFlags; TAVI_LOAD_ALWAYS_SET is set in it */
  uint8_t host2216[48];
  HostLoadMemoryEntry load_memory;      /* used while drawing in place of HostLoadMemory; must not be null */
  HostSetLoadHookEntry set_load_hook;   /* used while drawing in place of HostSetLoadHook; must not be null */
  uint8_t host2280[48];
  void (*third_entry)(void);            /* must not be null; never called */
} FilterLoadContext;
#pragma pack(pop)

TAVI_STATIC_ASSERT(sizeof(FilterInfoContext) == 64);
TAVI_STATIC_ASSERT(offsetof(FilterInfoContext, file_name) == 0);
TAVI_STATIC_ASSERT(offsetof(FilterInfoContext, file) == 12);
TAVI_STATIC_ASSERT(offsetof(FilterInfoContext, info) == 20);
TAVI_STATIC_ASSERT(offsetof(FilterInfoContext, load_flags) == 56);
TAVI_STATIC_ASSERT(sizeof(FilterLoadContext) == 2336);
TAVI_STATIC_ASSERT(offsetof(FilterLoadContext, file_name) == 0);
TAVI_STATIC_ASSERT(offsetof(FilterLoadContext, bitmap) == 8);
TAVI_STATIC_ASSERT(offsetof(FilterLoadContext, row_callback) == 20);
TAVI_STATIC_ASSERT(offsetof(FilterLoadContext, user) == 28);
TAVI_STATIC_ASSERT(offsetof(FilterLoadContext, callback_word) == 72);
TAVI_STATIC_ASSERT(offsetof(FilterLoadContext, load_flags) == 2208);
TAVI_STATIC_ASSERT(offsetof(FilterLoadContext, load_memory) == 2264);
TAVI_STATIC_ASSERT(offsetof(FilterLoadContext, set_load_hook) == 2272);
TAVI_STATIC_ASSERT(offsetof(FilterLoadContext, third_entry) == 2328);

/* ---- File filter -------------------------------------------------------------------------------------- */

/*
 * Says what a file is. Fills format 248, the composite's width and height, 24 bits per pixel, the size in memory
 * and the two words at 1100 and 1104 (both 1) of the context's HostFileInfo; on failure nothing is filled.
 * Status: ERR_NULL_ARGUMENT when the context or one of its three records is null; the statuses of Tavi_NITFCreate
 * for a file that does not open, where a file that is not there gives ERR_FILE_READ; the statuses of
 * GetActual_Width_Height.
 */
TAVI_NITF_API int32_t fltInfo(FilterInfoContext* context);

/*
 * Delivers the file as one composite picture, row by row, from the last row of the composite bitmap to its first,
 * which is the picture from top to bottom, at the depth of the context's bitmap. The composite is built whole
 * before the first row is delivered.
 * Status: that of the last row callback when all went well; ERR_NULL_ARGUMENT when the context, its bitmap, its
 * callback or its load flags are null; ERR_FILE_FORMAT when one of the three host entries is null, before the file
 * is opened and before the load flags are touched; the statuses of fltInfo; of HostCreateBitmap for a composite of
 * that size and depth; ERR_NO_MEMORY when there is no drawing context or row buffer; of Tavi_NitfDrawObjects.
 */
TAVI_NITF_API int32_t fltLoad(FilterLoadContext* context);

/* Refuses: returns ERR_NOT_SUPPORTED and does not read its record. */
TAVI_NITF_API int32_t fltSave(void* record);

/* ---- Drawing ------------------------------------------------------------------------------------------ */

/*
 * The size of the document's composite, in pixels: the extent of all images on the common coordinate system, each
 * taken by its whole block grid. 2048 x 2048 for a document without segments or with the fixed canvas, 2 x 2 for
 * one that holds texts only.
 * Status: ERR_NULL_ARGUMENT for a null argument; ERR_NO_MEMORY.
 */
TAVI_NITF_API int32_t GetActual_Width_Height(NitfFile* document, uint32_t* width, uint32_t* height);

/*
 * Draws all segments on a drawing context, by ascending display level. `context` is null or names the host's
 * entries for coded images. `bitmap` is the composite that the drawing context draws into; it is not looked at.
 * Status: that of the first segment that cannot be drawn, and then later ones are not drawn: ERR_NOT_SUPPORTED for
 * IC C0, C2, M0 and M2, ERR_FILE_READ when a segment's data end too early, ERR_FILE_FORMAT when they do not fit
 * their header, ERR_NO_MEMORY, and what the host reports; ERR_NULL_ARGUMENT for a null document or drawing context.
 */
TAVI_NITF_API int32_t Tavi_NitfDrawObjects(FilterLoadContext* context, HostDrawingContext drawing_context,
                                           HostBitmap* bitmap, NitfFile* document);

/*
 * Renders the document into `bitmap` at 24 bits per pixel on its background colour. Pixels that the record holds
 * (bit 0 of its flags) are freed first, whatever happens then; a record without that bit may hold anything. On
 * success the bitmap is the caller's, to be freed with HostFreeBitmap; on failure it holds no pixels. Row 0 is the
 * top of the picture when read by the bitmap's view perspective, which is 4: the last row is delivered first.
 * Status: ERR_INVALID_PARAMETER for a null bitmap, ERR_NULL_HANDLE for a null document, ERR_NO_MEMORY; otherwise
 * as fltLoad.
 */
TAVI_NITF_API int32_t Tavi_NtfRenderBitmap(HostBitmap* bitmap, NitfFile* document);

/* ---- Documents ---------------------------------------------------------------------------------------- */

/*
 * Opens the file at `path`, or makes an empty document when `path` is null. The file stays open and segment data
 * are read from it on demand until Tavi_NITFDestroy. On failure *out is null.
 * Status: ERR_NO_MEMORY for a null `out` (this argument error leaves a document behind that nobody can release) or
 * without memory; ERR_FILE_NOT_FOUND when there is no such file; ERR_FILE_READ when the file cannot be opened or
 * ends inside a header; ERR_FILE_FORMAT when a signature or a required value is wrong; ERR_NOT_NITF when FVER is
 * not "02.10"; ERR_UNSUPPORTED_CLEVEL when CLEVEL is not "03"; ERR_UNSUPPORTED_PVTYPE and ERR_UNSUPPORTED_BPP for
 * an image that is not integer or bilevel, or that has several 16-bit bands; ERR_INVALID_PARAMETER when a length
 * says that its true value stands in a streaming file header and there is none. The CLEVEL, PVTYPE and BPP
 * refusals also show a message box of the host.
 */
TAVI_NITF_API int32_t Tavi_NITFCreate(NitfHandle* out, const wchar_t* path);

/*
 * Ends a document: closes its file and frees all it owns, then stores null in *handle.
 * Status: ERR_NULL_HANDLE when *handle is null, as after an earlier call; ERR_NULL_ARGUMENT for a null pointer.
 */
TAVI_NITF_API int32_t Tavi_NITFDestroy(NitfHandle* handle);

/* Bits of Tavi_NITFGetStatus. */
enum TaviDocumentStatus {
  TAVI_DOCUMENT_EMPTY = 1, /* no image, graphic, label or text segment; data extensions do not count */
  TAVI_DOCUMENT_VALID = 2  /* the file header may be used */
};

/* What a document is: a set of TaviDocumentStatus bits, or ERR_NULL_HANDLE. */
TAVI_NITF_API int32_t Tavi_NITFGetStatus(NitfHandle handle);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TAVI_NITF_H */
