// Drawings as picture files.
#include <cmath>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

#include "Platform/GlobalMemory.h"
#include "TaviHost.h"
#include "TaviVector/BackColor.h"
#include "TaviVector/PaintAccount.h"
#include "TaviVector/PaintBudget.h"
#include "TaviVector/Painter.h"
#include "TaviVector/VectorRecord.h"

namespace tavi::host::vec {
namespace {

enum Kind : uint32_t { kSvg = 1, kPng = 2, kPdf = 3 };

// The longest side of a picture of each kind, in pixels or points.
constexpr double kLongestPng = 8192;
constexpr double kLongestPdf = 14400;
constexpr double kLongestSvg = 1'000'000;

class Bytes : public Sink {
 public:
  bool Write(const unsigned char* bytes, size_t count) noexcept override {
    try {
      bytes_.insert(bytes_.end(), bytes, bytes + count);
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    } catch (const std::length_error&) {
      return false;
    }
  }
  const std::vector<uint8_t>& all() const { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
};

// The page: the drawing's bounds at its upper left corner.
struct Page {
  Affine to_device;
  double width = 0;
  double height = 0;
  Box AsBox() const { return {{0, 0}, {width, height}}; }
};

double Longest(uint32_t kind) {
  if (kind == kPng) return kLongestPng;
  return kind == kPdf ? kLongestPdf : kLongestSvg;
}

Page PageOf(const Drawing& drawing, uint32_t kind) {
  Box bounds = BoundsOf(drawing);
  if (bounds.IsEmpty()) bounds = {{0, 0}, {0, 0}};
  // What has no extent is shown a unit wide.
  const double wider = std::max(1 - (bounds.high.x - bounds.low.x), 0.0) / 2;
  const double higher = std::max(1 - (bounds.high.y - bounds.low.y), 0.0) / 2;
  bounds = {{bounds.low.x - wider, bounds.low.y - higher}, {bounds.high.x + wider, bounds.high.y + higher}};
  const double width = bounds.high.x - bounds.low.x;
  const double height = bounds.high.y - bounds.low.y;
  const double scale = std::min(1.0, Longest(kind) / std::max(width, height));
  constexpr double kSlack = 1e-6;
  return {{scale, 0, -scale * bounds.low.x, 0, -scale, scale * bounds.high.y},
          std::max(std::ceil(width * scale - kSlack), 1.0),
          std::max(std::ceil(height * scale - kSlack), 1.0)};
}

// On pixels the budget of all painting holds; other pages keep what is drawn, and the budget holds for what they keep.
bool PaintPage(const Drawing& drawing, const Page& page, bool on_pixels, Canvas* canvas) {
  if (canvas == nullptr) return false;
  const Box whole = page.AsBox();
  const std::vector<Box> boxes = DeviceBoxes(drawing, page.to_device);
  PaintAccount account;
  if (on_pixels && !SpendBudget(drawing, page.to_device, boxes, whole, account.pixels)) return false;
  if (!on_pixels) canvas->Bound(kPixelsOfObject * static_cast<double>(drawing.objects.size()));
  SmoothLines smooth(drawing, whole, account.lines);
  Paint({drawing, page.to_device, whole, on_pixels, on_pixels ? &smooth.left : nullptr}, boxes, whole,
        *canvas);
  return canvas->IsSound();
}

bool ExportPng(const Drawing& drawing, const Page& page, Sink* sink) {
  const auto columns = static_cast<int32_t>(page.width);
  const auto rows = static_cast<int32_t>(page.height);
  const auto count = static_cast<size_t>(columns) * static_cast<size_t>(rows);
  const std::unique_ptr<uint32_t[]> pixels(new uint32_t[count]());
  const auto canvas = Canvas::OnPixels(pixels.get(), columns, rows, 0, 0);
  if (!PaintPage(drawing, page, true, canvas.get())) return false;
  canvas->TakeTouched();
  return WritePng(pixels.get(), columns, rows, sink);
}

bool ExportPage(const Drawing& drawing, const Page& page, uint32_t kind, Sink* sink) {
  if (kind == kPng) return ExportPng(drawing, page, sink);
  const auto canvas = kind == kSvg ? Canvas::OnSvg(sink, page.width, page.height)
                                   : Canvas::OnPdf(sink, page.width, page.height);
  return PaintPage(drawing, page, false, canvas.get()) && canvas->Finish();
}

}  // namespace
}  // namespace tavi::host::vec

using namespace tavi::host;

int32_t HostVecExport(HostGlobalMemory* block, const HostVector* vector, uint32_t kind, uint64_t* size) {
  HostForgetLimitHit();
  if (block != nullptr) *block = nullptr;
  if (size != nullptr) *size = 0;
  if (block == nullptr || vector == nullptr || size == nullptr) return ERR_NULL_ARGUMENT;
  const vec::Drawing* const drawing = vec::DrawingOf(vector);
  if (drawing == nullptr) return ERR_INVALID_VECTOR;
  if (kind != vec::kSvg && kind != vec::kPng && kind != vec::kPdf) return ERR_NOT_SUPPORTED;
  try {
    vec::Bytes bytes;
    std::optional<vec::Drawing> changed;
    const vec::Drawing& shown = vec::WithBackColor(*drawing, vec::BackColorOf(vector), changed);
    if (!vec::ExportPage(shown, vec::PageOf(shown, kind), kind, &bytes)) return ERR_NO_MEMORY;
    return MakeGlobal(bytes.all(), block, size);
  } catch (const std::bad_alloc&) {
    return ERR_NO_MEMORY;
  } catch (const std::length_error&) {
    return ERR_NO_MEMORY;
  }
}
