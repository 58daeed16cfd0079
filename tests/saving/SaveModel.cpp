#include "SaveModel.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <utility>

namespace saving {
namespace {

constexpr int32_t kReadFailed = -7;
constexpr int32_t kFormatWrong = -9;
constexpr char kZero = '0';
constexpr char kBlank = ' ';

struct Stop {
  int32_t status;
};

int64_t Integer(const std::string& text) {
  return std::clamp<int64_t>(std::strtol(text.c_str(), nullptr, 10), INT_MIN, INT_MAX);
}

// A field as a save writes it: cut at its first NUL, cut to the width, completed.
std::string Fitted(const std::string& text, size_t width, char fill) {
  const std::string kept = std::string(text.c_str()).substr(0, width);
  const std::string padding(width - kept.size(), fill);
  return fill == kBlank ? kept + padding : padding + kept;
}

std::string Decimal(int64_t value) {
  return std::to_string(static_cast<int32_t>(value));
}

uint32_t Big(const std::string& bytes) {
  uint32_t value = 0;
  for (const char c : bytes) value = value << 8 | static_cast<uint8_t>(c);
  return value;
}

bool Begins(const std::string& text, const std::string& with) {
  return text.rfind(with, 0) == 0;
}

// The output: one place to write at, anything may be overwritten.
class Output {
 public:
  void Put(const std::string& text) {
    if (at + text.size() > bytes.size()) bytes.resize(at + text.size());
    std::copy(text.begin(), text.end(), bytes.begin() + static_cast<ptrdiff_t>(at));
    at += text.size();
  }
  void GoToEnd() { at = bytes.size(); }

  Bytes bytes;
  size_t at = 0;
};

struct Lengths {
  uint32_t subheader;
  uint32_t data;
};

struct ImageFacts {
  uint32_t code = 0;  // of IC
  int64_t nbpr = 0, nbpc = 0, block_height = 0;
  int64_t band_field = 0, band_count = 0;
  bool has_mask_table = false;
  uint32_t data_offset = 0, block_length = 0, pad_length = 0;
  std::vector<std::string> block_mask;
  uint32_t mask_prefix = 0;  // bytes that the save puts out of it
};

class Model {
 public:
  Model(const Bytes& source, bool is20) : source_(source.begin(), source.end()), is20_(is20) {}

  Prediction Run() {
    Prediction result;
    try {
      FileHeader();
      Images();
      for (const Lengths& graphic : graphics_) Segment(graphic, &Model::GraphicSubheader);
      for (const Lengths& label : labels_) Segment(label, &Model::LabelSubheader);
      for (const Lengths& text : texts_) Segment(text, &Model::TextSubheader);
      for (const Lengths& des : extensions_) Segment(des, &Model::ExtensionSubheader);
    } catch (const Stop& stop) {
      result.status = stop.status;
      out_.bytes.resize(data_start_);
    }
    result.bytes = out_.bytes;
    result.rules = rules_;
    return result;
  }

 private:
  // ---- Taking from the source ----

  std::string Take(size_t size) {
    const std::string taken = Look(at_, size);
    at_ += size;
    return taken;
  }
  [[nodiscard]] std::string Look(size_t at, size_t size) const {
    if (size == 0) return "";
    if (at > source_.size() || size > source_.size() - at) throw Stop{kReadFailed};
    return source_.substr(at, size);
  }

  // ---- Putting out ----

  void PutAs(const char* name, const std::string& taken, const std::string& written) {
    if (taken != written) rules_.insert(name);
    out_.Put(written);
  }
  // A text as it stands.
  std::string Text(const char* name, size_t width, char fill) {
    const std::string taken = Take(width);
    PutAs(name, taken, Fitted(taken, width, fill));
    return taken;
  }
  // A number, printed again.
  int64_t Number(const char* name, size_t width) {
    const std::string taken = Take(width);
    PutAs(name, taken, Fitted(Decimal(Integer(taken)), width, kZero));
    return Integer(taken);
  }
  void Rule(const char* name, size_t width, char fill, const std::string& written) {
    PutAs(name, Take(width), Fitted(written, width, fill));
  }
  void Raw(const char* name, size_t size) {
    const std::string taken = Take(size);
    PutAs(name, taken, taken);
  }
  // A length field, and with it an overflow field and a block of tagged records.
  void Tagged(const char* length_name, const char* overflow_name, const char* name, char fill) {
    const int64_t length = Integer(Text(length_name, 5, fill));
    if (length == 0) return;
    Text(overflow_name, 3, fill);
    Raw(name, static_cast<size_t>(length - 3));
  }

