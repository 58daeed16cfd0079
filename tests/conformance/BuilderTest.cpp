// The file builder itself: known lengths of headers in both layouts, fields that may lie, places that are
// reported.
#include <stdexcept>

#include "ConformanceTest.h"

namespace tavi_test {
namespace {

NtfBuilder OneOfEach(Layout layout) {
  NtfBuilder file{GreyImage(2, 2)};
  file.layout = layout;
  file.graphics.emplace_back().data = {1};
  file.texts.emplace_back().data = {'t', 'x'};
  file.data_extensions.emplace_back().data = {1, 2, 3};
  file.reserved.push_back({{'R', 'E'}, {1, 2}});
  if (layout == Layout::kNitf20) file.labels.emplace_back().data = {'l'};
  return file;
}

TEST(Builder, HeadersHaveTheirKnownLengths) {
  EXPECT_EQ(NtfBuilder{}.Build().bytes.size(), 388U);
  const BuiltFile built = OneOfEach(Layout::kNitf21).Build();
  EXPECT_EQ(built.At("image[0].subheader").length, 439U);
  EXPECT_EQ(built.At("graphic[0].subheader").length, 258U);
  EXPECT_EQ(built.At("text[0].subheader").length, 282U);
  EXPECT_EQ(built.At("FSCTLN").offset, 271U);
  EXPECT_EQ(built.At("FBKGC").offset, 297U);
  EXPECT_EQ(built.At("HL").offset, 354U);
}

TEST(Builder, OldLayoutHasTheSameLengthsWithoutDowngradeEvents) {
  const BuiltFile built = OneOfEach(Layout::kNitf20).Build();
  EXPECT_EQ(built.At("graphic[0].subheader").length, 258U);
  EXPECT_EQ(built.At("text[0].subheader").length, 282U);
  EXPECT_EQ(built.At("FSDWNG").offset, 280U);
  EXPECT_EQ(built.At("HL").offset, 354U);
  EXPECT_EQ(built.At("des[0].DESDEVT").length, 40U);
  EXPECT_THROW((void)built.At("FSDEVT"), std::invalid_argument);
  NtfBuilder event = OneOfEach(Layout::kNitf20);
  event.header["FSDWNG"] = "999998";
  event.images[0].fields["ISDWNG"] = "999998";
  EXPECT_EQ(event.Build().At("FSDEVT").length, 40U);
  EXPECT_EQ(event.Build().At("image[0].ISDEVT").length, 40U);
}

TEST(Builder, SegmentsFollowOneAnotherAndTheLengthsSaySo) {
  for (const Layout layout : {Layout::kNitf21, Layout::kNitf20}) {
    const BuiltFile built = OneOfEach(layout).Build();
    size_t at = built.At("image[0].subheader").offset;
    EXPECT_EQ(built.Text("HL"), Digits(at, 6));
    for (const char* kind : {"image[0]", "graphic[0]", "label[0]", "text[0]", "des[0]", "res[0]"}) {
      if (layout == Layout::kNitf21 && std::string(kind) == "label[0]") continue;
      for (const char* half : {".subheader", ".data"}) {
        const FieldPlace place = built.At(std::string(kind) + half);
        EXPECT_EQ(place.offset, at) << kind << half;
        at += place.length;
      }
    }
    EXPECT_EQ(at, built.bytes.size());
    EXPECT_EQ(built.Text("FL"), Digits(at, 12));
    EXPECT_EQ(built.Text("LI[0]"), "0000000004");
    EXPECT_EQ(built.Text("LTSH[0]"), "0282");
    EXPECT_EQ(built.Text("LT[0]"), "00002");
    EXPECT_EQ(built.Text("LD[0]"), "000000003");
    EXPECT_EQ(built.Text("LRE[0]"), "0000002");
  }
}

TEST(Builder, FieldsMayLieWithoutMovingTheOthers) {
  NtfBuilder file = OneOfEach(Layout::kNitf21);
  const size_t honest = file.Build().bytes.size();
  file.header = {{"FL", "7"}, {"NUMT", "009"}, {"LISH[0]", "-"}};
  file.images[0].fields = {{"NROWS", "x"}, {"NLUTS[0]", "3"}, {"UDIDL", "00100"}};
  const BuiltFile built = file.Build();
  EXPECT_EQ(built.bytes.size(), honest);
  EXPECT_EQ(built.Text("FL"), "7           ");
  EXPECT_EQ(built.Text("NUMT"), "009");
  EXPECT_EQ(built.Text("image[0].NROWS"), "x       ");
}

TEST(Builder, NamesAndWidthsAreChecked) {
  NtfBuilder file = OneOfEach(Layout::kNitf21);
  file.header["NOFIELD"] = "x";
  EXPECT_THROW((void)file.Build(), std::invalid_argument);
  file.header = {{"FVER", "02.100"}};
  EXPECT_THROW((void)file.Build(), std::invalid_argument);
  file.header.clear();
  BuiltFile built = file.Build();
  EXPECT_THROW(built.Patch("FVER", "02.100"), std::invalid_argument);
  EXPECT_THROW((void)Digits(1000, 3), std::invalid_argument);
  EXPECT_THROW((void)LocationText(-10000, 0), std::invalid_argument);
}

TEST(Builder, LocationsAreSignedHalves) {
  EXPECT_EQ(LocationText(12, -34), "00012-0034");
  EXPECT_EQ(LocationText(99999, -9999), "99999-9999");
}

TEST(Builder, MaskTablesCountBlocksAndBands) {
  ImageSpec image = RgbImage(1, 1, 'B', Bytes(9));
  image.Blocks(3, 1, 1, 1);
  image.ic = "NM";
  image.mask.block_offsets = {{0, 3, 6}};
  image.mask.pad_code = {1, 2};
  const BuiltFile built = NtfBuilder{image}.Build();
  EXPECT_EQ(built.At("image[0].pixels").offset - built.At("image[0].data").offset, 10U + 2 + 4 * 9);
  EXPECT_EQ(built.Text("image[0].BMR[1]"), std::string("\0\0\0\3", 4));
  EXPECT_EQ(built.Text("image[0].BMR[8]"), "\xFF\xFF\xFF\xFF");
  EXPECT_EQ(built.Text("image[0].IMDATOFF"), std::string("\0\0\0\x30", 4));
  EXPECT_EQ(built.Text("image[0].TPXCDLNTH"), std::string("\0\x10", 2));
}

}  // namespace
}  // namespace tavi_test
