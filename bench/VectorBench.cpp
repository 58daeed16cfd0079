// Painting a vector against the bare strokes of the library that draws them.
#include <benchmark/benchmark.h>
#include <cairo.h>

#include <array>
#include <random>

#include "Bench.h"

namespace tavi_bench {
namespace {

using Segment = std::array<double, 4>;

constexpr size_t kSegments = 100'000;

// Short lines all over the picture, as the edges of a detailed overlay.
const std::vector<Segment>& Segments() {
  static const std::vector<Segment> segments = [] {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> place(0, kSide);
    std::uniform_real_distribution<double> step(-20, 20);
    std::vector<Segment> made(kSegments);
    for (Segment& s : made) {
      const double x = place(random);
      const double y = place(random);
      s = {x, y, x + step(random), y + step(random)};
    }
    return made;
  }();
  return segments;
}

void BareStrokes(benchmark::State& state) {
  cairo_surface_t* const surface =
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(kSide), static_cast<int>(kSide));
  cairo_t* const cairo = cairo_create(surface);
  cairo_set_line_width(cairo, 1);
  for (auto _ : state) {
    for (const Segment& s : Segments()) {
      cairo_move_to(cairo, s[0], s[1]);
      cairo_line_to(cairo, s[2], s[3]);
      cairo_stroke(cairo);
    }
    cairo_surface_flush(surface);
  }
  cairo_destroy(cairo);
  cairo_surface_destroy(surface);
}

void AddSegment(HostVector* vector, const Segment& s) {
  VectorObjectRecord object;
  HostVecInitObject(&object);
  object.line.size = sizeof(VectorLineRecord);
  object.line.kind = VECTOR_LINE;
  object.line.first = {s[0], -s[1], 0, 0};
  object.line.second = {s[2], -s[3], 0, 0};
  HostVecAddObject(vector, 0, VECTOR_LINE, &object, 0);
}

void PaintVector(benchmark::State& state) {
  HostVector vector{};
  HostVecInit(&vector);
  AddLines(&vector, kSegments);
  HostBitmap bitmap;
  HostCreateBitmap(&bitmap, sizeof bitmap, 1, kSide, kSide, 24, 1, nullptr, 1, nullptr, 0);
  const HostDrawingContext context = HostCreateBitmapDC(&bitmap);
  const HostRect rectangle{0, 0, 0, 0};
  state.counters["bytes"] = 3.0 * kSide * kSide;
  for (auto _ : state) {
    if (HostVecPaint(context, &vector, 0, 0, 0, 0, &rectangle, 0, 0) != SUCCESS) {
      state.SkipWithError("the vector was not painted");
      break;
    }
  }
  HostDeleteBitmapDC(context);
  HostFreeBitmap(&bitmap);
  HostVecFree(&vector);
}

}  // namespace

void AddLines(HostVector* vector, size_t count) {
  for (size_t i = 0; i < count && i < kSegments; ++i) AddSegment(vector, Segments()[i]);
}

void RegisterVector(Table* table) {
  constexpr double kBound = 1.5;  // times the bare strokes
  constexpr int kRepetitions = 3;
  constexpr auto kUnit = benchmark::kMillisecond;
  const char* const strokes = "floor/Cairo, 100,000 strokes";
  const char* const paint = "paint/vector of 100,000 lines";
  benchmark::RegisterBenchmark(strokes, BareStrokes)->Unit(kUnit)->Repetitions(kRepetitions);
  benchmark::RegisterBenchmark(paint, PaintVector)->Unit(kUnit)->Repetitions(kRepetitions);
  table->rows.push_back({paint, strokes, {{kBound, strokes}}});
}

}  // namespace tavi_bench
