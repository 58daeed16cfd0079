// PGM and PPM: a line of text and the samples.
#include <string>

#include "PictureWriter.h"

namespace tavinitf {
namespace {

class PnmWriter : public PictureWriter {
 public:
  PnmWriter(OutputFile& file, bool color) : PictureWriter(file), color_(color) {}

  bool Begin(const PictureShape& shape) override {
    shape_ = shape;
    if (!color_ && shape.channels != 1) return file_.Fail("a PGM file holds grey pictures only");
    const std::string header = std::string(color_ ? "P6" : "P5") + "\n" + std::to_string(shape.width) + " " +
                               std::to_string(shape.height) + "\n255\n";
    return file_.Write(header.data(), header.size());
  }

  bool WriteRow(const uint8_t* row) override {
    if (!color_) return file_.Write(row, shape_.width);
    if (shape_.channels == 3) {
      SwapToRgb(row, shape_.width, samples_);
    } else {
      samples_.clear();
      for (uint32_t x = 0; x < shape_.width; ++x) samples_.insert(samples_.end(), 3, row[x]);
    }
    return file_.Write(samples_.data(), samples_.size());
  }

  bool Finish() override { return true; }

 private:
  bool color_;
  PictureShape shape_{};
  std::vector<uint8_t> samples_;
};

}  // namespace

std::unique_ptr<PictureWriter> MakePgmWriter(OutputFile& file) {
  return std::make_unique<PnmWriter>(file, false);
}
std::unique_ptr<PictureWriter> MakePpmWriter(OutputFile& file) {
  return std::make_unique<PnmWriter>(file, true);
}

}  // namespace tavinitf
