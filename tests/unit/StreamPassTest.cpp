// The passes over replacement data.
//
// The search starts to read 207 bytes before the delimiter that it finds, as if SFH_L1 stood there and not
// behind a subheader of 200 bytes. A pass therefore takes place only for a crafted file: seven digits and a
// first delimiter at that very place, and a second copy of the delimiter 200 bytes on, behind which the
// readers take their data.
#include <cstring>

#include "StrmFHdr.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "UnitTest.h"

namespace {

using tavi::ImSubHdr;
using tavi::StrmFHdr;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::Digits;
using tavi_test::NtfBuilder;
using namespace unit;

const std::string kFirst = "\x0A\x6E\x1D\x97";
const std::string kSecond = "\x0E\xCA\x14\xBF";
constexpr size_t kBack = 207;  // from the delimiter found back to where SFH_L1 is read

// The end of a file with a streaming header that a pass accepts.
struct Stream {
  uint32_t length = 0;  // SFH_L1: what a pass may read
  Bytes data;           // what the readers take
  std::string first = kFirst;
  std::string second = kSecond;
  std::string trailing;  // SFH_L2; when empty, the same as SFH_L1

  [[nodiscard]] Bytes End() const {
    if (length > kBack - 22 && length < kBack - 7) throw std::invalid_argument("covers the delimiter");
    std::string end(kBack, '.');
    end += kFirst + std::string(data.begin(), data.end());
    const auto put = [&](size_t at, const std::string& text) {
      if (end.size() < at + text.size()) end.resize(at + text.size(), '.');
      end.replace(at, text.size(), text);
    };
    put(0, Digits(length, 7) + first);
    put(11 + length, second + (trailing.empty() ? Digits(length, 7) : trailing));
    // The search takes chunks of 255 bytes that overlap by three; the delimiter 200 bytes before must not
    // share the chunk of the one to be found.
    while (end.size() - kBack < 56 || (end.size() - kBack - 56) % 252 > 199) end += '.';
    return ToBytes(end);
  }
};

Bytes Slice(const BuiltFile& file, const std::string& name) {
  const std::string text = file.Text(name);
  return {text.begin(), text.end()};
}

// ---- Passes over the file header ----

class HeaderPassTest : public UnitTest {
 protected:
  // Reads the header of a file whose replacement data are `stream`; the sentinel is FL.
  int32_t Read(NitfFile& d, NtfBuilder builder, const Stream& stream) {
    builder.header["FL"] = "999999999999";
    builder.trailer = stream.End();
    Attach(d, builder.Build());
    StrmFHdr header;
    const int32_t status = tavi::ReadFileHeader(d.Header, d, header, 0);
    replacement_length_ = header.ReplacementLength;
    return status;
  }
  // A header whose texts differ from those of a plain one.
  static NtfBuilder Replacement() {
    NtfBuilder builder;
    builder.header["STYPE"] = "NEW1";
    builder.header["OSTAID"] = "new origin";
    builder.header["FDT"] = "20991231235959";
    builder.header["FTITLE"] = "new title";
    builder.header["FSCLAS"] = "R";
    builder.header["OPHONE"] = "new phone";
    builder.header["FL"] = "000000123456";
    builder.header["HL"] = "000777";
    builder.background = {1, 2, 3};
    return builder;
  }
  static Bytes HeaderOf(const NtfBuilder& builder) {
    const BuiltFile file = builder.Build();
    const size_t length = file.At("XHDL").offset + 5;
    return {file.bytes.begin(), file.bytes.begin() + static_cast<std::ptrdiff_t>(length)};
  }
  uint32_t replacement_length_ = 0;
};

TEST_F(HeaderPassTest, WholePassReplacesEveryValue) {
  Stream stream;
  stream.data = HeaderOf(Replacement());
  stream.length = static_cast<uint32_t>(stream.data.size()) + 200;
  NitfFile d;
  ASSERT_EQ(Read(d, {}, stream), SUCCESS);
  const tavi::NtfHdr& h = d.Header;
  EXPECT_STREQ(h.Text.STYPE, "NEW1");
  EXPECT_STREQ(h.Text.OSTAID, "new origin");
  EXPECT_EQ(std::string(h.Text.FTITLE, 10), "new title ");
  EXPECT_STREQ(h.Text.FSCLAS, "R");
  EXPECT_STREQ(h.Text.FL, "000000123456");
  EXPECT_EQ(h.FlValue, 123456U);
  EXPECT_EQ(h.FlMirror, 123456U);
  EXPECT_EQ(h.HlRead, 777U);
  EXPECT_EQ(h.HlWork, 777U);
  EXPECT_EQ(h.BackgroundValue, 0x030201U);
  EXPECT_EQ(d.StreamLoaded, 1U);
  EXPECT_EQ(d.StreamConsumed, 388U);
  const size_t behind = stream.End().size() - kBack - 4;
  EXPECT_EQ(d.StreamTail, behind - 388);
  EXPECT_EQ(replacement_length_, 588U);
}

// A limit just above or at the header's length is a whole pass, one below it ends before the last field.
TEST_F(HeaderPassTest, LimitOfExactlyTheHeadersLengthIsAWholePass) {
  for (const uint32_t limit : {387U, 388U, 389U}) {
    Stream stream;
    stream.data = HeaderOf(Replacement());
    stream.length = limit;  // the second delimiter then stands in FSCLTX, which takes any text
    NitfFile d;
    ASSERT_EQ(Read(d, {}, stream), SUCCESS);
    EXPECT_EQ(d.Header.FlValue, 123456U);
    EXPECT_EQ(d.StreamConsumed, limit == 387 ? 0U : 388U);
  }
}

TEST_F(HeaderPassTest, LimitInsideTheHeaderKeepsTheRestOfTheFirstPass) {
  Stream stream;
  stream.data = HeaderOf(Replacement());
  stream.length = 118;  // one byte short of FTITLE
  NitfFile d;
  ASSERT_EQ(Read(d, {}, stream), SUCCESS);
  EXPECT_STREQ(d.Header.Text.STYPE, "NEW1");
  EXPECT_STREQ(d.Header.Text.OSTAID, "new origin");
  EXPECT_STREQ(d.Header.Text.FDT, "20991231235959");
  EXPECT_EQ(std::string(d.Header.Text.FTITLE, 21), "A file made by a test");
  EXPECT_STREQ(d.Header.Text.FSCLAS, "U");
  EXPECT_STREQ(d.Header.Text.FL, "999999999999");
  EXPECT_EQ(d.Header.HlRead, 388U);
  EXPECT_EQ(d.StreamLoaded, 1U);
  EXPECT_EQ(d.StreamConsumed, 0U);
  EXPECT_EQ(d.StreamTail, stream.End().size() - kBack - 4);
}

// Each field at its own limit, one byte less and the same.
TEST_F(HeaderPassTest, FieldIsReplacedFromItsLastByteOn) {
  struct {
    uint32_t limit;
    const char* stype;
    const char* origin;
  } const kCases[] = {{14, "BF01", "builder   "},
                      {15, "NEW1", "builder   "},
                      {24, "NEW1", "builder   "},
                      {25, "NEW1", "new origin"}};
  for (const auto& c : kCases) {
    Stream stream;
    stream.data = HeaderOf(Replacement());
    stream.length = c.limit;
    NitfFile d;
    ASSERT_EQ(Read(d, {}, stream), SUCCESS);
    EXPECT_STREQ(d.Header.Text.STYPE, c.stype) << c.limit;
    EXPECT_STREQ(d.Header.Text.OSTAID, c.origin) << c.limit;
  }
}

TEST_F(HeaderPassTest, LimitBelowTheSignatureReadsNothing) {
  for (const uint32_t limit : {0U, 3U}) {
    Stream stream;
    stream.data = ToBytes("JUNKJUNKJUNK");
    stream.length = limit;
    NitfFile d;
    EXPECT_EQ(Read(d, {}, stream), SUCCESS);
    EXPECT_STREQ(d.Header.Text.FHDR, "NITF");
  }
}

TEST_F(HeaderPassTest, TestsOfTheNormalPassStayInForce) {
  struct {
    const char* field;
    const char* text;
    int32_t status;
  } const kCases[] = {{"FHDR", "JUNK", ERR_FILE_FORMAT},
                      {"FVER", "02.00", ERR_NOT_NITF},
                      {"CLEVEL", "05", ERR_UNSUPPORTED_CLEVEL},
                      {"FSCLAS", "X", ERR_FILE_FORMAT}};
  for (const auto& c : kCases) {
    NtfBuilder replacement = Replacement();
    replacement.header[c.field] = c.text;
    Stream stream;
    stream.data = HeaderOf(replacement);
    stream.length = static_cast<uint32_t>(stream.data.size()) + 200;
    NitfFile d;
    EXPECT_EQ(Read(d, {}, stream), c.status) << c.field;
  }
}

TEST_F(HeaderPassTest, SentinelInReplacementDataIsTakenAsAValue) {
  NtfBuilder replacement = Replacement();
  replacement.images = {tavi_test::GreyImage(1, 1)};
  replacement.header["LISH[0]"] = "999999";
  replacement.header["LI[0]"] = "9999999999";
  Stream stream;
  stream.data = HeaderOf(replacement);
  stream.length = static_cast<uint32_t>(stream.data.size()) + 200;
  NitfFile d;
  ASSERT_EQ(Read(d, {}, stream), SUCCESS);
  EXPECT_EQ(d.Header.LishRead.At(0), 999999U);
  EXPECT_EQ(d.Header.LiRead.At(0), 2147483647U);
  EXPECT_EQ(d.StreamConsumed, stream.data.size()) << "one pass, not one after another";
}

NtfBuilder WithImages(std::initializer_list<std::pair<const char*, const char*>> lengths) {
  NtfBuilder builder;
  size_t i = 0;
  for (const auto& [subheader, data] : lengths) {
    builder.images.push_back(tavi_test::GreyImage(1, 1));
    builder.header["LISH[" + std::to_string(i) + "]"] = subheader;
    builder.header["LI[" + std::to_string(i) + "]"] = data;
    ++i;
  }
  return builder;
}

TEST_F(HeaderPassTest, LimitInsideATableKeepsTheOtherEntriesOfTheFirstPass) {
  const NtfBuilder first =
      WithImages({{"000011", "0000000012"}, {"000021", "0000000022"}, {"000031", "0000000032"}});
  Stream stream;
  stream.data =
      HeaderOf(WithImages({{"000911", "0000000912"}, {"000921", "0000000922"}, {"000931", "0000000932"}}));
  stream.length = 363 + 16 + 6;  // up to and including the second LISH
  NitfFile d;
  ASSERT_EQ(Read(d, first, stream), SUCCESS);
  const uint32_t kSubheaders[] = {911, 921, 31};
  const uint32_t kData[] = {912, 22, 32};
  ASSERT_EQ(d.Header.LishRead.size(), 3U);
  for (uint64_t i = 0; i < 3; ++i) {
    EXPECT_EQ(d.Header.LishRead[i], kSubheaders[i]);
    EXPECT_EQ(d.Header.LishWork[i], kSubheaders[i]);
    EXPECT_EQ(d.Header.LiRead[i], kData[i]);
    EXPECT_EQ(d.Header.LiWork[i], kData[i]);
  }
}

TEST_F(HeaderPassTest, TableOfAnotherCountIsMadeAnew) {
  Stream stream;
  stream.data = HeaderOf(WithImages({{"000911", "0000000912"}, {"000921", "0000000922"}}));
  stream.length = static_cast<uint32_t>(stream.data.size()) + 200;
  for (const size_t images : {size_t{0}, size_t{1}, size_t{3}}) {
    NtfBuilder first;
    first.images.assign(images, tavi_test::GreyImage(1, 1));
    NitfFile d;
    ASSERT_EQ(Read(d, first, stream), SUCCESS);
    EXPECT_EQ(d.Header.NumImages, 2U);
    ASSERT_EQ(d.Header.LishRead.size(), 2U);
    EXPECT_EQ(d.Header.LishRead[1], 921U);
    EXPECT_EQ(d.Header.LiWork[0], 912U);
  }
}

TEST_F(HeaderPassTest, BlockCountsAsOneField) {
  NtfBuilder first;
  first.udhd = tavi_test::Tre("FIRST", "");
  NtfBuilder replacement = Replacement();
  replacement.udhd = tavi_test::Tre("SECOND", "12");
  const BuiltFile built = replacement.Build();
  const auto end = static_cast<uint32_t>(built.At("UDHD").offset + built.At("UDHD").length);
  for (const uint32_t limit : {end - 1, end}) {
    Stream stream;
    stream.data = HeaderOf(replacement);
    stream.length = limit;
    NitfFile d;
    ASSERT_EQ(Read(d, first, stream), SUCCESS);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(d.Header.UDHD.data()), 5),
              limit == end ? "SECON" : "FIRST");
    EXPECT_STREQ(d.Header.Text.UDHDL, "00016");
    EXPECT_EQ(d.Header.UserTreCursor, d.Header.UDHD.data());
  }
}

