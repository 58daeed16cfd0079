// tavinitf extract: the data of one segment as they stand in the file, or a graphic's drawing as a picture.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "Drawing.h"
#include "OutputFile.h"
#include "Reading.h"
#include "Refusal.h"
#include "Saving.h"
#include "Selector.h"
#include "TaviStatus.h"

namespace tavinitf {
namespace {

const std::vector<SegmentKind>& SelectableKinds() {
  static const std::vector<SegmentKind> kinds = {SegmentKind::kText, SegmentKind::kGraphic,
                                                 SegmentKind::kImage};
  return kinds;
}

Failure NotExtracted(const ExtractOptions& options, const std::string& reason, int32_t status) {
  return FailureLine(options.file, "not extracted", reason, status);
}

Failure Copy(const ExtractOptions& options, const Extent& extent) {
  std::ifstream input(options.file, std::ios::binary);
  input.seekg(static_cast<std::streamoff>(extent.offset));
  OutputFile output;
  if (!output.Open(options.output)) return NotWritten(options.output, output.error());
  constexpr uint64_t kPiece = 1 << 20;
  std::vector<char> piece(std::min(kPiece, extent.length));
  for (uint64_t left = extent.length; left != 0;) {
    const uint64_t size = std::min<uint64_t>(left, piece.size());
    if (!input.read(piece.data(), static_cast<std::streamsize>(size))) {
      return NotExtracted(options, "its data cannot be read", ERR_FILE_READ);
    }
    if (!output.Write(piece.data(), size)) return NotWritten(options.output, output.error());
    left -= size;
  }
  if (!output.Commit()) return NotWritten(options.output, output.error());
  return std::nullopt;
}

std::string Named(const Segment& segment) {
  return std::string(KindName(segment.kind)) + " " + std::to_string(segment.index);
}

Failure Draw(const ExtractOptions& options, const Segment& graphic, DrawingFormat format) {
  if (const std::string type = graphic.Text("SFMT"); type != "C") {
    return NotExtracted(
        options, Named(graphic) + ": graphic type \"" + type + R"(" (only drawings, "C", become pictures))",
        ERR_NOT_SUPPORTED);
  }
  Drawing drawing;
  int32_t status = drawing.Load(options.file, graphic.data);
  if (status != SUCCESS) return NotExtracted(options, ExplainNoDrawing(status, graphic), status);
  OutputFile output;
  if (!output.Open(options.output)) return NotWritten(options.output, output.error());
  status = drawing.Export(format, output);
  if (status == ERR_FILE_WRITE) return NotWritten(options.output, output.error());
  if (status != SUCCESS) return NotExtracted(options, Named(graphic) + ": " + StatusMeaning(status), status);
  if (!output.Commit()) return NotWritten(options.output, output.error());
  return std::nullopt;
}

Failure Extract(const ExtractOptions& options) {
  const Reading reading = Read(options.file);
  if (reading.refusal) return reading.RefusalLine(options.file);
  const NitfContents& contents = reading.contents;
  const std::optional<Selector> selector = ParseSelector(options.segment, SelectableKinds());
  const Segment* segment = contents.Find(selector->kind, selector->index);
  if (segment == nullptr)
    return NotExtracted(options, ExplainNoSegment(*selector, contents), ERR_INVALID_PARAMETER);
  if (segment->data.end() > contents.file_size) {
    return NotExtracted(options,
                        Named(*segment) + ": its data end at byte " + std::to_string(segment->data.end()) +
                            ", the file at byte " + std::to_string(contents.file_size),
                        ERR_FILE_READ);
  }
  std::error_code ignored;
  if (std::filesystem::equivalent(options.file, options.output, ignored))
    return NotWritten(options.output, "is the file that is read");
  const DrawingFormat format = DrawingFormatOf(options.output);
  if (segment->kind == SegmentKind::kGraphic && format != DrawingFormat::kAsItStands)
    return Draw(options, *segment, format);
  return Copy(options, segment->data);
}

}  // namespace

int RunExtract(const ExtractOptions& options) {
  return ReportFailure(Extract(options));
}

std::string ComplainOfExtracted(const std::string& selector) {
  return ComplainOfSelector(selector, SelectableKinds());
}

}  // namespace tavinitf
