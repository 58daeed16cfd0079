// A metafile's elements, read by a reader of its own: the writer is checked against the encoding, not against the
// host's reader.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tavi::test {

struct CgmElement {
  uint32_t word = 0;  // as it stands in the metafile
  uint32_t group = 0;
  uint32_t id = 0;
  std::vector<uint8_t> list;
  size_t partitions = 0;  // of the long form
};

// Every element has to begin at an even offset, every padding octet to be zero, and every partition but the last of an
// element to be even.
std::vector<CgmElement> ListElements(const std::vector<uint8_t>& metafile);

// "4,1" for a POLYLINE, in the order of the metafile; `group` limits it to a class.
std::string CodesOf(const std::vector<CgmElement>& elements, int group = -1);

// The first element of that class and number; fails the test when there is none.
const CgmElement& Find(const std::vector<CgmElement>& elements, uint32_t group, uint32_t id);

// The list as words.
std::vector<int> Words(const CgmElement& element);

}  // namespace tavi::test
