// What bitmap a segment becomes, and which bands feed the output channels.
#include "ImgColour.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>

#include "UnitTest.h"

namespace {

struct PutColors {
  uint32_t first = 0;
  uint32_t count = 0;
  uint32_t calls = 0;
};
PutColors g_put;

}  // namespace

// Stands before the host's own, so that a test sees how many entries the library writes.
void HostPutBitmapColors(HostBitmap* bitmap, uint32_t first, uint32_t count,
                         const HostPaletteEntry* entries) {
  using Function = void (*)(HostBitmap*, uint32_t, uint32_t, const HostPaletteEntry*);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "HostPutBitmapColors"));
  g_put = {first, count, g_put.calls + 1};
  real(bitmap, first, count, entries);
}

namespace {

using tavi::BlockGeometry;
using tavi::ImSubHdr;
using namespace unit;

// ---- The segment bitmap ----

class SegmentBitmapTest : public UnitTest {
 protected:
  static void Shape(ImSubHdr& image, uint32_t bands, uint32_t representation, uint32_t bits) {
    image.BandField = bands < 10 ? bands : 0;
    if (bands >= 10) std::memcpy(image.Text.XBANDS, tavi_test::Digits(bands, 5).c_str(), 6);
    image.Representation = representation;
    image.SampleBits = bits;
    image.BlocksPerRow = 3;
    image.BlocksPerColumn = 2;
    image.BlockWidth = 5;
    image.BlockHeight = 7;
  }
  static std::vector<uint32_t> Palette(const HostBitmap* bitmap) {
    std::vector<HostPaletteEntry> entries(bitmap->color_count);
    HostGetBitmapColors(bitmap, 0, bitmap->color_count, entries.data());
    std::vector<uint32_t> colours;
    for (const HostPaletteEntry& e : entries) {
      colours.push_back(static_cast<uint32_t>(e.red) << 16 | static_cast<uint32_t>(e.green) << 8 | e.blue);
    }
    return colours;
  }
  static void GiveLut(ImSubHdr& image, uint32_t entries, uint32_t first_band_entries) {
    ASSERT_TRUE(image.Lut.Allocate(256, {}));
    for (uint32_t i = 0; i < entries; ++i) {
      image.Lut[i] = {static_cast<uint8_t>(i * 3), static_cast<uint8_t>(i * 5), static_cast<uint8_t>(200 - i),
                      0};
    }
    ASSERT_TRUE(image.BandLutEntries.Allocate(1, {}));
    image.BandLutEntries[0] = first_band_entries;
  }
  static uint32_t LutColour(uint32_t i) { return (200 - i) % 256 << 16 | i * 5 % 256 << 8 | i * 3 % 256; }
};

bool IsHostDepth(uint32_t bits) {
  return (bits >= 1 && bits <= 8) || bits == 12 || bits == 16 || bits == 24 || bits == 32 || bits == 48 ||
         bits == 64;
}

TEST_F(SegmentBitmapTest, DepthAndOrderFollowBandsRepresentationAndSampleDepth) {
  for (const uint32_t bands : {0U, 1U, 2U, 3U, 9U, 12U}) {
    for (uint32_t representation = 0; representation <= 8; ++representation) {
      for (uint32_t bits = 0; bits <= 66; ++bits) {
        SCOPED_TRACE(testing::Message() << bands << " bands, IREP " << representation << ", NBPP " << bits);
        ImSubHdr image(nullptr);
        Shape(image, bands, representation, bits);
        uint32_t depth = (bands > 1 ? 3 : 1) * bits;
        if (representation == 0 && (depth == 32 || depth == 64)) depth = 8;
        tavi::OwnedBitmap bitmap;
        const int32_t status = tavi::CreateSegmentBitmap(bitmap.get(), image);
        ASSERT_EQ(status, IsHostDepth(depth) ? SUCCESS : ERR_INVALID_BPP);
        if (status != SUCCESS) continue;
        EXPECT_EQ(bitmap->bits, depth);
        const uint32_t order = depth == 1 || depth == 8 ? 0 : representation > 0 ? 1 : 2;
        EXPECT_EQ(bitmap->order, order);
        EXPECT_EQ(bitmap->width, 15U);
        EXPECT_EQ(bitmap->height, 14U);
        EXPECT_EQ(bitmap->view_perspective, 1U);
        EXPECT_EQ(bitmap->flags & 1, 1);
      }
    }
  }
}

// The table of results, row by row.
TEST_F(SegmentBitmapTest, ResultingBitmaps) {
  constexpr uint32_t kMono = 0;
  constexpr uint32_t kOther = 2;
  struct {
    uint32_t bands, irep, nbpp, bits, order;
  } const kRows[] = {
      {1, kMono, 1, 1, 0},    {1, kMono, 8, 8, 0},    {1, kMono, 12, 12, 2},  {1, kMono, 16, 16, 2},
      {1, kMono, 32, 8, 0},   {1, kMono, 64, 8, 0},   {1, kOther, 8, 8, 0},   {1, kOther, 12, 12, 1},
      {1, kOther, 16, 16, 1}, {1, kOther, 32, 32, 1}, {1, kOther, 64, 64, 1}, {2, kMono, 8, 24, 2},
      {2, kOther, 8, 24, 1},  {3, kMono, 16, 48, 2},  {5, kOther, 16, 48, 1}, {3, kOther, 4, 12, 1}};
  for (const auto& row : kRows) {
    ImSubHdr image(nullptr);
    Shape(image, row.bands, row.irep, row.nbpp);
    tavi::OwnedBitmap bitmap;
    ASSERT_EQ(tavi::CreateSegmentBitmap(bitmap.get(), image), SUCCESS);
    EXPECT_EQ(bitmap->bits, row.bits);
    EXPECT_EQ(bitmap->order, row.order);
  }
}

TEST_F(SegmentBitmapTest, DefaultPaletteIsOfTheSampleDepthAndItsLastEntryIsNotWritten) {
  struct {
    uint32_t bands, irep, nbpp;
    uint32_t palette_depth;  // 0: none
  } const kCases[] = {{1, 0, 1, 1},  {1, 0, 4, 4},  {1, 1, 8, 8},  {3, 1, 8, 8},
                      {2, 1, 1, 1},  {2, 1, 2, 2},  {1, 0, 32, 8}, {1, 0, 64, 8},
                      {1, 1, 32, 8}, {1, 0, 12, 0}, {1, 0, 16, 0}, {3, 1, 16, 0}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.bands << " bands, NBPP " << c.nbpp);
    ImSubHdr image(nullptr);
    Shape(image, c.bands, c.irep, c.nbpp);
    tavi::OwnedBitmap bitmap;
    g_put = {};
    ASSERT_EQ(tavi::CreateSegmentBitmap(bitmap.get(), image), SUCCESS);
    EXPECT_EQ(g_put.calls, c.palette_depth != 0 ? 1U : 0U);
    if (c.palette_depth == 0) continue;
    EXPECT_EQ(g_put.first, 0U);
    EXPECT_EQ(g_put.count, 255U);
    if (bitmap->bits > 8) continue;
    HostPaletteEntry* standard = HostDefaultPalette(c.palette_depth);
    const std::vector<uint32_t> palette = Palette(bitmap.get());
    ASSERT_EQ(palette.size(), size_t{1} << bitmap->bits);
    for (size_t i = 0; i < palette.size() && i < 255; ++i)
      EXPECT_EQ(palette[i] & 0xFF, standard[i].blue) << i;
    HostFreeMem(standard, 0, nullptr);
  }
}

