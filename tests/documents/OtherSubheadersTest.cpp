// What opening says of the subheaders of graphics, texts and data extensions.
#include "DocumentTest.h"

namespace tavi::documents {
namespace {

using tavi_test::Bytes;
using tavi_test::NtfBuilder;
using tavi_test::Tre;

class OtherSubheaders : public DocumentTest {
 protected:
  int32_t Graphic(const std::string& field, const std::string& text) {
    NtfBuilder file;
    file.graphics.resize(2);
    file.graphics[1].sxshd = Bytes();
    file.graphics[1].fields[field] = text;
    return OpenStatus(file);
  }
  int32_t Text(const std::string& field, const std::string& text) {
    NtfBuilder file;
    file.texts.resize(2);
    file.texts[1].txshd = Bytes();
    file.texts[1].fields[field] = text;
    return OpenStatus(file);
  }
  int32_t Extension(const std::string& field, const std::string& text) {
    NtfBuilder file;
    file.data_extensions.resize(2);
    file.data_extensions[1].fields[field] = text;
    return OpenStatus(file);
  }
};

TEST_F(OtherSubheaders, TheSignaturesMustBeThere) {
  EXPECT_EQ(Graphic("SY", "SY"), SUCCESS);
  EXPECT_EQ(Graphic("SY", "SX"), ERR_FILE_FORMAT);
  EXPECT_EQ(Text("TE", "TE"), SUCCESS);
  EXPECT_EQ(Text("TE", "LA"), ERR_FILE_FORMAT);
  EXPECT_EQ(Extension("DE", "DE"), SUCCESS);
  EXPECT_EQ(Extension("DE", "RE"), ERR_FILE_FORMAT);
}

TEST_F(OtherSubheaders, ClassesAreCheckedInGraphicsAndExtensions) {
  const std::string accepted = "CRSTU";
  for (int value = 0; value < 256; ++value) {
    const std::string text(1, static_cast<char>(value));
    const int32_t status = accepted.find(text) != std::string::npos ? SUCCESS : ERR_FILE_FORMAT;
    EXPECT_EQ(Graphic("SSCLAS", text), status) << "class " << value;
    EXPECT_EQ(Extension("DESCLAS", text), status) << "class " << value;
  }
}

TEST_F(OtherSubheaders, TextsAcceptAnyClassAndFormat) {
  for (const char* text : {"Q", " ", "0"}) {
    EXPECT_EQ(Text("TSCLAS", text), SUCCESS) << text;
  }
  for (const char* text : {"MTF", "U8S", "???"}) {
    EXPECT_EQ(Text("TXTFMT", text), SUCCESS) << text;
  }
}

TEST_F(OtherSubheaders, ThreeGraphicFormatsAreAccepted) {
  for (const char* text : {"C", "O", "B"}) {
    EXPECT_EQ(Graphic("SFMT", text), SUCCESS) << text;
  }
  for (const char* text : {"c", " ", "A", "0"}) {
    EXPECT_EQ(Graphic("SFMT", text), ERR_FILE_FORMAT) << text;
  }
}

TEST_F(OtherSubheaders, VersionsOfExtensionsAreTwoDigits) {
  for (const char* text : {"00", "99", "  ", "XX", "1 "}) {
    EXPECT_EQ(Extension("DESVER", text), SUCCESS) << text;
  }
  EXPECT_EQ(Extension("DESVER", "-1"), ERR_FILE_FORMAT);
}

TEST_F(OtherSubheaders, ExtendedLengthsBelowThreeEndTheOpen) {
  EXPECT_EQ(Graphic("SXSHDL", "00003"), SUCCESS);
  EXPECT_EQ(Text("TXSHDL", "00003"), SUCCESS);
  for (const char* text : {"00001", "00002", "-0003"}) {
    EXPECT_EQ(Graphic("SXSHDL", text), ERR_FILE_READ) << text;
    EXPECT_EQ(Text("TXSHDL", text), ERR_FILE_READ) << text;
  }
}

TEST_F(OtherSubheaders, ALengthBeyondTheFileIsAShortRead) {
  EXPECT_EQ(Graphic("SXSHDL", "99999"), ERR_FILE_READ);
  EXPECT_EQ(Text("TXSHDL", "99999"), ERR_FILE_READ);
  EXPECT_EQ(Extension("DESSHL", "9998"), ERR_FILE_READ);
}

TEST_F(OtherSubheaders, ExtendedBlocksAreSteppedOver) {
  NtfBuilder file;
  file.graphics.resize(2);
  file.graphics[0].sxshd = Tre("ABCDEF", "abc");
  file.texts.resize(2);
  file.texts[0].txshd = Tre("ABCDEF", "");
  file.texts[0].data = Bytes(33, 'x');
  file.data_extensions.resize(2);
  file.data_extensions[0].desshf = Bytes(20, 'u');
  file.data_extensions[0].data = Bytes(40, 'd');
  EXPECT_EQ(OpenStatus(file), SUCCESS);
}

// Any other data extension lacks the two overflow fields, and nine bytes of what follows are taken for them.
TEST_F(OtherSubheaders, ExtensionsOfOtherKindsGiveNineBytesToTheOverflowFields) {
  NtfBuilder file;
  file.data_extensions.resize(1);
  file.data_extensions[0].desid = "CSSHPA DES";
  file.data_extensions[0].data = Bytes(20, '?');  // no digits where the length is then read
  EXPECT_EQ(OpenStatus(file), SUCCESS);
  file.data_extensions[0].data = Bytes(20, '0');
  EXPECT_EQ(OpenStatus(file), SUCCESS);
  const std::string digits = "-----0011-----------";  // five bytes fill the overflow fields, 11 bytes remain
  file.data_extensions[0].data.assign(digits.begin(), digits.end());
  EXPECT_EQ(OpenStatus(file), SUCCESS);
  file.data_extensions[0].data[8] = '2';
  EXPECT_EQ(OpenStatus(file), ERR_FILE_READ) << "one byte more than the file has";
  file.data_extensions[0].data.resize(8);
  EXPECT_EQ(OpenStatus(file), ERR_FILE_READ) << "the length itself is cut";
}

// A name that ends in a zero byte behind its twelve letters is the one that lacks the fields.
TEST_F(OtherSubheaders, AnOverflowNameWithAZeroByteSkipsTheFields) {
  NtfBuilder file;
  file.data_extensions.resize(1);
  file.data_extensions[0].desid = std::string("TRE_OVERFLOW\0", 13);
  file.data_extensions[0].overflow_fields = false;
  EXPECT_EQ(OpenStatus(file), SUCCESS);
  file.data_extensions[0].desid = "TRE_OVERFLOW";
  EXPECT_EQ(OpenStatus(file), ERR_FILE_READ) << "padded with blanks the fields are expected";
}

TEST_F(OtherSubheaders, OneBadSubheaderRefusesTheFile) {
  NtfBuilder file{tavi_test::GreyImage(2, 2)};
  file.texts.resize(1);
  file.data_extensions.resize(3);
  file.data_extensions[2].fields["DE"] = "ED";
  EXPECT_EQ(OpenStatus(file), ERR_FILE_FORMAT);
}

}  // namespace
}  // namespace tavi::documents
