// What a getter has filled goes back through its setter: nothing is read beyond it, whatever the document's numbers
// are, and a save shows the documented differences only. And what records do to lengths that data in memory hang on.
#include <vector>

#include "AppendTest.h"

namespace editing {
namespace {

using tavi_test::FieldPlace;
using tavi_test::GreyImage;
using tavi_test::Tre;

class RoundTrip : public AppendTest {
 protected:
  // Saves the file untouched.
  [[nodiscard]] BuiltFile Untouched(const BuiltFile& built) const {
    const Document document(Write(built));
    BuiltFile saved = built;
    saved.bytes = Saved(document.handle);
    return saved;
  }
  // Saves the file after each of its records of that kind has gone out and in.
  template <class Record>
  [[nodiscard]] Bytes AfterGetAndSet(const BuiltFile& built, uint32_t count) const {
    const Document document(Write(built));
    for (uint32_t i = 0; i < count; ++i) {
      Edited<Record> record(document.handle, i);
      EXPECT_EQ(Set(document.handle, i, record.get()), SUCCESS) << i;
    }
    return Saved(document.handle);
  }
};

// The first difference, and the field of `file` that it is in; empty when there is none.
std::string Difference(const Bytes& found, const Bytes& expected, const BuiltFile& file) {
  const size_t common = std::min(found.size(), expected.size());
  size_t at = 0;
  while (at < common && found[at] == expected[at]) ++at;
  if (at == common && found.size() == expected.size()) return "";
  std::string field;
  for (const std::string& name : file.order) {
    if (file.At(name).offset <= at) field = name;
  }
  return "at " + std::to_string(at) + ", near " + field + ", of " + std::to_string(found.size()) + " and " +
         std::to_string(expected.size());
}

// Setting an image makes a new band table, which has no roles.
void LoseRoles(BuiltFile& file, const std::string& image, uint32_t bands) {
  for (uint32_t band = 0; band < bands; ++band)
    file.Patch(image + ".IREPBAND[" + std::to_string(band) + "]", "  ");
}

// The halves of a location, exchanged.
std::string Exchanged(const std::string& location) {
  return location.substr(5) + location.substr(0, 5);
}

TEST_F(RoundTrip, AnImagesTextsComeBackAndItsBandsAreLost) {
  const BuiltFile built = tavi::records::DistinctFile().Build();
  BuiltFile expected = Untouched(built);
  expected.Patch("image[1].ILOC", Exchanged(expected.Text("image[1].ILOC")));
  LoseRoles(expected, "image[0]", 1);
  LoseRoles(expected, "image[1]", 3);
  EXPECT_EQ(Difference(AfterGetAndSet<NitfImageHeaderInfo>(built, 2), expected.bytes, built), "");
}

// A negative half of a bound is printed with its sign behind the zeros.
TEST_F(RoundTrip, AGraphicsTextsComeBack) {
  const BuiltFile built = tavi::records::DistinctFile().Build();
  BuiltFile expected = Untouched(built);
  expected.Patch("graphic[2].SLOC", Exchanged(expected.Text("graphic[2].SLOC")));
  EXPECT_EQ(expected.Text("graphic[2].SBND1"), "00025-0026");
  EXPECT_EQ(expected.Text("graphic[2].SBND2"), "-002700028");
  expected.Patch("graphic[2].SBND1", "0002500-26");
  expected.Patch("graphic[2].SBND2", "00-2700028");
  EXPECT_EQ(Difference(AfterGetAndSet<NitfGraphicHeaderInfo>(built, 3), expected.bytes, built), "");
}

TEST_F(RoundTrip, ATextsTextsComeBack) {
  const BuiltFile built = tavi::records::DistinctFile().Build();
  EXPECT_EQ(Difference(AfterGetAndSet<NitfTextHeaderInfo>(built, 4), Untouched(built).bytes, built), "");
}

// ---- Blocks ----

// User data with a NUL: the record shows them up to it and has room for all that the setter takes.
TEST_F(RoundTrip, UserDataBehindANulBecomeZeros) {
  for (const size_t nul : {size_t{0}, size_t{2}, size_t{36}}) {
    SCOPED_TRACE(nul);
    std::string data = "abcdefghijklmnopqrstuvwxyz0123456789.";
    data[nul] = '\0';
    NtfBuilder file{GreyImage(8, 6)};
    file.images[0].udid = Tre("UDITRE", data);
    const BuiltFile built = file.Build();
    BuiltFile expected = Untouched(built);
    LoseRoles(expected, "image[0]", 1);
    const FieldPlace place = built.At("image[0].UDID");
    const size_t kept = 11 + nul;  // behind the tag and the length
    std::fill(expected.bytes.begin() + static_cast<std::ptrdiff_t>(place.offset + kept),
              expected.bytes.begin() + static_cast<std::ptrdiff_t>(place.offset + place.length), uint8_t{0});
    const Document document(Write(built));
    ImageRecord record(document.handle, 0);
    const size_t length = record->UDIDL;
    ASSERT_EQ(length, place.length + 3);
    EXPECT_EQ(std::string(record->UDID), "UDITRE00037" + data.substr(0, nul));
    for (size_t i = kept; i < length; ++i) ASSERT_EQ(record->UDID[i], '\0') << i;
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    EXPECT_EQ(Difference(Saved(document.handle), expected.bytes, built), "");
  }
}

// Lengths that the stored blocks do not have: the record is as long as its numbers say, and the setter takes that.
TEST_F(RoundTrip, BlocksAreAsLongAsTheirNumbers) {
  const Document document(Write(EditableFile()));
  for (const uint32_t length : {99999U, 4000U, 40U, 4U, 3U}) {
    SCOPED_TRACE(length);
    {
      ImageRecord image(document.handle, 0);
      image.PutNull(offsetof(NitfImageHeaderInfo, UDID));
      image.PutNull(offsetof(NitfImageHeaderInfo, IXSHD));
      image->UDIDL = image->IXSHDL = length;
      image->TPXCDLNTH = static_cast<uint16_t>(length);
      ASSERT_EQ(Set(document.handle, 0, image.get()), SUCCESS);
      GraphicRecord graphic(document.handle, 0);
      graphic.PutNull(offsetof(NitfGraphicHeaderInfo, SXSHD));
      graphic->SXSHDL = length;
      ASSERT_EQ(Set(document.handle, 0, graphic.get()), SUCCESS);
      TextRecord text(document.handle, 0);
      text.PutNull(offsetof(NitfTextHeaderInfo, TXSHD));
      text->TXSHDL = length;
      ASSERT_EQ(Set(document.handle, 0, text.get()), SUCCESS);
    }
    ImageRecord image(document.handle, 0);
    EXPECT_EQ(Set(document.handle, 0, image.get()), SUCCESS);
    GraphicRecord graphic(document.handle, 0);
    EXPECT_EQ(Set(document.handle, 0, graphic.get()), SUCCESS);
    TextRecord text(document.handle, 0);
    EXPECT_EQ(Set(document.handle, 0, text.get()), SUCCESS);
    EXPECT_EQ(+ImageRecord(document.handle, 0)->UDIDL, length);
  }
  // Numbers that come back as negative ones.
  for (const uint32_t number : {0xFFFFFFFFU, 0xFFFFFF00U, 0xFFFFD8F1U, 0x80000000U}) {
    SCOPED_TRACE(number);
    ImageRecord image(document.handle, 0);
    image.PutNull(offsetof(NitfImageHeaderInfo, UDID));
    image.PutNull(offsetof(NitfImageHeaderInfo, IXSHD));
    image->UDIDL = image->IXSHDL = number;
    Set(document.handle, 0, image.get());
    ImageRecord again(document.handle, 0);
    Set(document.handle, 0, again.get());
  }
}

TEST_F(RoundTrip, AShortPadCodeNeedsNoMoreThanItsBits) {
  NtfBuilder file{GreyImage(2, 2)};
  file.images[0].ic = "NM";
  file.images[0].mask.pad_code = {0xAB};
  for (const uint16_t bits : {uint16_t{1}, uint16_t{7}, uint16_t{8}}) {
    file.images[0].mask.tpxcdlnth = bits;
    const BuiltFile built = file.Build();
    BuiltFile expected = Untouched(built);
    LoseRoles(expected, "image[0]", 1);
    EXPECT_EQ(Difference(AfterGetAndSet<NitfImageHeaderInfo>(built, 1), expected.bytes, built), "") << bits;
  }
}

// A count below zero lists nothing, on either side.
TEST_F(RoundTrip, NegativeCountsListNothing) {
  const Document document(Write(EditableFile()));
  {
    HeaderRecord record(document.handle, 0);
    record->NUMI = record->NUMS = record->NUMT = static_cast<uint32_t>(-50);
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  }
  HeaderRecord record(document.handle, 0);
  EXPECT_EQ(+record->NUMI, static_cast<uint32_t>(-50));
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  record->NUMI = 2;
  const uint32_t kept[] = {7, 8};
  record.PutBlock(offsetof(NitfHeaderInfo, LI), kept, sizeof kept);
  record.PutNull(offsetof(NitfHeaderInfo, LISH));
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  const HeaderRecord after(document.handle, 0);
  EXPECT_EQ(after->LI[1], 8U);
  EXPECT_GT(after->LISH[0], 400U) << "the lengths that were there before";
}

// ---- Data in memory ----

TEST_F(RoundTrip, AHeaderThatForgetsANewTextLeavesNothingOfIt) {
  const NewDocument document;
  ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile(std::string(500, 'x')).c_str()), SUCCESS);
  {
    HeaderRecord record(document.handle, 0);
    EXPECT_EQ(+record->NUMT, 0U);
    EXPECT_EQ(+record->HL, 0U);
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  }
  uint32_t size = 77;
  ASSERT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, nullptr, &size), SUCCESS);
  ASSERT_EQ(size, 0U);
  uint8_t buffer[2] = {0x55, 0x55};
  ASSERT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, buffer, nullptr), SUCCESS);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(buffer[1], 0x55);
  const Bytes saved = Saved(document.handle);
  EXPECT_EQ(FieldAt(saved, kHlPlace, 6), "000000");
  EXPECT_EQ(FieldAt(saved, kNumiPlace + 9, 12), "001000000000") << "one text, of no length";
  EXPECT_EQ(saved.size(), 388U + 9 + 282);
}