TEST_F(SegmentBitmapTest, LookupTableIsThePaletteUpToSixteenBits) {
  for (const uint32_t bits : {1U, 4U, 8U, 12U, 16U}) {
    const uint32_t entries = std::min(1U << bits, 200U);
    ImSubHdr image(nullptr);
    Shape(image, 1, 2, bits);
    GiveLut(image, entries, entries);
    tavi::OwnedBitmap bitmap;
    g_put = {};
    ASSERT_EQ(tavi::CreateSegmentBitmap(bitmap.get(), image), SUCCESS);
    EXPECT_EQ(g_put.calls, 0U) << "no default palette besides";
    const std::vector<uint32_t> palette = Palette(bitmap.get());
    ASSERT_GE(palette.size(), entries);
    for (uint32_t i = 0; i < entries; ++i) EXPECT_EQ(palette[i], LutColour(i)) << bits << " " << i;
  }
}

TEST_F(SegmentBitmapTest, LookupTableOfADeeperBitmapIsIgnored) {
  ImSubHdr image(nullptr);
  Shape(image, 3, 1, 8);
  GiveLut(image, 200, 200);
  tavi::OwnedBitmap bitmap;
  g_put = {};
  ASSERT_EQ(tavi::CreateSegmentBitmap(bitmap.get(), image), SUCCESS);
  EXPECT_EQ(bitmap->bits, 24U);
  EXPECT_EQ(bitmap->color_count, 0U);
  EXPECT_EQ(g_put.calls, 1U) << "the default palette takes its place";
}

