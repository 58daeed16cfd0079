// Delimiters and segments: what groups other elements.
#include <array>

#include "TaviFile/CgmInterpreter.h"

namespace tavi::host::cgm {
namespace {

void EndMetafile(Interpreter& in, Parameters&) {
  in.phase = Phase::kDone;
}

// Only the first picture is read.
void BeginPicture(Interpreter& in, Parameters& p) {
  if (in.phase == Phase::kBody) {
    in.phase = Phase::kDone;
    return;
  }
  in.BeginPicture(p.String());
}

void BeginPictureBody(Interpreter& in, Parameters&) {
  if (in.phase == Phase::kPicture) in.phase = Phase::kBody;
}

void EndPicture(Interpreter& in, Parameters&) {
  if (in.phase != Phase::kMetafile) in.phase = Phase::kDone;
}

void BeginSegment(Interpreter& in, Parameters& p) {
  const int64_t name = p.Name();
  if (p.ok()) in.BeginSegment(name);
}

void EndSegment(Interpreter& in, Parameters&) {
  in.EndSegment();
}

void BeginPath(Interpreter& in, PathKind kind) {
  if (in.phase != Phase::kBody) return;
  in.FlushText();
  in.EndPath();
  in.path.emplace(kind);
}

void BeginFigure(Interpreter& in, Parameters&) {
  BeginPath(in, PathKind::kFigure);
}
void BeginCompoundLine(Interpreter& in, Parameters&) {
  BeginPath(in, PathKind::kCompoundLine);
}
void EndPath(Interpreter& in, Parameters&) {
  in.EndPath();
}

void BeginProtection(Interpreter& in, Parameters&) {
  if (in.phase != Phase::kBody) return;
  in.FlushText();
  ++in.protection;
}

void EndProtection(Interpreter& in, Parameters&) {
  if (in.protection > 0) --in.protection;
}

// The matrix stands row by row, the translation behind it.
void CopySegment(Interpreter& in, Parameters& p) {
  const int64_t name = p.Name();
  Affine transform;
  transform.xx = p.Real();
  transform.xy = p.Real();
  transform.yx = p.Real();
  transform.yy = p.Real();
  const Point to = p.At();
  transform.x0 = to.x;
  transform.y0 = to.y;
  if (p.ok()) in.CopySegment(name, transform);
}

constexpr auto kHandlers = std::to_array<Handler>({
    {0, 2, "END METAFILE", EndMetafile},
    {0, 3, "BEGIN PICTURE", BeginPicture},
    {0, 4, "BEGIN PICTURE BODY", BeginPictureBody},
    {0, 5, "END PICTURE", EndPicture},
    {0, 6, "BEGIN SEGMENT", BeginSegment},
    {0, 7, "END SEGMENT", EndSegment},
    {0, 8, "BEGIN FIGURE", BeginFigure},
    {0, 9, "END FIGURE", EndPath},
    {0, 13, "BEGIN PROTECTION REGION", BeginProtection},
    {0, 14, "END PROTECTION REGION", EndProtection},
    {0, 15, "BEGIN COMPOUND LINE", BeginCompoundLine},
    {0, 16, "END COMPOUND LINE", EndPath},
    {8, 1, "COPY SEGMENT", CopySegment},
});

}  // namespace

std::span<const Handler> StructureHandlers() {
  return kHandlers;
}

}  // namespace tavi::host::cgm
