// Band-sequential streams: one for each band of each block, merged into one colour tile.
#include <algorithm>

#include "ImgEmbedded.h"

namespace tavi {

namespace {

// The bitmaps of one block's bands, in the order in which the merge takes them: the last band first. It looks
// at three, so no more are kept, and a null ends them.
class BandBitmaps {
 public:
  explicit BandBitmaps(uint32_t bands) : bands_(bands) {
    for (uint32_t i = 0; i < std::min(bands, kMerged); ++i) pointers_[i] = records_[i].get();
  }
  HostBitmap* OfBand(uint32_t band) {
    const uint32_t place = bands_ - 1 - band;
    return place < kMerged ? records_[place].get() : unmerged_.get();
  }
  HostBitmap** all() { return pointers_; }
  // With a block mask all bands are the same stream: one bitmap serves for all.
  void ShareBand(uint32_t band) {
    for (uint32_t i = 0; i < std::min(bands_, kMerged); ++i) pointers_[i] = OfBand(band);
  }
  void FreePixels() {
    for (OwnedBitmap& record : records_) record.Free();
    unmerged_.Free();
  }

 private:
  static constexpr uint32_t kMerged = 3;
  uint32_t bands_;
  OwnedBitmap records_[kMerged];
  OwnedBitmap unmerged_;  // of the bands before: loaded for their status alone
  HostBitmap* pointers_[kMerged + 1] = {};
};

class BandStreamDecoder {
 public:
  BandStreamDecoder(FilterLoadContext* context, SegmentJob& job)
      : context_(context), job_(job), finder_(job), identifier_(job, job.bands), bitmaps_(job.bands) {}

  // What ends the decoding is returned; a band that is given up only leaves its mark in `run_status`.
  int32_t Decode(uint64_t block, int32_t& run_status) {
    const bool masked = job_.image.BlockMaskLength != 0;
    if (masked && job_.image.BlockMask.At(block) == MaskTable::kAbsentBlock) return SUCCESS;
    if (!repeats_) {
      complete_ = true;
      const int32_t status = masked ? LoadByMask(block) : LoadByScan();
      if (status != SUCCESS) return status;
      if (complete_) {
        const int32_t merged = HostColorMerge(merged_.get(), bitmaps_.all(), sizeof(HostBitmap), 0);
        if (merged != SUCCESS) return merged;
      }
      bitmaps_.FreePixels();
    } else if (!identifier_.Claim(static_cast<uint64_t>(merged_->width) * merged_->height)) {
      return ERR_FILE_FORMAT;
    }
    run_status = complete_ ? SUCCESS : ERR_UNSUPPORTED_COMPRESSION;
    return complete_ ? Combine(block) : SUCCESS;
  }

 private:
  int32_t LoadByMask(uint64_t block) {
    StreamBytes stream;
    const uint32_t entry = job_.image.BlockMask.At(block);
    uint32_t next = 0;
    const int32_t status =
        NextPresentEntry(job_.image, block, next)
            ? finder_.ReadStreamBytes(stream, static_cast<int64_t>(entry) + job_.image.DataOffset,
                                      next - entry)
            : finder_.ReadStreamBytes(stream, entry, job_.data_length - entry);
    if (status != SUCCESS) return status;
    bitmaps_.ShareBand(0);
    return LoadIfAccepted(stream, bitmaps_.OfBand(0), complete_);
  }

  int32_t LoadByScan() {
    StreamWalk walk = saved_;
    for (uint32_t band = 0; band < job_.bands; ++band) {
      StreamBytes stream;
      int32_t status = finder_.NextStream(&stream, false, true, walk);
      if (status != SUCCESS) return status;
      if (band == 0) {
        // The next block's first stream follows this block's. Behind the last stream nothing moves any more: every
        // further block shows what this one does.
        repeats_ = walk.consumed == saved_.consumed && walk.remaining == saved_.remaining;
        saved_ = walk;
      }
      bool accepted = true;
      status = LoadIfAccepted(stream, bitmaps_.OfBand(band), accepted);
      if (status != SUCCESS) return status;
      complete_ = complete_ && accepted;
      if (accepted) SkipStreams(walk);
    }
    return SUCCESS;
  }

  int32_t LoadIfAccepted(const StreamBytes& stream, HostBitmap* bitmap, bool& accepted) {
    accepted = identifier_.Identify(stream) == SUCCESS;
    if (!accepted) return SUCCESS;
    if (identifier_.claims_too_much()) return ERR_FILE_FORMAT;
    if ((bitmap->flags & 1) != 0) HostFreeBitmap(bitmap);
    HostLoadFlagsRecord options{};
    HostLoadOptions(&options, sizeof options);
    if (job_.image.Representation == kRgb || job_.image.Representation == kMulti)
      options.flags |= kComponentsAreRgb;
    return LoadStream(context_, stream.bytes.data(), stream.size, bitmap, &options);
  }

  // The next band's stream is the one as many streams further on as there are bands.
  void SkipStreams(StreamWalk& walk) {
    for (uint32_t i = 0; i < job_.bands; ++i) {
      const uint32_t before = walk.consumed;
      finder_.NextStream(nullptr, false, true, walk);
      if (walk.consumed == before) return;  // at the end, where every further step gives the same
    }
  }

  int32_t Combine(uint64_t block) {
    constexpr uint32_t kReplace = 800;
    merged_->order = job_.bitmap->order;
    const auto x = static_cast<int32_t>(block % job_.image.BlocksPerRow * job_.image.BlockWidth);
    const auto y = static_cast<int32_t>(block / job_.image.BlocksPerRow * job_.image.BlockHeight);
    return HostCombineBitmap(job_.bitmap, x, y, merged_->width, merged_->height, merged_.get(), 0, 0,
                             kReplace);
  }

  FilterLoadContext* context_;
  SegmentJob& job_;
  StreamFinder finder_;
  StreamIdentifier identifier_;
  BandBitmaps bitmaps_;
  OwnedBitmap merged_;
  bool complete_ = true;  // no band of the block was given up
  bool repeats_ = false;  // the next block is this one again
  StreamWalk saved_{.remaining = job_.data_length};
};

}  // namespace

int32_t DecodeBandStreams(FilterLoadContext* context, SegmentJob& job) {
  BandStreamDecoder decoder(context, job);
  return DecodeRuns(job, decoder);
}

}  // namespace tavi
