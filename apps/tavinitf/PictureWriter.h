// Writes pictures row by row, from top to bottom, in the format that the file name's ending asks for.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "OutputFile.h"

namespace tavinitf {

struct PictureShape {
  uint32_t width;
  uint32_t height;
  uint32_t channels;  // 3: blue, green, red; 1: grey
};

// One format. Every step returns false on failure, and the reason stands in the output file then.
class PictureWriter {
 public:
  explicit PictureWriter(OutputFile& file) : file_(file) {}
  virtual ~PictureWriter() = default;
  PictureWriter(const PictureWriter&) = delete;
  PictureWriter& operator=(const PictureWriter&) = delete;

  virtual bool Begin(const PictureShape& shape) = 0;
  virtual bool WriteRow(const uint8_t* row) = 0;
  virtual bool Finish() = 0;

 protected:
  OutputFile& file_;
};

std::unique_ptr<PictureWriter> MakeBmpWriter(OutputFile& file);
std::unique_ptr<PictureWriter> MakeJpegWriter(OutputFile& file);
std::unique_ptr<PictureWriter> MakePngWriter(OutputFile& file);
std::unique_ptr<PictureWriter> MakePgmWriter(OutputFile& file);
std::unique_ptr<PictureWriter> MakePpmWriter(OutputFile& file);
std::unique_ptr<PictureWriter> MakeTiffWriter(OutputFile& file);

struct PictureFormat {
  const char* ending;  // ".png"
  std::unique_ptr<PictureWriter> (*make)(OutputFile& file);
  bool grey_only;  // the format cannot hold colours
};

// The format of a name by its ending, upper or lower case; null when there is none of that ending.
const PictureFormat* FindPictureFormat(const std::string& name);
// ".png .ppm …"
std::string PictureEndings();

// A row of blue, green, red to one of red, green, blue.
void SwapToRgb(const uint8_t* bgr, uint32_t width, std::vector<uint8_t>& rgb);

}  // namespace tavinitf
