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
 *   - Every function returns an int32_t status, SUCCESS (1) or a negative code of TaviStatus.h, unless it
 * says otherwise. "The status of X" means that X's code is handed on unchanged.
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
  TAVI_LOAD_FIXED_CANVAS = 0x40000,       /* the composite is 2048 by 2048 whatever the file holds */
  TAVI_LOAD_STRETCH_DARK = 0x80000,       /* an image with nothing above grey level 19 is brightened */
  TAVI_LOAD_PAINT_EACH_OBJECT = 0x100000, /* a graphic object is painted as soon as it has been built */
  TAVI_LOAD_ALWAYS_SET = (int)0x80000001u /* set by fltInfo and fltLoad in the caller's record */
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

/* Both records are byte-packed: pointers stand at offsets that are no multiple of 8. The bytes named `host…`
   are not looked at. */
#pragma pack(push, 1)
typedef struct FilterInfoContext {
  const wchar_t* file_name;
  uint8_t host8[4];
  int64_t file;       /* the host's own open handle: rewound to 0, and not used for reading */
  HostFileInfo* info; /* filled on success */
  uint8_t host28[28];
  HostLoadFlagsRecord* load_flags; /* TaviLoadFlags; TAVI_LOAD_ALWAYS_SET is set in it */
} FilterInfoContext;

