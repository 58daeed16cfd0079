#include "TaviFile/CgmInterpreter.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "TaviFile/CgmLimits.h"

namespace tavi::host::cgm {
namespace {

// Classes of elements.
constexpr uint32_t kDelimiters = 0;
constexpr uint32_t kPictureDescriptor = 2;
constexpr uint32_t kControl = 3;
constexpr uint32_t kPrimitives = 4;
constexpr uint32_t kAttributes = 5;
constexpr size_t kGroups = 16;
constexpr size_t kIds = 128;

using HandlerIndex = std::array<const Handler*, kGroups * kIds>;

HandlerIndex MakeIndex() {
  HandlerIndex index{};
  for (const auto& table :
       {StructureHandlers(), DescriptorHandlers(), PrimitiveHandlers(), ArcHandlers(), CurveHandlers(),
        TextHandlers(), CellHandlers(), TileHandlers(), AttributeHandlers()}) {
    for (const Handler& handler : table) index[handler.group * kIds + handler.id] = &handler;
  }
  return index;
}

const Handler* HandlerOf(const Element& element) {
  static const HandlerIndex kIndex = MakeIndex();
  return kIndex[element.group * kIds + element.id];
}

Affine Compose(const Affine& outer, const Affine& inner) {
  const Point x = outer.ApplyVector({inner.xx, inner.yx});
  const Point y = outer.ApplyVector({inner.xy, inner.yy});
  const Point origin = outer.Apply({inner.x0, inner.y0});
  return {x.x, y.x, origin.x, x.y, y.y, origin.y};
}

}  // namespace

Interpreter::Interpreter(Bytes metafile) : metafile_(metafile) {
  drawing_.layers.push_back({u"", true});
}

bool Interpreter::Run() {
  ElementWalker walker(metafile_);
  walker_ = &walker;
  Element element;
  while (phase != Phase::kDone && walker.Next(&element)) Execute(element);
  walker_ = nullptr;
  EndPath();
  FlushText();
  ResolveNominalSizes();
  return body_seen_;
}

// A picture begins with the defaults: what stands before it changes them in METAFILE DEFAULTS REPLACEMENT only. Segments
// there are read when they are copied; primitives elsewhere mean nothing.
bool Interpreter::IsIgnored(const Element& element) const {
  if (phase == Phase::kBody) return false;
  if (element.group == kPrimitives) return true;
  const bool default_value = in_defaults_ || phase != Phase::kMetafile;
  const bool changes_picture =
      element.group == kPictureDescriptor || element.group == kControl || element.group == kAttributes;
  if (!default_value && changes_picture) return true;
  return open_segment_ && element.group != kDelimiters;
}

// Unknown elements are skipped. What a handler finds wrong in its parameters loses the element.
void Interpreter::Execute(const Element& element) {
  const Handler* const handler = HandlerOf(element);
  if (handler == nullptr || IsIgnored(element)) return;
  Parameters parameters(element.list, coding);
  handler->run(*this, parameters);
  if (element.group != kPrimitives) ForgetStyles();
  body_seen_ = body_seen_ || phase == Phase::kBody;
}

void Interpreter::Walk(Bytes elements) {
  ElementWalker walker(elements);
  Element element;
  while (phase != Phase::kDone && walker.Next(&element)) Execute(element);
}

// Defaults within defaults are not followed.
void Interpreter::RunDefaults(Bytes list) {
  if (in_defaults_) return;
  in_defaults_ = true;
  const Phase before = phase;
  Walk(list);
  phase = before;
  in_defaults_ = false;
}

// Until then no value but a default could be set. A second one in a picture's descriptor is damage and only renames it; a
// segment that is still open is none.
void Interpreter::BeginPicture(const std::string& name) {
  if (in_defaults_) return;
  phase = Phase::kPicture;
  open_segment_.reset();
  NameLayer(name);
}

// Only what stands in the metafile itself can be stored: segments in defaults or in other segments make no sense.
void Interpreter::BeginSegment(int64_t name) {
  if (in_defaults_ || copy_depth_ > 0 || walker_ == nullptr) return;
  open_segment_ = name;
  segment_start_ = walker_->position();
}

void Interpreter::EndSegment() {
  if (!open_segment_ || in_defaults_ || copy_depth_ > 0) return;
  segments[*open_segment_] = metafile_.subspan(segment_start_, walker_->start() - segment_start_);
  open_segment_.reset();
}

void Interpreter::CopySegment(int64_t name, const Affine& transform) {
  const auto segment = segments.find(name);
  if (segment == segments.end() || phase != Phase::kBody || copy_depth_ >= kCopyDepth) return;
  copied_bytes_ += segment->second.size();
  KeepWithin(HOST_LIMIT_COPIES, copied_bytes_, kCopiesPerByte);
  const Affine outer = copied_;
  const Attributes before = now;
  const Coding precisions = coding;
  copied_ = Compose(outer, transform);
  ++copy_depth_;
  UpdateMapping();
  Walk(segment->second);
  --copy_depth_;
  copied_ = outer;
  now = before;
  coding = precisions;
  UpdateMapping();
}

void Interpreter::NameLayer(const std::string& name) {
  constexpr size_t kLongest = 63;
  std::u16string& layer = drawing_.layers.front().name;
  layer.clear();
  for (const char c : name) {
    const auto octet = static_cast<uint8_t>(c);
    if (octet >= 0x20 && octet != 0x7F && layer.size() < kLongest) layer.push_back(octet);
  }
}

void Interpreter::KeepWithin(HostLimit limit, uint64_t total, uint64_t per_byte) const {
  if (!IsWithin(limit, total, per_byte * metafile_.size())) throw LimitExceeded();
}

void Interpreter::ChargeCells(uint64_t columns, uint64_t rows) {
  const uint64_t cells = Times(columns, rows);
  cells_ = Plus(cells_, cells);
  KeepWithin(HOST_LIMIT_CELLS, cells_, kCellsPerByte);
  ChargeBytes(Times(cells, sizeof(uint32_t)));
}

void Interpreter::ChargeBytes(uint64_t bytes) {
  drawn_bytes_ = Plus(drawn_bytes_, bytes);
  KeepWithin(HOST_LIMIT_SHAPES, drawn_bytes_, kDrawingBytesPerByte);
}

void Interpreter::ChargeSplineSteps(uint64_t steps) {
  spline_steps_ = Plus(spline_steps_, steps);
  KeepWithin(HOST_LIMIT_CURVES, spline_steps_, kSplineStepsPerByte);
}

// The axes are turned so that the picture stands upright with y upward.
void Interpreter::UpdateMapping() {
  const Affine upright{frame.DirectionX(), 0, 0, 0, frame.DirectionY(), 0};
  mapping_ = Compose(upright, copied_);
  ForgetStyles();
}

std::vector<Point> Interpreter::Map(std::vector<Point> points) const {
  for (Point& point : points) point = Map(point);
  return points;
}

double Interpreter::LengthScale() const {
  return std::sqrt(std::abs(mapping_.xx * mapping_.yy - mapping_.xy * mapping_.yx));
}

}  // namespace tavi::host::cgm
