// tavinitf create: a new file of pictures, drawings and texts.
#include <array>
#include <cstdio>
#include <ctime>

#include "Commands.h"
#include "Parts.h"
#include "Refusal.h"

namespace tavinitf {
namespace {

std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  std::array<char, 16> text{};
  std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", &parts);
  return text.data();
}

// An empty document with a date, from which the dates of the new segments follow.
Failure WriteEmpty(OutputFile& empty, const CreateOptions& options) {
  Document document;
  const int32_t made = document.Open(nullptr);
  if (made != SUCCESS) return FailureLine(options.output, "not written", StatusMeaning(made), made);
  if (!empty.Open(options.output)) return NotWritten(options.output, empty.error());
  if (Failure failure = SaveTo(document, empty, {options.output, options.output, "not written"}, {}))
    return failure;
  const Reading reading = Read(empty.part());
  if (reading.refusal) return NotReopened(options.output, reading);
  const Field* date = reading.contents.header.Find("FDT");
  const std::string text = options.date.empty() ? Now() : options.date;
  const bool written = empty.Seek(static_cast<int64_t>(date->offset), SEEK_SET) &&
                       empty.Write(text.data(), text.size()) && empty.Seek(0, SEEK_SET);
  return written ? std::nullopt : NotWritten(options.output, empty.error());
}

}  // namespace

std::string ComplainOfDate(const std::string& text) {
  const bool digits = text.find_first_not_of("0123456789") == std::string::npos;
  return text.size() == 14 && digits ? "" : "\"" + text + "\" is no CCYYMMDDhhmmss";
}

int RunCreate(const CreateOptions& options) {
  std::vector<Part> parts;
  if (const std::optional<std::string> misuse = ListParts(options.parts, parts)) {
    std::fprintf(stderr, "tavinitf create: %s\nRun with --help for more information.\n", misuse->c_str());
    return kWrongUsage;
  }
  OutputFile empty;  // never put in the target's place
  Failure failure = WriteEmpty(empty, options);
  if (!failure) failure = BuildFrom(empty.part(), options.output, parts, options.output);
  return ReportFailure(failure);
}

}  // namespace tavinitf
