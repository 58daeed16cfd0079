// Owning types over the host's operations: an early return releases everything.
#pragma once

#include <cstdint>
#include <utility>

#include "TaviHost.h"

namespace tavi {

// Where an object was made, for the host's leak report.
struct Place {
  int32_t line = 0;
  const wchar_t* unit = nullptr;
};

// Gives a source unit its `Here()`: the calling line under the unit's name.
#define TAVI_UNIT(name)                                                           \
  [[maybe_unused]] static constexpr Place Here(int32_t line = __builtin_LINE()) { \
    return Place{line, name};                                                     \
  }

// An owned, zero-filled array of plain values in host memory.
template <class T>
class HostArray {
 public:
  HostArray() = default;
  HostArray(const HostArray&) = delete;
  HostArray& operator=(const HostArray&) = delete;
  HostArray(HostArray&& other) noexcept { Swap(other); }
  HostArray& operator=(HostArray&& other) noexcept {
    HostArray moved(std::move(other));
    Swap(moved);
    return *this;
  }
  ~HostArray() { Release(); }

  // Replaces the contents by `count` zeroed elements; false without memory, and then the array is empty.
  [[nodiscard]] bool Allocate(uint64_t count, Place place) {
    Release();
    data_ = static_cast<T*>(HostAllocMem(count, sizeof(T), place.line, place.unit));
    size_ = data_ != nullptr ? count : 0;
    place_ = place;
    return data_ != nullptr;
  }

  // Grows or shrinks, keeping what fits; new elements are zero. False without memory, and then nothing
  // changes.
  [[nodiscard]] bool Resize(uint64_t count, Place place) {
    HostArray resized;
    if (!resized.Allocate(count, place)) return false;
    const uint64_t kept = count < size_ ? count : size_;
    if (kept != 0) HostMemCopy(resized.data_, data_, kept * sizeof(T));
    Swap(resized);
    return true;
  }

  void Release() {
    if (data_ != nullptr) HostFreeMem(data_, place_.line, place_.unit);
    data_ = nullptr;
    size_ = 0;
  }

  T* data() { return data_; }
  const T* data() const { return data_; }
  uint64_t size() const { return size_; }
  bool exists() const { return data_ != nullptr; }
  T& operator[](uint64_t i) { return data_[i]; }
  const T& operator[](uint64_t i) const { return data_[i]; }

 private:
  void Swap(HostArray& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(place_, other.place_);
  }

  T* data_ = nullptr;
  uint64_t size_ = 0;
  Place place_;
};

// A list of lengths or counts. A missing list and an index past its end read as 0.
class LengthList : public HostArray<uint32_t> {
 public:
  uint32_t At(uint64_t i) const { return i < size() ? (*this)[i] : 0; }
};

// Texts of one width, one for each comment or band: each in a slot of its own with a NUL behind it.
template <uint32_t kSlotSize>
class TextSlots {
 public:
  [[nodiscard]] bool Resize(uint32_t count, Place place) {
    return chars_.Resize(static_cast<uint64_t>(count) * kSlotSize, place);
  }
  char* At(uint32_t i) { return chars_.data() + static_cast<uint64_t>(i) * kSlotSize; }
  const char* At(uint32_t i) const { return chars_.data() + static_cast<uint64_t>(i) * kSlotSize; }
  uint32_t size() const { return static_cast<uint32_t>(chars_.size() / kSlotSize); }
  void Release() { chars_.Release(); }

 private:
  HostArray<char> chars_;
};

// A bitmap record that frees its pixels.
class OwnedBitmap {
 public:
  OwnedBitmap() { HostInitBitmap(&record_, sizeof record_, 0, 0, 0); }
  OwnedBitmap(const OwnedBitmap&) = delete;
  OwnedBitmap& operator=(const OwnedBitmap&) = delete;
  ~OwnedBitmap() { Free(); }
  void Free() {
    if ((record_.flags & 1) != 0) HostFreeBitmap(&record_);
  }
  HostBitmap* get() { return &record_; }
  HostBitmap* operator->() { return &record_; }

 private:
  HostBitmap record_{};
};

// The drawing context of a bitmap.
class BitmapContext {
 public:
  explicit BitmapContext(HostBitmap* bitmap) : context_(HostCreateBitmapDC(bitmap)) {}
  BitmapContext(const BitmapContext&) = delete;
  BitmapContext& operator=(const BitmapContext&) = delete;
  ~BitmapContext() {
    if (context_ != nullptr) HostDeleteBitmapDC(context_);
  }
  HostDrawingContext get() const { return context_; }

 private:
  HostDrawingContext context_;
};

// A palette object.
class OwnedPalette {
 public:
  OwnedPalette(HostPalette palette, Place place) : palette_(palette), place_(place) {}
  OwnedPalette(const OwnedPalette&) = delete;
  OwnedPalette& operator=(const OwnedPalette&) = delete;
  ~OwnedPalette() {
    if (palette_ != nullptr) HostDeleteObject(palette_, place_.line, place_.unit);
  }
  HostPalette get() const { return palette_; }

 private:
  HostPalette palette_;
  Place place_;
};

// The palette that suits painting a bitmap, selected into the context while this lives. The host may need none.
class PaintPalette {
 public:
  PaintPalette(HostDrawingContext context, const HostBitmap* bitmap, Place place)
      : context_(context), palette_(HostCreatePaintPalette(context, bitmap), place), place_(place) {
    if (palette_.get() != nullptr) {
      HostTrackAdd(kTrackedHandle, palette_.get(), place_.line, place_.unit);
      before_ = SelectPalette(context_, palette_.get(), 0);
    }
    RealizePalette(context_);
  }
  PaintPalette(const PaintPalette&) = delete;
  PaintPalette& operator=(const PaintPalette&) = delete;
  ~PaintPalette() {
    if (palette_.get() == nullptr) return;
    SelectPalette(context_, before_, 0);
    HostTrackRemove(kTrackedHandle, palette_.get(), place_.line, place_.unit);
  }

 private:
  static constexpr int32_t kTrackedHandle = 3;

  HostDrawingContext context_;
  OwnedPalette palette_;
  Place place_;
  HostPalette before_ = nullptr;
};

// A vector drawing: empty at first, freed when it holds anything. Its bytes are those of the host's record.
class OwnedVector {
 public:
  OwnedVector() { Initialise(); }
  OwnedVector(const OwnedVector&) = delete;
  OwnedVector& operator=(const OwnedVector&) = delete;
  ~OwnedVector() { Free(); }
  void Free() {
    if (HostVecIsEmpty(&record_) == 0) HostVecFree(&record_);
  }
  // Makes it empty whatever it holds.
  void Reset() {
    Free();
    Initialise();
  }
  HostVector* get() { return &record_; }
  const HostVector* get() const { return &record_; }

 private:
  // Two words are set by hand, one on each side of the host's own preparation.
  void Initialise() {
    record_.word976 = 8194;
    HostVecInit(&record_);
    record_.word844 = 32768;
  }

  HostVector record_{};
};
static_assert(sizeof(OwnedVector) == sizeof(HostVector));

}  // namespace tavi