TEST_F(HeaderPassTest, BadStreamingHeaderFailsTheReadAndLeavesItUnloaded) {
  struct {
    const char* what;
    Stream stream;
    int32_t status;
  } cases[] = {{"first delimiter", {}, ERR_FILE_FORMAT},
               {"second delimiter", {}, ERR_FILE_FORMAT},
               {"trailing length", {}, ERR_FILE_FORMAT},
               {"length beyond the file", {}, ERR_FILE_READ}};
  for (auto& c : cases) c.stream.length = 100;
  cases[0].stream.first = "!!!!";
  cases[1].stream.second = "!!!!";
  cases[2].stream.trailing = "0000101";
  for (const auto& c : cases) {
    NtfBuilder builder;
    builder.header["FL"] = "999999999999";
    builder.trailer = c.stream.End();
    if (c.status == ERR_FILE_READ) builder.trailer.front() = '9';
    NitfFile d;
    Attach(d, builder.Build());
    StrmFHdr stream;
    EXPECT_EQ(tavi::ReadFileHeader(d.Header, d, stream, 0), c.status) << c.what;
    EXPECT_EQ(d.StreamLoaded, 0U) << c.what;
  }
}

// ---- The whole open ----

class StreamedOpenTest : public UnitTest {
 protected:
  // Two images; a test gives them their sentinels.
  static NtfBuilder TwoImages() {
    NtfBuilder builder({tavi_test::GreyImage(2, 3), tavi_test::GreyImage(4, 5)});
    builder.images[0].fields["IID1"] = "first";
    builder.images[1].fields["IID1"] = "second";
    return builder;
  }
  static BuiltFile Truth() {
    NtfBuilder builder = TwoImages();
    builder.images[0].fields["NROWS"] = "00000111";
    builder.images[0].fields["IID1"] = "truth 0";
    builder.images[1].fields["NROWS"] = "00000222";
    builder.images[1].fields["IID1"] = "truth 1";
    return builder.Build();
  }
  int32_t Open(NitfFile& d, NtfBuilder builder, const Stream& stream) {
    builder.trailer = stream.End();
    return tavi::OpenNitfFile(d, builder.Build().Write(directory()).c_str());
  }
  static const ImSubHdr& Image(const NitfFile& d, uint32_t index) {
    return *tavi::SubheaderAt(d.Images, index, 2);
  }
  static void LengthListOfThree(ImSubHdr& record) { ASSERT_TRUE(record.BandRoles.Allocate(3, {})); }
  static Stream Of(const Bytes& data) {
    Stream stream;
    stream.data = data;
    stream.length = static_cast<uint32_t>(data.size()) + 200;
    return stream;
  }
};