// No more is handed out or written than was told, and no more than there is.
TEST_F(RoundTrip, ANewTextsLengthIsWhatTheHeaderSays) {
  struct Case {
    uint32_t length;
    const char* shown;
    std::string saved;
  };
  const Case cases[] = {{4, "seco", "seco"},
                        {0, "", ""},
                        {6, "second", "second"},
                        {1000, "second", std::string("second\0", 7)}};
  for (const Case& one : cases) {
    SCOPED_TRACE(one.length);
    const Document document(Write(EditableFile()));
    ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile("second").c_str()), SUCCESS);
    {
      HeaderRecord record(document.handle, 0);
      record->NUMT = 2;
      const uint32_t lengths[] = {17, one.length};
      const uint32_t subheaders[] = {record->LTSH[0], 282};
      record.PutBlock(offsetof(NitfHeaderInfo, LT), lengths, sizeof lengths);
      record.PutBlock(offsetof(NitfHeaderInfo, LTSH), subheaders, sizeof subheaders);
      ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    }
    uint32_t size = 0;
    ASSERT_EQ(Tavi_NITFGetTextSegment(document.handle, 1, nullptr, &size), SUCCESS);
    ASSERT_EQ(size, one.length);
    std::vector<uint8_t> buffer(size + 1, 0x55);
    ASSERT_EQ(Tavi_NITFGetTextSegment(document.handle, 1, buffer.data(), nullptr), SUCCESS);
    EXPECT_STREQ(reinterpret_cast<const char*>(buffer.data()), one.shown);
    // The text is the last segment but for the data extension, of which the record has left no data.
    const Bytes saved = Saved(document.handle);
    const std::string all(saved.begin(), saved.end());
    const size_t start = all.rfind("STA00000") + 8;
    const size_t end = all.find("DETRE_OVERFLOW", start);
    EXPECT_EQ(all.substr(start, end - start), one.saved);
  }
}