  // The security fields behind the class. Where `swaps` is set the exemption repeats the date.
  void Security(const std::string& p, char fill, bool swaps = false, char downgrade_fill = 0,
                bool event_always = false) {
    const auto field = [&](const char* name, size_t w21, size_t w20) {
      const size_t width = is20_ ? w20 : w21;
      return width != 0 ? Text((p + name).c_str(), width, fill) : std::string();
    };
    field("CLSY", 2, 0);
    field("CODE", 11, 40);
    field("CTLH", 2, 40);
    field("REL", 20, 40);
    field("DCTP", 2, 0);
    const std::string date = field("DCDT", 8, 0);
    if (swaps && !is20_) {
      Rule((p + "DCXM").c_str(), 4, fill, date);
    } else {
      field("DCXM", 4, 0);
    }
    field("DG", 1, 0);
    field("DGDT", 8, 0);
    field("CLTX", 43, 0);
    field("CATP", 1, 0);
    field("CAUT", 40, 20);
    field("CRSN", 1, 0);
    field("SRDT", 8, 0);
    field("CTLN", 15, 20);
    if (!is20_) return;
    const char with = downgrade_fill != 0 ? downgrade_fill : fill;
    const std::string downgrade = Text((p + "DWNG").c_str(), 6, with);
    if (event_always || downgrade == "999998") Text((p + "DEVT").c_str(), 40, fill);
  }

  std::vector<Lengths> Table(const char* count_name, const char* subheader, size_t subheader_width,
                             const char* data, size_t data_width) {
    const auto count = static_cast<size_t>(Integer(Number3(count_name)));
    std::vector<Lengths> table(count);
    for (Lengths& entry : table) {
      entry.subheader = static_cast<uint32_t>(Number(subheader, subheader_width));
      entry.data = static_cast<uint32_t>(Number(data, data_width));
    }
    return table;
  }
  std::string Number3(const char* name) {
    const std::string taken = Take(3);
    PutAs(name, taken, Fitted(Decimal(Integer(taken)), 3, kZero));
    return taken;
  }

  void FileHeader() {
    Text("FHDR", 4, kZero);
    Text("FVER", 5, kZero);
    Text("CLEVEL", 2, kZero);
    Text("STYPE", 4, kZero);
    Text("OSTAID", 10, kZero);
    Text("FDT", 14, kZero);
    Text("FTITLE", 80, kZero);
    Text("FSCLAS", 1, kZero);
    Security("FS", kZero, true);
    Text("FSCOP", 5, kZero);
    Text("FSCPYS", 5, kZero);
    Text("ENCRYP", 1, kZero);
    if (!is20_) Raw("FBKGC", 3);
    Text("ONAME", is20_ ? 27 : 24, kZero);
    Text("OPHONE", 18, kZero);
    Number("FL", 12);
    header_length_ = static_cast<uint32_t>(Number("HL", 6));
    image_table_ = out_.at + 3;
    images_ = Table("NUMI", "LISH", 6, "LI", 10);
    graphics_ = Table("NUMS", "LSSH", 4, "LS", 6);
    if (is20_) {
      labels_ = Table("NUML", "LLSH", 4, "LL", 3);
    } else {
      Text("NUMX", 3, kZero);
    }
    texts_ = Table("NUMT", "LTSH", 4, "LT", 5);
    const auto extensions = static_cast<size_t>(Integer(Text("NUMDES", 3, kZero)));
    for (size_t i = 0; i < extensions; ++i) {
      const auto subheader = static_cast<uint32_t>(Number("LDSH", 4));
      extensions_.push_back({subheader, static_cast<uint32_t>(Number("LD", 9))});
    }
    const auto reserved = static_cast<size_t>(Integer(Text("NUMRES", 3, kZero)));
    for (size_t i = 0; i < reserved; ++i) {
      const int64_t data = Integer(Look(at_ + 4, 7));
      Rule("LRESH", 4, kZero, Decimal(data));
      Number("LRE", 7);
    }
    if (reserved != 0) rules_.insert("reserved extensions");
    Tagged("UDHDL", "UDHOFL", "UDHD", kZero);
    Tagged("XHDL", "XHDLOFL", "XHD", kZero);
    at_ = header_length_;
  }

