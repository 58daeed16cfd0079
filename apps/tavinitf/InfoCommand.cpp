// tavinitf info: what a file is and which segments it holds, as text or as JSON.
#include <cstdio>
#include <fstream>
#include <vector>

#include "Commands.h"
#include "JsonForms.h"
#include "PictureLoader.h"
#include "Reading.h"
#include "Refusal.h"
#include "Segments.h"
#include "TaggedRecords.h"
#include "TaviStatus.h"

namespace tavinitf {
namespace {

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
  Reading reading;
  std::vector<TaggedRecord> header_records;
  std::vector<std::vector<TaggedRecord>> segment_records;  // one list for each segment
  PictureSize composite;
  int32_t composite_status = 0;
};

FileReport Examine(const std::string& path) {
  HostForgetLimitHit();
  FileReport report;
  report.path = path;
  report.reading = Read(path);
  if (report.reading.refusal) return report;
  std::ifstream file(path, std::ios::binary);
  report.header_records = FindTaggedRecords(file, report.reading.contents.header);
  for (const Segment& segment : report.reading.contents.segments) {
    report.segment_records.push_back(FindTaggedRecords(file, segment));
  }
  report.composite_status = QueryPictureSize(report.reading.wide_path, {}, report.composite);
  return report;
}

bool HasMaskTable(const Segment& image) {
  return image.Find("IMDATOFF") != nullptr;
}

void PutFields(Json& json, const Segment& segment) {
  for (const char* name : DecisiveFields(segment.kind)) {
    if (segment.Find(name) != nullptr) json[name] = AsUtf8(segment.Text(name));
  }
}

Json RecordsAsJson(const std::vector<TaggedRecord>& records) {
  Json json = Json::array();
  for (const TaggedRecord& record : records) {
    json.push_back({{"tag", AsUtf8(record.tag)},
                    {"block", record.block},
                    {"offset", record.offset},
                    {"length", record.length},
                    {"overruns", record.overruns}});
  }
  return json;
}

Json SegmentAsJson(const Segment& segment, const std::vector<TaggedRecord>& records) {
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
  json["tres"] = RecordsAsJson(records);
  return json;
}

Json ReportAsJson(const FileReport& report) {
  const NitfContents& contents = report.reading.contents;
  Json json;
  json["file"] = report.path;
  if (report.reading.refusal) {
    json["error"] = StatusAsJson(report.reading.refusal_status, *report.reading.refusal);
    return json;
  }
  json["size"] = contents.file_size;
  PutFields(json, contents.header);
  if (report.composite_status == SUCCESS) {
    json["composite"] = {{"width", report.composite.width}, {"height", report.composite.height}};
  } else {
    json["composite"] = nullptr;
    json["composite_error"] = StatusAsJson(
        report.composite_status, ExplainDrawFailure(report.path, report.composite_status, contents));
  }
  json["reserved_segments"] = contents.reserved_count;
  json["tres"] = RecordsAsJson(report.header_records);
  json["segments"] = Json::array();
  for (size_t i = 0; i < contents.segments.size(); ++i) {
    json["segments"].push_back(SegmentAsJson(contents.segments[i], report.segment_records[i]));
  }
  return json;
}

void PrintRecords(const char* indent, const std::vector<TaggedRecord>& records) {
  for (const TaggedRecord& record : records) {
    std::printf("%sTRE %s in %s at %llu, %llu bytes%s\n", indent, Printable(Trimmed(record.tag)).c_str(),
                record.block, static_cast<unsigned long long>(record.offset),
                static_cast<unsigned long long>(record.length),
                record.overruns ? ", runs past its block" : "");
  }
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
  const NitfContents& contents = report.reading.contents;
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
                ExplainDrawFailure(report.path, report.composite_status, contents).c_str(),
                StatusName(report.composite_status).c_str(), report.composite_status);
  }
  PrintRecords("  ", report.header_records);
  if (contents.segments.empty()) std::puts("  no segments");
  for (size_t i = 0; i < contents.segments.size(); ++i) {
    PrintSegment(contents.segments[i]);
    PrintRecords("    ", report.segment_records[i]);
  }
  if (contents.reserved_count != 0) {
    std::printf("  reserved extensions: %llu\n", static_cast<unsigned long long>(contents.reserved_count));
  }
}

}  // namespace

int RunInfo(const InfoOptions& options) {
  Json all = Json::array();
  int exit_status = kDone;
  for (const std::string& file : options.files) {
    const FileReport report = Examine(file);
    if (options.json) all.push_back(ReportAsJson(report));
    if (report.reading.refusal) {
      exit_status = kFailed;
      std::fprintf(stderr, "%s\n", report.reading.RefusalLine(file).c_str());
    } else if (!options.json) {
      PrintReport(report);
    }
  }
  if (options.json) std::printf("%s\n", all.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
  return exit_status;
}

}  // namespace tavinitf
