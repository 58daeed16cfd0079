#include "SaveNitf.h"

#include <algorithm>

#include "SaveFields.h"
#include "SaveOntoSource.h"

namespace tavi {

namespace {

// What a save changes in the header before it is written: the mirror of FL, and the images' lengths, which are
// those of the source again.
void RefreshWorkingLengths(NitfFile& document) {
  NtfHdr& header = document.Header;
  header.FlMirror = static_cast<uint32_t>(NumberOf(header.Text.FL));
  const auto images = static_cast<uint32_t>(CountImageHeaders(document));
  const uint64_t known = std::min({header.LiRead.size(), header.LiWork.size(),
                                   static_cast<uint64_t>(std::min(header.NumImages, images))});
  for (uint64_t i = 0; i < known; ++i) header.LiWork[i] = header.LiRead[i];
}

// Writes the segments of a list one by one.
template <class Record, class WriteOne>
int32_t WriteList(const SegmentNode<Record>* node, uint32_t count, WriteOne write) {
  int32_t status = SUCCESS;
  for (uint32_t i = 0; node != nullptr && i < count && status == SUCCESS; ++i, node = node->Next) {
    if (node->Subheader != nullptr) status = write(*node->Subheader, i);
  }
  return status;
}

}  // namespace

int32_t SaveDocument(NitfFile& document, const wchar_t* path) {
  SaveOutput output;
  if (!output.Prepare()) return ERR_NO_MEMORY;
  const bool already_kept = document.SourceCopy.exists();
  int32_t status = KeepSourceReadable(document, path);
  if (status != SUCCESS) return status;
  output.Open(path);
  if (!already_kept) DropNeedlessCopy(document);
  TaviNitfSaveFile save(document, output);
  status = save.WriteFileHeader();
  // Whether the file can be written at all shows before the source is read.
  if (status == SUCCESS) status = output.Flush();
  if (status == SUCCESS) status = save.WriteSegments();
  const int32_t written = output.Close();
  return status != SUCCESS ? status : written;
}

int32_t TaviNitfSaveFile::WriteFileHeader() {
  RefreshWorkingLengths(document_);
  FieldWriter writer(output_, document_);
  int32_t status = SUCCESS;
  for (const FieldRow<NtfHdr>& row : FileHeaderRows()) {
    if (row.columns.data() == ImageLengthColumns().data()) segment_table_ = output_.position();
    if (status == SUCCESS) status = WriteRow(document_.Header, row, writer, 0, 0);
  }
  return status;
}

int32_t TaviNitfSaveFile::WriteSegments() {
  NitfFile& d = document_;
  int32_t status = WriteImages();
  if (status != SUCCESS) return status;
  status = WriteList(d.Graphics, d.GraphicCount,
                     [&](GrSubHdr& record, uint32_t i) { return WriteGraphic(record, i); });
  if (status != SUCCESS) return status;
  status =
      WriteList(d.Labels, d.LabelCount, [&](LbSubHdr& record, uint32_t i) { return WriteLabel(record, i); });
  if (status != SUCCESS) return status;
  status =
      WriteList(d.Texts, d.TextCount, [&](TxSubHdr& record, uint32_t i) { return WriteText(record, i); });
  if (status != SUCCESS) return status;
  return WriteList(d.DataExtensions, d.DesCount,
                   [&](DExSbHdr& record, uint32_t i) { return WriteDataExtension(record, i); });
}

}  // namespace tavi
