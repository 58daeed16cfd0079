// The tagged records (TREs) in the extended data blocks of the headers.
#pragma once

#include <fstream>

#include "Segments.h"

namespace tavinitf {

struct TaggedRecord {
  std::string tag;    // six characters; fewer where the block ends inside it
  const char* block;  // the field that holds it: UDHD, XHD, UDID, IXSHD, SXSHD, LXSHD, TXSHD
  uint64_t offset;    // of the tag, from the start of the file
  uint64_t length;    // of the data behind tag and length field, as that field says; no digits count as 0
  bool overruns;      // the record ends behind its block
};

// The records of all blocks of the segment, in file order.
std::vector<TaggedRecord> FindTaggedRecords(std::ifstream& file, const Segment& segment);

}  // namespace tavinitf
