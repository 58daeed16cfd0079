#include "LimitFiles.h"

#include <array>

#include "MetafileBuilder.h"

namespace tavi_test {
namespace {

using tavi::test::Element;
using tavi::test::List;
using tavi::test::Metafile;

void Append(Bytes& to, const Bytes& more) {
  to.insert(to.end(), more.begin(), more.end());
}

void Put(Bytes& bytes, uint64_t value, int size) {
  for (int i = size - 1; i >= 0; --i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

// One grey block of the picture is coded, and that says mean grey; decoders make up the rest.
Bytes JpegStream(uint32_t width, uint32_t height, int scans = 1) {
  Bytes stream = {0xFF, 0xD8, 0xFF, 0xDB, 0x00, 0x43, 0x00};
  Append(stream, Bytes(64, 8));
  Append(stream, {0xFF, scans == 1 ? uint8_t{0xC0} : uint8_t{0xC2}, 0x00, 0x0B, 8});
  Put(stream, height, 2);
  Put(stream, width, 2);
  Append(stream, {1, 1, 0x11, 0});
  for (const std::array<uint8_t, 2> table : {std::array<uint8_t, 2>{0x00, 4}, {0x10, 0}}) {
    Append(stream, {0xFF, 0xC4, 0x00, 0x14, table[0], 1});
    Append(stream, Bytes(15, 0));
    stream.push_back(table[1]);
  }
  if (scans == 1) {
    Append(stream, {0xFF, 0xDA, 0x00, 0x08, 1, 1, 0x00, 0, 63, 0, 0x43});
  } else {
    // The constant terms, and then every scan says anew that all others are zero.
    Append(stream, {0xFF, 0xDA, 0x00, 0x08, 1, 1, 0x00, 0, 0, 0, 0x43});
    for (int i = 1; i < scans; ++i) Append(stream, {0xFF, 0xDA, 0x00, 0x08, 1, 1, 0x00, 1, 63, 0, 0x7F});
  }
  Append(stream, {0xFF, 0xD9});
  return stream;
}

// A codestream of one component whose tile has no data.
Bytes Jpeg2000Stream(uint32_t side) {
  Bytes stream = {0xFF, 0x4F, 0xFF, 0x51, 0, 41, 0, 0};
  for (const uint32_t word : {side, side, 0U, 0U, side, side, 0U, 0U}) Put(stream, word, 4);
  Append(stream, {0, 1, 7, 1, 1});
  Append(stream, {0xFF, 0x52, 0, 12, 0, 0, 0, 1, 0, 1, 4, 4, 0, 1});          // one level, reversible
  Append(stream, {0xFF, 0x5C, 0, 7, 0x40, 8 << 3, 9 << 3, 9 << 3, 10 << 3});  // no quantisation
  Append(stream,
         {0xFF, 0x90, 0, 10, 0, 0, 0, 0, 0, 0, 0, 1, 0xFF, 0x93, 0, 0, 0xFF, 0xD9});  // two empty packets
  return stream;
}

BuiltFile Coded(const char* coding, uint32_t width, uint32_t height, Bytes stream) {
  ImageSpec image = GreyImage(width, height);
  image.pixels = std::move(stream);
  image.ic = coding;
  image.comrat = "00.0";
  return NtfBuilder{image}.Build();
}

// White lines of group 4, of one bit each, and fewer than the picture has.
BuiltFile Fax(uint32_t rows) {
  ImageSpec image = BilevelImage(64, 1, {});
  image.Blocks(1, 1, 64, rows);
  image.pixels = Bytes(rows / 10, 0xFF);
  image.ic = "C1";
  image.comrat = "2DH ";
  return NtfBuilder{image}.Build();
}

// Streams of that side for tiles of 8 x 8.
BuiltFile Tiles(uint32_t across, uint32_t side) {
  Bytes streams;
  for (uint32_t i = 0; i < across; ++i) Append(streams, JpegStream(side, side));
  ImageSpec image = GreyImage(8, 8);
  image.Blocks(across, 1, 8, 8);
  image.pixels = streams;
  image.ic = "C3";
  image.comrat = "00.0";
  NtfBuilder file{image};
  file.trailer = Bytes(2048, 0);  // a stream's end is looked for in whole kilobytes
  return file.Build();
}

// No block of it has data.
BuiltFile Absent() {
  ImageSpec image = GreyImage(100, 100);
  image.Blocks(10, 10, 100, 100);
  image.ic = "NM";
  image.mask.block_offsets.emplace();
  image.pixels.clear();
  return NtfBuilder{image}.Build();
}

BuiltFile Drawn(const Metafile& metafile) {
  GraphicSpec graphic;
  graphic.bound2_row = 200;
  graphic.bound2_column = 200;
  graphic.data = metafile.Finish();
  NtfBuilder file;
  file.graphics.push_back(graphic);
  return file.Build();
}

Metafile Repeated(Metafile metafile, int count, int group, int id, const List& list) {
  const Bytes element = Element(group, id, list);
  Bytes all;
  for (int i = 0; i < count; ++i) Append(all, element);
  return metafile.BodyOctets(all);
}

List Copy() {
  return List().I(1).Fixed(1).Fixed(0).Fixed(0).Fixed(1).I(0).I(0).I(1);
}

Metafile CopiedSegment(const Metafile& content, int copies) {
  Metafile metafile = content;
  metafile.Body(0, 7);
  return Repeated(metafile, copies, 8, 1, Copy());
}

Metafile Segment() {
  return Metafile().Body(0, 6, List().I(1));
}

Metafile Circles() {
  return CopiedSegment(Repeated(Segment(), 100, 4, 12, List().Points({100, 100, 50})), 100);
}

Metafile SolidAreas() {
  Metafile metafile = Metafile().Body(5, 22, List().I(1));
  return Repeated(metafile, 2000, 4, 11, List().Points({0, 0, 200, 200}));
}

// One run is all of a row.
Metafile Cells(int side) {
  List list = List().Points({0, 0, 200, 200, 200, 0}).I(side).I(side).I(0).I(0);
  for (int row = 0; row < side; ++row) list.I(side).Rgb(200, 100, 50).Align();
  return Metafile().Body(4, 9, list);
}

Metafile Curves() {
  constexpr int kControls = 200;
  List spline = List().I(8).I(kControls);
  for (int i = 0; i < kControls; ++i) spline.I(i).I(i % 7);
  for (int i = 0; i < kControls + 8; ++i) spline.Fixed(i);
  return CopiedSegment(Repeated(Segment(), 4, 4, 24, spline.Fixed(7).Fixed(kControls)), 14);
}

}  // namespace

std::vector<LimitFile> MakeLimitFiles() {
  const Metafile circles = Circles();
  return {
      {"picture", 100'000, NtfBuilder{GreyImage(200, 200)}.Build()},
      {"drawings", 100, Drawn(circles)},
      {"paint", 1'000'000, Drawn(SolidAreas())},
      {"cells", 1000, Drawn(Cells(1000))},
      {"copies", 1000, Drawn(circles)},
      {"curves", 0, Drawn(Curves())},
      {"shapes", 1000, Drawn(circles)},
      {"jpeg", 1000, Coded("C3", 1000, 1000, JpegStream(1000, 1000))},
      {"scans", 1000, Coded("C3", 400, 400, JpegStream(400, 400, 20))},
      {"jpeg2000", 100'000, Coded("C8", 500, 500, Jpeg2000Stream(500))},
      {"fax", 10, Fax(2000)},
      {"streams", 0, Tiles(40, 8)},
      {"images", 1000, Absent()},
  };
}

std::vector<LimitFile> MakeFilesBeyondPresets() {
  constexpr uint64_t kMiB = uint64_t{1} << 20;
  return {
      {"cells", 2 * kMiB, Drawn(Cells(1300))},
      {"jpeg", 64 * kMiB, Coded("C3", 6000, 6000, JpegStream(6000, 6000))},
      {"streams", 128 * kMiB, Tiles(8, 4000)},
  };
}

}  // namespace tavi_test
