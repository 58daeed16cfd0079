// What the readers of graphic, text, label and data extension subheaders share.
#pragma once

#include "HeaderReader.h"
#include "NitfFile.h"

namespace tavi {

// Reads the rows from where the file stands; when all is well, goes back there.
template <class R>
int32_t ReadSubHeader(R& record, std::span<const FieldRow<R>> rows, NitfFile& document, SegmentKind kind,
                      uint32_t index) {
  const int64_t start = HostFileSeek(document.File, 0, kFromHere);
  FieldReader reader(document, kind, index);
  const int32_t status = ReadRows<R>(record, rows, reader);
  if (status == SUCCESS) HostFileSeek(document.File, start, kFromStart);
  return status;
}

// Counts the records of an extended data block that has just been read.
template <class R>
void CountExtendedTres(R& record) {
  if (!record.ExtendedTre.exists()) return;
  record.ExtendedTreCount = static_cast<uint32_t>(
      CountTres(record.ExtendedTre.data(), static_cast<uint32_t>(record.ExtendedTre.size() - 1)));
  record.ExtendedTreView = record.ExtendedTre.data();
}

}  // namespace tavi
