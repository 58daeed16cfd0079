// Files that lie: cut anywhere, and with every value of every header replaced. Whatever stands in a file,
// opening, sizing and loading it end with a documented status, in bounded memory, and leave nothing behind.
#include <algorithm>
#include <filesystem>
#include <random>

#include "DocumentTest.h"
#include "FaultHost.h"
#include "RichFiles.h"

namespace tavi::documents {
namespace {

using tavi::faults::FileOfEverything;
using tavi::faults::Watch;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::FieldPlace;
using tavi_test::Info;
using tavi_test::LoadFile;
using tavi_test::NtfBuilder;

constexpr int32_t kOpenStatuses[] = {SUCCESS,
                                     ERR_NO_MEMORY,
                                     ERR_FILE_READ,
                                     ERR_FILE_FORMAT,
                                     ERR_NOT_NITF,
                                     ERR_INVALID_PARAMETER,
                                     ERR_UNSUPPORTED_CLEVEL,
                                     ERR_UNSUPPORTED_PVTYPE,
                                     ERR_UNSUPPORTED_BPP};
constexpr int32_t kDrawStatuses[] = {ERR_NOT_SUPPORTED, ERR_NO_BITMAP, ERR_INVALID_BPP};

bool MayOpenWith(int32_t status) {
  return std::find(std::begin(kOpenStatuses), std::end(kOpenStatuses), status) != std::end(kOpenStatuses);
}

bool MayLoadWith(int32_t status) {
  return MayOpenWith(status) ||
         std::find(std::begin(kDrawStatuses), std::end(kDrawStatuses), status) != std::end(kDrawStatuses);
}

// The largest pixel memory while these tests run, so that sizes that lie are refused soon.
class BitmapLimit {
 public:
  BitmapLimit() : before_(HostGetBitmapLimit()) { HostSetBitmapLimit(kBytes); }
  ~BitmapLimit() { HostSetBitmapLimit(before_); }
  BitmapLimit(const BitmapLimit&) = delete;
  BitmapLimit& operator=(const BitmapLimit&) = delete;

  static constexpr uint64_t kBytes = uint64_t{2} << 20;

 private:
  uint64_t before_;
};

class BadInput : public DocumentTest {
 protected:
  void Put(const BuiltFile& file) {
    path_ = Write(file);
    size_ = file.bytes.size();
  }
  void Cut(size_t size) {
    std::filesystem::resize_file(path_, size);
    size_ = size;
  }

  enum class Depth : uint8_t { kOpen, kOpenAndSize };

  // Opens and sizes the file; returns the status of opening it.
  int32_t OpenAndSize(Depth depth = Depth::kOpenAndSize) const {
    const uint64_t alive = HostLiveObjects();
    const Watch watch;
    int32_t opened = 0;
    {
      const Document document(path_.c_str());
      opened = document.open;
      ExpectBacked(watch.demand().largest_block);
      EXPECT_TRUE(MayOpenWith(opened)) << "status " << opened;
      uint32_t width = 0;
      uint32_t height = 0;
      if (opened == SUCCESS && depth == Depth::kOpenAndSize) {
        EXPECT_EQ(GetActual_Width_Height(document.handle, &width, &height), SUCCESS);
        ExpectBacked(watch.demand().largest_block);
      }
    }
    EXPECT_EQ(watch.demand().blocks_left, 0);
    EXPECT_EQ(HostLiveObjects(), alive);
    return opened;
  }

  void InformAndLoad() const {
    const uint64_t alive = HostLiveObjects();
    const int32_t informed = Info(path_).status;
    EXPECT_TRUE(MayOpenWith(informed)) << "fltInfo: status " << informed;
    EXPECT_EQ(HostLiveObjects(), alive);
    const int32_t loaded = LoadQuietly();
    EXPECT_TRUE(MayLoadWith(loaded)) << "fltLoad: status " << loaded;
    EXPECT_EQ(HostLiveObjects(), alive);
  }

  void Exercise() const {
    OpenAndSize();
    InformAndLoad();
  }

  const std::wstring& path() const { return path_; }

 private:
  // Nothing is allocated that the file cannot back. A byte of a look-up table takes four in memory, an entry
  // of a list of lengths less than its digits; a record of a header is of a fixed size.
  void ExpectBacked(uint64_t block) const {
    constexpr uint64_t kLargestRecord = 8192;
    EXPECT_LE(block, std::max<uint64_t>(4 * size_, kLargestRecord)) << "of a file of " << size_ << " bytes";
  }