// The number of entries is that of band 0, whichever band the table came from.
TEST_F(SegmentBitmapTest, EntriesAreCountedInTheFirstBand) {
  ImSubHdr image(nullptr);
  Shape(image, 1, 2, 8);
  GiveLut(image, 200, 3);
  tavi::OwnedBitmap bitmap;
  ASSERT_EQ(tavi::CreateSegmentBitmap(bitmap.get(), image), SUCCESS);
  const std::vector<uint32_t> palette = Palette(bitmap.get());
  EXPECT_EQ(palette[2], LutColour(2));
  EXPECT_NE(palette[3], LutColour(3));
}

TEST_F(SegmentBitmapTest, CountThatIsTooLargeReadsNoFurtherThanTheTable) {
  ImSubHdr image(nullptr);
  Shape(image, 1, 2, 8);
  GiveLut(image, 200, 99999);
  tavi::OwnedBitmap bitmap;
  EXPECT_EQ(tavi::CreateSegmentBitmap(bitmap.get(), image), SUCCESS);
}

TEST_F(SegmentBitmapTest, SizesThatNoBitmapHasAreRefused) {
  ImSubHdr image(nullptr);
  Shape(image, 1, 0, 8);
  image.BlocksPerRow = 0;
  tavi::OwnedBitmap none;
  EXPECT_LT(tavi::CreateSegmentBitmap(none.get(), image), SUCCESS);
  image.BlocksPerRow = 0xFFFFFFFF;  // from a field of "-001"
  tavi::OwnedBitmap vast;
  EXPECT_LT(tavi::CreateSegmentBitmap(vast.get(), image), SUCCESS);
}

// ---- The band choice, against a literal restatement ----

using Roles = std::vector<uint32_t>;
using Bands = std::array<uint32_t, 3>;
using Memory = std::array<int32_t, 3>;

struct Choice {
  Bands bands;
  Memory memory;
  bool found = false;
  friend bool operator==(const Choice&, const Choice&) = default;
};

void PrintTo(const Choice& c, std::ostream* out) {
  *out << c.found << " " << testing::PrintToString(c.bands) << " " << testing::PrintToString(c.memory);
}

// `missing_is_last`: a search that finds nothing sets the index to the last band, else it leaves it.
Choice ReferenceSelect(const Roles& roles, Choice choice, const std::array<uint32_t, 3>& wanted,
                       bool missing_is_last) {
  const auto last = static_cast<uint32_t>(roles.size()) - 1;
  choice.found = false;
  for (size_t channel = 0; channel < 3; ++channel) {
    bool found = false;
    for (uint32_t band = 0; band < roles.size(); ++band) {
      if (roles[band] != wanted[channel]) continue;
      choice.bands[channel] = band;
      found = true;
      break;
    }
    if (!found && missing_is_last) choice.bands[channel] = last;
    if (choice.bands[channel] > last) choice.bands[channel] = last;
    choice.found = choice.found || found;
  }
  const Bands& b = choice.bands;
  if (choice.found && (b[0] == b[1] || b[1] == b[2] || b[0] == b[2])) {
    for (size_t i = 0; i < 3; ++i) choice.memory[i] = static_cast<int32_t>(b[i]);
  }
  return choice;
}

