// What the library asks of the host while it draws. The executable defines the operations of drawing itself: each call
// is noted and then handed on to libTaviHost, unless the test has set an answer for the operation.
#ifndef TAVI_TESTS_GRAPHICS_RECORDING_HOST_H
#define TAVI_TESTS_GRAPHICS_RECORDING_HOST_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "TaviHost.h"

namespace graphics {

struct AddedObject {
  uint32_t kind = 0;
  std::vector<uint8_t> record;      // as many bytes as its size says
  std::vector<VectorPoint> points;  // of a polygon
};

struct Recording {
  std::vector<std::string> calls;  // in order, with their arguments in words
  std::vector<AddedObject> objects;
  std::vector<uint8_t> loaded;                    // what HostVecLoadMemory was given last
  std::map<std::string, int32_t> answers;         // by operation: returned in place of the call
  std::function<int32_t(HostVector*)> load = {};  // stands in for HostVecLoadMemory
  std::vector<std::vector<uint8_t>> bitmap_rows;  // of the bitmap painted last
  std::vector<HostPaletteEntry> bitmap_palette;   // likewise

  // The calls of that operation.
  [[nodiscard]] std::vector<std::string> Of(const std::string& operation) const;
  // The calls whose names begin so.
  [[nodiscard]] std::vector<std::string> Beginning(const std::string& prefix) const;
};

// Records while it lives; not to be nested.
class Recorder {
 public:
  Recorder();
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;
  Recording& operator*() { return recording_; }
  Recording* operator->() { return &recording_; }

 private:
  Recording recording_;
};

}  // namespace graphics

#endif  // TAVI_TESTS_GRAPHICS_RECORDING_HOST_H
