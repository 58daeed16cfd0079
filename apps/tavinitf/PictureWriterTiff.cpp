// TIFF by libtiff: strips, LZW with horizontal prediction.
#include <tiffio.h>

#include <mutex>

#include "PictureWriter.h"

namespace tavinitf {
namespace {

constexpr uint64_t kBigTiffFrom = 0xF0000000;  // plain TIFF counts bytes in 32 bits; keep clear of its end

OutputFile& FileOf(thandle_t handle) {
  return *static_cast<OutputFile*>(handle);
}

tmsize_t ReadBytes(thandle_t handle, void* data, tmsize_t size) {
  return FileOf(handle).Read(data, static_cast<size_t>(size)) ? size : 0;
}

tmsize_t WriteBytes(thandle_t handle, void* data, tmsize_t size) {
  return FileOf(handle).Write(data, static_cast<size_t>(size)) ? size : 0;
}

toff_t Seek(thandle_t handle, toff_t offset, int origin) {
  OutputFile& file = FileOf(handle);
  if (!file.Seek(static_cast<int64_t>(offset), origin)) return static_cast<toff_t>(-1);
  return static_cast<toff_t>(file.Position());
}

int CloseNothing(thandle_t) {
  return 0;
}

toff_t Size(thandle_t handle) {
  return static_cast<toff_t>(FileOf(handle).Size());
}

// Messages go to standard error by default; the reason of a failure is taken from the output file instead.
// The handlers are the whole process's, so only one thread may set them.
void SilenceLibrary() {
  static std::once_flag done;
  std::call_once(done, [] {
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
  });
}

class TiffWriter : public PictureWriter {
 public:
  using PictureWriter::PictureWriter;
  ~TiffWriter() override {
    if (tiff_ != nullptr) TIFFCleanup(tiff_);
  }
  TiffWriter(const TiffWriter&) = delete;
  TiffWriter& operator=(const TiffWriter&) = delete;

  bool Begin(const PictureShape& shape) override {
    shape_ = shape;
    SilenceLibrary();
    const uint64_t size = uint64_t{shape.width} * shape.channels * shape.height;
    tiff_ = TIFFClientOpen("picture", size >= kBigTiffFrom ? "w8" : "w", &file_, ReadBytes, WriteBytes, Seek,
                           CloseNothing, Size, nullptr, nullptr);
    return tiff_ != nullptr && SetTags() ? true : FailInLibrary();
  }

  bool WriteRow(const uint8_t* row) override {
    // The predictor of libtiff works in the row that it is given.
    if (shape_.channels == 3) {
      SwapToRgb(row, shape_.width, samples_);
    } else {
      samples_.assign(row, row + shape_.width);
    }
    return TIFFWriteScanline(tiff_, samples_.data(), next_row_++, 0) == 1 || FailInLibrary();
  }

  bool Finish() override { return (TIFFFlush(tiff_) == 1 && file_.error().empty()) || FailInLibrary(); }

 private:
  bool FailInLibrary() { return file_.Fail("the TIFF library failed"); }

  bool SetTags() {
    return TIFFSetField(tiff_, TIFFTAG_IMAGEWIDTH, shape_.width) == 1 &&
           TIFFSetField(tiff_, TIFFTAG_IMAGELENGTH, shape_.height) == 1 &&
           TIFFSetField(tiff_, TIFFTAG_BITSPERSAMPLE, 8) == 1 &&
           TIFFSetField(tiff_, TIFFTAG_SAMPLESPERPIXEL, shape_.channels) == 1 &&
           TIFFSetField(tiff_, TIFFTAG_PHOTOMETRIC,
                        shape_.channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB) == 1 &&
           TIFFSetField(tiff_, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == 1 &&
           TIFFSetField(tiff_, TIFFTAG_COMPRESSION, COMPRESSION_LZW) == 1 &&
           TIFFSetField(tiff_, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) == 1 &&
           TIFFSetField(tiff_, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff_, 0)) == 1;
  }

  TIFF* tiff_ = nullptr;
  PictureShape shape_{};
  uint32_t next_row_ = 0;
  std::vector<uint8_t> samples_;
};

}  // namespace

std::unique_ptr<PictureWriter> MakeTiffWriter(OutputFile& file) {
  return std::make_unique<TiffWriter>(file);
}

}  // namespace tavinitf
