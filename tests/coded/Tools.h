// Independent encoders and decoders: programs that are run on a picture or a stream in a file of its own.
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

// Streams of grey or RGB pictures; empty when the tool fails. `options` are the tool's. Samples of 8 bits for
// cjpeg, of `bits` for opj_compress, which writes a codestream or, `boxed`, a JP2.
Stream ByCjpeg(const Pixels& pixels, const std::string& options, const std::filesystem::path& folder);
Stream ByOpjCompress(const Pixels& pixels, uint32_t bits, bool boxed, const std::string& options,
                     const std::filesystem::path& folder);

// 12-bit and lossless JPEG by dcmcjpeg, and what dcmdjpeg makes of it. Both work on files with far more around
// the stream, so that they go together.
struct DeepJpeg {
  Stream stream;
  Pixels decoded;
};
std::optional<DeepJpeg> ByDcmcjpeg(const Pixels& pixels, uint32_t bits, const std::string& options,
                                   const std::filesystem::path& folder);

// Fax data of a page whose samples are 0 for black and 1 for white: what tiffcp with this compression puts into
// a strip, and the page that fax2tiff makes of group 3 data.
Stream ByTiffcp(const Pixels& page, const std::string& compression, const std::filesystem::path& folder);
std::optional<Pixels> ByFax2tiff(const Stream& stream, bool two_dimensions, uint32_t width,
                                 const std::filesystem::path& folder);

}  // namespace tavi_test

#endif  // TAVI_TESTS_CODED_TOOLS_H
