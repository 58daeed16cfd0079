// Band-sequential streams: one for each band of each block, merged into one colour tile.
#include "ImgEmbedded.h"

namespace tavi {

TAVI_UNIT(L"Common/ImgBandStreams")

namespace {

// The bitmaps of one block's bands. The pointers end in nulls, since the merge is not told how many there
// are.
class BandBitmaps {
 public:
  ~BandBitmaps() { FreePixels(); }

  bool Prepare(uint32_t bands) {
    constexpr uint64_t kLeastPointers = 4;
    if (!records_.Allocate(bands, Here()) || !pointers_.Allocate(bands + kLeastPointers, Here()))
      return false;
    for (uint64_t i = 0; i < bands; ++i) {
      HostInitBitmap(&records_[i], sizeof(HostBitmap), 0, 0, 0);
      pointers_[i] = &records_[i];
    }
    return true;
  }
  // Bands fill the array from its last element to its first.
  HostBitmap* OfBand(uint32_t band) { return pointers_[records_.size() - 1 - band]; }
  HostBitmap** all() { return pointers_.data(); }
  void FreePixels() {
    for (uint64_t i = 0; i < records_.size(); ++i) {
      if ((records_[i].flags & 1) != 0) HostFreeBitmap(&records_[i]);
    }
  }

 private:
  HostArray<HostBitmap> records_;
  HostArray<HostBitmap*> pointers_;
};

class BandStreamDecoder {
 public:
  BandStreamDecoder(FilterLoadContext* context, SegmentJob& job)
      : context_(context), job_(job), finder_(job) {}
  bool Prepare() { return bitmaps_.Prepare(job_.bands); }

  // What ends the decoding is returned; a band that is given up only leaves its mark in `run_status`.
  int32_t Decode(uint64_t block, int32_t& run_status) {
    StreamWalk walk = saved_;
    int32_t block_status = SUCCESS;
    bool loaded = false;
    for (uint32_t band = 0; band < job_.bands; ++band) {
      StreamBytes stream;
      if (IsMasked()) {
        if (job_.image.BlockMask.At(block) == MaskTable::kAbsentBlock)
          break;  // every band has the same entry
      }
      int32_t status =
          IsMasked() ? TakeByMask(block, stream) : finder_.NextStream(&stream, false, true, walk);
      if (band == 0) saved_ = walk;  // the next block's first stream follows this block's first stream
      if (status != SUCCESS) return status;
      status = IdentifyStream(stream);
      if (status != SUCCESS) {
        block_status = status;
        continue;
      }
      status = Load(stream, bitmaps_.OfBand(band));
      if (status != SUCCESS) return status;
      loaded = true;
      SkipStreams(walk);
    }
    run_status = loaded || block_status != SUCCESS ? block_status : run_status;
    const int32_t status = loaded && block_status == SUCCESS ? Merge(block) : SUCCESS;
    bitmaps_.FreePixels();
    return status;
  }

 private:
  bool IsMasked() const { return job_.image.BlockMaskLength != 0; }

  int32_t TakeByMask(uint64_t block, StreamBytes& stream) {
    const uint32_t entry = job_.image.BlockMask.At(block);
    uint32_t next = 0;
    if (NextPresentEntry(job_.image, block, next)) {
      return finder_.ReadStreamBytes(stream, static_cast<int64_t>(entry) + job_.image.DataOffset,
                                     next - entry);
    }
    return finder_.ReadStreamBytes(stream, entry, job_.data_length - entry);
  }

  int32_t Load(const StreamBytes& stream, HostBitmap* bitmap) {
    HostLoadFlagsRecord options{};
    HostLoadOptions(&options, sizeof options);
    if (job_.image.Representation == kRgb || job_.image.Representation == kMulti)
      options.flags |= kComponentsAreRgb;
    return LoadStream(context_, stream.bytes.data(), stream.size, bitmap, &options);
  }

  // The next band's stream is the one as many streams further on as there are bands.
  void SkipStreams(StreamWalk& walk) {
    if (IsMasked()) return;
    for (uint32_t i = 0; i < job_.bands; ++i) {
      const uint32_t before = walk.consumed;
      finder_.NextStream(nullptr, false, true, walk);
      if (walk.consumed == before) return;  // at the end, where every further step gives the same
    }
  }

  int32_t Merge(uint64_t block) {
    constexpr uint32_t kReplace = 800;
    OwnedBitmap merged;
    const int32_t status = HostColorMerge(merged.get(), bitmaps_.all(), sizeof(HostBitmap), 0);
    if (status != SUCCESS) return status;
    merged->order = job_.bitmap->order;
    const auto x = static_cast<int32_t>(block % job_.image.BlocksPerRow * job_.image.BlockWidth);
    const auto y = static_cast<int32_t>(block / job_.image.BlocksPerRow * job_.image.BlockHeight);
    return HostCombineBitmap(job_.bitmap, x, y, merged->width, merged->height, merged.get(), 0, 0, kReplace);
  }

  FilterLoadContext* context_;
  SegmentJob& job_;
  StreamFinder finder_;
  BandBitmaps bitmaps_;
  StreamWalk saved_{.remaining = job_.data_length};
};

}  // namespace

int32_t DecodeBandStreams(FilterLoadContext* context, SegmentJob& job) {
  BandStreamDecoder decoder(context, job);
  if (!decoder.Prepare()) return ERR_NO_MEMORY;
  int32_t run_status = SUCCESS;
  for (uint64_t run = 0; run < job.image.BlocksPerRow; ++run) {
    for (uint64_t i = 0; i < job.image.BlocksPerColumn; ++i) {
      const int32_t status = decoder.Decode(run * job.image.BlocksPerColumn + i, run_status);
      if (status != SUCCESS) return status;
    }
    if (run_status != SUCCESS) return run_status;
  }
  return SUCCESS;
}

}  // namespace tavi
