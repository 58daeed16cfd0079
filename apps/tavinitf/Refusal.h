// Statuses in words: what went wrong with a file, in one line.
#pragma once

#include <cstdint>
#include <string>

#include "Segments.h"

namespace tavinitf {

// "ERR_FILE_READ"; "status 0" for a number outside the family.
std::string StatusName(int32_t status);
// What the status means: the limit that this thread's last operation met, when it did, or in general: "the file ends
// before the data that it announces".
std::string StatusMeaning(int32_t status);

// `complexity level "05" (only "03" is accepted)`: what the file holds and what is accepted. `path` is looked
// at for the reasons of a file that could not even be read.
std::string ExplainOpenFailure(const std::string& path, const NitfContents& contents);
// The field that the explanation is about: the refused one, or the length that announces too much. Null when not even
// one was read.
const Field* FieldToBlame(const NitfContents& contents);
// The same for a file that opens and cannot be drawn.
std::string ExplainDrawFailure(const std::string& path, int32_t status, const NitfContents& contents);
// `graphic 0: its 6 bytes of data are no CGM drawing`
std::string ExplainNoDrawing(int32_t status, const Segment& graphic);

// `image.ntf: not opened: <explanation> [ERR_UNSUPPORTED_CLEVEL -700001]`
std::string FailureLine(const std::string& path, const std::string& what, const std::string& explanation,
                        int32_t status);

}  // namespace tavinitf
