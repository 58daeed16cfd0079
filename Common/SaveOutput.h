// The file that a save writes: one buffer, a handful of large writes.
#pragma once

#include <cstdint>

#include "HostObjects.h"
#include "NitfFile.h"

namespace tavi {

// A file being written. Positions are those of the file as if nothing were buffered: moving costs nothing, and
// bytes that are put over earlier ones replace them. A write that falls short makes every later operation, and
// Close, give ERR_FILE_WRITE.
class SaveOutput {
 public:
  SaveOutput() = default;
  SaveOutput(const SaveOutput&) = delete;
  SaveOutput& operator=(const SaveOutput&) = delete;
  ~SaveOutput() { Close(); }

  // Makes the buffer; false without memory. Comes first: no file is touched that could not be written then.
  [[nodiscard]] bool Prepare();
  // Creates or empties the file. A failure shows at the first Flush.
  void Open(const wchar_t* path);

  int32_t Write(const void* bytes, uint64_t size);
  int32_t WriteRepeated(char byte, uint64_t size);
  // Copies from where the document's source stands. ERR_FILE_READ when it ends too early, and then what it had
  // is written.
  int32_t Copy(NitfFile& source, uint64_t size);

  int64_t position() const { return position_; }
  int64_t end() const { return end_; }
  void SeekToEnd() { position_ = end_; }
  // A position before the start is refused, and the position stays.
  void SeekTo(int64_t position);

  int32_t Flush();
  // Writes what is left and closes the file.
  int32_t Close();

 private:
  // Where the next bytes go, and how many fit there at once.
  uint8_t* Room(uint64_t& size);
  void Took(uint64_t size);

  int64_t file_ = kNoFile;
  HostArray<uint8_t> buffer_;
  int64_t start_ = 0;  // place of the buffer's first byte in the file
  uint64_t used_ = 0;
  int64_t position_ = 0;
  int64_t end_ = 0;
  bool failed_ = false;
};

}  // namespace tavi
