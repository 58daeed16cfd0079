// The drawing of a graphic segment: loaded from the file's bytes, put out as a picture.
#pragma once

#include <cstdint>
#include <string>

#include "OutputFile.h"
#include "Segments.h"
#include "TaviHost.h"

namespace tavinitf {

enum class DrawingFormat : uint32_t { kAsItStands = 0, kSvg = 1, kPng = 2, kPdf = 3 };

// By the ending of a name, upper or lower case.
DrawingFormat DrawingFormatOf(const std::string& name);

class Drawing {
 public:
  Drawing() { HostVecInit(&vector_); }
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;
  ~Drawing();

  // Reads and loads the drawing. ERR_FILE_READ when the bytes cannot be read, else what the host says of them.
  int32_t Load(const std::string& path, const Extent& data);
  // Writes the drawing into the open file. ERR_FILE_WRITE leaves the reason in the file, others are the host's.
  int32_t Export(DrawingFormat format, OutputFile& output) const;

  HostVector* vector() { return &vector_; }

 private:
  HostVector vector_{};
};

}  // namespace tavinitf
