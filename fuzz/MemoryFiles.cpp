// The host's file operations, defined by the program itself and so used by the library. A fuzzer runs thousands of
// inputs a second; the disk would not.
#include "MemoryFiles.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

#include "TaviHost.h"

namespace tavi_fuzz {
namespace {

constexpr uint32_t kCreate = 0x8302;
constexpr size_t kMostWritten = size_t{64} << 20;
constexpr int64_t kMostOpen = 16;

struct Entry {
  bool open = false;
  bool writable = false;
  int64_t position = 0;
};

const uint8_t* input_data;
size_t input_size;
std::vector<uint8_t> output;
Entry entries[kMostOpen];

Entry* At(int64_t file) {
  return file >= 0 && file < kMostOpen && entries[file].open ? &entries[file] : nullptr;
}

struct View {
  const uint8_t* data;
  size_t size;
};
// Which file an entry shows: those opened for writing and the output's readers share one.
bool shows_output[kMostOpen];

View Contents(int64_t file) {
  return shows_output[file] ? View{output.data(), output.size()} : View{input_data, input_size};
}

}  // namespace

void SetInput(const uint8_t* data, size_t size) {
  input_data = data;
  input_size = size;
}

const std::vector<uint8_t>& Output() {
  return output;
}

}  // namespace tavi_fuzz

using namespace tavi_fuzz;

extern "C" {

int64_t HostFileOpen(const wchar_t* name, uint32_t flags, uint32_t) {
  const bool create = flags == kCreate;
  for (int64_t i = 0; i < kMostOpen; ++i) {
    if (entries[i].open) continue;
    entries[i] = {true, create, 0};
    shows_output[i] = create || std::wcscmp(name, kOutput) == 0;
    if (create) output.clear();
    return i;
  }
  return -1;
}

void HostFileClose(int64_t file) {
  if (Entry* const entry = At(file)) entry->open = false;
}

uint64_t HostFileRead(int64_t file, void* buffer, uint64_t bytes) {
  Entry* const entry = At(file);
  if (entry == nullptr) return 0;
  const View view = Contents(file);
  const auto size = static_cast<int64_t>(view.size);
  if (entry->position >= size || bytes == 0) return 0;
  const uint64_t moved = std::min(bytes, static_cast<uint64_t>(size - entry->position));
  std::memcpy(buffer, view.data + entry->position, moved);
  entry->position += static_cast<int64_t>(moved);
  return moved;
}

uint64_t HostFileWrite(int64_t file, const void* buffer, uint64_t bytes) {
  Entry* const entry = At(file);
  if (entry == nullptr || !entry->writable || bytes == 0) return 0;
  const auto start = static_cast<uint64_t>(entry->position);
  if (start > kMostWritten || bytes > kMostWritten - start) return 0;  // as a disk that is full
  if (output.size() < start + bytes) output.resize(start + bytes);
  std::memcpy(output.data() + start, buffer, bytes);
  entry->position += static_cast<int64_t>(bytes);
  return bytes;
}

uint64_t HostFileWriteHuge(int64_t file, const void* buffer, uint64_t bytes) {
  return HostFileWrite(file, buffer, bytes);
}

int64_t HostFileSeek(int64_t file, int64_t offset, int32_t origin) {
  Entry* const entry = At(file);
  if (entry == nullptr) return -1;
  const auto size = static_cast<int64_t>(Contents(file).size);
  const int64_t from = origin == 0 ? 0 : origin == 1 ? entry->position : size;
  int64_t target = 0;
  if (__builtin_add_overflow(from, offset, &target) || target < 0) return -1;
  return entry->position = target;
}

int32_t _waccess(const wchar_t*, int32_t) {
  return 0;
}

int32_t MessageBoxA(void*, const char*, const char*, uint32_t) {
  return 1;
}

}  // extern "C"
