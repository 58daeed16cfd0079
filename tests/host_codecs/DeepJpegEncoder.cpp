#include "DeepJpegEncoder.h"

#include <dcmtk/config/osconfig.h>
// Has to stand behind it.
#include <dcmtk/dcmjpeg/djcparam.h>
#include <dcmtk/dcmjpeg/djeijg12.h>
#include <dcmtk/dcmjpeg/djeijg16.h>
#include <dcmtk/dcmjpeg/djeijg8.h>

#include <bit>
#include <cstdlib>
#include <memory>

namespace tavi_test {
namespace {

DJCodecParameter MakeParameter(bool ycc) {
  return DJCodecParameter(ycc ? ECC_lossyYCbCr : ECC_lossyRGB, EDC_never, EUC_default, EPC_default);
}

Stream Run(DJEncoder& encoder, const Pixels& pixels) {
  Uint8* bytes = nullptr;
  Uint32 size = 0;
  const auto columns = static_cast<Uint16>(pixels.width);
  const auto rows = static_cast<Uint16>(pixels.height);
  const auto channels = static_cast<Uint16>(pixels.channels);
  const EP_Interpretation interpretation = channels == 1 ? EPI_Monochrome2 : EPI_RGB;
  OFCondition condition;
  if (encoder.bytesPerSample() == 1) {
    std::vector<Uint8> samples(pixels.samples.begin(), pixels.samples.end());
    condition = encoder.encode(columns, rows, interpretation, channels, samples.data(), bytes, size);
  } else {
    std::vector<Uint16> samples(pixels.samples.begin(), pixels.samples.end());
    condition = encoder.encode(columns, rows, interpretation, channels, samples.data(), bytes, size);
  }
  EXPECT_TRUE(condition.good()) << condition.text();
  Stream stream(bytes, bytes + size);
  delete[] bytes;
  return stream;
}

// Bits, the most significant first, with a zero behind every 0xFF.
class BitWriter {
 public:
  explicit BitWriter(Stream* stream) : stream_(stream) {}
  void Put(uint32_t value, uint32_t count) {
    for (uint32_t i = count; i-- > 0;) {
      byte_ = static_cast<uint8_t>(byte_ << 1 | (value >> i & 1));
      if (++filled_ == 8) Flush();
    }
  }
  // Fills the last byte with ones.
  void Finish() {
    while (filled_ != 0) Put(1, 1);
  }

 private:
  void Flush() {
    stream_->push_back(byte_);
    if (byte_ == 0xFF) stream_->push_back(0);
    byte_ = 0;
    filled_ = 0;
  }
  Stream* stream_;
  uint8_t byte_ = 0;
  uint32_t filled_ = 0;
};

void Put16(Stream* stream, uint32_t value) {
  stream->push_back(static_cast<uint8_t>(value >> 8));
  stream->push_back(static_cast<uint8_t>(value));
}

class LosslessEncoder {
 public:
  LosslessEncoder(const Pixels& pixels, const LosslessSettings& settings)
      : pixels_(pixels), settings_(settings) {}

  Stream Encode() {
    stream_ = {0xFF, 0xD8};
    if (settings_.adobe >= 0) {
      stream_.insert(stream_.end(), {0xFF, 0xEE, 0, 14, 'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0,
                                     static_cast<uint8_t>(settings_.adobe)});
    }
    WriteHeaders();
    WriteScan();
    stream_.insert(stream_.end(), {0xFF, 0xD9});
    return stream_;
  }

