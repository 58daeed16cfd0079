// Saving: a document as a new file. Every header is written anew from its record; the segments' data are copied
// from the source or from memory as they are and never decoded.
#pragma once

#include <cstdint>

#include "NitfFile.h"
#include "SaveOutput.h"

namespace tavi {

// Writes the document to `path`. SUCCESS; ERR_FILE_WRITE when the file cannot be made or written, ERR_FILE_READ
// when the source ends inside a segment's data, ERR_FILE_FORMAT for vector quantised data that have no rows,
// ERR_UNSUPPORTED_PVTYPE, ERR_NO_MEMORY. After a failure what was written stays under its name.
int32_t SaveDocument(NitfFile& document, const wchar_t* path);

// One save.
class TaviNitfSaveFile {
 public:
  TaviNitfSaveFile(NitfFile& document, SaveOutput& output) : document_(document), output_(output) {}

  int32_t WriteFileHeader();
  // Images, graphics, labels, texts, data extensions. Reserved extensions are not written.
  int32_t WriteSegments();

 private:
  int32_t WriteImages();
  int32_t WriteImageSubHeader(ImSubHdr& image);
  int32_t WriteImageData(const ImSubHdr& image, uint32_t index);
  int32_t CopySourceImageData(const ImSubHdr& image, uint32_t index);
  int32_t WriteVqImageData(const ImSubHdr& image, uint32_t index);
  int32_t PatchImageSubHeaderLength(uint32_t index, uint32_t length);
  int32_t PatchImageLength(uint32_t index, uint32_t length);

  int32_t WriteGraphic(GrSubHdr& graphic, uint32_t index);
  int32_t WriteLabel(LbSubHdr& label, uint32_t index);
  int32_t WriteText(TxSubHdr& text, uint32_t index);
  int32_t WriteDataExtension(DExSbHdr& extension, uint32_t index);

  NitfFile& document_;
  SaveOutput& output_;
  int64_t segment_table_ = 0;     // place of the first LISH in the output
  uint32_t mask_prefix_ = 0;      // bytes of mask table written behind the current image's subheader
  bool lengths_shifted_ = false;  // the table of images no longer tells where the output has what
};

}  // namespace tavi