  // ---- Images ----

  void Images() {
    size_t start = out_.at;
    std::vector<uint32_t> work;  // LISH + LI as the save's own table has them
    bool shifted = false;
    size_t position = header_length_;
    for (size_t i = 0; i < images_.size(); ++i) {
      const Lengths lengths = images_[i];
      out_.GoToEnd();
      at_ = position;
      ImageFacts image = ImageSubheader();
      const size_t behind = out_.at;
      const bool masked_vq = image.data_offset != 0 && image.code == 15;
      uint32_t subheader = lengths.subheader;
      if (masked_vq) {
        const auto length = static_cast<uint32_t>(behind - start) - image.mask_prefix;
        if (length != lengths.subheader) {
          shifted = true;
          Patch("LISH", image_table_ + 16 * i, 6, length);
          subheader = length;
        }
      }
      const size_t data = position + lengths.subheader;
      if (image.code == 6 || image.code == 15) {
        VqData(image, data);
      } else {
        PlaceRaw(shifted, image, work, subheader);
        Copy(data, lengths.data);
      }
      start = out_.at;
      if (masked_vq) {
        shifted = true;
        const auto length = static_cast<uint32_t>(start - behind) + image.mask_prefix;
        if (length != lengths.data) Patch("LI", image_table_ + 16 * i + 6, 10, length);
      }
      work.push_back(subheader + lengths.data);
      position += lengths.subheader + lengths.data;
    }
    at_ = position;
  }

  void PlaceRaw(bool shifted, const ImageFacts& image, const std::vector<uint32_t>& work,
                uint32_t subheader) {
    if (shifted) {
      out_.GoToEnd();
      if (image.data_offset <= out_.at) out_.at -= image.data_offset;
      return;
    }
    out_.at = header_length_;
    for (const uint32_t length : work) out_.at += length;
    out_.at += subheader;
  }

  void Copy(size_t from, size_t size) {
    BeginData();
    const std::string data = Look(from, size);
    out_.Put(data);
  }

  // What stands before a segment's data is in the file whatever becomes of them.
  void BeginData() { data_start_ = std::min(out_.at, out_.bytes.size()); }

  void Patch(const char* name, size_t where, size_t width, uint32_t value) {
    rules_.insert(name);
    out_.at = where;
    out_.Put(Fitted(Decimal(value), width, kZero));
    out_.GoToEnd();
  }

  ImageFacts ImageSubheader() {
    ImageFacts image;
    Text("IM", 2, kBlank);
    Text("IID1", 10, kBlank);
    Text("IDATIM", 14, kZero);
    Text("TGTID", 17, kBlank);
    Text("IID2", 80, kBlank);
    Text("ISCLAS", 1, kBlank);
    Security("IS", kBlank);
    Text("ENCRYP", 1, kZero);
    Text("ISORCE", 42, kBlank);
    Number("NROWS", 8);
    Number("NCOLS", 8);
    Rule("PVTYPE", 3, kBlank, Look(at_, 1) == "B" ? "B" : "INT");
    Representation();
    Text("ICAT", 8, kBlank);
    Number("ABPP", 2);
    Rule("PJUST", 1, kBlank, Look(at_, 1) == "L" ? "L" : "R");
    const std::string coordinates = Text("ICORDS", 1, kBlank);
    if (coordinates != (is20_ ? "N" : " ")) Text("IGEOLO", 60, kZero);
    const int64_t comments = Integer(Text("NICOM", 1, kZero));
    for (int64_t i = 0; i < comments; ++i) Text("ICOM", 80, kBlank);
    Compression(image);
    Bands(image);
    Text("ISYNC", 1, kZero);
    Text("IMODE", 1, kZero);
    image.nbpr = Number("NBPR", 4);
    image.nbpc = Number("NBPC", 4);
    Number("NPPBH", 4);
    image.block_height = Number("NPPBV", 4);
    Number("NBPP", 2);
    Number("IDLVL", 3);
    Number("IALVL", 3);
    Text("ILOC", 10, kZero);
    Magnification();
    Tagged("UDIDL", "UDOFL", "UDID", kZero);
    Tagged("IXSHDL", "IXSOFL", "IXSHD", kZero);
    Mask(image);
    return image;
  }

