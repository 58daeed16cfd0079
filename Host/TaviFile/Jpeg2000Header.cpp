#include "TaviFile/Jpeg2000Header.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "TaviFile/Plausible.h"

namespace tavi::host {
namespace {

constexpr uint32_t kSoc = 0xFF4F;
constexpr uint32_t kSiz = 0xFF51;
constexpr uint32_t kCod = 0xFF52;
constexpr uint32_t kCoc = 0xFF53;
constexpr uint32_t kSot = 0xFF90;
constexpr uint32_t kSod = 0xFF93;

constexpr uint32_t BoxType(const char (&name)[5]) {
  uint32_t type = 0;
  for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<uint8_t>(name[i]);
  return type;
}

// What the decoder takes for each thing that a stream announces, before it looks at data, in bytes as measured.
// A packet takes time rather than memory: as much as it takes to make so many bytes of the others.
constexpr uint64_t kTileCost = 10240;
constexpr uint64_t kTileComponentCost = 1152;
constexpr uint64_t kPrecinctCost = 768;
constexpr uint64_t kBlockCost = 384;
constexpr uint64_t kSampleCost = 5;
constexpr uint64_t kPacketCost = 64;
// Above this nothing is added up any more; far from overflow, and more than any stream may cost.
constexpr uint64_t kMostThings = uint64_t{1} << 46;

class Reader {
 public:
  explicit Reader(Bytes bytes) : bytes_(bytes) {}

  uint64_t left() const { return bytes_.size() - at_; }
  uint64_t at() const { return at_; }
  void MoveTo(uint64_t at) { at_ = std::min<uint64_t>(at, bytes_.size()); }

  // Big-endian. Reads nothing and yields 0 when the bytes end before.
  uint32_t Number(uint32_t size) {
    if (left() < size) {
      MoveTo(bytes_.size());
      ended_ = true;
      return 0;
    }
    uint32_t value = 0;
    for (uint32_t i = 0; i < size; ++i) value = value << 8 | bytes_[at_++];
    return value;
  }
  bool ended() const { return ended_; }

  Bytes Take(uint64_t size) {
    const uint64_t taken = std::min(size, left());
    at_ += taken;
    return bytes_.subspan(at_ - taken, taken);
  }

