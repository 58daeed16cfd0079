// Graphic, label, text and data extension segments: each subheader anew, each segment's data as they stand in the
// source or in memory.
#include <algorithm>

#include "SaveFields.h"
#include "SaveNitf.h"

namespace tavi {

namespace {

template <class Record>
int32_t WriteSubHeader(Record& record, std::span<const FieldRow<Record>> rows, SaveOutput& output,
                       const NitfFile& document) {
  output.SeekToEnd();
  FieldWriter writer(output, document);
  return WriteRows<Record>(record, rows, writer);
}

uint32_t LengthAt(const LengthList& list, uint32_t index, uint32_t in_header) {
  return index < in_header ? list.At(index) : 0;
}

int32_t WriteFromMemory(const HostArray<uint8_t>& data, uint64_t length, SaveOutput& output) {
  return output.Write(data.data(), std::min(length, data.size()));
}

int32_t CopyFrom(NitfFile& document, int64_t position, uint64_t length, SaveOutput& output) {
  if (length == 0) return SUCCESS;
  if (SeekSource(document, position, kFromStart) != position) return ERR_FILE_READ;
  return output.Copy(document, length);
}

}  // namespace

int32_t TaviNitfSaveFile::WriteGraphic(GrSubHdr& graphic, uint32_t index) {
  const int32_t status = WriteSubHeader<GrSubHdr>(graphic, GraphicRows(), output_, document_);
  if (status != SUCCESS) return status;
  const NtfHdr& header = document_.Header;
  if (graphic.GraphicDataInMemory != 0) {
    return WriteFromMemory(graphic.GraphicDataBuffer, LengthAt(header.LsWork, index, header.NumGraphics),
                           output_);
  }
  return CopyFrom(document_, GraphicDataPosition(document_, index),
                  LengthAt(header.LsRead, index, header.NumGraphics), output_);
}

int32_t TaviNitfSaveFile::WriteLabel(LbSubHdr& label, uint32_t index) {
  const int32_t status = WriteSubHeader<LbSubHdr>(label, LabelRows(), output_, document_);
  if (status != SUCCESS) return status;
  const uint32_t length = LengthAt(document_.Header.LlWork, index, document_.Header.NumLabels);
  if (label.LabelDataInMemory != 0) return WriteFromMemory(label.LabelDataBuffer, length, output_);
  return CopyFrom(document_, LabelDataPosition(document_, index), length, output_);
}

int32_t TaviNitfSaveFile::WriteText(TxSubHdr& text, uint32_t index) {
  const int32_t status = WriteSubHeader<TxSubHdr>(text, TextRows(), output_, document_);
  if (status != SUCCESS) return status;
  const uint32_t length = LengthAt(document_.Header.LtWork, index, document_.Header.NumTexts);
  if (text.TextDataInMemory != 0) return WriteFromMemory(text.TextDataBuffer, length, output_);
  return CopyFrom(document_, TextDataPosition(document_, index), length, output_);
}

int32_t TaviNitfSaveFile::WriteDataExtension(DExSbHdr& extension, uint32_t index) {
  const int32_t status = WriteSubHeader<DExSbHdr>(extension, DataExtensionRows(), output_, document_);
  if (status != SUCCESS) return status;
  const NtfHdr& header = document_.Header;
  return CopyFrom(document_, DesDataPosition(document_, index), LengthAt(header.LdList, index, header.NumDes),
                  output_);
}

}  // namespace tavi
