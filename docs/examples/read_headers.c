/*
 * Prints the title of a NITF file and the size of each of its images.
 *
 *   cc -Iinclude docs/examples/read_headers.c -o read_headers \
 *      -Lbuild/lib -Wl,-rpath,build/lib -lTaviNitf -lTaviHost
 *   ./read_headers image.ntf
 */
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>

#include "TaviNitf.h"

int main(int argc, char** argv) {
  wchar_t path[4096] = {0};
  setlocale(LC_CTYPE, ""); /* the name's encoding */
  if (argc != 2 || mbstowcs(path, argv[1], 4095) == (size_t)-1) return 2;

  NitfHandle file = NULL;
  NitfHeaderInfo header = {0}; /* zeroed, as every record has to be */
  int32_t status = Tavi_NITFCreate(&file, path);
  if (status == SUCCESS) status = Tavi_NITFGetNITFHeader(file, &header);
  if (status == SUCCESS) printf("%s\n", header.FTITLE);
  for (int32_t i = 0; status == SUCCESS && i < Tavi_NITFGetImageHeaderCount(file); ++i) {
    NitfImageHeaderInfo image = {0};
    status = Tavi_NITFGetImageHeader(file, (uint32_t)i, &image);
    if (status == SUCCESS) printf("image %d: %d x %d\n", (int)i, (int)image.NCOLS, (int)image.NROWS);
    Tavi_NITFFreeImageHeader(&image);
  }
  Tavi_NITFFreeNITFHeader(&header);
  Tavi_NITFDestroy(&file);
  if (status != SUCCESS) fprintf(stderr, "%s: status %d\n", argv[1], (int)status);
  return status == SUCCESS ? 0 : 1;
}