TEST_F(StreamedOpenTest, SentinelWithoutADelimiterIsRefused) {
  NtfBuilder builder = TwoImages();
  builder.header["FL"] = "999999999999";
  NitfFile d;
  EXPECT_EQ(tavi::OpenNitfFile(d, builder.Build().Write(directory()).c_str()), ERR_INVALID_PARAMETER);
}

// As a producer lays it out: the extension's subheader, and behind it the streaming header. What is taken for
// SFH_L1 is subheader text.
TEST_F(StreamedOpenTest, StreamingHeaderBehindASubheaderOf200BytesIsRefused) {
  NtfBuilder builder = TwoImages();
  builder.header["FL"] = "999999999999";
  tavi_test::DataExtensionSpec extension;
  extension.desid = "STREAMING_FILE_HEADER";
  const std::string truth(388, 'x');
  extension.data = ToBytes(Digits(388, 7) + kFirst + truth + kSecond + Digits(388, 7));
  builder.data_extensions = {extension};
  ASSERT_EQ(builder.Build().At("des[0].subheader").length, 200U);
  NitfFile d;
  EXPECT_EQ(tavi::OpenNitfFile(d, builder.Build().Write(directory()).c_str()), ERR_FILE_FORMAT);
}

TEST_F(StreamedOpenTest, ImagePassReplacesItsValues) {
  NtfBuilder builder = TwoImages();
  builder.images[1].fields["NROWS"] = "99999999";
  NitfFile d;
  ASSERT_EQ(Open(d, builder, Of(Slice(Truth(), "image[1].subheader"))), SUCCESS);
  EXPECT_STREQ(Image(d, 0).Text.IID1, "first     ");
  EXPECT_EQ(Image(d, 0).Rows, 3);
  EXPECT_STREQ(Image(d, 1).Text.IID1, "truth 1   ");
  EXPECT_EQ(Image(d, 1).Rows, 222);
  EXPECT_STREQ(Image(d, 1).Text.NROWS, "00000222");
  EXPECT_EQ(d.StreamConsumed, Truth().At("image[1].subheader").length);
  EXPECT_EQ(d.StreamLoaded, 1U);
}

