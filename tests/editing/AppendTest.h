// What the tests of appending share: pictures and drawings to append, and a document's state before and after.
#pragma once

#include <functional>
#include <memory>

#include "EditingTest.h"

namespace editing {

// A bitmap of the host that ends with its owner: smooth in colour, so that JPEG keeps it, or grey.
class Picture {
 public:
  Picture(uint32_t width, uint32_t height, uint32_t bits = 24, uint32_t perspective = 1);
  ~Picture() { HostFreeBitmap(&bitmap_); }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;
  HostBitmap* get() { return &bitmap_; }
  // Blue, green, red of a pixel, from the top.
  static void Pixel(uint32_t x, uint32_t y, uint32_t width, uint32_t height, uint8_t (&bgr)[3]);

 private:
  HostBitmap bitmap_{};
};

// A drawing of one filled rectangle that ends with its owner. Corners in the drawing's own space, y upward.
class Drawing {
 public:
  Drawing() { HostVecInit(&vector_); }
  Drawing(double left, double low, double right, double high, uint32_t color = 0x0000FF);
  ~Drawing() { HostVecFree(&vector_); }
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;
  HostVector* get() { return &vector_; }

  struct Extents {
    double smallest[3];
    double largest[3];
  };
  [[nodiscard]] Extents Reach() const;

 private:
  HostVector vector_{};
};

// All that an application sees of a document's lengths, and what a save writes.
struct State {
  int32_t images, graphics, texts, status;
  uint32_t file_length;
  int32_t save_status;
  Bytes saved;
  friend bool operator==(const State&, const State&) = default;
};

// A new document.
class NewDocument : public Document {
 public:
  NewDocument() : Document(static_cast<const wchar_t*>(nullptr)) {}
};

// A document's composite, rows from the top, blue first.
struct Composite {
  int32_t status = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  Bytes pixels;
  [[nodiscard]] const uint8_t* At(uint32_t x, uint32_t y) const { return &pixels[3 * (y * width + x)]; }
};
Composite Render(NitfHandle document);

// A field of a saved file, from its layout: `at` bytes from the start.
std::string FieldAt(const Bytes& file, size_t at, size_t width);
size_t NumberAt(const Bytes& file, size_t at, size_t width);

class AppendTest : public EditingTest {
 protected:
  [[nodiscard]] State StateOf(NitfHandle document) const;
  // A file of that content.
  [[nodiscard]] std::wstring TextFile(const std::string& content, const std::string& name = "in.txt") const;
};

// Where the file header of a saved file has its tables, which follow one another from here.
inline constexpr size_t kFlPlace = 342;
inline constexpr size_t kHlPlace = 354;
inline constexpr size_t kNumiPlace = 360;

}  // namespace editing
