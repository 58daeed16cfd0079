#include "ImgColour.h"

#include <algorithm>

namespace tavi {

TAVI_UNIT(L"Common/ImgColour")

namespace {

constexpr uint32_t kOrderIndexed = 0;
constexpr uint32_t kOrderBgr = 1;
constexpr uint32_t kOrderGrey = 2;
constexpr uint32_t kPlainBitmap = 1;
constexpr uint32_t kTopDown = 1;

void GiveLookupPalette(HostBitmap* bitmap, const ImSubHdr& image) {
  const uint32_t entries = EffectiveBandCount(image) != 0 ? image.BandLutEntries.At(0) : 0;
  // An indexed bitmap tells no more entries apart.
  constexpr uint64_t kIndexedEntries = 256;
  const uint64_t shown = bitmap->bits <= 8 ? kIndexedEntries : image.Lut.size();
  const auto count = static_cast<uint32_t>(std::min({uint64_t{entries}, image.Lut.size(), shown}));
  const OwnedPalette palette(HostCreatePalette(image.Lut.data(), count), Here());
  if (palette.get() != nullptr) HostSetBitmapPalette(bitmap, palette.get());
}

void GiveDefaultPalette(HostBitmap* bitmap, uint32_t bits) {
  constexpr uint32_t kCopied = 255;  // the last of 256 entries is left as the host made it
  HostPaletteEntry* palette = HostDefaultPalette(bits);
  if (palette == nullptr) return;
  HostPutBitmapColors(bitmap, 0, kCopied, palette);
  HostFreeMem(palette, Here().line, Here().unit);
}

enum class NotFound { kKeep, kLastBand };

// Looks for the first band with the role. The index is limited to the last band, as an unsigned number, found
// or not.
bool FindBand(const ImSubHdr& image, uint32_t role, uint32_t bands, NotFound otherwise, uint32_t& index) {
  const auto known = static_cast<uint32_t>(std::min<uint64_t>(bands, image.BandRoles.size()));
  bool found = false;
  for (uint32_t band = 0; band < known && !found; ++band) {
    if (BandRole(image, band) == role) {
      index = band;
      found = true;
    }
  }
  if (!found && otherwise == NotFound::kLastBand) index = bands - 1;
  index = std::min(index, bands - 1);
  return found;
}

int32_t Select(ImSubHdr& image, BlockGeometry& g, uint32_t bands, const uint32_t (&roles)[3],
               NotFound otherwise) {
  const bool red = FindBand(image, roles[0], bands, otherwise, g.red);
  const bool green = FindBand(image, roles[1], bands, otherwise, g.green);
  const bool blue = FindBand(image, roles[2], bands, otherwise, g.blue);
  if (!red && !green && !blue) return 0;
  if (g.red == g.green || g.green == g.blue || g.red == g.blue) {
    image.BandSelection[0] = static_cast<int32_t>(g.red);
    image.BandSelection[1] = static_cast<int32_t>(g.green);
    image.BandSelection[2] = static_cast<int32_t>(g.blue);
  }
  return 1;
}

}  // namespace

uint32_t SegmentSide(uint32_t block_side, uint32_t blocks) {
  return static_cast<uint32_t>(std::min<uint64_t>(static_cast<uint64_t>(block_side) * blocks, UINT32_MAX));
}

int32_t CreateSegmentBitmap(HostBitmap* bitmap, const ImSubHdr& image) {
  uint32_t bits = (EffectiveBandCount(image) > 1 ? 3U : 1U) * image.SampleBits;
  if (image.Representation == kMono && (bits == 32 || bits == 64)) bits = 8;
  const int32_t status = HostCreateBitmap(
      bitmap, sizeof *bitmap, kPlainBitmap, SegmentSide(image.BlockWidth, image.BlocksPerRow),
      SegmentSide(image.BlockHeight, image.BlocksPerColumn), bits, kOrderBgr, nullptr, kTopDown, nullptr, 0);
  if (status != SUCCESS) return status;
  bitmap->order = image.Representation > kMono ? kOrderBgr : kOrderGrey;
  if (bits == 1) bitmap->order = kOrderIndexed;
  if (image.Lut.exists() && bits <= 16) {
    GiveLookupPalette(bitmap, image);
  } else if (image.SampleBits <= 8) {
    GiveDefaultPalette(bitmap, image.SampleBits);
  } else if (image.SampleBits == 32 || image.SampleBits == 64) {
    GiveDefaultPalette(bitmap, 8);
  }
  if (bits == 8) bitmap->order = kOrderIndexed;
  return SUCCESS;
}

int32_t SelectColourBands(ImSubHdr& image, BlockGeometry& geometry, uint32_t bands) {
  return Select(image, geometry, bands, {kRoleRed, kRoleGreen, kRoleBlue}, NotFound::kKeep);
}
int32_t SelectLumaBands(ImSubHdr& image, BlockGeometry& geometry, uint32_t bands) {
  return Select(image, geometry, bands, {kRoleLuma, kRoleCb, kRoleCr}, NotFound::kLastBand);
}
int32_t SelectLookupBand(ImSubHdr& image, BlockGeometry& geometry, uint32_t bands) {
  return Select(image, geometry, bands, {kRoleLookup, kRoleLookup, kRoleLookup}, NotFound::kLastBand);
}
int32_t SelectMonoBand(ImSubHdr& image, BlockGeometry& geometry, uint32_t bands) {
  return Select(image, geometry, bands, {kRoleMono, kRoleMono, kRoleMono}, NotFound::kLastBand);
}

void ChooseBands(ImSubHdr& image, BlockGeometry& geometry, uint32_t bands) {
  if (SelectColourBands(image, geometry, bands) != 0 || SelectLumaBands(image, geometry, bands) != 0 ||
      SelectLookupBand(image, geometry, bands) != 0 || SelectMonoBand(image, geometry, bands) != 0) {
    return;
  }
  const auto& remembered = image.BandSelection;
  const bool set = remembered[0] != -1 && remembered[1] != -1 && remembered[2] != -1;
  geometry.red = set ? static_cast<uint32_t>(remembered[0]) : 0;
  geometry.green = set ? static_cast<uint32_t>(remembered[1]) : 1;
  geometry.blue = set ? static_cast<uint32_t>(remembered[2]) : 2;
}

}  // namespace tavi