TEST_F(StreamedOpenTest, PassesContinueBehindEachOther) {
  NtfBuilder builder = TwoImages();
  builder.images[0].fields["NROWS"] = "99999999";
  builder.images[1].fields["NPPBH"] = "9999";
  builder.header["LI[1]"] = "9999999999";
  const BuiltFile truth = Truth();
  Bytes data(truth.bytes.begin(),
             truth.bytes.begin() + static_cast<std::ptrdiff_t>(truth.At("image[0].IM").offset));
  for (const char* part : {"image[0].subheader", "image[1].subheader"}) {
    const Bytes slice = Slice(truth, part);
    data.insert(data.end(), slice.begin(), slice.end());
  }
  NitfFile d;
  ASSERT_EQ(Open(d, builder, Of(data)), SUCCESS);
  EXPECT_EQ(d.Header.LiRead[1], 20U);
  EXPECT_EQ(Image(d, 0).Rows, 111);
  EXPECT_STREQ(Image(d, 0).Text.IID1, "truth 0   ");
  EXPECT_EQ(Image(d, 1).Rows, 222);
  EXPECT_EQ(Image(d, 1).BlockWidth, 4U);
  EXPECT_STREQ(Image(d, 1).Text.IID1, "truth 1   ");
  EXPECT_EQ(d.StreamConsumed, data.size());
}