  void Representation() {
    static const std::vector<std::string> kKnown = {"MONO",    "RGB/LUT", "RGB", "MULTI",   "NODISPLY",
                                                    "NVECTOR", "POLAR",   "VPH", "YCbCr601"};
    const std::string taken = Look(at_, 8);
    std::string written = "RGB";
    for (const std::string& text : kKnown) {
      if (Begins(taken, text)) {
        written = text;
        break;
      }
    }
    Rule("IREP", 8, kBlank, written);
  }

  void Compression(ImageFacts& image) {
    static const std::array<const char*, 19> kCodes = {"NC", "NM", "C0", "C1", "C2", "C3", "C4",
                                                       "C5", "C6", "C8", "I1", "M0", "M1", "M2",
                                                       "M3", "M4", "M5", "M6", "M8"};
    const std::string taken = Look(at_, 2);
    for (uint32_t code = 0; code < kCodes.size(); ++code) {
      if (taken == kCodes[code]) image.code = code;
    }
    Rule("IC", 2, kBlank, image.code == 2 ? "NM" : kCodes[image.code]);
    static const std::set<uint32_t> kMasked = {1, 11, 12, 14, 15, 16};
    image.has_mask_table = kMasked.count(image.code) != 0;
    if (image.code < 2) return;
    const std::string rate = Look(at_, 4);
    Rule("COMRAT", 4, kBlank,
         Begins(rate, "1D")    ? "1D"
         : Begins(rate, "2DS") ? "2DS"
         : Begins(rate, "2DH") ? "2DH"
                               : "00.0");
  }

  struct Band {
    std::string role, rest;  // IREPBAND; ISUBCAT, IFC, IMFLT
    int64_t tables = 0, entries = 0;
    std::string tables_text, entries_text;
    std::vector<std::string> values;
  };

  // The bands have one palette between them: that of the last one with tables.
  void Bands(ImageFacts& image) {
    image.band_field = Number("NBANDS", 1);
    image.band_count = image.band_field;
    if (!is20_ && image.band_field == 0) image.band_count = Integer(Text("XBANDS", 5, kZero));
    std::vector<Band> bands(static_cast<size_t>(image.band_count));
    std::vector<std::string> palette;
    for (Band& band : bands) {
      band.role = Take(2);
      band.rest = Take(10);
      band.tables_text = Take(1);
      band.tables = Integer(band.tables_text);
      if (band.tables == 0) continue;
      band.entries_text = Take(5);
      band.entries = Integer(band.entries_text);
      if (band.entries == 0) continue;
      for (int t = 0; t < (band.tables == 1 ? 1 : 3); ++t) {
        band.values.push_back(Take(static_cast<size_t>(band.entries)));
      }
      palette = band.values;
      palette.resize(3, palette.front());
    }
    for (const Band& band : bands) {
      PutAs("IREPBAND", band.role, Fitted(RoleText(band.role), 2, kBlank));
      PutAs("ISUBCAT", band.rest.substr(0, 6), Fitted(band.rest.substr(0, 6), 6, kBlank));
      PutAs("IFC", band.rest.substr(6, 1), Fitted(band.rest.substr(6, 1), 1, kZero));
      PutAs("IMFLT", band.rest.substr(7, 3), Fitted(band.rest.substr(7, 3), 3, kBlank));
      PutAs("NLUTS", band.tables_text, Fitted(Decimal(band.tables), 1, kZero));
      if (band.tables == 0) continue;
      PutAs("NELUT", band.entries_text, Fitted(Decimal(band.entries), 5, kZero));
      for (size_t t = 0; t < band.values.size(); ++t) {
        std::string table = palette[t];
        table.resize(static_cast<size_t>(band.entries), '\0');
        PutAs("LUTD", band.values[t], table);
      }
    }
  }

  static std::string RoleText(const std::string& taken) {
    for (const char* text : {"LU", "R", "G", "B", "M", "Y", "Cb", "Cr"}) {
      if (Begins(taken, text)) return text;
    }
    return "";
  }

  void Magnification() {
    const std::string taken = Look(at_, 4);
    const double value = taken[0] == '/' ? 1.0 / static_cast<double>(Integer(taken.substr(1)))
                                         : std::strtod(taken.c_str(), nullptr);
    std::array<char, 400> printed{};
    std::snprintf(printed.data(), printed.size(), "%f", value);
    Rule("IMAG", 4, kBlank, std::string(printed.data()).substr(0, 3));
  }

