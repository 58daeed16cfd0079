#include "ImgEmbedded.h"

#include <algorithm>

#include "Limits.h"

namespace tavi {

TAVI_UNIT(L"Common/ImgEmbedded")

namespace {

constexpr uint32_t kReplace = 800;
constexpr uint32_t kCodedDepth = 0;
constexpr uint32_t kGreyOrBgr = 4;

// The start that every stream of a several-band image after the first decoded one is given: SOI, and an APP6
// segment with the identifier "NITF".
constexpr uint8_t kStreamHeader[] = {0xFF, 0xD8, 0xFF, 0xE6, 0x00, 0x19, 'N',  'I',  'T',
                                     'F',  0x00, 0x02, 0x00, 'B',  0x00, 0x02, 0x00, 0x02,
                                     0x03, 0x08, 0x00, 0x01, 0x00, 0x03, 0x08, 0x01, 0x01};
static_assert(sizeof kStreamHeader == 27);

// Replaces the stream by the header and the bytes from `offset`. A failure leaves the stream as it was.
int32_t PrependStreamHeader(SegmentJob& job, StreamBytes& stream, int64_t offset) {
  if (!job.Holds(offset, stream.size)) return ERR_FILE_READ;
  HostArray<uint8_t> extended;
  if (!extended.Allocate(sizeof kStreamHeader + static_cast<uint64_t>(stream.size), Here()))
    return ERR_NO_MEMORY;
  HostMemCopy(extended.data(), kStreamHeader, sizeof kStreamHeader);
  if (!job.Read(offset, extended.data() + sizeof kStreamHeader, stream.size)) return ERR_FILE_READ;
  stream.bytes = std::move(extended);
  stream.size += static_cast<uint32_t>(sizeof kStreamHeader);
  return SUCCESS;
}

// One stream after another, each into the place of its block.
class TileDecoder {
 public:
  TileDecoder(FilterLoadContext* context, SegmentJob& job)
      : context_(context), job_(job), finder_(job), identifier_(job, 1) {}

  // What ends the decoding is returned; a block that is given up only leaves its mark in `run_status`.
  int32_t Decode(uint64_t block, int32_t& run_status) {
    if (job_.image.BlockMaskLength != 0 && job_.image.BlockMask.At(block) == MaskTable::kAbsentBlock)
      return SUCCESS;
    StreamBytes stream;
    int32_t status = job_.image.BlockMaskLength != 0 ? TakeByMask(block, stream) : TakeByScan(block, stream);
    if (status != SUCCESS) return status;
    run_status = identifier_.Identify(stream);
    if (run_status != SUCCESS) return SUCCESS;
    if (identifier_.claims_too_much()) return ERR_FILE_FORMAT;
    HostLoadFlagsRecord options{};
    SetOptions(stream, options);
    OwnedBitmap tile;
    status = LoadStream(context_, stream.bytes.data(), stream.size, tile.get(), &options);
    if (status != SUCCESS) return status;
    tile->order = job_.bitmap->order;
    const auto x = static_cast<int32_t>(block % job_.image.BlocksPerRow * job_.image.BlockWidth);
    const auto y = static_cast<int32_t>(block / job_.image.BlocksPerRow * job_.image.BlockHeight);
    status = HostCombineBitmap(job_.bitmap, x, y, tile->width, tile->height, tile.get(), 0, 0, kReplace);
    if (status == SUCCESS) ++decoded_;
    return status;
  }

 private:
  // The entry is the stream's offset, the next present entry its end. Behind the last entry the last stream
  // is taken.
  int32_t TakeByMask(uint64_t block, StreamBytes& stream) {
    const uint32_t entry = job_.image.BlockMask.At(block);
    const int64_t pixels = job_.image.DataOffset;
    uint32_t next = 0;
    if (NextPresentEntry(job_.image, block, next))
      return finder_.ReadStreamBytes(stream, entry + pixels, next - entry);
    uint32_t size = 0;
    // A search without a hit leaves an empty stream, which is then not identified.
    if (finder_.FindLastStream(size) == ERR_NO_MEMORY) return ERR_NO_MEMORY;
    return finder_.ReadStreamBytes(stream, static_cast<int64_t>(job_.data_length) - size, size);
  }

  int32_t TakeByScan(uint64_t block, StreamBytes& stream) {
    const uint64_t blocks = static_cast<uint64_t>(job_.image.BlocksPerRow) * job_.image.BlocksPerColumn;
    return finder_.NextStream(&stream, block + 1 == blocks, false, walk_);
  }

