#include "NtfBuilder.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "FieldWriter.h"

namespace tavi_test {
namespace {

std::string Indexed(const char* name, size_t index) {
  return std::string(name) + '[' + std::to_string(index) + ']';
}

// The security block of all header kinds: the same fields under different first letters.
void WriteSecurity(FieldWriter& out, const std::string& prefix, Layout layout) {
  const bool nitf21 = layout == Layout::kNitf21;
  out.Text(prefix + "CLAS", 1, "U");
  if (nitf21) out.Text(prefix + "CLSY", 2);
  out.Text(prefix + "CODE", nitf21 ? 11 : 40);
  out.Text(prefix + "CTLH", nitf21 ? 2 : 40);
  out.Text(prefix + "REL", nitf21 ? 20 : 40);
  if (nitf21) {
    out.Text(prefix + "DCTP", 2);
    out.Text(prefix + "DCDT", 8);
    out.Text(prefix + "DCXM", 4);
    out.Text(prefix + "DG", 1);
    out.Text(prefix + "DGDT", 8);
    out.Text(prefix + "CLTX", 43);
    out.Text(prefix + "CATP", 1);
  }
  out.Text(prefix + "CAUT", nitf21 ? 40 : 20);
  if (nitf21) {
    out.Text(prefix + "CRSN", 1);
    out.Text(prefix + "SRDT", 8);
  }
  out.Text(prefix + "CTLN", nitf21 ? 15 : 20);
}

// The downgrade fields of the 2.0 layout; the event is there when DWNG says so, or always.
void WriteDowngrade(FieldWriter& out, const std::string& prefix, Layout layout, bool always_event = false) {
  if (layout == Layout::kNitf21) return;
  const std::string downgrade = out.Text(prefix + "DWNG", 6);
  if (always_event || downgrade == "999998") out.Text(prefix + "DEVT", 40);
}

// A length, an overflow number and the bytes; the length alone when the area is not there.
void WriteExtension(FieldWriter& out, const std::string& length, const std::string& overflow,
                    const std::string& data, const std::optional<Bytes>& area) {
  out.Number(length, 5, area ? area->size() + 3 : 0);
  if (!area) return;
  out.Text(overflow, 3, "000");
  out.Raw(data, *area);
}

void WriteBand(FieldWriter& out, const BandSpec& band, size_t index) {
  out.Text(Indexed("IREPBAND", index), 2, band.irepband);
  out.Text(Indexed("ISUBCAT", index), 6, band.isubcat);
  out.Text(Indexed("IFC", index), 1, band.ifc);
  out.Text(Indexed("IMFLT", index), 3, band.imflt);
  out.Number(Indexed("NLUTS", index), 1, band.luts.size());
  if (band.luts.empty()) return;
  out.Number(Indexed("NELUT", index), 5, band.luts.front().size());
  for (size_t table = 0; table < band.luts.size(); ++table) {
    out.Raw(Indexed("LUTD", index) + '[' + std::to_string(table) + ']', band.luts[table]);
  }
}

void WriteImageIdentity(FieldWriter& out, const ImageSpec& image, Layout layout) {
  out.Text("IM", 2, "IM");
  out.Text("IID1", 10, "Test image");
  out.Text("IDATIM", 14, "20240101000000");
  out.Text("TGTID", 17);
  out.Text("IID2", 80);
  WriteSecurity(out, "IS", layout);
  WriteDowngrade(out, "IS", layout);
  out.Text("ENCRYP", 1, "0");
  out.Text("ISORCE", 42);
  out.Number("NROWS", 8, image.rows);
  out.Number("NCOLS", 8, image.columns);
  out.Text("PVTYPE", 3, image.pvtype);
  out.Text("IREP", 8, image.irep);
  out.Text("ICAT", 8, image.icat);
  out.Number("ABPP", 2, image.abpp);
  out.Text("PJUST", 1, std::string(1, image.pjust));
  out.Text("ICORDS", 1, image.igeolo ? "G" : layout == Layout::kNitf21 ? " " : "N");
  if (image.igeolo) out.Text("IGEOLO", 60, *image.igeolo);
  out.Number("NICOM", 1, image.comments.size());
  for (size_t i = 0; i < image.comments.size(); ++i) out.Text(Indexed("ICOM", i), 80, image.comments[i]);
}

void WriteImageStructure(FieldWriter& out, const ImageSpec& image, Layout layout) {
  out.Text("IC", 2, image.ic);
  if (image.ic != "NC" && image.ic != "NM") out.Text("COMRAT", 4, image.comrat);
  const bool extended = layout == Layout::kNitf21 && (image.use_xbands || image.bands.size() > 9);
  out.Number("NBANDS", 1, extended ? 0 : image.bands.size());
  if (extended) out.Number("XBANDS", 5, image.bands.size());
  for (size_t i = 0; i < image.bands.size(); ++i) WriteBand(out, image.bands[i], i);
  out.Text("ISYNC", 1, "0");
  out.Text("IMODE", 1, std::string(1, image.imode));
  out.Number("NBPR", 4, image.nbpr);
  out.Number("NBPC", 4, image.nbpc);
  out.Number("NPPBH", 4, image.nppbh);
  out.Number("NPPBV", 4, image.nppbv);
  out.Number("NBPP", 2, image.nbpp);
  out.Number("IDLVL", 3, image.idlvl);
  out.Number("IALVL", 3, image.ialvl);
  out.Text("ILOC", 10, LocationText(image.row, image.column));
  out.Text("IMAG", 4, image.imag);
  WriteExtension(out, "UDIDL", "UDOFL", "UDID", image.udid);
  WriteExtension(out, "IXSHDL", "IXSOFL", "IXSHD", image.ixshd);
}

Bytes BigEndian(uint32_t value, size_t width) {
  Bytes bytes(width);
  for (size_t i = 0; i < width; ++i) bytes[width - 1 - i] = static_cast<uint8_t>(value >> (8 * i));
  return bytes;
}

std::vector<uint32_t> CompletedTable(const ImageSpec& image, std::vector<uint32_t> entries) {
  const size_t wanted = size_t{image.nbpr} * image.nbpc * image.bands.size();
  if (!image.mask.exact_tables && entries.size() < wanted) entries.resize(wanted, kAbsentBlock);
  return entries;
}

void WriteTable(FieldWriter& out, const char* name, const ImageSpec& image,
                const std::optional<std::vector<uint32_t>>& entries) {
  if (!entries) return;
  const std::vector<uint32_t> table = CompletedTable(image, *entries);
  for (size_t i = 0; i < table.size(); ++i) out.Raw(Indexed(name, i), BigEndian(table[i], 4));
}

void WriteMaskTable(FieldWriter& out, const ImageSpec& image) {
  if (!image.HasMaskTable()) return;
  const MaskSpec& mask = image.mask;
  size_t length = 10 + mask.pad_code.size() + mask.gap.size();
  if (mask.block_offsets) length += 4 * CompletedTable(image, *mask.block_offsets).size();
  if (mask.pad_offsets) length += 4 * CompletedTable(image, *mask.pad_offsets).size();
  out.Raw("IMDATOFF", BigEndian(mask.imdatoff.value_or(static_cast<uint32_t>(length)), 4));
  out.Raw("BMRLNTH", BigEndian(mask.bmrlnth.value_or(mask.block_offsets ? 4 : 0), 2));
  out.Raw("TMRLNTH", BigEndian(mask.tmrlnth.value_or(mask.pad_offsets ? 4 : 0), 2));
  const auto code_bits = static_cast<uint16_t>(8 * mask.pad_code.size());
  out.Raw("TPXCDLNTH", BigEndian(mask.tpxcdlnth.value_or(code_bits), 2));
  if (!mask.pad_code.empty()) out.Raw("TPXCD", mask.pad_code);
  WriteTable(out, "BMR", image, mask.block_offsets);
  WriteTable(out, "TMR", image, mask.pad_offsets);
  if (!mask.gap.empty()) out.Raw("gap", mask.gap);
}

// A segment in the making: its two halves and where the fields stand in them.
struct Segment {
  std::string prefix;
  FieldWriter subheader;
  FieldWriter data;
};

Segment MakeImage(const ImageSpec& image, Layout layout) {
  Segment segment{"", FieldWriter(image.fields), FieldWriter({})};
  WriteImageIdentity(segment.subheader, image, layout);
  WriteImageStructure(segment.subheader, image, layout);
  segment.subheader.Finish();
  WriteMaskTable(segment.data, image);
  segment.data.Raw("pixels", image.pixels);
  return segment;
}

void WriteSymbolPicture(FieldWriter& out) {
  out.Number("NLIPS", 4, 0);
  out.Number("NPIXPL", 4, 0);
  out.Number("NWDTH", 4, 0);
  out.Number("NBPP", 1, 0);
}

void WriteSymbolColours(FieldWriter& out, const GraphicSpec& graphic) {
  out.Text("SCOLOR", 1, "C");
  out.Text("SNUM", 6, "000000");
  out.Text("SROT", 3, "000");
  out.Number("NELUT", 3, graphic.lut_planes.empty() ? 0 : graphic.lut_planes.front().size());
  for (size_t i = 0; i < graphic.lut_planes.size(); ++i) out.Raw(Indexed("DLUT", i), graphic.lut_planes[i]);
}

Segment MakeGraphic(const GraphicSpec& graphic, Layout layout) {
  Segment segment{"", FieldWriter(graphic.fields), FieldWriter({})};
  FieldWriter& out = segment.subheader;
  const bool nitf21 = layout == Layout::kNitf21;
  out.Text("SY", 2, "SY");
  out.Text("SID", 10, "graphic");
  out.Text("SNAME", 20);
  WriteSecurity(out, "SS", layout);
  WriteDowngrade(out, "SS", layout);
  out.Text("ENCRYP", 1, "0");
  out.Text("SFMT", 1, std::string(1, graphic.sfmt));
  if (nitf21) out.Text("SSTRUCT", 13, "0000000000000");
  if (!nitf21) WriteSymbolPicture(out);
  out.Number("SDLVL", 3, graphic.sdlvl);
  out.Number("SALVL", 3, graphic.salvl);
  out.Text("SLOC", 10, LocationText(graphic.row, graphic.column));
  if (nitf21) {
    out.Text("SBND1", 10, LocationText(graphic.bound1_row, graphic.bound1_column));
    out.Text("SCOLOR", 1, "C");
  }
  out.Text("SBND2", 10, LocationText(graphic.bound2_row, graphic.bound2_column));
  if (nitf21) out.Text("SRES2", 2, "00");
  if (!nitf21) WriteSymbolColours(out, graphic);
  WriteExtension(out, "SXSHDL", "SXSOFL", "SXSHD", graphic.sxshd);
  out.Finish();
  segment.data.Raw("content", graphic.data);
  return segment;
}

Segment MakeLabel(const LabelSpec& label) {
  Segment segment{"", FieldWriter(label.fields), FieldWriter({})};
  FieldWriter& out = segment.subheader;
  out.Text("LA", 2, "LA");
  out.Text("LID", 10, "label");
  WriteSecurity(out, "LS", Layout::kNitf20);
  WriteDowngrade(out, "LS", Layout::kNitf20);
  out.Text("ENCRYP", 1, "0");
  out.Text("LFS", 1);
  out.Text("LCW", 2, "00");
  out.Text("LCH", 2, "00");
  out.Number("LDLVL", 3, label.ldlvl);
  out.Number("LALVL", 3, label.lalvl);
  out.Text("LLOC", 10, LocationText(label.row, label.column));
  out.Raw("LTC", label.ltc);
  out.Raw("LBC", label.lbc);
  WriteExtension(out, "LXSHDL", "LXSOFL", "LXSHD", label.lxshd);
  out.Finish();
  segment.data.Raw("content", label.data);
  return segment;
}

Segment MakeText(const TextSpec& text, Layout layout) {
  Segment segment{"", FieldWriter(text.fields), FieldWriter({})};
  FieldWriter& out = segment.subheader;
  const bool nitf21 = layout == Layout::kNitf21;
  out.Text("TE", 2, "TE");
  out.Text("TEXTID", nitf21 ? 7 : 10, "text");
  if (nitf21) out.Number("TXTALVL", 3, text.txtalvl);
  out.Text("TXTDT", 14, "20240101000000");
  out.Text("TXTITL", 80);
  WriteSecurity(out, "TS", layout);
  WriteDowngrade(out, "TS", layout);
  out.Text("ENCRYP", 1, "0");
  out.Text("TXTFMT", 3, text.txtfmt);
  WriteExtension(out, "TXSHDL", "TXSOFL", "TXSHD", text.txshd);
  out.Finish();
  segment.data.Raw("content", text.data);
  return segment;
}

Segment MakeDataExtension(const DataExtensionSpec& extension, Layout layout) {
  Segment segment{"", FieldWriter(extension.fields), FieldWriter({})};
  FieldWriter& out = segment.subheader;
  out.Text("DE", 2, "DE");
  out.Text("DESID", 25, extension.desid);
  out.Text("DESVER", 2, "01");
  WriteSecurity(out, "DES", layout);
  WriteDowngrade(out, "DES", layout, true);
  if (extension.overflow_fields.value_or(extension.desid.starts_with("TRE_OVERFLOW"))) {
    out.Text("DESOFLW", 6, "UDHD");
    out.Text("DESITEM", 3, "000");
  }
  out.Number("DESSHL", 4, extension.desshf.size());
  if (!extension.desshf.empty()) out.Raw("DESSHF", extension.desshf);
  out.Finish();
  segment.data.Raw("content", extension.data);
  return segment;
}

Segment MakeReserved(const ReservedSpec& reserved) {
  Segment segment{"", FieldWriter({}), FieldWriter({})};
  segment.subheader.Raw("RE", reserved.subheader);
  segment.data.Raw("content", reserved.data);
  return segment;
}

// A count and its pairs of lengths, in the file header's order.
struct Group {
  const char* count;
  const char* subheader_length;
  const char* data_length;
  size_t subheader_width;
  size_t data_width;
  std::vector<Segment> segments;
};

template <typename Spec, typename Make>
std::vector<Segment> MakeAll(const char* kind, const std::vector<Spec>& specs, Make make) {
  std::vector<Segment> segments;
  for (size_t i = 0; i < specs.size(); ++i) {
    segments.push_back(make(specs[i]));
    segments.back().prefix = Indexed(kind, i) + '.';
  }
  return segments;
}

std::vector<Group> MakeGroups(const NtfBuilder& file) {
  const Layout layout = file.layout;
  std::vector<Group> groups;
  groups.push_back({"NUMI", "LISH", "LI", 6, 10,
                    MakeAll("image", file.images, [&](const ImageSpec& s) { return MakeImage(s, layout); })});
  groups.push_back({"NUMS", "LSSH", "LS", 4, 6, MakeAll("graphic", file.graphics, [&](const GraphicSpec& s) {
                      return MakeGraphic(s, layout);
                    })});
  if (layout == Layout::kNitf20) {
    groups.push_back({"NUML", "LLSH", "LL", 4, 3, MakeAll("label", file.labels, MakeLabel)});
  } else {
    if (!file.labels.empty()) throw std::invalid_argument("labels exist in the 2.0 layout only");
    groups.push_back({"NUMX", "", "", 0, 0, {}});
  }
  groups.push_back({"NUMT", "LTSH", "LT", 4, 5,
                    MakeAll("text", file.texts, [&](const TextSpec& s) { return MakeText(s, layout); })});
  groups.push_back({"NUMDES", "LDSH", "LD", 4, 9,
                    MakeAll("des", file.data_extensions,
                            [&](const DataExtensionSpec& s) { return MakeDataExtension(s, layout); })});
  groups.push_back({"NUMRES", "LRESH", "LRE", 4, 7, MakeAll("res", file.reserved, MakeReserved)});
  return groups;
}

void WriteGroupLengths(FieldWriter& out, const Group& group) {
  out.Number(group.count, 3, group.segments.size());
  for (size_t i = 0; i < group.segments.size(); ++i) {
    const Segment& segment = group.segments[i];
    out.Number(Indexed(group.subheader_length, i), group.subheader_width, segment.subheader.bytes().size());
    out.Number(Indexed(group.data_length, i), group.data_width, segment.data.bytes().size());
  }
}

FieldWriter MakeFileHeader(const NtfBuilder& file, const std::vector<Group>& groups, size_t header_length,
                           size_t file_length) {
  FieldWriter out(file.header);
  const bool nitf21 = file.layout == Layout::kNitf21;
  out.Text("FHDR", 4, "NITF");
  out.Text("FVER", 5, nitf21 ? "02.10" : "02.00");
  out.Text("CLEVEL", 2, "03");
  out.Text("STYPE", 4, "BF01");
  out.Text("OSTAID", 10, "builder");
  out.Text("FDT", 14, "20240101000000");
  out.Text("FTITLE", 80, "A file made by a test");
  WriteSecurity(out, "FS", file.layout);
  WriteDowngrade(out, "FS", file.layout);
  out.Text("FSCOP", 5, "00000");
  out.Text("FSCPYS", 5, "00000");
  out.Text("ENCRYP", 1, "0");
  if (nitf21) out.Raw("FBKGC", file.background);
  out.Text("ONAME", nitf21 ? 24 : 27);
  out.Text("OPHONE", 18);
  out.Number("FL", 12, file_length);
  out.Number("HL", 6, header_length);
  for (const Group& group : groups) WriteGroupLengths(out, group);
  WriteExtension(out, "UDHDL", "UDHOFL", "UDHD", file.udhd);
  WriteExtension(out, "XHDL", "XHDLOFL", "XHD", file.xhd);
  out.Finish();
  return out;
}

void Append(BuiltFile& built, const std::string& prefix, const FieldWriter& part) {
  const size_t base = built.bytes.size();
  for (const WrittenField& field : part.fields()) {
    built.places[prefix + field.name] = {base + field.offset, field.length};
    built.order.push_back(prefix + field.name);
  }
  built.bytes.insert(built.bytes.end(), part.bytes().begin(), part.bytes().end());
}

}  // namespace

Bytes Tre(const std::string& tag, const std::string& data) {
  std::string record = tag;
  record.resize(6, ' ');
  record += Digits(data.size(), 5) + data;
  return {record.begin(), record.end()};
}

std::string LocationText(int32_t row, int32_t column) {
  const auto half = [](int32_t value) {
    return value < 0 ? "-" + Digits(static_cast<uint64_t>(-int64_t{value}), 4)
                     : Digits(static_cast<uint64_t>(value), 5);
  };
  return half(row) + half(column);
}

bool ImageSpec::HasMaskTable() const {
  return ic == "NM" || ic == "M0" || ic == "M1" || ic == "M3" || ic == "M4" || ic == "M5";
}

Bytes ImageSpec::MaskTable() const {
  FieldWriter out({});
  WriteMaskTable(out, *this);
  return out.bytes();
}

Bytes ImageSpec::Data() const {
  Bytes data = MaskTable();
  data.insert(data.end(), pixels.begin(), pixels.end());
  return data;
}

ImageSpec& ImageSpec::Blocks(uint32_t across, uint32_t down, uint32_t width, uint32_t height) {
  nbpr = across;
  nbpc = down;
  nppbh = width;
  nppbv = height;
  columns = across * width;
  rows = down * height;
  return *this;
}

ImageSpec& ImageSpec::At(int32_t location_row, int32_t location_column) {
  row = location_row;
  column = location_column;
  return *this;
}

ImageSpec& ImageSpec::Level(uint32_t display, uint32_t attachment) {
  idlvl = display;
  ialvl = attachment;
  return *this;
}

ImageSpec& ImageSpec::Mode(char interleave) {
  imode = interleave;
  return *this;
}

ImageSpec& ImageSpec::Roles(const std::vector<std::string>& irepbands) {
  bands.resize(irepbands.size());
  for (size_t i = 0; i < irepbands.size(); ++i) bands[i].irepband = irepbands[i];
  return *this;
}

ImageSpec GreyImage(uint32_t columns, uint32_t rows, Bytes pixels) {
  ImageSpec image;
  image.Blocks(1, 1, columns, rows);
  image.bands[0].irepband = "M ";
  for (size_t i = pixels.size(); i < size_t{columns} * rows; ++i) pixels.push_back(static_cast<uint8_t>(i));
  image.pixels = std::move(pixels);
  return image;
}

ImageSpec DeepImage(uint32_t columns, uint32_t rows, uint32_t nbpp, uint32_t abpp, Bytes pixels) {
  ImageSpec image;
  image.Blocks(1, 1, columns, rows);
  image.bands[0].irepband = "M ";
  image.nbpp = nbpp;
  image.abpp = abpp;
  image.pixels = std::move(pixels);
  return image;
}

ImageSpec BilevelImage(uint32_t columns, uint32_t rows, Bytes pixels) {
  ImageSpec image = DeepImage(columns, rows, 1, 1, std::move(pixels));
  image.pvtype = "B  ";
  return image;
}

ImageSpec RgbImage(uint32_t columns, uint32_t rows, char imode, Bytes pixels) {
  ImageSpec image;
  image.Blocks(1, 1, columns, rows).Mode(imode).Roles({"R ", "G ", "B "});
  image.irep = "RGB";
  image.pixels = std::move(pixels);
  return image;
}

FieldPlace BuiltFile::At(const std::string& name) const {
  const auto place = places.find(name);
  if (place == places.end()) throw std::invalid_argument("the file has no field " + name);
  return place->second;
}

std::string BuiltFile::Text(const std::string& name) const {
  const FieldPlace place = At(name);
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(place.offset);
  return {begin, begin + static_cast<std::ptrdiff_t>(place.length)};
}

BuiltFile& BuiltFile::Patch(const std::string& name, std::string_view text) {
  const FieldPlace place = At(name);
  if (text.size() > place.length) throw std::invalid_argument("too long for " + name);
  std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(place.offset));
  return *this;
}