  // What is put out of the mask table: its head as it is, its entries reversed.
  void Mask(ImageFacts& image) {
    if (!image.has_mask_table) return;
    const size_t start = out_.at;
    const std::string head = Take(10);
    image.data_offset = Big(head.substr(0, 4));
    image.block_length = Big(head.substr(4, 2));
    image.pad_length = Big(head.substr(6, 2));
    const uint32_t pad_bits = Big(head.substr(8, 2));
    out_.Put(head);
    out_.Put(Take((pad_bits + 7) / 8));
    const auto entries = static_cast<size_t>(image.nbpr * image.nbpc * image.band_count);
    const auto put_entries = [&](uint32_t length, std::vector<std::string>* kept) {
      for (size_t i = 0; length != 0 && i < entries; ++i) {
        std::string entry = Take(4);
        if (kept != nullptr) kept->push_back(entry);
        std::reverse(entry.begin(), entry.end());
        out_.Put(entry);
      }
    };
    put_entries(image.block_length, &image.block_mask);
    put_entries(image.pad_length, nullptr);
    image.mask_prefix = static_cast<uint32_t>(out_.at - start);
  }

  // Vector quantised data, record by record.
  void VqData(const ImageFacts& image, size_t data) {
    BeginData();
    at_ = data;
    if (image.code == 15) {
      const std::string head = Take(10);
      const auto entries = static_cast<size_t>(image.nbpr * image.nbpc * image.band_field);
      const size_t tables = (Big(head.substr(4, 2)) != 0 ? 1 : 0) + (Big(head.substr(6, 2)) != 0 ? 1 : 0);
      at_ += (Big(head.substr(8, 2)) + 7) / 8 + tables * entries * 4;
      rules_.insert("mask of M4");
    }
    const std::string head = Take(21);
    const uint64_t rows = Big(head.substr(0, 4));
    if (rows == 0) throw Stop{kFormatWrong};
    const uint64_t at_once = static_cast<uint64_t>(image.block_height) / rows;
    if (at_once == 0 && image.block_height != 0) throw Stop{kFormatWrong};
    out_.Put(head);
    const uint64_t records = Big(head.substr(11, 2));
    uint64_t entries = 0;
    for (uint64_t r = 0; r < records; ++r) {
      const std::string record = Take(14);
      if (r == 0) entries = Big(record.substr(2, 4));
      out_.Put(record);
    }
    for (uint64_t r = 0; r < records * entries; ++r) out_.Put(Take(at_once));
    const uint64_t row_bytes = uint64_t{Big(head.substr(8, 1))} * Big(head.substr(4, 4)) / 8;
    for (int64_t block = 0; block < image.nbpr * image.nbpc; ++block) {
      const bool absent =
          image.block_length != 0 && image.block_mask.at(static_cast<size_t>(block)) == "\xFF\xFF\xFF\xFF";
      if (absent) continue;
      for (uint64_t row = 0; row < static_cast<uint64_t>(image.block_height); row += at_once)
        out_.Put(Take(row_bytes));
    }
  }

  // ---- The other segments ----

  void Segment(const Lengths& lengths, void (Model::*subheader)()) {
    const size_t position = at_;
    out_.GoToEnd();
    const size_t before = out_.at;
    (this->*subheader)();
    if (out_.at - before != lengths.subheader) rules_.insert("subheader length");
    at_ = position + lengths.subheader;
    Copy(at_, lengths.data);
    at_ += lengths.data;
  }

