// Small files that between them go through every way of reading a header and of decoding uncompressed image
// data.
#pragma once

#include <string>
#include <vector>

#include "NtfBuilder.h"

namespace tavi::faults {

struct NamedFile {
  std::string name;  // letters and digits
  tavi_test::NtfBuilder file;
};

// One file for each way of decoding, and those without an image.
std::vector<NamedFile> FilesOfEveryKind();

// One file with all kinds of segments, extended data everywhere, attached images, masks and look-up tables.
// Its images alone can be drawn: it holds no graphic. The last thing in it is a data extension's subheader.
tavi_test::NtfBuilder FileOfEverything();

}  // namespace tavi::faults
