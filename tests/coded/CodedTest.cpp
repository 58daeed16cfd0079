#include "CodedTest.h"

#include <array>

namespace tavi_test {
namespace {

RecordingHost* current = nullptr;

constexpr uint32_t kRawPlaces = 64;

}  // namespace

RecordingHost::RecordingHost() {
  current = this;
}

RecordingHost::~RecordingHost() {
  current = nullptr;
}

LoadRequest RecordingHost::Request() const {
  LoadRequest request;
  request.load_entry = Load;
  request.hook_entry = SetHook;
  return request;
}

int32_t RecordingHost::Load(const void* buffer, HostBitmap* bitmap, uint64_t record_size, uint32_t bits,
                            uint32_t order, uint64_t size, HostLoadFlagsRecord* options,
                            HostFileInfo* information) {
  RecordedLoad load;
  const auto* bytes = static_cast<const uint8_t*>(buffer);
  load.bytes.assign(bytes, bytes + size);
  load.record_size = record_size;
  load.bits = bits;
  load.order = order;
  load.has_options = options != nullptr;
  if (options != nullptr) load.options = *options;
  load.has_information = information != nullptr;
  load.given_width = bitmap->width;
  load.given_bits = bitmap->bits;
  load.given_pixels = (bitmap->flags & 1) != 0;
  if (current->hook_ != nullptr && current->hook_ != EarlierHook) {
    std::array<uint32_t, kRawPlaces> places = {};
    current->hook_(places.data(), current->user_);
    load.raw_layout.assign(places.begin(), places.end());
  }
  current->loads.push_back(load);
  return current->answer ? current->answer(bitmap) : current->Give(bitmap);
}

HostLoadHook RecordingHost::SetHook(HostLoadHook hook, void* user) {
  const HostLoadHook before = current->hook_;
  current->hooks.push_back({hook, user != nullptr});
  current->hook_ = hook;
  current->user_ = user;
  return before;
}

int32_t RecordingHost::Give(HostBitmap* bitmap) const {
  if ((bitmap->flags & 1) != 0) HostFreeBitmap(bitmap);
  const int32_t status = HostCreateBitmap(bitmap, sizeof *bitmap, 1, width, height, bits, bits >= 24 ? 1 : 2,
                                          nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  const uint32_t level = LevelOf(loads.size() - 1);
  HostFillBitmap(bitmap, level << 16 | level << 8 | level);
  return SUCCESS;
}

ImageSpec CodedImage(const std::string& ic, const std::string& irep, uint32_t bands, uint32_t across,
                     uint32_t down, uint32_t width, uint32_t height) {
  ImageSpec image;
  image.Blocks(across, down, width, height);
  image.ic = ic;
  image.irep = irep;
  image.Roles(bands == 3 ? std::vector<std::string>{"R ", "G ", "B "}
                         : std::vector<std::string>(bands, bands == 1 ? "M " : "  "));
  return image;
}

Bytes Concatenate(const std::vector<Bytes>& parts) {
  Bytes whole;
  for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
  return whole;
}

LoadedPicture CodedTest::Decode(const BuiltFile& built) {
  LoadRequest request;
  request.load_entry = HostLoadMemory;
  request.hook_entry = HostSetLoadHook;
  return LoadFile(Write(built), request);
}

}  // namespace tavi_test