// ---- Edits that a save does not follow ----

// A file as it comes to be when pieces are put at places, zeros between.
class Pieces {
 public:
  void Put(size_t at, const Bytes& piece) {
    bytes_.resize(std::max(bytes_.size(), at + piece.size()));
    std::copy(piece.begin(), piece.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(at));
  }
  void PutAtEnd(const Bytes& piece) { Put(bytes_.size(), piece); }
  [[nodiscard]] const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

Bytes Part(const Bytes& file, size_t from, size_t size) {
  const auto at = file.begin() + static_cast<std::ptrdiff_t>(from);
  return {at, at + static_cast<std::ptrdiff_t>(size)};
}
Bytes Segment(const BuiltFile& file, const std::string& name) {
  return Part(file.bytes, file.At(name).offset, file.At(name).length);
}

// Two images with comments in the first, and a text.
NtfBuilder Commented() {
  NtfBuilder file{GreyImage(8, 6), GreyImage(4, 4).Level(2)};
  file.images[0].comments = {Fill("ICOM0", 80), Fill("ICOM1", 80)};
  file.texts.resize(1);
  file.texts[0].data = Bytes(17, 't');
  return file;
}

// The subheader is 80 bytes shorter or longer than LISH says, and both images' data go where the lengths say.
TEST_F(RoundTrip, AnotherNumberOfCommentsMisplacesTheData) {
  const BuiltFile built = Commented().Build();
  const size_t number = built.At("image[0].NICOM").offset;
  const size_t second = built.At("image[0].ICOM[1]").offset;
  const size_t data = built.At("image[0].data").offset;
  for (const bool fewer : {true, false}) {
    SCOPED_TRACE(fewer);
    BuiltFile plain = Untouched(built);
    if (fewer) LoseRoles(plain, "image[0]", 1);
    const Document document(Write(built));
    ImageRecord record(document.handle, 0);
    record->NICOM = fewer ? 1 : 3;
    EXPECT_EQ(Set(document.handle, 0, record.get()), fewer ? SUCCESS : ERR_INVALID_PARAMETER);
    record->NICOM = 2;  // what its list is freed by

    Pieces expected;
    expected.PutAtEnd(Part(plain.bytes, 0, fewer ? second : second + 80));
    if (!fewer) expected.PutAtEnd(Bytes(80, ' '));
    expected.Put(number, {static_cast<uint8_t>(fewer ? '1' : '3')});
    expected.PutAtEnd(Part(plain.bytes, second + 80, data - second - 80));
    expected.Put(data, Segment(plain, "image[0].data"));
    expected.PutAtEnd(Segment(plain, "image[1].subheader"));
    expected.Put(built.At("image[1].data").offset, Segment(plain, "image[1].data"));
    expected.PutAtEnd(Segment(plain, "text[0].subheader"));
    expected.PutAtEnd(Segment(plain, "text[0].data"));
    EXPECT_EQ(Difference(Saved(document.handle), expected.bytes(), built), "");
  }
}

// HL counts on both sides: what is copied is read from another place and put to another place.
TEST_F(RoundTrip, AnotherHeaderLengthMovesWhatASaveCopies) {
  const BuiltFile built = Commented().Build();
  const size_t start = built.At("image[0].IM").offset;
  for (const int32_t by : {-5, 5}) {
    SCOPED_TRACE(by);
    const auto moved = [&](const std::string& name) {
      return static_cast<size_t>(static_cast<int64_t>(built.At(name).offset) + by);
    };
    const auto read = [&](const std::string& name) {
      Bytes source = built.bytes;
      source.resize(source.size() + 5);
      return Part(source, moved(name), built.At(name).length);
    };
    NtfBuilder longer = Commented();
    longer.trailer = Bytes(5, 0);
    const Document document(Write(longer));
    HeaderRecord record(document.handle, 0);
    const uint32_t length = record->HL;
    record->HL = static_cast<uint32_t>(static_cast<int32_t>(length) + by);
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    const Bytes saved = Saved(document.handle);
    EXPECT_EQ(NumberAt(saved, kHlPlace, 6), static_cast<size_t>(static_cast<int64_t>(length) + by));

    Pieces expected;
    expected.PutAtEnd(Part(saved, 0, start));
    expected.PutAtEnd(Segment(built, "image[0].subheader"));
    expected.Put(moved("image[0].data"), read("image[0].data"));
    expected.PutAtEnd(Segment(built, "image[1].subheader"));
    expected.Put(moved("image[1].data"), read("image[1].data"));
    expected.PutAtEnd(Segment(built, "text[0].subheader"));
    expected.PutAtEnd(read("text[0].data"));
    EXPECT_EQ(Difference(saved, expected.bytes(), built), "");
  }
}

}  // namespace
}  // namespace editing