  // Loads without keeping the rows.
  int32_t LoadQuietly() const {
    HostBitmap destination = {};
    destination.bits = 24;
    HostLoadFlagsRecord flags = {};
    FilterLoadContext context = {};
    context.file_name = path_.c_str();
    context.bitmap = &destination;
    context.row_callback = [](uint64_t, HostBitmap*, uint8_t*, uint32_t, int32_t, int32_t, void*) {
      return 1;
    };
    context.load_flags = &flags;
    context.load_memory = [](const void*, HostBitmap*, uint64_t, uint32_t, uint32_t, uint64_t,
                             HostLoadFlagsRecord*, HostFileInfo*) -> int32_t { return ERR_NOT_SUPPORTED; };
    context.set_load_hook = [](HostLoadHook, void*) -> HostLoadHook { return nullptr; };
    context.third_entry = [] {};
    // Rows of the composite, of segments and of tiles are as wide as a bitmap may be; data are as long as the
    // file.
    const Watch watch;
    const int32_t status = fltLoad(&context);
    EXPECT_LE(watch.demand().largest_block, 4 * size_ + 2 * BitmapLimit::kBytes);
    EXPECT_EQ(watch.demand().blocks_left, 0);
    return status;
  }

  BitmapLimit limit_;
  std::wstring path_;
  size_t size_ = 0;
};

TEST_F(BadInput, TheFileIsGoodAsItStands) {
  const BuiltFile file = FileOfEverything().Build();
  Put(file);
  EXPECT_EQ(OpenAndSize(), SUCCESS);
  const auto picture = LoadFile(path());
  EXPECT_EQ(picture.status, SUCCESS);
  EXPECT_GT(picture.rows.size(), 4U);
}

// The last header ends where the last data extension's subheader does: a file cut before that is cut in a
// header.
TEST_F(BadInput, EveryPrefixOpensWithADocumentedStatus) {
  const BuiltFile file = FileOfEverything().Build();
  const FieldPlace last = file.At("des[1].subheader");
  Put(file);
  for (size_t size = file.bytes.size(); size-- > 0;) {
    Cut(size);
    const int32_t status = OpenAndSize();
    ASSERT_EQ(status, size < last.offset + last.length ? ERR_FILE_READ : SUCCESS) << "cut to " << size;
    ASSERT_FALSE(HasFailure()) << "cut to " << size;
  }
}

// Files that end with their image data, so that each cut of the data opens and runs out while it is drawn.
TEST_F(BadInput, EveryPrefixLoadsWithADocumentedStatus) {
  for (const tavi::faults::NamedFile& named : tavi::faults::FilesOfEveryKind()) {
    if (named.file.images.size() != 1) {
      continue;
    }
    const BuiltFile file = named.file.Build();
    Put(file);
    const size_t data = file.At("image[0].data").offset;
    for (size_t size = file.bytes.size(); size-- > data;) {
      Cut(size);
      InformAndLoad();
      ASSERT_FALSE(HasFailure()) << named.name << " cut to " << size;
    }
  }
}

// The texts that stand in for a value of that width.
std::vector<std::string> Replacements(size_t width) {
  std::vector<std::string> texts;
  for (const char fill : {'0', '1', '9', ' ', 'A', '\0', '\x7F', '\x80', '\xFF'}) {
    texts.emplace_back(width, fill);
  }
  if (width >= 2) {
    texts.push_back(std::string(width - 2, ' ') + "-1");
    texts.push_back(std::string(width - 2, '0') + "-1");
    texts.push_back("-" + std::string(width - 1, '9'));
    texts.push_back(std::string(width - 1, '0') + "1");
    texts.push_back(std::string(width - 1, '0') + "2");
    texts.push_back(std::string(width - 1, '0') + "3");
    texts.push_back(std::string(width - 1, '9') + "8");
    texts.push_back("0" + std::string(width - 1, '9'));
  } else {
    for (const char value :
         {'2', '3', '4', '5', '8', '-', 'B', 'P', 'R', 'S', 'C', 'O', 'U', 'G', 'N', 'L'}) {
      texts.emplace_back(1, value);
    }
  }
  return texts;
}

// A part's name as a test's.
std::string PartName(const ::testing::TestParamInfo<const char*>& tested) {
  std::string name = tested.param;
  std::erase_if(name, [](char c) { return c == '[' || c == ']'; });
  return name;
}

// One part of the file: the file header, whose fields have no prefix, or one segment.
class BadFields : public BadInput, public ::testing::WithParamInterface<const char*> {
 protected:
  static bool BelongsTo(const std::string& field, const std::string& part) {
    return part == "header" ? field.find('.') == std::string::npos : field.starts_with(part + ".");
  }

