// What the tests of the host share: owners of its objects, and the check that nothing is left.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "TaviHost.h"

namespace tavi::test {

// Every test of the host ends with as many live objects as it began with.
class HostTest : public ::testing::Test {
 protected:
  void SetUp() override { live_ = HostLiveObjects(); }
  void TearDown() override { EXPECT_EQ(HostLiveObjects(), live_) << "objects were left"; }

 private:
  uint64_t live_ = 0;
};

class Bitmap {
 public:
  Bitmap() { HostInitBitmap(&record_, sizeof record_, 0, 0, 0); }
  Bitmap(uint32_t width, uint32_t height, uint32_t bits, uint32_t order = 1, uint32_t perspective = 1)
      : status_(HostCreateBitmap(&record_, sizeof record_, 1, width, height, bits, order, nullptr,
                                 perspective, nullptr, 0)) {}
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;
  ~Bitmap() {
    if ((record_.flags & 1) != 0) HostFreeBitmap(&record_);
  }

  int32_t status() const { return status_; }
  HostBitmap* get() { return &record_; }
  const HostBitmap* get() const { return &record_; }
  HostBitmap* operator->() { return &record_; }
  const HostBitmap* operator->() const { return &record_; }

  std::vector<uint8_t> Row(uint32_t row) const {
    std::vector<uint8_t> bytes(record_.bytes_per_line, 0xA5);
    HostGetBitmapRow(&record_, bytes.data(), row, bytes.size());
    return bytes;
  }
  void SetRow(uint32_t row, const std::vector<uint8_t>& bytes) {
    HostPutBitmapRow(&record_, bytes.data(), row, bytes.size());
  }
  std::vector<uint8_t> Bytes() const {
    std::vector<uint8_t> all;
    for (uint32_t row = 0; row < record_.height; ++row) {
      const std::vector<uint8_t> bytes = Row(row);
      all.insert(all.end(), bytes.begin(), bytes.end());
    }
    return all;
  }
  std::vector<HostPaletteEntry> Colors() const {
    std::vector<HostPaletteEntry> entries(record_.color_count);
    HostGetBitmapColors(&record_, 0, record_.color_count, entries.data());
    return entries;
  }

 private:
  HostBitmap record_{};
  int32_t status_ = SUCCESS;
};

class Context {
 public:
  explicit Context(Bitmap& bitmap) : context_(HostCreateBitmapDC(bitmap.get())) {}
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  ~Context() { HostDeleteBitmapDC(context_); }
  HostDrawingContext get() const { return context_; }

 private:
  HostDrawingContext context_;
};

inline constexpr uint32_t kSourceCopy = 0xCC0020;

inline int32_t Paint(const Context& context, const Bitmap& bitmap, const HostRect& rect) {
  return HostPaintBitmap(context.get(), bitmap.get(), nullptr, nullptr, &rect, nullptr, kSourceCopy);
}

inline int32_t PaintKeyed(const Context& context, const Bitmap& bitmap, const HostRect& rect,
                          uint32_t transparent) {
  return HostPaintBitmapKeyed(context.get(), bitmap.get(), nullptr, nullptr, &rect, nullptr, 1000, 1, 1, 1, 1,
                              1, 1, 1, transparent, 0, 0, kSourceCopy);
}

// Numbers that look random and are the same in every run.
class Noise {
 public:
  explicit Noise(uint32_t seed) : state_(seed * 2654435761u + 1) {}
  uint32_t Next() {
    state_ = state_ * 1664525u + 1013904223u;
    return state_ >> 8;
  }
  uint32_t Below(uint32_t bound) { return Next() % bound; }
  uint8_t Byte() { return static_cast<uint8_t>(Next() >> 4); }

 private:
  uint32_t state_;
};

inline void FillWithNoise(Bitmap* bitmap, uint32_t seed) {
  Noise noise(seed);
  std::vector<uint8_t> bytes((*bitmap)->bytes_per_line);
  for (uint32_t row = 0; row < (*bitmap)->height; ++row) {
    for (uint8_t& byte : bytes) byte = noise.Byte();
    bitmap->SetRow(row, bytes);
  }
}

}  // namespace tavi::test
