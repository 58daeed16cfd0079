// tavinitf verify: whether the lengths, tables, masks, records and levels of a file agree with what is there.
#include <cstdio>

#include "Commands.h"
#include "JsonForms.h"
#include "Reading.h"
#include "Refusal.h"
#include "Verify.h"

namespace tavinitf {
namespace {

// The refused field is what is wrong with the file.
void AddRefusal(const Reading& reading, Findings& findings) {
  const NitfContents& contents = reading.contents;
  constexpr size_t kShown = 80;
  Finding finding{contents.last_kind, contents.last_index, {}, -1, -1, 0, {}, *reading.refusal};
  const std::string whose = std::string(KindName(finding.kind)) + " " + std::to_string(finding.index) + ": ";
  if (finding.expected.starts_with(whose)) finding.expected.erase(0, whose.size());
  if (const Field* field = FieldToBlame(contents)) {
    finding.field = field->name;
    finding.field_index = field->index;
    finding.sub_index = field->sub_index;
    finding.offset = field->offset;
    finding.found = field->bytes.substr(0, kShown);
  }
  findings.Add(std::move(finding));
}

Findings Verify(const std::string& path, const Reading& reading) {
  Findings findings;
  if (reading.refusal) {
    AddRefusal(reading, findings);
    return findings;
  }
  std::ifstream file(path, std::ios::binary);
  const Subject subject{reading.contents, file, findings};
  for (const auto check :
       {VerifyLengths, VerifyImages, VerifyMasks, VerifyRecords, VerifyLevels, VerifyDates}) {
    check(subject);
  }
  return findings;
}

const char* Verdict(const Reading& reading, const Findings& findings) {
  if (reading.refusal) return "refused";
  return findings.list().empty() ? "clean" : "findings";
}

// ---- For people ----

std::string Where(const Finding& finding) {
  std::string text = KindName(finding.kind);
  if (finding.kind != SegmentKind::kFileHeader) text += " " + std::to_string(finding.index);
  return text + ": " + IndexedName(finding.field, finding.field_index, finding.sub_index) + " at byte " +
         std::to_string(finding.offset);
}

void Print(const std::string& path, const Reading& reading, const Findings& findings) {
  const uint64_t count = findings.list().size() + findings.omitted();
  if (reading.refusal) {
    std::printf("%s: refused\n", path.c_str());
  } else if (count == 0) {
    std::printf("%s: clean\n", path.c_str());
  } else {
    std::printf("%s: %llu finding%s\n", path.c_str(), static_cast<unsigned long long>(count),
                count == 1 ? "" : "s");
  }
  for (const Finding& finding : findings.list()) {
    if (finding.field.empty()) {
      std::printf("  %s\n", finding.expected.c_str());
    } else if (reading.refusal) {
      std::printf("  %s: %s\n", Where(finding).c_str(), finding.expected.c_str());
    } else {
      std::printf("  %s: found \"%s\", expected %s\n", Where(finding).c_str(),
                  Printable(finding.found).c_str(), finding.expected.c_str());
    }
  }
  if (findings.omitted() != 0) {
    std::printf("  %llu more of the same fields\n", static_cast<unsigned long long>(findings.omitted()));
  }
}

// ---- JSON ----

Json FindingAsJson(const Finding& finding) {
  Json json = {{"segment", KindName(finding.kind)}, {"index", finding.index}};
  if (finding.field.empty()) {
    json["field"] = nullptr;
  } else {
    json["field"] = finding.field;
    if (finding.field_index >= 0) json["field_index"] = finding.field_index;
    if (finding.sub_index >= 0) json["field_sub_index"] = finding.sub_index;
    json["offset"] = finding.offset;
  }
  json["found"] = AsUtf8(finding.found);
  json["expected"] = AsUtf8(finding.expected);
  return json;
}

void PrintJson(const std::string& path, const Reading& reading, const Findings& findings) {
  Json json = {{"file", path}, {"size", reading.contents.file_size}, {"verdict", Verdict(reading, findings)}};
  json["findings"] = Json::array();
  for (const Finding& finding : findings.list()) json["findings"].push_back(FindingAsJson(finding));
  json["omitted"] = findings.omitted();
  if (reading.refusal) json["error"] = StatusAsJson(reading.refusal_status, *reading.refusal);
  std::puts(json.dump(2, ' ', true, Json::error_handler_t::replace).c_str());
}

}  // namespace

int RunVerify(const VerifyOptions& options) {
  const Reading reading = Read(options.file);
  const Findings findings = Verify(options.file, reading);
  if (options.json) {
    PrintJson(options.file, reading, findings);
  } else {
    Print(options.file, reading, findings);
  }
  if (reading.refusal) std::fprintf(stderr, "%s\n", reading.RefusalLine(options.file).c_str());
  return findings.list().empty() ? kDone : kFailed;
}

}  // namespace tavinitf