  // Calls `exercise` with each field of the part replaced by each text in turn.
  template <class Exercise>
  void ReplaceEach(const BuiltFile& good, const std::string& part, Exercise exercise) {
    constexpr size_t kWidestNumber = 12;
    size_t tried = 0;
    for (const std::string& name : good.order) {
      const FieldPlace place = good.At(name);
      if (!BelongsTo(name, part) || place.length == 0 || place.length > kWidestNumber) {
        continue;
      }
      for (const std::string& text : Replacements(place.length)) {
        BuiltFile bad = good;
        bad.Patch(name, text);
        Put(bad);
        exercise();
        ++tried;
        ASSERT_FALSE(HasFailure()) << name << " as \"" << text << "\"";
      }
    }
    EXPECT_GT(tried, 300U);
  }
};

TEST_P(BadFields, EachReplacedGivesADocumentedStatus) {
  ReplaceEach(FileOfEverything().Build(), GetParam(), [&] { Exercise(); });
}

INSTANTIATE_TEST_SUITE_P(Of, BadFields,
                         ::testing::Values("header", "image[0]", "image[1]", "image[2]", "image[3]",
                                           "image[4]", "image[5]", "image[6]", "image[7]", "image[8]",
                                           "text[0]", "des[0]", "des[1]"),
                         PartName);

// Graphics are opened alone: what their drawings do is no matter of headers.
class BadGraphicFields : public BadFields {};

TEST_P(BadGraphicFields, EachReplacedOpensWithADocumentedStatus) {
  NtfBuilder file{tavi_test::GreyImage(2, 2)};
  file.graphics.resize(2);
  file.graphics[0].sxshd = tavi_test::Tre("SXSTRE", "about the graphic");
  file.graphics[0].data = Bytes(20, 'g');
  file.texts.resize(1);
  ReplaceEach(file.Build(), GetParam(), [&] { OpenAndSize(Depth::kOpen); });
}

INSTANTIATE_TEST_SUITE_P(Of, BadGraphicFields, ::testing::Values("header", "graphic[0]", "graphic[1]"),
                         PartName);

// The codes that choose a way of decoding, each with every other.
TEST_F(BadInput, EveryCombinationOfCodesGivesADocumentedStatus) {
  for (const tavi::faults::NamedFile& named : tavi::faults::FilesOfEveryKind()) {
    if (named.file.images.size() != 1) {
      continue;
    }
    const BuiltFile good = named.file.Build();
    for (const char* ic : {"NC", "NM"}) {
      for (const char* pvtype : {"INT", "B  "}) {
        for (const char* irep : {"MONO    ", "RGB     ", "MULTI   "}) {
          for (const char* nbpp : {"00", "01", "08", "12", "16", "24", "32", "64", "-8"}) {
            for (const char* abpp : {"08", "11", "16"}) {
              BuiltFile bad = good;
              bad.Patch("image[0].IC", ic).Patch("image[0].PVTYPE", pvtype).Patch("image[0].IREP", irep);
              bad.Patch("image[0].NBPP", nbpp).Patch("image[0].ABPP", abpp);
              Put(bad);
              Exercise();
              ASSERT_FALSE(HasFailure())
                  << named.name << " " << ic << " " << pvtype << " " << irep << " " << nbpp << "/" << abpp;
            }
          }
        }
      }
    }
  }
}

// Changes that no table foresees. The seed is fixed: a failure names the round and can be run again.
TEST_F(BadInput, RandomChangesGiveADocumentedStatus) {
  constexpr int kRounds = 3000;
  constexpr std::string_view kBytes("0123456789- \0\xFF", 14);
  const BuiltFile good = FileOfEverything().Build();
  std::mt19937 random(20240117);
  for (int round = 0; round < kRounds; ++round) {
    BuiltFile bad = good;
    const size_t changes = 1 + random() % 6;
    for (size_t i = 0; i < changes; ++i) {
      bad.bytes[random() % bad.bytes.size()] = static_cast<uint8_t>(kBytes[random() % kBytes.size()]);
    }
    if (random() % 4 == 0) {
      bad.bytes.resize(random() % bad.bytes.size());
    }
    Put(bad);
    Exercise();
    ASSERT_FALSE(HasFailure()) << "round " << round;
  }
}

// A few digits claim much; the file is refused before anything is allocated for the claim.
TEST_F(BadInput, ClaimsBeyondTheFileCostNoMemory) {
  const struct {
    const char* field;
    const char* text;
  } claims[] = {{"NUMI", "999"},
                {"NUMS", "999"},
                {"NUMT", "999"},
                {"NUMDES", "999"},
                {"NUMRES", "999"},
                {"UDHDL", "99999"},
                {"XHDL", "99999"},
                {"image[0].NICOM", "9"},
                {"image[0].UDIDL", "99999"},
                {"image[0].IXSHDL", "99999"},
                {"image[0].NBANDS", "0"}};
  for (const auto& [field, text] : claims) {
    BuiltFile bad = FileOfEverything().Build();
    bad.Patch(field, text);
    Put(bad);
    OpenAndSize();
    ASSERT_FALSE(HasFailure()) << field;
  }
}

TEST_F(BadInput, ALookUpTableBeyondTheFileIsAShortRead) {
  tavi_test::ImageSpec image = tavi_test::GreyImage(2, 2);
  image.bands[0].luts = {Bytes(2)};
  image.fields["NELUT[0]"] = "99998";
  Put(NtfBuilder{image}.Build());
  EXPECT_EQ(OpenAndSize(), ERR_FILE_READ);
}

TEST_F(BadInput, AMaskTableBeyondTheFileIsAShortRead) {
  tavi_test::ImageSpec image = tavi_test::GreyImage(2, 2);
  image.ic = "NM";
  image.mask.block_offsets = {0};
  image.fields = {{"NBPR", "9998"}, {"NBPC", "9998"}};
  Put(NtfBuilder{image}.Build());
  EXPECT_EQ(OpenAndSize(), ERR_FILE_READ);
}

// 9998 x 9998 blocks in 4 bands and 65535 bytes of length: the product passes 32 bits.
TEST_F(BadInput, AMaskTableWhoseSizeWrapsIsAShortRead) {
  tavi_test::ImageSpec image = tavi_test::GreyImage(2, 2);
  image.ic = "NM";
  image.Roles(std::vector<std::string>(43, "  "));
  image.mask.block_offsets = {0};
  image.mask.exact_tables = true;
  image.mask.bmrlnth = 0xFFFF;
  image.fields = {{"NBPR", "9998"}, {"NBPC", "9990"}};
  Put(NtfBuilder{image}.Build());
  EXPECT_EQ(OpenAndSize(), ERR_FILE_READ);
}

TEST_F(BadInput, TooManyBandsAreAShortRead) {
  tavi_test::ImageSpec image = tavi_test::GreyImage(2, 2);
  image.use_xbands = true;
  image.fields["XBANDS"] = "99999";
  Put(NtfBuilder{image}.Build());
  EXPECT_EQ(OpenAndSize(), ERR_FILE_READ);
}

// A length of nearly 4 GiB is what a bilevel image asks memory for at once.
TEST_F(BadInput, ADataLengthBeyondTheFileCostsNoMemory) {
  for (const char* length : {"4294967295", "4294967294", "2147483648", "9999999998", "-999999999"}) {
    for (const bool bilevel : {false, true}) {
      NtfBuilder file{bilevel ? tavi_test::BilevelImage(8, 2, {1, 2}) : tavi_test::GreyImage(8, 2)};
      file.header["LI[0]"] = length;
      Put(file.Build());
      Exercise();
      ASSERT_FALSE(HasFailure()) << length;
    }
  }
}

// Sums of lengths that pass 32 bits lead somewhere, and never before the file.
TEST_F(BadInput, LengthsThatWrapEnd) {
  NtfBuilder file;
  for (uint32_t i = 0; i < 5; ++i) {
    file.images.push_back(tavi_test::GreyImage(2, 2).Level(i + 1));
    file.header["LI[" + std::to_string(i) + "]"] = "4294967290";
    file.header["LISH[" + std::to_string(i) + "]"] = "999998";
  }
  file.texts.resize(1);
  file.data_extensions.resize(1);
  Put(file.Build());
  Exercise();
}

}  // namespace
}  // namespace tavi::documents