  void SetOptions(StreamBytes& stream, HostLoadFlagsRecord& options) {
    HostLoadOptions(&options, sizeof options);
    if (job_.image.Representation == kRgb) options.flags |= kComponentsAreRgb;
    if (job_.image.Representation != kMulti) return;
    // With a block mask nothing counts as consumed, so the stream's place comes out before the data and it
    // stays as it is, without the choice of bands.
    const int64_t offset = static_cast<int64_t>(job_.image.DataOffset) - stream.size + walk_.consumed;
    if (decoded_ == 0 || PrependStreamHeader(job_, stream, offset) == SUCCESS) RequestBands(job_, options);
  }

  FilterLoadContext* context_;
  SegmentJob& job_;
  StreamFinder finder_;
  StreamIdentifier identifier_;
  StreamWalk walk_{.remaining = job_.data_length};
  uint64_t decoded_ = 0;
};

int32_t DecodeEmbeddedTiles(FilterLoadContext* context, SegmentJob& job) {
  return job.bands >= 2 && job.image.Mode == kSequential ? DecodeBandStreams(context, job)
                                                         : DecodeStreamTiles(context, job);
}

}  // namespace

int32_t LoadStream(FilterLoadContext* context, const uint8_t* stream, uint64_t size, HostBitmap* bitmap,
                   HostLoadFlagsRecord* options) {
  const HostLoadMemoryEntry load = context != nullptr ? context->load_memory : HostLoadMemory;
  return load(stream, bitmap, sizeof *bitmap, kCodedDepth, kGreyOrBgr, size, options, nullptr);
}

StreamIdentifier::StreamIdentifier(const SegmentJob& job, uint32_t copies) {
  const uint64_t area = static_cast<uint64_t>(job.bitmap->width) * job.bitmap->height;
  earned_ = area * copies * kStreamClaimOfPixel + job.data_length;
}

int32_t StreamIdentifier::Identify(const StreamBytes& stream) {
  constexpr uint32_t kAccepted[] = {10, 11, 21, 22, 23, 24, 5, 165, 26};
  HostFileInfo information{};
  if (stream.size == 0 || HostFileInfoMemory(stream.bytes.data(), &information, sizeof information,
                                             stream.size, 0, 0) != SUCCESS) {
    return ERR_UNSUPPORTED_COMPRESSION;
  }
  Count(static_cast<uint64_t>(information.width) * information.height + stream.size);
  const uint32_t format = information.format;
  const bool accepted = std::find(std::begin(kAccepted), std::end(kAccepted), format) != std::end(kAccepted);
  return accepted ? SUCCESS : ERR_UNSUPPORTED_COMPRESSION;
}

void RequestBands(SegmentJob& job, HostLoadFlagsRecord& options) {
  BlockGeometry geometry;
  geometry.green = 1;
  geometry.blue = 2;
  ChooseBands(job.image, geometry, job.bands);
  options.flags |= kTakeChosenBands;
  options.red_band = geometry.red;
  options.green_band = geometry.green;
  options.blue_band = geometry.blue;
}

int32_t DecodeStreamTiles(FilterLoadContext* context, SegmentJob& job) {
  TileDecoder decoder(context, job);
  return DecodeRuns(job, decoder);
}

int32_t DecodeEmbedded(FilterLoadContext* context, SegmentJob& job) {
  const ImSubHdr& image = job.image;
  const bool one_stream = image.Compression == kC8 || image.Compression == kM8;
  if (!one_stream && (image.BlocksPerRow > 1 || image.BlocksPerColumn >= 2))
    return DecodeEmbeddedTiles(context, job);
  if (image.DataOffset > job.data_length) return ERR_FILE_READ;
  StreamBytes stream;
  StreamFinder finder(job);
  const int32_t status = finder.ReadStreamBytes(stream, image.DataOffset, job.data_length - image.DataOffset);
  if (status != SUCCESS) return status;
  HostLoadFlagsRecord options{};
  HostLoadOptions(&options, sizeof options);
  if (image.Representation == kRgb) options.flags |= kComponentsAreRgb;
  if (image.Representation == kMulti) RequestBands(job, options);
  // The load fills the record afresh: the bitmap takes the decoder's size and depth.
  if ((job.bitmap->flags & 1) != 0) HostFreeBitmap(job.bitmap);
  return LoadStream(context, stream.bytes.data(), stream.size, job.bitmap, &options);
}

}  // namespace tavi
