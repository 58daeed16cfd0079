// A vector read from a metafile, freed at the end.
#pragma once

#include "Document.h"

namespace tavi_fuzz {

class Drawing {
 public:
  Drawing(const uint8_t* data, size_t size) {
    HostVecInit(&vector_);
    HostVecLoadMemory(data, &vector_, size, nullptr, 0);
  }
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;
  ~Drawing() {
    if (HostVecIsEmpty(&vector_) == 0) HostVecFree(&vector_);
  }
  HostVector* get() const { return &vector_; }

 private:
  mutable HostVector vector_ = {};
};

}  // namespace tavi_fuzz
