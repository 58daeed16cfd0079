// What an image subheader says of its data: sizes and blocks, depths and bands, coding and interleave, and the
// length of data that are not compressed.
#include <algorithm>
#include <array>
#include <string_view>

#include "Verify.h"
#include "VerifyImage.h"

namespace tavinitf {

ImageShape ShapeOf(const Segment& image) {
  ImageShape shape;
  shape.rows = image.Number("NROWS");
  shape.columns = image.Number("NCOLS");
  shape.across = image.Number("NBPR");
  shape.down = image.Number("NBPC");
  shape.block_width = image.Number("NPPBH");
  shape.block_height = image.Number("NPPBV");
  shape.sample_bits = image.Number("NBPP");
  shape.bands = image.BandCount();
  shape.coding = image.Text("IC");
  shape.mode = image.Text("IMODE");
  return shape;
}

uint64_t ImageShape::MaskEntries() const {
  const uint64_t blocks = Times(across, down);
  return mode == "S" ? Times(blocks, bands) : blocks;
}

uint64_t ImageShape::StoredBlockBytes() const {
  const uint64_t bits = Times(Times(block_width, block_height), sample_bits);
  return mode == "S" ? DivideUp(bits, 8) : DivideUp(Times(bits, bands), 8);
}

namespace {

class ImageCheck {
 public:
  ImageCheck(const Subject& subject, const Segment& image)
      : subject_(subject), image_(image), shape_(ShapeOf(image)) {}

  void Run() {
    if (!NumbersAreDigits()) return;
    CheckGrid("NCOLS", "NBPR", "NPPBH", shape_.columns, shape_.across, shape_.block_width);
    CheckGrid("NROWS", "NBPC", "NPPBV", shape_.rows, shape_.down, shape_.block_height);
    CheckDepths();
    CheckBands();
    CheckTables();
    CheckCoding();
    CheckLength();
  }

 private:
  void Add(const char* name, const std::string& expected) {
    if (const Field* field = image_.Find(name)) subject_.findings.Add(image_, *field, expected);
  }

  bool NumbersAreDigits() {
    bool all = true;
    for (const char* name :
         {"NROWS", "NCOLS", "ABPP", "NICOM", "NBANDS", "NBPR", "NBPC", "NPPBH", "NPPBV", "NBPP"}) {
      all = TakeNumber(subject_, image_, name).has_value() && all;
    }
    if (image_.Find("XBANDS") != nullptr) all = TakeNumber(subject_, image_, "XBANDS").has_value() && all;
    return all;
  }

  // The blocks of one direction cover the image, and none lies outside it.
  void CheckGrid(const char* side_name, const char* count_name, const char* block_name, uint64_t side,
                 uint64_t count, uint64_t block) {
    if (side == 0) Add(side_name, "at least 1");
    if (block == 0) Add(block_name, "at least 1: an image of blocks without a size is not drawn");
    if (count == 0) Add(count_name, "at least 1");
    if (side == 0 || block == 0 || count == 0) return;
    const uint64_t needed = DivideUp(side, block);
    if (count == needed) return;
    Add(count_name, std::to_string(needed) + ", which blocks of " + std::to_string(block) + " need for " +
                        side_name + " " + std::to_string(side));
  }

  void CheckDepths() {
    constexpr std::array<uint64_t, 6> kStoredDepths = {1, 8, 12, 16, 32, 64};
    const uint64_t actual = image_.Number("ABPP");
    const uint64_t stored = shape_.sample_bits;
    if (shape_.IsUncompressed() &&
        std::find(kStoredDepths.begin(), kStoredDepths.end(), stored) == kStoredDepths.end()) {
      Add("NBPP", "01, 08, 12, 16, 32 or 64");
    } else if (stored == 0) {
      Add("NBPP", "at least 01");
    }
    if (actual == 0 || actual > stored) Add("ABPP", "1 to NBPP, " + std::to_string(stored));
    if (image_.Text("PVTYPE") == "B" && stored != 1) Add("NBPP", "01 with PVTYPE B");
  }

