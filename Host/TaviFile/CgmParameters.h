// The parameters of one element, read at the precisions in force.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TaviFile/CgmColor.h"
#include "TaviFile/Codec.h"
#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

using vec::Point;

enum class RealForm : uint8_t { kFloat32, kFloat64, kFixed32, kFixed64 };
// The form that a triple of kind and two bit counts names, if any.
std::optional<RealForm> RealFormOf(int64_t kind, int64_t a, int64_t b);

// How parameters are written: state that elements change for all that follow.
struct Coding {
  int integer = 16;  // bits
  int index = 16;
  int name = 16;
  int color = 8;
  int color_index = 8;
  int vdc_integer = 16;
  RealForm real = RealForm::kFixed32;
  RealForm vdc_real = RealForm::kFixed32;
  RealForm floating = RealForm::kFloat32;  // the last floating form; scale factors are always floating
  bool vdc_is_real = false;
  bool direct_color = false;
  ColorCoding colors;
};

// A size that is given in coordinates, or relative to something else.
enum class SizeMode : uint8_t { kAbsolute, kScaled, kFraction, kMillimetres };
struct Size {
  double value = 1;
  SizeMode mode = SizeMode::kScaled;
};

// Reads in order. Whoever reads past the end, or a number that is none, gets zeros, and `ok` is false from then on.
class Parameters {
 public:
  Parameters(Bytes list, const Coding& coding) : list_(list), coding_(&coding) {}

  bool ok() const { return ok_; }
  size_t left() const { return list_.size() - at_; }
  const Coding& coding() const { return *coding_; }
  // For what a handler finds wrong itself.
  void Fail() { ok_ = false; }

  int64_t Integer() { return Signed(coding_->integer); }
  int64_t Enumerated() { return Signed(16); }
  int64_t Index() { return Signed(coding_->index); }
  int64_t Name() { return Signed(coding_->name); }
  double Real() { return RealOf(coding_->real); }
  double Floating() { return RealOf(coding_->floating); }
  double Vdc();
  Point At();
  // All points that are left; a part of one at the end is dropped.
  std::vector<Point> Points();
  size_t PointBytes() const;
  Size SizeOf(SizeMode mode);
  uint32_t ColorIndex() { return Unsigned(coding_->color_index); }
  std::array<uint32_t, 4> Components();
  uint32_t DirectColor() { return coding_->colors.Decode(Components()); }
  ColorRef Color();
  // The octets of a string or a data record, chunks joined. A string that is longer than the list is cut.
  std::string String();
  // All parameters, and what is left of them, as they stand.
  Bytes list() const { return list_; }
  Bytes Rest() const { return list_.subspan(at_); }
  uint32_t Unsigned(int bits);
  int64_t Signed(int bits);

 private:
  uint64_t Raw(int bits);
  double RealOf(RealForm form);

  Bytes list_;
  const Coding* coding_;
  size_t at_ = 0;
  bool ok_ = true;
};

}  // namespace tavi::host::cgm