Choice ReferenceColour(const Roles& roles, const Choice& c) {
  return ReferenceSelect(roles, c, {2, 3, 4}, false);
}
Choice ReferenceLuma(const Roles& roles, const Choice& c) {
  return ReferenceSelect(roles, c, {6, 7, 8}, true);
}
Choice ReferenceLookup(const Roles& roles, const Choice& c) {
  return ReferenceSelect(roles, c, {1, 1, 1}, true);
}
Choice ReferenceMono(const Roles& roles, const Choice& c) {
  return ReferenceSelect(roles, c, {5, 5, 5}, true);
}

Choice ReferenceChoose(const Roles& roles, Choice c) {
  for (const auto select : {ReferenceColour, ReferenceLuma, ReferenceLookup, ReferenceMono}) {
    c = select(roles, c);
    if (c.found) return c;
  }
  const bool set = c.memory[0] != -1 && c.memory[1] != -1 && c.memory[2] != -1;
  for (size_t i = 0; i < 3; ++i)
    c.bands[i] = set ? static_cast<uint32_t>(c.memory[i]) : static_cast<uint32_t>(i);
  return c;
}

class BandChoiceTest : public UnitTest {
 protected:
  void Load(const Roles& roles, const Choice& from) {
    image_.BandField = static_cast<uint32_t>(roles.size());
    std::memset(image_.Text.XBANDS, 0, sizeof image_.Text.XBANDS);
    if (!roles.empty() && image_.BandRoles.size() != roles.size()) {
      ASSERT_TRUE(image_.BandRoles.Allocate(roles.size(), {}));
    }
    if (roles.empty()) image_.BandRoles.Release();
    for (size_t i = 0; i < roles.size(); ++i) image_.BandRoles[i] = roles[i];
    for (size_t i = 0; i < 3; ++i) image_.BandSelection[i] = from.memory[i];
    geometry_.red = from.bands[0];
    geometry_.green = from.bands[1];
    geometry_.blue = from.bands[2];
  }
  [[nodiscard]] Choice Now(bool found) const {
    return {{geometry_.red, geometry_.green, geometry_.blue},
            {image_.BandSelection[0], image_.BandSelection[1], image_.BandSelection[2]},
            found};
  }
  void TearDown() override {
    image_.BandRoles.Release();
    UnitTest::TearDown();
  }
  void ExpectAll(const Roles& roles, const Choice& from) {
    struct {
      int32_t (*select)(ImSubHdr&, BlockGeometry&, uint32_t);
      Choice (*reference)(const Roles&, const Choice&);
    } const kSelects[] = {{tavi::SelectColourBands, ReferenceColour},
                          {tavi::SelectLumaBands, ReferenceLuma},
                          {tavi::SelectLookupBand, ReferenceLookup},
                          {tavi::SelectMonoBand, ReferenceMono}};
    const auto bands = static_cast<uint32_t>(roles.size());
    for (const auto& s : kSelects) {
      Load(roles, from);
      const int32_t found = s.select(image_, geometry_, bands);
      ASSERT_EQ(Now(found == 1), s.reference(roles, from)) << testing::PrintToString(roles);
      ASSERT_TRUE(found == 0 || found == 1);
    }
    Load(roles, from);
    tavi::ChooseBands(image_, geometry_, bands);
    Choice expected = ReferenceChoose(roles, from);
    ASSERT_EQ(Now(expected.found), expected) << testing::PrintToString(roles);
  }

  ImSubHdr image_{nullptr};
  BlockGeometry geometry_;
};

const Memory kUnset = {-1, -1, -1};

