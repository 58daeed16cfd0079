#include "Drawing.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <vector>

namespace tavinitf {

DrawingFormat DrawingFormatOf(const std::string& name) {
  std::string ending = std::filesystem::path(name).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (ending == ".svg") return DrawingFormat::kSvg;
  if (ending == ".png") return DrawingFormat::kPng;
  if (ending == ".pdf") return DrawingFormat::kPdf;
  return DrawingFormat::kAsItStands;
}

Drawing::~Drawing() {
  if (HostVecIsEmpty(&vector_) == 0) HostVecFree(&vector_);
}

int32_t Drawing::Load(const std::string& path, const Extent& data) {
  std::ifstream input(path, std::ios::binary);
  input.seekg(static_cast<std::streamoff>(data.offset));
  std::vector<char> bytes(data.length);
  if (!input.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) return ERR_FILE_READ;
  return HostVecLoadMemory(bytes.data(), &vector_, bytes.size(), nullptr, 0);
}

int32_t Drawing::Export(DrawingFormat format, OutputFile& output) const {
  HostGlobalMemory block = nullptr;
  uint64_t size = 0;
  const int32_t status = HostVecExport(&block, &vector_, static_cast<uint32_t>(format), &size);
  if (status != SUCCESS) return status;
  const void* bytes = GlobalLock(block);
  const bool written = output.Write(bytes, size);
  GlobalUnlock(block);
  HostGlobalFree(block, 0, nullptr);
  return written ? SUCCESS : ERR_FILE_WRITE;
}

}  // namespace tavinitf
