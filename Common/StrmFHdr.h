// The streaming file header: a corrected copy of the headers near the end of a file whose producer did not
// know some lengths when it began. Sentinels of all nines in the headers lead to it.
#pragma once

#include <cstdint>

#include "DExSbHdr.h"

struct NitfFile;

namespace tavi {

struct StrmFHdr : DExSbHdr {
  uint32_t ReplacementLength = 0;  // SFH_L1
  uint32_t TrailingLength = 0;     // SFH_L2
  char FirstDelimiter[5] = {};
  char SecondDelimiter[5] = {};
  HostArray<uint8_t>
      ReplacementData;  // SFH_DR; kept but not looked at, as the readers take the bytes from the file
};

// Searches the file backwards for the first delimiter and reads the streaming header from 207 bytes before
// it: the length of a data extension's subheader and of SFH_L1, without stepping over the subheader. Sets
// `tail` to the distance from the delimiter's end to the end of the file. ERR_INVALID_PARAMETER when there is
// no delimiter.
int32_t LocateStreamingHeader(NitfFile& document, StrmFHdr& stream, uint32_t& tail);

// Reads SFH_L1 to SFH_L2 from the current position, and goes back there when all is well. ERR_FILE_READ,
// ERR_FILE_FORMAT for wrong delimiters or lengths that differ, ERR_NO_MEMORY.
int32_t ReadStreamingHeader(StrmFHdr& stream, NitfFile& document);

// What a pass may read: no limit in a normal one, the rest of the replacement data in a streaming one.
uint64_t StreamLimit(const NitfFile& document, const StrmFHdr& stream, uint32_t streaming);
// Locates the streaming header once for the document, and moves to its next unread byte.
int32_t SeekReplacementData(NitfFile& document, StrmFHdr& stream);
// Advances behind the bytes that a whole streaming pass has read.
void NoteStreamConsumed(NitfFile& document, uint64_t bytes);

}  // namespace tavi
