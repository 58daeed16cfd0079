// The elements of a binary metafile, one after the other.
#pragma once

#include <cstdint>
#include <vector>

#include "TaviFile/Codec.h"

namespace tavi::host::cgm {

struct Element {
  uint32_t group = 0;  // the class
  uint32_t id = 0;
  Bytes list;  // the parameters, partitions joined; valid until the walker moves on
};

class ElementWalker {
 public:
  explicit ElementWalker(Bytes stream) : stream_(stream) {}

  // False at the end, and where the header or the list of an element is cut: that element is lost.
  bool Next(Element* element);
  // Where the next element begins, and where the last one began.
  size_t position() const { return at_; }
  size_t start() const { return start_; }

 private:
  bool Word(uint32_t* word);
  bool Take(size_t bytes, Bytes* part);
  bool LongForm(Element* element);

  Bytes stream_;
  size_t at_ = 0;
  size_t start_ = 0;
  std::vector<uint8_t> joined_;
};

}  // namespace tavi::host::cgm