 private:
  void WriteHeaders() {
    const uint32_t count = pixels_.channels;
    stream_.insert(stream_.end(), {0xFF, 0xC3});
    Put16(&stream_, 8 + 3 * count);
    stream_.push_back(static_cast<uint8_t>(settings_.bits));
    Put16(&stream_, pixels_.height);
    Put16(&stream_, pixels_.width);
    stream_.push_back(static_cast<uint8_t>(count));
    for (uint32_t c = 0; c < count; ++c)
      stream_.insert(stream_.end(), {static_cast<uint8_t>(c + 1), 0x11, 0});
    // Seventeen categories in codes of five bits.
    stream_.insert(stream_.end(), {0xFF, 0xC4, 0, 36, 0, 0, 0, 0, 0, 17, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    for (uint8_t category = 0; category <= 16; ++category) stream_.push_back(category);
    if (settings_.restart_rows != 0) {
      stream_.insert(stream_.end(), {0xFF, 0xDD, 0, 4});
      Put16(&stream_, settings_.restart_rows * pixels_.width);
    }
    stream_.insert(stream_.end(), {0xFF, 0xDA});
    Put16(&stream_, 6 + 2 * count);
    stream_.push_back(static_cast<uint8_t>(count));
    for (uint32_t c = 0; c < count; ++c) stream_.insert(stream_.end(), {static_cast<uint8_t>(c + 1), 0});
    stream_.insert(stream_.end(),
                   {static_cast<uint8_t>(settings_.predictor), 0, static_cast<uint8_t>(settings_.shift)});
  }

  int Value(uint32_t x, uint32_t y, uint32_t c) const { return pixels_.At(x, y, c) >> settings_.shift; }

  int Predict(uint32_t x, uint32_t y, uint32_t c, bool first_row) const {
    if (x == 0 && first_row) return 1 << (static_cast<int>(settings_.bits) - settings_.shift - 1);
    if (first_row) return Value(x - 1, y, c);
    const int b = Value(x, y - 1, c);
    if (x == 0) return b;
    const int a = Value(x - 1, y, c);
    const int corner = Value(x - 1, y - 1, c);
    switch (settings_.predictor) {
      case 1:
        return a;
      case 2:
        return b;
      case 3:
        return corner;
      case 4:
        return a + b - corner;
      case 5:
        return a + ((b - corner) >> 1);
      case 6:
        return b + ((a - corner) >> 1);
      default:
        return (a + b) >> 1;
    }
  }

  static void PutDifference(BitWriter* bits, int difference) {
    auto value = static_cast<int16_t>(static_cast<uint16_t>(difference));
    if (value == INT16_MIN) {
      bits->Put(16, 5);
      return;
    }
    const auto category = static_cast<uint32_t>(std::bit_width(static_cast<unsigned>(std::abs(value))));
    bits->Put(category, 5);
    if (value < 0) value = static_cast<int16_t>(value - 1);
    bits->Put(static_cast<uint16_t>(value) & ((1u << category) - 1), category);
  }

  void WriteScan() {
    BitWriter bits(&stream_);
    uint8_t restart = 0;
    bool first_row = true;
    for (uint32_t y = 0; y < pixels_.height; ++y) {
      if (settings_.restart_rows != 0 && y != 0 && y % settings_.restart_rows == 0) {
        bits.Finish();
        stream_.insert(stream_.end(), {0xFF, static_cast<uint8_t>(0xD0 + restart++ % 8)});
        first_row = true;
      }
      for (uint32_t x = 0; x < pixels_.width; ++x) {
        for (uint32_t c = 0; c < pixels_.channels; ++c) {
          PutDifference(&bits, Value(x, y, c) - Predict(x, y, c, first_row));
        }
      }
      first_row = false;
    }
    bits.Finish();
  }

  const Pixels& pixels_;
  const LosslessSettings& settings_;
  Stream stream_;
};

}  // namespace

Stream EncodeJpeg12(const Pixels& pixels, DeepProcess process, bool ycc) {
  const DJCodecParameter parameter = MakeParameter(ycc);
  const EJ_Mode mode = process == DeepProcess::kSequential          ? EJM_sequential
                       : process == DeepProcess::kSpectralSelection ? EJM_spectralSelection
                                                                    : EJM_progressive;
  DJCompressIJG12Bit encoder(parameter, mode, Uint8{95});
  return Run(encoder, pixels);
}

Stream EncodeLosslessByDcmtk(const Pixels& pixels, uint32_t bits, int predictor) {
  const DJCodecParameter parameter = MakeParameter(false);
  std::unique_ptr<DJEncoder> encoder;
  if (bits == 8) {
    encoder = std::make_unique<DJCompressIJG8Bit>(parameter, EJM_lossless, predictor, 0);
  } else if (bits == 12) {
    encoder = std::make_unique<DJCompressIJG12Bit>(parameter, EJM_lossless, predictor, 0);
  } else {
    encoder = std::make_unique<DJCompressIJG16Bit>(parameter, EJM_lossless, predictor, 0);
  }
  return Run(*encoder, pixels);
}

Stream EncodeLossless(const Pixels& pixels, const LosslessSettings& settings) {
  return LosslessEncoder(pixels, settings).Encode();
}

}  // namespace tavi_test