BuiltFile& BuiltFile::Truncate(const std::string& name, size_t keep) {
  bytes.resize(std::min(bytes.size(), At(name).offset + keep));
  return *this;
}

std::wstring BuiltFile::Write(const std::filesystem::path& directory, const std::string& name) const {
  const std::filesystem::path path = directory / name;
  // A new file: cutting an old one off makes some file systems write it out at once.
  std::filesystem::remove(path);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) throw std::runtime_error("cannot write " + path.string());
  return path.wstring();
}

BuiltFile NtfBuilder::Build() const {
  const std::vector<Group> groups = MakeGroups(*this);
  const size_t header_length = MakeFileHeader(*this, groups, 0, 0).bytes().size();
  size_t total = header_length + trailer.size();
  for (const Group& group : groups) {
    for (const Segment& segment : group.segments) {
      total += segment.subheader.bytes().size() + segment.data.bytes().size();
    }
  }
  BuiltFile built;
  Append(built, "", MakeFileHeader(*this, groups, header_length, total));
  for (const Group& group : groups) {
    for (const Segment& segment : group.segments) {
      built.places[segment.prefix + "subheader"] = {built.bytes.size(), segment.subheader.bytes().size()};
      Append(built, segment.prefix, segment.subheader);
      built.places[segment.prefix + "data"] = {built.bytes.size(), segment.data.bytes().size()};
      Append(built, segment.prefix, segment.data);
    }
  }
  built.places["trailer"] = {built.bytes.size(), trailer.size()};
  built.bytes.insert(built.bytes.end(), trailer.begin(), trailer.end());
  return built;
}

}  // namespace tavi_test
