#include "NitfFile.h"

#include <algorithm>

#include "SegmentNodes.h"
#include "StrmFHdr.h"

namespace tavi {

TAVI_UNIT(L"Common/NitfFile")

namespace {

// Appends `count` nodes with fresh subheaders. False without memory; what was built stays in the list.
template <class Record>
bool BuildList(SegmentNode<Record>*& head, uint32_t count, NitfFile& document) {
  SegmentNode<Record>** link = &head;
  for (uint32_t i = 0; i < count; ++i, link = &(*link)->Next) {
    *link = MakeNode<Record>(document, i, Here());
    if (*link == nullptr) return false;
  }
  return true;
}

template <class Record>
void DestroyList(SegmentNode<Record>*& head) {
  while (head != nullptr) {
    SegmentNode<Record>* next = head->Next;
    DestroyNode(head, Here());
    head = next;
  }
}

// The sum of both lengths of the entries below `count`, in the format's 32-bit arithmetic. Entries past the
// lists or the header's own count add nothing.
uint32_t SumLengths(const LengthList& subheaders, const LengthList& data, uint32_t count,
                    uint32_t in_header) {
  uint32_t sum = 0;
  for (uint32_t i = 0, n = std::min(count, in_header); i < n; ++i) sum += subheaders.At(i) + data.At(i);
  return sum;
}

uint32_t ImageLengths(const NtfHdr& h, uint32_t count) {
  return SumLengths(h.LishRead, h.LiRead, count, h.NumImages);
}
uint32_t GraphicLengths(const NtfHdr& h, uint32_t count) {
  return SumLengths(h.LsshRead, h.LsRead, count, h.NumGraphics);
}
uint32_t LabelLengths(const NtfHdr& h, uint32_t count) {
  return SumLengths(h.LlshList, h.LlRead, count, h.NumLabels);
}
uint32_t TextLengths(const NtfHdr& h, uint32_t count) {
  return SumLengths(h.LtshList, h.LtRead, count, h.NumTexts);
}
uint32_t DesLengths(const NtfHdr& h, uint32_t count) {
  return SumLengths(h.LdshList, h.LdList, count, h.NumDes);
}

// The length at `index`, 0 at or past the header's count.
uint32_t Guarded(const LengthList& list, uint32_t index, uint32_t in_header) {
  return index < in_header ? list.At(index) : 0;
}

int64_t PositionPastImages(const NitfFile& d) {
  return static_cast<int64_t>(d.Header.HlRead) +
         (d.ImageCount != 0 ? ImageLengths(d.Header, d.ImagesInFile) : 0);
}

void Seek(NitfFile& document, int64_t position) {
  SeekSource(document, position, kFromStart);
}

// Reads the subheaders of a group one by one, each from its own place.
template <class Record, class Position, class Read>
int32_t ReadSubHeaders(NitfFile& document, SegmentNode<Record>* head, uint32_t count, Position position,
                       Read read) {
  SegmentNode<Record>* node = head;
  for (uint32_t i = 0; node != nullptr && i < count; ++i, node = node->Next) {
    Seek(document, position(document, i));
    const int32_t status = read(*node->Subheader, i);
    if (status < SUCCESS) return status;
  }
  return SUCCESS;
}

int32_t ReadAllSubHeaders(NitfFile& d, StrmFHdr& stream) {
  int32_t status =
      ReadSubHeaders(d, d.Images, d.ImageCount, ImageSubHeaderPosition,
                     [&](ImSubHdr& record, uint32_t) { return ReadImageSubHeader(record, d, stream, 0); });
  if (status < SUCCESS) return status;
  status = ReadSubHeaders(d, d.Graphics, d.GraphicCount, GraphicSubHeaderPosition,
                          [&](GrSubHdr& record, uint32_t) { return ReadGraphicSubHeader(record, d); });
  if (status < SUCCESS) return status;
  if (d.IsNitf20 != 0) {
    status = ReadSubHeaders(d, d.Labels, d.LabelCount, LabelSubHeaderPosition,
                            [&](LbSubHdr& record, uint32_t) { return ReadLabelSubHeader(record, d); });
    if (status < SUCCESS) return status;
  }
  status = ReadSubHeaders(d, d.Texts, d.TextCount, TextSubHeaderPosition,
                          [&](TxSubHdr& record, uint32_t) { return ReadTextSubHeader(record, d); });
  if (status < SUCCESS) return status;
  return ReadSubHeaders(
      d, d.DataExtensions, d.DesCount, DesSubHeaderPosition,
      [&](DExSbHdr& record, uint32_t i) { return ReadDataExtensionSubHeader(record, d, i); });
}

void TakeCounts(NitfFile& d) {
  const NtfHdr& h = d.Header;
  d.HeaderValid = h.Valid;
  d.ImageCount = d.ImagesInFile = h.NumImages;
  d.GraphicCount = d.GraphicsInFile = h.NumGraphics;
  d.TextCount = d.TextsInFile = h.NumTexts;
  d.DesCount = h.NumDes;
  d.ResCount = h.NumRes;
  d.Background = h.BackgroundValue;
  if (d.IsNitf20 != 0) d.LabelCount = d.LabelsInFile = h.NumLabels;
}

}  // namespace

int32_t OpenNitfFile(NitfFile& document, const wchar_t* path) {
  constexpr uint32_t kRawBytesReadOnly = 0x8000;
  constexpr uint32_t kOwnerReads = 0x100;
  StrmFHdr stream;
  document.File = HostFileOpen(path, kRawBytesReadOnly, kOwnerReads);
  document.SourceSize = HostFileSeek(document.File, 0, kFromEnd);
  HostFileSeek(document.File, 0, kFromStart);
  int32_t status = ReadFileHeader(document.Header, document, stream, 0);
  if (status < SUCCESS) return status;
  TakeCounts(document);
  status = AllocateObjects(document);
  return status < SUCCESS ? status : ReadAllSubHeaders(document, stream);
}

void MakeEmptyDocument(NitfFile& document) {
  NtfHdr& header = document.Header;
  header.HlWork = header.FlValue = header.FlMirror = kEmptyFileLength;
  FormatNumericField(header.Text.FL, sizeof header.Text.FL - 1, kEmptyFileLength);
  document.HeaderValid = 1;
}

int32_t AllocateObjects(NitfFile& d) {
  OutputDebugStringA("\nAllocateObjects\n");
  const bool built = BuildList(d.Images, d.ImageCount, d) && BuildList(d.Graphics, d.GraphicCount, d) &&
                     BuildList(d.Labels, d.LabelCount, d) && BuildList(d.Texts, d.TextCount, d) &&
                     BuildList(d.DataExtensions, d.DesCount, d);
  return built ? SUCCESS : ERR_NO_MEMORY;
}

int32_t FreeObjects(NitfFile& d) {
  OutputDebugStringA("\nFreeObjects\n");
  if (d.File != kNoFile) HostFileClose(d.File);
  d.File = kNoFile;
  d.SourceCopy.Release();
  DestroyList(d.Images);
  DestroyList(d.Graphics);
  DestroyList(d.Labels);
  DestroyList(d.Texts);
  DestroyList(d.DataExtensions);
  d.Header.Release();
  return SUCCESS;
}

uint64_t ReadSource(NitfFile& d, void* to, uint64_t bytes) {
  if (!d.SourceCopy.exists()) return HostFileRead(d.File, to, bytes);
  const auto size = static_cast<int64_t>(d.SourceCopy.size());
  const uint64_t left = d.SourcePosition < size ? static_cast<uint64_t>(size - d.SourcePosition) : 0;
  const uint64_t read = std::min(bytes, left);
  if (read != 0) HostMemCopy(to, d.SourceCopy.data() + d.SourcePosition, read);
  d.SourcePosition += static_cast<int64_t>(read);
  return read;
}

int64_t SeekSource(NitfFile& d, int64_t offset, int32_t origin) {
  if (!d.SourceCopy.exists()) return HostFileSeek(d.File, offset, origin);
  const int64_t base = origin == kFromStart  ? 0
                       : origin == kFromHere ? d.SourcePosition
                                             : static_cast<int64_t>(d.SourceCopy.size());
  if (base + offset < 0) return -1;
  d.SourcePosition = base + offset;
  return d.SourcePosition;
}

NtfHdr* GetHeader(NitfFile& document) {
  return document.HeaderValid != 0 ? &document.Header : nullptr;
}

int64_t ImageSubHeaderPosition(const NitfFile& d, uint32_t index) {
  return static_cast<int64_t>(d.Header.HlRead) + ImageLengths(d.Header, index);
}

int64_t ImageDataPosition(const NitfFile& d, uint32_t index) {
  return ImageSubHeaderPosition(d, index) + Guarded(d.Header.LishRead, index, d.Header.NumImages);
}

int64_t PositionPastGraphics(const NitfFile& d) {
  return PositionPastImages(d) + (d.GraphicCount != 0 ? GraphicLengths(d.Header, d.GraphicsInFile) : 0);
}

int64_t GraphicSubHeaderPosition(const NitfFile& d, uint32_t index) {
  return PositionPastImages(d) + GraphicLengths(d.Header, index);
}

int64_t GraphicDataPosition(const NitfFile& d, uint32_t index) {
  return GraphicSubHeaderPosition(d, index) + Guarded(d.Header.LsshRead, index, d.Header.NumGraphics);
}

int64_t LabelSubHeaderPosition(const NitfFile& d, uint32_t index) {
  return PositionPastGraphics(d) + LabelLengths(d.Header, index);
}

int64_t LabelDataPosition(const NitfFile& d, uint32_t index) {
  return LabelSubHeaderPosition(d, index) + Guarded(d.Header.LlshList, index, d.Header.NumLabels);
}

// In the 2.1 layout graphics are counted as the document has them now, not as the source file has them: after
// a graphic has been appended, texts and data extensions are looked for further on by its lengths. That is
// kept.
int64_t PositionPastLabels(const NitfFile& d) {
  if (d.IsNitf20 != 0) {
    return PositionPastGraphics(d) + (d.LabelCount != 0 ? LabelLengths(d.Header, d.LabelsInFile) : 0);
  }
  return PositionPastImages(d) + (d.GraphicCount != 0 ? GraphicLengths(d.Header, d.GraphicCount) : 0);
}

int64_t TextSubHeaderPosition(const NitfFile& d, uint32_t index) {
  return PositionPastLabels(d) + TextLengths(d.Header, index);
}

int64_t TextDataPosition(const NitfFile& d, uint32_t index) {
  return TextSubHeaderPosition(d, index) + Guarded(d.Header.LtshList, index, d.Header.NumTexts);
}

int64_t DesSubHeaderPosition(const NitfFile& d, uint32_t index) {
  return PositionPastLabels(d) + (d.TextCount != 0 ? TextLengths(d.Header, d.TextsInFile) : 0) +
         DesLengths(d.Header, index);
}

int64_t DesDataPosition(const NitfFile& d, uint32_t index) {
  return DesSubHeaderPosition(d, index) + Guarded(d.Header.LdshList, index, d.Header.NumDes);
}

void SeekImageData(NitfFile& d, uint32_t index) {
  Seek(d, ImageDataPosition(d, index));
}
void SeekPastGraphics(NitfFile& d) {
  Seek(d, PositionPastGraphics(d));
}
void SeekGraphicSubHeader(NitfFile& d, uint32_t index) {
  Seek(d, GraphicSubHeaderPosition(d, index));
}
void SeekLabelData(NitfFile& d, uint32_t index) {
  Seek(d, LabelDataPosition(d, index));
}
void SeekPastLabels(NitfFile& d) {
  Seek(d, PositionPastLabels(d));
}
void SeekTextData(NitfFile& d, uint32_t index) {
  Seek(d, TextDataPosition(d, index));
}
void SeekDesSubHeader(NitfFile& d, uint32_t index) {
  Seek(d, DesSubHeaderPosition(d, index));
}

uint32_t ImageDataLength(const NitfFile& d, uint32_t index) {
  return Guarded(d.Header.LiRead, index, d.Header.NumImages);
}
uint32_t GraphicDataLength(const NitfFile& d, uint32_t index) {
  return Guarded(d.Header.LsRead, index, d.Header.NumGraphics);
}
uint32_t LabelDataLength(const NitfFile& d, uint32_t index) {
  return Guarded(d.Header.LlRead, index, d.Header.NumLabels);
}

}  // namespace tavi

NitfFile::~NitfFile() {
  tavi::FreeObjects(*this);
}
