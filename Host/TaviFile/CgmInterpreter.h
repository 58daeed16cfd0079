// Turns the elements of a metafile's first picture into a drawing. Each element is a function of its own, named in the
// tables at the end of its file; this class holds what they share: the state, and how shapes get their styles.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "TaviFile/CgmElements.h"
#include "TaviFile/CgmPath.h"
#include "TaviFile/CgmState.h"
#include "TaviFile/CgmTiles.h"
#include "TaviKernel/Limits.h"
#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

using vec::Affine;
using vec::Shape;

class Interpreter;

struct Handler {
  uint32_t group;
  uint32_t id;
  const char* name;
  void (*run)(Interpreter&, Parameters&);
};

std::span<const Handler> StructureHandlers();   // classes 0 and 8
std::span<const Handler> DescriptorHandlers();  // classes 1, 2 and 3
std::span<const Handler> PrimitiveHandlers();   // class 4
std::span<const Handler> ArcHandlers();
std::span<const Handler> CurveHandlers();
std::span<const Handler> TextHandlers();
std::span<const Handler> CellHandlers();
std::span<const Handler> TileHandlers();
std::span<const Handler> AttributeHandlers();  // class 5

// A picture asks for more than its bytes justify.
struct LimitExceeded {};

// How far the metafile has been read.
enum class Phase : uint8_t { kMetafile, kPicture, kBody, kDone };

class Interpreter {
 public:
  explicit Interpreter(Bytes metafile);
  ~Interpreter() = default;
  Interpreter(const Interpreter&) = delete;
  Interpreter& operator=(const Interpreter&) = delete;

  // False when the metafile has no picture with a body. May throw LimitExceeded and std::bad_alloc.
  bool Run();
  vec::Drawing TakeDrawing() { return std::move(drawing_); }

  // ---- What elements read and change ----
  Coding coding;
  Frame frame;
  Attributes now;
  Tables tables;
  Phase phase = Phase::kMetafile;
  std::map<int64_t, Attributes> contexts;
  std::map<int64_t, Bytes> segments;
  std::optional<PathBuilder> path;  // between BEGIN and END FIGURE or COMPOUND LINE
  std::optional<vec::Text> text;    // waits for APPEND TEXT
  std::optional<TileArray> tiles;
  int protection = 0;  // inside protection regions nothing is drawn

  // ---- Structure ----
  void RunDefaults(Bytes list);
  void BeginPicture(const std::string& name);
  void BeginSegment(int64_t name);
  void EndSegment();
  void CopySegment(int64_t name, const Affine& transform);
  void DefinePattern(int64_t index, vec::Pattern pattern);
  // Count cells that the picture asks for, before memory is taken for them, bytes of what it draws, and work.
  void ChargeCells(uint64_t columns, uint64_t rows);
  void ChargeBytes(uint64_t bytes);
  void ChargeSplineSteps(uint64_t steps);

  // ---- Drawing ----
  // From the metafile's coordinates to the drawing's.
  Point Map(Point p) const { return mapping_.Apply(p); }
  Point MapVector(Point v) const { return mapping_.ApplyVector(v); }
  std::vector<Point> Map(std::vector<Point> points) const;
  // Whether mapped rectangles are still parallel to the axes.
  bool IsUpright() const { return mapping_.xy == 0 && mapping_.yx == 0; }
  double LengthScale() const;

  // Shapes whose style is the current line's, or the fill's and the edge's.
  void DrawLine(Shape shape);
  void DrawArea(Shape shape);
  void DrawMarkers(std::vector<Point> points);
  void AddToPath(const Shape& shape);
  // Shapes that bring their style.
  void Draw(Shape shape);
  void FlushText();
  void EndPath();
  // The height of characters is their em size, or that of capitals.
  uint32_t CurrentTextStyle(bool capitals);
  // The frame or the transformation changed.
  void UpdateMapping();
  uint32_t Resolve(ColorRef color) const { return tables.colors.Resolve(color); }

 private:
  // Throws LimitExceeded when the total is beyond the limit and what the metafile's bytes earn.
  void KeepWithin(HostLimit limit, uint64_t total, uint64_t per_byte) const;
  void Walk(Bytes elements);
  void Execute(const Element& element);
  bool IsIgnored(const Element& element) const;
  void NameLayer(const std::string& name);
  uint32_t StrokeOf(const LineAspects& aspects, const Ends& ends);
  uint32_t CurrentLine();
  vec::AreaStyle CurrentArea();
  void ForgetStyles();
  // Puts a shape with its style into the drawing; its weight has been counted.
  void Place(Shape shape);
  template <class Style>
  uint32_t Intern(std::vector<Style>& pool, const Style& style, uint64_t more_bytes = 0);
  uint32_t CurrentFill();
  double PatternUnit() const;
  uint32_t PatternIn(int64_t index, const vec::Pattern& pattern);
  vec::Stroke DashesOf(int64_t type, vec::Stroke stroke, bool* scaled);
  std::pair<double, bool> WidthOf(const std::optional<Size>& size, double nominal_millimetres) const;
  uint32_t CurrentClip();
  void ResolveNominalSizes();

  Bytes metafile_;
  vec::Drawing drawing_;
  Affine mapping_;
  Affine copied_;  // of the segments being copied
  bool in_defaults_ = false;
  int copy_depth_ = 0;
  uint64_t copied_bytes_ = 0;
  uint64_t cells_ = 0;
  uint64_t drawn_bytes_ = 0;
  uint64_t spline_steps_ = 0;
  std::optional<int64_t> open_segment_;
  size_t segment_start_ = 0;
  bool body_seen_ = false;
  ElementWalker* walker_ = nullptr;  // of the metafile itself, not of copies or defaults
  vec::Box covered_;                 // points of all shapes
  // Styles of the last primitives, while nothing has changed since.
  std::optional<uint32_t> line_;
  std::optional<vec::AreaStyle> area_;
  std::array<std::optional<uint32_t>, 2> text_;  // by what the height is that of
  std::map<int64_t, uint32_t> drawn_patterns_;   // of the table, where they stand in the drawing
  std::set<uint32_t> scaled_dashes_;             // strokes whose dashes are in nominal widths
};

}  // namespace tavi::host::cgm
