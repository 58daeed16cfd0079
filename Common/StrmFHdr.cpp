#include "StrmFHdr.h"

#include <algorithm>
#include <cstring>

#include "HeaderReader.h"
#include "NitfFile.h"

namespace tavi {

TAVI_UNIT(L"Common/StrmFHdr")

namespace {

constexpr char kFirstDelimiter[] = "\x0A\x6E\x1D\x97";
constexpr char kSecondDelimiter[] = "\x0E\xCA\x14\xBF";
constexpr uint32_t kDelimiterWidth = 4;
constexpr uint32_t kLengthWidth = 7;
constexpr int64_t kSubheaderAndLength = 200 + kLengthWidth;

bool ReadExactly(NitfFile& document, void* to, uint64_t size) {
  return HostFileRead(document.File, to, size) == size;
}

int32_t ReadLength(NitfFile& document, uint32_t& length) {
  char text[kLengthWidth];
  if (!ReadExactly(document, text, sizeof text)) return ERR_FILE_READ;
  length = static_cast<uint32_t>(ParseInteger(text, sizeof text));
  return SUCCESS;
}

int32_t ReadDelimiter(NitfFile& document, char (&to)[kDelimiterWidth + 1], const char* expected) {
  if (!ReadExactly(document, to, kDelimiterWidth)) return ERR_FILE_READ;
  return std::memcmp(to, expected, kDelimiterWidth) == 0 ? SUCCESS : ERR_FILE_FORMAT;
}

}  // namespace

int32_t LocateStreamingHeader(NitfFile& document, StrmFHdr& stream, uint32_t& tail) {
  constexpr int64_t kChunk = 255;
  constexpr int64_t kOverlap = kDelimiterWidth - 1;
  const int64_t size = HostFileSeek(document.File, 0, kFromEnd);
  if (size <= 0) return ERR_INVALID_PARAMETER;
  char buffer[kChunk + 1];
  for (int64_t scanned = 0; scanned < size; scanned -= kOverlap) {
    const int64_t remaining = size - scanned;
    if (remaining < kDelimiterWidth) return ERR_INVALID_PARAMETER;
    const int64_t chunk = std::min(remaining, kChunk);
    HostFileSeek(document.File, -(scanned + chunk), kFromEnd);
    const auto read = static_cast<int64_t>(HostFileRead(document.File, buffer, static_cast<uint64_t>(chunk)));
    if (read < kDelimiterWidth) return ERR_INVALID_PARAMETER;  // the file shrinks under the search
    scanned += read;
    buffer[read] = '\0';
    // A search in terminated text: a zero byte in the chunk hides what stands behind it.
    if (const char* found = std::strstr(buffer, kFirstDelimiter)) {
      const int64_t from_end = scanned - (found - buffer);
      HostFileSeek(document.File, -from_end - kSubheaderAndLength, kFromEnd);
      tail = static_cast<uint32_t>(from_end - kDelimiterWidth);
      return ReadStreamingHeader(stream, document);
    }
    if (scanned >= size) break;
  }
  return ERR_INVALID_PARAMETER;
}

int32_t ReadStreamingHeader(StrmFHdr& stream, NitfFile& document) {
  const int64_t start = HostFileSeek(document.File, 0, kFromHere);
  int32_t status = ReadLength(document, stream.ReplacementLength);
  if (status != SUCCESS) return status;
  status = ReadDelimiter(document, stream.FirstDelimiter, kFirstDelimiter);
  if (status != SUCCESS) return status;
  // Replacement data that the file cannot hold end in a short read; memory for them is never asked for.
  const int64_t here = start + kLengthWidth + kDelimiterWidth;
  if (stream.ReplacementLength > document.SourceSize - here) return ERR_FILE_READ;
  if (!stream.ReplacementData.Allocate(stream.ReplacementLength + 1ULL, Here())) return ERR_NO_MEMORY;
  if (!ReadExactly(document, stream.ReplacementData.data(), stream.ReplacementLength)) return ERR_FILE_READ;
  status = ReadDelimiter(document, stream.SecondDelimiter, kSecondDelimiter);
  if (status != SUCCESS) return status;
  status = ReadLength(document, stream.TrailingLength);
  if (status != SUCCESS) return status;
  if (stream.TrailingLength != stream.ReplacementLength) return ERR_FILE_FORMAT;
  HostFileSeek(document.File, start, kFromStart);
  return SUCCESS;
}

uint64_t StreamLimit(const NitfFile& document, const StrmFHdr& stream, uint32_t streaming) {
  if (streaming == 0) return FieldReader::kNoLimit;
  return stream.ReplacementLength - std::min(stream.ReplacementLength, document.StreamConsumed);
}

int32_t SeekReplacementData(NitfFile& document, StrmFHdr& stream) {
  if (document.StreamLoaded == 0) {
    const int32_t status = LocateStreamingHeader(document, stream, document.StreamTail);
    if (status != SUCCESS) return status;
    document.StreamLoaded = 1;
  }
  HostFileSeek(document.File, -static_cast<int64_t>(document.StreamTail), kFromEnd);
  return SUCCESS;
}

void NoteStreamConsumed(NitfFile& document, uint64_t bytes) {
  document.StreamConsumed += static_cast<uint32_t>(bytes);
  document.StreamTail -= static_cast<uint32_t>(bytes);
}

}  // namespace tavi
