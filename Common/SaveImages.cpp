// Image segments. Their data take one of three roads: from memory, record by record for vector quantised ones,
// or as a raw copy.
#include <algorithm>

#include "ImgVq.h"
#include "SaveFields.h"
#include "SaveNitf.h"

namespace tavi {

TAVI_UNIT(L"Common/SaveImages")

namespace {

uint32_t LengthAt(const LengthList& list, uint32_t index, const NtfHdr& header) {
  return index < header.NumImages ? list.At(index) : 0;
}

void StoreLength(LengthList& list, uint32_t index, uint32_t length, const NtfHdr& header) {
  if (index < header.NumImages && index < list.size()) list[index] = length;
}

// A product that does not wrap: one too large for any file stays too large.
uint64_t Product(uint64_t a, uint64_t b) {
  return a != 0 && b > UINT64_MAX / a ? UINT64_MAX : a * b;
}

// A source that cannot be moved would be copied from the wrong place.
bool GoToImageData(NitfFile& document, uint32_t index) {
  const int64_t position = ImageDataPosition(document, index);
  return SeekSource(document, position, kFromStart) == position;
}

bool IsMaskedVq(const ImSubHdr& image) {
  return image.DataOffset != 0 && image.Compression == kM4;
}

// Blocks that the mask does not call absent; without a mask all of them.
uint64_t CountPresentBlocks(const ImSubHdr& image) {
  const uint64_t blocks = static_cast<uint64_t>(image.BlocksPerRow) * image.BlocksPerColumn;
  if (image.BlockMaskLength == 0) return blocks;
  // Entries past the table read as absent.
  const uint64_t entries = std::min(blocks, image.BlockMask.bytes.size() / 4);
  uint64_t present = 0;
  for (uint64_t i = 0; i < entries; ++i) present += image.BlockMask.At(i) != MaskTable::kAbsentBlock;
  return present;
}

}  // namespace

int32_t TaviNitfSaveFile::WriteImages() {
  int64_t start = output_.position();
  uint32_t i = 0;
  for (auto* node = document_.Images; node != nullptr && i < document_.ImageCount; node = node->Next, ++i) {
    if (node->Subheader == nullptr) continue;
    ImSubHdr& image = *node->Subheader;
    int32_t status = WriteImageSubHeader(image);
    if (status != SUCCESS) return status;
    const int64_t after_subheader = output_.position();
    if (IsMaskedVq(image)) {
      const auto length = static_cast<uint32_t>(after_subheader - start) - mask_prefix_;
      if (length != LengthAt(document_.Header.LishRead, i, document_.Header)) {
        lengths_shifted_ = true;
        status = PatchImageSubHeaderLength(i, length);
        if (status != SUCCESS) return status;
      }
    }
    status = WriteImageData(image, i);
    if (status != SUCCESS) return status;
    start = output_.position();
    if (IsMaskedVq(image)) {
      lengths_shifted_ = true;
      const auto length = static_cast<uint32_t>(start - after_subheader) + mask_prefix_;
      if (length != ImageDataLength(document_, i)) status = PatchImageLength(i, length);
      if (status != SUCCESS) return status;
    }
  }
  return SUCCESS;
}

int32_t TaviNitfSaveFile::WriteImageSubHeader(ImSubHdr& image) {
  output_.SeekToEnd();
  FieldWriter writer(output_, document_);
  const int32_t status = WriteRows<ImSubHdr>(image, ImageRows(), writer);
  mask_prefix_ = writer.MaskTableSize();
  return status;
}

int32_t TaviNitfSaveFile::WriteImageData(const ImSubHdr& image, uint32_t index) {
  if (image.HasPendingData != 0) {
    const uint64_t length = LengthAt(document_.Header.LiWork, index, document_.Header);
    return output_.Write(image.PendingData.data(), std::min(length, image.PendingData.size()));
  }
  const bool is_vq = image.Compression == kC4 || image.Compression == kM4;
  return is_vq ? WriteVqImageData(image, index) : CopySourceImageData(image, index);
}

// The source's data begin with the mask table that the subheader's writer has just put out: the copy begins where
// that began and covers it with the source's own bytes. Its place comes from the working lengths, right or wrong,
// until a length has changed.
int32_t TaviNitfSaveFile::CopySourceImageData(const ImSubHdr& image, uint32_t index) {
  const NtfHdr& header = document_.Header;
  if (lengths_shifted_) {
    output_.SeekToEnd();
    output_.SeekTo(output_.end() - image.DataOffset);
  } else {
    uint32_t earlier = 0;
    for (uint32_t j = 0; j < index; ++j)
      earlier += LengthAt(header.LishWork, j, header) + LengthAt(header.LiWork, j, header);
    output_.SeekTo(static_cast<int64_t>(header.HlWork) + earlier + LengthAt(header.LishWork, index, header));
  }
  const uint32_t length = ImageDataLength(document_, index);
  if (length == 0) return SUCCESS;
  return GoToImageData(document_, index) ? output_.Copy(document_, length) : ERR_FILE_READ;
}

// Header, look-up records, look-up tables, and the code rows of each block that is there. Bytes behind them are
// dropped.
int32_t TaviNitfSaveFile::WriteVqImageData(const ImSubHdr& image, uint32_t index) {
  if (!GoToImageData(document_, index)) return ERR_FILE_READ;
  // A table that could not be passed must not end in data from the wrong place.
  const int32_t skipped = image.Compression == kM4 ? SkipMaskTable(document_, image) : SUCCESS;
  if (skipped != SUCCESS) return skipped;
  uint8_t head[VqHeader::kSize];
  if (ReadSource(document_, head, sizeof head) != sizeof head) return ERR_FILE_READ;
  const VqHeader vq = ParseVqHeader(head);
  if (vq.image_rows == 0) return ERR_FILE_FORMAT;
  const uint64_t rows_at_once = image.BlockHeight / vq.image_rows;
  const uint64_t row_bytes = Product(vq.code_bits, vq.codes_per_row) / 8;
  // More code rows than rows: the walk over a block would never come to its end.
  if (rows_at_once == 0 && image.BlockHeight != 0) return ERR_FILE_FORMAT;
  int32_t status = output_.Write(head, sizeof head);
  if (vq.lookup_records != 0 && status == SUCCESS) {
    HostArray<uint8_t> records;
    if (!records.Allocate(uint64_t{vq.lookup_records} * VqLookupRecord::kSize, Here())) return ERR_NO_MEMORY;
    if (ReadSource(document_, records.data(), records.size()) != records.size()) return ERR_FILE_READ;
    status = output_.Write(records.data(), records.size());
    // The first record's count serves for every table.
    const uint64_t entries = ReadBig32(records.data() + 2);
    const uint64_t tables = Product(Product(vq.lookup_records, entries), rows_at_once);
    if (status == SUCCESS) status = output_.Copy(document_, tables);
  }
  if (status != SUCCESS || image.BlockHeight == 0) return status;
  const uint64_t code_rows = (image.BlockHeight + rows_at_once - 1) / rows_at_once;
  return output_.Copy(document_, Product(CountPresentBlocks(image), Product(code_rows, row_bytes)));
}

int32_t TaviNitfSaveFile::PatchImageSubHeaderLength(uint32_t index, uint32_t length) {
  const auto lish = ImageLengthColumns()[0].width.In(LayoutOf(document_));
  const auto li = ImageLengthColumns()[1].width.In(LayoutOf(document_));
  output_.SeekTo(segment_table_ + int64_t{index} * (lish + li));
  FieldWriter writer(output_, document_);
  const int32_t status = writer.Write(writer.Print(static_cast<int32_t>(length)), lish, Fill::kZero);
  StoreLength(document_.Header.LishWork, index, length, document_.Header);
  output_.SeekToEnd();
  return status;
}

int32_t TaviNitfSaveFile::PatchImageLength(uint32_t index, uint32_t length) {
  const auto lish = ImageLengthColumns()[0].width.In(LayoutOf(document_));
  const auto li = ImageLengthColumns()[1].width.In(LayoutOf(document_));
  output_.SeekTo(segment_table_ + int64_t{index} * (lish + li) + lish);
  FieldWriter writer(output_, document_);
  const int32_t status = writer.Write(writer.Print(static_cast<int32_t>(length)), li, Fill::kZero);
  StoreLength(document_.Header.LiWork, index, length, document_.Header);
  output_.SeekToEnd();
  return status;
}

}  // namespace tavi
