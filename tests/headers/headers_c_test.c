/*
 * A plain C program against the public headers and the shared libraries: the headers are C, the layouts are
 * those that other compilers' programs were built with, and the exports have C linkage.
 */
#include <stdio.h>
#include <string.h>

#include "TaviHost.h"
#include "TaviNitf.h"
#include "TaviStatus.h"

#define LAYOUT(record, field, offset, width)                                                   \
  _Static_assert(offsetof(record, field) == (offset), #record "." #field " stands elsewhere"); \
  _Static_assert(sizeof(((record*)0)->field) == (width), #record "." #field " has another width")

_Static_assert(sizeof(void*) == 8, "the records hold 64-bit pointers");

_Static_assert(sizeof(HostPaletteEntry) == 4, "palette entries are four bytes");
LAYOUT(HostPaletteEntry, blue, 0, 1);
LAYOUT(HostPaletteEntry, green, 1, 1);
LAYOUT(HostPaletteEntry, red, 2, 1);
LAYOUT(HostPaletteEntry, reserved, 3, 1);

_Static_assert(sizeof(HostRect) == 16, "rectangles are four 32-bit numbers");
LAYOUT(HostRect, left, 0, 4);
LAYOUT(HostRect, top, 4, 4);
LAYOUT(HostRect, right, 8, 4);
LAYOUT(HostRect, bottom, 12, 4);

_Static_assert(sizeof(HostBitmap) == 212, "bitmap records are 212 bytes");
LAYOUT(HostBitmap, width, 20, 4);
LAYOUT(HostBitmap, height, 24, 4);
LAYOUT(HostBitmap, bits, 28, 4);
LAYOUT(HostBitmap, bytes_per_line, 32, 4);
LAYOUT(HostBitmap, flags, 48, 1);
LAYOUT(HostBitmap, color_count, 52, 4);
LAYOUT(HostBitmap, view_perspective, 64, 4);
LAYOUT(HostBitmap, order, 68, 4);

_Static_assert(sizeof(HostLoadFlagsRecord) == 48, "load options are 48 bytes");
LAYOUT(HostLoadFlagsRecord, flags, 12, 4);

_Static_assert(sizeof(HostFileInfo) == 2184, "file information is 2184 bytes");
LAYOUT(HostFileInfo, format, 4, 4);
LAYOUT(HostFileInfo, width, 1032, 4);
LAYOUT(HostFileInfo, height, 1036, 4);
LAYOUT(HostFileInfo, bits, 1040, 4);
LAYOUT(HostFileInfo, memory_size, 1052, 8);
LAYOUT(HostFileInfo, host1100, 1100, 4);
LAYOUT(HostFileInfo, host1104, 1104, 4);

_Static_assert(sizeof(HostSaveOptionsRecord) == 1909, "save options are 1909 bytes");
LAYOUT(HostSaveOptionsRecord, size, 0, 4);
LAYOUT(HostSaveOptionsRecord, flags1905, 1905, 1);

_Static_assert(sizeof(HostVector) == 1024, "vector records are 1024 bytes");
LAYOUT(HostVector, word844, 844, 4);
LAYOUT(HostVector, word976, 976, 8);

_Static_assert(sizeof(ObjectLayerRecord) == 144, "layer records are 144 bytes");
LAYOUT(ObjectLayerRecord, size, 0, 4);
LAYOUT(ObjectLayerRecord, name, 4, 128);
LAYOUT(ObjectLayerRecord, word132, 132, 4);
LAYOUT(ObjectLayerRecord, word136, 136, 4);
LAYOUT(ObjectLayerRecord, word140, 140, 4);

_Static_assert(sizeof(VectorPoint) == 28, "points are 28 bytes");
LAYOUT(VectorPoint, x, 0, 8);
LAYOUT(VectorPoint, y, 8, 8);
LAYOUT(VectorPoint, z, 16, 8);
LAYOUT(VectorPoint, word24, 24, 4);

_Static_assert(sizeof(PenRecord) == 68 && sizeof(BrushRecord) == 220, "pens and brushes");
LAYOUT(PenRecord, size, 0, 4);
LAYOUT(PenRecord, style, 4, 4);
LAYOUT(PenRecord, width, 8, 4);
LAYOUT(PenRecord, word12, 12, 4);
LAYOUT(PenRecord, color, 16, 4);
LAYOUT(BrushRecord, size, 0, 4);
LAYOUT(BrushRecord, zero28, 28, 16);

_Static_assert(sizeof(VectorLineRecord) == 156 && sizeof(VectorRectangleRecord) == 376, "objects");
_Static_assert(sizeof(VectorPolygonRecord) == 336 && sizeof(VectorEllipseRecord) == 364, "objects");
LAYOUT(VectorLineRecord, size, 0, 4);
LAYOUT(VectorLineRecord, kind, 4, 4);
LAYOUT(VectorLineRecord, first, 32, 28);
LAYOUT(VectorLineRecord, second, 60, 28);
LAYOUT(VectorLineRecord, pen, 88, 68);
LAYOUT(VectorRectangleRecord, corner, 32, 28);
LAYOUT(VectorRectangleRecord, opposite, 60, 28);
LAYOUT(VectorRectangleRecord, pen, 88, 68);
LAYOUT(VectorRectangleRecord, brush, 156, 220);
LAYOUT(VectorPolygonRecord, points, 32, 8);
LAYOUT(VectorPolygonRecord, count, 40, 4);
LAYOUT(VectorPolygonRecord, pen, 44, 68);
LAYOUT(VectorPolygonRecord, brush, 112, 220);
LAYOUT(VectorEllipseRecord, centre, 32, 28);
LAYOUT(VectorEllipseRecord, pen, 60, 68);
LAYOUT(VectorEllipseRecord, brush, 128, 220);
LAYOUT(VectorEllipseRecord, radius_x, 348, 8);
LAYOUT(VectorEllipseRecord, radius_y, 356, 8);
_Static_assert(VECTOR_LINE == 2 && VECTOR_RECTANGLE == 3 && VECTOR_POLYGON == 6 && VECTOR_ELLIPSE == 7,
               "kinds");

LAYOUT(FilterInfoContext, file_name, 0, 8);
LAYOUT(FilterInfoContext, file, 12, 8);
LAYOUT(FilterInfoContext, info, 20, 8);
LAYOUT(FilterInfoContext, load_flags, 56, 8);

LAYOUT(FilterLoadContext, file_name, 0, 8);
LAYOUT(FilterLoadContext, bitmap, 8, 8);
LAYOUT(FilterLoadContext, row_callback, 20, 8);
LAYOUT(FilterLoadContext, user, 28, 8);
LAYOUT(FilterLoadContext, callback_word, 72, 8);
LAYOUT(FilterLoadContext, load_flags, 2208, 8);
LAYOUT(FilterLoadContext, load_memory, 2264, 8);
LAYOUT(FilterLoadContext, set_load_hook, 2272, 8);
LAYOUT(FilterLoadContext, third_entry, 2328, 8);

_Static_assert(SUCCESS == 1 && ERR_NO_MEMORY == -1 && ERR_NO_BITMAP == -2 && ERR_FILE_WRITE == -5, "codes");
_Static_assert(ERR_FILE_READ == -7 && ERR_FILE_FORMAT == -9 && ERR_FILE_NOT_FOUND == -10, "codes");
_Static_assert(ERR_INVALID_PARAMETER == -13 && ERR_FILE_OPEN == -14 && ERR_NOT_SUPPORTED == -16, "codes");
_Static_assert(ERR_INVALID_QFACTOR == -21 && ERR_INVALID_BPP == -27 && ERR_NOT_NITF == -78, "codes");
_Static_assert(ERR_NULL_HANDLE == -261 && ERR_INVALID_VECTOR == -501 && ERR_NULL_ARGUMENT == -814, "codes");
_Static_assert(ERR_UNSUPPORTED_PVTYPE == -700000 && ERR_UNSUPPORTED_CLEVEL == -700001, "codes");
_Static_assert(ERR_UNSUPPORTED_BPP == -700002 && ERR_UNSUPPORTED_COMPRESSION == -700003, "codes");
_Static_assert((unsigned)TAVI_LOAD_ALWAYS_SET == 0x80000001u && TAVI_LOAD_FIXED_CANVAS == 1 << 18,
               "load flags");
_Static_assert(TAVI_LOAD_STRETCH_DARK == 1 << 19 && TAVI_LOAD_PAINT_EACH_OBJECT == 1 << 20, "load flags");

static int failures = 0;

static void expect(int holds, const char* what) {
  if (!holds) {
    fprintf(stderr, "failed: %s\n", what);
    ++failures;
  }
}

static void make_and_destroy_a_document(void) {
  NitfHandle handle = NULL;
  expect(Tavi_NITFGetStatus(NULL) == ERR_NULL_HANDLE, "the status of no document");
  expect(Tavi_NITFCreate(&handle, NULL) == SUCCESS, "an empty document is made");
  expect(handle != NULL, "the handle is stored");
  expect(Tavi_NITFGetStatus(handle) == (TAVI_DOCUMENT_EMPTY | TAVI_DOCUMENT_VALID), "it is valid and empty");
  uint32_t width = 0;
  uint32_t height = 0;
  expect(GetActual_Width_Height(handle, &width, &height) == SUCCESS, "it has a size");
  expect(width == 2048 && height == 2048, "which is 2048 x 2048");
  expect(Tavi_NITFDestroy(&handle) == SUCCESS, "it is destroyed");
  expect(handle == NULL, "the handle is cleared");
  expect(Tavi_NITFDestroy(&handle) == ERR_NULL_HANDLE, "a second time is refused");
}

static void the_filter_refuses_to_save(void) {
  unsigned char record[64];
  memset(record, 0xA5, sizeof record);
  expect(fltSave(record) == ERR_NOT_SUPPORTED, "saving through the filter is refused");
  expect(fltSave(NULL) == ERR_NOT_SUPPORTED, "whatever the record");
  for (size_t i = 0; i < sizeof record; ++i) {
    expect(record[i] == 0xA5, "the record stays as it was");
  }
}

static void draw_a_line_and_write_it(void) {
  HostVector vector;
  memset(&vector, 0xA5, sizeof vector);
  vector.word976 = 8194;
  HostVecInit(&vector);
  vector.word844 = 32768;
  expect(HostVecIsEmpty(&vector) == 1, "a new vector is empty");
  VectorObjectRecord object;
  HostVecInitObject(&object);
  object.line.size = sizeof object.line;
  object.line.kind = VECTOR_LINE;
  object.line.second.x = 10;
  expect(HostVecAddObject(&vector, 0, VECTOR_LINE, &object, 0) == SUCCESS, "a line is added");
  expect(HostVecIsEmpty(&vector) == 0, "it is a drawing then");
  HostSaveOptionsRecord options;
  HostSaveOptions(&options, sizeof options);
  HostGlobalMemory block = NULL;
  uint64_t size = 0;
  expect(HostVecSaveMemory(&block, &vector, 62, &size, &options) == SUCCESS, "it is written");
  const unsigned char* const bytes = GlobalLock(block);
  expect(bytes != NULL && size > 2 && (bytes[1] & 0xE0) == 0x20, "as a metafile");
  GlobalUnlock(block);
  HostGlobalFree(block, __LINE__, NULL);
  HostVecFree(&vector);
}

int main(void) {
  const uint64_t alive = HostLiveObjects();
  draw_a_line_and_write_it();
  make_and_destroy_a_document();
  the_filter_refuses_to_save();
  expect(HostLiveObjects() == alive, "nothing is left alive");
  return failures == 0 ? 0 : 1;
}