// An image without a sentinel takes nothing of the replacement data, also between two that do.
TEST_F(StreamedOpenTest, ImageWithoutASentinelIsLeftAlone) {
  NtfBuilder builder = TwoImages();
  builder.header["FL"] = "999999999999";
  const BuiltFile truth = Truth();
  const Bytes data(truth.bytes.begin(),
                   truth.bytes.begin() + static_cast<std::ptrdiff_t>(truth.At("image[0].IM").offset));
  NitfFile d;
  ASSERT_EQ(Open(d, builder, Of(data)), SUCCESS);
  EXPECT_EQ(Image(d, 0).Rows, 3);
  EXPECT_EQ(Image(d, 1).Rows, 5);
  EXPECT_EQ(d.Header.FlValue, truth.bytes.size());
}

TEST_F(StreamedOpenTest, ImagePassWithASmallLimitKeepsTheRest) {
  NtfBuilder builder = TwoImages();
  builder.images[1].fields["NROWS"] = "99999999";
  Stream stream;
  stream.data = Slice(Truth(), "image[1].subheader");
  stream.length = 12;  // IM and IID1
  NitfFile d;
  ASSERT_EQ(Open(d, builder, stream), SUCCESS);
  EXPECT_STREQ(Image(d, 1).Text.IID1, "truth 1   ");
  EXPECT_EQ(Image(d, 1).Rows, 99999999);
  EXPECT_EQ(d.StreamConsumed, 0U);
}

TEST_F(StreamedOpenTest, ImagePassBelowTwoBytesReadsNothing) {
  NtfBuilder builder = TwoImages();
  builder.images[0].fields["NCOLS"] = "99999999";
  Stream stream;
  stream.data = ToBytes("JUNK");
  stream.length = 1;
  NitfFile d;
  ASSERT_EQ(Open(d, builder, stream), SUCCESS);
  EXPECT_STREQ(Image(d, 0).Text.IM, "IM");
  EXPECT_EQ(Image(d, 0).Cols, 99999999);
}

