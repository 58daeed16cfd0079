#include "Reading.h"

#include "PathNames.h"
#include "Refusal.h"
#include "TaviStatus.h"

namespace tavinitf {

std::string Reading::RefusalLine(const std::string& path) const {
  return FailureLine(path, "not opened", refusal.value_or(""), refusal_status);
}

Reading Read(const std::string& path) {
  Reading reading;
  const std::optional<std::wstring> wide = WideFromUtf8(path);
  if (!wide) {
    reading.refusal = "its name is not valid UTF-8";
    reading.refusal_status = ERR_FILE_NOT_FOUND;
    return reading;
  }
  reading.wide_path = *wide;
  reading.contents = ReadContents(path, *wide);
  if (reading.contents.status < SUCCESS) {
    reading.refusal = ExplainOpenFailure(path, reading.contents);
    reading.refusal_status = reading.contents.status;
  }
  return reading;
}

}  // namespace tavinitf
