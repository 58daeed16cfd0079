#include "EditingTest.h"

#include <fstream>
#include <iterator>

namespace editing {

using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::Tre;

std::string Fixed(std::string text, size_t width) {
  text.resize(width, ' ');
  return text;
}

NtfBuilder EditableFile() {
  NtfBuilder file;
  file.header = {{"FTITLE", "editable"}};
  file.udhd = Tre("UDHTRE", "user data");
  file.xhd = Tre("XHDTRE", "extended data");
  ImageSpec image = GreyImage(8, 6);
  image.igeolo = Fill("IGEOLO", 60);
  image.comments = {Fill("ICOM0", 80), Fill("ICOM1", 80)};
  image.udid = Tre("UDITRE", "about the image");
  image.ixshd = Tre("IXSTRE", "more about the image");
  image.fields = {{"IID1", "first"}, {"UDOFL", "001"}, {"IXSOFL", "002"}};
  file.images = {image, GreyImage(4, 4).Level(2).At(3, -2)};
  file.graphics.resize(1);
  file.graphics[0].sxshd = Tre("SXSTRE", "about the graphic");
  file.graphics[0].sdlvl = 3;
  file.graphics[0].data = Bytes(21, 'g');
  file.texts.resize(1);
  file.texts[0].txshd = Tre("TXSTRE", "about the text");
  file.texts[0].data = Bytes(17, 't');
  file.data_extensions.resize(1);
  file.data_extensions[0].data = Bytes(13, 'd');
  return file;
}

BuiltFile DatedFile(const std::string& date) {
  const NtfBuilder file;
  return file.Build().Patch("FDT", date);
}

Bytes ReadBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

Bytes EditingTest::Saved(NitfHandle document) const {
  EXPECT_EQ(Tavi_NITFSaveFile(document, Output().wstring().c_str()), SUCCESS);
  return ReadBytes(Output());
}

BuiltFile EditingTest::SavedLike(NitfHandle document, const BuiltFile& like) const {
  BuiltFile saved = like;
  saved.bytes = Saved(document);
  EXPECT_EQ(saved.bytes.size(), like.bytes.size());
  return saved;
}

uint32_t EditingTest::FileLength(NitfHandle document) {
  HeaderRecord header(document, 0);
  return header->FL;
}

}  // namespace editing
