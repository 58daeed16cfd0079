#include "Parts.h"

#include <cmath>
#include <filesystem>
#include <system_error>

#include "Drawing.h"
#include "Limits.h"
#include "PathNames.h"
#include "PictureReader.h"
#include "Refusal.h"

namespace tavinitf {
namespace {

Failure NotAppended(const Part& part, const std::string& reason, int32_t status) {
  return FailureLine(part.file, "not appended", reason, status);
}

const char* KindOf(const Part& part) {
  switch (part.kind) {
    case Part::Kind::kImage:
      return "images";
    case Part::Kind::kGraphic:
      return "graphics";
    case Part::Kind::kText:
      return "texts";
  }
  return "segments";
}

// The status 0 of an append says that there is no room.
Failure CheckAppend(const Part& part, int32_t status, const std::string& reason = {}) {
  if (status == SUCCESS) return std::nullopt;
  if (status == 0) {
    return NotAppended(part, std::string("the file holds 999 ") + KindOf(part) + ", the most there can be",
                       0);
  }
  return NotAppended(part, reason.empty() ? StatusMeaning(status) : reason, status);
}

// Nothing but a regular file is read: a pipe would never end.
Failure CheckFile(const Part& part, uint64_t& size) {
  std::error_code error;
  const auto status = std::filesystem::status(part.file, error);
  if (status.type() == std::filesystem::file_type::not_found)
    return NotAppended(part, "no such file", ERR_FILE_NOT_FOUND);
  if (!std::filesystem::is_regular_file(status))
    return NotAppended(part, "is no regular file (only a regular file is accepted)", ERR_FILE_OPEN);
  size = std::filesystem::file_size(part.file, error);
  return error ? NotAppended(part, error.message(), ERR_FILE_OPEN) : std::nullopt;
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

class Bitmap {
 public:
  Bitmap() = default;
  ~Bitmap() {
    if ((bitmap_.flags & 1) != 0) HostFreeBitmap(&bitmap_);
  }
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;

  int32_t Create(const PictureShape& shape) {
    constexpr uint32_t kRedFirst = 0;
    constexpr uint32_t kGrey = 2;
    constexpr uint32_t kTopRowFirst = 1;
    return HostCreateBitmap(&bitmap_, sizeof bitmap_, 1, shape.width, shape.height, 8 * shape.channels,
                            shape.channels == 1 ? kGrey : kRedFirst, nullptr, kTopRowFirst, nullptr, 0);
  }
  HostBitmap* get() { return &bitmap_; }

 private:
  HostBitmap bitmap_{};
};

Failure CheckShape(const Part& part, const PictureShape& shape) {
  constexpr uint32_t kMostOfSide = 9999;  // four digits of a block's size
  const std::string size = std::to_string(shape.width) + " x " + std::to_string(shape.height) + " pixels";
  if (shape.width > kMostOfSide || shape.height > kMostOfSide)
    return NotAppended(part, size + " (a side may have at most 9999)", ERR_INVALID_PARAMETER);
  const uint64_t bytes = uint64_t{shape.width} * shape.height * shape.channels;
  if (HostWithinLimit(HOST_LIMIT_PICTURE, bytes, 0) == 0)
    return NotAppended(part, size + ": " + LimitWords(HOST_LIMIT_PICTURE), ERR_NO_MEMORY);
  return std::nullopt;
}

Failure ReadPicture(const Part& part, PictureReader& reader, Bitmap& bitmap) {
  const auto not_read = [&] {
    return NotAppended(part, "cannot be read: " + reader.error(), ERR_FILE_FORMAT);
  };
  if (!reader.Begin()) return not_read();
  const PictureShape shape = reader.shape();
  if (Failure failure = CheckShape(part, shape)) return failure;
  const int32_t status = bitmap.Create(shape);
  if (status != SUCCESS) return NotAppended(part, StatusMeaning(status), status);
  std::vector<uint8_t> row(size_t{shape.width} * shape.channels);
  for (uint32_t y = 0; y < shape.height; ++y) {
    if (!reader.ReadRow(row.data())) return not_read();
    HostPutBitmapRow(bitmap.get(), row.data(), y, row.size());
  }
  return std::nullopt;
}

// 100 is the library's best factor, 2, and 1 its coarsest, 255.
int32_t FactorOf(int quality) {
  constexpr double kSteps = 253.0 / 99;
  return 2 + static_cast<int32_t>(std::lround((100 - quality) * kSteps));
}

Failure AppendImage(const Document& document, const Part& part) {
  const OpenFile file(std::fopen(part.file.c_str(), "rb"));
  if (!file) return NotAppended(part, "cannot be opened for reading", ERR_FILE_OPEN);
  const std::unique_ptr<PictureReader> reader = MakePictureReader(file.get());
  if (!reader) return NotAppended(part, "is no PNG, JPEG, PGM, PPM or TIFF picture", ERR_FILE_FORMAT);
  Bitmap bitmap;
  if (Failure failure = ReadPicture(part, *reader, bitmap)) return failure;
  constexpr int32_t kLumaAndChroma = 10;
  constexpr int32_t kRgb = 182;
  const auto bits = static_cast<int32_t>(8 * reader->shape().channels);
  return CheckAppend(
      part, Tavi_NITFAppendImageSegment(document.handle(), bitmap.get(), part.rgb ? kRgb : kLumaAndChroma,
                                        bits, FactorOf(part.quality)));
}

Failure AppendGraphic(const Document& document, const Part& part, uint64_t size) {
  Drawing drawing;
  const int32_t loaded = size == 0 ? ERR_FILE_FORMAT : drawing.Load(part.file, {0, size});
  if (loaded != SUCCESS) {
    const bool is_none = loaded == ERR_FILE_FORMAT;
    return NotAppended(
        part, is_none ? "is no CGM drawing that can be loaded" : "cannot be loaded: " + StatusMeaning(loaded),
        loaded);
  }
  const int32_t status = Tavi_NITFAppendGraphicSegment(document.handle(), drawing.vector(), &part.rectangle);
  return CheckAppend(part, status,
                     status == ERR_INVALID_PARAMETER ? "the drawing reaches beyond row or column 99999" : "");
}

Failure AppendText(const Document& document, const Part& part, uint64_t size) {
  constexpr uint64_t kMostBytes = 99999;  // five digits of LT
  if (size > kMostBytes) {
    return NotAppended(part, std::to_string(size) + " bytes (a text may have at most 99999)",
                       ERR_INVALID_PARAMETER);
  }
  const std::optional<std::wstring> wide = WideFromUtf8(part.file);
  if (!wide) return NotAppended(part, "its name is not valid UTF-8", ERR_FILE_NOT_FOUND);
  return CheckAppend(part, Tavi_NITFAppendTextSegment(document.handle(), wide->c_str()));
}

}  // namespace

Failure AppendPart(const Document& document, const Part& part) {
  uint64_t size = 0;
  if (Failure failure = CheckFile(part, size)) return failure;
  switch (part.kind) {
    case Part::Kind::kImage:
      return AppendImage(document, part);
    case Part::Kind::kGraphic:
      return AppendGraphic(document, part, size);
    case Part::Kind::kText:
      return AppendText(document, part, size);
  }
  return std::nullopt;
}

}  // namespace tavinitf