typedef struct FilterLoadContext {
  const wchar_t* file_name;
  HostBitmap* bitmap; /* only its bits per pixel are read; handed to the callback */
  uint8_t host16[4];
  HostRowCallback row_callback;
  void* user; /* handed to the callback */
  uint8_t host36[36];
  uint64_t callback_word; /* handed to the callback as its first argument */
  uint8_t host80[2128];
  HostLoadFlagsRecord* load_flags; /* TaviLoadFlags; TAVI_LOAD_ALWAYS_SET is set in it */
  uint8_t host2216[48];
  HostLoadMemoryEntry load_memory;    /* used while drawing in place of HostLoadMemory; must not be null */
  HostSetLoadHookEntry set_load_hook; /* used while drawing in place of HostSetLoadHook; must not be null */
  uint8_t host2280[48];
  void (*third_entry)(void); /* must not be null; never called */
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
 * Says what a file is. Fills format 248, the composite's width and height, 24 bits per pixel, the size in
 * memory and the two words at 1100 and 1104 (both 1) of the context's HostFileInfo; on failure nothing is
 * filled.
 * Status: ERR_NULL_ARGUMENT when the context, its file name or one of its records is null; the statuses of
 * Tavi_NITFCreate for a file that does not open, where a file that is not there gives ERR_FILE_READ; the
 * statuses of GetActual_Width_Height.
 */
TAVI_NITF_API int32_t fltInfo(FilterInfoContext* context);

/*
 * Delivers the file as one composite picture, row by row, from the last row of the composite bitmap to its
 * first, which is the picture from top to bottom, at the depth of the context's bitmap. The composite is
 * built whole before the first row is delivered.
 * Status: that of the last row callback when all went well; ERR_NULL_ARGUMENT when the context, its bitmap,
 * its file name, its callback or its load flags are null; ERR_FILE_FORMAT when one of the three host entries is null,
 * before the file is opened and before the load flags are touched; the statuses of fltInfo; of
 * HostCreateBitmap for a composite of that size and depth; ERR_NO_MEMORY when there is no drawing context or
 * row buffer; of Tavi_NitfDrawObjects.
 */
TAVI_NITF_API int32_t fltLoad(FilterLoadContext* context);

/* Refuses: returns ERR_NOT_SUPPORTED and does not read its record. */
TAVI_NITF_API int32_t fltSave(void* record);

/* ---- Drawing ------------------------------------------------------------------------------------------ */

/*
 * The size of the document's composite, in pixels: the largest width and the largest height of all segments on the
 * common coordinate system. An image counts with its whole block grid; a graphic with its second bound, for which its
 * data are read from the source file and a CGM drawing is loaded; labels add 10 pixels to both sides. 2048 x 2048 for a
 * document without segments or with the fixed canvas, 2 x 2 for one that holds texts only, 1 x 1 for one of labels
 * without an image, whatever graphics it has.
 * Status: ERR_NULL_ARGUMENT for a null argument; ERR_FILE_READ when the file ends inside the data of a graphic, also
 * for a new one that has not been saved; ERR_NO_MEMORY; the status of HostVecLoadMemory (ERR_FILE_FORMAT for data that
 * are no drawing).
 */
TAVI_NITF_API int32_t GetActual_Width_Height(NitfFile* document, uint32_t* width, uint32_t* height);

/*
 * Draws all images, graphics and labels on a drawing context, by ascending display level. `context` is null or names
 * the host's entries for coded images. `bitmap` is the composite that the drawing context draws into; it is not looked
 * at. A graphic's data are read from the source file, at the place that the lengths of the file header tell: one that
 * was appended, or whose drawing was exchanged, is drawn from its new data only once it has been saved and opened
 * again. Object symbols are painted with TAVI_LOAD_PAINT_EACH_OBJECT only, which fltLoad knows.
 * Status: that of the first segment that cannot be drawn, and then later ones are not drawn:
 * ERR_NOT_SUPPORTED for IC C0, C2, M0 and M2, ERR_FILE_READ when a segment's data end too early or are not in the
 * file, ERR_FILE_FORMAT when they do not fit their header, and for an image with which all images together cover
 * more pixels than HOST_LIMIT_IMAGES (2^30 unless changed) and 64 for each byte of the file; ERR_NO_MEMORY, also from
 * the host for drawings that hold or cover more than its limits allow; and what else the host reports;
 * ERR_NULL_ARGUMENT for a null document or drawing context.
 */
TAVI_NITF_API int32_t Tavi_NitfDrawObjects(FilterLoadContext* context, HostDrawingContext drawing_context,
                                           HostBitmap* bitmap, NitfFile* document);

/*
 * Renders the document into `bitmap` at 24 bits per pixel on its background colour. Pixels that the record
 * holds (bit 0 of its flags) are freed first, whatever happens then; a record without that bit may hold
 * anything. On success the bitmap is the caller's, to be freed with HostFreeBitmap; on failure it holds no
 * pixels. Row 0 is the bottom row of the picture (view perspective 4).
 * Status: ERR_INVALID_PARAMETER for a null bitmap, ERR_NULL_HANDLE for a null document, ERR_NO_MEMORY;
 * otherwise as fltLoad.
 */
TAVI_NITF_API int32_t Tavi_NtfRenderBitmap(HostBitmap* bitmap, NitfFile* document);

/* ---- Documents ---------------------------------------------------------------------------------------- */

/*
 * Opens the file at `path`, or makes an empty document when `path` is null. The file stays open and segment
 * data are read from it on demand until Tavi_NITFDestroy. On failure *out is null.
 * Status: ERR_NO_MEMORY for a null `out` (this argument error leaves a document behind that nobody can
 * release) or without memory; ERR_FILE_NOT_FOUND when there is no such file; ERR_FILE_READ when the file
 * cannot be opened or ends inside a header; ERR_FILE_FORMAT when a signature or a required value is wrong;
 * ERR_NOT_NITF when FVER is not "02.10"; ERR_UNSUPPORTED_CLEVEL when CLEVEL is not "03";
 * ERR_UNSUPPORTED_PVTYPE and ERR_UNSUPPORTED_BPP for an image that is not integer or bilevel, or that has
 * several 16-bit bands; ERR_INVALID_PARAMETER when a length says that its true value stands in a streaming
 * file header and there is none. The CLEVEL, PVTYPE and BPP refusals also show a message box of the host.
 */
TAVI_NITF_API int32_t Tavi_NITFCreate(NitfHandle* out, const wchar_t* path);

/*
 * Ends a document: closes its file and frees all it owns, then stores null in *handle.
 * Status: ERR_NULL_HANDLE when *handle is null, as after an earlier call; ERR_NULL_ARGUMENT for a null
 * pointer.
 */
TAVI_NITF_API int32_t Tavi_NITFDestroy(NitfHandle* handle);

/* Bits of Tavi_NITFGetStatus. */
enum TaviDocumentStatus {
  TAVI_DOCUMENT_EMPTY = 1, /* no image, graphic, label or text segment; data extensions do not count */
  TAVI_DOCUMENT_VALID = 2  /* the file header may be used */
};

/* What a document is: a set of TaviDocumentStatus bits, or ERR_NULL_HANDLE. */
TAVI_NITF_API int32_t Tavi_NITFGetStatus(NitfHandle handle);

/*
 * Writes the document as a new file: every header anew, the data of each segment as they are, from the source
 * file or from memory; nothing is decoded. Data extensions are carried over, reserved extension segments are
 * not, although the header lists them. The document stays open and may be edited and saved again; a save
 * changes none of its headers' texts.
 *
 * What differs from the source although nothing was edited: FSDCXM takes the first four characters of FSDCDT; SCOLOR
 * becomes "C"; IMAG is written as the first three characters of its number; a COMRAT other than 1D, 2DS and 2DH becomes
 * 00.0, an unknown IREP becomes RGB and IC C0 becomes NM; LRESH takes the value of LRE; FL above 2147483647 becomes
 * that; numbers are printed anew, and a text is cut at its first NUL and completed; block and pad masks of IC M4 come
 * out with the bytes of each entry reversed; of IC C4 and M4 what stands behind the codes is dropped.
 *
 * A file of that name is replaced in place; after a failure what was written of it stays. The document's own source may
 * be named too, by any spelling or link: the source is then read into memory before it is replaced, which is kept until
 * Tavi_NITFDestroy, and the document goes on as before. A target that holds the same bytes as the source may be the
 * source, so that such a save needs the memory for a while as well. To keep a file's old contents when a save fails,
 * save under another name and rename.
 * Status: that of the first failure: ERR_NULL_HANDLE; ERR_FILE_WRITE when the file cannot be made or written in
 * full; ERR_FILE_READ when the source ends inside the data of a segment; ERR_FILE_FORMAT for data of IC C4 or M4
 * without code rows;
 * ERR_UNSUPPORTED_PVTYPE, with a message box of the host, for a sample type that is neither integer nor bilevel;
 * ERR_NO_MEMORY.
 */
TAVI_NITF_API int32_t Tavi_NITFSaveFile(NitfHandle handle, const wchar_t* path);

/* ---- Public header records ----------------------------------------------------------------------------- */

/*
 * Copies of the headers, one record for each kind. All four are byte-packed: a pointer may stand at any
 * address.
 *
 * A record must be zeroed by its owner before its getter runs. The getter fills the fields that its comment
 * names; everything that a filled record points to is an allocation of its own that belongs to the caller
 * until the matching free function, and nothing of it refers to the document, which may be destroyed first.
 *
 *   char*     a NUL-terminated copy of the field's text as the document stores it, blanks included
 *   char[n]   the n characters of a date, without a terminator
 *   numbers   the number that the field's text begins with, 0 when it begins with none
 */
#pragma pack(push, 1)

/*
 * The file header. Tavi_NITFGetNITFHeader fills all fields but NUMX, NUMDES, LDSH, LD, NUMRES, LRESH, LRE,
 * UDHDL, UDHOFL, UDHD, XHDL, XHDLOFL, XHD and FBKGC, which stay as they were. The counts NUMI, NUMS and NUMT
 * and HL come from the texts of the header as it was read, the lists are as long as these counts say; FL is
 * current. The texts from FSCLSY to FSCTLN have no terminators of their own in the document: each comes back
 * with everything behind it up to the end of FSCOP, to be cut at the field's width (2, 11, 2, 20, 2, 4, 1,
 * 43, 1, 40, 1, 15 in the order below).
 */
typedef struct NitfHeaderInfo {
  char* FHDR;
  int32_t CLEVEL;
  char* STYPE;
  char* OSTAID;
  char* FTITLE;
  char* FSCLAS;
  char* FSCLSY;
  char* FSCODE;
  char* FSCTLH;
  char* FSREL;
  char* FSDCTP;
  char* FSDCXM;
  char* FSDG;
  char* FSCLTX;
  char* FSCATP;
  char* FSCAUT;
  char* FSCRSN;
  char* FSCTLN;
  char* ONAME;
  char* OPHONE;
  uint32_t HL;
  uint32_t FL;
  uint32_t FSCOP;
  uint32_t FSCPYS;
  uint32_t ENCRYP;
  uint32_t NUMI;
  uint32_t* LISH; /* NUMI entries, as the next */
  uint32_t* LI;
  uint32_t NUMS;
  uint32_t* LSSH; /* NUMS entries, as the next */
  uint32_t* LS;
  uint32_t NUMX;
  uint32_t NUMT;
  uint32_t* LTSH; /* NUMT entries, as the next */
  uint32_t* LT;
  uint32_t NUMDES;
  uint32_t* LDSH;
  uint32_t* LD;
  uint32_t NUMRES;
  uint32_t* LRESH;
  uint32_t* LRE;
  uint32_t UDHDL;
  uint32_t UDHOFL;
  uint8_t* UDHD;
  uint32_t XHDL;
  uint32_t XHDLOFL;
  uint8_t* XHD;
  uint8_t FBKGC[3];
  uint8_t spare;
  char FSSRDT[8];
  char FSDGDT[8];
  char FSDCDT[8];
  char FDT[14];
  float FVER; /* the number nearest to the text "02.10" */
} NitfHeaderInfo;

/*
 * An image subheader. Tavi_NITFGetImageHeader fills all fields but the band lists IREPBAND, ISUBCAT, IFC and
 * IMFLT. ICOM has NICOM entries, those beyond the stored comments empty. UDID ends at its first NUL and has zeros
 * from there to UDIDL bytes. IXSHD has IXSHDL bytes and TPXCD TPXCDLNTH bytes: the stored ones first, zeros behind.
 */
typedef struct NitfImageHeaderInfo {
  char* IM;
  char* IID1;
  char IDATIM[14];
  char* TGTID;
  char* IID2;
  char* ISCLAS;
  char* ISCLSY;
  char* ISCODE;
  char* ISCTLH;
  char* ISREL;
  char* ISDCTP;
  char ISDCDT[8];
  char* ISDCXM;
  char* ISDG;
  char ISDGDT[8];
  char* ISCLTX;
  char* ISCATP;
  char* ISCAUT;
  char* ISCRSN;
  char ISSRDT[8];
  char* ISCTLN;
  int32_t ENCRYP;
  char* ISORCE;
  int32_t NROWS;
  int32_t NCOLS;
  char* PVTYPE;
  char* IREP;
  char* ICAT;
  int32_t ABPP;
  char* PJUST;
  char* ICORDS;
  char* IGEOLO;
  uint32_t NICOM;
  char** ICOM;
  char* IC;
  char* COMRAT;
  uint32_t NBANDS;
  uint32_t XBANDS;
  char** IREPBAND;
  char** ISUBCAT;
  char** IFC;
  char** IMFLT;
  int32_t ISYNC;
  char* IMODE;
  int32_t NBPR;
  uint32_t NBPC;
  uint32_t NPPBH;
  uint32_t NPPBV;
  uint32_t NBPP;
  uint32_t IDLVL;
  uint32_t IALVL;
  int32_t ILOC_COLUMN;
  int32_t ILOC_ROW;
  char* IMAG;
  uint32_t UDIDL;
  int32_t UDOFL;
  char* UDID;
  uint32_t IXSHDL;
  int32_t IXSOFL;
  uint8_t* IXSHD;
  uint32_t IMDATOFF;
  uint16_t BMRLNTH;
  uint16_t TMRLNTH;
  uint16_t TPXCDLNTH; /* in bits */
  uint8_t* TPXCD;
} NitfImageHeaderInfo;

/*
 * A graphic subheader. Tavi_NITFGetGraphicHeader fills all fields. SXSHD has SXSHDL bytes: the stored ones
 * first, zeros behind. The halves of the locations are signed numbers in unsigned fields.
 */
typedef struct NitfGraphicHeaderInfo {
  char* SY;
  char* SID;
  char* SNAME;
  char* SSCLAS;
  char* SSCLSY;
  char* SSCODE;
  char* SSCTLH;
  char* SSREL;
  char* SSDCTP;
  char SSDCDT[8];
  char* SSDCXM;
  char* SSDG;
  char SSDGDT[8];
  char* SSCLTX;
  char* SSCATP;
  char* SSCAUT;
  char* SSCRSN;
  char SSSRDT[8];
  char* SSCTLN;
  uint32_t ENCRYP;
  char* SFMT;
  int32_t SSTRUCT;
  uint32_t SDLVL;
  uint32_t SALVL;
  uint32_t SLOC_COLUMN;
  uint32_t SLOC_ROW;
  uint32_t SBND1_FIRST;
  uint32_t SBND1_SECOND;
  char* SCOLOR;
  uint32_t SBND2_FIRST;
  uint32_t SBND2_SECOND;
  uint32_t SRES2;
  uint32_t SXSHDL;
  uint32_t SXSOFL;
  uint8_t* SXSHD;
} NitfGraphicHeaderInfo;

/* A text subheader. Tavi_NITFGetTextHeader fills all fields. TXSHD has TXSHDL - 3 bytes when TXSHDL is 4 or
 * more. */
typedef struct NitfTextHeaderInfo {
  char* TE;
  char* TEXTID;
  uint32_t TXTALVL;
  char TXTDT[14];
  char* TXTITL;
  char* TSCLAS;
  char* TSCLSY;
  char* TSCODE;
  char* TSCTLH;
  char* TSREL;
  char* TSDCTP;
  char TSDCDT[8];
  char* TSDCXM;
  char* TSDG;
  char TSDGDT[8];
  char* TSCLTX;
  char* TSCATP;
  char* TSCAUT;
  char* TSCRSN;
  char TSSRDT[8];
  char* TSCTLN;
  uint32_t ENCRYP;
  char* TXTFMT;
  uint32_t TXSHDL;
  int32_t TXSOFL;
  uint8_t* TXSHD;
} NitfTextHeaderInfo;
#pragma pack(pop)

/* The records in 64-bit programs: eight bytes for each pointer, no gaps. */
TAVI_STATIC_ASSERT(sizeof(void*) == 8);
TAVI_STATIC_ASSERT(sizeof(NitfHeaderInfo) == 31 * 8 + 16 * 4 + 4 + 8 * 3 + 14 + 4);
TAVI_STATIC_ASSERT(sizeof(NitfImageHeaderInfo) == 36 * 8 + 14 + 3 * 8 + 22 * 4 + 3 * 2);
TAVI_STATIC_ASSERT(sizeof(NitfGraphicHeaderInfo) == 19 * 8 + 3 * 8 + 13 * 4);
TAVI_STATIC_ASSERT(sizeof(NitfTextHeaderInfo) == 18 * 8 + 14 + 3 * 8 + 4 * 4);

/* Returned by the header getters and by Tavi_NITFGetTextSegment for an index at or beyond the list, and by
   most of them for a null record. It is part of the interface and no status of TaviStatus.h. */
enum { TAVI_BAD_INDEX = 87 };

/* The number of segments that have a subheader; 0 for a null handle. */
TAVI_NITF_API int32_t Tavi_NITFGetImageHeaderCount(NitfHandle handle);
TAVI_NITF_API int32_t Tavi_NITFGetGraphicHeaderCount(NitfHandle handle);
TAVI_NITF_API int32_t Tavi_NITFGetTextHeaderCount(NitfHandle handle);

/*
 * Fill a zeroed record with copies of a header; see the records for what each fills.
 * Results: SUCCESS; 0 for a null handle; TAVI_BAD_INDEX for a null record (ERR_INVALID_PARAMETER in the image
 * getter) and for an index at or beyond the list; ERR_NO_MEMORY, and then the record may be filled in part
 * and must be freed as well. In the graphic and image records the first half of a location is the row; it
 * stands second in the record.
 */
TAVI_NITF_API int32_t Tavi_NITFGetNITFHeader(NitfHandle handle, NitfHeaderInfo* record);
TAVI_NITF_API int32_t Tavi_NITFGetImageHeader(NitfHandle handle, uint32_t index, NitfImageHeaderInfo* record);
TAVI_NITF_API int32_t Tavi_NITFGetGraphicHeader(NitfHandle handle, uint32_t index,
                                                NitfGraphicHeaderInfo* record);
TAVI_NITF_API int32_t Tavi_NITFGetTextHeader(NitfHandle handle, uint32_t index, NitfTextHeaderInfo* record);

/*
 * Put a record's fields into a header of the document. Nothing on disk changes; a later save writes them. No length
 * is computed anew: FL, HL and the lengths of the tables are the caller's business, except that ICORDS and IC take
 * FL and the image's own entry along (by 60 and by 4 bytes) when they bring or remove IGEOLO and COMRAT.
 *
 * A text may be as long as the document's buffer of its field, which is the larger of the two layouts' widths, and is
 * completed with blanks; one that is longer, or null, is refused. Numbers are written into the digits of their field
 * without being looked at; one of more digits keeps its first ones. A block (UDHD, XHD, UDID, IXSHD, SXSHD, TXSHD)
 * is read to the length that its length field in the same record says, less 3; null keeps the old block. A block
 * whose length is below 3 is dropped (ERR_NO_MEMORY). TPXCD has (TPXCDLNTH + 7) / 8 bytes; null keeps the old code,
 * whatever TPXCDLNTH says by then. What a getter has filled is as long as that.
 *
 * Tavi_NITFSetNITFHeader takes all fields, whatever becomes of each: one that is refused keeps its value and nothing
 * is said. Results: SUCCESS; 0 for a null handle, TAVI_BAD_INDEX for a null record. What to know:
 *   - The members that the getter does not fill are taken as well: with a record that was zeroed and filled by the
 *     getter, NUMX, NUMDES, NUMRES, UDHDL and XHDL become 0 and FBKGC black.
 *   - The classification texts come from the getter with what lies behind them: cut them at their widths, or they are
 *     refused. CLEVEL is taken if it is 1 to 7 or 99; files with another level than 3 are not opened again.
 *   - FVER is printed as a number, which spoils FVER and FHDR: a saved file then is no NITF file any more.
 *   - HL moves what is read of the source file, FL is taken as it is. NUMI and its like change the header's own number
 *     and not the segments; each list is taken as far as the header has entries. After appends the getter's NUMI,
 *     NUMS, NUMT and HL are those of the header as it was read (0 in a new document), so that a get and a set resets
 *     the numbers and the header's length that the appends had brought up to date: the new segments' lengths then
 *     count as 0, here and in a save. LS changes where the source's drawings are looked for and not what a save
 *     writes. LRESH and LRE are taken for the first NUMDES entries. Any list may be null.
 *
 * The subheader setters take the fields in an order of their own and stop at the first that is refused; those before
 * it keep their new values. The refused field is set a second time, and that result is returned. Results: SUCCESS;
 * TAVI_BAD_INDEX for a null record and for an index at or beyond the list; 0 for a null handle;
 * ERR_INVALID_PARAMETER for a text that is too long, null, or outside its field's set (PVTYPE, IREP, PJUST, IC,
 * IMODE), and for a comment beyond the stored ones; ERR_NO_MEMORY, also for NBANDS above 99999. Of an overlong text
 * that begins well the code of PVTYPE, IREP, PJUST and IMODE and the number of IMAG are taken all the same; of an
 * overlong IC or COMRAT nothing is. What to know:
 *   - The first member of a location goes to the first half: a record that a getter has filled exchanges row and column
 *     of ILOC and SLOC. A negative half of SBND1 or SBND2 is stored in a way that reads as 0.
 *   - NBANDS makes a new band table without roles, subcategories, filters and look-up tables. IGEOLO, the band lists
 *     and TSDGDT are not taken. NICOM does not change the number of comments.
 */
TAVI_NITF_API int32_t Tavi_NITFSetNITFHeader(NitfHandle handle, NitfHeaderInfo* record);
TAVI_NITF_API int32_t Tavi_NITFSetImageHeader(NitfHandle handle, uint32_t index, NitfImageHeaderInfo* record);
TAVI_NITF_API int32_t Tavi_NITFSetGraphicHeader(NitfHandle handle, uint32_t index,
                                                NitfGraphicHeaderInfo* record);
TAVI_NITF_API int32_t Tavi_NITFSetTextHeader(NitfHandle handle, uint32_t index, NitfTextHeaderInfo* record);

/*
 * Free what a record points to and set each pointer to null; numbers and dates stay. Harmless for a zeroed
 * record and when run again. ICOM is freed by the record's NICOM and the band lists by its NBANDS, so neither
 * may be changed in between. SUCCESS; ERR_NULL_ARGUMENT for a null record.
 */
TAVI_NITF_API int32_t Tavi_NITFFreeNITFHeader(NitfHeaderInfo* record);
TAVI_NITF_API int32_t Tavi_NITFFreeImageHeader(NitfImageHeaderInfo* record);
TAVI_NITF_API int32_t Tavi_NITFFreeGraphicHeader(NitfGraphicHeaderInfo* record);
TAVI_NITF_API int32_t Tavi_NITFFreeTextHeader(NitfTextHeaderInfo* record);

/*
 * The text of a text segment. A call with a null buffer yields the size in bytes alone; the buffer must have
 * that size plus one byte for the terminator. `size` may be null. Results: SUCCESS; TAVI_BAD_INDEX for a null
 * handle and for an index at or beyond the texts; ERR_FILE_READ when the file ends inside the text; 0 with a buffer
 * for a text that has no subheader, whose size is 0. Of an appended text no more than the size is copied.
 */
TAVI_NITF_API int32_t Tavi_NITFGetTextSegment(NitfHandle handle, uint32_t index, uint8_t* buffer,
                                              uint32_t* size);

/* ---- New segments ---------------------------------------------------------------------------------------- */

/*
 * An append puts a new segment behind those of its kind. Its data stay in memory until Tavi_NITFDestroy, the source
 * file is not touched, and a save writes all. The counts, FL and the lengths of the file header follow; the texts
 * of NUMI, NUMS, NUMT and HL do not, so that Tavi_NITFGetNITFHeader shows the old numbers. A document holds 999
 * segments of each kind at most: the next append returns 0. One that fails leaves the document as it was.
 *
 * After a graphic has been appended to an opened file, the file's texts and data extensions can no longer be found
 * there: Tavi_NITFGetTextSegment and a save yield other bytes of the file in their place, or ERR_FILE_READ. Drawing
 * looks for a new segment in the source file, where it is not: until the document has been saved and opened again,
 * drawing it, or measuring it when it has new graphics, fails (ERR_FILE_READ) or takes other bytes of the file.
 *
 * A new image or graphic lies above all others: its display level is the highest in use plus 1. The date of an image or
 * text is the file's (FDT), with the last of its two-digit fields that is above 1 lowered by 1; a text's keeps its
 * seconds. Fields that nothing is said of have the defaults of their kind.
 */

/*
 * Encodes a bitmap as JPEG (IC C3) and appends it as an image of one block, at the origin and attached to nothing.
 *   format          10: components YCbCr; 182: RGB
 *   bits            8: a grey picture (IREP MONO), 24: a colour picture (IREP YCbCr601 or RGB)
 *   quality_factor  2, the best, to 255, the coarsest
 * A side above 9999 pixels does not fit its fields, which nothing looks at.
 * Results: SUCCESS; 0 when there are 999 images; ERR_NULL_HANDLE; ERR_NO_BITMAP for a null bitmap or one without memory
 * of its own (bit 0 of its flags); ERR_INVALID_BPP for other bits; ERR_INVALID_QFACTOR; ERR_FILE_FORMAT for another
 * format; ERR_NO_MEMORY; the status of HostSaveMemory.
 */
TAVI_NITF_API int32_t Tavi_NITFAppendImageSegment(NitfHandle handle, HostBitmap* bitmap, int32_t format,
                                                  int32_t bits, int32_t quality_factor);
/*
 * Writes a drawing as CGM and appends it as a graphic, attached to the lowest segment there is. The rectangle becomes
 * SBND1 (left, top) and SBND2 (right, bottom); SLOC stays 0. The caller's vector is changed: a drawing that reaches
 * above the x axis is moved below it, by its height above it and one unit more, and the rectangle becomes its viewport;
 * both also when the append fails later. Of the drawing only the CGM data are kept. See above for what an appended
 * graphic does to an opened file with texts or data extensions, and to drawing.
 * Results: SUCCESS; 0 when there are 999 graphics; ERR_NULL_HANDLE for a null handle or rectangle; ERR_NULL_ARGUMENT for
 * a null vector; ERR_INVALID_VECTOR for an empty one; ERR_INVALID_PARAMETER for a drawing that reaches beyond row or
 * column 99999; ERR_NO_MEMORY; the status of HostVecGetExtents or HostVecSaveMemory.
 */
TAVI_NITF_API int32_t Tavi_NITFAppendGraphicSegment(NitfHandle handle, HostVector* vector,
                                                    const HostRect* rectangle);
/*
 * Appends the contents of a file as a text, of TXTFMT STA whatever it holds, attached to the lowest segment there is.
 * More than 99999 bytes do not fit the length in the file header, which nothing looks at. Tavi_NITFGetTextSegment
 * yields such a text up to its first NUL.
 * Results: SUCCESS; 0 when there are 999 texts; ERR_NULL_HANDLE; ERR_FILE_OPEN when the file cannot be opened;
 * ERR_NO_MEMORY.
 */
TAVI_NITF_API int32_t Tavi_NITFAppendTextSegment(NitfHandle handle, const wchar_t* path);

/*
 * Replaces the drawing of a graphic: its CGM data, and the segment's vector, which becomes a copy. The vector may be
 * the segment's own. The graphic's length in the file header follows, FL and the bounds do not.
 * Status: ERR_NULL_HANDLE; ERR_INVALID_PARAMETER for an index at or beyond the graphics; ERR_NULL_ARGUMENT for a null
 * vector; ERR_INVALID_VECTOR for an empty one; ERR_NO_MEMORY; the statuses of HostVecSaveMemory and HostVecCopy.
 */
TAVI_NITF_API int32_t Tavi_NITFSetVectorHandle(NitfHandle handle, uint32_t index, HostVector* vector);
/*
 * The vector of a graphic, after the drawing of the first graphic has been loaded from the source file: any other
 * one's is as Tavi_NITFSetVectorHandle or a composition has left it, empty otherwise. A drawing that was put in the
 * first graphic's place makes way for that of the file. It belongs to the document and lives as long. Null for a null
 * handle, for an index at or beyond the graphics, and when the first graphic cannot be loaded, as in a document without
 * a source file.
 */
TAVI_NITF_API HostVector* Tavi_NITFGetVectorHandle(NitfHandle handle, uint32_t index);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TAVI_NITF_H */
