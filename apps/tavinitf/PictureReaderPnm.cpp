// PGM and PPM, plain and raw, with samples of one or two bytes.
#include <algorithm>
#include <cctype>
#include <vector>

#include "PictureReader.h"

namespace tavinitf {
namespace {

constexpr uint32_t kFull = 255;

class PnmReader : public PictureReader {
 public:
  using PictureReader::PictureReader;

  bool Begin() override { return ReadHead() && CheckReads(); }

  bool ReadRow(uint8_t* row) override { return ReadSamples(row) && CheckReads(); }

 private:
  // A character that is not read leaves a number as well, another one: a read that failed once spoils everything.
  bool CheckReads() { return std::ferror(file_) == 0 || Fail("it cannot be read in full"); }

  bool ReadHead() {
    std::fgetc(file_);  // the P
    const int kind = std::fgetc(file_);
    plain_ = kind == '2' || kind == '3';
    shape_.channels = kind == '2' || kind == '5' ? 1 : 3;
    if (!ReadNumber(shape_.width) || !ReadNumber(shape_.height) || !ReadNumber(most_)) return false;
    constexpr uint32_t kMostOfAll = 65535;
    if (shape_.width == 0 || shape_.height == 0) return Fail("it has no pixels");
    return (most_ != 0 && most_ <= kMostOfAll) ||
           Fail("its largest sample is " + std::to_string(most_) + " (1 to 65535 are read)");
  }

  bool ReadSamples(uint8_t* row) {
    const size_t count = size_t{shape_.width} * shape_.channels;
    if (plain_) return ReadPlainRow(row, count);
    const size_t width = most_ > kFull ? 2 : 1;
    raw_.resize(count * width);
    if (std::fread(raw_.data(), 1, raw_.size(), file_) != raw_.size())
      return Fail("it ends before its last row");
    for (size_t i = 0; i < count; ++i) {
      row[i] = Scaled(width == 1 ? raw_[i] : static_cast<uint32_t>(raw_[2 * i] << 8 | raw_[2 * i + 1]));
    }
    return true;
  }

  uint8_t Scaled(uint32_t sample) const {
    return static_cast<uint8_t>((std::min(sample, most_) * kFull + most_ / 2) / most_);
  }

  bool ReadPlainRow(uint8_t* row, size_t count) {
    for (size_t i = 0; i < count; ++i) {
      uint32_t sample = 0;
      if (!ReadNumber(sample)) return false;
      row[i] = Scaled(sample);
    }
    return true;
  }

  void SkipLine() {
    for (int c = std::fgetc(file_); c != '\n' && c != EOF;) c = std::fgetc(file_);
  }

  // Digits behind blanks and comments, and the one character behind them.
  bool ReadNumber(uint32_t& number) {
    int c = std::fgetc(file_);
    while (c == '#' || (c != EOF && std::isspace(c) != 0)) {
      if (c == '#') SkipLine();
      c = std::fgetc(file_);
    }
    if (c == EOF) return Fail("it ends before its last row");
    constexpr uint32_t kMost = 100000000;
    uint32_t digits = 0;
    for (number = 0; c >= '0' && c <= '9' && number < kMost; ++digits, c = std::fgetc(file_)) {
      number = number * 10 + static_cast<uint32_t>(c - '0');
    }
    return digits != 0 || Fail("there is no number where one belongs");
  }

  bool plain_ = false;
  uint32_t most_ = 0;
  std::vector<uint8_t> raw_;
};

}  // namespace

std::unique_ptr<PictureReader> MakePnmReader(std::FILE* file) {
  return std::make_unique<PnmReader>(file);
}

}  // namespace tavinitf
