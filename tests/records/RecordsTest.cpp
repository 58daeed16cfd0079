#include "RecordsTest.h"

namespace tavi::records {

using tavi_test::Bytes;
using tavi_test::FieldTexts;
using tavi_test::GraphicSpec;
using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::NtfBuilder;
using tavi_test::TextSpec;
using tavi_test::Tre;

std::string Fill(const std::string& name, size_t width) {
  std::string text = name + ':';
  for (size_t i = 0; text.size() < width; ++i) {
    text += static_cast<char>('a' + i % 26);
  }
  text.resize(width);
  return text;
}

Security SecurityTexts(const std::string& prefix, const std::string& year) {
  const std::string one = prefix.substr(0, 1);
  Security security;
  security.clsy = one + "1";
  security.code = Fill(prefix + "CODE", 11);
  security.ctlh = one + "2";
  security.rel = Fill(prefix + "REL", 20);
  security.dctp = one + "3";
  security.dcdt = year + "0101";
  security.dcxm = one + "xm4";
  security.dg = "d";
  security.dgdt = year + "0202";
  security.cltx = Fill(prefix + "CLTX", 43);
  security.catp = "p";
  security.caut = Fill(prefix + "CAUT", 40);
  security.crsn = "r";
  security.srdt = year + "0303";
  security.ctln = Fill(prefix + "CTLN", 15);
  return security;
}

void PutSecurity(FieldTexts& fields, const std::string& prefix, const Security& security) {
  fields[prefix + "CLSY"] = security.clsy;
  fields[prefix + "CODE"] = security.code;
  fields[prefix + "CTLH"] = security.ctlh;
  fields[prefix + "REL"] = security.rel;
  fields[prefix + "DCTP"] = security.dctp;
  fields[prefix + "DCDT"] = security.dcdt;
  fields[prefix + "DCXM"] = security.dcxm;
  fields[prefix + "DG"] = security.dg;
  fields[prefix + "DGDT"] = security.dgdt;
  fields[prefix + "CLTX"] = security.cltx;
  fields[prefix + "CATP"] = security.catp;
  fields[prefix + "CAUT"] = security.caut;
  fields[prefix + "CRSN"] = security.crsn;
  fields[prefix + "SRDT"] = security.srdt;
  fields[prefix + "CTLN"] = security.ctln;
}

namespace {

void PutFileHeader(NtfBuilder& file) {
  file.header = {{"STYPE", "S4ty"},
                 {"OSTAID", Fill("OSTAID", 10)},
                 {"FDT", "20210304050607"},
                 {"FTITLE", Fill("FTITLE", 80)},
                 {"FSCLAS", "R"},
                 {"FSCOP", "00011"},
                 {"FSCPYS", "00022"},
                 {"ENCRYP", "3"},
                 {"ONAME", Fill("ONAME", 24)},
                 {"OPHONE", Fill("OPHONE", 18)},
                 {"UDHOFL", "101"},
                 {"XHDLOFL", "102"}};
  PutSecurity(file.header, "FS", SecurityTexts("FS", "2031"));
  file.background = {10, 20, 30};
  file.udhd = Tre("UDHTRE", "about the file");
  file.xhd = Tre("XHDTRE", "more about the file");
}

ImageSpec DistinctImage() {
  ImageSpec image = GreyImage(35, 48);
  image.Blocks(5, 6, 7, 8).Level(12, 13).At(-14, 15).Roles({"R ", "G ", "B "});
  image.fields = {{"IID1", Fill("IID1", 10)},
                  {"IDATIM", "20220405060708"},
                  {"TGTID", Fill("TGTID", 17)},
                  {"IID2", Fill("IID2", 80)},
                  {"ISCLAS", "S"},
                  {"ENCRYP", "7"},
                  {"ISORCE", Fill("ISORCE", 42)},
                  {"NROWS", "00000247"},
                  {"NCOLS", "00000134"},
                  {"ICORDS", "D"},
                  {"ISYNC", "4"},
                  {"UDOFL", "016"},
                  {"IXSOFL", "017"}};
  PutSecurity(image.fields, "IS", SecurityTexts("IS", "2032"));
  image.irep = "RGB-like";
  image.icat = "ICAT:abc";
  image.abpp = 9;
  image.nbpp = 11;
  image.pjust = 'L';
  image.igeolo = Fill("IGEOLO", 60);
  image.comments = {Fill("ICOM0", 80), Fill("ICOM1", 80)};
  image.ic = "M3";
  image.comrat = "Cmr5";
  image.imag = "/2.5";
  image.udid = Tre("UDITRE", "about the image");
  image.ixshd = Tre("IXSTRE", "somewhat more about the image");
  image.mask.block_offsets = {0};
  image.mask.pad_offsets = {0};
  image.mask.bmrlnth = 0x0104;
  image.mask.tmrlnth = 0x0204;
  image.mask.pad_code = {0xC1, 0xC2, 0xC3};
  image.mask.tpxcdlnth = 19;  // bits: three bytes
  image.mask.imdatoff = 0x010203;
  return image;
}

GraphicSpec DistinctGraphic() {
  GraphicSpec graphic;
  graphic.sfmt = 'O';
  graphic.sdlvl = 21;
  graphic.salvl = 22;
  graphic.row = -23;
  graphic.column = 24;
  graphic.bound1_row = 25;
  graphic.bound1_column = -26;
  graphic.bound2_row = -27;
  graphic.bound2_column = 28;
  graphic.fields = {{"SID", Fill("SID", 10)},
                    {"SNAME", Fill("SNAME", 20)},
                    {"SSCLAS", "T"},
                    {"ENCRYP", "5"},
                    {"SSTRUCT", "0000000000456"},
                    {"SCOLOR", "M"},
                    {"SRES2", "29"},
                    {"SXSOFL", "030"}};
  PutSecurity(graphic.fields, "SS", SecurityTexts("SS", "2033"));
  graphic.sxshd = Tre("SXSTRE", "about the graphic");
  graphic.data = Bytes(37, 'g');
  return graphic;
}

TextSpec DistinctText() {
  TextSpec text;
  text.txtalvl = 31;
  text.txtfmt = "U8S";
  text.fields = {{"TEXTID", Fill("TEXTID", 7)},
                 {"TXTDT", "20230506070809"},
                 {"TXTITL", Fill("TXTITL", 80)},
                 {"TSCLAS", "C"},
                 {"ENCRYP", "8"},
                 {"TXSOFL", "032"}};
  PutSecurity(text.fields, "TS", SecurityTexts("TS", "2034"));
  text.txshd = Tre("TXSTRE", "about the text");
  text.data = Bytes(41, 't');
  return text;
}

}  // namespace

NtfBuilder DistinctFile() {
  NtfBuilder file;
  PutFileHeader(file);
  file.images = {GreyImage(3, 2), DistinctImage()};
  file.graphics.resize(2);
  file.graphics[0].data = Bytes(51, 'a');
  file.graphics[1].sxshd = Bytes(5, 'x');
  file.graphics[1].data = Bytes(53, 'b');
  file.graphics.push_back(DistinctGraphic());
  file.texts.resize(3);
  for (size_t i = 0; i < file.texts.size(); ++i) {
    file.texts[i].txshd = Bytes(61 + i, 'y');
    file.texts[i].data = Bytes(71 + i, static_cast<uint8_t>('0' + i));
  }
  file.texts.push_back(DistinctText());
  file.data_extensions.resize(5);
  for (size_t i = 0; i < file.data_extensions.size(); ++i) {
    file.data_extensions[i].desshf = Bytes(81 + i, 's');
    file.data_extensions[i].data = Bytes(91 + i, 'd');
  }
  file.reserved.resize(6);
  for (size_t i = 0; i < file.reserved.size(); ++i) {
    file.reserved[i] = {Bytes(111 + i, 'R'), Bytes(121 + i, 'E')};
  }
  return file;
}

}  // namespace tavi::records
