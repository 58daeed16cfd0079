// Makes NITF files for tests, valid ones and broken ones. Written from the format's own layout: it shares no
// code and no table with the library under test.
//
//   NtfBuilder file;
//   file.images.push_back(GreyImage(4, 3, pixels));               // 4 columns, 3 rows, 8 bits
//   std::wstring path = file.Build().Write(directory);            // or .bytes, to keep it in memory
//
// Every value has a typed place (columns, bands, location …) or a name: `file.header["FTITLE"] = "…"` and
// `file.images[0].fields["IID1"] = "…"` set a field's text, also one that the builder would compute ("FL",
// "LISH[0]", "NROWS", "UDIDL", "IREPBAND[2]", "ICOM[0]"). Such a text is what stands in the file: it may lie,
// and it never changes which fields follow. A text shorter than its field is completed with blanks on the
// right; a longer one, or a name that the file does not have, throws std::invalid_argument.
//
// BuiltFile tells where each field landed, so that a test can look at it or damage it in place:
//   BuiltFile built = file.Build();
//   built.Patch("image[0].IMODE", "X");   built.At("LI[0]").offset;   built.Truncate("image[0].data", 5);
// Names: file header fields plainly; "image[i].", "graphic[i].", "label[i].", "text[i].", "des[i]." and
// "res[i]." before those of segments; "image[i].subheader" and "image[i].data" for the two halves;
// "image[i].IMDATOFF" and its neighbours, "image[i].BMR[k]", "image[i].TMR[k]" and "image[i].pixels" inside
// the data.
#ifndef TAVI_TESTS_SUPPORT_NTF_BUILDER_H
#define TAVI_TESTS_SUPPORT_NTF_BUILDER_H

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavi_test {

using Bytes = std::vector<uint8_t>;

// Field texts by name, which replace what the builder would write.
using FieldTexts = std::map<std::string, std::string>;

// A block mask or pad mask entry that says: this block is not in the file.
inline constexpr uint32_t kAbsentBlock = 0xFFFFFFFFU;

enum class Layout { kNitf21, kNitf20 };

// Tagged records: an owner's extended data area. `Tre` makes one record; areas are records back to back.
Bytes Tre(const std::string& tag, const std::string& data);

// A number as right-justified digits. Throws when it does not fit.
std::string Digits(uint64_t value, size_t width);
// Two signed halves of five characters: the row first.
std::string LocationText(int32_t row, int32_t column);

struct BandSpec {
  std::string irepband = "  ";
  std::string isubcat = "      ";
  std::string ifc = "N";
  std::string imflt = "   ";
  std::vector<Bytes> luts = {};  // look-up tables (LUTD); NLUTS is their number, NELUT the first one's size
};

// The image data mask table, written at the head of the data for IC NM, M0, M1, M3, M4 and M5.
struct MaskSpec {
  std::optional<std::vector<uint32_t>>
      block_offsets;  // BMR, completed with kAbsentBlock to blocks x bands entries
  std::optional<std::vector<uint32_t>> pad_offsets = {};  // TMR, completed in the same way
  Bytes pad_code = {};                                    // TPXCD
  Bytes gap = {};                                         // bytes between the table and the pixels
  bool exact_tables = false;                              // write the entries given and no more
  std::optional<uint32_t> imdatoff = {};                  // in place of the table's true length
  std::optional<uint16_t> bmrlnth = {};
  std::optional<uint16_t> tmrlnth = {};
  std::optional<uint16_t> tpxcdlnth = {};
};

struct ImageSpec {
  uint32_t rows = 1;
  uint32_t columns = 1;
  std::string pvtype = "INT";
  std::string irep = "MONO";
  std::string icat = "VIS";
  uint32_t abpp = 8;
  uint32_t nbpp = 8;
  char pjust = 'R';
  std::optional<std::string> igeolo = {};  // 60 characters; then ICORDS is "G" unless its text is set
  std::vector<std::string> comments = {};
  std::string ic = "NC";
  std::string comrat = "01.0";  // written unless IC is NC or NM
  std::vector<BandSpec> bands = std::vector<BandSpec>(1);
  bool use_xbands = false;  // write NBANDS 0 and XBANDS, as for ten or more bands
  char imode = 'B';
  uint32_t nbpr = 1;   // blocks across
  uint32_t nbpc = 1;   // blocks down
  uint32_t nppbh = 1;  // block width
  uint32_t nppbv = 1;  // block height
  uint32_t idlvl = 1;
  uint32_t ialvl = 0;
  int32_t row = 0;  // ILOC
  int32_t column = 0;
  std::string imag = "1.0 ";
  std::optional<Bytes> udid = {};   // when set, UDOFL and these bytes follow UDIDL
  std::optional<Bytes> ixshd = {};  // likewise
  MaskSpec mask = {};
  Bytes pixels = {};  // everything behind the mask table
  FieldTexts fields = {};

  [[nodiscard]] uint32_t BlockCount() const { return nbpr * nbpc; }
  [[nodiscard]] bool HasMaskTable() const;
  [[nodiscard]] Bytes MaskTable() const;
  [[nodiscard]] Bytes Data() const;  // mask table and pixels: the segment's data

  // Blocks of width x height, across x down of them; sets the image's size to the whole grid as well.
  ImageSpec& Blocks(uint32_t across, uint32_t down, uint32_t width, uint32_t height);
  ImageSpec& At(int32_t location_row, int32_t location_column);
  ImageSpec& Level(uint32_t display, uint32_t attachment = 0);
  ImageSpec& Mode(char interleave);
  ImageSpec& Roles(const std::vector<std::string>& irepbands);  // also sets the number of bands
};

// One block, one band, 8 bits, MONO. Missing pixels are made up by a counting pattern.
ImageSpec GreyImage(uint32_t columns, uint32_t rows, Bytes pixels = {});
// One block, one band, NBPP and ABPP as given; pixels as they stand in the file.
ImageSpec DeepImage(uint32_t columns, uint32_t rows, uint32_t nbpp, uint32_t abpp, Bytes pixels);
// One block, one band of one bit, PVTYPE B; rows run on without padding.
ImageSpec BilevelImage(uint32_t columns, uint32_t rows, Bytes pixels);
// One block, three bands R, G, B of 8 bits in the order of `imode`; pixels as they stand in the file.
ImageSpec RgbImage(uint32_t columns, uint32_t rows, char imode, Bytes pixels);

struct GraphicSpec {
  char sfmt = 'C';
  uint32_t sdlvl = 1;
  uint32_t salvl = 0;
  int32_t row = 0;  // SLOC
  int32_t column = 0;
  int32_t bound1_row = 0;
  int32_t bound1_column = 0;
  int32_t bound2_row = 0;
  int32_t bound2_column = 0;
  std::vector<Bytes> lut_planes = {};  // 2.0 layout: none, one plane of one entry, or three planes
  std::optional<Bytes> sxshd = {};
  Bytes data = {};
  FieldTexts fields = {};
};

struct LabelSpec {  // 2.0 layout only
  uint32_t ldlvl = 1;
  uint32_t lalvl = 0;
  int32_t row = 0;
  int32_t column = 0;
  Bytes ltc = {0, 0, 0};
  Bytes lbc = {255, 255, 255};
  std::optional<Bytes> lxshd = {};
  Bytes data = {};
  FieldTexts fields = {};
};

struct TextSpec {
  uint32_t txtalvl = 0;
  std::string txtfmt = "STA";
  std::optional<Bytes> txshd = {};
  Bytes data = {};
  FieldTexts fields = {};
};

struct DataExtensionSpec {
  std::string desid = "TRE_OVERFLOW";
  std::optional<bool> overflow_fields =
      {};  // DESOFLW and DESITEM; when unset, present for TRE_OVERFLOW alone
  Bytes desshf = {};
  Bytes data = {};
  FieldTexts fields = {};
};

struct ReservedSpec {
  Bytes subheader = {};
  Bytes data = {};
};

struct FieldPlace {
  size_t offset;
  size_t length;
};

struct BuiltFile {
  Bytes bytes;
  std::map<std::string, FieldPlace> places;
  std::vector<std::string> order;  // the fields' names as they stand in the file

  [[nodiscard]] FieldPlace At(const std::string& name) const;
  [[nodiscard]] std::string Text(const std::string& name) const;
  // Puts a text over the field's first characters; it must not be longer than the field.
  BuiltFile& Patch(const std::string& name, std::string_view text);
  // Ends the file `keep` bytes into the field.
  BuiltFile& Truncate(const std::string& name, size_t keep);
  // Writes to `directory`/`name` and returns the path as the library takes it.
  std::wstring Write(const std::filesystem::path& directory, const std::string& name = "file.ntf") const;
};

struct NtfBuilder {
  Layout layout = Layout::kNitf21;
  FieldTexts header;
  Bytes background = {255, 255, 255};  // FBKGC: red, green, blue
  std::vector<ImageSpec> images;
  std::vector<GraphicSpec> graphics;
  std::vector<LabelSpec> labels;
  std::vector<TextSpec> texts;
  std::vector<DataExtensionSpec> data_extensions;
  std::vector<ReservedSpec> reserved;
  std::optional<Bytes> udhd;  // when set, UDHOFL and these bytes follow UDHDL
  std::optional<Bytes> xhd;
  Bytes trailer;  // bytes behind the last segment

  NtfBuilder() = default;
  NtfBuilder(std::initializer_list<ImageSpec> list) : images(list) {}

  [[nodiscard]] BuiltFile Build() const;
};

}  // namespace tavi_test

#endif  // TAVI_TESTS_SUPPORT_NTF_BUILDER_H
