// Real metafiles, read, written, and read again: the pictures must be the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <utility>
#include <vector>

#include "HostFixture.h"
#include "SampleFiles.h"
#include "TaviHost.h"

namespace tavi::samples {
namespace {

constexpr uint32_t kCgm = 62;
constexpr double kSide = 1000;  // pixels along the longer side of what is compared

class Vector {
 public:
  Vector() { HostVecInit(&record_); }
  explicit Vector(const std::vector<uint8_t>& metafile) : Vector() {
    status_ = HostVecLoadMemory(metafile.data(), &record_, metafile.size(), nullptr, 0);
  }
  Vector(const Vector&) = delete;
  Vector& operator=(const Vector&) = delete;
  ~Vector() {
    if (HostVecIsEmpty(&record_) == 0) HostVecFree(&record_);
  }

  int32_t status() const { return status_; }
  HostVector* get() { return &record_; }

  // Width and height.
  std::pair<double, double> Extent() const {
    double low[3] = {};
    double high[3] = {};
    EXPECT_EQ(HostVecGetExtents(&record_, low, high), SUCCESS);
    return {high[0] - low[0], high[1] - low[1]};
  }

  // A rectangle in the drawing's proportions, from the origin.
  HostRect Rectangle(double longer_side) const {
    const auto [width, height] = Extent();
    const double scale = longer_side / std::max({width, height, 1e-9});
    const auto pixels = [scale](double side) {
      return std::max<int32_t>(1, static_cast<int32_t>(std::lround(side * scale)));
    };
    return {0, 0, pixels(width), pixels(height)};
  }

  std::vector<uint8_t> Save() const {
    HostGlobalMemory block = nullptr;
    uint64_t size = 0;
    EXPECT_EQ(HostVecSaveMemory(&block, &record_, kCgm, &size, nullptr), SUCCESS);
    std::vector<uint8_t> bytes;
    if (block == nullptr) return bytes;
    const auto* const held = static_cast<const uint8_t*>(GlobalLock(block));
    bytes.assign(held, held + size);
    GlobalUnlock(block);
    HostGlobalFree(block, __LINE__, nullptr);
    return bytes;
  }

  // Bytes of pixels on white, three each.
  std::vector<uint8_t> Paint(const HostRect& rectangle) {
    HostBitmap bitmap = {};
    EXPECT_EQ(HostCreateBitmap(&bitmap, sizeof bitmap, 1, static_cast<uint32_t>(rectangle.right),
                               static_cast<uint32_t>(rectangle.bottom), 24, 1, nullptr, 1, nullptr, 0),
              SUCCESS);
    HostFillBitmap(&bitmap, 0xFFFFFF);
    const HostDrawingContext context = HostCreateBitmapDC(&bitmap);
    EXPECT_EQ(HostVecPaint(context, &record_, 0, 0, 0, 0, &rectangle, 0, 0), SUCCESS);
    HostDeleteBitmapDC(context);
    const size_t row = size_t{bitmap.width} * 3;
    std::vector<uint8_t> pixels(row * bitmap.height);
    for (uint32_t y = 0; y < bitmap.height; ++y) HostGetBitmapRow(&bitmap, &pixels[y * row], y, row);
    HostFreeBitmap(&bitmap);
    return pixels;
  }

 private:
  HostVector record_{};
  int32_t status_ = SUCCESS;
};

struct Difference {
  double mean = 0;   // of components, in steps of 255
  double share = 0;  // of pixels that differ by more than smooth edges do
};

Difference Compare(const std::vector<uint8_t>& before, const std::vector<uint8_t>& after) {
  constexpr int kVisible = 16;
  double sum = 0;
  size_t different = 0;
  for (size_t i = 0; i + 2 < before.size(); i += 3) {
    int most = 0;
    for (size_t k = i; k < i + 3; ++k) {
      const int step = std::abs(before[k] - after[k]);
      sum += step;
      most = std::max(most, step);
    }
    different += most > kVisible ? 1U : 0U;
  }
  const auto count = static_cast<double>(before.size());
  return {sum / count, 3 * static_cast<double>(different) / count};
}

// What the drawing shows before it is written and after it is read again.
Difference WrittenAndReadAgain(Vector& drawing, const std::string& name) {
  const HostRect paper = drawing.Rectangle(kSide);
  const std::vector<uint8_t> before = drawing.Paint(paper);
  Vector again(drawing.Save());
  EXPECT_EQ(again.status(), SUCCESS) << name;
  return Compare(before, again.Paint(paper));
}

// Whether the metafile says that its coordinates are real numbers.
bool IsReal(const std::vector<uint8_t>& metafile) {
  constexpr uint8_t kVdcTypeReal[] = {0x10, 0x62, 0x00, 0x01};
  return std::search(metafile.begin(), metafile.end(), std::begin(kVdcTypeReal), std::end(kVdcTypeReal)) !=
         metafile.end();
}

class SampleMetafiles : public tavi_test::HostTest {
 protected:
  void SetUp() override {
    tavi_test::HostTest::SetUp();
    metafiles_ = Metafiles();
    if (metafiles_.empty()) GTEST_SKIP() << "no sample files beside " << Folder();
  }
  const std::vector<Metafile>& metafiles() const { return metafiles_; }

 private:
  std::vector<Metafile> metafiles_;
};

// Nearly all come out bit for bit. What is left is curves that became straight lines between whole units: 0.024 of 255 in
// the mean and one pixel in 4,400 at the worst, of which four times as much is allowed. A word of text in another script
// is 0.25, dashes of another length 0.6 to 3, a hatch that begins elsewhere 10 or more.
TEST_F(SampleMetafiles, PaintTheSameWhenWrittenAndReadAgain) {
  constexpr double kMean = 0.1;
  constexpr double kShare = 1e-3;
  size_t compared = 0;
  for (const Metafile& metafile : metafiles()) {
    Vector drawing(metafile.bytes);
    if (drawing.status() != SUCCESS) {
      EXPECT_TRUE(metafile.name.starts_with("bad_")) << metafile.name;
      continue;
    }
    const Difference difference = WrittenAndReadAgain(drawing, metafile.name);
    EXPECT_LE(difference.mean, kMean) << metafile.name;
    EXPECT_LE(difference.share, kShare) << metafile.name;
    ++compared;
  }
  EXPECT_GE(compared, 50U);
}

// What is written a second time is what was written first: nothing creeps. Real numbers may be rounded once more.
TEST_F(SampleMetafiles, AreWrittenAsTheyWereWritten) {
  for (const Metafile& metafile : metafiles()) {
    Vector drawing(metafile.bytes);
    if (drawing.status() != SUCCESS) continue;
    const std::vector<uint8_t> once = drawing.Save();
    Vector again(once);
    ASSERT_EQ(again.status(), SUCCESS) << metafile.name;
    const std::vector<uint8_t> twice = again.Save();
    if (IsReal(once)) {
      EXPECT_EQ(twice.size(), once.size()) << metafile.name;
    } else {
      EXPECT_EQ(twice, once) << metafile.name;
    }
  }
}

}  // namespace
}  // namespace tavi::samples
