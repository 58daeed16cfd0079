// Independent decoders: programs that are run on a stream in a file of its own.
#ifndef TAVI_TESTS_CODED_TOOLS_H
#define TAVI_TESTS_CODED_TOOLS_H

#include <filesystem>
#include <optional>
#include <string>

#include "../host_codecs/CodecTest.h"

namespace tavi_test {

// Whether a program of this name is installed.
bool HasTool(const std::string& name);

// What opj_decompress and djpeg make of a stream: grey or RGB samples as they are coded; none when the tool
// fails. `folder` is for their files.
std::optional<Pixels> ByOpjDecompress(const Stream& stream, const std::filesystem::path& folder);
std::optional<Pixels> ByDjpeg(const Stream& stream, const std::filesystem::path& folder);

}  // namespace tavi_test

#endif  // TAVI_TESTS_CODED_TOOLS_H