  void CheckBands() {
    struct Rule {
      const char* representation;
      uint64_t bands;
    };
    constexpr std::array<Rule, 4> kRules = {{{"MONO", 1}, {"RGB", 3}, {"RGB/LUT", 1}, {"YCbCr601", 3}}};
    const std::string representation = image_.Text("IREP");
    const char* field = image_.Number("NBANDS") != 0 ? "NBANDS" : "XBANDS";
    if (shape_.bands == 0) Add(field, "at least 1");
    for (const Rule& rule : kRules) {
      if (representation == rule.representation && shape_.bands != rule.bands && shape_.bands != 0) {
        Add(field, std::to_string(rule.bands) + " with IREP " + representation);
      }
    }
    if (image_.Number("NBANDS") == 0 && shape_.bands != 0 && shape_.bands < 10) Add("XBANDS", "at least 10");
  }

  void CheckTables() {
    constexpr uint64_t kMostEntries = 65536;
    bool has_tables = false;
    for (const Field& field : image_.fields) {
      const bool is_count = field.name == "NLUTS";
      if (!is_count && field.name != "NELUT") continue;
      const std::optional<uint64_t> number = DigitsOf(field);
      has_tables = has_tables || (is_count && number != 0U);
      if (!number) {
        subject_.findings.Add(image_, field, "digits");
      } else if (is_count && *number != 0 && *number != 1 && *number != 3) {
        subject_.findings.Add(image_, field, "0, 1 or 3: any other number of tables is read as 3");
      } else if (!is_count && (*number == 0 || *number > kMostEntries)) {
        subject_.findings.Add(image_, field, "1 to 65536 entries");
      }
    }
    if (image_.Text("IREP") == "RGB/LUT" && !has_tables && image_.Find("NLUTS") != nullptr)
      Add("NLUTS", "3 with IREP RGB/LUT: the image has no colours");
  }

  void CheckCoding() {
    constexpr std::array<std::string_view, 15> kDrawn = {"NC", "NM", "C1", "C3", "C4", "C5", "C6", "C8",
                                                         "I1", "M1", "M3", "M4", "M5", "M6", "M8"};
    constexpr std::array<std::string_view, 9> kByBlockOnly = {"C1", "M1", "C4", "M4", "C6",
                                                              "M6", "C8", "M8", "I1"};
    const auto is_in = [&](const auto& list) {
      return std::find(list.begin(), list.end(), shape_.coding) != list.end();
    };
    if (!is_in(kDrawn)) Add("IC", R"(one that is drawn; "C0", "C2", "M0", "M2" and unknown ones are not)");
    if (is_in(kByBlockOnly) && shape_.mode != "B") Add("IMODE", "B with IC " + shape_.coding);
    const bool fax = shape_.coding == "C1" || shape_.coding == "M1";
    if (fax && shape_.sample_bits != 1) Add("NBPP", "01 with IC " + shape_.coding);
    if (fax && shape_.bands != 1) Add("NBANDS", "1 with IC " + shape_.coding);
    if (shape_.mode == "S" && (shape_.bands == 1 || Times(shape_.across, shape_.down) == 1))
      Add("IMODE", "B, P or R: S is for several bands in several blocks");
  }

  void CheckLength() {
    const Field* length = LengthField(subject_.contents, image_, true);
    if (length == nullptr) return;
    if (image_.data.length == 0) {
      subject_.findings.Add(subject_.contents.header, *length,
                            "at least 1: an image without data is not drawn");
    }
    if (shape_.coding != "NC" || image_.data.length == 0) return;
    const uint64_t bytes = Times(shape_.MaskEntries(), shape_.StoredBlockBytes());
    // Where a band's share of a block is no whole number of bytes, each may begin at a byte of its own.
    const uint64_t samples = Times(Times(shape_.block_width, shape_.block_height), shape_.sample_bits);
    const uint64_t apart =
        Times(Times(Times(shape_.across, shape_.down), shape_.bands), DivideUp(samples, 8));
    if (image_.data.length == bytes || image_.data.length == apart) return;
    subject_.findings.Add(subject_.contents.header, *length,
                          std::to_string(bytes) + ", the blocks of image " + std::to_string(image_.index));
  }

  const Subject& subject_;
  const Segment& image_;
  ImageShape shape_;
};

}  // namespace

void VerifyImages(const Subject& subject) {
  for (const Segment& segment : subject.contents.segments) {
    if (segment.kind == SegmentKind::kImage && !segment.fields.empty()) ImageCheck(subject, segment).Run();
  }
}

}  // namespace tavinitf