 private:
  Bytes bytes_;
  uint64_t at_ = 0;
  bool ended_ = false;
};

uint64_t CeilDivide(uint64_t value, uint64_t divisor) {
  return (value + divisor - 1) / divisor;
}

// Sample points of a component between two places of the reference grid.
uint64_t Points(uint64_t from, uint64_t to, uint64_t step) {
  return CeilDivide(to, step) - CeilDivide(from, step);
}

int32_t ReadSize(Bytes segment, Jpeg2000Stream* picture) {
  Reader reader(segment);
  reader.Number(2);
  const uint64_t right = reader.Number(4);
  const uint64_t bottom = reader.Number(4);
  const uint64_t left = reader.Number(4);
  const uint64_t top = reader.Number(4);
  const uint64_t tile_width = reader.Number(4);
  const uint64_t tile_height = reader.Number(4);
  const uint64_t tile_left = reader.Number(4);
  const uint64_t tile_top = reader.Number(4);
  picture->components = reader.Number(2);
  if (reader.ended() || right <= left || bottom <= top || tile_width == 0 || tile_height == 0 ||
      tile_left > left || tile_top > top || tile_left + tile_width <= left || tile_top + tile_height <= top ||
      picture->components == 0 || picture->components > 16384 ||
      reader.left() < uint64_t{3} * picture->components) {
    return ERR_FILE_FORMAT;
  }
  picture->tiles = CeilDivide(right - tile_left, tile_width) * CeilDivide(bottom - tile_top, tile_height);
  picture->grid = {static_cast<uint32_t>(left),
                   static_cast<uint32_t>(top),
                   static_cast<uint32_t>(right),
                   static_cast<uint32_t>(bottom),
                   255,
                   255};
  Jpeg2000Grid& grid = picture->grid;
  for (uint32_t i = 0; i < picture->components; ++i) {
    const uint32_t depth = (reader.Number(1) & 0x7F) + 1;
    const uint32_t across = reader.Number(1);
    const uint32_t down = reader.Number(1);
    if (across == 0 || down == 0 || depth > 38) return ERR_FILE_FORMAT;
    picture->precision = std::max(picture->precision, depth);
    grid.step_across = std::min(grid.step_across, across);
    grid.step_down = std::min(grid.step_down, down);
    const uint64_t samples = Points(left, right, across) * Points(top, bottom, down);
    picture->coded_samples += samples;
    picture->largest_component = std::max(picture->largest_component, samples);
  }
  // A picture whose components all leave out points of the grid is as large as the finest of them.
  picture->width = static_cast<uint32_t>(Points(left, right, grid.step_across));
  picture->height = static_cast<uint32_t>(Points(top, bottom, grid.step_down));
  if (picture->width == 0 || picture->height == 0) return ERR_FILE_FORMAT;
  return SUCCESS;
}

// The part that COD and COC have in common.
void ReadCodingStyle(Reader* reader, bool has_precincts, Jpeg2000Stream* picture) {
  const uint32_t levels = reader->Number(1);
  const uint32_t block_log = reader->Number(1) + reader->Number(1) + 4;
  reader->Number(2);  // code-block style and wavelet
  picture->levels = std::max(picture->levels, std::min(levels, 32u));
  picture->block_log = std::min(picture->block_log, block_log);
  if (!has_precincts) return;
  for (uint32_t i = 0; i <= levels && reader->left() > 0; ++i) {
    const uint32_t exponents = reader->Number(1);
    picture->precinct_log = std::min(picture->precinct_log, (exponents & 0x0F) + (exponents >> 4));
  }
}

void ReadMarker(uint32_t marker, Bytes segment, Jpeg2000Stream* picture) {
  Reader reader(segment);
  if (marker == kCod) {
    const bool has_precincts = (reader.Number(1) & 1) != 0;
    reader.Number(1);  // progression
    picture->layers = std::max(picture->layers, reader.Number(2));
    if (reader.Number(1) != 0) picture->has_component_transform = true;
    ReadCodingStyle(&reader, has_precincts, picture);
  } else if (marker == kCoc) {
    reader.Number(picture->components < 257 ? 1 : 2);
    const bool has_precincts = (reader.Number(1) & 1) != 0;
    ReadCodingStyle(&reader, has_precincts, picture);
  }
}

// The markers that OpenJPEG 2.5 knows in headers; the list was found by asking it about each.
bool IsKnown(uint32_t marker) {
  constexpr uint8_t kKnown[] = {0x50, 0x51, 0x52, 0x53, 0x55, 0x57, 0x58, 0x59, 0x5C, 0x5D, 0x5E,
                                0x5F, 0x60, 0x61, 0x63, 0x64, 0x74, 0x75, 0x77, 0x78, 0x90, 0x91};
  return (marker >> 8) == 0xFF &&
         std::find(std::begin(kKnown), std::end(kKnown), marker & 0xFF) != std::end(kKnown);
}

// From behind SIZ to the last tile-part's header, as the decoder finds its way. Stops without complaint where the
// stream does.
void ReadCodingParameters(Reader* reader, Jpeg2000Stream* picture) {
  uint64_t part_end = 0;
  bool in_part = false;
  while (reader->left() >= 4) {
    const uint64_t at = reader->at();
    const uint32_t marker = reader->Number(2);
    if (marker == kSod) {
      // A part may be empty, or claim to end before its data begin.
      reader->MoveTo(std::max(part_end, reader->at()));
      continue;
    }
    // In the main header the decoder looks for the next marker that it knows, two bytes at a time.
    if (!in_part && !IsKnown(marker)) continue;
    if (marker < 0xFF00) return;
    const uint32_t length = reader->Number(2);
    if (length < 2) return;
    const Bytes segment = reader->Take(length - 2);
    if (marker == kSot) {
      Reader part(segment);
      part.Number(2);
      const uint64_t size = part.Number(4);
      part_end = size != 0 ? at + size : UINT64_MAX;  // the last part may leave its length open
      in_part = true;
    }
    ReadMarker(marker, segment, picture);
  }
}

int32_t ReadCodestream(Bytes stream, Jpeg2000Stream* picture) {
  Reader reader(stream);
  if (reader.Number(2) != kSoc) return ERR_FILE_FORMAT;
  if (reader.Number(2) != kSiz) return reader.ended() ? ERR_FILE_READ : ERR_FILE_FORMAT;
  const uint32_t length = reader.Number(2);
  if (length < 2) return reader.ended() ? ERR_FILE_READ : ERR_FILE_FORMAT;
  if (reader.left() < length - 2) return ERR_FILE_READ;
  const int32_t status = ReadSize(reader.Take(length - 2), picture);
  if (status != SUCCESS) return status;
  picture->codestream = stream;
  ReadCodingParameters(&reader, picture);
  return SUCCESS;
}

// A palette box stands in the header box; its columns are the components of the picture.
void ReadHeaderBox(Bytes box, Jpeg2000Stream* picture) {
  Reader reader(box);
  while (reader.left() >= 8) {
    const uint32_t length = reader.Number(4);
    const uint32_t type = reader.Number(4);
    if (length < 8) return;
    Reader content(reader.Take(length - 8));
    if (type != BoxType("pclr")) continue;
    content.Number(2);  // entries
    picture->palette_columns = content.Number(1);
    for (uint32_t i = 0; i < picture->palette_columns; ++i) {
      picture->precision = std::max(picture->precision, (content.Number(1) & 0x7F) + 1);
    }
  }
}

int32_t ReadBoxes(Bytes stream, Jpeg2000Stream* picture) {
  Reader reader(stream);
  Bytes header;
  while (reader.left() >= 8) {
    const uint64_t start = reader.at();
    uint64_t length = reader.Number(4);
    const uint32_t type = reader.Number(4);
    if (length == 1) {
      length = uint64_t{reader.Number(4)} << 32;
      length |= reader.Number(4);
    }
    if (length == 0) length = stream.size() - start;
    if (length < reader.at() - start) return ERR_FILE_FORMAT;
    const Bytes content = reader.Take(length - (reader.at() - start));
    if (type == BoxType("jp2h")) header = content;
    if (type != BoxType("jp2c")) continue;
    const int32_t status = ReadCodestream(content, picture);
    if (status != SUCCESS) return status;
    const uint32_t coded = picture->precision;
    ReadHeaderBox(header, picture);
    if (picture->palette_columns == 0) picture->precision = coded;
    return SUCCESS;
  }
  return ERR_FILE_READ;
}

bool BeginsWith(Bytes stream, std::initializer_list<uint8_t> bytes) {
  return stream.size() >= bytes.size() && std::equal(bytes.begin(), bytes.end(), stream.begin());
}

// Precincts of all resolutions, tiles and components together, at the smallest precinct size found.
uint64_t CountPrecincts(const Jpeg2000Stream& picture) {
  const uint64_t of_tiles = picture.tiles * picture.components * (uint64_t{picture.levels} + 1);
  return of_tiles + (picture.coded_samples >> picture.precinct_log) * 2;
}

// Each product is of factors below 2^46 and 2^17: none overflows.
uint64_t Cost(uint64_t count, uint64_t cost) {
  return std::min(count, kMostThings) * cost;
}

// Tiles, precincts and code-blocks are made for components that are left out as well.
uint64_t EstimateMemory(const Jpeg2000Stream& picture, uint64_t samples) {
  const uint64_t precincts = std::min(CountPrecincts(picture), kMostThings);
  // A code-block lies within its precinct, which halves for the bands of a resolution.
  const uint32_t block_log = std::min(picture.block_log, std::max(picture.precinct_log, 2u) - 2);
  return Cost(picture.tiles, kTileCost) + Cost(picture.tiles * picture.components, kTileComponentCost) +
         Cost(precincts, kPrecinctCost) + Cost(precincts * picture.layers, kPacketCost) +
         Cost(picture.coded_samples >> block_log, kBlockCost) + Cost(samples, kSampleCost);
}

}  // namespace

int32_t ReadJpeg2000Header(Bytes stream, Jpeg2000Stream* picture) noexcept {
  *picture = Jpeg2000Stream();
  if (BeginsWith(stream, {0xFF, 0x4F, 0xFF})) return ReadCodestream(stream, picture);
  if (!BeginsWith(stream, {0x00, 0x00, 0x00, 0x0C, 0x6A, 0x50, 0x20, 0x20, 0x0D, 0x0A, 0x87, 0x0A})) {
    return ERR_NOT_SUPPORTED;
  }
  picture->is_jp2 = true;
  return ReadBoxes(stream, picture);
}

int32_t CheckJpeg2000Claim(const Jpeg2000Stream& picture, uint64_t samples) noexcept {
  if (picture.tiles > 65535) return ERR_FILE_FORMAT;
  // The decoder's own picture, of four bytes a sample, may be no larger than a bitmap either.
  constexpr uint64_t kDecoderBytes = 4;
  int32_t status = CheckClaim(picture.width, picture.height, 1, picture.precision <= 8 ? 1 : 2);
  if (status == SUCCESS && !IsWithin(HOST_LIMIT_PICTURE, Times(samples, kDecoderBytes)))
    status = ERR_NO_MEMORY;
  if (status != SUCCESS) return status;
  const bool plausible = IsWithin(HOST_LIMIT_JPEG2000, EstimateMemory(picture, samples),
                                  Jpeg2000Earned(picture.codestream.size()));
  return plausible ? SUCCESS : ERR_FILE_FORMAT;
}

}  // namespace tavi::host
