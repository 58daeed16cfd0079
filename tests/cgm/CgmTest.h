// What the tests share: loading a metafile and looking into the drawing.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "MetafileBuilder.h"
#include "TaviHost.h"
#include "TaviVector/VectorRecord.h"

namespace tavi::test {

namespace vec = tavi::host::vec;
using vec::Point;

class Loaded {
 public:
  explicit Loaded(const Octets& metafile) {
    HostVecInit(&vector_);
    status_ = HostVecLoadMemory(metafile.data(), &vector_, metafile.size(), nullptr, 0);
  }
  explicit Loaded(const Metafile& metafile) : Loaded(metafile.Finish()) {}
  Loaded(const Loaded&) = delete;
  Loaded& operator=(const Loaded&) = delete;
  ~Loaded() {
    if (HostVecIsEmpty(&vector_) == 0) HostVecFree(&vector_);
  }

  int32_t status() const { return status_; }
  HostVector* vector() { return &vector_; }
  bool IsEmpty() const { return HostVecIsEmpty(&vector_) != 0; }
  const vec::Drawing& drawing() const {
    static const vec::Drawing kNothing;
    const vec::Drawing* const held = vec::DrawingOf(&vector_);
    return held == nullptr ? kNothing : *held;
  }
  size_t count() const { return drawing().objects.size(); }
  // The object of that number, of that kind: a default one and a failure when it is another.
  template <class Kind>
  const Kind& As(size_t index = 0) const {
    static const Kind kOther;
    const bool fits = index < count() && std::holds_alternative<Kind>(drawing().objects[index].shape);
    EXPECT_TRUE(fits) << "object " << index << " of " << count();
    return fits ? std::get<Kind>(drawing().objects[index].shape) : kOther;
  }
  // Styles of objects: empty ones for objects without.
  vec::Stroke Stroke(uint32_t index) const { return At(drawing().strokes, index); }
  vec::Fill Fill(uint32_t index) const { return At(drawing().fills, index); }
  vec::TextStyle TextStyle(uint32_t index) const { return At(drawing().texts, index); }
  vec::MarkerStyle Marker(uint32_t index) const { return At(drawing().markers, index); }

 private:
  template <class Style>
  static Style At(const std::vector<Style>& pool, uint32_t index) {
    EXPECT_LT(index, pool.size());
    return index < pool.size() ? pool[index] : Style();
  }

  HostVector vector_{};
  int32_t status_ = 0;
};

class CgmTest : public ::testing::Test {
 protected:
  void SetUp() override { live_ = HostLiveObjects(); }
  void TearDown() override { EXPECT_EQ(HostLiveObjects(), live_) << "objects were left"; }

 private:
  uint64_t live_ = 0;
};

inline constexpr uint32_t kRed = 0x0000FF;
inline constexpr uint32_t kGreen = 0x00FF00;
inline constexpr uint32_t kBlue = 0xFF0000;

inline void ExpectNear(Point at, Point wanted, double by = 1e-6) {
  EXPECT_NEAR(at.x, wanted.x, by);
  EXPECT_NEAR(at.y, wanted.y, by);
}

inline List Line(const std::vector<int>& coordinates = {10, 20, 30, 40}) {
  return List().Points(coordinates);
}

}  // namespace tavi::test