// Such a pass may end behind a count whose bands it never read; no loop may run over bands that are not there.
TEST_F(StreamedOpenTest, CountWithoutItsBandsIsNotBelieved) {
  NitfFile d;
  tavi::ImSubHdr record(&d);
  record.BandField = 0;
  for (const char* count : {"-0001", "99999"}) {
    std::strcpy(record.Text.XBANDS, count);
    EXPECT_EQ(tavi::KnownBandCount(record), 0U) << count;
    LengthListOfThree(record);
    EXPECT_EQ(tavi::KnownBandCount(record), 3U) << count;
    record.BandRoles.Release();
  }
}

// The result of an image's pass is not examined, unlike that of the file header's.
TEST_F(StreamedOpenTest, ImagePassThatFailsIsIgnored) {
  NtfBuilder builder = TwoImages();
  builder.images[0].fields["NBPC"] = "9999";
  NitfFile d;
  ASSERT_EQ(Open(d, builder, Of(ToBytes("JUNK JUNK JUNK"))), SUCCESS);
  EXPECT_STREQ(Image(d, 0).Text.IID1, "first     ");
  EXPECT_EQ(Image(d, 0).BlocksPerColumn, 9999U);
  EXPECT_STREQ(Image(d, 1).Text.IID1, "second    ");
}

TEST_F(StreamedOpenTest, SentinelInAnImagesReplacementDataIsTakenAsAValue) {
  NtfBuilder builder = TwoImages();
  builder.images[0].fields["NROWS"] = "99999999";
  BuiltFile truth = Truth();
  truth.Patch("image[0].NROWS", "99999999");
  NitfFile d;
  ASSERT_EQ(Open(d, builder, Of(Slice(truth, "image[0].subheader"))), SUCCESS);
  EXPECT_EQ(Image(d, 0).Rows, 99999999);
  EXPECT_STREQ(Image(d, 0).Text.IID1, "truth 0   ");
}

TEST_F(StreamedOpenTest, HeaderLengthOfAllNinesStartsNoPass) {
  NtfBuilder builder;
  builder.header["HL"] = "999999";
  builder.trailer = Of(ToBytes("JUNKJUNKJUNK")).End();
  NitfFile d;
  ASSERT_EQ(tavi::OpenNitfFile(d, builder.Build().Write(directory()).c_str()), SUCCESS);
  EXPECT_EQ(d.StreamLoaded, 0U);
  EXPECT_EQ(d.Header.HlRead, 999999U);
}

// Tables of the second pass take the place of the first's.
TEST_F(StreamedOpenTest, ImagePassReplacesTables) {
  NtfBuilder builder = TwoImages();
  builder.images[0].fields["NROWS"] = "99999999";
  builder.images[0].comments = {"old"};
  builder.images[0].bands[0].luts = {{1, 2}};
  builder.images[0].udid = tavi_test::Tre("OLD", "");
  NtfBuilder replacement = TwoImages();
  replacement.images[0].comments = {"new one", "new two"};
  replacement.images[0].bands.assign(2, tavi_test::BandSpec());
  replacement.images[0].bands[1].luts = {{7, 8, 9}};
  replacement.images[0].udid = tavi_test::Tre("NEW", "x");
  const BuiltFile truth = replacement.Build();
  NitfFile d;
  ASSERT_EQ(Open(d, builder, Of(Slice(truth, "image[0].subheader"))), SUCCESS);
  const ImSubHdr& image = Image(d, 0);
  ASSERT_EQ(image.Comments.size(), 2U);
  EXPECT_EQ(std::string(image.Comments.At(1), 8), "new two ");
  EXPECT_EQ(image.BandCount, 2U);
  ASSERT_EQ(image.BandLutEntries.size(), 2U);
  EXPECT_EQ(image.BandLutEntries[1], 3U);
  EXPECT_EQ(image.Lut[2].red, 9);
  EXPECT_EQ(image.UserTre.size(), 13U);
  EXPECT_EQ(image.UserTreView, image.UserTre.data());
}

}  // namespace
