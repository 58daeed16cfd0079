// tavinitf extract: the data of one segment as they stand in the file, or a graphic's drawing as a picture.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "Drawing.h"
#include "OutputFile.h"
#include "Reading.h"
#include "Refusal.h"
#include "Selector.h"
#include "TaviStatus.h"

namespace tavinitf {
namespace {

const std::vector<SegmentKind>& SelectableKinds() {
  static const std::vector<SegmentKind> kinds = {SegmentKind::kText, SegmentKind::kGraphic,
                                                 SegmentKind::kImage};
  return kinds;
}

struct ExtractOptions {
  std::string file;
  std::string segment;
  std::string output;
};

// The line that tells of a failure; nothing when all went well.
using Failure = std::optional<std::string>;

Failure NotExtracted(const ExtractOptions& options, const std::string& reason, int32_t status) {
  return FailureLine(options.file, "not extracted", reason, status);
}

Failure NotWritten(const ExtractOptions& options, const std::string& reason) {
  return FailureLine(options.output, "not written", reason, ERR_FILE_WRITE);
}

Failure Copy(const ExtractOptions& options, const Extent& extent) {
  std::ifstream input(options.file, std::ios::binary);
  input.seekg(static_cast<std::streamoff>(extent.offset));
  OutputFile output;
  if (!output.Open(options.output)) return NotWritten(options, output.error());
  constexpr uint64_t kPiece = 1 << 20;
  std::vector<char> piece(std::min(kPiece, extent.length));
  for (uint64_t left = extent.length; left != 0;) {
    const uint64_t size = std::min<uint64_t>(left, piece.size());
    if (!input.read(piece.data(), static_cast<std::streamsize>(size))) {
      return NotExtracted(options, "its data cannot be read", ERR_FILE_READ);
    }
    if (!output.Write(piece.data(), size)) return NotWritten(options, output.error());
    left -= size;
  }
  if (!output.Commit()) return NotWritten(options, output.error());
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
  if (!output.Open(options.output)) return NotWritten(options, output.error());
  status = drawing.Export(format, output);
  if (status == ERR_FILE_WRITE) return NotWritten(options, output.error());
  if (status != SUCCESS) return NotExtracted(options, Named(graphic) + ": " + StatusMeaning(status), status);
  if (!output.Commit()) return NotWritten(options, output.error());
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
    return NotWritten(options, "is the file that is read");
  const DrawingFormat format = DrawingFormatOf(options.output);
  if (segment->kind == SegmentKind::kGraphic && format != DrawingFormat::kAsItStands)
    return Draw(options, *segment, format);
  return Copy(options, segment->data);
}

}  // namespace

void AddExtractCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<ExtractOptions>();
  CLI::App* command = app.add_subcommand(
      "extract", "Take out the data of one segment as they stand, or a graphic's drawing as a picture");
  command->add_option("FILE", options->file, "NITF file")->required();
  command->add_option("SEGMENT", options->segment, "text:N, graphic:N or image:N, N from 0")
      ->required()
      ->check([](const std::string& text) { return ComplainOfSelector(text, SelectableKinds()); });
  command
      ->add_option("-o,--output", options->output,
                   "The file to make; a graphic goes into .svg, .png and .pdf as a picture")
      ->required()
      ->type_name("OUT");
  command->callback([options, &exit_status] {
    const Failure failure = Extract(*options);
    if (failure) std::fprintf(stderr, "%s\n", failure->c_str());
    exit_status = failure ? kFailed : kDone;
  });
}

}  // namespace tavinitf
