// Reads pictures row by row, from top to bottom, whatever their format: what their first bytes say decides.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "PictureWriter.h"

namespace tavinitf {

// One format. Every step returns false on failure, and error() says why then.
class PictureReader {
 public:
  explicit PictureReader(std::FILE* file) : file_(file) {}
  virtual ~PictureReader() = default;
  PictureReader(const PictureReader&) = delete;
  PictureReader& operator=(const PictureReader&) = delete;

  // Reads the head: sets the shape and takes no memory for pixels yet.
  virtual bool Begin() = 0;
  // 8 bits a sample: red, green, blue, or grey. What is transparent lies on white.
  virtual bool ReadRow(uint8_t* row) = 0;

  [[nodiscard]] const PictureShape& shape() const { return shape_; }
  [[nodiscard]] const std::string& error() const { return error_; }

 protected:
  bool Fail(const std::string& reason) {
    if (error_.empty()) error_ = reason;
    return false;
  }

  std::FILE* file_;
  PictureShape shape_{};
  std::string error_;
};

std::unique_ptr<PictureReader> MakeJpegReader(std::FILE* file);
std::unique_ptr<PictureReader> MakePngReader(std::FILE* file);
std::unique_ptr<PictureReader> MakePnmReader(std::FILE* file);
std::unique_ptr<PictureReader> MakeTiffReader(std::FILE* file);

// By the first bytes of the file, which is rewound; null when it is of no format that is read.
std::unique_ptr<PictureReader> MakePictureReader(std::FILE* file);

// A sample over white, `alpha` 255 for all of it.
constexpr uint8_t OverWhite(uint32_t sample, uint32_t alpha) {
  constexpr uint32_t kFull = 255;
  return static_cast<uint8_t>((sample * alpha + kFull * (kFull - alpha) + kFull / 2) / kFull);
}

}  // namespace tavinitf
