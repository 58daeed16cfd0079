// tavinitf info: what a file is and which segments it holds, as text or as JSON.
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "Commands.h"
#include "PathNames.h"
#include "PictureLoader.h"
#include "Refusal.h"
#include "Segments.h"
#include "TaviStatus.h"

namespace tavinitf {
namespace {

using Json = nlohmann::ordered_json;

// The fields that decide what a segment of each kind is and where it stands, in the order of the file.
std::vector<const char*> DecisiveFields(SegmentKind kind) {
  switch (kind) {
    case SegmentKind::kFileHeader:
      return {"FHDR", "FVER", "CLEVEL", "FL", "HL"};
    case SegmentKind::kImage:
      return {"NROWS", "NCOLS", "PVTYPE", "IREP",  "ABPP", "IC",    "NBANDS", "XBANDS", "IMODE",
              "NBPR",  "NBPC",  "NPPBH",  "NPPBV", "NBPP", "IDLVL", "IALVL",  "ILOC"};
    case SegmentKind::kGraphic:
      return {"SFMT", "SDLVL", "SALVL", "SLOC"};
    case SegmentKind::kLabel:
      return {"LDLVL", "LALVL", "LLOC"};
    case SegmentKind::kText:
      return {"TXTFMT"};
    case SegmentKind::kDataExtension:
      return {"DESID"};
  }
  return {};
}

struct FileReport {
  std::string path;
  NitfContents contents;
  PictureSize composite;
  int32_t composite_status = 0;
  std::optional<std::string> refusal;  // what is wrong with the file, when it does not open
  int32_t refusal_status = 0;
};

FileReport Examine(const std::string& path) {
  FileReport report;
  report.path = path;
  const std::optional<std::wstring> wide = WideFromUtf8(path);
  if (!wide) {
    report.refusal = "its name is not valid UTF-8";
    report.refusal_status = ERR_FILE_NOT_FOUND;
    return report;
  }
  report.contents = ReadContents(path, *wide);
  if (report.contents.status < SUCCESS) {
    report.refusal = ExplainOpenFailure(path, report.contents);
    report.refusal_status = report.contents.status;
    return report;
  }
  report.composite_status = QueryPictureSize(*wide, {}, report.composite);
  return report;
}

bool HasMaskTable(const Segment& image) {
  return image.Find("IMDATOFF") != nullptr;
}

// Field bytes as UTF-8: headers hold ASCII, and where they do not, one byte is one character.
std::string AsUtf8(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | (byte >> 6));
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

void PutFields(Json& json, const Segment& segment) {
  for (const char* name : DecisiveFields(segment.kind)) {
    if (segment.Find(name) != nullptr) json[name] = AsUtf8(segment.Text(name));
  }
}

Json SegmentAsJson(const Segment& segment) {
  Json json;
  json["kind"] = KindName(segment.kind);
  json["index"] = segment.index;
  json["subheader_offset"] = segment.subheader.offset;
  json["subheader_length"] = segment.subheader.length;
  json["data_offset"] = segment.data.offset;
  json["data_length"] = segment.data.length;
  PutFields(json, segment);
  if (segment.kind == SegmentKind::kImage) {
    json["bands"] = segment.BandCount();
    json["mask"] = HasMaskTable(segment);
  }
  return json;
}

Json ReportAsJson(const FileReport& report) {
  Json json;
  json["file"] = report.path;
  if (report.refusal) {
    json["error"] = {{"status", StatusName(report.refusal_status)},
                     {"number", report.refusal_status},
                     {"text", *report.refusal}};
    return json;
  }
  json["size"] = report.contents.file_size;
  PutFields(json, report.contents.header);
  if (report.composite_status == SUCCESS) {
    json["composite"] = {{"width", report.composite.width}, {"height", report.composite.height}};
  } else {
    json["composite"] = nullptr;
    json["composite_error"] = {{"status", StatusName(report.composite_status)},
                               {"number", report.composite_status},
                               {"text", ExplainDrawFailure(report.composite_status, report.contents)}};
  }
  json["reserved_segments"] = report.contents.reserved_count;
  json["segments"] = Json::array();
  for (const Segment& segment : report.contents.segments) json["segments"].push_back(SegmentAsJson(segment));
  return json;
}

void PrintSegment(const Segment& segment) {
  std::printf("  %s %u:", KindName(segment.kind), segment.index);
  for (const char* name : DecisiveFields(segment.kind)) {
    if (segment.Find(name) != nullptr) std::printf(" %s %s", name, Printable(segment.Text(name)).c_str());
  }
  if (segment.kind == SegmentKind::kImage) std::printf(" mask %s", HasMaskTable(segment) ? "yes" : "no");
  std::printf("\n    subheader at %llu, %llu bytes; data at %llu, %llu bytes\n",
              static_cast<unsigned long long>(segment.subheader.offset),
              static_cast<unsigned long long>(segment.subheader.length),
              static_cast<unsigned long long>(segment.data.offset),
              static_cast<unsigned long long>(segment.data.length));
}

void PrintReport(const FileReport& report) {
  const NitfContents& contents = report.contents;
  const Segment& header = contents.header;
  const auto text = [&](const char* name) { return Printable(header.Text(name)); };
  std::printf("%s: %s %s, complexity level %s, %llu bytes\n", report.path.c_str(), text("FHDR").c_str(),
              text("FVER").c_str(), text("CLEVEL").c_str(),
              static_cast<unsigned long long>(contents.file_size));
  std::printf("  FL %s HL %s\n", text("FL").c_str(), text("HL").c_str());
  if (report.composite_status == SUCCESS) {
    std::printf("  composite %u x %u pixels\n", report.composite.width, report.composite.height);
  } else {
    std::printf("  composite of unknown size: %s [%s %d]\n",
                ExplainDrawFailure(report.composite_status, contents).c_str(),
                StatusName(report.composite_status).c_str(), report.composite_status);
  }
  if (contents.segments.empty()) std::puts("  no segments");
  for (const Segment& segment : contents.segments) PrintSegment(segment);
  if (contents.reserved_count != 0) {
    std::printf("  reserved extensions: %llu\n", static_cast<unsigned long long>(contents.reserved_count));
  }
}

int RunInfo(const std::vector<std::string>& files, bool as_json) {
  Json all = Json::array();
  int exit_status = kDone;
  for (const std::string& file : files) {
    const FileReport report = Examine(file);
    if (as_json) all.push_back(ReportAsJson(report));
    if (report.refusal) {
      exit_status = kFailed;
      std::fprintf(stderr, "%s\n",
                   FailureLine(file, "not opened", *report.refusal, report.refusal_status).c_str());
    } else if (!as_json) {
      PrintReport(report);
    }
  }
  if (as_json) std::printf("%s\n", all.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
  return exit_status;
}

}  // namespace

void AddInfoCommand(CLI::App& app, int& exit_status) {
  struct Options {
    std::vector<std::string> files;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App* command =
      app.add_subcommand("info", "Tell what files are: version, size, segments, composite size");
  command->add_option("FILE", options->files, "NITF files")->required();
  command->add_flag("--json", options->json, "Print a JSON array with one object for each file");
  command->callback([options, &exit_status] { exit_status = RunInfo(options->files, options->json); });
}

}  // namespace tavinitf