// Up to four bands with every combination of roles, from what the interleave orders begin with.
TEST_F(BandChoiceTest, EveryCombinationOfRoles) {
  const Choice kStarts[] = {
      {{0, 0, 0}, kUnset}, {{0, 1, 2}, kUnset}, {{0, 0, 0}, {3, 1, 0}}, {{0, 1, 2}, {3, -1, 0}}};
  for (size_t bands = 0; bands <= 4; ++bands) {
    size_t combinations = 1;
    for (size_t i = 0; i < bands; ++i) combinations *= 9;
    for (size_t combination = 0; combination < combinations; ++combination) {
      Roles roles(bands);
      size_t rest = combination;
      for (uint32_t& role : roles) {
        role = static_cast<uint32_t>(rest % 9);
        rest /= 9;
      }
      for (const Choice& start : kStarts) {
        ExpectAll(roles, start);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST_F(BandChoiceTest, MissingBlueKeepsItsEntryValue) {
  // From zeros blue stays 0, the same as red, and the choice is remembered.
  Load({2, 3, 0}, {{0, 0, 0}, kUnset});
  tavi::ChooseBands(image_, geometry_, 3);
  EXPECT_EQ(Now(true), (Choice{{0, 1, 0}, {0, 1, 0}, true}));
  // From 0, 1, 2 it stays 2, and nothing is written.
  Load({2, 3, 0}, {{0, 1, 2}, kUnset});
  tavi::ChooseBands(image_, geometry_, 3);
  EXPECT_EQ(Now(true), (Choice{{0, 1, 2}, kUnset, true}));
}

TEST_F(BandChoiceTest, OneBandCollapsesAllThree) {
  Load({2}, {{0, 1, 2}, kUnset});
  tavi::ChooseBands(image_, geometry_, 1);
  EXPECT_EQ(Now(true), (Choice{{0, 0, 0}, {0, 0, 0}, true}));
}

TEST_F(BandChoiceTest, NoBandsLeaveTheIndicesOfAColourSearch) {
  Load({}, {{7, 8, 9}, kUnset});
  EXPECT_EQ(tavi::SelectColourBands(image_, geometry_, 0), 0);
  EXPECT_EQ(Now(false), (Choice{{7, 8, 9}, kUnset, false}));
}

TEST_F(BandChoiceTest, RolesBeyondTheFirstOfTheirKindAreNotLookedAt) {
  Load({6, 3, 2, 4, 2}, {{0, 1, 2}, kUnset});
  tavi::ChooseBands(image_, geometry_, 5);
  EXPECT_EQ(Now(true), (Choice{{2, 1, 3}, kUnset, true})) << "a Y beside R, G and B counts for nothing";
  Load({0, 5, 1, 5}, {{0, 1, 2}, kUnset});
  tavi::ChooseBands(image_, geometry_, 4);
  EXPECT_EQ(Now(true), (Choice{{2, 2, 2}, {2, 2, 2}, true})) << "M is tried after LU";
}

TEST_F(BandChoiceTest, LumaGoesToRedAndTheDifferencesBehind) {
  Load({8, 6, 7}, {{0, 1, 2}, kUnset});
  tavi::ChooseBands(image_, geometry_, 3);
  EXPECT_EQ(Now(true), (Choice{{1, 2, 0}, kUnset, true}));
  Load({0, 6, 0, 0}, {{0, 1, 2}, kUnset});
  tavi::ChooseBands(image_, geometry_, 4);
  EXPECT_EQ(Now(true), (Choice{{1, 3, 3}, {1, 3, 3}, true})) << "what is missing becomes the last band";
}

// A later decode without roles falls back to what an earlier one remembered.
TEST_F(BandChoiceTest, SelectionIsRememberedAcrossDecodes) {
  Load({0, 5, 0}, {{0, 1, 2}, kUnset});
  tavi::ChooseBands(image_, geometry_, 3);
  for (uint64_t i = 0; i < 3; ++i) image_.BandRoles[i] = 0;
  for (int decode = 0; decode < 2; ++decode) {
    geometry_.red = geometry_.green = geometry_.blue = 0;
    tavi::ChooseBands(image_, geometry_, 3);
    EXPECT_EQ(Now(false), (Choice{{1, 1, 1}, {1, 1, 1}, false}));
  }
}

TEST_F(BandChoiceTest, WithoutRolesAndMemoryTheFirstThreeBandsAreTaken) {
  Load({0, 0, 0, 0}, {{3, 3, 3}, kUnset});
  tavi::ChooseBands(image_, geometry_, 4);
  EXPECT_EQ(Now(false), (Choice{{0, 1, 2}, kUnset, false}));
}

TEST_F(BandChoiceTest, SegmentSideDoesNotWrap) {
  EXPECT_EQ(tavi::SegmentSide(8, 9), 72U);
  EXPECT_EQ(tavi::SegmentSide(0xFFFFFFFF, 2), 0xFFFFFFFFU);
  EXPECT_EQ(tavi::SegmentSide(65536, 65536), 0xFFFFFFFFU);
}

}  // namespace
