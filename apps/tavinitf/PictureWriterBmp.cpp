// Windows bitmap: 24 bits, or 8 bits with a grey palette; uncompressed, the bottom row first.
#include <algorithm>

#include "PictureWriter.h"

namespace tavinitf {
namespace {

constexpr uint32_t kFileHeaderSize = 14;
constexpr uint32_t kInfoHeaderSize = 40;
constexpr uint32_t kGreyPaletteSize = 256 * 4;
constexpr uint32_t kPixelsPerMetre = 2835;  // 72 to an inch

void PutU16(std::vector<uint8_t>& bytes, uint32_t value) {
  bytes.push_back(static_cast<uint8_t>(value));
  bytes.push_back(static_cast<uint8_t>(value >> 8));
}

void PutU32(std::vector<uint8_t>& bytes, uint32_t value) {
  PutU16(bytes, value & 0xFFFF);
  PutU16(bytes, value >> 16);
}

class BmpWriter : public PictureWriter {
 public:
  using PictureWriter::PictureWriter;

  bool Begin(const PictureShape& shape) override {
    shape_ = shape;
    stride_ = (uint64_t{shape.width} * shape.channels + 3) / 4 * 4;
    pixels_at_ = kFileHeaderSize + kInfoHeaderSize + (shape.channels == 1 ? kGreyPaletteSize : 0);
    const uint64_t size = pixels_at_ + stride_ * shape.height;
    if (size > UINT32_MAX || shape.width > INT32_MAX || shape.height > INT32_MAX) {
      return file_.Fail("the picture is too large for a BMP file");
    }
    std::vector<uint8_t> header = {'B', 'M'};
    PutU32(header, static_cast<uint32_t>(size));
    PutU32(header, 0);
    PutU32(header, pixels_at_);
    PutU32(header, kInfoHeaderSize);
    PutU32(header, shape.width);
    PutU32(header, shape.height);
    PutU16(header, 1);
    PutU16(header, shape.channels * 8);
    PutU32(header, 0);  // not compressed
    PutU32(header, static_cast<uint32_t>(size - pixels_at_));
    PutU32(header, kPixelsPerMetre);
    PutU32(header, kPixelsPerMetre);
    PutU32(header, shape.channels == 1 ? 256 : 0);
    PutU32(header, 0);
    for (uint32_t grey = 0; shape.channels == 1 && grey < 256; ++grey) PutU32(header, grey * 0x010101);
    padded_.assign(stride_, 0);
    return file_.Write(header.data(), header.size());
  }

  bool WriteRow(const uint8_t* row) override {
    std::copy_n(row, size_t{shape_.width} * shape_.channels, padded_.begin());
    const uint64_t below = shape_.height - ++written_;
    return file_.Seek(static_cast<int64_t>(pixels_at_ + below * stride_), SEEK_SET) &&
           file_.Write(padded_.data(), padded_.size());
  }

  bool Finish() override { return true; }

 private:
  PictureShape shape_{};
  uint64_t stride_ = 0;
  uint32_t pixels_at_ = 0;
  uint32_t written_ = 0;
  std::vector<uint8_t> padded_;
};

}  // namespace

std::unique_ptr<PictureWriter> MakeBmpWriter(OutputFile& file) {
  return std::make_unique<BmpWriter>(file);
}

}  // namespace tavinitf
