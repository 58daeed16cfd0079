// What the targets do with a document.
#pragma once

#include <cstdint>

#include "MemoryFiles.h"
#include "TaviNitf.h"

namespace tavi_fuzz {

// The largest composite in bytes: most inputs that claim more differ in nothing else.
inline constexpr uint64_t kBitmapLimit = uint64_t{16} << 20;

// Opens what stands under `name` and closes it at the end.
class Document {
 public:
  explicit Document(const wchar_t* name) { Tavi_NITFCreate(&handle_, name); }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  ~Document() { Tavi_NITFDestroy(&handle_); }
  explicit operator bool() const { return handle_ != nullptr; }
  NitfHandle get() const { return handle_; }

 private:
  NitfHandle handle_ = nullptr;
};

// Runs every getter on every segment and one beyond.
void ReadEverything(NitfHandle handle);
// fltLoad at a depth; at most `rows` rows are taken.
int32_t LoadInput(uint32_t bits, int32_t rows, uint32_t flags);
// Ends the program when something is still alive: nothing outlives an input.
void ExpectNothingAlive();

}  // namespace tavi_fuzz