  void GraphicSubheader() {
    Text("SY", 2, kBlank);
    Text("SID", 10, kBlank);
    Text("SNAME", 20, kBlank);
    Text("SSCLAS", 1, kZero);
    Security("SS", kBlank);
    Text("ENCRYP", 1, kZero);
    Text("SFMT", 1, kZero);
    if (is20_) {
      Text("NLIPS", 4, kZero);
      Text("NPIXPL", 4, kZero);
      Text("NWDTH", 4, kZero);
      Number("NBPP", 1);
    } else {
      Text("SSTRUCT", 13, kZero);
    }
    Number("SDLVL", 3);
    Number("SALVL", 3);
    Text("SLOC", 10, kZero);
    if (is20_) {
      Text("SLOC2", 10, kZero);
      Text("SCOLOR", 1, kBlank);
      Text("SNUM", 6, kZero);
      Text("SROT", 3, kZero);
      const auto entries = static_cast<size_t>(Number("NELUT", 3));
      if (entries == 1) Raw("DLUT", 1);
      if (entries >= 2) Raw("DLUT", entries * 2);
      if (entries == 2) Take(2);  // the blue plane is lost
      if (entries == 2) rules_.insert("DLUT");
      if (entries >= 3) Raw("DLUT", entries);
    } else {
      Text("SBND1", 10, kZero);
      Rule("SCOLOR", 1, kBlank, "C");
      Text("SBND2", 10, kZero);
      Text("SRES2", 2, kZero);
    }
    Tagged("SXSHDL", "SXSOFL", "SXSHD", kZero);
  }

  void LabelSubheader() {
    Text("LA", 2, kZero);
    Text("LID", 10, kZero);
    Text("LSCLAS", 1, kZero);
    for (const char* name : {"LSCODE", "LSCTLH", "LSREL"}) Text(name, 40, kZero);
    for (const char* name : {"LSCAUT", "LSCTLN"}) Text(name, 20, kZero);
    if (Text("LSDWNG", 6, kZero) == "999998") Text("LSDEVT", 40, kZero);
    Text("ENCRYP", 1, kZero);
    Text("LFS", 1, kZero);
    Text("LCW", 2, kZero);
    Text("LCH", 2, kZero);
    Text("LDLVL", 3, kZero);
    Text("LALVL", 3, kZero);
    Text("LLOC", 10, kZero);
    Raw("LTC", 3);
    Raw("LBC", 3);
    Tagged("LXSHDL", "LXSOFL", "LXSHD", kZero);
  }

  void TextSubheader() {
    Text("TE", 2, kZero);
    Text("TEXTID", is20_ ? 10 : 7, kZero);
    if (!is20_) Number("TXTALVL", 3);
    Text("TXTDT", 14, kZero);
    Text("TXTITL", 80, kBlank);
    Text("TSCLAS", 1, kZero);
    Security("TS", kZero, false, kBlank);
    Text("ENCRYP", 1, kZero);
    Text("TXTFMT", 3, kZero);
    Tagged("TXSHDL", "TXSOFL", "TXSHD", kZero);
  }

  void ExtensionSubheader() {
    Text("DE", 2, kZero);
    const std::string id = Text("DESID", 25, kZero);
    Text("DESVER", 2, kZero);
    Text("DESCLAS", 1, kZero);
    Security("DES", kZero, false, 0, true);
    if (id.substr(0, 13) != std::string("TRE_OVERFLOW\0", 13)) {
      Text("DESOFLW", 6, kZero);
      Text("DESITEM", 3, kZero);
    }
    const int64_t length = Integer(Text("DESSHL", 4, kZero));
    if (length != 0) Text("DESSHF", static_cast<size_t>(length), kZero);
  }

  std::string source_;
  bool is20_;
  size_t at_ = 0;
  Output out_;
  std::set<std::string> rules_;
  uint32_t header_length_ = 0;
  size_t image_table_ = 0;
  size_t data_start_ = 0;  // where the current segment's data begin in the output
  std::vector<Lengths> images_, graphics_, labels_, texts_, extensions_;
};

}  // namespace

Prediction PredictSave(const Bytes& source, tavi_test::Layout layout) {
  return Model(source, layout == tavi_test::Layout::kNitf20).Run();
}

std::string FirstDifference(const Bytes& expected, const Bytes& found) {
  const auto [a, b] = std::mismatch(expected.begin(), expected.end(), found.begin(), found.end());
  if (a == expected.end() && b == found.end()) return "";
  const auto at = static_cast<size_t>(a - expected.begin());
  const auto around = [at](const Bytes& bytes) {
    std::string text;
    for (size_t i = at - std::min<size_t>(at, 12); i < std::min(bytes.size(), at + 12); ++i) {
      const char c = static_cast<char>(bytes[i]);
      text += c >= ' ' && c <= '~' ? c : '.';
    }
    return text;
  };
  return "at " + std::to_string(at) + " of " + std::to_string(expected.size()) + " and " +
         std::to_string(found.size()) + ": wanted [" + around(expected) + "], found [" + around(found) + "]";
}

}  // namespace saving
