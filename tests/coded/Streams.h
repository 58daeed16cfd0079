// Streams to be found, and a literal search for them, stretch after stretch.
#ifndef TAVI_TESTS_CODED_STREAMS_H
#define TAVI_TESTS_CODED_STREAMS_H

#include <optional>
#include <utility>
#include <vector>

#include "CodedTest.h"

namespace tavi_test {

inline constexpr size_t kTinyJpegSize = 700;
// A JPEG of 8 x 8 grey pixels that carries `tag` in a comment, brought to `size` bytes by zeros behind its
// end. Its only start marker is its own.
Bytes TinyJpeg(uint32_t tag, size_t size = kTinyJpegSize);

// Begins as a stream and is none.
Bytes RefusedStream(size_t size = kTinyJpegSize);

// What a load is expected to be given.
struct Expected {
  int32_t status = SUCCESS;
  std::vector<Bytes> streams;
};

// A segment's data and what the file has behind them.
class StreamReference {
 public:
  StreamReference(const ImageSpec& image, const BuiltFile& built);

  std::optional<uint32_t> FindNext(uint64_t limit, uint64_t start) const;
  std::optional<uint32_t> FindLast() const;
  std::optional<Bytes> Read(int64_t offset, size_t size) const;

  // The streams that are loaded without a block mask. What does not begin with a start marker is refused.
  Expected Tiles() const;
  Expected Bands() const;

 private:
  struct Walk {
    uint64_t remaining = 0;
    uint64_t size = 0;
    uint64_t consumed = 0;
  };
  std::optional<Bytes> Next(Walk& walk, bool last_block, bool fall_back) const;

  ImageSpec image_;
  Bytes bytes_;  // from the first byte of the data to the end of the file
  uint64_t length_;
  uint64_t pixels_;
};

}  // namespace tavi_test

#endif  // TAVI_TESTS_CODED_STREAMS_H
