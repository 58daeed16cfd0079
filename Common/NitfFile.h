// The document: an open or newly created file, its header, its lists of subheaders, and where in the source
// file each segment stands.
#pragma once

#include <cstdint>
#include <new>

#include "DExSbHdr.h"
#include "GrSubHdr.h"
#include "ImSubHdr.h"
#include "Inspect.h"
#include "LbSubHdr.h"
#include "NtfHdr.h"
#include "TxSubHdr.h"

namespace tavi {

// Origins of HostFileSeek.
inline constexpr int32_t kFromStart = 0;
inline constexpr int32_t kFromHere = 1;
inline constexpr int32_t kFromEnd = 2;

inline constexpr int64_t kNoFile = -1;
// Length of a file header without segments: the whole of a new, empty file.
inline constexpr uint32_t kEmptyFileLength = 388;
inline constexpr uint32_t kWhite = 0xFFFFFF;

// A list node; it owns its subheader.
template <class Record>
struct SegmentNode {
  Record* Subheader = nullptr;
  SegmentNode* Next = nullptr;
};

// Walks a list from its head: the subheader at `index`, or null at or past `count`.
template <class Record>
Record* SubheaderAt(const SegmentNode<Record>* head, uint32_t index, uint32_t count) {
  if (index >= count) return nullptr;
  for (; head != nullptr && index != 0; --index) head = head->Next;
  return head != nullptr ? head->Subheader : nullptr;
}

// The number of nodes, up to `count`, that hold a subheader.
template <class Record>
int32_t CountHeaders(const SegmentNode<Record>* head, uint32_t count) {
  int32_t found = 0;
  for (uint32_t i = 0; head != nullptr && i < count; ++i, head = head->Next)
    found += head->Subheader != nullptr;
  return found;
}

}  // namespace tavi

struct NitfFile {
  template <class Record>
  using List = tavi::SegmentNode<Record>*;

  int64_t File = tavi::kNoFile;  // the source file; none for a document created empty
  uint32_t PaintEachObject = 0;
  uint32_t StretchDarkImages = 0;
  uint32_t FixedCanvas = 0;
  uint32_t IsNitf20 = 0;  // the 2.0 layouts; no operation sets it
  uint32_t StreamConsumed = 0;
  uint32_t StreamLoaded = 0;
  uint32_t StreamTail = 0;
  uint32_t HeaderValid = 0;
  tavi::NtfHdr Header;
  uint32_t Background = tavi::kWhite;  // 0x00BBGGRR
  // Segments of the document now, and of its source file. Appending raises the first alone.
  uint32_t ImageCount = 0;
  uint32_t GraphicCount = 0;
  uint32_t ImagesInFile = 0;
  uint32_t GraphicsInFile = 0;
  uint32_t LabelCount = 0;
  uint32_t TextCount = 0;
  uint32_t LabelsInFile = 0;
  uint32_t TextsInFile = 0;
  uint32_t DesCount = 0;
  uint32_t ResCount = 0;
  List<tavi::ImSubHdr> Images = nullptr;
  List<tavi::GrSubHdr> Graphics = nullptr;
  List<tavi::LbSubHdr> Labels = nullptr;
  List<tavi::TxSubHdr> Texts = nullptr;
  List<tavi::DExSbHdr> DataExtensions = nullptr;

  // Beside the documented state: what bounds every allocation, and who watches the headers being read.
  int64_t SourceSize = 0;
  // The source's bytes, once a save has put a new file in its place; `SourcePosition` is then where it stands.
  tavi::HostArray<uint8_t> SourceCopy;
  int64_t SourcePosition = 0;
  tavi::FieldObserver Observe = nullptr;
  void* Observer = nullptr;

  NitfFile() = default;
  NitfFile(const NitfFile&) = delete;
  NitfFile& operator=(const NitfFile&) = delete;
  ~NitfFile();
};

namespace tavi {

inline Layout LayoutOf(const NitfFile& document) {
  return document.IsNitf20 != 0 ? Layout::kNitf20 : Layout::kNitf21;
}

// Opens the file and reads its header and every subheader. After a failure the document stays as far as it
// was built.
int32_t OpenNitfFile(NitfFile& document, const wchar_t* path);
// The state of a document without a source.
void MakeEmptyDocument(NitfFile& document);
// Builds the five lists for the current counts. ERR_NO_MEMORY leaves what was built.
int32_t AllocateObjects(NitfFile& document);
// Closes the file and destroys all lists and the header's memory; harmless when run again. Always SUCCESS.
int32_t FreeObjects(NitfFile& document);
// Reading of the source and moving in it, as HostFileRead and HostFileSeek. What is read on demand, after the
// document has been opened, is read through these alone: after a save onto the source its bytes are in memory.
uint64_t ReadSource(NitfFile& document, void* to, uint64_t bytes);
int64_t SeekSource(NitfFile& document, int64_t offset, int32_t origin);
// The header, or null while it may not be used.
NtfHdr* GetHeader(NitfFile& document);

inline int32_t CountImageHeaders(const NitfFile& d) {
  return CountHeaders(d.Images, d.ImageCount);
}
inline int32_t CountGraphicHeaders(const NitfFile& d) {
  return CountHeaders(d.Graphics, d.GraphicCount);
}
inline int32_t CountLabelHeaders(const NitfFile& d) {
  return CountHeaders(d.Labels, d.LabelCount);
}
inline int32_t CountTextHeaders(const NitfFile& d) {
  return CountHeaders(d.Texts, d.TextCount);
}

// Where the source file has what. Each length goes through the guard of LengthList and counts 0 at or past
// the header's count; a group's sum wraps at 32 bits, the positions do not. Nothing is moved by asking.
int64_t ImageSubHeaderPosition(const NitfFile& document, uint32_t index);
int64_t ImageDataPosition(const NitfFile& document, uint32_t index);
int64_t PositionPastGraphics(const NitfFile& document);
int64_t GraphicSubHeaderPosition(const NitfFile& document, uint32_t index);
int64_t LabelSubHeaderPosition(const NitfFile& document, uint32_t index);
int64_t LabelDataPosition(const NitfFile& document, uint32_t index);
int64_t PositionPastLabels(const NitfFile& document);
int64_t TextSubHeaderPosition(const NitfFile& document, uint32_t index);
int64_t TextDataPosition(const NitfFile& document, uint32_t index);
int64_t DesSubHeaderPosition(const NitfFile& document, uint32_t index);

// The seek family: moves the source file to such a position. A failed seek is not reported; the next read is
// short.
void SeekImageData(NitfFile& document, uint32_t index);
void SeekPastGraphics(NitfFile& document);
void SeekGraphicSubHeader(NitfFile& document, uint32_t index);
void SeekLabelData(NitfFile& document, uint32_t index);
void SeekPastLabels(NitfFile& document);
void SeekTextData(NitfFile& document, uint32_t index);
void SeekDesSubHeader(NitfFile& document, uint32_t index);

// Where the drawing of a graphic and the data of a data extension stand.
int64_t GraphicDataPosition(const NitfFile& document, uint32_t index);
int64_t DesDataPosition(const NitfFile& document, uint32_t index);

// The length of a segment's data in the source file; 0 when the table is missing or too short.
uint32_t ImageDataLength(const NitfFile& document, uint32_t index);
uint32_t GraphicDataLength(const NitfFile& document, uint32_t index);
uint32_t LabelDataLength(const NitfFile& document, uint32_t index);

}  // namespace tavi
